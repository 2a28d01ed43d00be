#include "dashboard/pinfile.h"

#include "common/console.h"

#include <QByteArray>
#include <QFile>

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr int kLongestLine = 64;

// The first line, cut behind kLongestLine bytes. Read byte by byte: what follows the line belongs
// to somebody else. errno tells of a failure.
QByteArray firstLine(int file)
{
    QByteArray line;
    errno = 0;
    char byte = 0;
    while (line.size() <= kLongestLine) {
        const ssize_t count = ::read(file, &byte, 1);
        if (count < 0 && errno == EINTR) {
            errno = 0;
            continue;
        }
        if (count <= 0 || byte == '\n')
            break;
        line += byte;
    }
    return line;
}

std::optional<QString> refused(const QString& path, const char* reason)
{
    Console::complain(
        QStringLiteral("cannot read a PIN from %1: %2").arg(path, QString::fromLocal8Bit(reason)));
    return std::nullopt;
}

} // namespace

std::optional<QString> PinFile::read(const QString& path)
{
    const bool isInput = path == QLatin1String("-");
    const int file =
        isInput ? STDIN_FILENO : ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return refused(path, std::strerror(errno));
    if (::isatty(file) == 1)
        Console::complain(QStringLiteral("enter the PIN"));
    const QByteArray line = firstLine(file);
    const int error = errno;
    if (!isInput)
        ::close(file);
    const QString pin = QString::fromUtf8(line).trimmed();
    if (error != 0)
        return refused(path, std::strerror(error));
    if (pin.isEmpty() || line.size() > kLongestLine)
        return refused(path, "its first line is no PIN");
    return pin;
}
