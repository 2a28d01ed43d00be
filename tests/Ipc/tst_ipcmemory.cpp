// What large messages and departed clients leave behind: nothing that counts.
#include "DataValue/datavalue.h"
#include "Ipc/ipcclient.h"
#include "Ipc/ipcserver.h"

#include "ipcfixture.h"
#include "support/memoryuse.h"
#include "support/rawpeer.h"

#include <QElapsedTimer>
#include <QLocalSocket>
#include <QPointer>
#include <QSignalSpy>
#include <QtTest>

namespace {

constexpr int kLarge = 16 << 20;

/// Handles events, without resting between them, until something holds.
template<typename Condition>
bool comes(Condition condition)
{
    QElapsedTimer clock;
    for (clock.start(); !clock.hasExpired(30000);) {
        if (condition())
            return true;
        QCoreApplication::processEvents();
    }
    return false;
}

/// Sends everything, while the events of this thread are handled.
bool sendAll(RawPeer& peer, const QByteArray& bytes)
{
    qint64 sent = 0;
    return comes([&] {
        sent += qMax(0, peer.send(bytes.mid(sent, 1 << 18)));
        return sent == bytes.size();
    });
}

} // namespace

class tst_ipcmemory : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void serverFreesALargeMessage_data();
    void serverFreesALargeMessage();
    void clientFreesALargeMessage();
    void serverFreesALargeReply();
    void serverFreesWhoHasGone();
};

void tst_ipcmemory::initTestCase()
{
    if (!canCountMemory())
        QSKIP("the allocator does not tell how much is in use");
}

void tst_ipcmemory::serverFreesALargeMessage_data()
{
    QTest::addColumn<QByteArray>("behind");

    QTest::newRow("alone") << QByteArray();
    QTest::newRow("half a frame behind") << QByteArray("__BEGIN__half");
    QTest::newRow("half a character behind") << QByteArray("\xC3");
}

void tst_ipcmemory::serverFreesALargeMessage()
{
    QFETCH(QByteArray, behind);

    IPCServer server;
    int length = 0;
    connect(&server, &IPCServer::sigMessageReceived, &server,
            [&](const QString& text) { length = static_cast<int>(text.size()); });
    server.startListen(randomServerName());
    RawPeer peer(socketPath(server));
    QVERIFY(sendAll(peer, "__BEGIN__small__END__"));
    QTRY_COMPARE(length, 5);
    const qint64 before = memoryInUse();
    QVERIFY(sendAll(peer, "__BEGIN__" + QByteArray(kLarge, 'x') + "__END__" + behind));
    QVERIFY(comes([&] { return length == kLarge; }));
    const qint64 left = memoryInUse() - before;
    QVERIFY2(left < (256 << 10), qPrintable(QString::number(left)));
}

void tst_ipcmemory::clientFreesALargeMessage()
{
    IPCServer server;
    const QString name = randomServerName();
    server.startListen(name);
    IPCClient client(name);
    int length = 0;
    connect(&client, &IPCClient::sigMessageReceived, &client,
            [&](CDataValue* value) { length = static_cast<int>(value->asQString().size()); });
    client.connectToServer();
    QTRY_VERIFY(server.hasClientConnected());
    server.broadcastMsg("\"small\"");
    QTRY_COMPARE(length, 5);
    const qint64 before = memoryInUse();
    server.broadcastMsg('"' + QString(kLarge, 'x') + "\"__END____BEGIN__\"half");
    QVERIFY(comes([&] { return length == kLarge; }));
    QCoreApplication::processEvents();
    const qint64 left = memoryInUse() - before;
    QVERIFY2(left < (256 << 10), qPrintable(QString::number(left)));
}

void tst_ipcmemory::serverFreesALargeReply()
{
    IPCServer server;
    server.startListen(randomServerName());
    RawPeer peer(socketPath(server));
    QTRY_VERIFY(server.hasClientConnected());
    const qint64 before = memoryInUse();
    server.sendResponse(QString(kLarge, 'x'), 1);
    QVERIFY(memoryInUse() - before > kLarge / 2); // waits for the peer, which reads late
    qint64 received = 0;
    QVERIFY(comes([&] { return (received += peer.receive().size()) == kLarge + 16; }));
    QCoreApplication::processEvents();
    const qint64 left = memoryInUse() - before;
    QVERIFY2(left < (256 << 10), qPrintable(QString::number(left)));
}

void tst_ipcmemory::serverFreesWhoHasGone()
{
    IPCServer server;
    server.startListen(randomServerName());
    server.findChild<QObject*>("departedConnections")->setProperty("lingerMs", 20);
    const QString path = socketPath(server);
    int gone = 0;
    connect(&server, &IPCServer::sigIPCServerDisconnected, &server, [&] { ++gone; });
    const auto comeAndGo = [&](int count) {
        gone = 0;
        for (int i = 0; i < count; ++i) {
            RawPeer peer(path);
            peer.send("__BEGIN__half");
            QVERIFY(comes([&] { return server.hasClientConnected(); }));
            peer.end();
            QVERIFY(comes([&] { return gone == i + 1; }));
        }
        // The last one to be deleted tells that all are.
        RawPeer last(path);
        QVERIFY(comes([&] { return server.hasClientConnected(); }));
        const QPointer<QLocalSocket> socket = server.findChild<QLocalSocket*>();
        QVERIFY(socket);
        last.end();
        QVERIFY(comes([&] { return !socket; }));
    };
    comeAndGo(20);
    const qint64 before = memoryInUse();
    comeAndGo(500);
    const qint64 left = memoryInUse() - before;
    QVERIFY2(left < (32 << 10), qPrintable(QString::number(left)));
}

QTEST_GUILESS_MAIN(tst_ipcmemory)
#include "tst_ipcmemory.moc"
