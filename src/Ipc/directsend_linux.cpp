#include "Ipc/directsend_p.h"

#include <QLocalSocket>

#include <sys/socket.h>

qint64 offerToSystem(const QLocalSocket* socket, const QByteArray& bytes)
{
    const auto descriptor = static_cast<int>(socket->socketDescriptor());
    const ssize_t taken = ::send(descriptor, bytes.constData(), static_cast<size_t>(bytes.size()),
                                 MSG_DONTWAIT | MSG_NOSIGNAL);
    return taken > 0 ? taken : 0;
}
