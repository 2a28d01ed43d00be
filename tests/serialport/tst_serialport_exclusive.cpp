#include "farend.h"
#include "support/childprocess.h"

#include <QScopeGuard>
#include <QTemporaryDir>
#include <QTemporaryFile>

#include <cerrno>
#include <csignal>

#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/wait.h>

namespace {

// A user beside root; it needs no entry among the system's users.
constexpr const char* kOtherUser = "65534";

QByteArray failed(int error, qint64 holder)
{
    return "failed " + QByteArray::number(error) + ' ' + QByteArray::number(holder);
}

} // namespace

class tst_serialport_exclusive : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sharesTheLineByDefault();
    void keepsOutAnotherProcess();
    void failsWhereAnotherProcessHasTheLine();
    void keepsOutAnotherPortOfThisProcess();
    void keepsOutAnotherUserWhoDoesNotAsk();
    void namesTheOpenerOfAMarkedLine();
    void leavesTheOthersLineAsItIs();
    void isRefusedWhileOpen();
    void closeFreesTheLineWithAnotherOpenerThere();
    void closeFreesTheLineWithAChildThatInheritedIt();
    void endOfTheHolderFreesTheLock();
    void sharedOpenerThatCameBeforeStays();
    void nodeThatIsNoTerminalIsTakenToo();

private:
    std::unique_ptr<ChildProcess> opener(const QStringList& arguments)
    {
        return std::make_unique<ChildProcess>(HELPER_LINEOPENER, arguments, m_folder.path());
    }
    QTemporaryDir m_folder;
};

void tst_serialport_exclusive::sharesTheLineByDefault()
{
    const FarEnd modem;
    const auto other = opener({QString(modem.path()), "shared"});
    other->enter("open");
    QVERIFY(other->says("opened"));
    const Port port = newPort();
    QVERIFY(port->open(modem.path()));
    const Port second = newPort();
    QVERIFY(second->open(modem.path()));
}

void tst_serialport_exclusive::keepsOutAnotherProcess()
{
    const FarEnd modem;
    const Port port = newPort();
    QVERIFY(port->setExclusive(true));
    QVERIFY(port->open(modem.path()));
    const auto other = opener({QString(modem.path()), "exclusive"});
    other->enter("open");
    QCOMPARE(other->lineWith("ed"), failed(EBUSY, getpid()));
    port->close();
    other->enter("open");
    QCOMPARE(other->lineWith("ed"), QByteArray("opened"));
}

void tst_serialport_exclusive::failsWhereAnotherProcessHasTheLine()
{
    // Lines of this process, taken before and after, are not mistaken for the one in question.
    const FarEnd before;
    const Port portBefore = newPort();
    portBefore->setExclusive(true);
    QVERIFY(portBefore->open(before.path()));
    const FarEnd modem;
    const auto other = opener({QString(modem.path()), "exclusive"});
    other->enter("open");
    QVERIFY(other->says("opened"));
    const FarEnd after;
    const Port portAfter = newPort();
    portAfter->setExclusive(true);
    QVERIFY(portAfter->open(after.path()));

    const Port port = newPort();
    port->setExclusive(true);
    QVERIFY(!port->open(modem.path()));
    QCOMPARE(port->lastError(), EBUSY);
    QCOMPARE(port->holder(), std::int64_t(other->processId()));
    char byte = 0;
    QCOMPARE(port->read(&byte, 1), 0);

    other->enter("close");
    QVERIFY(other->says("closed"));
    QVERIFY(port->open(modem.path()));
    QCOMPARE(port->lastError(), 0);
    QCOMPARE(port->holder(), std::int64_t(0));
}

void tst_serialport_exclusive::keepsOutAnotherPortOfThisProcess()
{
    const FarEnd modem;
    const Port port = newPort();
    port->setExclusive(true);
    QVERIFY(port->open(modem.path()));
    const Port second = newPort();
    second->setExclusive(true);
    QVERIFY(!second->open(modem.path()));
    QCOMPARE(second->lastError(), EBUSY);
    QCOMPARE(second->holder(), std::int64_t(getpid()));
    second->setExclusive(false);
    QCOMPARE(second->open(modem.path()), geteuid() == 0);
}

// Root is never kept out by the mark, so the other opener is somebody else.
void tst_serialport_exclusive::keepsOutAnotherUserWhoDoesNotAsk()
{
    const FarEnd modem;
    QCOMPARE(chmod(modem.path(), 0666), 0);
    const Port port = newPort();
    port->setExclusive(true);
    QVERIFY(port->open(modem.path()));
    QStringList arguments{QString(modem.path()), "shared"};
    if (geteuid() == 0)
        arguments << kOtherUser;
    const auto other = opener(arguments);
    other->enter("open");
    QCOMPARE(other->lineWith("ed"), failed(EBUSY, getpid()));
    port->close();
    other->enter("open");
    QCOMPARE(other->lineWith("ed"), QByteArray("opened"));
}

// A program with the mark and without the lock, as many terminal programs are.
void tst_serialport_exclusive::namesTheOpenerOfAMarkedLine()
{
    if (geteuid() == 0) {
        FarEnd modem;
        QCOMPARE(chmod(modem.path(), 0666), 0);
        const int marked = ::open(modem.path(), O_RDWR | O_NOCTTY | O_CLOEXEC);
        const auto release = qScopeGuard([marked] { ::close(marked); });
        QCOMPARE(ioctl(marked, TIOCEXCL), 0);
        // Root's files are not shown to others, so nobody is named.
        const auto other = opener({QString(modem.path()), "exclusive", kOtherUser});
        other->enter("open");
        QCOMPARE(other->lineWith("ed"), failed(EBUSY, 0));
    }
    FarEnd modem;
    QCOMPARE(chmod(modem.path(), 0666), 0);
    QStringList arguments{QString(modem.path()), "shared"};
    if (geteuid() == 0)
        arguments << kOtherUser;
    const auto first = opener(arguments);
    first->enter("open");
    QVERIFY(first->says("opened"));
    const int mark = ::open(modem.path(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    QCOMPARE(ioctl(mark, TIOCEXCL), 0);
    ::close(mark);
    const auto second = opener(arguments);
    second->enter("open");
    QCOMPARE(second->lineWith("ed"), failed(EBUSY, first->processId()));
}

void tst_serialport_exclusive::leavesTheOthersLineAsItIs()
{
    const FarEnd modem;
    const Port port = newPort();
    port->setExclusive(true);
    port->setTimeOut(300);
    QVERIFY(port->open(modem.path()));
    modem.send("AT");
    const auto other = opener({QString(modem.path()), "exclusive"});
    other->enter("open");
    QVERIFY(other->says("failed"));
    QCOMPARE(int(modem.settings().c_cc[VTIME]), 3);
    QCOMPARE(readFrom(*port), QByteArray("AT"));
    // Nor did the failed one take the holder's marks along when it closed.
    other->enter("open");
    QVERIFY(other->says("failed"));
}

void tst_serialport_exclusive::isRefusedWhileOpen()
{
    const FarEnd modem;
    const Port port = newPort();
    QVERIFY(port->open(modem.path()));
    QVERIFY(!port->setExclusive(true));
    const auto other = opener({QString(modem.path()), "exclusive"});
    other->enter("open");
    QVERIFY(other->says("opened"));
    port->close();
    QVERIFY(port->setExclusive(true));
    QVERIFY(!port->open(modem.path()));
}

// Whoever has the line open besides keeps the system from forgetting the mark by itself.
void tst_serialport_exclusive::closeFreesTheLineWithAnotherOpenerThere()
{
    const FarEnd modem;
    const int besides = ::open(modem.path(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    const auto release = qScopeGuard([besides] { ::close(besides); });
    const Port port = newPort();
    port->setExclusive(true);
    QVERIFY(port->open(modem.path()));
    int isMarked = 0;
    QCOMPARE(ioctl(besides, TIOCGEXCL, &isMarked), 0);
    QCOMPARE(isMarked, 1);
    port->close();
    QCOMPARE(ioctl(besides, TIOCGEXCL, &isMarked), 0);
    QCOMPARE(isMarked, 0);
}

void tst_serialport_exclusive::closeFreesTheLineWithAChildThatInheritedIt()
{
    const FarEnd modem;
    const Port port = newPort();
    port->setExclusive(true);
    QVERIFY(port->open(modem.path()));
    const pid_t child = fork();
    QVERIFY(child >= 0);
    if (child == 0) {
        pause();
        _exit(0);
    }
    const auto end = qScopeGuard([child] {
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
    });
    port->close();
    const auto other = opener({QString(modem.path()), "exclusive"});
    other->enter("open");
    QCOMPARE(other->lineWith("ed"), QByteArray("opened"));
}

void tst_serialport_exclusive::endOfTheHolderFreesTheLock()
{
    const FarEnd modem;
    const auto other = opener({QString(modem.path()), "exclusive"});
    other->enter("open");
    QVERIFY(other->says("opened"));
    const int besides = ::open(modem.path(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    const auto release = qScopeGuard([besides] { ::close(besides); });
    other->kill();
    if (besides >= 0)
        QCOMPARE(ioctl(besides, TIOCNXCL), 0); // the far side keeps the mark of a pseudo-terminal
    else
        QVERIFY(geteuid() != 0);
    const Port port = newPort();
    port->setExclusive(true);
    QCOMPARE(port->open(modem.path()), besides >= 0);
}

void tst_serialport_exclusive::sharedOpenerThatCameBeforeStays()
{
    const FarEnd modem;
    const Port before = newPort();
    QVERIFY(before->open(modem.path()));
    const Port port = newPort();
    port->setExclusive(true);
    QVERIFY(port->open(modem.path()));
    QCOMPARE(before->write("x", 1), 1);
    QCOMPARE(modem.received(), QByteArray("x"));

    // Its end takes no mark away that it has not set.
    before->close();
    const int besides = ::open(modem.path(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    const auto release = qScopeGuard([besides] { ::close(besides); });
    if (geteuid() != 0) {
        QCOMPARE(besides, -1);
        return;
    }
    int isMarked = 0;
    QCOMPARE(ioctl(besides, TIOCGEXCL, &isMarked), 0);
    QCOMPARE(isMarked, 1);
}

void tst_serialport_exclusive::nodeThatIsNoTerminalIsTakenToo()
{
    QTemporaryFile file;
    QVERIFY(file.open());
    const QByteArray path = QFile::encodeName(file.fileName());
    const Port port = newPort();
    port->setExclusive(true);
    QVERIFY(port->open(path.constData()));
    QCOMPARE(port->lastError(), ENOTTY);
    const auto other = opener({file.fileName(), "exclusive"});
    other->enter("open");
    QCOMPARE(other->lineWith("ed"), failed(EBUSY, getpid()));
}

QTEST_GUILESS_MAIN(tst_serialport_exclusive)
#include "tst_serialport_exclusive.moc"
