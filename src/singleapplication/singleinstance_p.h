#ifndef SINGLEAPPLICATION_SINGLEINSTANCE_P_H
#define SINGLEAPPLICATION_SINGLEINSTANCE_P_H

#include <QElapsedTimer>
#include <QLocalServer>
#include <QObject>
#include <QString>
#include <QTimer>

class QLocalSocket;

/// The role of the one running instance with an id, and the messages to it; what the two
/// application classes share. Each of their libraries has it for itself.
///
/// The role is a lock on a file in the user's runtime directory (the temporary one where there is
/// none). The system drops the lock with the process, however that ends, and the file stays, so
/// there is nothing to clean up, no process number to mistake, and no moment between the two. Only
/// its holder listens on the socket beside it, and removes what an instance that crashed left
/// there.
///
/// Both belong to the user, in any case. A lock file of another user is no lock: this instance then
/// runs alone, as without any: nobody's message reaches it, and the log says so. Before a text is
/// sent, and before one is read, the system is asked which user the other end is; that of another
/// user is refused, whatever the permissions of the files are.
///
/// A message is its length as 4 bytes, highest first, and that many bytes of UTF-8; the answer, as
/// soon as it is read whole, is the one byte 6.
///
/// QLocalServer gives up and removes its socket when the system has no descriptor left for a
/// connection. The holder of the lock then listens again after at most half a second, with one line
/// in the log; messages sent in between may fail.
class SingleInstance : public QObject
{
    Q_OBJECT

public:
    /// A connection that has not sent its message after this time, in milliseconds, is closed.
    static constexpr int kSilenceLimitMs = 30000;

    SingleInstance(const QString& id, QObject* parent, int silenceLimitMs = kSilenceLimitMs);
    ~SingleInstance() override;

    QString id() const { return m_id; }

    /// See the application classes.
    bool isOtherRunning();
    bool send(const QString& message, int timeout);

Q_SIGNALS:
    void messageReceived(const QString& message);

private:
    enum class Role { Unknown, Mine, Others };

    Role lock();
    bool isOwnUser(const QLocalSocket& socket) const;
    void listen();
    void listenAgain();
    void takeConnection();
    void readMessage(QLocalSocket* socket);

    const QString m_id;
    const QString m_path; // of the lock file and, with a suffix, of the socket
    const int m_silenceLimitMs;
    int m_lockFile = -1;
    bool m_isMine = false;
    QLocalServer m_server;
    QTimer m_checkUp;
    QElapsedTimer m_lastShortage;
};

#endif
