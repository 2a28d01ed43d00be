#include "Ipc/ipcserver.h"

#include "ipcfixture.h"
#include "support/logcapture.h"
#include "support/rawpeer.h"

#include <QLocalSocket>
#include <QMetaMethod>
#include <QtTest>

#include <memory>
#include <vector>

/// A listening server, and a record of its signals in their order: "+1" a client came, "-1" it
/// went, "1:text" a message of client 1.
struct Listening
{
    explicit Listening(const std::function<void(IPCServer&)>& prepare = {})
    {
        QObject::connect(&server, &IPCServer::sigIPCServerConnected, &server,
                         [this](int id) { events << QString("+%1").arg(id); });
        QObject::connect(&server, &IPCServer::sigIPCServerDisconnected, &server,
                         [this](int id) { events << QString("-%1").arg(id); });
        QObject::connect(
            &server, &IPCServer::sigMessageReceived, &server,
            [this](const QString& text, int id) { events << QString("%1:%2").arg(id).arg(text); });
        if (prepare)
            prepare(server);
        server.startListen(name);
        path = socketPath(server);
    }

    QString name = randomServerName();
    QString path;
    QStringList events;
    IPCServer server;
};

class tst_ipcserver : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void listsTheSignalFormsWithDefaults();
    void numbersClientsInOrder();
    void restartsAtOneWhenAllHaveGone();
    void keepsCountingWhileAClientIsLeft();
    void deliversMessagesWithTheClientsId();
    void deliversWhatWasSentBeforeTheConnectionWasAccepted();
    void announcesAClientThatHasGoneBeforeItWasAccepted();
    void startsEachConnectionWithAnEmptyBuffer();
    void answersOneClient();
    void refusesAnUnknownClient();
    void findsNoEntryForAClientThatHasGone();
    void survivesAReplyToAClientThatVanishedUnnoticed();
    void takesAnEntryWithoutSocket();
    void broadcastsInAscendingOrder();
    void usesChangedMarkersForAllClients();
    void leavesASecondConnectionPending();
    void takesAPendingConnectionWithTheNextOne();
    void staysReachableAfterManyPendingConnections();
    void keepsClientsWhenClosed();
    void endsPendingConnectionsWhenClosed();
    void listensAgainAfterClose();
    void replacesAStaleSocketFile();
    void logsThatItCannotListen();
    void logsTheStepsOfAConnection();
    void logsMessagesAndReplies();
    void cutsLongTextsInTheLog();
};

void tst_ipcserver::listsTheSignalFormsWithDefaults()
{
    const QMetaObject& meta = IPCServer::staticMetaObject;
    for (const char* signature : {"sigIPCServerConnected(int)", "sigIPCServerConnected()",
                                  "sigIPCServerDisconnected(int)", "sigIPCServerDisconnected()",
                                  "sigMessageReceived(QString,int)", "sigMessageReceived(QString)"})
        QVERIFY2(meta.indexOfSignal(signature) >= 0, signature);
    for (const char* signature :
         {"socket_new_connection()", "socket_readReady()", "socket_disconnected()"}) {
        QVERIFY2(meta.indexOfSlot(signature) >= 0, signature);
        QCOMPARE(meta.method(meta.indexOfSlot(signature)).access(), QMetaMethod::Private);
    }
}

void tst_ipcserver::numbersClientsInOrder()
{
    Listening to;
    QVERIFY(!to.server.hasClientConnected());
    const RawPeer first(to.path);
    const RawPeer second(to.path);
    const RawPeer third(to.path);
    QTRY_COMPARE(to.events, (QStringList{"+1", "+2", "+3"}));
    QVERIFY(to.server.hasClientConnected());
}

void tst_ipcserver::restartsAtOneWhenAllHaveGone()
{
    Listening to;
    {
        const RawPeer first(to.path);
        const RawPeer second(to.path);
        QTRY_COMPARE(to.events.size(), 2);
    }
    QTRY_COMPARE(to.events.size(), 4);
    QVERIFY(!to.server.hasClientConnected());
    const RawPeer next(to.path);
    QTRY_COMPARE(to.events.size(), 5);
    QCOMPARE(to.events.last(), QString("+1"));
}

void tst_ipcserver::keepsCountingWhileAClientIsLeft()
{
    Listening to;
    RawPeer first(to.path);
    const RawPeer second(to.path);
    QTRY_COMPARE(to.events.size(), 2);
    first.end();
    QTRY_COMPARE(to.events.size(), 3);
    const RawPeer next(to.path);
    QTRY_COMPARE(to.events, (QStringList{"+1", "+2", "-1", "+3"}));
}

void tst_ipcserver::deliversMessagesWithTheClientsId()
{
    Listening to;
    RawPeer first(to.path);
    RawPeer second(to.path);
    QTRY_COMPARE(to.events.size(), 2);
    second.send("__BEGIN__a__END____BEGIN__no value{__END____BEG");
    QTRY_COMPARE(to.events.mid(2), (QStringList{"2:a", "2:no value{"}));
    first.send("__BEGIN__b__END__");
    QTRY_COMPARE(to.events.mid(4), QStringList{"1:b"});
    second.send("IN__\xC3\xA9__END__");
    QTRY_COMPARE(to.events.mid(5), QStringList{QString("2:") + QChar(0xE9)});
}

void tst_ipcserver::deliversWhatWasSentBeforeTheConnectionWasAccepted()
{
    Listening to;
    RawPeer peer(to.path); // the system connects it although the server has not run yet
    peer.send("__BEGIN__early__END__");
    QTRY_COMPARE(to.events, (QStringList{"+1", "1:early"}));
}

void tst_ipcserver::announcesAClientThatHasGoneBeforeItWasAccepted()
{
    Listening to;
    RawPeer peer(to.path);
    peer.send("__BEGIN__last words__END__");
    peer.end();
    QTRY_COMPARE(to.events, (QStringList{"+1", "1:last words", "-1"}));
    QVERIFY(!to.server.hasClientConnected());
}

void tst_ipcserver::startsEachConnectionWithAnEmptyBuffer()
{
    Listening to;
    RawPeer first(to.path);
    first.send("__BEGIN__half");
    first.end();
    QTRY_COMPARE(to.events, (QStringList{"+1", "-1"}));
    RawPeer second(to.path);
    second.send("other__END____BEGIN__whole__END__");
    // The lone end stands before the head: all that follows the head is delivered.
    QTRY_COMPARE(to.events.mid(2), (QStringList{"+1", "1:whole__END__"}));
}

void tst_ipcserver::answersOneClient()
{
    Listening to;
    RawPeer first(to.path);
    RawPeer second(to.path);
    QTRY_COMPARE(to.events.size(), 2);
    QCOMPARE(to.server.sendResponse(QString("caf") + QChar(0xE9), 2), 0);
    QCOMPARE(second.receive(), QByteArray("__BEGIN__caf\xC3\xA9__END__"));
    QCOMPARE(first.receive(), QByteArray());
}

void tst_ipcserver::refusesAnUnknownClient()
{
    const LogCapture log;
    Listening to;
    QCOMPARE(to.server.sendResponse("text", 1), -1);
    QCOMPARE(log.count("Ipc/ipcserver sendResponse No socket!! "), 1);
    QCOMPARE(to.server.sendResponse("text", 0), -1);
    QCOMPARE(to.server.sendResponse("text", -1), -1);
}

void tst_ipcserver::findsNoEntryForAClientThatHasGone()
{
    Listening to;
    RawPeer peer(to.path);
    QTRY_COMPARE(to.events.size(), 1);
    peer.end();
    QTRY_COMPARE(to.events.size(), 2);
    QCOMPARE(to.server.sendResponse("late", 1), -1);
}

void tst_ipcserver::survivesAReplyToAClientThatVanishedUnnoticed()
{
    Listening to;
    RawPeer peer(to.path);
    QTRY_COMPARE(to.events.size(), 1);
    peer.end(); // the server's event loop does not run before the reply
    QCOMPARE(to.server.sendResponse("late", 1), 0);
    QTRY_COMPARE(to.events, (QStringList{"+1", "-1"}));
    QVERIFY(!to.server.hasClientConnected());
}

void tst_ipcserver::takesAnEntryWithoutSocket()
{
    Listening to;
    // The listener says that a connection came, but has none.
    QVERIFY(QMetaObject::invokeMethod(to.server.findChild<QLocalServer*>(), "newConnection"));
    QCOMPARE(to.events, QStringList{"+1"});
    QCOMPARE(to.server.sendResponse("text", 1), 0);
    to.server.broadcastMsg("text");
    QVERIFY(to.server.hasClientConnected());
}

void tst_ipcserver::broadcastsInAscendingOrder()
{
    const LogCapture log;
    Listening to;
    std::vector<std::unique_ptr<RawPeer>> peers;
    for (int i = 1; i <= 11; ++i) {
        peers.push_back(std::make_unique<RawPeer>(to.path));
        QTRY_COMPARE(to.events.size(), i);
    }
    to.server.broadcastMsg("all");
    for (const auto& peer : peers)
        QCOMPARE(peer->receive(), QByteArray("__BEGIN__all__END__"));
    QStringList order;
    for (const QString& line : log.lines().filter("Ipc/ipcserver broadcastMsg broadcastMsg "))
        order << line.trimmed().section(' ', -1);
    QCOMPARE(order, (QStringList{"1", "2", "3", "4", "5", "6", "7", "8", "9", "10", "11"}));
}

void tst_ipcserver::usesChangedMarkersForAllClients()
{
    Listening to;
    RawPeer peer(to.path);
    peer.send("<a>");
    QTRY_COMPARE(to.events.size(), 1);
    to.server.setMessageHeadAndEndIndication("<", ">");
    peer.send("<b>");
    QTRY_COMPARE(to.events, (QStringList{"+1", "1:a", "1:b"}));
    QCOMPARE(to.server.sendResponse("c", 1), 0);
    to.server.broadcastMsg("d");
    QCOMPARE(peer.receive(), QByteArray("<c><d>"));
    RawPeer later(to.path);
    later.send("<e>");
    QTRY_COMPARE(to.events.last(), QString("2:e"));
}

void tst_ipcserver::leavesASecondConnectionPending()
{
    const LogCapture log;
    Listening to([](IPCServer& server) { server.setOnlyOneConnectionSupport(); });
    RawPeer first(to.path);
    QTRY_COMPARE(to.events, QStringList{"+1"});
    RawPeer second(to.path);
    second.send("__BEGIN__hello__END__");
    QTRY_COMPARE(log.count("new connection coming but discard!!!!!!"), 1);
    to.server.broadcastMsg("all");
    first.end();
    QTRY_COMPARE(to.events, (QStringList{"+1", "-1"}));
    // A round through the server: had it taken the second connection, that would show.
    QCoreApplication::processEvents();
    QCOMPARE(to.events, (QStringList{"+1", "-1"}));
    QVERIFY(!to.server.hasClientConnected());
    QCOMPARE(second.receive(), QByteArray());
    QVERIFY(!second.isEnded());
}

void tst_ipcserver::takesAPendingConnectionWithTheNextOne()
{
    const LogCapture log;
    Listening to([](IPCServer& server) { server.setOnlyOneConnectionSupport(); });
    RawPeer first(to.path);
    QTRY_COMPARE(to.events.size(), 1);
    RawPeer second(to.path);
    second.send("__BEGIN__second__END__");
    QTRY_COMPARE(log.count("new connection coming but discard!!!!!!"), 1);
    first.end();
    QTRY_COMPARE(to.events.size(), 2);
    RawPeer third(to.path);
    third.send("__BEGIN__third__END__");
    QTRY_COMPARE(to.events.mid(2), (QStringList{"+1", "1:second"}));
    QCOMPARE(to.server.sendResponse("yours", 1), 0);
    QCOMPARE(second.receive(), QByteArray("__BEGIN__yours__END__"));
    QCOMPARE(third.receive(), QByteArray());
}

// A listener takes no notice of further connections while it keeps too many pending ones.
void tst_ipcserver::staysReachableAfterManyPendingConnections()
{
    Listening to([](IPCServer& server) { server.setOnlyOneConnectionSupport(); });
    RawPeer first(to.path);
    QTRY_COMPARE(to.events.size(), 1);
    std::vector<std::unique_ptr<RawPeer>> crowd;
    for (int i = 0; i < 40; ++i) {
        crowd.push_back(std::make_unique<RawPeer>(to.path));
        QCoreApplication::processEvents();
    }
    crowd.clear();
    first.end();
    RawPeer last(to.path);
    last.send("__BEGIN__made it__END__");
    // Each connection that comes lets one go that was pending; none is left in the end.
    std::vector<std::unique_ptr<RawPeer>> callers;
    QVERIFY(QTest::qWaitFor([&] {
        callers.clear();
        callers.push_back(std::make_unique<RawPeer>(to.path));
        return to.events.contains("1:made it");
    }));
}

void tst_ipcserver::keepsClientsWhenClosed()
{
    Listening to;
    RawPeer peer(to.path);
    QTRY_COMPARE(to.events.size(), 1);
    to.server.close();
    QVERIFY(!to.server.findChild<QLocalServer*>());
    QVERIFY(!RawPeer(to.path).isOpen());
    QVERIFY(to.server.hasClientConnected());
    peer.send("__BEGIN__still here__END__");
    QTRY_COMPARE(to.events.size(), 2);
    QCOMPARE(to.server.sendResponse("so am I", 1), 0);
    to.server.broadcastMsg("all");
    QCOMPARE(peer.receive(), QByteArray("__BEGIN__so am I__END____BEGIN__all__END__"));
    peer.end();
    QTRY_COMPARE(to.events, (QStringList{"+1", "1:still here", "-1"}));
    to.server.close();
}

void tst_ipcserver::endsPendingConnectionsWhenClosed()
{
    const LogCapture log;
    Listening to([](IPCServer& server) { server.setOnlyOneConnectionSupport(); });
    const RawPeer first(to.path);
    QTRY_COMPARE(to.events.size(), 1);
    const RawPeer second(to.path);
    QTRY_COMPARE(log.count("discard"), 1);
    to.server.close();
    QVERIFY(second.isEnded());
    QVERIFY(!first.isEnded());
}

void tst_ipcserver::listensAgainAfterClose()
{
    Listening to;
    RawPeer first(to.path);
    QTRY_COMPARE(to.events.size(), 1);
    to.server.close();
    QCOMPARE(to.server.startListen(to.name), 0);
    const RawPeer second(to.path);
    QTRY_COMPARE(to.events, (QStringList{"+1", "+2"}));
    // A second start takes the place of the first listener.
    QCOMPARE(to.server.startListen(to.name), 0);
    const RawPeer third(to.path);
    QTRY_COMPARE(to.events, (QStringList{"+1", "+2", "+3"}));
    QCOMPARE(to.server.findChildren<QLocalServer*>().size(), 1);
    to.server.broadcastMsg("x");
    QCOMPARE(first.receive(), QByteArray("__BEGIN__x__END__"));
}

void tst_ipcserver::replacesAStaleSocketFile()
{
    QTemporaryDir folder;
    const QString path = folder.filePath("socket");
    QVERIFY(RawPeer::leaveSocketFile(path));

    const LogCapture log;
    IPCServer server;
    QSignalSpy connected(&server, &IPCServer::sigIPCServerConnected);
    QCOMPARE(server.startListen(path), 0);
    const RawPeer peer(path);
    QVERIFY(peer.isOpen());
    QTRY_COMPARE(connected.size(), 1);
    QVERIFY(!log.contains("Not able to start the Server"));
}

void tst_ipcserver::logsThatItCannotListen()
{
    const LogCapture log;
    IPCServer server;
    QCOMPARE(server.startListen("/nowhere/at/all/socket"), 0);
    QCOMPARE(log.count("Ipc/ipcserver startListen Not able to start the Server "), 1);
    QVERIFY(!server.hasClientConnected());
    server.broadcastMsg("nobody");
    server.close();
}

void tst_ipcserver::logsTheStepsOfAConnection()
{
    const LogCapture log;
    Listening to;
    RawPeer peer(to.path);
    QTRY_COMPARE(to.events.size(), 1);
    peer.end();
    QTRY_COMPARE(to.events.size(), 2);
    QStringList lines;
    for (const QString& line : log.lines())
        lines << line.section(' ', 2).remove(QRegularExpression("(?<=connection: )\\d+"));
    QCOMPARE(lines, (QStringList{"Ipc/ipcserver socket_new_connection socket_new_connection:  ",
                                 "Ipc/ipcserver socket_new_connection begin get socket ",
                                 "Ipc/ipcserver socket_new_connection end get socket ",
                                 "Ipc/ipcserver socket_new_connection end emit ",
                                 "Ipc/ipcserver socket_new_connection end ",
                                 "Ipc/ipcserver socket_disconnected socket_disconnected 1 "}));
}

void tst_ipcserver::logsMessagesAndReplies()
{
    const LogCapture log;
    Listening to;
    RawPeer peer(to.path);
    peer.send("stray");
    QTRY_COMPARE(log.count("Ipc/ipcserver socket_readReady nStartPost not find "), 1);
    peer.send("__BEGIN__body");
    QTRY_COMPARE(log.count("Ipc/ipcserver socket_readReady nEndPos not find "), 1);
    peer.send("__END__");
    QTRY_COMPARE(to.events.last(), QString("1:body"));
    QCOMPARE(log.count("Ipc/ipcserver socket_readReady emit sigMessageReceived!! "), 1);
    QCOMPARE(log.count("Ipc/ipcserver socket_readReady strDataValue = body "), 1);
    QCOMPARE(log.count("not find"), 2);
    to.server.sendResponse("text", 1);
    QCOMPARE(log.count("Ipc/ipcserver sendResponse send response: __BEGIN__text__END__ "), 1);
}

void tst_ipcserver::cutsLongTextsInTheLog()
{
    const LogCapture log;
    Listening to;
    RawPeer peer(to.path);
    QTRY_COMPARE(to.events.size(), 1);
    to.server.sendResponse(QString(100000, 'x'), 1);
    const QStringList lines = log.lines().filter("send response:");
    QCOMPARE(lines.size(), 1);
    QVERIFY(lines.first().size() < 17000);
    QVERIFY(lines.first().contains("100016 characters"));
}

QTEST_GUILESS_MAIN(tst_ipcserver)
#include "tst_ipcserver.moc"
