// What is promised about listening and connecting: whose file stands under a name, what happens
// without descriptors, with a server that accepts nobody, and to clients that give up waiting.
#include "DataValue/datavalue.h"
#include "Ipc/ipcclient.h"
#include "Ipc/ipcserver.h"

#include "ipcfixture.h"
#include "support/childprocess.h"
#include "support/hungserver.h"
#include "support/logcapture.h"
#include "support/rawpeer.h"

#include <QDir>
#include <QElapsedTimer>
#include <QLocalServer>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

#include <algorithm>
#include <ctime>
#include <memory>
#include <sys/stat.h>
#include <vector>

namespace {

using Peers = std::vector<std::unique_ptr<RawPeer>>;

/// A client that asks the server of a helper process, which answers with the question.
struct Asker
{
    explicit Asker(const QString& path)
        : client(path)
    {
        QObject::connect(&client, &IPCClient::sigMessageReceived, &client,
                         [this](CDataValue* value) { answers << value->asQString(); });
        client.connectToServer();
    }

    bool hears(const QString& word)
    {
        answers.clear();
        client.sendblock('"' + word + '"');
        return QTest::qWaitFor([&] { return answers == QStringList{word}; });
    }

    QStringList answers;
    IPCClient client;
};

/// Adds a client that asks at once. The system queues 50; the server takes some of them meanwhile.
bool addAsking(Peers& crowd, const QString& path)
{
    auto peer = std::make_unique<RawPeer>();
    const bool came = QTest::qWaitFor([&] {
        peer = std::make_unique<RawPeer>(path);
        return peer->isOpen();
    });
    peer->send("__BEGIN__me__END__");
    crowd.push_back(std::move(peer));
    return came;
}

/// Ends the clients that have their answer; returns how many.
int takeServed(Peers& crowd)
{
    const auto isServed = [](const std::unique_ptr<RawPeer>& peer) {
        return peer->receive() == "__BEGIN__me__END__";
    };
    const auto served = std::remove_if(crowd.begin(), crowd.end(), isServed);
    const int count = static_cast<int>(crowd.end() - served);
    crowd.erase(served, crowd.end());
    return count;
}

/// What the log files of a folder hold.
QByteArray logIn(const QString& folder)
{
    QByteArray text;
    const QStringList names = QDir(folder).entryList({"log*"}, QDir::Files);
    for (const QString& name : names) {
        QFile file(QDir(folder).filePath(name));
        if (file.open(QIODevice::ReadOnly))
            text += file.readAll();
    }
    return text;
}

int processorMs()
{
    timespec used = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
    return static_cast<int>(used.tv_sec * 1000 + used.tv_nsec / 1000000);
}

int g_warnings = 0;

/// Counts what Qt warns of.
class WarningCount
{
public:
    WarningCount()
    {
        g_warnings = 0;
        m_before =
            qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString&) {
                g_warnings += type == QtWarningMsg ? 1 : 0;
            });
    }
    ~WarningCount() { qInstallMessageHandler(m_before); }
    WarningCount(const WarningCount&) = delete;
    WarningCount& operator=(const WarningCount&) = delete;

    int count() const { return g_warnings; }

private:
    QtMessageHandler m_before;
};

/// A server that takes one connection at a time, and a record of its signals as in tst_ipcserver.
struct OneAtATime
{
    OneAtATime()
    {
        server.setOnlyOneConnectionSupport();
        QObject::connect(&server, &IPCServer::sigIPCServerConnected, &server,
                         [this](int id) { events << QString("+%1").arg(id); });
        QObject::connect(&server, &IPCServer::sigIPCServerDisconnected, &server,
                         [this](int id) { events << QString("-%1").arg(id); });
        QObject::connect(&server, &IPCServer::sigMessageReceived, &server,
                         [this](const QString& text) { events << text; });
        server.startListen(randomServerName());
        path = socketPath(server);
    }

    QString path;
    QStringList events;
    IPCServer server;
};

} // namespace

class tst_ipcsockets : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anEndingServerLeavesItsSuccessorReachable();
    void anEndingServerLeavesAnyOtherFile();
    void anEndingServerRemovesItsFile();
    void clientsWaitWhileTheServerHasNoDescriptors();
    void aClientWaitsForAServerThatHangs();
    void aClientGivesUpAServerThatHangs();
    void aFurtherCallTriesAHangingServerAtOnce();
    void aClientThatGaveUpWaitingIsPassedOver();
    void shortClientsAreAllServedOneAtATime();
    void theOldestWaitingIsTakenWhenTooManyWait();
    void aWaitingClientIsNotReadBeforeItsTurn();
};

void tst_ipcsockets::anEndingServerLeavesItsSuccessorReachable()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("socket");
    ChildProcess first(HELPER_IPCPEER, {"server", path}, folder.path());
    QVERIFY(first.says("ready"));
    Asker early(path);
    QVERIFY(early.hears("early"));
    ChildProcess second(HELPER_IPCPEER, {"server", path}, folder.path());
    QVERIFY(second.says("ready"));

    early.client.sendblock("quit");
    QCOMPARE(first.exitCode(), 0);
    Asker late(path);
    QVERIFY(late.client.isConnected());
    QVERIFY(late.hears("late"));

    late.client.sendblock("quit");
    QCOMPARE(second.exitCode(), 0);
    QVERIFY(!QFile::exists(path));
}

void tst_ipcsockets::anEndingServerLeavesAnyOtherFile()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("socket");
    IPCServer server;
    server.startListen(path);
    QVERIFY(QFile::remove(path));
    QFile other(path);
    QVERIFY(other.open(QIODevice::WriteOnly) && other.write("kept") == 4);
    other.close();
    server.close();
    QVERIFY(!server.findChild<QLocalServer*>());
    QCOMPARE(QFileInfo(path).size(), 4);
    server.startListen(path); // and is the name's owner again
    QVERIFY(RawPeer(path).isOpen());
}

void tst_ipcsockets::anEndingServerRemovesItsFile()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("socket");
    {
        IPCServer server;
        server.startListen(path);
        QVERIFY(QFile::exists(path));
        server.startListen(path);
        QVERIFY(QFile::exists(path));
        server.close();
        QVERIFY(!QFile::exists(path));
        server.startListen(path);
    }
    QVERIFY(!QFile::exists(path));
}

void tst_ipcsockets::clientsWaitWhileTheServerHasNoDescriptors()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("socket");
    ChildProcess server(HELPER_IPCPEER, {"poor", path, "40", folder.filePath("log")},
                        folder.path());
    QVERIFY(server.says("ready"));
    Asker early(path);
    QVERIFY(early.hears("early"));
    Peers crowd;
    while (crowd.size() < 80)
        QVERIFY(addAsking(crowd, path));
    QVERIFY(early.hears("served meanwhile"));
    while (!crowd.empty()) {
        // Those who were served are gone: there are descriptors for others.
        QElapsedTimer waiting;
        waiting.start();
        QVERIFY(QTest::qWaitFor([&] { return takeServed(crowd) > 0; }, 10000));
        QVERIFY2(waiting.elapsed() < 2000, qPrintable(QString::number(waiting.elapsed())));
    }
    QVERIFY(early.hears("served afterwards"));
    Asker late(path);
    QVERIFY(late.hears("late"));
    late.client.sendblock("quit");
    QCOMPARE(server.exitCode(), 0);
    QCOMPARE(logIn(folder.path()).count("cannot accept a connection"), 1);
}

void tst_ipcsockets::aClientWaitsForAServerThatHangs()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("socket");
    HungServer server(path);
    IPCClient client(path);
    auto* const tryAgain = client.findChild<QTimer*>("tryAgain");
    QVERIFY(tryAgain && tryAgain->interval() <= 2000);
    QSignalSpy failed(&client, &IPCClient::sigIPCSocketError);
    QSignalSpy tries(tryAgain, &QTimer::timeout);
    const WarningCount warnings;
    client.connectToServer();
    const int before = processorMs();
    for (int i = 0; i < 4; ++i)
        QVERIFY(tries.wait()); // a second in all
    QVERIFY2(processorMs() - before < 200, qPrintable(QString::number(processorMs() - before)));
    QVERIFY(!client.isConnected());

    server.acceptAll();
    QVERIFY(tries.wait());
    QVERIFY(client.isConnected());
    QVERIFY(!tryAgain->isActive());
    QVERIFY(!client.findChild<QTimer*>("giveUp")->isActive());
    QCOMPARE(failed.size(), 0);
    QCOMPARE(warnings.count(), 0);
}

void tst_ipcsockets::aClientGivesUpAServerThatHangs()
{
    const LogCapture log;
    const QTemporaryDir folder;
    const QString path = folder.filePath("socket");
    HungServer server(path);
    IPCClient client(path);
    QSignalSpy failed(&client, &IPCClient::sigIPCSocketError);
    auto* const giveUp = client.findChild<QTimer*>("giveUp");
    QCOMPARE(giveUp->interval(), 30000);
    giveUp->setInterval(300);
    client.connectToServer();
    QTRY_COMPARE(failed.size(), 1);
    const int code = QLocalSocket::SocketTimeoutError;
    QCOMPARE(log.count(QString("Ipc/ipcclient socket_error socket_error: %1 ").arg(code)), 1);
    QVERIFY(!client.findChild<QTimer*>("tryAgain")->isActive());
    server.acceptAll();
    client.connectToServer();
    QTRY_VERIFY(client.isConnected());
}

void tst_ipcsockets::aFurtherCallTriesAHangingServerAtOnce()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("socket");
    HungServer server(path);
    IPCClient client(path);
    QSignalSpy connected(&client, &IPCClient::sigIPCServerConnected);
    const WarningCount warnings;
    for (int i = 0; i < 5; ++i)
        client.connectToServer();
    server.acceptAll();
    client.connectToServer();
    QVERIFY(client.isConnected());
    QCOMPARE(connected.size(), 1);
    QCOMPARE(warnings.count(), 0);
}

void tst_ipcsockets::aClientThatGaveUpWaitingIsPassedOver()
{
    const LogCapture log;
    OneAtATime to;
    RawPeer first(to.path);
    QTRY_COMPARE(to.events, QStringList{"+1"});
    RawPeer second(to.path);
    second.send("__BEGIN__too late__END__");
    QTRY_COMPARE(log.count("discard"), 1);
    second.end();
    first.end();
    QTRY_COMPARE(to.events, (QStringList{"+1", "-1"}));
    RawPeer third(to.path);
    third.send("__BEGIN__third__END__");
    QTRY_COMPARE(to.events, (QStringList{"+1", "-1", "+1", "third"}));
    third.end();
    QTRY_COMPARE(to.events.size(), 5);
    QVERIFY(!to.events.contains("too late"));
    QCOMPARE(log.count("clients that have gone while they waited: 1 "), 1);
}

void tst_ipcsockets::shortClientsAreAllServedOneAtATime()
{
    const LogCapture log;
    OneAtATime to;
    auto present = std::make_unique<RawPeer>(to.path);
    QTRY_COMPARE(to.events.size(), 1);
    for (int i = 0; i < 60; ++i) {
        RawPeer impatient(to.path); // finds somebody there, and gives up
        impatient.send("__BEGIN__never__END__");
        QTRY_COMPARE(log.count("discard"), i + 1);
        impatient.end();
        present.reset();
        QTRY_COMPARE(to.events.last(), QString("-1"));
        present = std::make_unique<RawPeer>(to.path);
        present->send("__BEGIN__mine__END__");
        QTRY_COMPARE(to.events.last(), QString("mine"));
    }
    QCOMPARE(to.events.count("mine"), 60);
    QVERIFY(!to.events.contains("never"));
}

void tst_ipcsockets::theOldestWaitingIsTakenWhenTooManyWait()
{
    const LogCapture log;
    OneAtATime to;
    RawPeer first(to.path);
    QTRY_COMPARE(to.events.size(), 1);
    Peers crowd;
    for (int i = 0; i < 31; ++i) {
        crowd.push_back(std::make_unique<RawPeer>(to.path));
        crowd.back()->send("__BEGIN__" + QByteArray::number(i) + "__END__");
    }
    QTRY_COMPARE(log.count("discard"), 31);
    crowd.front()->end();
    crowd.push_back(std::make_unique<RawPeer>(to.path));
    crowd.back()->send("__BEGIN__31__END__");
    first.end();
    // The one that has gone leaves room for the last; then as before.
    QTRY_COMPARE(to.events, (QStringList{"+1", "-1", "+1", "1"}));
}

void tst_ipcsockets::aWaitingClientIsNotReadBeforeItsTurn()
{
    const LogCapture log;
    OneAtATime to;
    RawPeer first(to.path);
    QTRY_COMPARE(to.events.size(), 1);
    RawPeer second(to.path);
    QTRY_COMPARE(log.count("discard"), 1);
    const QByteArray noise(64 << 10, '_');
    qint64 taken = 0;
    for (int i = 0; i < 200; ++i) {
        taken += qMax(0, second.send(noise));
        QCoreApplication::processEvents();
    }
    QVERIFY2(taken < (4 << 20), qPrintable(QString::number(taken)));
}

QTEST_GUILESS_MAIN(tst_ipcsockets)
#include "tst_ipcsockets.moc"
