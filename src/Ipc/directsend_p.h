#ifndef IPC_DIRECTSEND_P_H
#define IPC_DIRECTSEND_P_H

#include <QtGlobal>

class QByteArray;
class QLocalSocket;

/// Writes to a connection like QLocalSocket::write() and returns what that would return: how many
/// bytes the connection has taken, 0 or -1 when it took none. To be followed by flush().
///
/// While nothing is queued on the socket, the bytes are first offered to the system directly: the
/// socket would switch its write notification on and off again, which costs several system calls
/// for each message. What the system does not take, and every failure, is left to the socket.
qint64 writeDirectly(QLocalSocket* socket, const QByteArray& bytes);

#endif
