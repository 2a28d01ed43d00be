#ifndef IPC_SOCKETSYSTEM_P_H
#define IPC_SOCKETSYSTEM_P_H

#include <QString>

#include <sys/types.h>

class QByteArray;
class QLocalSocket;

/// What the messaging asks of the system's sockets directly, because QLocalServer and QLocalSocket
/// cannot be asked for it. Nothing here waits.
namespace SocketSystem {

/// Which file stands at a path, so that it is known again: a name may be given to another file.
struct FileIdentity
{
    bool exists = false;
    dev_t device = 0;
    ino_t inode = 0;

    bool operator==(const FileIdentity& other) const
    {
        return exists && other.exists && device == other.device && inode == other.inode;
    }
};

/// The file at `path` itself, not what a link there points to.
FileIdentity identify(const QString& path);

/// Gives the file at `path` these permission bits. False when that failed.
bool setMode(const QString& path, mode_t mode);

/// Takes one waiting connection from a listening socket. `descriptor` is -1 when there is none, and
/// `error` then says why: 0 when nobody waits, or else the value of errno.
struct Accepted
{
    int descriptor = -1;
    int error = 0;
};

Accepted acceptFrom(int listeningDescriptor);

/// Whether the other end of a connection has closed it. What it sent before can still be read.
bool hasHungUp(int descriptor);

/// Makes a descriptor return instead of waiting.
void setNonBlocking(int descriptor);

void closeDescriptor(int descriptor);

/// Offers bytes to the system, without waiting. Returns how many it took; 0 also for a failure.
qint64 offer(const QLocalSocket* socket, const QByteArray& bytes);

} // namespace SocketSystem

#endif
