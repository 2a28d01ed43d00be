#include "singleapplication/singleinstance_p.h"

#include "LogTask/logline_p.h"

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
#include <unistd.h>

namespace {

constexpr char kLogSource[] = "singleapplication/singleinstance";
constexpr char received = 6;
constexpr qint64 headerSize = 4;
constexpr quint32 longestMessage = 16 * 1024 * 1024;
constexpr int silenceLimit = 30000; // ms that a connection may take to send its message
constexpr int retryInterval = 20;   // ms between attempts to reach an instance that just starts

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

// Reaches the instance that holds the lock; it may have taken it a moment ago and not listen yet.
bool reach(QLocalSocket& socket, const QString& name, const QDeadlineTimer& deadline)
{
    for (;;) {
        socket.connectToServer(name);
        if (socket.waitForConnected(remaining(deadline)))
            return true;
        socket.abort();
        if (remaining(deadline) <= retryInterval)
            return false;
        QThread::msleep(retryInterval);
    }
}

} // namespace

SingleInstance::SingleInstance(const QString& id, QObject* parent)
    : QObject(parent)
    , m_id(id)
    , m_path(pathFor(id))
{
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&m_server, &QLocalServer::newConnection, this, &SingleInstance::takeConnection);
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
    if (lock() == Role::Others)
        return true;
    m_isMine = true;
    listen();
    return false;
}

SingleInstance::Role SingleInstance::lock()
{
    const int file = ::open(QFile::encodeName(m_path).constData(),
                            O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
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

void SingleInstance::listen()
{
    const QString name = m_path + QLatin1String(".socket");
    if (m_lockFile >= 0)
        QLocalServer::removeServer(name);
    if (!m_server.listen(name))
        logLine(kLogSource, "listen", name, m_server.errorString());
}

bool SingleInstance::send(const QString& message, int timeout)
{
    if (!isOtherRunning())
        return false;
    const QByteArray text = message.toUtf8();
    if (static_cast<quint64>(text.size()) > longestMessage) {
        logLine(kLogSource, "send", "The message is too long:", QString::number(text.size()));
        return false;
    }
    const QDeadlineTimer deadline(qMax(timeout, 0));
    QLocalSocket socket;
    if (!reach(socket, m_path + QLatin1String(".socket"), deadline))
        return false;
    QByteArray header(headerSize, '\0');
    qToBigEndian(static_cast<quint32>(text.size()), header.data());
    socket.write(header + text);
    while (socket.bytesToWrite() > 0) {
        if (!socket.waitForBytesWritten(remaining(deadline)))
            return false;
    }
    if (socket.bytesAvailable() == 0 && !socket.waitForReadyRead(remaining(deadline)))
        return false;
    char answer = 0;
    return socket.getChar(&answer) && answer == received;
}

void SingleInstance::takeConnection()
{
    while (QLocalSocket* const socket = m_server.nextPendingConnection()) {
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        connect(socket, &QLocalSocket::readyRead, this, [this, socket] { readMessage(socket); });
        QTimer::singleShot(silenceLimit, socket, &QLocalSocket::abort);
        readMessage(socket);
    }
}

void SingleInstance::readMessage(QLocalSocket* socket)
{
    QByteArray header = socket->peek(headerSize);
    if (header.size() < headerSize)
        return;
    const auto length = qFromBigEndian<quint32>(header.constData());
    if (length > longestMessage) {
        logLine(kLogSource, "readMessage", "A message is too long:", QString::number(length));
        socket->abort();
        return;
    }
    if (socket->bytesAvailable() < headerSize + static_cast<qint64>(length))
        return;
    socket->skip(headerSize);
    const QString message = QString::fromUtf8(socket->read(length));
    // One message per connection. The answer goes first: a slot may open a dialogue and stay.
    disconnect(socket, &QLocalSocket::readyRead, this, nullptr);
    socket->putChar(received);
    socket->flush();
    socket->disconnectFromServer();
    Q_EMIT messageReceived(message);
}
