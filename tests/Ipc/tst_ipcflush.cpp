// When what is sent leaves the process: at once, or with the option once for each read.
#include "DataValue/datavalue.h"
#include "Ipc/ipcclient.h"
#include "Ipc/ipcserver.h"

#include "ipcfixture.h"
#include "support/rawpeer.h"

#include <QPointer>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

class tst_ipcflush : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void writesEachReplyAtOnce();
    void writesTheRepliesOfOneReadTogether();
    void writesABroadcastWithTheReplies();
    void writesAtOnceOutsideARead();
    void writesFromAnEventLoopInASlot();
    void letsASlotDeleteTheServerBeforeTheFlush();
    void letsTheFlushFindThatTheClientHasVanished();
    void sendsTheClientsMessagesOfOneRead();
    void keepsTheOrderBehindWhatTheSystemDoesNotTake();
    void keepsTheOrderWhenThePeerReadsLate();
    void clientKeepsTheOrderWhenThePeerReadsLate();

private:
    void connectPeer();

    std::unique_ptr<IPCServer> m_server;
    std::unique_ptr<RawPeer> m_peer;
};

void tst_ipcflush::init()
{
    m_server = std::make_unique<IPCServer>();
    m_server->startListen(randomServerName());
    connectPeer();
}

void tst_ipcflush::cleanup()
{
    m_peer.reset();
    m_server.reset();
}

void tst_ipcflush::connectPeer()
{
    m_peer = std::make_unique<RawPeer>(socketPath(*m_server));
    QTRY_VERIFY(m_server->hasClientConnected());
}

void tst_ipcflush::writesEachReplyAtOnce()
{
    QList<QByteArray> seen;
    connect(m_server.get(), &IPCServer::sigMessageReceived, this, [&](const QString& text, int id) {
        m_server->sendResponse(text, id);
        seen << m_peer->receive();
    });
    m_peer->send("__BEGIN__1__END____BEGIN__2__END__");
    QTRY_COMPARE(seen, QList<QByteArray>({"__BEGIN__1__END__", "__BEGIN__2__END__"}));
}

void tst_ipcflush::writesTheRepliesOfOneReadTogether()
{
    m_server->setOneFlushPerRead(true);
    QList<QByteArray> seen;
    connect(m_server.get(), &IPCServer::sigMessageReceived, this, [&](const QString& text, int id) {
        QCOMPARE(m_server->sendResponse(text, id), 0);
        seen << m_peer->receive();
    });
    m_peer->send("__BEGIN__1__END____BEGIN__2__END____BEGIN__3__END__");
    QTRY_COMPARE(seen, QList<QByteArray>({"", "", ""}));
    QCOMPARE(m_peer->receive(), QByteArray("__BEGIN__1__END____BEGIN__2__END____BEGIN__3__END__"));
}

void tst_ipcflush::writesABroadcastWithTheReplies()
{
    m_server->setOneFlushPerRead(true);
    RawPeer other(socketPath(*m_server));
    QSignalSpy came(m_server.get(), &IPCServer::sigIPCServerConnected);
    QTRY_COMPARE(came.count(), 1);
    connect(m_server.get(), &IPCServer::sigMessageReceived, this, [&](const QString&, int id) {
        m_server->broadcastMsg("all");
        m_server->sendResponse("one", id);
    });
    m_peer->send("__BEGIN__1__END__");
    QByteArray received;
    QTRY_VERIFY(!(received += m_peer->receive()).isEmpty());
    QCOMPARE(received, QByteArray("__BEGIN__all__END____BEGIN__one__END__"));
    QCOMPARE(other.receive(), QByteArray("__BEGIN__all__END__"));
}

void tst_ipcflush::writesAtOnceOutsideARead()
{
    m_server->setOneFlushPerRead(true);
    m_server->sendResponse("unasked", 1);
    QCOMPARE(m_peer->receive(), QByteArray("__BEGIN__unasked__END__"));
}

void tst_ipcflush::writesFromAnEventLoopInASlot()
{
    m_server->setOneFlushPerRead(true);
    QByteArray received;
    connect(m_server.get(), &IPCServer::sigMessageReceived, this, [&](const QString& text, int id) {
        m_server->sendResponse(text, id);
        QVERIFY(QTest::qWaitFor([&] { return !(received += m_peer->receive()).isEmpty(); }));
    });
    m_peer->send("__BEGIN__1__END__");
    QTRY_COMPARE(received, QByteArray("__BEGIN__1__END__"));
}

void tst_ipcflush::letsASlotDeleteTheServerBeforeTheFlush()
{
    m_server->setOneFlushPerRead(true);
    connect(m_server.get(), &IPCServer::sigMessageReceived, this, [&](const QString& text, int id) {
        m_server->sendResponse(text, id);
        m_server.reset();
    });
    m_peer->send("__BEGIN__1__END____BEGIN__2__END__");
    QTRY_VERIFY(!m_server);
    QTRY_VERIFY(m_peer->isEnded());
}

void tst_ipcflush::letsTheFlushFindThatTheClientHasVanished()
{
    m_server->setOneFlushPerRead(true);
    QSignalSpy gone(m_server.get(), &IPCServer::sigIPCServerDisconnected);
    connect(m_server.get(), &IPCServer::sigMessageReceived, this, [&](const QString& text, int id) {
        m_peer->end();
        QCOMPARE(m_server->sendResponse(text, id), 0);
    });
    m_peer->send("__BEGIN__1__END____BEGIN__2__END__");
    QTRY_COMPARE(gone.count(), 1);
    QVERIFY(!m_server->hasClientConnected());
}

void tst_ipcflush::sendsTheClientsMessagesOfOneRead()
{
    IPCClient client(socketPath(*m_server));
    client.setOneFlushPerRead(true);
    QStringList atServer;
    connect(m_server.get(), &IPCServer::sigMessageReceived, this,
            [&](const QString& text, int) { atServer << text; });
    connect(&client, &IPCClient::sigMessageReceived, this, [&](CDataValue* envelope) {
        QCOMPARE(client.sendblock(envelope->mapGet("IPCMSG_TYPE").asQString()), 0);
    });
    QSignalSpy connected(&client, &IPCClient::sigIPCServerConnected);
    client.connectToServer();
    QTRY_COMPARE(connected.count(), 1);
    QCOMPARE(client.sendblock("first"), 0);
    QTRY_COMPARE(atServer, QStringList({"first"}));
    m_server->sendResponse("{\"IPCMSG_TYPE\":\"a\"}__END____BEGIN__{\"IPCMSG_TYPE\":\"b\"}", 2);
    QTRY_COMPARE(atServer, QStringList({"first", "a", "b"}));
}

void tst_ipcflush::keepsTheOrderBehindWhatTheSystemDoesNotTake()
{
    const QString large(3 * 1024 * 1024, QChar('x'));
    m_server->sendResponse(large, 1);
    m_server->sendResponse("behind", 1);
    QByteArray received;
    QTRY_VERIFY((received += m_peer->receive()).endsWith("__BEGIN__behind__END__"));
    QCOMPARE(received, (framed(large) + framed("behind")).toUtf8());
}

// The system has room again when the second message is sent, but a part of the first still waits.
void tst_ipcflush::keepsTheOrderWhenThePeerReadsLate()
{
    const QString large(3 * 1024 * 1024, QChar('x'));
    m_server->sendResponse(large, 1);
    QByteArray received = m_peer->receive(); // without the server's event loop
    QVERIFY(!received.isEmpty() && received.size() < large.size());
    m_server->sendResponse("behind", 1);
    m_server->broadcastMsg("last");
    QTRY_VERIFY((received += m_peer->receive()).endsWith("__BEGIN__last__END__"));
    QVERIFY(received == (framed(large) + framed("behind") + framed("last")).toUtf8());
}

void tst_ipcflush::clientKeepsTheOrderWhenThePeerReadsLate()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("socket");
    const int listening = listenAt(path, 1);
    IPCClient client(path);
    client.connectToServer();
    QVERIFY(client.isConnected());
    RawPeer peer = RawPeer::accept(listening);
    ::close(listening);
    const QString large(3 * 1024 * 1024, QChar('x'));
    QCOMPARE(client.sendblock(large), 0);
    QByteArray received = peer.receive();
    QVERIFY(!received.isEmpty() && received.size() < large.size());
    QCOMPARE(client.sendblock("behind"), 0);
    QTRY_VERIFY((received += peer.receive()).endsWith("__BEGIN__behind__END__"));
    QVERIFY(received == (framed(large) + framed("behind")).toUtf8());
}

QTEST_GUILESS_MAIN(tst_ipcflush)
#include "tst_ipcflush.moc"
