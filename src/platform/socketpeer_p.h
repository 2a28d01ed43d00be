#ifndef PLATFORM_SOCKETPEER_P_H
#define PLATFORM_SOCKETPEER_P_H

#include <sys/types.h>

/// Who is at the other end of a local connection, as the system has recorded it when the connection
/// was made; for a client, that is who listened. `isKnown` is false when the system does not tell.
struct SocketPeer
{
    bool isKnown = false;
    pid_t processId = 0;
    uid_t userId = 0;
};

SocketPeer socketPeer(int descriptor);

#endif
