#include "Ipc/ipcclient.h"

#include "DataValue/datavalue.h"
#include "DataValue/jsontext_p.h"
#include "Ipc/directsend_p.h"
#include "Ipc/messageframe_p.h"
#include "Ipc/slotscope_p.h"
#include "Ipc/socketread_p.h"
#include "LogTask/logline_p.h"

#include <QPointer>
#include <QTimer>

namespace {

constexpr char kLogSource[] = "Ipc/ipcclient";

constexpr int notSent = 6;      // could not be sent; also "IPCMSG_ERROR_CODE" of the made-up reply
constexpr int notConnected = 7; // nothing was tried

constexpr int slotCheckMs = 10; // how often to look whether a slot has returned

QByteArray utf8Of(const CDataValue& value)
{
    return value.parseToQString(FAST_STYLE).toUtf8();
}

} // namespace

IPCClient::IPCClient(QString serverName, QObject* parent)
    : QObject(parent)
    , m_head(MessageFrame::defaultHead().toUtf8())
    , m_end(MessageFrame::defaultEnd().toUtf8())
    , m_frame(std::make_shared<MessageFrame>())
    , m_serverName(serverName)
    , m_running(std::make_shared<RunningSlots>())
{
}

IPCClient::~IPCClient()
{
    if (!m_socket)
        return;
    m_socket->disconnect(this);
    m_socket->abort();
    m_running->release(m_socket);
}

void IPCClient::initSocket()
{
    if (m_socket)
        return;
    m_socket = new QLocalSocket;
    connect(m_socket, &QLocalSocket::connected, this, &IPCClient::socket_connected);
    connect(m_socket, &QLocalSocket::disconnected, this, &IPCClient::socket_disconnected);
    connect(m_socket, &QLocalSocket::readyRead, this, &IPCClient::socket_readReady);
    connect(m_socket, &QLocalSocket::errorOccurred, this, &IPCClient::socket_error);
}

void IPCClient::connectToServer()
{
    initSocket();
    if (m_connected)
        return;
    logLine(kLogSource, "connectToServer", "Enter in IPCClient::connectToServer BEGIN");
    if (!m_running->any())
        m_socket->connectToServer(m_serverName, QIODevice::ReadWrite);
    else
        connectLater(0);
    logLine(kLogSource, "connectToServer", "Enter in IPCClient::connectToServer END");
}

// A socket that is in the middle of its own code, say in the emission of disconnected(), must not
// be connected anew: it would tear down the new connection when the emission returns.
void IPCClient::connectLater(int milliseconds)
{
    QTimer::singleShot(milliseconds, this, [this] {
        if (m_running->any()) // a slot runs an event loop
            connectLater(slotCheckMs);
        else if (m_socket->state() == QLocalSocket::UnconnectedState)
            m_socket->connectToServer(m_serverName, QIODevice::ReadWrite);
    });
}

bool IPCClient::isConnected()
{
    return m_connected;
}

void IPCClient::setDataSplitString(QString head, QString end)
{
    m_head = head.toUtf8();
    m_end = end.toUtf8();
    m_frame->setMarkers(head, end);
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
        return notConnected;
    const QByteArray frame = MessageFrame::wrap(m_head, text, m_end);
    logLine(kLogSource, "sendblock", "sendblock", logExcerpt(frame));
    const bool later = m_oneFlushPerRead && m_readDepth > 0;
    const qint64 written = later ? m_socket->write(frame) : writeDirectly(m_socket, frame);
    if (written <= 0)
        return notSent;
    logLine(kLogSource, "sendblock", "Write Len:", static_cast<int>(written));
    if (!later)
        m_socket->flush(); // may find that the peer has vanished, and end this object by a slot
    return 0;
}

void IPCClient::messageSend(const char* strMessage, const CDataValue* data, const char* strSenderID)
{
    const QPointer<IPCClient> self(this);
    CDataValue envelope(MAP_VALUE);
    envelope.mapSet("IPCMSG_TYPE", CDataValue(strMessage), false);
    if (data) {
        if (g_bLog)
            logLine(kLogSource, "messageSend", "messageSend",
                    logExcerpt(data->parseToQString(FAST_STYLE)));
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
    envelope.mapSet("IPCMSG_ERROR_CODE", CDataValue(notSent), false);
    Q_EMIT sigMessageReceived(&envelope);
}

void IPCClient::socket_connected()
{
    const SlotScope scope(this, m_running);
    m_frame->clear();
    m_connected = true;
    Q_EMIT sigIPCServerConnected();
    logLine(kLogSource, "socket_connected", "socket_connected");
}

void IPCClient::socket_disconnected()
{
    const SlotScope scope(this, m_running);
    if (!m_connected)
        return;
    m_connected = false;
    Q_EMIT sigIPCServerDisconnected();
    logLine(kLogSource, "socket_disconnected", "socket_disconnected");
}

void IPCClient::socket_error(QLocalSocket::LocalSocketError code)
{
    const SlotScope scope(this, m_running);
    logLine(kLogSource, "socket_error", "socket_error:", static_cast<int>(code));
    Q_EMIT sigIPCSocketError();
}

void IPCClient::socket_readReady()
{
    const SlotScope scope(this, m_running);
    const std::shared_ptr<MessageFrame> frame = m_frame; // a slot may end this object
    do {
        logLine(kLogSource, "socket_readReady", "socket_readReady");
        frame->append(readArrived(m_socket, &m_read));
        if (g_bLog)
            logLine(kLogSource, "socket_readReady", frame->bufferExcerpt());
        deliverAll(*frame);
        // A slot that runs an event loop lets bytes arrive that are not announced again.
    } while (scope.alive() && m_socket->bytesAvailable() > 0);
}

void IPCClient::deliverAll(MessageFrame& frame)
{
    const QPointer<IPCClient> self(this);
    ++m_readDepth;
    std::string body;
    while (self && frame.next(body) == MessageFrame::Body)
        deliver(body);
    if (!self)
        return;
    --m_readDepth;
    if (m_oneFlushPerRead && m_socket->bytesToWrite() > 0)
        m_socket->flush();
}

void IPCClient::deliver(const std::string& body)
{
    CDataValue value(MAP_VALUE);
    if (JsonText::parse(body, value))
        Q_EMIT sigMessageReceived(&value);
}
