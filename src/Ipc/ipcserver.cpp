#include "Ipc/ipcserver.h"

#include "Ipc/directsend_p.h"
#include "Ipc/messageframe_p.h"
#include "Ipc/slotscope_p.h"
#include "Ipc/socketread_p.h"
#include "LogTask/logline_p.h"

#include <QLocalServer>
#include <QLocalSocket>
#include <QPointer>
#include <QTimer>

#include <atomic>
#include <utility>

namespace {

constexpr char kLogSource[] = "Ipc/ipcserver";

// How long a socket whose client has gone is kept, so that no slot that runs on it is cut short.
constexpr int socketLingerMs = 2000;

std::atomic<int> newConnectionCalls{0};

} // namespace

IPCServer::IPCServer(QObject* parent)
    : QObject(parent)
    , m_head(MessageFrame::defaultHead())
    , m_end(MessageFrame::defaultEnd())
    , m_headBytes(m_head.toUtf8())
    , m_endBytes(m_end.toUtf8())
    , m_running(std::make_shared<RunningSlots>())
{
}

IPCServer::~IPCServer()
{
    close();
    const auto sockets = findChildren<QLocalSocket*>(QString(), Qt::FindDirectChildrenOnly);
    for (QLocalSocket* socket : sockets) {
        socket->disconnect(this);
        m_running->release(socket);
    }
}

int IPCServer::startListen(QString name)
{
    close();
    m_server = new QLocalServer(this);
    QLocalServer::removeServer(name);
    if (!m_server->listen(name))
        logLine(kLogSource, "startListen", "Not able to start the Server");
    connect(m_server, &QLocalServer::newConnection, this, &IPCServer::socket_new_connection);
    return 0;
}

void IPCServer::close()
{
    if (!m_server)
        return;
    QLocalServer* const server = m_server;
    m_server = nullptr;
    m_leftPending = 0;
    server->disconnect(this);
    server->close(); // ends the connections that are still pending
    const auto sockets = server->findChildren<QLocalSocket*>(QString(), Qt::FindDirectChildrenOnly);
    for (QLocalSocket* socket : sockets)
        socket->setParent(this);
    m_running->release(server);
}

void IPCServer::setOnlyOneConnectionSupport()
{
    m_onlyOneConnection = true;
}

void IPCServer::setMessageHeadAndEndIndication(QString head, QString end)
{
    m_head = head;
    m_end = end;
    m_headBytes = head.toUtf8();
    m_endBytes = end.toUtf8();
    for (const Client& client : std::as_const(m_clients)) {
        if (client.frame)
            client.frame->setMarkers(head, end);
    }
}

bool IPCServer::hasClientConnected()
{
    return !m_clients.isEmpty();
}

void IPCServer::setOneFlushPerRead(bool on)
{
    m_oneFlushPerRead = on;
}

int IPCServer::sendResponse(QString message, int clientId)
{
    const auto client = m_clients.constFind(clientId);
    if (client == m_clients.constEnd()) {
        logLine(kLogSource, "sendResponse", "No socket!!");
        return -1;
    }
    if (!client->socket)
        return 0;
    logLine(kLogSource, "sendResponse", "send response:", logExcerpt(m_head, message, m_end));
    send(client->socket, MessageFrame::wrap(m_headBytes, message.toUtf8(), m_endBytes),
         "sendResponse");
    return 0;
}

void IPCServer::broadcastMsg(QString message)
{
    const QPointer<IPCServer> self(this);
    const QMap<int, Client> clients = m_clients; // a write can end connections, and this object
    const QByteArray frame = MessageFrame::wrap(m_headBytes, message.toUtf8(), m_endBytes);
    for (auto client = clients.cbegin(); self && client != clients.cend(); ++client) {
        if (m_clients.value(client.key()).socket != client->socket)
            continue;
        logLine(kLogSource, "broadcastMsg", "broadcastMsg", client.key());
        if (client->socket)
            send(client->socket, frame, "broadcastMsg");
    }
}

// The flush may find that the peer has vanished. Slots then run inside the call, and both the
// socket's client and this object may be gone afterwards.
void IPCServer::send(QLocalSocket* socket, const QByteArray& frame, const char* function)
{
    const bool later = m_oneFlushPerRead && m_readDepth > 0;
    if ((later ? socket->write(frame) : writeDirectly(socket, frame)) == 0)
        logLine(kLogSource, function, "sendResponse Write Zero byte to client!!!!");
    if (!later)
        socket->flush();
    else if (!m_unflushed.contains(socket))
        m_unflushed.append(socket);
}

void IPCServer::flushUnflushed()
{
    const auto sockets = std::exchange(m_unflushed, {}); // a flush can end this object
    for (const QPointer<QLocalSocket>& socket : sockets) {
        if (socket)
            socket->flush();
    }
}

void IPCServer::socket_new_connection()
{
    const SlotScope scope(this, m_running);
    logLine(kLogSource, "socket_new_connection", "socket_new_connection:", ++newConnectionCalls);
    if (m_onlyOneConnection && !m_clients.isEmpty()) {
        logLine(kLogSource, "socket_new_connection", "new connection coming but discard!!!!!!");
        ++m_leftPending;
        return;
    }
    accept();
}

void IPCServer::accept()
{
    const SlotScope scope(this, m_running);
    const int id = ++m_lastClientId;
    logLine(kLogSource, "socket_new_connection", "begin get socket");
    QLocalSocket* const socket = m_server ? m_server->nextPendingConnection() : nullptr;
    m_clients.insert(id, Client{socket, std::make_shared<MessageFrame>(m_head, m_end)});
    logLine(kLogSource, "socket_new_connection", "end get socket");
    Q_EMIT sigIPCServerConnected(id);
    logLine(kLogSource, "socket_new_connection", "end emit");
    if (!scope.alive())
        return;
    if (socket) {
        connect(socket, &QLocalSocket::readyRead, this, &IPCServer::socket_readReady);
        connect(socket, &QLocalSocket::disconnected, this, &IPCServer::socket_disconnected);
    }
    logLine(kLogSource, "socket_new_connection", "end");
    if (socket)
        catchUp(socket, id);
}

// What happened to a socket while nobody listened to it is not announced again.
void IPCServer::catchUp(QLocalSocket* socket, int id)
{
    const QPointer<IPCServer> self(this);
    if (socket->bytesAvailable() > 0)
        receive(socket);
    if (self && idOf(socket) == id && socket->state() == QLocalSocket::UnconnectedState)
        dropClient(socket);
}

// The ID of the client with this socket; 0 when there is none.
int IPCServer::idOf(const QLocalSocket* socket) const
{
    for (auto client = m_clients.cbegin(); client != m_clients.cend(); ++client) {
        if (client->socket == socket)
            return client.key();
    }
    return 0;
}

void IPCServer::socket_readReady()
{
    if (auto* const socket = qobject_cast<QLocalSocket*>(sender()))
        receive(socket);
}

void IPCServer::receive(QLocalSocket* socket)
{
    const SlotScope scope(this, m_running);
    const int id = idOf(socket);
    // Kept here, because a slot may end the connection: what was read is delivered all the same.
    const std::shared_ptr<MessageFrame> frame = m_clients.value(id).frame;
    if (!frame)
        return;
    do {
        frame->append(readArrived(socket, &m_read));
        ++m_readDepth;
        if (!deliver(*frame, id))
            return;
        --m_readDepth;
        if (!m_unflushed.isEmpty())
            flushUnflushed();
        // A slot that runs an event loop lets bytes arrive that are not announced again.
    } while (scope.alive() && socket->bytesAvailable() > 0);
}

// False when a slot has ended this object.
bool IPCServer::deliver(MessageFrame& frame, int id)
{
    const QPointer<IPCServer> self(this);
    QString body;
    MessageFrame::Outcome outcome = frame.next(body);
    for (; outcome == MessageFrame::Body; outcome = frame.next(body)) {
        logLine(kLogSource, "socket_readReady", "emit sigMessageReceived!!");
        logLine(kLogSource, "socket_readReady", "strDataValue =", logExcerpt(body));
        Q_EMIT sigMessageReceived(body, id);
        if (!self)
            return false;
    }
    if (outcome == MessageFrame::NoHead)
        logLine(kLogSource, "socket_readReady", "nStartPost not find");
    else if (outcome == MessageFrame::NoEnd)
        logLine(kLogSource, "socket_readReady", "nEndPos not find");
    return true;
}

void IPCServer::socket_disconnected()
{
    dropClient(qobject_cast<QLocalSocket*>(sender()));
}

void IPCServer::dropClient(QLocalSocket* socket)
{
    const SlotScope scope(this, m_running);
    const int id = socket ? idOf(socket) : 0;
    logLine(kLogSource, "socket_disconnected", "socket_disconnected", id);
    if (socket) {
        Q_EMIT sigIPCServerDisconnected(id);
        if (!scope.alive())
            return;
        if (m_clients.value(id).socket == socket)
            m_clients.remove(id);
        deleteInAWhile(socket);
    }
    if (!m_clients.isEmpty())
        return;
    m_lastClientId = 0;
    if (isDeaf()) {
        --m_leftPending;
        accept();
    }
}

// A slot that still runs on the socket must not be cut short, and may itself run an event loop.
void IPCServer::deleteInAWhile(QLocalSocket* socket)
{
    QTimer::singleShot(socketLingerMs, this, [this, socket] {
        if (m_running->any())
            deleteInAWhile(socket);
        else
            socket->deleteLater();
    });
}

// Whether the listener holds so many pending connections that it announces no further one.
bool IPCServer::isDeaf() const
{
    return m_server && m_leftPending > m_server->maxPendingConnections();
}
