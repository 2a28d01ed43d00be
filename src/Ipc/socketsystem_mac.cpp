#include "Ipc/socketsystem_p.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace SocketSystem {

Accepted acceptFrom(int listeningDescriptor)
{
    const int descriptor = accept(listeningDescriptor, nullptr, nullptr);
    if (descriptor >= 0) {
        fcntl(descriptor, F_SETFD, FD_CLOEXEC);
        setNonBlocking(descriptor);
        return {descriptor, 0};
    }
    const bool nobody = errno == EAGAIN || errno == EINTR || errno == ECONNABORTED;
    return {-1, nobody ? 0 : errno};
}

// Nothing here keeps a write to a vanished peer from ending the process by a signal.
qint64 offer(const QLocalSocket*, const QByteArray&)
{
    return 0;
}

} // namespace SocketSystem
