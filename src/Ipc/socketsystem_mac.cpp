#include "Ipc/socketsystem_p.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace SocketSystem {

Peer peerOf(int descriptor)
{
    Peer peer;
    gid_t group = 0;
    if (getpeereid(descriptor, &peer.userId, &group) != 0)
        return {};
    socklen_t size = sizeof peer.processId;
    getsockopt(descriptor, SOL_LOCAL, LOCAL_PEERPID, &peer.processId, &size);
    peer.isKnown = true;
    return peer;
}

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
