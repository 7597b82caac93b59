#pragma once

#include <QByteArray>
#include <QString>

#include <condition_variable>
#include <mutex>
#include <thread>

// Appends to a new recording file. Each record goes to the file with one write as it
// comes, so a crash of this program loses nothing already handed over; a thread of
// its own then forces the file to disk (fdatasync) again and again as records arrive,
// so that a power loss costs only what came in during the last flush, and nobody
// waits for the disk.
class RecordingWriter
{
public:
    RecordingWriter() = default;
    ~RecordingWriter();
    RecordingWriter(const RecordingWriter&) = delete;
    RecordingWriter& operator=(const RecordingWriter&) = delete;

    // Creates the file (never overwrites one) and writes its header.
    bool open(const QString& path, const QByteArray& header, QString& error);
    // False once writing failed (the disk is full, the medium gone); the reason then
    // stays in errorString() and nothing more is written.
    bool append(const QByteArray& bytes);
    bool isOpen() const { return m_fd >= 0; }
    QString errorString() const { return m_error; }
    void close();

private:
    void syncLoop();

    int m_fd = -1;
    QString m_error;
    std::thread m_syncThread;
    std::mutex m_mutex;
    std::condition_variable m_wake;
    bool m_dirty = false;
    bool m_stopping = false;
};
