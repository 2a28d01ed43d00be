#include "Ipc/socketsystem_p.h"

#include <QFile>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace SocketSystem {

FileIdentity identify(const QString& path)
{
    struct stat entry = {};
    if (path.isEmpty() || lstat(QFile::encodeName(path).constData(), &entry) != 0)
        return {};
    return {true, entry.st_dev, entry.st_ino};
}

bool setMode(const QString& path, mode_t mode)
{
    return chmod(QFile::encodeName(path).constData(), mode) == 0;
}

bool hasHungUp(int descriptor)
{
    pollfd watched = {descriptor, 0, 0};
    return poll(&watched, 1, 0) > 0 && (watched.revents & (POLLHUP | POLLERR | POLLNVAL)) != 0;
}

void setNonBlocking(int descriptor)
{
    fcntl(descriptor, F_SETFL, fcntl(descriptor, F_GETFL) | O_NONBLOCK);
}

void closeDescriptor(int descriptor)
{
    ::close(descriptor);
}

} // namespace SocketSystem
