#include "instanceprocess.h"
#include "qtsinglecoreapplication.h"

#include "support/logcapture.h"

#include <QDir>
#include <QElapsedTimer>
#include <QLocalSocket>
#include <QScopeGuard>
#include <QSet>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QUuid>

#include <memory>
#include <vector>

#include <sys/file.h>
#include <unistd.h>

namespace {

using Instances = std::vector<std::unique_ptr<InstanceProcess>>;

Instances instances(int count, const QString& id)
{
    Instances all;
    for (int i = 0; i < count; ++i)
        all.push_back(std::make_unique<InstanceProcess>(id, QString::number(i)));
    return all;
}

} // namespace

class tst_qtsinglecoreapplication : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void idIsTheExecutableUnlessGiven();
    void secondHandsItsMessageOver_data();
    void secondHandsItsMessageOver();
    void secondWithoutTheRoleSaysThatAnotherRuns();
    void tooLongMessageIsNotSent();
    void otherIdsDoNotMeet();
    void orderlyEndFreesTheRole();
    void destroyedApplicationFreesTheRole();
    void crashBlocksNobody();
    void stoppedLoopFailsTheMessageInTime();
    void messageIsTriedUntilItsTimeIsUp();
    void twentyRacingStartsHaveOneWinner_data();
    void twentyRacingStartsHaveOneWinner();
    void strangersOnTheSocketDoNoHarm_data();
    void strangersOnTheSocketDoNoHarm();
    void runsAloneWithoutALock();
    void filesAreTheUsersOwn();
    void unfitRuntimeFolderIsNotUsed_data();
    void unfitRuntimeFolderIsNotUsed();

private:
    QString socketPath() const;

    std::unique_ptr<QTemporaryDir> m_runtime;
    QString m_id;
};

void tst_qtsinglecoreapplication::init()
{
    m_runtime = std::make_unique<QTemporaryDir>();
    QVERIFY(m_runtime->isValid());
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_runtime->path()));
    m_id = QUuid::createUuid().toString();
}

QString tst_qtsinglecoreapplication::socketPath() const
{
    const QDir folder(m_runtime->path());
    const QStringList names = folder.entryList({QStringLiteral("*.socket")}, QDir::System);
    return names.size() == 1 ? folder.filePath(names.first()) : QString();
}

void tst_qtsinglecoreapplication::idIsTheExecutableUnlessGiven()
{
    // There may be one application object at a time, and the test's own is no QtSingle...
    int argc = 1;
    char name[] = "test";
    char* argv[] = {name, nullptr};
    {
        const QtSingleCoreApplication app(argc, argv);
        QCOMPARE(app.id(), QCoreApplication::applicationFilePath());
        QVERIFY(app.id().endsWith(QLatin1String("/tst_qtsinglecoreapplication")));
    }
    const QtSingleCoreApplication app(m_id, argc, argv);
    QCOMPARE(app.id(), m_id);
}

void tst_qtsinglecoreapplication::secondHandsItsMessageOver_data()
{
    QTest::addColumn<QString>("message");
    QTest::newRow("ASCII") << "open file.txt";
    QTest::newRow("empty") << "";
    QTest::newRow("non-ASCII") << QStringLiteral("Größe 短信 \U0001F600");
    QTest::newRow("long") << QString(100000, QLatin1Char('x'));
}

void tst_qtsinglecoreapplication::secondHandsItsMessageOver()
{
    QFETCH(QString, message);
    InstanceProcess first(m_id, QStringLiteral("unsent"));
    QCOMPARE(first.outcome(), QStringLiteral("first"));
    InstanceProcess second(m_id, message);
    QCOMPARE(second.outcome(), QStringLiteral("sent"));
    QCOMPARE(second.exitCode(), 0);
    QCOMPARE(first.nextLine(), QString("received " + message).trimmed());
    // It is still the one, for any number of others.
    InstanceProcess third(m_id, QStringLiteral("again"));
    QCOMPARE(third.outcome(), QStringLiteral("sent"));
    QCOMPARE(first.nextLine(), QStringLiteral("received again"));
}

void tst_qtsinglecoreapplication::secondWithoutTheRoleSaysThatAnotherRuns()
{
    int argc = 1;
    char name[] = "test";
    char* argv[] = {name, nullptr};
    InstanceProcess first(m_id, QStringLiteral("unsent"));
    QCOMPARE(first.outcome(), QStringLiteral("first"));
    QtSingleCoreApplication app(m_id, argc, argv);
    QVERIFY(app.isRunning());
    QVERIFY(app.isRunning());
    first.crash();
    QVERIFY(!app.isRunning());
    QVERIFY(!app.sendMessage(QStringLiteral("to myself")));
    // Now this one receives.
    QSignalSpy received(&app, &QtSingleCoreApplication::messageReceived);
    InstanceProcess second(m_id, QStringLiteral("hello"));
    QCOMPARE(second.outcome(), QStringLiteral("sent"));
    QTRY_COMPARE(received.size(), 1);
    QCOMPARE(received.at(0).at(0).toString(), QStringLiteral("hello"));
}

void tst_qtsinglecoreapplication::tooLongMessageIsNotSent()
{
    InstanceProcess first(m_id, QStringLiteral("unsent"));
    QCOMPARE(first.outcome(), QStringLiteral("first"));
    int argc = 1;
    char name[] = "test";
    char* argv[] = {name, nullptr};
    QtSingleCoreApplication app(m_id, argc, argv);
    const LogCapture log;
    QVERIFY(!app.sendMessage(QString(16 * 1024 * 1024 + 1, QLatin1Char('x'))));
    QVERIFY(
        log.contains("singleapplication/singleinstance send The message is too long: 16777217"));
}

void tst_qtsinglecoreapplication::otherIdsDoNotMeet()
{
    InstanceProcess first(m_id, QStringLiteral("unsent"));
    QCOMPARE(first.outcome(), QStringLiteral("first"));
    InstanceProcess other(m_id + "x", QStringLiteral("unsent"));
    QCOMPARE(other.outcome(), QStringLiteral("first"));
}

void tst_qtsinglecoreapplication::orderlyEndFreesTheRole()
{
    InstanceProcess first(m_id, QStringLiteral("unsent"));
    QCOMPARE(first.outcome(), QStringLiteral("first"));
    InstanceProcess messenger(m_id, QStringLiteral("quit"));
    QCOMPARE(messenger.outcome(), QStringLiteral("sent"));
    QCOMPARE(first.exitCode(), 0);
    QCOMPARE(socketPath(), QString());
    InstanceProcess next(m_id, QStringLiteral("unsent"));
    QCOMPARE(next.outcome(), QStringLiteral("first"));
}

void tst_qtsinglecoreapplication::destroyedApplicationFreesTheRole()
{
    int argc = 1;
    char name[] = "test";
    char* argv[] = {name, nullptr};
    std::unique_ptr<ChildProcess> started; // which inherits what a program can inherit
    {
        QtSingleCoreApplication app(m_id, argc, argv);
        QVERIFY(!app.isRunning());
        started = std::make_unique<ChildProcess>("cat", QStringList());
    }
    InstanceProcess next(m_id, QStringLiteral("unsent"), 200);
    QCOMPARE(next.outcome(), QStringLiteral("first"));
}

void tst_qtsinglecoreapplication::crashBlocksNobody()
{
    for (int round = 0; round < 3; ++round) {
        InstanceProcess first(m_id, QStringLiteral("unsent"));
        QCOMPARE(first.outcome(), QStringLiteral("first"));
        first.crash();
        QVERIFY(!socketPath().isEmpty()); // left behind, as a crash does
        InstanceProcess next(m_id, QStringLiteral("unsent"));
        QCOMPARE(next.outcome(), QStringLiteral("first"));
        InstanceProcess messenger(m_id, QStringLiteral("hello"));
        QCOMPARE(messenger.outcome(), QStringLiteral("sent"));
        QCOMPARE(next.nextLine(), QStringLiteral("received hello"));
    }
}

void tst_qtsinglecoreapplication::stoppedLoopFailsTheMessageInTime()
{
    InstanceProcess first(m_id, QStringLiteral("sleep"));
    QCOMPARE(first.outcome(), QStringLiteral("first"));
    InstanceProcess second(m_id, QStringLiteral("hello"), 200);
    QCOMPARE(second.outcome(), QStringLiteral("failed"));
    InstanceProcess impatient(m_id, QStringLiteral("hello"), -1);
    QCOMPARE(impatient.outcome(), QStringLiteral("failed"));
}

void tst_qtsinglecoreapplication::messageIsTriedUntilItsTimeIsUp()
{
    {
        InstanceProcess first(m_id, QStringLiteral("unsent"));
        QCOMPARE(first.outcome(), QStringLiteral("first"));
    }
    // One holds the lock and does not listen yet, as in the first moment of the role.
    const QDir folder(m_runtime->path());
    const QStringList names = folder.entryList({QStringLiteral("qtsingleapp-*")}, QDir::Files);
    QCOMPARE(names.size(), 1);
    QFile lock(folder.filePath(names.first()));
    QVERIFY(lock.open(QIODevice::ReadWrite));
    QCOMPARE(flock(lock.handle(), LOCK_EX | LOCK_NB), 0);
    int argc = 1;
    char name[] = "test";
    char* argv[] = {name, nullptr};
    QtSingleCoreApplication app(m_id, argc, argv);
    QElapsedTimer timer;
    timer.start();
    QVERIFY(!app.sendMessage(QStringLiteral("hello"), 300));
    QVERIFY(timer.elapsed() > 200);
    QVERIFY(timer.elapsed() < 10000);
    QVERIFY(app.isRunning());
}

void tst_qtsinglecoreapplication::twentyRacingStartsHaveOneWinner_data()
{
    QTest::addColumn<bool>("afterACrash");
    QTest::newRow("fresh") << false;
    QTest::newRow("after a crash") << true;
}

void tst_qtsinglecoreapplication::twentyRacingStartsHaveOneWinner()
{
    QFETCH(bool, afterACrash);
    if (afterACrash) {
        InstanceProcess crashing(m_id, QStringLiteral("unsent"));
        QCOMPARE(crashing.outcome(), QStringLiteral("first"));
        crashing.crash();
    }
    const Instances all = instances(20, m_id);
    for (const auto& instance : all)
        instance->go();
    InstanceProcess* winner = nullptr;
    QSet<QString> expected;
    for (int i = 0; i < 20; ++i) {
        const QString outcome = all[static_cast<size_t>(i)]->nextLine();
        if (outcome == QLatin1String("first")) {
            QVERIFY2(!winner, "a second winner");
            winner = all[static_cast<size_t>(i)].get();
        } else {
            QCOMPARE(outcome, QStringLiteral("sent"));
            expected.insert("received " + QString::number(i));
        }
    }
    QVERIFY(winner);
    QSet<QString> received;
    for (int i = 0; i < 19; ++i)
        received.insert(winner->nextLine());
    QCOMPARE(received, expected);
}

void tst_qtsinglecoreapplication::strangersOnTheSocketDoNoHarm_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("isClosed");
    QTest::addColumn<QString>("line"); // empty: none
    QTest::newRow("nothing") << QByteArray() << false << "";
    QTest::newRow("half a length") << QByteArray("\0\0", 2) << false << "";
    QTest::newRow("less than announced") << QByteArray("\0\0\0\x09half", 8) << false << "";
    QTest::newRow("more than announced")
        << QByteArray("\0\0\0\x02okmore", 10) << true << "received ok";
    QTest::newRow("more than is taken") << QByteArray("\x01\0\0\x01text", 8) << true << "";
    QTest::newRow("longest length") << QByteArray("\xFF\xFF\xFF\xFFtext") << true << "";
    QTest::newRow("broken UTF-8") << QByteArray("\0\0\0\x02\xFF\xC3", 6) << true
                                  << QStringLiteral("received \uFFFD\uFFFD");
}

void tst_qtsinglecoreapplication::strangersOnTheSocketDoNoHarm()
{
    QFETCH(QByteArray, bytes);
    QFETCH(bool, isClosed);
    QFETCH(QString, line);
    InstanceProcess first(m_id, QStringLiteral("unsent"));
    QCOMPARE(first.outcome(), QStringLiteral("first"));
    QLocalSocket stranger;
    stranger.connectToServer(socketPath());
    QVERIFY(stranger.waitForConnected());
    stranger.write(bytes);
    stranger.flush();
    if (isClosed)
        QVERIFY(stranger.state() == QLocalSocket::UnconnectedState ||
                stranger.waitForDisconnected());
    QLocalSocket vanished;
    vanished.connectToServer(socketPath());
    QVERIFY(vanished.waitForConnected());
    vanished.write(bytes);
    vanished.flush();
    vanished.abort();

    InstanceProcess second(m_id, QStringLiteral("hello"));
    QCOMPARE(second.outcome(), QStringLiteral("sent"));
    if (!line.isEmpty())
        QCOMPARE(first.nextLine(), line);
    // What the one that vanished has sent may have arrived.
    QString next = first.nextLine();
    if (!line.isEmpty() && next == line)
        next = first.nextLine();
    QCOMPARE(next, QStringLiteral("received hello"));
}

void tst_qtsinglecoreapplication::runsAloneWithoutALock()
{
    // Something else stands where the lock would: a folder, which cannot be opened for writing.
    {
        InstanceProcess first(m_id, QStringLiteral("unsent"));
        QCOMPARE(first.outcome(), QStringLiteral("first"));
    }
    QDir folder(m_runtime->path());
    const QStringList names = folder.entryList({QStringLiteral("qtsingleapp-*")}, QDir::Files);
    QCOMPARE(names.size(), 1);
    QVERIFY(folder.remove(names.first()));
    QVERIFY(folder.mkdir(names.first()));
    InstanceProcess alone(m_id, QStringLiteral("unsent"));
    QCOMPARE(alone.outcome(), QStringLiteral("first"));
}

void tst_qtsinglecoreapplication::filesAreTheUsersOwn()
{
    InstanceProcess first(m_id, QStringLiteral("unsent"));
    QCOMPARE(first.outcome(), QStringLiteral("first"));
    const QFile::Permissions others = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup |
                                      QFile::ReadOther | QFile::WriteOther | QFile::ExeOther;
    const QFileInfoList files =
        QDir(m_runtime->path())
            .entryInfoList({QStringLiteral("qtsingleapp-*")}, QDir::Files | QDir::System);
    QCOMPARE(files.size(), 2);
    for (const QFileInfo& file : files)
        QVERIFY2(!(file.permissions() & others), qPrintable(file.fileName()));
}

void tst_qtsinglecoreapplication::unfitRuntimeFolderIsNotUsed_data()
{
    QTest::addColumn<QString>("kind");
    QTest::newRow("none") << "none";
    QTest::newRow("missing") << "missing";
    QTest::newRow("relative") << "relative";
    QTest::newRow("another user's") << "foreign";
}

void tst_qtsinglecoreapplication::unfitRuntimeFolderIsNotUsed()
{
    QFETCH(QString, kind);
    // Writable by this user, but another's: the system's folder for all, or, as root, one given
    // away.
    const QTemporaryDir given;
    if (geteuid() == 0)
        QCOMPARE(chown(qPrintable(given.path()), 65534, 65534), 0);
    const QString foreign = geteuid() == 0 ? given.path() : QStringLiteral("/tmp");
    const auto restore = qScopeGuard([] { qunsetenv("TMPDIR"); });
    qputenv("TMPDIR", QFile::encodeName(m_runtime->path()));
    if (kind == QLatin1String("none"))
        qunsetenv("XDG_RUNTIME_DIR");
    else if (kind == QLatin1String("missing"))
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_runtime->filePath("missing")));
    else if (kind == QLatin1String("relative"))
        qputenv("XDG_RUNTIME_DIR", ".");
    else
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(foreign));
    InstanceProcess first(m_id, QStringLiteral("unsent"));
    QCOMPARE(first.outcome(), QStringLiteral("first"));
    QVERIFY(!socketPath().isEmpty());
    InstanceProcess second(m_id, QStringLiteral("hello"));
    QCOMPARE(second.outcome(), QStringLiteral("sent"));
}

QTEST_APPLESS_MAIN(tst_qtsinglecoreapplication)
#include "tst_qtsinglecoreapplication.moc"
