// Peers that behave badly, and peers that are real processes.
#include "DataValue/datavalue.h"
#include "Ipc/ipcclient.h"
#include "Ipc/ipcserver.h"

#include "ipcfixture.h"
#include "support/childprocess.h"
#include "support/rawpeer.h"

#include <QElapsedTimer>
#include <QLocalServer>
#include <QLocalSocket>
#include <QtTest>

#include <memory>

namespace {

// Whether the server still serves: a client asks and hears back.
void compareEcho(IPCServer& server)
{
    const auto echo = QObject::connect(&server, &IPCServer::sigMessageReceived, &server,
                                       [&](const QString& text, int id) {
                                           if (text == "ping")
                                               server.sendResponse("pong", id);
                                       });
    RawPeer peer(socketPath(server));
    peer.send("__BEGIN__ping__END__");
    QByteArray answer;
    QVERIFY(QTest::qWaitFor([&] {
        answer += peer.receive();
        return answer == "__BEGIN__pong__END__";
    }));
    QObject::disconnect(echo);
}

} // namespace

class tst_ipcpeers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void serverOutlivesAClientKilledInMidFrame();
    void serverTakesAFloodOfFrames();
    void serverTakesAFloodWithoutMarkers();
    void serverDoesNotWaitForAClientThatDoesNotRead();
    void serverTakesEveryByteValue();
    void serverTakesManyConnections();
    void clientOutlivesAServerThatVanishesInMidFrame();
    void clientDoesNotWaitForAServerThatDoesNotRead();
    void clientTakesEveryByteValue();
    void processesTalkBothWays();
    void clientProcessHearsTheBroadcast();
    void aKilledServersNameIsTakenOver();
};

void tst_ipcpeers::serverOutlivesAClientKilledInMidFrame()
{
    IPCServer server;
    server.startListen(randomServerName());
    QSignalSpy came(&server, &IPCServer::sigIPCServerConnected);
    QSignalSpy went(&server, &IPCServer::sigIPCServerDisconnected);
    QSignalSpy received(&server, &IPCServer::sigMessageReceived);
    ChildProcess peer(HELPER_IPCPEER, {"half", socketPath(server)});
    QVERIFY(peer.says("ready"));
    QTRY_COMPARE(came.size(), 1);
    peer.kill();
    QTRY_COMPARE(went.size(), 1);
    QCOMPARE(received.size(), 0);
    QVERIFY(!server.hasClientConnected());
    compareEcho(server);
}

void tst_ipcpeers::serverTakesAFloodOfFrames()
{
    IPCServer server;
    server.startListen(randomServerName());
    int messages = 0;
    connect(&server, &IPCServer::sigMessageReceived, &server,
            [&](const QString& text) { messages += text == "[1]"; });
    ChildProcess peer(HELPER_IPCPEER, {"flood", socketPath(server), "200000"});
    compareEcho(server); // while the flood comes in
    QTRY_COMPARE_WITH_TIMEOUT(messages, 200000, 60000);
    QCOMPARE(peer.exitCode(), 0);
}

void tst_ipcpeers::serverTakesAFloodWithoutMarkers()
{
    IPCServer server;
    server.startListen(randomServerName());
    QSignalSpy received(&server, &IPCServer::sigMessageReceived);
    RawPeer peer(socketPath(server));
    const QByteArray noise(64 << 10, '_');
    qint64 sent = 0;
    while (sent < (16 << 20)) {
        const int count = peer.send(noise);
        QVERIFY(count >= 0);
        sent += count;
        QCoreApplication::processEvents();
    }
    compareEcho(server);
    QCOMPARE(received.size(), 1); // the ping
}

void tst_ipcpeers::serverDoesNotWaitForAClientThatDoesNotRead()
{
    IPCServer server;
    server.startListen(randomServerName());
    const RawPeer deaf(socketPath(server));
    QTRY_VERIFY(server.hasClientConnected());
    const QString message(1 << 20, 'x');
    for (int i = 0; i < 20; ++i)
        QCOMPARE(server.sendResponse(message, 1), 0);
    server.broadcastMsg(message);
    compareEcho(server);
    QVERIFY(server.hasClientConnected());
}

void tst_ipcpeers::serverTakesEveryByteValue()
{
    IPCServer server;
    server.startListen(randomServerName());
    QByteArray bytes;
    for (int i = 255; i >= 0; --i)
        bytes += char(i);
    RawPeer peer(socketPath(server));
    for (int i = 0; i < 200; ++i) {
        QVERIFY(peer.send(bytes.mid(i) + bytes.left(i) + "__BEGIN__" + bytes.left(i) + "__END__") >=
                0);
        QCoreApplication::processEvents();
    }
    compareEcho(server);
}

void tst_ipcpeers::serverTakesManyConnections()
{
    IPCServer server;
    server.startListen(randomServerName());
    QSignalSpy came(&server, &IPCServer::sigIPCServerConnected);
    QSignalSpy went(&server, &IPCServer::sigIPCServerDisconnected);
    for (int i = 1; i <= 200; ++i) {
        RawPeer peer(socketPath(server));
        peer.send("__BEGIN__");
        QTRY_COMPARE(came.size(), i);
    }
    QTRY_COMPARE(went.size(), 200);
    compareEcho(server);
}

void tst_ipcpeers::clientOutlivesAServerThatVanishesInMidFrame()
{
    // A listener without any rules: it sends half a frame and ends the connection.
    QLocalServer listener;
    const QString name = randomServerName();
    QVERIFY(listener.listen(name));
    IPCClient client(name);
    QSignalSpy received(&client, &IPCClient::sigMessageReceived);
    QSignalSpy lost(&client, &IPCClient::sigIPCServerDisconnected);
    client.connectToServer();
    QTRY_VERIFY(listener.hasPendingConnections());
    std::unique_ptr<QLocalSocket> end(listener.nextPendingConnection());
    end->write("__BEGIN__{\"half\":");
    end->flush();
    end.reset();
    QTRY_COMPARE(lost.size(), 1);
    QCOMPARE(received.size(), 0);
    client.messageSend("T", nullptr);
    QCOMPARE(received.size(), 1); // the client's own
}

void tst_ipcpeers::clientDoesNotWaitForAServerThatDoesNotRead()
{
    QLocalServer listener;
    const QString name = randomServerName();
    QVERIFY(listener.listen(name));
    IPCClient client(name);
    QSignalSpy received(&client, &IPCClient::sigMessageReceived);
    client.connectToServer();
    QTRY_VERIFY(client.isConnected());
    const QString message(1 << 20, 'x'); // nobody accepts the connection
    for (int i = 0; i < 20; ++i)
        QCOMPARE(client.sendblock(message), 0);
    client.messageSend("T", nullptr);
    QCOMPARE(received.size(), 0);
    QVERIFY(client.isConnected());
}

void tst_ipcpeers::clientTakesEveryByteValue()
{
    QLocalServer listener;
    const QString name = randomServerName();
    QVERIFY(listener.listen(name));
    IPCClient client(name);
    int received = 0;
    connect(&client, &IPCClient::sigMessageReceived, &client, [&] { ++received; });
    client.connectToServer();
    QTRY_VERIFY(listener.hasPendingConnections());
    QLocalSocket* end = listener.nextPendingConnection();
    for (int i = 0; i < 256; ++i) {
        end->write(QByteArray(1, char(i)) + "__BEGIN__" + QByteArray(1, char(i)) + "__END__");
        end->flush();
        QCoreApplication::processEvents();
    }
    received = 0;
    end->write("__END__");
    end->flush();
    QCoreApplication::processEvents();
    end->write("__BEGIN__[1]__END__");
    QTRY_VERIFY(received > 0);
    QVERIFY(client.isConnected());
}

void tst_ipcpeers::processesTalkBothWays()
{
    const QString name = randomServerName();
    ChildProcess peer(HELPER_IPCPEER, {"server", name});
    QVERIFY(peer.says("ready"));
    IPCClient client(name);
    QStringList texts;
    connect(&client, &IPCClient::sigMessageReceived, &client,
            [&](CDataValue* value) { texts << value->parseToQString(FAST_STYLE).trimmed(); });
    client.connectToServer();
    QTRY_VERIFY(client.isConnected());
    const CDataValue data(QString(QChar(0x20AC)));
    client.messageSend("ASK", &data, "test");
    QTRY_COMPARE(texts,
                 QStringList{QString("{\"IPCMSG_MSG_SENDER\":\"test\",\"IPCMSG_TYPE\":\"ASK\","
                                     "\"IPCMSG_USER_DATA\":\"") +
                             QChar(0x20AC) + "\"}"});
    QCOMPARE(client.sendblock("quit"), 0);
    QCOMPARE(peer.exitCode(), 0);
    QTRY_VERIFY(!client.isConnected());
}

void tst_ipcpeers::clientProcessHearsTheBroadcast()
{
    auto server = std::make_unique<IPCServer>();
    QStringList received;
    connect(server.get(), &IPCServer::sigMessageReceived, server.get(),
            [&](const QString& text) { received << text; });
    const QString name = randomServerName();
    server->startListen(name);
    ChildProcess first(HELPER_IPCPEER, {"client", name});
    ChildProcess second(HELPER_IPCPEER, {"client", name});
    QVERIFY(first.says("ready"));
    QVERIFY(second.says("ready"));
    QTRY_COMPARE(received.size(), 2);
    for (const QString& text : std::as_const(received))
        QVERIFY(text.startsWith("{\"IPCMSG_MSG_SENDER\":\"ipcpeer\",\"IPCMSG_TYPE\":\"HELLO\","));
    server->broadcastMsg("{\"IPCMSG_TYPE\":\"REPORT\"}");
    QVERIFY(first.says("{\"IPCMSG_TYPE\":\"REPORT\"}"));
    QVERIFY(second.says("{\"IPCMSG_TYPE\":\"REPORT\"}"));
    server.reset();
    QCOMPARE(first.exitCode(), 0);
    QCOMPARE(second.exitCode(), 0);
}

void tst_ipcpeers::aKilledServersNameIsTakenOver()
{
    const QString name = randomServerName();
    IPCClient client(name);
    QSignalSpy lost(&client, &IPCClient::sigIPCServerDisconnected);
    {
        ChildProcess peer(HELPER_IPCPEER, {"server", name});
        QVERIFY(peer.says("ready"));
        client.connectToServer();
        QTRY_VERIFY(client.isConnected());
    }
    QTRY_COMPARE(lost.size(), 1);
    ChildProcess next(HELPER_IPCPEER,
                      {"server", name}); // the socket file of the killed one is still there
    QVERIFY(next.says("ready"));
    QSignalSpy received(&client, &IPCClient::sigMessageReceived);
    client.connectToServer();
    QTRY_VERIFY(client.isConnected());
    client.messageSend("ASK", nullptr);
    QTRY_COMPARE(received.size(), 1);
}

QTEST_GUILESS_MAIN(tst_ipcpeers)
#include "tst_ipcpeers.moc"
