#include "DataValue/filecontent_p.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <exception>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

/// How much is read at a time. Reading ends at a zero byte, so of a file with a hole of gigabytes
/// hardly more is read than what stands before the hole.
constexpr std::size_t kPiece = std::size_t(1) << 20;

/// A regular file that is open for reading.
class RegularFile
{
public:
    /// Opened without waiting: at a pipe, open() would else wait until somebody writes into it.
    explicit RegularFile(const QString& path)
        : m_descriptor(open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK))
    {
        struct stat status = {};
        m_isRegular =
            m_descriptor >= 0 && fstat(m_descriptor, &status) == 0 && S_ISREG(status.st_mode);
        m_size = m_isRegular ? static_cast<std::size_t>(status.st_size) : 0;
    }
    ~RegularFile()
    {
        if (m_descriptor >= 0)
            close(m_descriptor);
    }
    RegularFile(const RegularFile&) = delete;
    RegularFile& operator=(const RegularFile&) = delete;

    bool isRegular() const { return m_isRegular; }
    /// What the system says of the size; that need not be true.
    std::size_t size() const { return m_size; }

    /// As read(2), but never interrupted by a signal.
    ssize_t read(char* to, std::size_t size)
    {
        ssize_t got = -1;
        do {
            got = ::read(m_descriptor, to, size);
        } while (got < 0 && errno == EINTR);
        return got;
    }

private:
    int m_descriptor;
    bool m_isRegular = false;
    std::size_t m_size = 0;
};

std::optional<std::string> contentOf(RegularFile& file)
{
    std::string content;
    content.reserve(file.size() + 1); // one more: the end shows without growing
    for (;;) {
        const std::size_t before = content.size();
        const std::size_t room = std::max<std::size_t>(content.capacity() - before, 1);
        content.resize(before + std::min(room, kPiece));
        const ssize_t got = file.read(&content[before], content.size() - before);
        if (got < 0)
            return std::nullopt;
        content.resize(before + static_cast<std::size_t>(got));
        if (got == 0 || std::memchr(&content[before], '\0', static_cast<std::size_t>(got)))
            return content;
    }
}

/// Whether the process may make a file of that size. A write beyond the limit would end it by a
/// signal, whose disposition is the program's and not for a library to change.
bool isWithinLimit(std::size_t size)
{
    rlimit limit = {};
    return getrlimit(RLIMIT_FSIZE, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY ||
           size <= limit.rlim_cur;
}

} // namespace

std::optional<std::string> FileContent::read(const QString& path)
{
    try {
        RegularFile file(path);
        return file.isRegular() ? contentOf(file) : std::nullopt;
    } catch (const std::exception&) { // it is larger than the memory, or than any text can be
        return std::nullopt;
    }
}

bool FileContent::replace(const QString& path, std::string_view content)
{
    const auto size = static_cast<qint64>(content.size());
    const QFileInfo old(path);
    if (path.isEmpty() || (old.exists() && !old.isFile()) || !isWithinLimit(content.size()))
        return false;
    // Unbuffered, and each result looked at: after a short write on a full disk the commit alone
    // would report success and put the torn file in the old one's place.
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        return false;
    if (file.write(content.data(), size) != size) {
        file.cancelWriting();
        return false;
    }
    return file.commit();
}
