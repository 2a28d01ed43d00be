#include "singleapplication/singleinstance_p.h"

#include "LogTask/logline_p.h"
#include "platform/socketpeer_p.h"

#include <QCryptographicHash>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocalSocket>
#include <QThread>
#include <QTimer>
#include <QtEndian>

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr char kLogSource[] = "singleapplication/singleinstance";
constexpr char kReceived = 6;
constexpr qint64 kHeaderSize = 4;
constexpr quint32 kLongestMessage = 16 * 1024 * 1024;
constexpr int kRetryMs = 20; // between attempts to reach an instance that just starts

// How often it is looked whether the server still listens: it does not say when it stops.
constexpr int kCheckUpMs = 500;

// Shortages that follow each other more closely than this are one, with one line in the log.
constexpr int kOneShortageMs = 10000;

// A directory that only this user can write to, where there is one.
QString folder()
{
    QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    const QFileInfo info(runtime);
    if (info.isAbsolute() && info.isDir() && info.isWritable() && info.ownerId() == geteuid())
        return runtime;
    return QDir::tempPath();
}

// The id may be any text, and a socket's path at most about 100 bytes.
QString pathFor(const QString& id)
{
    const QByteArray hash = QCryptographicHash::hash(id.toUtf8(), QCryptographicHash::Sha256);
    return QStringLiteral("%1/qtsingleapp-%2-%3")
        .arg(folder(), QString::fromLatin1(hash.left(12).toHex()))
        .arg(geteuid());
}

int remaining(const QDeadlineTimer& deadline)
{
    return static_cast<int>(deadline.remainingTime());
}

bool isOwnFile(int file)
{
    struct stat status = {};
    return fstat(file, &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == geteuid();
}

// Reaches the instance that holds the lock; it may have taken it a moment ago and not listen yet.
bool reach(QLocalSocket& socket, const QString& name, const QDeadlineTimer& deadline)
{
    for (;;) {
        socket.connectToServer(name);
        if (socket.waitForConnected(remaining(deadline)))
            return true;
        socket.abort();
        if (remaining(deadline) <= kRetryMs)
            return false;
        QThread::msleep(kRetryMs);
    }
}

} // namespace

SingleInstance::SingleInstance(const QString& id, QObject* parent, int silenceLimitMs)
    : QObject(parent)
    , m_id(id)
    , m_path(pathFor(id))
    , m_silenceLimitMs(silenceLimitMs)
{
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&m_server, &QLocalServer::newConnection, this, &SingleInstance::takeConnection);
    m_checkUp.setInterval(kCheckUpMs);
    connect(&m_checkUp, &QTimer::timeout, this, &SingleInstance::listenAgain);
}

SingleInstance::~SingleInstance()
{
    // The socket goes first: once the lock is free, the next holder's stands in its place.
    m_server.close();
    if (m_lockFile >= 0)
        ::close(m_lockFile);
}

bool SingleInstance::isOtherRunning()
{
    if (m_isMine)
        return false;
    const Role role = lock();
    if (role == Role::Others)
        return true;
    m_isMine = true;
    // Without the lock the socket would be put in the place of the running instance's.
    if (role == Role::Mine)
        listen();
    return false;
}

SingleInstance::Role SingleInstance::lock()
{
    const int file = ::open(QFile::encodeName(m_path).constData(),
                            O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    // Where all may write, another user may have put the file there, and keep it locked.
    if (file >= 0 && !isOwnFile(file)) {
        ::close(file);
        logLine(kLogSource, "lock", m_path, "is not this user's own");
        return Role::Unknown;
    }
    if (file >= 0 && flock(file, LOCK_EX | LOCK_NB) == 0) {
        m_lockFile = file;
        return Role::Mine;
    }
    const int error = errno;
    if (file >= 0)
        ::close(file);
    if (error == EWOULDBLOCK)
        return Role::Others;
    logLine(kLogSource, "lock", m_path, std::strerror(error));
    return Role::Unknown;
}

bool SingleInstance::isOwnUser(const QLocalSocket& socket) const
{
    const SocketPeer peer = socketPeer(static_cast<int>(socket.socketDescriptor()));
    if (peer.isKnown && peer.userId == geteuid())
        return true;
    logLine(kLogSource, "isOwnUser", m_path, "refused: the other end is user",
            peer.isKnown ? QString::number(peer.userId) : QStringLiteral("unknown"));
    return false;
}

void SingleInstance::listen()
{
    const QString name = m_path + QLatin1String(".socket");
    QLocalServer::removeServer(name);
    if (!m_server.listen(name)) {
        logLine(kLogSource, "listen", name, m_server.errorString());
        m_lastShortage.start();
    }
    m_checkUp.start();
}

// The server's own descriptor is free once it has given up. So it may be able to listen again and
// give up again with the next connection, for as long as the shortage lasts.
void SingleInstance::listenAgain()
{
    const QString name = m_path + QLatin1String(".socket");
    // With Qt 5, a server that has given up still counts as listening. Its file is gone.
    if (m_server.isListening() && QFile::exists(name))
        return;
    if (!m_lastShortage.isValid() || m_lastShortage.hasExpired(kOneShortageMs))
        logLine(kLogSource, "listenAgain", name,
                "does not listen, trying again:", m_server.errorString());
    m_lastShortage.start();
    m_server.close();
    QLocalServer::removeServer(name);
    m_server.listen(name);
}

bool SingleInstance::send(const QString& message, int timeout)
{
    if (!isOtherRunning())
        return false;
    const QByteArray text = message.toUtf8();
    if (static_cast<quint64>(text.size()) > kLongestMessage) {
        logLine(kLogSource, "send", "The message is too long:", QString::number(text.size()));
        return false;
    }
    const QDeadlineTimer deadline(qMax(timeout, 0));
    QLocalSocket socket;
    if (!reach(socket, m_path + QLatin1String(".socket"), deadline) || !isOwnUser(socket))
        return false;
    QByteArray header(kHeaderSize, '\0');
    qToBigEndian(static_cast<quint32>(text.size()), header.data());
    socket.write(header + text);
    while (socket.bytesToWrite() > 0) {
        if (!socket.waitForBytesWritten(remaining(deadline)))
            return false;
    }
    if (socket.bytesAvailable() == 0 && !socket.waitForReadyRead(remaining(deadline)))
        return false;
    char answer = 0;
    return socket.getChar(&answer) && answer == kReceived;
}

void SingleInstance::takeConnection()
{
    while (QLocalSocket* const socket = m_server.nextPendingConnection()) {
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        if (!isOwnUser(*socket)) {
            socket->abort();
            continue;
        }
        connect(socket, &QLocalSocket::readyRead, this, [this, socket] { readMessage(socket); });
        QTimer::singleShot(m_silenceLimitMs, socket, &QLocalSocket::abort);
        readMessage(socket);
    }
}

void SingleInstance::readMessage(QLocalSocket* socket)
{
    QByteArray header = socket->peek(kHeaderSize);
    if (header.size() < kHeaderSize)
        return;
    const auto length = qFromBigEndian<quint32>(header.constData());
    if (length > kLongestMessage) {
        logLine(kLogSource, "readMessage", "A message is too long:", QString::number(length));
        socket->abort();
        return;
    }
    if (socket->bytesAvailable() < kHeaderSize + static_cast<qint64>(length))
        return;
    socket->skip(kHeaderSize);
    const QByteArray utf8 = socket->read(length);
    // With its length: without, Qt 5 stops at a zero character.
    const QString message = QString::fromUtf8(utf8.constData(), static_cast<int>(utf8.size()));
    // One message per connection. The answer goes first: a slot may open a dialogue and stay.
    disconnect(socket, &QLocalSocket::readyRead, this, nullptr);
    socket->putChar(kReceived);
    socket->flush();
    socket->disconnectFromServer();
    Q_EMIT messageReceived(message);
}
