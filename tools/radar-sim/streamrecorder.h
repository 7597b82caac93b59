#pragma once

#include "recordedmessage.h"
#include "recordingwriter.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QObject>
#include <QString>

// Records the messages of one client session at a time, both directions, each with
// the time it was received (the time it was sent, for what the simulator makes
// itself). Clients that connect while one is recorded are served but not recorded; a
// client that connects after the recorded one left is recorded next, in the same file.
class StreamRecorder : public QObject
{
    Q_OBJECT

public:
    explicit StreamRecorder(QObject* parent = nullptr);
    ~StreamRecorder() override;

    bool open(const QString& path, QString& error);

    // Starts recording `session` unless another is recorded; true when it is.
    bool beginSession(const void* session, const QString& peer);
    void endSession(const void* session);
    // Does nothing for a session that is not the recorded one.
    void record(const void* session, RecordedMessage::Direction direction,
                RecordedMessage::Type type, const QByteArray& bytes);

signals:
    void logLine(const QString& line);

private:
    void write(RecordedMessage::Direction direction, RecordedMessage::Type type,
               const QByteArray& bytes);

    RecordingWriter m_writer;
    QElapsedTimer m_clock;
    const void* m_session = nullptr;
    QByteArray m_record; // reused for every record
};
