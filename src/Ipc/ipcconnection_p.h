#ifndef IPC_IPCCONNECTION_P_H
#define IPC_IPCCONNECTION_P_H

#include "Ipc/messageframe_p.h"

#include <QElapsedTimer>
#include <QLocalSocket>
#include <QMetaObject>
#include <QObject>
#include <QTimer>

#include <deque>
#include <functional>
#include <memory>
#include <vector>

/// The signal connections of a socket that lead into our code. They are cut when this object goes:
/// a socket may live on until its own code has returned, and must not call an owner that has gone.
class SignalLinks
{
public:
    SignalLinks() = default;
    ~SignalLinks() { cut(); }
    SignalLinks(const SignalLinks&) = delete;
    SignalLinks& operator=(const SignalLinks&) = delete;

    void add(const QMetaObject::Connection& link) { m_links.push_back(link); }
    void cut();

private:
    std::vector<QMetaObject::Connection> m_links;
};

/// One connection as one of its ends sees it: what lives with its socket, and ends with it.
///
/// It is shared by the owner (who finds it under its ID), by the queue of the departed, and by
/// every function of ours that has code of the socket below it on the stack (IPCConnectionUse). The
/// last one to let go deletes the socket. So a slot may drop the connection, delete the owner, or
/// run an event loop for as long as it likes: what it runs on stays.
struct IPCConnection : std::enable_shared_from_this<IPCConnection>
{
    IPCConnection(const QString& head, const QString& end)
        : frame(head, end)
    {
    }

    /// Cuts the connection off from its owner, who is about to go.
    void leaveOwner();

    int id = 0;               // of the client; the server's
    bool hasEnded = false;    // its end was announced
    bool isUnflushed = false; // something was written that is still to be flushed
    MessageFrame frame;
    std::unique_ptr<QLocalSocket> socket; // null for an entry without one
    SignalLinks links;                    // below the socket: cut before it is deleted
    /// Called once when only the owner is left. Code of the socket may still be what called.
    std::function<void()> whenUnused;
};

/// Stands in every function of an owner that emits a signal, or makes a socket do so. Afterwards
/// the connection is still there; the owner may not be.
class IPCConnectionUse
{
public:
    explicit IPCConnectionUse(IPCConnection& connection)
        : m_connection(connection.shared_from_this())
    {
    }
    ~IPCConnectionUse();
    IPCConnectionUse(const IPCConnectionUse&) = delete;
    IPCConnectionUse& operator=(const IPCConnectionUse&) = delete;

private:
    std::shared_ptr<IPCConnection> m_connection;
};

/// Keeps the connections of clients that have gone for a while, so that whoever still holds one of
/// their sockets is not cut short. One timer and one queue serve them all, and what is due is
/// deleted in portions: thousands that leave at once do not hold up those who are there.
class DepartedConnections : public QObject
{
    Q_OBJECT
    Q_PROPERTY(int lingerMs MEMBER m_lingerMs)

public:
    explicit DepartedConnections(QObject* parent = nullptr);

    void add(std::shared_ptr<IPCConnection> connection);

private:
    void deleteDue();

    struct Entry
    {
        qint64 dueMs = 0; // on m_clock
        std::shared_ptr<IPCConnection> connection;
    };

    int m_lingerMs = 2000;
    std::deque<Entry> m_entries; // the one due first in front
    QElapsedTimer m_clock;
    QTimer m_timer;
};

#endif
