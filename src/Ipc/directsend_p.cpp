#include "Ipc/directsend_p.h"

#include "Ipc/socketsystem_p.h"

#include <QLocalSocket>

qint64 writeDirectly(QLocalSocket* socket, const QByteArray& bytes)
{
    const bool mayOffer =
        socket->state() == QLocalSocket::ConnectedState && socket->bytesToWrite() == 0;
    const qint64 taken = mayOffer ? SocketSystem::offer(socket, bytes) : 0;
    if (taken > 0 && taken == bytes.size())
        return taken;
    const qint64 queued = socket->write(bytes.constData() + taken, bytes.size() - taken);
    return taken > 0 ? taken + qMax<qint64>(0, queued) : queued;
}
