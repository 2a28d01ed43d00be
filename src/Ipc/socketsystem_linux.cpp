#include "Ipc/socketsystem_p.h"

#include <QLocalSocket>

#include <cerrno>
#include <sys/socket.h>

namespace SocketSystem {

Accepted acceptFrom(int listeningDescriptor)
{
    const int descriptor =
        accept4(listeningDescriptor, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (descriptor >= 0)
        return {descriptor, 0};
    const bool nobody = errno == EAGAIN || errno == EINTR || errno == ECONNABORTED;
    return {-1, nobody ? 0 : errno};
}

qint64 offer(const QLocalSocket* socket, const QByteArray& bytes)
{
    const auto descriptor = static_cast<int>(socket->socketDescriptor());
    const ssize_t taken = ::send(descriptor, bytes.constData(), static_cast<size_t>(bytes.size()),
                                 MSG_DONTWAIT | MSG_NOSIGNAL);
    return taken > 0 ? taken : 0;
}

} // namespace SocketSystem
