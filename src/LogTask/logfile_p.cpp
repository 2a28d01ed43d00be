#include "LogTask/logfile_p.h"

#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>

namespace {

// So much text is written without being asked for.
constexpr std::size_t kEnough = 16384;

constexpr mode_t kOwnerOnly = S_IRUSR | S_IWUSR;

} // namespace

LogFile::~LogFile()
{
    flush();
    if (m_file >= 0)
        ::close(m_file);
}

bool LogFile::open(const QString& path, bool append)
{
    const int flags = O_WRONLY | O_CREAT | O_CLOEXEC | (append ? O_APPEND : O_TRUNC);
    const QByteArray name = QFile::encodeName(path);
    do
        m_file = ::open(name.constData(), flags, kOwnerOnly);
    while (m_file < 0 && errno == EINTR);
    if (m_file < 0)
        return false;
    struct stat status = {};
    if (::fstat(m_file, &status) == 0 && S_ISREG(status.st_mode) &&
        (status.st_mode & (S_IRWXG | S_IRWXO)) != 0)
        (void)::fchmod(m_file, status.st_mode & S_IRWXU); // fails for another user's file
    m_kept.reset(new char[kEnough]);
    return true;
}

void LogFile::write(const char* text, std::size_t size)
{
    if (m_file < 0)
        return;
    if (m_keptSize + size > kEnough)
        flush();
    if (size >= kEnough) {
        put(text, size);
        return;
    }
    std::memcpy(m_kept.get() + m_keptSize, text, size);
    m_keptSize += size;
}

void LogFile::flush()
{
    if (m_keptSize > 0)
        put(m_kept.get(), m_keptSize);
    else if (m_isLosing)
        putNotice();
    m_keptSize = 0;
}

void LogFile::writeInCrash(const char* text, std::size_t size)
{
    if (m_file < 0)
        return;
    writeAll(m_kept.get(), m_keptSize);
    m_keptSize = 0;
    writeAll(text, size);
}

void LogFile::put(const char* text, std::size_t size)
{
    if (m_isLosing && !putNotice()) {
        lose(text, size);
        return;
    }
    const std::size_t written = writeAll(text, size);
    if (written < size)
        lose(text + written, size - written);
}

// A notice that is cut itself stands as a cut line; the next one counts from the same place.
bool LogFile::putNotice()
{
    const std::string notice = (m_isLineOpen ? "\r\n" : "") +
                               std::to_string(m_lost + (m_isLossOpen ? 1 : 0)) +
                               " lines lost here\r\n";
    if (writeAll(notice.data(), notice.size()) < notice.size())
        return false;
    m_isLosing = false;
    m_isLossOpen = false;
    m_lost = 0;
    return true;
}

// How much of it is in the file.
std::size_t LogFile::writeAll(const char* text, std::size_t size)
{
    std::size_t written = 0;
    while (written < size) {
        const ssize_t part = ::write(m_file, text + written, size - written);
        if (part > 0)
            written += static_cast<std::size_t>(part);
        else if (part == 0 || errno != EINTR)
            break;
    }
    if (written > 0)
        m_isLineOpen = text[written - 1] != '\n';
    return written;
}

void LogFile::lose(const char* text, std::size_t size)
{
    m_isLosing = true;
    m_lost += static_cast<unsigned long long>(std::count(text, text + size, '\n'));
    m_isLossOpen = text[size - 1] != '\n';
}
