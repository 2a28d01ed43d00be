// What keeps the role and its messages from others: other users, and processes that take no part;
// and what brings the messages back after a shortage.
#include "singleapplication/singleinstance_p.h"

#include "instanceprocess.h"
#include "support/childprocess.h"
#include "support/logcapture.h"

#include <QDir>
#include <QFile>
#include <QLocalSocket>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QUuid>

#include <memory>
#include <vector>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// A user beside root; it needs no entry among the system's users.
constexpr const char* kOtherUser = "65534";

ino_t inodeOf(const QString& path)
{
    struct stat status = {};
    return stat(qPrintable(path), &status) == 0 ? status.st_ino : 0;
}

// Leaves this process no descriptor while the object lives.
class DescriptorShortage
{
public:
    DescriptorShortage()
    {
        getrlimit(RLIMIT_NOFILE, &m_before);
        rlimit few = m_before;
        few.rlim_cur = qMin<rlim_t>(few.rlim_cur, 256);
        setrlimit(RLIMIT_NOFILE, &few);
        takeAll();
    }
    ~DescriptorShortage()
    {
        for (const int file : m_files)
            ::close(file);
        setrlimit(RLIMIT_NOFILE, &m_before);
    }
    DescriptorShortage(const DescriptorShortage&) = delete;
    DescriptorShortage& operator=(const DescriptorShortage&) = delete;

    /// Takes what has become free since.
    void takeAll()
    {
        for (int file = open(); file >= 0; file = open())
            m_files.push_back(file);
    }

private:
    static int open() { return ::open("/dev/null", O_RDONLY | O_CLOEXEC); }

    rlimit m_before = {};
    std::vector<int> m_files;
};

} // namespace

class tst_singleinstance : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void lockOfAnotherUserIsNone();
    void socketOfAnotherUserIsHandedNothing();
    void messageOfAnotherUserIsNotTaken();
    void silentConnectionIsClosed();
    void withoutTheLockTheSocketOfTheRunningOneStays();
    void lockIsNoLink();
    void shortageOfDescriptorsPasses();

private:
    // The paths of the lock and the socket, known from an instance that has been there.
    void findPaths();
    std::unique_ptr<ChildProcess> otherUser(const QString& does, const QString& path) const
    {
        return std::make_unique<ChildProcess>(HELPER_OTHERUSER,
                                              QStringList{kOtherUser, does, path});
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_id;
    QString m_lock;
    QString m_socket;
};

// A folder in which everybody may write, as the one for temporary files, and may even take away
// what others have put there.
void tst_singleinstance::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QCOMPARE(chmod(qPrintable(m_folder->path()), 0777), 0);
    qunsetenv("XDG_RUNTIME_DIR");
    qputenv("TMPDIR", QFile::encodeName(m_folder->path()));
    m_id = QUuid::createUuid().toString();
    findPaths();
}

void tst_singleinstance::cleanup()
{
    qunsetenv("TMPDIR");
}

void tst_singleinstance::findPaths()
{
    SingleInstance instance(m_id, nullptr);
    QVERIFY(!instance.isOtherRunning());
    const QDir folder(m_folder->path());
    const QStringList names = folder.entryList({QStringLiteral("qtsingleapp-*")}, QDir::Files);
    QCOMPARE(names.size(), 1);
    m_lock = folder.filePath(names.first());
    m_socket = m_lock + QLatin1String(".socket");
    QVERIFY(inodeOf(m_socket) != 0);
}

void tst_singleinstance::lockOfAnotherUserIsNone()
{
    if (geteuid() != 0)
        QSKIP("Only root can be two users");
    QVERIFY(QFile::remove(m_lock));
    const auto holder = otherUser("lock", m_lock);
    QVERIFY(holder->says("ready"));
    const auto listener = otherUser("listen", m_socket);
    QVERIFY(listener->says("ready"));

    const LogCapture log;
    SingleInstance instance(m_id, nullptr);
    QVERIFY(!instance.isOtherRunning());
    QVERIFY(log.contains(
        qPrintable("singleapplication/singleinstance lock " + m_lock + " is not this user's own")));
    QVERIFY(!instance.send(QStringLiteral("secret"), 2000));
    QVERIFY(!listener->output().contains("handed"));
}

void tst_singleinstance::socketOfAnotherUserIsHandedNothing()
{
    if (geteuid() != 0)
        QSKIP("Only root can be two users");
    SingleInstance first(m_id, nullptr);
    QVERIFY(!first.isOtherRunning());
    QVERIFY(QFile::remove(m_socket));
    const auto listener = otherUser("listen", m_socket);
    QVERIFY(listener->says("ready"));

    const LogCapture log;
    SingleInstance second(m_id, nullptr);
    QVERIFY(second.isOtherRunning());
    QVERIFY(!second.send(QStringLiteral("secret"), 2000));
    QCOMPARE(listener->lineWith("handed"), QByteArray("handed 0"));
    QVERIFY(log.contains(" refused: the other end is user 65534"));
}

void tst_singleinstance::messageOfAnotherUserIsNotTaken()
{
    if (geteuid() != 0)
        QSKIP("Only root can be two users");
    SingleInstance instance(m_id, nullptr);
    QVERIFY(!instance.isOtherRunning());
    // As if the system did not mind the permissions of sockets, which not every system does.
    QCOMPARE(chmod(qPrintable(m_socket), 0777), 0);
    const QSignalSpy received(&instance, &SingleInstance::messageReceived);
    const LogCapture log;
    const auto sender = otherUser("send", m_socket);
    QVERIFY(sender->says("refused"));
    QCOMPARE(received.size(), 0);
    QVERIFY(log.contains(" refused: the other end is user 65534"));
    // Its own user is heard all the same.
    QLocalSocket own;
    own.connectToServer(m_socket);
    QVERIFY(own.waitForConnected());
    own.write(QByteArray("\0\0\0\2hi", 6));
    QTRY_COMPARE(received.size(), 1);
    QCOMPARE(received.at(0).at(0).toString(), QStringLiteral("hi"));
}

void tst_singleinstance::silentConnectionIsClosed()
{
    SingleInstance instance(m_id, nullptr, 50);
    QVERIFY(!instance.isOtherRunning());
    QLocalSocket silent;
    silent.connectToServer(m_socket);
    QVERIFY(silent.waitForConnected());
    silent.write(QByteArray("\0\0\0\x09half", 8));
    QTRY_COMPARE(silent.state(), QLocalSocket::UnconnectedState);
}

void tst_singleinstance::withoutTheLockTheSocketOfTheRunningOneStays()
{
    SingleInstance running(m_id, nullptr);
    QVERIFY(!running.isOtherRunning());
    const ino_t before = inodeOf(m_socket);
    QVERIFY(QFile::remove(m_lock));
    QVERIFY(QDir().mkdir(m_lock)); // cannot be opened for writing
    {
        SingleInstance alone(m_id, nullptr);
        QVERIFY(!alone.isOtherRunning());
        QCOMPARE(inodeOf(m_socket), before);
    }
    QCOMPARE(inodeOf(m_socket), before);
    QLocalSocket client;
    client.connectToServer(m_socket);
    QVERIFY(client.waitForConnected());
}

void tst_singleinstance::lockIsNoLink()
{
    const QString elsewhere = m_folder->filePath("elsewhere");
    QVERIFY(QFile::remove(m_lock));
    QVERIFY(QFile::link(elsewhere, m_lock));
    const LogCapture log;
    SingleInstance instance(m_id, nullptr);
    QVERIFY(!instance.isOtherRunning());
    QVERIFY(!QFile::exists(elsewhere));
    QVERIFY(log.contains("singleapplication/singleinstance lock"));
}

void tst_singleinstance::shortageOfDescriptorsPasses()
{
    SingleInstance first(m_id, nullptr);
    QVERIFY(!first.isOtherRunning());
    const QSignalSpy received(&first, &SingleInstance::messageReceived);
    const LogCapture log;
    InstanceProcess early(m_id, "early");
    InstanceProcess again(m_id, "again", 1200);
    InstanceProcess late(m_id, "late", 2000);
    QCoreApplication::processEvents(); // Qt 5 closes descriptors of the start only here
    {
        DescriptorShortage shortage;
        QCOMPARE(early.outcome(), QStringLiteral("failed"));
        QCOMPARE(early.exitCode(), 1);
        shortage.takeAll(); // also the server's own and those of the process that has ended
        QCOMPARE(again.outcome(), QStringLiteral("failed"));
    }
    QCOMPARE(received.size(), 0);
    QCOMPARE(late.outcome(), QStringLiteral("sent"));
    QTRY_COMPARE(received.size(), 1);
    QCOMPARE(received.at(0).at(0).toString(), QStringLiteral("late"));
    QCOMPARE(log.count("singleapplication/singleinstance listenAgain"), 1);
}

QTEST_GUILESS_MAIN(tst_singleinstance)
#include "tst_singleinstance.moc"
