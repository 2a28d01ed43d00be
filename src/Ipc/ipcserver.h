#ifndef IPC_IPCSERVER_H
#define IPC_IPCSERVER_H

#include "wzrframework_export.h"

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QObject>
#include <QString>

#include <memory>
#include <vector>

class DepartedConnections;
class IPCListener;
class RefusalLog;
struct IPCConnection;

/// How much a server takes from its clients. 0, the default, is no limit. A connection that goes
/// beyond one is ended, with a line in the log; the others do not notice. Connections that are
/// refused within 10 s of such a line are counted, and one line at the end of that time has the
/// count.
struct IPCLimits
{
    /// Bytes that one client has sent and that are no whole message yet, as counted after each
    /// read. While a slot runs an event loop, no more than this is taken from the client whose
    /// message it has.
    qint64 unfinishedBytes = 0;
    /// Bytes written to one client that the system has not taken from us, because it does not read.
    qint64 unsentBytes = 0;
    /// Clients at the same time, those included that wait in one-connection mode.
    int connections = 0;
};

/// Who is at the other end of a connection, as the system recorded it when it was made.
struct IPCPeer
{
    bool isKnown = false; ///< false: there is no such client, or the system does not tell
    qint64 processId = 0;
    quint32 userId = 0;
};

/// The serving end of the messaging between processes: listens under a name, numbers its clients,
/// cuts what they send into message texts and writes texts to one client or to all.
///
///     IPCServer server(nullptr);
///     QObject::connect(&server, &IPCServer::sigMessageReceived,
///                      [&](const QString& text, int id) { server.sendResponse(text, id); });
///     server.startListen("deviceservice");
///
/// It neither reads nor builds messages: its owner parses the text with
/// CDataValue::parseToDataValue() and answers with CDataValue::parseToQString().
///
/// **Client IDs** are 1, 2, 3, ... in the order of acceptance. When the last client has gone, the
/// next one is 1 again. What a client sent before it went is delivered afterwards too, but never
/// under an ID that is another client's by then: that can be so when a slot runs an event loop.
///
/// **Threads.** All calls are made in the thread in which the object lives; that thread runs an
/// event loop. Nothing waits for a client: what a slow client does not take is kept in memory.
///
/// **Failures** become result codes and lines in the log; nothing is thrown. A client that
/// vanishes, floods or stops reading does not disturb the others. Neither a message nor what is
/// kept for a client has a size limit, unless setLimits() sets one.
///
/// **Slots** connected to the signals may send, close() and delete the server itself; the other
/// bodies of the same read are then not delivered.
class WZRFRAMEWORK_EXPORT IPCServer : public QObject
{
    Q_OBJECT

public:
    explicit IPCServer(QObject* parent = nullptr);
    /// Stops listening and ends all connections, without signals.
    ~IPCServer() override;

    /// Listens for clients under `name`, a plain name or a path of a socket file. A socket file
    /// that an earlier run has left behind is removed first; so is that of a server which still
    /// runs, and that one gets no further clients. Always returns 0: when the name cannot be had,
    /// that is logged, and no client ever comes. A second call closes the first listener.
    ///
    /// When the process has no descriptor left, new clients wait, one line in the log says so, and
    /// they are accepted within a second of there being some; those who are connected are served.
    int startListen(QString name);

    /// Stops listening. Clients that are connected stay and are served as before; connections
    /// that were not accepted yet are ended. The socket's file is removed, unless another server
    /// has taken the name over meanwhile: that one stays reachable.
    void close();

    /// Accepts one client at a time from now on; there is no way back. A connection that comes
    /// while a client is there is left pending: neither accepted nor closed nor answered. It is
    /// taken, with what was sent on it so far, when a further connection arrives after the client
    /// has gone. This is meant. Only when more than 30 are pending, so that no further one is
    /// accepted, the oldest is taken as soon as the client has gone. A connection whose client has
    /// given up waiting is passed over, and what it asked for is not delivered.
    void setOnlyOneConnectionSupport();

    /// Replaces the markers around a message, "__BEGIN__" and "__END__", for all clients; both
    /// ends must use the same. Text that was received before is searched for the new ones. An
    /// empty head stands at the start of every message; an empty end is never found.
    void setMessageHeadAndEndIndication(QString head, QString end);

    /// With `on`, what slots of sigMessageReceived() send is written out once, when all messages
    /// of the read under way have been delivered, instead of with each call. Many small answers to
    /// clients that ask ahead then cost one system call for all; a single answer costs a little
    /// more. Results and contents are the same, but a client that has vanished may be noticed
    /// later. An event loop that a slot runs writes out what waits. Off by default.
    void setOneFlushPerRead(bool on);

    /// Limits what clients can make this process keep, from the next read, write and connection on.
    /// For servers whose clients are not all trusted. No limits by default.
    void setLimits(const IPCLimits& limits);

    /// The permissions of the socket's file, such as 0600, at the next startListen(). To connect, a
    /// client needs the permission to write. Nobody gets in before they are set. When they cannot
    /// be set, the server does not listen. By default, and with -1, what the system gives new
    /// files.
    void setSocketFileMode(int mode);

    /// Ends the connections of processes that run as other users than these, before anything is
    /// read or announced, with a line in the log; see IPCLimits. Holds for connections from now on.
    /// By default, and with an empty list, everybody is let in whom the file's permissions let in.
    void setAllowedUsers(const QList<quint32>& userIds);

    /// Who a connected client is. The process may have passed its connection on to another.
    IPCPeer peer(int clientId) const;

    /// Whether any client is connected.
    bool hasClientConnected();

    /// Sends `message` between the markers to one client. Returns 0, also when the write failed
    /// (which is logged), and -1 when there is no client of that ID. The client may be gone when
    /// the call returns: a peer that has vanished is noticed while writing, and
    /// sigIPCServerDisconnected() then comes inside the call.
    int sendResponse(QString message, int clientId);

    /// Sends `message` between the markers to every client, in ascending order of their IDs.
    void broadcastMsg(QString message);

Q_SIGNALS:
    /// A client was accepted. Its messages are delivered after this.
    void sigIPCServerConnected(int nClientID = 0);
    /// A client has gone. It still counts as connected until the signal has been delivered.
    void sigIPCServerDisconnected(int nClientID = 0);
    /// A message came: the text between the markers, not checked in any way.
    void sigMessageReceived(QString strRecData, int nClientID = 0);

private Q_SLOTS:
    void socket_new_connection();
    void socket_readReady();
    void socket_disconnected();

private:
    bool mayEnter(int descriptor) const;
    void accept();
    void catchUp(IPCConnection& client);
    void receive(IPCConnection& client);
    bool deliver(IPCConnection& client);
    bool isIdOfAnother(const IPCConnection& client) const;
    void send(IPCConnection& client, const QByteArray& frame, const char* function);
    void flushUnflushed();
    void limitReading(IPCConnection& client);
    void endBeyondLimit(IPCConnection& client, const char* what);
    void endWhenTooMuchIsUnsent(IPCConnection& client);
    void drop(IPCConnection& client);
    void numberAnewWhenAllHaveGone();

    std::shared_ptr<IPCListener> m_listener; // null while not listening
    QMap<int, std::shared_ptr<IPCConnection>> m_clients;
    DepartedConnections* m_departed; // this one and the next two are children
    RefusalLog* m_refusedUsers;
    RefusalLog* m_refusedBeyondLimit;
    int m_lastClientId = 0;
    QString m_head;
    QString m_end;
    QByteArray m_headBytes; // encoded
    QByteArray m_endBytes;
    IPCLimits m_limits;
    QList<quint32> m_allowedUsers; // empty: everybody
    int m_socketFileMode = -1;
    bool m_onlyOneConnection = false;
    bool m_oneFlushPerRead = false;
    QByteArray m_read;                                       // the last read
    int m_readDepth = 0;                                     // reads being delivered
    std::vector<std::shared_ptr<IPCConnection>> m_unflushed; // what was written to meanwhile
};

#endif
