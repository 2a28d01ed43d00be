// What slots may do: everything, up to deleting the object that calls them.
#include "DataValue/datavalue.h"
#include "Ipc/ipcclient.h"
#include "Ipc/ipcserver.h"

#include "ipcfixture.h"
#include "support/rawpeer.h"

#include <QPointer>
#include <QSignalSpy>
#include <QTimer>
#include <QtTest>

#include <functional>
#include <memory>

namespace {

using ServerAction = std::function<void(QPointer<IPCServer>)>;
using ClientAction = std::function<void(QPointer<IPCClient>)>;

enum ServerSignal { ClientCame, ClientWent, MessageCame };

struct NamedServerAction
{
    const char* name;
    ServerAction run;
};

struct NamedClientAction
{
    const char* name;
    ClientAction run;
};

const NamedServerAction serverActions[] = {
    {"delete", [](QPointer<IPCServer> server) { delete server; }},
    {"delete later", [](QPointer<IPCServer> server) { server->deleteLater(); }},
    {"close", [](QPointer<IPCServer> server) { server->close(); }},
    {"close and delete",
     [](QPointer<IPCServer> server) {
         server->close();
         delete server;
     }},
    {"listen anew",
     [](QPointer<IPCServer> server) {
         server->close();
         server->startListen(randomServerName());
     }},
    {"reply", [](QPointer<IPCServer> server) { server->sendResponse("reply", 1); }},
    {"broadcast", [](QPointer<IPCServer> server) { server->broadcastMsg("all"); }},
    {"other markers",
     [](QPointer<IPCServer> server) { server->setMessageHeadAndEndIndication("<", ">"); }},
    {"run an event loop",
     [](QPointer<IPCServer>) {
         QEventLoop loop;
         QTimer::singleShot(20, &loop, &QEventLoop::quit);
         loop.exec();
     }},
    {"delete in an event loop",
     [](QPointer<IPCServer> server) {
         QEventLoop loop;
         QTimer::singleShot(0, &loop, [&server] { delete server; });
         QTimer::singleShot(20, &loop, &QEventLoop::quit);
         loop.exec();
     }},
    {"close in an event loop",
     [](QPointer<IPCServer> server) {
         QEventLoop loop;
         QTimer::singleShot(0, &loop, [&server] {
             if (server)
                 server->close();
         });
         QTimer::singleShot(20, &loop, &QEventLoop::quit);
         loop.exec();
     }},
};

const NamedClientAction clientActions[] = {
    {"delete", [](QPointer<IPCClient> client) { delete client; }},
    {"delete later", [](QPointer<IPCClient> client) { client->deleteLater(); }},
    {"send", [](QPointer<IPCClient> client) { client->sendblock("again"); }},
    {"connect", [](QPointer<IPCClient> client) { client->connectToServer(); }},
    {"connect and delete",
     [](QPointer<IPCClient> client) {
         client->connectToServer();
         delete client;
     }},
    {"other markers", [](QPointer<IPCClient> client) { client->setDataSplitString("<", ">"); }},
    {"run an event loop",
     [](QPointer<IPCClient>) {
         QEventLoop loop;
         QTimer::singleShot(20, &loop, &QEventLoop::quit);
         loop.exec();
     }},
    {"delete in an event loop",
     [](QPointer<IPCClient> client) {
         QEventLoop loop;
         QTimer::singleShot(0, &loop, [&client] { delete client; });
         QTimer::singleShot(20, &loop, &QEventLoop::quit);
         loop.exec();
     }},
};

void onSignal(IPCServer* server, ServerSignal signal, const std::function<void()>& slot)
{
    if (signal == ClientCame)
        QObject::connect(server, &IPCServer::sigIPCServerConnected, server, slot);
    else if (signal == ClientWent)
        QObject::connect(server, &IPCServer::sigIPCServerDisconnected, server, slot);
    else
        QObject::connect(server, &IPCServer::sigMessageReceived, server, slot);
}

// The peers' part of a run: two clients come, one sends several messages and goes.
void comeAndGo(const QString& path, const QPointer<IPCServer>& server, const bool& done)
{
    RawPeer first(path);
    const RawPeer second(path);
    first.send("__BEGIN__1__END____BEGIN__2__END____BEGIN__3__END____BEGIN__half");
    QCoreApplication::processEvents();
    first.end();
    QVERIFY(QTest::qWaitFor([&] { return done; }));
    if (server)
        server->broadcastMsg("after");
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

} // namespace

class tst_ipcslots : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void serverSlotsMayDoAnything_data();
    void serverSlotsMayDoAnything();
    void serverMayEndInsideAReply();
    void serverMayEndInsideABroadcast();
    void broadcastPassesOverClientsThatSlotsEnd();
    void serverStopsDeliveringWhenItIsDeleted();
    void serverDeliversTheRestOfAReadWhenTheClientIsGone();
    void serverDeliversNothingUnderTheIdOfAnother();
    void serverDeliversWhatCameWhileASlotRanAnEventLoop();
    void serverKeepsTheSocketOfASlotThatOutlastsItsLinger();
    void clientSlotsMayDoAnything_data();
    void clientSlotsMayDoAnything();
    void clientMayConnectAgainInsideTheErrorOfALoss();
    void clientMayConnectAgainInsideTheErrorOfAnAttempt();
    void clientMayConnectAgainFromAnEventLoopInTheError();
    void clientMayEndInsideItsOwnReply();
    void clientMayEndInsideASend();
    void clientMaySendWheneverAnErrorComes();
    void clientMayAskAgainWheneverAReplyComes();
    void clientDeliversWhatCameWhileASlotRanAnEventLoop();
    void peersInOneProcessMayEndEachOther();
};

void tst_ipcslots::serverSlotsMayDoAnything_data()
{
    QTest::addColumn<int>("signal");
    QTest::addColumn<int>("action");
    const char* const signalNames[] = {"client came", "client went", "message"};
    for (int signal = ClientCame; signal <= MessageCame; ++signal) {
        for (int action = 0; action < int(std::size(serverActions)); ++action)
            QTest::addRow("%s: %s", signalNames[signal], serverActions[action].name)
                << signal << action;
    }
}

void tst_ipcslots::serverSlotsMayDoAnything()
{
    QFETCH(int, signal);
    QFETCH(int, action);

    QPointer<IPCServer> server = new IPCServer;
    server->startListen(randomServerName());
    bool done = false;
    onSignal(server, ServerSignal(signal), [&] {
        done = true;
        if (server)
            serverActions[action].run(server);
    });
    comeAndGo(socketPath(*server), server, done);
    const bool ends = QByteArray(serverActions[action].name).contains("delete");
    QTRY_COMPARE(server.isNull(), ends);
    delete server;
}

void tst_ipcslots::serverMayEndInsideAReply()
{
    QPointer<IPCServer> server = new IPCServer;
    server->startListen(randomServerName());
    connect(server, &IPCServer::sigIPCServerDisconnected, server, [&] { delete server; });
    RawPeer peer(socketPath(*server));
    QTRY_VERIFY(server->hasClientConnected());
    peer.end();
    const int result = server->sendResponse("late", 1); // the write finds out
    QCOMPARE(result, 0);
    QTRY_VERIFY(server.isNull());
}

void tst_ipcslots::serverMayEndInsideABroadcast()
{
    QPointer<IPCServer> server = new IPCServer;
    server->startListen(randomServerName());
    QSignalSpy came(server, &IPCServer::sigIPCServerConnected);
    connect(server, &IPCServer::sigIPCServerDisconnected, server, [&] { delete server; });
    RawPeer first(socketPath(*server));
    const RawPeer second(socketPath(*server));
    QTRY_COMPARE(came.size(), 2);
    first.end();
    server->broadcastMsg("late");
    QTRY_VERIFY(server.isNull());
    QTRY_VERIFY(second.isEnded());
}

void tst_ipcslots::broadcastPassesOverClientsThatSlotsEnd()
{
    IPCServer server;
    server.startListen(randomServerName());
    QSignalSpy came(&server, &IPCServer::sigIPCServerConnected);
    QList<int> gone;
    connect(&server, &IPCServer::sigIPCServerDisconnected, &server, [&](int id) {
        gone << id;
        server.broadcastMsg("inner");
    });
    RawPeer first(socketPath(server));
    RawPeer second(socketPath(server));
    RawPeer third(socketPath(server));
    RawPeer fourth(socketPath(server));
    QTRY_COMPARE(came.size(), 4);
    first.end();
    third.end();
    server.broadcastMsg("outer");
    QTRY_COMPARE(gone.size(), 2);
    QVERIFY(gone.contains(1) && gone.contains(3));
    QCOMPARE(second.receive().count("outer"), 1);
    QCOMPARE(fourth.receive().count("outer"), 1);
}

void tst_ipcslots::serverStopsDeliveringWhenItIsDeleted()
{
    QPointer<IPCServer> server = new IPCServer;
    server->startListen(randomServerName());
    QStringList bodies;
    connect(server, &IPCServer::sigMessageReceived, server, [&](const QString& body) {
        bodies << body;
        delete server;
    });
    RawPeer peer(socketPath(*server));
    peer.send("__BEGIN__1__END____BEGIN__2__END__");
    QTRY_VERIFY(server.isNull());
    QCOMPARE(bodies, QStringList{"1"});
    QTRY_VERIFY(peer.isEnded());
}

void tst_ipcslots::serverDeliversTheRestOfAReadWhenTheClientIsGone()
{
    IPCServer server;
    server.startListen(randomServerName());
    QStringList events;
    connect(&server, &IPCServer::sigMessageReceived, &server, [&](const QString& body, int id) {
        events << QString("%1:%2").arg(id).arg(body);
        events << QString::number(server.sendResponse("reply", id));
    });
    connect(&server, &IPCServer::sigIPCServerDisconnected, &server, [&] { events << "gone"; });
    RawPeer peer(socketPath(server));
    QTRY_VERIFY(server.hasClientConnected());
    peer.send("__BEGIN__1__END____BEGIN__2__END____BEGIN__3__END__");
    peer.end();
    QTRY_VERIFY(events.contains("1:3"));
    QCOMPARE(events, (QStringList{"1:1", "gone", "0", "1:2", "-1", "1:3", "-1"}));
}

void tst_ipcslots::serverDeliversNothingUnderTheIdOfAnother()
{
    IPCServer server;
    QSignalSpy came(&server, &IPCServer::sigIPCServerConnected);
    QSignalSpy went(&server, &IPCServer::sigIPCServerDisconnected);
    server.startListen(randomServerName());
    RawPeer first(socketPath(server));
    std::unique_ptr<RawPeer> second;
    QStringList received;
    connect(&server, &IPCServer::sigMessageReceived, this, [&](const QString& text, int id) {
        received << text;
        server.sendResponse("to " + text, id);
        if (text != "1")
            return;
        first.end();
        QTRY_COMPARE(went.size(), 1);
        second = std::make_unique<RawPeer>(socketPath(server));
        QTRY_COMPARE(came.size(), 2);
    });
    first.send("__BEGIN__1__END____BEGIN__2__END____BEGIN__3__END__");
    QTRY_VERIFY(second && came.size() == 2);
    QCOMPARE(came.last().first().toInt(), 1); // the number of the first client
    second->send("__BEGIN__own__END__");
    QTRY_VERIFY(received.contains("own"));
    QCOMPARE(received, (QStringList{"1", "own"}));
    QCOMPARE(second->receive(), QByteArray("__BEGIN__to own__END__"));
}

void tst_ipcslots::serverDeliversWhatCameWhileASlotRanAnEventLoop()
{
    IPCServer server;
    server.startListen(randomServerName());
    RawPeer peer(socketPath(server));
    QStringList bodies;
    connect(&server, &IPCServer::sigMessageReceived, &server, [&](const QString& body) {
        bodies << body;
        if (body != "first")
            return;
        peer.send("__BEGIN__second__END__");
        QEventLoop loop;
        QTimer::singleShot(20, &loop, &QEventLoop::quit);
        loop.exec();
    });
    peer.send("__BEGIN__first__END__");
    QTRY_COMPARE(bodies, (QStringList{"first", "second"}));
}

void tst_ipcslots::serverKeepsTheSocketOfASlotThatOutlastsItsLinger()
{
    IPCServer server;
    server.startListen(randomServerName());
    server.findChild<QObject*>("departedConnections")->setProperty("lingerMs", 10);
    QList<int> gone;
    connect(&server, &IPCServer::sigIPCServerDisconnected, &server, [&](int id) { gone << id; });
    RawPeer first(socketPath(server));
    QTRY_VERIFY(server.hasClientConnected());
    const QPointer<QLocalSocket> firstSocket = server.findChild<QLocalSocket*>();
    RawPeer second(socketPath(server));
    QTRY_COMPARE(server.findChildren<QLocalSocket*>().size(), 2);
    const QPointer<QLocalSocket> secondSocket = server.findChildren<QLocalSocket*>().last();
    QVERIFY(firstSocket != secondSocket);
    QStringList events;
    connect(&server, &IPCServer::sigMessageReceived, &server, [&](const QString& body) {
        events << body;
        first.end();
        QTRY_COMPARE(gone, QList<int>{1});
        second.end();
        QTRY_VERIFY(!secondSocket); // the time of both is over
        events << (firstSocket ? "kept" : "deleted");
    });
    first.send("__BEGIN__1__END__");
    QTRY_COMPARE(events, (QStringList{"1", "kept"}));
    QTRY_VERIFY(!firstSocket);
}

void tst_ipcslots::clientSlotsMayDoAnything_data()
{
    QTest::addColumn<QByteArray>("signal");
    QTest::addColumn<int>("action");
    for (const char* signal : {"connected", "disconnected", "message", "error"}) {
        for (int action = 0; action < int(std::size(clientActions)); ++action)
            QTest::addRow("%s: %s", signal, clientActions[action].name)
                << QByteArray(signal) << action;
    }
}

void tst_ipcslots::clientSlotsMayDoAnything()
{
    QFETCH(QByteArray, signal);
    QFETCH(int, action);

    const QString name = randomServerName();
    auto server = std::make_unique<IPCServer>();
    connect(server.get(), &IPCServer::sigIPCServerConnected, server.get(), [&](int id) {
        server->sendResponse("1__END____BEGIN__2", id);
        server->sendResponse("3", id);
    });
    server->startListen(name);
    QPointer<IPCClient> client = new IPCClient(name);
    bool done = false;
    const auto slot = [&] {
        if (!done && client)
            clientActions[action].run(client);
        done = true;
    };
    bool heard = false;
    connect(client, &IPCClient::sigMessageReceived, this, [&] { heard = true; });
    if (signal == "connected")
        connect(client, &IPCClient::sigIPCServerConnected, client, slot);
    else if (signal == "disconnected")
        connect(client, &IPCClient::sigIPCServerDisconnected, client, slot);
    else if (signal == "message")
        connect(client, &IPCClient::sigMessageReceived, client, slot);
    else
        connect(client, &IPCClient::sigIPCSocketError, client, slot);
    client->connectToServer();
    QTRY_VERIFY(heard || done);
    server.reset();
    QTRY_VERIFY(done);
    const bool ends = QByteArray(clientActions[action].name).contains("delete");
    QTRY_COMPARE(client.isNull(), ends);
    delete client;
}

void tst_ipcslots::clientMayConnectAgainInsideTheErrorOfALoss()
{
    const QString name = randomServerName();
    auto server = std::make_unique<IPCServer>();
    server->startListen(name);
    IPCClient client(name);
    std::unique_ptr<IPCServer> next;
    QSignalSpy lost(&client, &IPCClient::sigIPCServerDisconnected);
    QSignalSpy connected(&client, &IPCClient::sigIPCServerConnected);
    // The error of a loss comes while the client still counts as connected.
    connect(&client, &IPCClient::sigIPCSocketError, &client, [&] { client.connectToServer(); });
    connect(&client, &IPCClient::sigIPCServerDisconnected, &client, [&] {
        next = std::make_unique<IPCServer>();
        next->startListen(name);
        client.connectToServer();
    });
    client.connectToServer();
    QTRY_VERIFY(server->hasClientConnected());
    server.reset();
    QTRY_VERIFY(next && next->hasClientConnected());
    QSignalSpy received(next.get(), &IPCServer::sigMessageReceived);
    QCOMPARE(client.sendblock("still there"), 0);
    QTRY_COMPARE(received.size(), 1);
    QCOMPARE(lost.size(), 1);
    QCOMPARE(connected.size(), 2);
}

void tst_ipcslots::clientMayConnectAgainInsideTheErrorOfAnAttempt()
{
    const QString name = randomServerName();
    IPCServer server;
    QSignalSpy received(&server, &IPCServer::sigMessageReceived);
    IPCClient client(name);
    int errors = 0;
    connect(&client, &IPCClient::sigIPCSocketError, &client, [&] {
        ++errors;
        server.startListen(name);
        client.connectToServer();
    });
    client.connectToServer();
    QTRY_VERIFY(client.isConnected());
    QTRY_VERIFY(server.hasClientConnected());
    QCOMPARE(client.sendblock("here"), 0);
    QTRY_COMPARE(received.size(), 1);
    QCOMPARE(errors, 1);
}

void tst_ipcslots::clientMayConnectAgainFromAnEventLoopInTheError()
{
    const QString name = randomServerName();
    IPCServer server;
    QSignalSpy received(&server, &IPCServer::sigMessageReceived);
    IPCClient client(name);
    int errors = 0;
    connect(&client, &IPCClient::sigIPCSocketError, &client, [&] {
        ++errors;
        server.startListen(name);
        QEventLoop loop;
        QTimer::singleShot(0, &loop, [&] {
            client.connectToServer();
            loop.quit();
        });
        loop.exec();
    });
    client.connectToServer();
    QTRY_VERIFY(client.isConnected());
    QCOMPARE(client.sendblock("here"), 0);
    QTRY_COMPARE(received.size(), 1);
    QCOMPARE(errors, 1);
}

void tst_ipcslots::clientMayEndInsideItsOwnReply()
{
    QPointer<IPCClient> client = new IPCClient(randomServerName());
    connect(client, &IPCClient::sigMessageReceived, client, [&] { delete client; });
    client->messageSend("T", nullptr);
    QVERIFY(client.isNull());
}

void tst_ipcslots::clientMayEndInsideASend()
{
    auto server = std::make_unique<IPCServer>();
    const QString name = randomServerName();
    server->startListen(name);
    QPointer<IPCClient> client = new IPCClient(name);
    connect(client, &IPCClient::sigIPCServerDisconnected, client, [&] { delete client; });
    client->connectToServer();
    QTRY_VERIFY(server->hasClientConnected());
    server.reset();
    client->messageSend("T", nullptr); // the write finds out
    QVERIFY(client.isNull());
}

void tst_ipcslots::clientMaySendWheneverAnErrorComes()
{
    auto server = std::make_unique<IPCServer>();
    const QString name = randomServerName();
    server->startListen(name);
    IPCClient client(name);
    int errors = 0;
    connect(&client, &IPCClient::sigIPCSocketError, &client, [&] {
        ++errors;
        client.messageSend("T", nullptr);
    });
    client.connectToServer();
    QTRY_VERIFY(server->hasClientConnected());
    server.reset();
    QTRY_VERIFY(!client.isConnected());
    QVERIFY(errors < 10);
}

void tst_ipcslots::clientMayAskAgainWheneverAReplyComes()
{
    IPCClient client(randomServerName());
    int replies = 0;
    connect(&client, &IPCClient::sigMessageReceived, &client, [&](CDataValue* value) {
        if (++replies < 100)
            client.messageSend("T", value);
    });
    client.messageSend("T", nullptr);
    QCOMPARE(replies, 100);
}

void tst_ipcslots::clientDeliversWhatCameWhileASlotRanAnEventLoop()
{
    IPCServer server;
    const QString name = randomServerName();
    server.startListen(name);
    IPCClient client(name);
    QStringList bodies;
    connect(&client, &IPCClient::sigMessageReceived, &client, [&](CDataValue* value) {
        bodies << value->parseToQString(FAST_STYLE).trimmed();
        if (bodies.size() > 1)
            return;
        server.broadcastMsg("2");
        QEventLoop loop;
        QTimer::singleShot(20, &loop, &QEventLoop::quit);
        loop.exec();
    });
    client.connectToServer();
    QTRY_VERIFY(server.hasClientConnected());
    server.broadcastMsg("1");
    QTRY_COMPARE(bodies, (QStringList{"1", "2"}));
}

void tst_ipcslots::peersInOneProcessMayEndEachOther()
{
    auto server = std::make_unique<IPCServer>();
    const QString name = randomServerName();
    server->startListen(name);
    auto client = std::make_unique<IPCClient>(name);
    // The server's slot ends the client, whose end makes the next reply fail.
    connect(server.get(), &IPCServer::sigMessageReceived, server.get(),
            [&](const QString&, int id) {
                client.reset();
                server->sendResponse("reply", id);
            });
    client->connectToServer();
    QTRY_VERIFY(server->hasClientConnected());
    client->sendblock("a");
    client->sendblock("b");
    QTRY_VERIFY(!server->hasClientConnected());
    QVERIFY(!client);

    client = std::make_unique<IPCClient>(name);
    connect(client.get(), &IPCClient::sigMessageReceived, client.get(), [&] { server.reset(); });
    client->connectToServer();
    QTRY_VERIFY(server->hasClientConnected());
    server->broadcastMsg("1__END____BEGIN__2");
    QTRY_VERIFY(!server);
    QTRY_VERIFY(!client->isConnected());
}

QTEST_GUILESS_MAIN(tst_ipcslots)
#include "tst_ipcslots.moc"
