#pragma once

#include <QString>
#include <QTextStream>

class RecordingReader;
class StreamInspector;

// Writes what the inspector found, as text for people or as CSV for programs. In the
// CSV every line starts with its section (summary, gap, canid, reject, command, tail);
// the lines that name a section's columns start with '#'.
class InspectionReport
{
public:
    static constexpr int TextListLimit = 50; // longer lists are cut in the text form

    InspectionReport(const QString& path, const RecordingReader& reader,
                     const StreamInspector& inspector);

    void writeText(QTextStream& out) const;
    void writeCsv(QTextStream& out) const;

private:
    QString m_path;
    const RecordingReader& m_reader;
    const StreamInspector& m_inspector;
};
