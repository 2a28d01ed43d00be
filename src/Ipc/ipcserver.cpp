#include "Ipc/ipcserver.h"

#include "Ipc/directsend_p.h"
#include "Ipc/ipcconnection_p.h"
#include "Ipc/ipclistener_p.h"
#include "Ipc/messageframe_p.h"
#include "Ipc/refusallog_p.h"
#include "Ipc/socketread_p.h"
#include "LogTask/logline_p.h"
#include "platform/socketpeer_p.h"

#include <QLocalSocket>
#include <QPointer>

#include <atomic>
#include <utility>

namespace {

constexpr char kLogSource[] = "Ipc/ipcserver";

std::atomic<int> g_newConnectionCalls{0};

} // namespace

IPCServer::IPCServer(QObject* parent)
    : QObject(parent)
    , m_departed(new DepartedConnections(this))
    , m_refusedUsers(new RefusalLog(this))
    , m_refusedBeyondLimit(new RefusalLog(this))
    , m_head(MessageFrame::defaultHead())
    , m_end(MessageFrame::defaultEnd())
    , m_headBytes(m_head.toUtf8())
    , m_endBytes(m_end.toUtf8())
{
}

IPCServer::~IPCServer()
{
    close();
    for (const auto& client : std::as_const(m_clients))
        client->leaveOwner();
}

int IPCServer::startListen(QString name)
{
    close();
    m_listener = IPCListener::create(this, [this](int descriptor) { return mayEnter(descriptor); });
    QLocalServer::removeServer(name);
    if (!m_listener->listenUnder(name, m_socketFileMode))
        logLine(kLogSource, "startListen", "Not able to start the Server");
    connect(m_listener.get(), &IPCListener::newConnection, this, &IPCServer::socket_new_connection);
    return 0;
}

void IPCServer::close()
{
    if (!m_listener)
        return;
    m_listener->disconnect(this);
    m_listener->end();
    m_listener->setParent(nullptr); // a slot of its signal may still hold it
    for (const auto& client : std::as_const(m_clients)) {
        if (client->socket)
            client->socket->setParent(this);
    }
    m_listener.reset();
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
    for (const auto& client : std::as_const(m_clients))
        client->frame.setMarkers(head, end);
}

void IPCServer::setLimits(const IPCLimits& limits)
{
    m_limits = limits;
    for (const auto& client : std::as_const(m_clients))
        limitReading(*client);
}

void IPCServer::setSocketFileMode(int mode)
{
    m_socketFileMode = mode;
}

void IPCServer::setAllowedUsers(const QList<quint32>& userIds)
{
    m_allowedUsers = userIds;
}

IPCPeer IPCServer::peer(int clientId) const
{
    const auto client = m_clients.constFind(clientId);
    if (client == m_clients.constEnd() || !(*client)->socket)
        return {};
    const auto descriptor = static_cast<int>((*client)->socket->socketDescriptor());
    const SocketPeer peer = socketPeer(descriptor);
    return {peer.isKnown, peer.processId, peer.userId};
}

bool IPCServer::mayEnter(int descriptor) const
{
    if (!m_allowedUsers.isEmpty()) {
        const SocketPeer peer = socketPeer(descriptor);
        if (!peer.isKnown || !m_allowedUsers.contains(peer.userId)) {
            m_refusedUsers->note("connection refused, of user", static_cast<int>(peer.userId));
            return false;
        }
    }
    const int clients = static_cast<int>(m_clients.size()) + m_listener->waiting();
    if (m_limits.connections > 0 && clients >= m_limits.connections) {
        m_refusedBeyondLimit->note("connection refused, beyond the limit of", m_limits.connections);
        return false;
    }
    return true;
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
    if (!(*client)->socket)
        return 0;
    logLine(kLogSource, "sendResponse", "send response:", logExcerpt(m_head, message, m_end));
    send(**client, MessageFrame::wrap(m_headBytes, message.toUtf8(), m_endBytes), "sendResponse");
    return 0;
}

void IPCServer::broadcastMsg(QString message)
{
    const QPointer<IPCServer> self(this);
    const auto clients = m_clients; // a write can end connections, and this object
    const QByteArray frame = MessageFrame::wrap(m_headBytes, message.toUtf8(), m_endBytes);
    for (auto client = clients.cbegin(); self && client != clients.cend(); ++client) {
        if (m_clients.value(client.key()) != *client)
            continue;
        logLine(kLogSource, "broadcastMsg", "broadcastMsg", client.key());
        if ((*client)->socket)
            send(**client, frame, "broadcastMsg");
    }
}

// The flush may find that the peer has vanished. Slots then run inside the call, and this object
// may be gone afterwards.
void IPCServer::send(IPCConnection& client, const QByteArray& frame, const char* function)
{
    const IPCConnectionUse use(client);
    QLocalSocket* const socket = client.socket.get();
    const bool later = m_oneFlushPerRead && m_readDepth > 0;
    if ((later ? socket->write(frame) : writeDirectly(socket, frame)) == 0)
        logLine(kLogSource, function, "sendResponse Write Zero byte to client!!!!");
    if (!later) {
        const QPointer<IPCServer> self(this);
        socket->flush();
        if (self)
            endWhenTooMuchIsUnsent(client);
    } else if (!client.isUnflushed) {
        client.isUnflushed = true;
        m_unflushed.push_back(client.shared_from_this());
    }
}

void IPCServer::flushUnflushed()
{
    const QPointer<IPCServer> self(this); // a flush can end it
    const auto clients = std::exchange(m_unflushed, {});
    for (const auto& client : clients) {
        const IPCConnectionUse use(*client);
        client->isUnflushed = false;
        client->socket->flush();
        if (self)
            endWhenTooMuchIsUnsent(*client);
    }
}

void IPCServer::socket_new_connection()
{
    const std::shared_ptr<IPCListener> listener = m_listener; // a slot may close
    logLine(kLogSource, "socket_new_connection", "socket_new_connection:", ++g_newConnectionCalls);
    if (m_onlyOneConnection && !m_clients.isEmpty())
        logLine(kLogSource, "socket_new_connection", "new connection coming but discard!!!!!!");
    else
        accept();
}

void IPCServer::accept()
{
    const QPointer<IPCServer> self(this);
    const int id = ++m_lastClientId;
    logLine(kLogSource, "socket_new_connection", "begin get socket");
    const auto client = std::make_shared<IPCConnection>(m_head, m_end);
    client->id = id;
    if (m_listener)
        client->socket.reset(m_listener->nextPendingConnection());
    limitReading(*client);
    m_clients.insert(id, client);
    logLine(kLogSource, "socket_new_connection", "end get socket");
    Q_EMIT sigIPCServerConnected(id);
    logLine(kLogSource, "socket_new_connection", "end emit");
    if (!self)
        return;
    if (QLocalSocket* const socket = client->socket.get()) {
        IPCConnection* const sender = client.get(); // it cuts these links when it goes
        client->links.add(
            connect(socket, &QLocalSocket::readyRead, this, [this, sender] { receive(*sender); }));
        client->links.add(
            connect(socket, &QLocalSocket::disconnected, this, [this, sender] { drop(*sender); }));
    }
    logLine(kLogSource, "socket_new_connection", "end");
    if (client->socket)
        catchUp(*client);
}

// What happened to a socket while nobody listened to it is not announced again.
void IPCServer::catchUp(IPCConnection& client)
{
    const QPointer<IPCServer> self(this);
    if (client.socket->bytesAvailable() > 0)
        receive(client);
    if (self && client.socket->state() == QLocalSocket::UnconnectedState)
        drop(client);
}

// For those who call the slot by its name: no socket has sent anything.
void IPCServer::socket_readReady() {}

void IPCServer::receive(IPCConnection& client)
{
    const IPCConnectionUse use(client);
    const QPointer<IPCServer> self(this);
    do {
        client.frame.append(readArrived(client.socket.get(), &m_read));
        releaseLarge(&m_read);
        ++m_readDepth;
        if (!deliver(client))
            return;
        --m_readDepth;
        if (!m_unflushed.empty())
            flushUnflushed();
        if (self && m_limits.unfinishedBytes > 0 && client.frame.size() > m_limits.unfinishedBytes)
            endBeyondLimit(client, "bytes of an unfinished message");
        // A slot that runs an event loop lets bytes arrive that are not announced again.
    } while (self && client.socket->bytesAvailable() > 0);
}

// False when a slot has ended this object. What was read is delivered also when the connection has
// ended, but not under an ID that is another client's by then: answers would go to that one.
bool IPCServer::deliver(IPCConnection& client)
{
    const QPointer<IPCServer> self(this);
    QString body;
    MessageFrame::Outcome outcome = client.frame.next(body);
    for (; outcome == MessageFrame::Body; outcome = client.frame.next(body)) {
        if (isIdOfAnother(client)) {
            client.frame.clear();
            logLine(kLogSource, "deliver", "dropped the rest of a client that has gone", client.id);
            return true;
        }
        logLine(kLogSource, "socket_readReady", "emit sigMessageReceived!!");
        logLine(kLogSource, "socket_readReady", "strDataValue =", logExcerpt(body));
        Q_EMIT sigMessageReceived(body, client.id);
        if (!self)
            return false;
    }
    if (outcome == MessageFrame::NoHead)
        logLine(kLogSource, "socket_readReady", "nStartPost not find");
    else if (outcome == MessageFrame::NoEnd)
        logLine(kLogSource, "socket_readReady", "nEndPos not find");
    return true;
}

bool IPCServer::isIdOfAnother(const IPCConnection& client) const
{
    const auto found = m_clients.constFind(client.id);
    return found != m_clients.constEnd() && found->get() != &client;
}

void IPCServer::limitReading(IPCConnection& client)
{
    if (client.socket)
        client.socket->setReadBufferSize(m_limits.unfinishedBytes);
}

void IPCServer::endWhenTooMuchIsUnsent(IPCConnection& client)
{
    if (m_limits.unsentBytes > 0 && client.socket->bytesToWrite() > m_limits.unsentBytes)
        endBeyondLimit(client, "unsent bytes");
}

// The end is announced inside the call, as that of a client which has vanished.
void IPCServer::endBeyondLimit(IPCConnection& client, const char* what)
{
    if (client.hasEnded)
        return;
    logLine(kLogSource, "endBeyondLimit", "connection ended, beyond the limit of", what, client.id);
    client.socket->abort();
}

// For those who call the slot by its name: no socket has sent it.
void IPCServer::socket_disconnected()
{
    logLine(kLogSource, "socket_disconnected", "socket_disconnected", 0);
    numberAnewWhenAllHaveGone();
}

void IPCServer::drop(IPCConnection& client)
{
    if (client.hasEnded)
        return;
    client.hasEnded = true;
    const IPCConnectionUse use(client);
    const QPointer<IPCServer> self(this);
    logLine(kLogSource, "socket_disconnected", "socket_disconnected", client.id);
    Q_EMIT sigIPCServerDisconnected(client.id);
    if (!self)
        return;
    if (m_clients.value(client.id).get() == &client)
        m_clients.remove(client.id);
    m_departed->add(client.shared_from_this());
    numberAnewWhenAllHaveGone();
}

void IPCServer::numberAnewWhenAllHaveGone()
{
    if (!m_clients.isEmpty())
        return;
    m_lastClientId = 0;
    const std::shared_ptr<IPCListener> listener = m_listener; // a slot may close
    if (!listener || !listener->isFull())
        return;
    listener->passOverDeparted();
    if (listener->isFull())
        accept();
}
