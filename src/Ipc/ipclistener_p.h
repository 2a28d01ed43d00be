#ifndef IPC_IPCLISTENER_P_H
#define IPC_IPCLISTENER_P_H

#include "Ipc/socketsystem_p.h"

#include <QElapsedTimer>
#include <QLocalServer>
#include <QTimer>

#include <deque>
#include <functional>
#include <memory>

class QSocketNotifier;

/// The listening socket of a server. It makes and names the socket as QLocalServer does, but
/// accepts connections itself, because QLocalServer
/// - gives up and removes its file when the system has no descriptor left for a connection;
/// - removes the file under its name when it ends, also when that is another server's by then;
/// - reads from connections that nobody has taken yet, however much comes.
///
/// A connection that was accepted waits as a bare descriptor until it is taken: the system keeps
/// what its client sends, and stops the client when that is too much. While more than 30 wait, no
/// further one is accepted.
///
/// Out of descriptors, it logs one line, leaves the clients in the system's queue and tries again
/// after half a second.
class IPCListener : public QLocalServer
{
public:
    /// Decides about a connection before anybody hears of it; false closes it.
    using Gate = std::function<bool(int descriptor)>;

    /// A slot of newConnection() may let the last pointer go: the object then lives until the
    /// emission is over, without listening.
    static std::shared_ptr<IPCListener> create(QObject* parent, Gate gate);

    /// Listens under a name or path. `mode`: the permissions of the socket's file, from the moment
    /// on at which it can be found; -1 leaves them to the system. False when the name cannot be
    /// had, or not with this mode.
    bool listenUnder(const QString& name, int mode);

    /// Stops listening and ends what waits. Removes the socket's file, but not one that another
    /// server has put in its place.
    void end();

    bool hasPendingConnections() const override { return !m_waiting.empty(); }
    /// The connection that has waited longest, as a child of this object; null when there is none.
    QLocalSocket* nextPendingConnection() override;

    /// How many wait to be taken.
    int waiting() const { return static_cast<int>(m_waiting.size()); }

    /// Closes the waiting connections whose clients have gone.
    void passOverDeparted();

    /// Whether the number of waiting connections keeps further ones from being accepted.
    bool isFull() const;

private:
    IPCListener(QObject* parent, Gate gate);
    ~IPCListener() override;
    static void dispose(IPCListener* listener);

    void acceptOne();
    void pause(int error);
    void updateNotifier();
    void closeLeavingTheFile();

    Gate m_gate;
    SocketSystem::FileIdentity m_file;
    std::unique_ptr<QSocketNotifier> m_notifier;
    std::deque<int> m_waiting; // accepted descriptors, the oldest first
    QTimer m_resume;
    QElapsedTimer m_lastShortage;
    int m_announcing = 0; // how many emissions of newConnection() are under way
    bool m_mustNotClose = false;
};

#endif
