#include "Ipc/ipcclient.h"

#include "DataValue/datavalue.h"
#include "DataValue/valueaccess_p.h"
#include "Ipc/directsend_p.h"
#include "Ipc/ipcconnection_p.h"
#include "Ipc/messageframe_p.h"
#include "Ipc/socketread_p.h"
#include "LogTask/logline_p.h"
#include "platform/socketpeer_p.h"

#include <QPointer>
#include <QTimer>

#include <utility>

namespace {

constexpr char kLogSource[] = "Ipc/ipcclient";

constexpr int kNotSent = 6;      // could not be sent; also "IPCMSG_ERROR_CODE" of the made-up reply
constexpr int kNotConnected = 7; // nothing was tried

constexpr int kTryAgainMs = 250; // while the server has no room for a connection
constexpr int kGiveUpMs = 30000;

// abort() makes the socket unconnected, close() stops what it still does to connect. Qt 6's abort()
// does both.
void endAttempt(QLocalSocket* socket)
{
    socket->abort();
    socket->close();
}

QByteArray utf8Of(const CDataValue& value)
{
    return value.parseToQString(FAST_STYLE).toUtf8();
}

} // namespace

IPCClient::IPCClient(QString serverName, QObject* parent)
    : QObject(parent)
    , m_connection(
          std::make_shared<IPCConnection>(MessageFrame::defaultHead(), MessageFrame::defaultEnd()))
    , m_head(MessageFrame::defaultHead().toUtf8())
    , m_end(MessageFrame::defaultEnd().toUtf8())
    , m_serverName(serverName)
    , m_tryAgain(new QTimer(this))
    , m_giveUp(new QTimer(this))
{
    m_tryAgain->setObjectName(QStringLiteral("tryAgain"));
    m_tryAgain->setSingleShot(true);
    m_tryAgain->setInterval(kTryAgainMs);
    connect(m_tryAgain, &QTimer::timeout, this, &IPCClient::startConnecting);
    m_giveUp->setObjectName(QStringLiteral("giveUp"));
    m_giveUp->setSingleShot(true);
    m_giveUp->setInterval(kGiveUpMs);
    connect(m_giveUp, &QTimer::timeout, this, &IPCClient::giveUp);
}

// A socket that is in the middle of its own code must not be aborted in it; it goes when that code
// has returned.
IPCClient::~IPCClient()
{
    m_connection->leaveOwner();
    if (m_connection->socket && m_connection.use_count() == 1)
        m_connection->socket->abort();
}

void IPCClient::initSocket()
{
    if (m_connection->socket)
        return;
    m_connection->socket = std::make_unique<QLocalSocket>();
    const QLocalSocket* const socket = m_connection->socket.get();
    SignalLinks& links = m_connection->links;
    links.add(connect(socket, &QLocalSocket::connected, this, &IPCClient::socket_connected));
    links.add(connect(socket, &QLocalSocket::disconnected, this, &IPCClient::socket_disconnected));
    links.add(connect(socket, &QLocalSocket::readyRead, this, &IPCClient::socket_readReady));
    links.add(connect(socket, &QLocalSocket::errorOccurred, this, &IPCClient::socket_error));
}

void IPCClient::connectToServer()
{
    initSocket();
    if (m_connected)
        return;
    logLine(kLogSource, "connectToServer", "Enter in IPCClient::connectToServer BEGIN");
    m_giveUp->stop();
    startConnecting(); // a slot may end this object
    logLine(kLogSource, "connectToServer", "Enter in IPCClient::connectToServer END");
}

// A socket that is in the middle of its own code, say in the emission of disconnected(), must not
// be connected anew: it would tear down the new connection when the emission returns.
void IPCClient::startConnecting()
{
    if (m_connection.use_count() > 1) {
        m_connection->whenUnused = [this] {
            QTimer::singleShot(0, this, [this] {
                if (!m_connected)
                    startConnecting();
            });
        };
        return;
    }
    const IPCConnectionUse use(*m_connection);
    const QPointer<IPCClient> self(this);
    QLocalSocket* const socket = m_connection->socket.get();
    m_tryAgain->stop();
    m_isRefused = false;
    if (socket->state() != QLocalSocket::UnconnectedState)
        endAttempt(socket);
    socket->connectToServer(m_serverName, QIODevice::ReadWrite);
    if (!self)
        return;
    if (socket->state() != QLocalSocket::ConnectingState) {
        m_giveUp->stop();
        return;
    }
    // The system's queue for the server is full. QLocalSocket would ask again without pause, and
    // after 30 s it would be neither connected nor able to try again.
    endAttempt(socket);
    m_tryAgain->start();
    if (!m_giveUp->isActive())
        m_giveUp->start();
}

void IPCClient::giveUp()
{
    m_tryAgain->stop();
    socket_error(QLocalSocket::SocketTimeoutError);
}

void IPCClient::setTrustedServerUsers(const QList<quint32>& userIds)
{
    m_trustedServerUsers = userIds;
}

bool IPCClient::isServerTrusted() const
{
    if (m_trustedServerUsers.isEmpty())
        return true;
    const auto descriptor = static_cast<int>(m_connection->socket->socketDescriptor());
    const SocketPeer peer = socketPeer(descriptor);
    if (peer.isKnown && m_trustedServerUsers.contains(peer.userId))
        return true;
    logLine(kLogSource, "socket_connected", "server refused, of user",
            static_cast<int>(peer.userId));
    return false;
}

// Not inside connected(): the socket would close its descriptor twice.
void IPCClient::leaveRefusedServer()
{
    if (!m_isRefused)
        return;
    if (m_connection.use_count() > 1) { // a slot runs an event loop
        m_connection->whenUnused = [this] {
            QTimer::singleShot(0, this, &IPCClient::leaveRefusedServer);
        };
        return;
    }
    m_isRefused = false;
    endAttempt(m_connection->socket.get());
    socket_error(QLocalSocket::SocketAccessError);
}

bool IPCClient::isConnected()
{
    return m_connected;
}

void IPCClient::setDataSplitString(QString head, QString end)
{
    m_head = head.toUtf8();
    m_end = end.toUtf8();
    m_connection->frame.setMarkers(head, end);
}

void IPCClient::setOneFlushPerRead(bool on)
{
    m_oneFlushPerRead = on;
}

int IPCClient::sendblock(const QString& text)
{
    return sendUtf8(text.toUtf8());
}

int IPCClient::sendUtf8(const QByteArray& text)
{
    if (!m_connected)
        return kNotConnected;
    const QByteArray frame = MessageFrame::wrap(m_head, text, m_end);
    logLine(kLogSource, "sendblock", "sendblock", logExcerpt(frame));
    const IPCConnectionUse use(*m_connection);
    QLocalSocket* const socket = m_connection->socket.get();
    const bool later = m_oneFlushPerRead && m_readDepth > 0;
    const qint64 written = later ? socket->write(frame) : writeDirectly(socket, frame);
    if (written <= 0)
        return kNotSent;
    logLine(kLogSource, "sendblock", "Write Len:", static_cast<int>(written));
    if (!later)
        socket->flush(); // may find that the peer has vanished, and end this object by a slot
    return 0;
}

void IPCClient::messageSend(const char* strMessage, const CDataValue* data, const char* strSenderID)
{
    sendEnvelope(strMessage, data, strSenderID, nullptr);
}

void IPCClient::sendEnvelope(const char* strMessage, const CDataValue* data,
                             const char* strSenderID, const void* request)
{
    const QPointer<IPCClient> self(this);
    CDataValue envelope(MAP_VALUE);
    envelope.mapSet("IPCMSG_TYPE", CDataValue(strMessage), false);
    if (data) {
        if (g_bLog)
            logLine(kLogSource, "messageSend", "messageSend",
                    logDataOf(strMessage, data->parseToQString(FAST_STYLE)));
        envelope.mapSet("IPCMSG_USER_DATA", *data, false);
    }
    if (strSenderID)
        envelope.mapSet("IPCMSG_MSG_SENDER", CDataValue(strSenderID), false);
    const QByteArray text = utf8Of(envelope);
    logLine(kLogSource, "messageSend", "messageSend", logExcerpt(text));
    const int result = sendUtf8(text);
    if (!self || (m_connected && result == 0))
        return;
    // The reply holds what the request held.
    envelope.mapSet("IPCMSG_ERROR_CODE", CDataValue(kNotSent), false);
    const MadeUp before = std::exchange(m_madeUp, {&envelope, request});
    Q_EMIT sigMessageReceived(&envelope);
    if (self)
        m_madeUp = before;
}

void IPCClient::socket_connected()
{
    const IPCConnectionUse use(*m_connection);
    if (!isServerTrusted()) {
        m_isRefused = true;
        QTimer::singleShot(0, this, &IPCClient::leaveRefusedServer);
        return;
    }
    m_connection->frame.clear();
    m_connected = true;
    Q_EMIT sigIPCServerConnected();
    logLine(kLogSource, "socket_connected", "socket_connected");
}

void IPCClient::socket_disconnected()
{
    if (!m_connected)
        return;
    const IPCConnectionUse use(*m_connection);
    m_connected = false;
    Q_EMIT sigIPCServerDisconnected();
    logLine(kLogSource, "socket_disconnected", "socket_disconnected");
}

void IPCClient::socket_error(QLocalSocket::LocalSocketError code)
{
    const IPCConnectionUse use(*m_connection);
    logLine(kLogSource, "socket_error", "socket_error:", static_cast<int>(code));
    Q_EMIT sigIPCSocketError();
}

void IPCClient::socket_readReady()
{
    if (!m_connection->socket || m_isRefused)
        return;
    const IPCConnectionUse use(*m_connection);
    const QPointer<IPCClient> self(this);
    IPCConnection& connection = *m_connection;
    do {
        logLine(kLogSource, "socket_readReady", "socket_readReady");
        connection.frame.append(readArrived(connection.socket.get(), &m_read));
        releaseLarge(&m_read);
        if (g_bLog)
            logLine(kLogSource, "socket_readReady", connection.frame.bufferExcerpt());
        deliverAll();
        // A slot that runs an event loop lets bytes arrive that are not announced again.
    } while (self && connection.socket->bytesAvailable() > 0);
}

void IPCClient::deliverAll()
{
    const QPointer<IPCClient> self(this);
    IPCConnection& connection = *m_connection; // in use: it outlives this object
    ++m_readDepth;
    std::string body;
    while (self && connection.frame.next(body) == MessageFrame::Body)
        deliver(body);
    if (!self)
        return;
    --m_readDepth;
    if (m_oneFlushPerRead && connection.socket->bytesToWrite() > 0)
        connection.socket->flush();
}

void IPCClient::deliver(const std::string& body)
{
    CDataValue value(MAP_VALUE);
    if (ValueAccess::parse(body, value))
        Q_EMIT sigMessageReceived(&value);
}
