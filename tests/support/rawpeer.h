#ifndef TESTS_SUPPORT_RAWPEER_H
#define TESTS_SUPPORT_RAWPEER_H

#include <QByteArray>
#include <QFile>
#include <QLocalServer>
#include <QString>

#include <cerrno>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

/// The address of a socket file.
inline sockaddr_un addressOf(const QString& path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const QByteArray name = QFile::encodeName(path);
    std::memcpy(address.sun_path, name.constData(),
                qMin<size_t>(size_t(name.size()), sizeof address.sun_path - 1));
    return address;
}

/// A descriptor that listens at a new socket file and does not wait; -1 when that failed. `queue`:
/// how many connections the system makes before they are accepted, less one.
inline int listenAt(const QString& path, int queue)
{
    const sockaddr_un address = addressOf(path);
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        listen(fd, queue) != 0) {
        ::close(fd);
        return -1;
    }
    return fd;
}

/// A client of a local socket without any Qt behind it: it writes single bytes when told to, does
/// not read unless told to, and vanishes at once. Only waitForBytes() waits for the other end.
class RawPeer
{
public:
    RawPeer() = default;
    /// `path`: QLocalServer::fullServerName().
    explicit RawPeer(const QString& path)
    {
        const sockaddr_un address = addressOf(path);
        m_fd = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
        if (connect(m_fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
            end();
    }
    ~RawPeer() { end(); }
    RawPeer(const RawPeer&) = delete;
    RawPeer& operator=(const RawPeer&) = delete;

    /// The server's end of a connection that waits at a descriptor of listenAt().
    static RawPeer accept(int listening)
    {
        return RawPeer(accept4(listening, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    }

    /// Leaves the file of a socket that nobody listens on, as a server that crashed does.
    static bool leaveSocketFile(const QString& path)
    {
        RawPeer listener;
        listener.m_fd = listenAt(path, 1);
        return listener.isOpen() && QFile::exists(path);
    }

    bool isOpen() const { return m_fd >= 0; }

    /// Writes what fits into the system's buffer; returns how many bytes did, -1 on an error.
    int send(const QByteArray& bytes)
    {
        const ssize_t sent =
            ::send(m_fd, bytes.constData(), size_t(bytes.size()), MSG_NOSIGNAL | MSG_DONTWAIT);
        return sent < 0 && errno == EAGAIN ? 0 : int(sent);
    }

    /// What has arrived so far.
    QByteArray receive()
    {
        QByteArray result;
        char buffer[4096];
        for (;;) {
            const ssize_t got = recv(m_fd, buffer, sizeof buffer, MSG_DONTWAIT);
            if (got <= 0)
                return result;
            result.append(buffer, int(got));
        }
    }

    /// Waits until bytes have arrived, or the other end has ended the connection.
    bool waitForBytes(int milliseconds) const
    {
        pollfd watched{m_fd, POLLIN, 0};
        return poll(&watched, 1, milliseconds) > 0;
    }

    /// Whether the other end has ended the connection.
    bool isEnded() const
    {
        pollfd watched{m_fd, POLLIN | POLLRDHUP, 0};
        return poll(&watched, 1, 0) > 0 && (watched.revents & (POLLHUP | POLLRDHUP)) != 0;
    }

    void end()
    {
        if (m_fd >= 0)
            ::close(m_fd);
        m_fd = -1;
    }

private:
    explicit RawPeer(int fd)
        : m_fd(fd)
    {
    }

    int m_fd = -1;
};

#endif
