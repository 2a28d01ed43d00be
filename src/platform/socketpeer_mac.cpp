#include "platform/socketpeer_p.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

SocketPeer socketPeer(int descriptor)
{
    SocketPeer peer;
    gid_t group = 0;
    if (getpeereid(descriptor, &peer.userId, &group) != 0)
        return {};
    socklen_t size = sizeof peer.processId;
    getsockopt(descriptor, SOL_LOCAL, LOCAL_PEERPID, &peer.processId, &size);
    peer.isKnown = true;
    return peer;
}
