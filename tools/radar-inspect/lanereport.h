#pragma once

#include <QString>
#include <QTextStream>

class LaneCounter;

// Writes the lane statistics of a recording: as text for people, the detection line,
// the time watched and the figures per lane and direction, over the whole time and per
// interval; as CSV for programs, a line naming the columns and then one row per
// interval, lane and direction, speeds in km/h and headways in seconds.
class LaneReport
{
public:
    LaneReport(const QString& path, const LaneCounter& counter);

    void writeText(QTextStream& out) const;
    void writeCsv(QTextStream& out) const;

private:
    QString m_path;
    const LaneCounter& m_counter;
};
