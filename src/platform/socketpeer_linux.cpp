#include "platform/socketpeer_p.h"

#include <sys/socket.h>

SocketPeer socketPeer(int descriptor)
{
    ucred credentials = {};
    socklen_t size = sizeof credentials;
    if (getsockopt(descriptor, SOL_SOCKET, SO_PEERCRED, &credentials, &size) != 0)
        return {};
    return {true, credentials.pid, credentials.uid};
}
