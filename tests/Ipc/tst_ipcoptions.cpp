// What a server and a client can be told about whom and how much they take; off by default.
#include "DataValue/datavalue.h"
#include "Ipc/ipcclient.h"
#include "Ipc/ipcserver.h"

#include "ipcfixture.h"
#include "support/childprocess.h"
#include "support/logcapture.h"
#include "support/rawpeer.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>
#include <sys/stat.h>
#include <vector>

namespace {

/// A server that echoes, and a record of its signals as in tst_ipcserver.
struct Echoing
{
    explicit Echoing(const IPCLimits& limits = {})
    {
        server.setLimits(limits);
        QObject::connect(&server, &IPCServer::sigIPCServerConnected, &server,
                         [this](int id) { events << QString("+%1").arg(id); });
        QObject::connect(&server, &IPCServer::sigIPCServerDisconnected, &server,
                         [this](int id) { events << QString("-%1").arg(id); });
        QObject::connect(&server, &IPCServer::sigMessageReceived, &server,
                         [this](const QString& text, int id) { server.sendResponse(text, id); });
        server.startListen(name);
        path = socketPath(server);
    }

    /// Whether a client is served.
    static bool answers(RawPeer& peer)
    {
        peer.send("__BEGIN__ping__END__");
        return QTest::qWaitFor([&] { return peer.receive() == "__BEGIN__ping__END__"; });
    }

    QString name = randomServerName();
    QString path;
    QStringList events;
    IPCServer server;
};

IPCLimits unfinished(qint64 bytes)
{
    IPCLimits limits;
    limits.unfinishedBytes = bytes;
    return limits;
}

IPCLimits unsent(qint64 bytes)
{
    IPCLimits limits;
    limits.unsentBytes = bytes;
    return limits;
}

int modeOf(const QString& path)
{
    struct stat entry = {};
    if (lstat(QFile::encodeName(path).constData(), &entry) != 0)
        return -1;
    return static_cast<int>(entry.st_mode & 07777U);
}

} // namespace

class tst_ipcoptions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void endsAClientWhoseMessageDoesNotEnd();
    void countsWhatIsNoWholeMessage();
    void readsNoMoreWhileASlotRunsAnEventLoop();
    void endsAClientThatDoesNotRead_data();
    void endsAClientThatDoesNotRead();
    void refusesConnectionsBeyondTheLimit();
    void countsWhoWaitsInOneConnectionMode();
    void setsTheModeOfTheSocketsFile_data();
    void setsTheModeOfTheSocketsFile();
    void refusesUsers();
    void countsRefusalsInsteadOfLoggingEach();
    void tellsWhoAClientIs();
    void clientLeavesAServerOfAnotherUser();
    void clientTakesNothingFromARefusedServer();
    void clientMayConnectAnewInsideTheRefusal();
};

void tst_ipcoptions::endsAClientWhoseMessageDoesNotEnd()
{
    const LogCapture log;
    Echoing to(unfinished(100000));
    RawPeer good(to.path);
    RawPeer bad(to.path);
    QTRY_COMPARE(to.events.size(), 2);
    bad.send("__BEGIN__" + QByteArray(90000, 'x'));
    QVERIFY(Echoing::answers(good));
    QVERIFY(!bad.isEnded());
    bad.send(QByteArray(20000, 'x'));
    QTRY_COMPARE(to.events, (QStringList{"+1", "+2", "-2"}));
    QVERIFY(bad.isEnded());
    QVERIFY(Echoing::answers(good));
    QCOMPARE(log.count("Ipc/ipcserver endBeyondLimit connection ended, beyond the limit of bytes "
                       "of an unfinished message 2 "),
             1);
}

void tst_ipcoptions::countsWhatIsNoWholeMessage()
{
    Echoing to(unfinished(1000));
    RawPeer peer(to.path);
    for (int i = 0; i < 100; ++i) { // more in all
        peer.send("__BEGIN__" + QByteArray(900, 'x') + "__END__");
        QVERIFY(QTest::qWaitFor([&] { return !peer.receive().isEmpty(); }));
    }
    QVERIFY(Echoing::answers(peer));
    peer.send(QByteArray(1001, '_')); // not even a message begins
    QTRY_COMPARE(to.events, (QStringList{"+1", "-1"}));
}

void tst_ipcoptions::readsNoMoreWhileASlotRunsAnEventLoop()
{
    Echoing to(unfinished(1 << 16));
    RawPeer peer(to.path);
    qint64 taken = 0;
    connect(&to.server, &IPCServer::sigMessageReceived, this, [&] {
        for (int i = 0; i < 200; ++i) {
            taken += qMax(0, peer.send(QByteArray(1 << 16, '_')));
            QCoreApplication::processEvents();
        }
    });
    peer.send("__BEGIN__go__END__");
    QTRY_COMPARE(to.events, (QStringList{"+1", "-1"}));
    QVERIFY2(taken > 0 && taken < (2 << 20), qPrintable(QString::number(taken)));
}

void tst_ipcoptions::endsAClientThatDoesNotRead_data()
{
    QTest::addColumn<bool>("oneFlush");

    QTest::newRow("at once") << false;
    QTest::newRow("with one flush per read") << true;
}

void tst_ipcoptions::endsAClientThatDoesNotRead()
{
    QFETCH(bool, oneFlush);

    const LogCapture log;
    Echoing to(unsent(1 << 20));
    to.server.setOneFlushPerRead(oneFlush);
    RawPeer good(to.path);
    RawPeer deaf(to.path);
    QTRY_COMPARE(to.events.size(), 2);
    connect(&to.server, &IPCServer::sigMessageReceived, this, [&](const QString& text) {
        for (int i = 0; text == "ping" && i < 10; ++i)
            to.server.sendResponse(QString(1 << 18, 'x'), 2);
    });
    QVERIFY(Echoing::answers(good));
    QTRY_COMPARE(to.events, (QStringList{"+1", "+2", "-2"}));
    QCOMPARE(to.server.sendResponse("text", 2), -1);
    QVERIFY(Echoing::answers(good));
    QCOMPARE(log.count("beyond the limit of unsent bytes 2 "), 1);
}

void tst_ipcoptions::refusesConnectionsBeyondTheLimit()
{
    const LogCapture log;
    IPCLimits limits;
    limits.connections = 2;
    Echoing to(limits);
    RawPeer first(to.path);
    RawPeer second(to.path);
    const RawPeer third(to.path);
    QTRY_VERIFY(third.isEnded());
    QCOMPARE(to.events, (QStringList{"+1", "+2"}));
    QCOMPARE(log.count("Ipc/ipcserver mayEnter connection refused, beyond the limit of 2 "), 1);
    QVERIFY(Echoing::answers(first));
    QVERIFY(Echoing::answers(second));
    second.end();
    QTRY_COMPARE(to.events.last(), QString("-2"));
    RawPeer fourth(to.path);
    QVERIFY(Echoing::answers(fourth));
}

void tst_ipcoptions::countsWhoWaitsInOneConnectionMode()
{
    const LogCapture log;
    IPCLimits limits;
    limits.connections = 2;
    Echoing to(limits);
    to.server.setOnlyOneConnectionSupport();
    const RawPeer first(to.path);
    const RawPeer second(to.path);
    const RawPeer third(to.path);
    QTRY_VERIFY(third.isEnded());
    QVERIFY(!second.isEnded());
    QCOMPARE(log.count("discard"), 1);
}

void tst_ipcoptions::setsTheModeOfTheSocketsFile_data()
{
    QTest::addColumn<int>("mode");

    QTest::newRow("owner") << 0600;
    QTest::newRow("group") << 0660;
    QTest::newRow("everybody") << 0666;
}

void tst_ipcoptions::setsTheModeOfTheSocketsFile()
{
    QFETCH(int, mode);

    const QTemporaryDir folder;
    const QString path = folder.filePath("socket");
    Echoing unused;
    const int byDefault = modeOf(unused.path);
    QVERIFY(byDefault != mode);
    IPCServer server;
    QSignalSpy came(&server, &IPCServer::sigIPCServerConnected);
    server.setSocketFileMode(mode);
    server.startListen(path);
    QCOMPARE(modeOf(path), mode);
    QCOMPARE(QDir(folder.path())
                 .entryList(QDir::AllEntries | QDir::System | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList{"socket"});
    const RawPeer peer(path);
    QTRY_COMPARE(came.size(), 1);
    server.setSocketFileMode(-1);
    server.startListen(path);
    QCOMPARE(modeOf(path), byDefault);
    server.close();
    QVERIFY(!QFile::exists(path));
}

void tst_ipcoptions::refusesUsers()
{
    const LogCapture log;
    Echoing to;
    const quint32 self = getuid();
    to.server.setAllowedUsers({self + 1, self + 2});
    RawPeer refused(to.path);
    refused.send("__BEGIN__ping__END__");
    QTRY_VERIFY(refused.isEnded());
    QCOMPARE(to.events, QStringList());
    QCOMPARE(log.count(QString("mayEnter connection refused, of user %1 ").arg(self)), 1);
    to.server.setAllowedUsers({self + 1, self});
    RawPeer taken(to.path);
    QVERIFY(Echoing::answers(taken));
    to.server.setAllowedUsers({});
    RawPeer anybody(to.path);
    QVERIFY(Echoing::answers(anybody));
}

void tst_ipcoptions::countsRefusalsInsteadOfLoggingEach()
{
    const LogCapture log;
    Echoing to;
    to.server.setAllowedUsers({getuid() + 1});
    const auto beRefused = [&to](int times) {
        for (int i = 0; i < times; ++i) {
            const RawPeer refused(to.path);
            QTRY_VERIFY(refused.isEnded());
        }
    };
    beRefused(20);
    QCOMPARE(log.count("mayEnter connection refused, of user"), 1);
    for (auto* const pause : to.server.findChildren<QTimer*>("refusals")) {
        if (pause->isActive())
            pause->start(1);
    }
    QTRY_COMPARE(log.count("mayEnter further connections refused: 19 "), 1);
    beRefused(5);
    QCOMPARE(log.count("refused"), 2); // they are counted for another while
    QCOMPARE(to.events, QStringList());
}

void tst_ipcoptions::tellsWhoAClientIs()
{
    Echoing to;
    QStringList received;
    connect(&to.server, &IPCServer::sigMessageReceived, this,
            [&](const QString& text) { received << text; });
    ChildProcess client(HELPER_IPCPEER, {"client", to.path}, QDir::tempPath());
    QTRY_COMPARE(received.size(), 1);
    const IPCPeer peer = to.server.peer(1);
    QVERIFY(peer.isKnown);
    QCOMPARE(peer.userId, quint32(getuid()));
    CDataValue envelope; // it sends the number of its process
    QVERIFY(CDataValue::parseToDataValue(received.first(), envelope));
    QCOMPARE(peer.processId, envelope.mapGet("IPCMSG_USER_DATA").asQString().toLongLong());
    QVERIFY(!to.server.peer(2).isKnown);
}

void tst_ipcoptions::clientLeavesAServerOfAnotherUser()
{
    const LogCapture log;
    Echoing to;
    IPCClient client(to.name);
    const quint32 self = getuid();
    client.setTrustedServerUsers({self + 1});
    QSignalSpy connected(&client, &IPCClient::sigIPCServerConnected);
    QSignalSpy lost(&client, &IPCClient::sigIPCServerDisconnected);
    QSignalSpy failed(&client, &IPCClient::sigIPCSocketError);
    QSignalSpy received(&client, &IPCClient::sigMessageReceived);
    connect(&to.server, &IPCServer::sigIPCServerConnected, this,
            [&](int id) { to.server.sendResponse("{\"tempting\":true}", id); });
    client.connectToServer();
    QVERIFY(!client.isConnected());
    QCOMPARE(client.sendblock("secret"), 7);
    QTRY_COMPARE(failed.size(), 1);
    QTRY_COMPARE(to.events, (QStringList{"+1", "-1"}));
    QCOMPARE(log.count(QString("socket_connected server refused, of user %1 ").arg(self)), 1);
    QCOMPARE(connected.size() + lost.size() + received.size(), 0);

    client.setTrustedServerUsers({self});
    client.connectToServer();
    QVERIFY(client.isConnected());
    QTRY_COMPARE(received.size(), 1);
}

// What the server has sent is there before the client gets to leave it.
void tst_ipcoptions::clientTakesNothingFromARefusedServer()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("socket");
    const int listening = listenAt(path, 1);
    IPCClient client(path);
    client.setTrustedServerUsers({getuid() + 1});
    QSignalSpy received(&client, &IPCClient::sigMessageReceived);
    QSignalSpy failed(&client, &IPCClient::sigIPCSocketError);
    client.connectToServer();
    RawPeer server = RawPeer::accept(listening);
    ::close(listening);
    QCOMPARE(server.send("__BEGIN__{\"tempting\":true}__END__"), 33);
    QTRY_COMPARE(failed.size(), 1);
    QVERIFY(server.isEnded());
    QCOMPARE(received.size(), 0);
    QCOMPARE(server.receive(), QByteArray());
}

void tst_ipcoptions::clientMayConnectAnewInsideTheRefusal()
{
    Echoing to;
    IPCClient client(to.name);
    client.setTrustedServerUsers({getuid() + 1});
    QSignalSpy connected(&client, &IPCClient::sigIPCServerConnected);
    connect(&client, &IPCClient::sigIPCSocketError, this, [&] {
        client.setTrustedServerUsers({});
        client.connectToServer();
    });
    client.connectToServer();
    QTRY_COMPARE(connected.size(), 1);
    QCOMPARE(client.sendblock("here"), 0);
    QTRY_VERIFY(to.events.contains("+1"));
}

QTEST_GUILESS_MAIN(tst_ipcoptions)
#include "tst_ipcoptions.moc"
