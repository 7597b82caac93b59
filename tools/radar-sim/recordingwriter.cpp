#include "recordingwriter.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace {

bool writeAll(int fd, const char* data, qint64 size)
{
    while (size > 0) {
        const ssize_t n = ::write(fd, data, size_t(size));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        data += n;
        size -= n;
    }
    return true;
}

// A new file survives a power loss only once its directory entry is on disk too.
void syncDirectoryOf(const QString& path)
{
    const QByteArray dir = QFile::encodeName(QFileInfo(path).absolutePath());
    const int fd = ::open(dir.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd >= 0) {
        ::fsync(fd);
        ::close(fd);
    }
}

} // namespace

RecordingWriter::~RecordingWriter()
{
    close();
}

bool RecordingWriter::open(const QString& path, const QByteArray& header, QString& error)
{
    m_fd = ::open(QFile::encodeName(path).constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC,
                  0644);
    if (m_fd < 0) {
        error = errno == EEXIST
                    ? QStringLiteral("%1 exists already; a recording never overwrites a file")
                          .arg(path)
                    : QStringLiteral("cannot create %1: %2")
                          .arg(path, QString::fromLocal8Bit(std::strerror(errno)));
        return false;
    }
    if (!writeAll(m_fd, header.constData(), header.size()) || ::fdatasync(m_fd) != 0) {
        error = QStringLiteral("cannot write %1: %2")
                    .arg(path, QString::fromLocal8Bit(std::strerror(errno)));
        ::close(m_fd);
        m_fd = -1;
        return false;
    }
    syncDirectoryOf(path);
    m_stopping = false;
    m_syncThread = std::thread(&RecordingWriter::syncLoop, this);
    return true;
}

bool RecordingWriter::append(const QByteArray& bytes)
{
    if (m_fd < 0)
        return false;
    if (!writeAll(m_fd, bytes.constData(), bytes.size())) {
        m_error = QString::fromLocal8Bit(std::strerror(errno));
        close();
        return false;
    }
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_dirty = true;
    }
    m_wake.notify_one();
    return true;
}

void RecordingWriter::syncLoop()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    for (;;) {
        m_wake.wait(lock, [this] { return m_dirty || m_stopping; });
        if (!m_dirty)
            return;
        m_dirty = false;
        lock.unlock();
        ::fdatasync(m_fd);
        lock.lock();
    }
}

void RecordingWriter::close()
{
    if (m_fd < 0)
        return;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_stopping = true;
    }
    m_wake.notify_one();
    if (m_syncThread.joinable())
        m_syncThread.join();
    ::fdatasync(m_fd);
    ::close(m_fd);
    m_fd = -1;
}
