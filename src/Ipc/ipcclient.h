#ifndef IPC_IPCCLIENT_H
#define IPC_IPCCLIENT_H

#include "wzrframework_export.h"

#include <QByteArray>
#include <QList>
#include <QLocalSocket>
#include <QObject>
#include <QString>

#include <memory>
#include <string>

class CDataValue;
class QTimer;
struct IPCConnection;

/// The client end of the messaging between processes: connects to a server by its name, sends
/// requests as envelopes and delivers the envelopes that come back.
///
///     IPCClient client("deviceservice", nullptr);
///     QObject::connect(&client, &IPCClient::sigMessageReceived, [](CDataValue* envelope) {
///         qDebug() << envelope->mapGet("IPCMSG_TYPE").asQString();
///     });
///     client.connectToServer();
///     client.messageSend("WZR_MESSAGE_APPLICATION_GET_DEV_ID", &payload, "dashboard");
///
/// The request travels as
/// `__BEGIN__{"IPCMSG_MSG_SENDER":"dashboard","IPCMSG_TYPE":"...","IPCMSG_USER_DATA":...}` with a
/// line feed, then `__END__`. docs/wire.md describes the form.
///
/// **A requester always hears back.** A request that cannot be sent is answered by the client
/// itself, inside the call: see messageSend().
///
/// **Threads.** All calls are made in the thread in which the object lives; that thread runs an
/// event loop. Nothing waits for the server: what it does not take is kept in memory.
///
/// **Failures** become result codes, signals and lines in the log; nothing is thrown.
///
/// **Slots** connected to the signals may send, connect anew and delete the client itself.
class WZRFRAMEWORK_EXPORT IPCClient : public QObject
{
    Q_OBJECT

public:
    /// `serverName`: the name, or path of the socket file, that the server listens under.
    explicit IPCClient(QString serverName, QObject* parent = nullptr);
    /// Ends the connection, without signals.
    ~IPCClient() override;

    /// Makes the socket; connectToServer() does it by itself. Further calls do nothing.
    void initSocket();

    /// Starts to connect; does nothing when connected. The outcome is sigIPCServerConnected() or
    /// sigIPCSocketError(); where the system answers at once, it comes inside the call. Called
    /// from a slot of this object's signals, it starts when the slot has returned. The same object
    /// can connect again after a disconnection.
    ///
    /// A failure is not retried. But while a server accepts nobody, say because it hangs, and the
    /// system's queue for it is full, the attempt goes on, several times a second, for 30 s; then
    /// sigIPCSocketError() comes. A further call in that time tries at once and begins the 30 s
    /// anew.
    void connectToServer();

    /// Connects only to servers that run as one of these users. Any other is left again before
    /// anything is sent to it or taken from it, with a line in the log and sigIPCSocketError(). For
    /// clients that send secrets: whoever comes first may take a name. By default, and with an
    /// empty list, every server is trusted.
    void setTrustedServerUsers(const QList<quint32>& userIds);

    bool isConnected();

    /// Replaces the markers around a message, "__BEGIN__" and "__END__"; both ends must use the
    /// same. Text that was received before is searched for the new ones. An empty head stands at
    /// the start of every message; an empty end is never found.
    void setDataSplitString(QString head, QString end);

    /// With `on`, what slots of sigMessageReceived() send is written out once, when all messages
    /// of the read under way have been delivered, instead of with each call; see
    /// IPCServer::setOneFlushPerRead(). Off by default.
    void setOneFlushPerRead(bool on);

    /// Sends `text` between the markers. Returns 0 when the connection has taken it, 7 when the
    /// client is not connected, 6 when the write failed.
    int sendblock(const QString& text);

public Q_SLOTS:
    /// Sends an envelope: `strMessage` as "IPCMSG_TYPE", a copy of `data` as "IPCMSG_USER_DATA"
    /// and `strSenderID` as "IPCMSG_MSG_SENDER", the latter two only when they are not null.
    ///
    /// When it cannot be sent, or the connection is lost while it is, sigMessageReceived() is
    /// emitted before the call returns, with an envelope of the same members and
    /// "IPCMSG_ERROR_CODE" 6.
    void messageSend(const char* strMessage, const CDataValue* data,
                     const char* strSenderID = nullptr);

Q_SIGNALS:
    /// An envelope came. It belongs to the client and lives until the emission ends: connect
    /// directly, copy what is to be kept, never delete it. Text that is no value is dropped.
    void sigMessageReceived(CDataValue* datavalue);
    void sigIPCServerConnected();
    /// The connection was lost or ended; once for each sigIPCServerConnected().
    void sigIPCServerDisconnected();
    /// The connection could not be made, or failed. Comes before sigIPCServerDisconnected() when
    /// the server ends a connection.
    void sigIPCSocketError();

private Q_SLOTS:
    void socket_connected();
    void socket_disconnected();
    void socket_readReady();
    void socket_error(QLocalSocket::LocalSocketError code);

private:
    friend class IPCCalls;
    /// The reply that is made up at the moment, and what sendEnvelope() was called for.
    struct MadeUp
    {
        const CDataValue* reply = nullptr;
        const void* request = nullptr;
    };

    void startConnecting();
    void giveUp();
    bool isServerTrusted() const;
    void leaveRefusedServer();
    void deliverAll();
    void deliver(const std::string& body);
    int sendUtf8(const QByteArray& text);
    /// messageSend() for a caller that knows its own reply by `request`; null when it does not.
    void sendEnvelope(const char* strMessage, const CDataValue* data, const char* strSenderID,
                      const void* request);

    std::shared_ptr<IPCConnection> m_connection; // without a socket until initSocket()
    QByteArray m_head;                           // encoded
    QByteArray m_end;
    QByteArray m_read; // the last read
    QString m_serverName;
    QList<quint32> m_trustedServerUsers; // empty: every server
    bool m_isRefused = false;            // connected, but not to be talked to
    bool m_connected = false;
    bool m_oneFlushPerRead = false;
    MadeUp m_madeUp;
    int m_readDepth = 0; // how many reads are being delivered
    QTimer* m_tryAgain;  // children; both run while the server has no room for a connection
    QTimer* m_giveUp;
};

#endif
