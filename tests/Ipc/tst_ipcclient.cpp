#include "DataValue/datavalue.h"
#include "Ipc/ipcclient.h"
#include "Ipc/ipcserver.h"

#include "ipcfixture.h"
#include "support/logcapture.h"

#include <QMetaMethod>
#include <QtTest>

#include <memory>

/// A client with a record of its signals in their order: "connected", "disconnected", "error", and
/// the compact text of each envelope.
struct Recorded
{
    explicit Recorded(const QString& name)
        : client(name)
    {
        QObject::connect(&client, &IPCClient::sigIPCServerConnected, &client,
                         [this] { events << "connected"; });
        QObject::connect(&client, &IPCClient::sigIPCServerDisconnected, &client,
                         [this] { events << "disconnected"; });
        QObject::connect(&client, &IPCClient::sigIPCSocketError, &client,
                         [this] { events << "error"; });
        QObject::connect(&client, &IPCClient::sigMessageReceived, &client,
                         [this](CDataValue* value) { events << compact(*value); });
    }

    static QString compact(const CDataValue& value)
    {
        return value.parseToQString(FAST_STYLE).trimmed();
    }

    QStringList events;
    IPCClient client;
};

/// A server and the texts that it has received.
struct Server
{
    explicit Server(const QString& serverName = randomServerName())
        : name(serverName)
    {
        QObject::connect(server.get(), &IPCServer::sigMessageReceived, server.get(),
                         [this](const QString& text, int) { received << text; });
        server->startListen(name);
    }
    /// Ends all connections.
    void stop() { server.reset(); }

    QString name;
    QStringList received;
    std::unique_ptr<IPCServer> server = std::make_unique<IPCServer>();
};

// [1,"b"]
static CDataValue payload()
{
    CDataValue data(ARRAY_VALUE);
    data.arrayAppend(CDataValue(1), true);
    data.arrayAppend(CDataValue("b"), true);
    return data;
}

class tst_ipcclient : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void listsTheSlotForms();
    void connectsAndDisconnects();
    void reportsAMissingServer();
    void doesNothingWhenConnectedAlready();
    void makesItsSocketOnce();
    void connectsAgainWithTheSameSocket();
    void connectsAgainInsideTheDisconnection();
    void reportsTheSecondDisconnectionNoMore();
    void sendsAnEnvelope_data();
    void sendsAnEnvelope();
    void answersItselfWhenNotConnected_data();
    void answersItselfWhenNotConnected();
    void answersItselfWhenTheServerHasVanished();
    void returnsSevenWhenNotConnected();
    void returnsZeroWhenSent();
    void returnsSixWhenTheWriteFails();
    void deliversEnvelopesInOrder();
    void deliversAnyValueAndDropsWhatIsNone();
    void deliversAFreshMapInsideTheCall();
    void startsEachConnectionWithAnEmptyBuffer();
    void usesChangedMarkers();
    void carriesAMillionCharacters();
    void logsWhatItDoes();
};

void tst_ipcclient::listsTheSlotForms()
{
    const QMetaObject& meta = IPCClient::staticMetaObject;
    for (const char* signature :
         {"messageSend(const char*,const CDataValue*,const char*)",
          "messageSend(const char*,const CDataValue*)", "socket_connected()",
          "socket_disconnected()", "socket_readReady()",
          "socket_error(QLocalSocket::LocalSocketError)"})
        QVERIFY2(meta.indexOfSlot(signature) >= 0, signature);
    for (const char* signature : {"sigMessageReceived(CDataValue*)", "sigIPCServerConnected()",
                                  "sigIPCServerDisconnected()", "sigIPCSocketError()"})
        QVERIFY2(meta.indexOfSignal(signature) >= 0, signature);
}

void tst_ipcclient::connectsAndDisconnects()
{
    Server to;
    Recorded from(to.name);
    QVERIFY(!from.client.isConnected());
    from.client.connectToServer();
    QTRY_COMPARE(from.events, QStringList{"connected"});
    QVERIFY(from.client.isConnected());
    QTRY_VERIFY(to.server->hasClientConnected());
    to.stop();
    QTRY_VERIFY(!from.client.isConnected());
    QCOMPARE(from.events, (QStringList{"connected", "error", "disconnected"}));
}

void tst_ipcclient::reportsAMissingServer()
{
    const LogCapture log;
    Recorded from(randomServerName());
    from.client.connectToServer();
    QTRY_COMPARE(from.events, QStringList{"error"});
    QVERIFY(!from.client.isConnected());
    const int code = QLocalSocket::ServerNotFoundError;
    QCOMPARE(log.count(QString("Ipc/ipcclient socket_error socket_error: %1 ").arg(code)), 1);
    from.client.connectToServer();
    QTRY_COMPARE(from.events, (QStringList{"error", "error"}));
}

void tst_ipcclient::doesNothingWhenConnectedAlready()
{
    const LogCapture log;
    Server to;
    Recorded from(to.name);
    from.client.connectToServer();
    QTRY_VERIFY(from.client.isConnected());
    QCOMPARE(log.count("Ipc/ipcclient connectToServer Enter in IPCClient::connectToServer BEGIN "),
             1);
    QCOMPARE(log.count("Ipc/ipcclient connectToServer Enter in IPCClient::connectToServer END "),
             1);
    from.client.connectToServer();
    QCOMPARE(log.count("Enter in"), 2);
    QCOMPARE(from.events, QStringList{"connected"});
}

void tst_ipcclient::makesItsSocketOnce()
{
    Server to;
    Recorded from(to.name);
    from.client.initSocket();
    from.client.initSocket();
    QVERIFY(!from.client.findChild<QLocalSocket*>()); // the socket has no parent
    from.client.connectToServer();
    QTRY_COMPARE(from.events, QStringList{"connected"});
    from.client.initSocket();
    QVERIFY(from.client.isConnected());
    QCOMPARE(from.client.sendblock("x"), 0);
    QTRY_COMPARE(to.received, QStringList{"x"});
}

void tst_ipcclient::connectsAgainWithTheSameSocket()
{
    const QString name = randomServerName();
    Recorded from(name);
    for (int round = 0; round < 3; ++round) {
        Server to(name);
        from.client.connectToServer();
        QTRY_VERIFY(from.client.isConnected());
        from.client.messageSend("A", nullptr);
        QTRY_COMPARE(to.received, QStringList{"{\"IPCMSG_TYPE\":\"A\"}\n"});
        to.server->sendResponse("{\"n\":1}", 1);
        QTRY_COMPARE(from.events.last(), QString("{\"n\":1}"));
        to.stop();
        QTRY_VERIFY(!from.client.isConnected());
    }
    QCOMPARE(from.events.count("connected"), 3);
    QCOMPARE(from.events.count("disconnected"), 3);
}

void tst_ipcclient::connectsAgainInsideTheDisconnection()
{
    Server first;
    Recorded from(first.name);
    from.client.connectToServer();
    QTRY_VERIFY(from.client.isConnected());
    QTRY_VERIFY(first.server->hasClientConnected());
    std::unique_ptr<Server> second;
    connect(&from.client, &IPCClient::sigIPCServerDisconnected, &from.client, [&] {
        second = std::make_unique<Server>(first.name);
        from.client.connectToServer();
    });
    first.stop();
    QTRY_VERIFY(second && from.client.isConnected());
    from.client.messageSend("A", nullptr);
    QTRY_COMPARE(second->received, QStringList{"{\"IPCMSG_TYPE\":\"A\"}\n"});
    second->server->sendResponse("{\"n\":2}", 1);
    QTRY_COMPARE(from.events.last(), QString("{\"n\":2}"));
}

void tst_ipcclient::reportsTheSecondDisconnectionNoMore()
{
    const LogCapture log;
    Server to;
    Recorded from(to.name);
    QVERIFY(QMetaObject::invokeMethod(&from.client, "socket_disconnected"));
    QCOMPARE(from.events, QStringList());
    from.client.connectToServer();
    QTRY_VERIFY(from.client.isConnected());
    QVERIFY(QMetaObject::invokeMethod(&from.client, "socket_disconnected"));
    QVERIFY(QMetaObject::invokeMethod(&from.client, "socket_disconnected"));
    QCOMPARE(from.events, (QStringList{"connected", "disconnected"}));
    QCOMPARE(log.count("Ipc/ipcclient socket_disconnected socket_disconnected "), 1);
}

void tst_ipcclient::sendsAnEnvelope_data()
{
    QTest::addColumn<QByteArray>("sender");
    QTest::addColumn<bool>("withData");
    QTest::addColumn<QString>("text");

    QTest::newRow("type only") << QByteArray() << false << "{\"IPCMSG_TYPE\":\"T\"}\n";
    QTest::newRow("payload") << QByteArray() << true
                             << "{\"IPCMSG_TYPE\":\"T\",\"IPCMSG_USER_DATA\":[1,\"b\"]}\n";
    QTest::newRow("sender") << QByteArray("me") << false
                            << "{\"IPCMSG_MSG_SENDER\":\"me\",\"IPCMSG_TYPE\":\"T\"}\n";
    QTest::newRow("both") << QByteArray("me") << true
                          << "{\"IPCMSG_MSG_SENDER\":\"me\",\"IPCMSG_TYPE\":\"T\","
                             "\"IPCMSG_USER_DATA\":[1,\"b\"]}\n";
}

void tst_ipcclient::sendsAnEnvelope()
{
    QFETCH(QByteArray, sender);
    QFETCH(bool, withData);
    QFETCH(QString, text);

    Server to;
    Recorded from(to.name);
    from.client.connectToServer();
    QTRY_VERIFY(from.client.isConnected());
    const CDataValue data = payload();
    from.client.messageSend("T", withData ? &data : nullptr,
                            sender.isNull() ? nullptr : sender.constData());
    QTRY_COMPARE(to.received, QStringList{text});
    QCOMPARE(from.events, QStringList{"connected"});
}

void tst_ipcclient::answersItselfWhenNotConnected_data()
{
    QTest::addColumn<QByteArray>("sender");
    QTest::addColumn<bool>("withData");
    QTest::addColumn<QString>("text");

    QTest::newRow("type only") << QByteArray() << false
                               << "{\"IPCMSG_ERROR_CODE\":6,\"IPCMSG_TYPE\":\"T\"}";
    QTest::newRow("both") << QByteArray("me") << true
                          << "{\"IPCMSG_ERROR_CODE\":6,\"IPCMSG_MSG_SENDER\":\"me\","
                             "\"IPCMSG_TYPE\":\"T\",\"IPCMSG_USER_DATA\":[1,\"b\"]}";
}

void tst_ipcclient::answersItselfWhenNotConnected()
{
    QFETCH(QByteArray, sender);
    QFETCH(bool, withData);
    QFETCH(QString, text);

    Server to;
    Recorded from(to.name);
    const CDataValue data = payload();
    from.client.messageSend("T", withData ? &data : nullptr,
                            sender.isNull() ? nullptr : sender.constData());
    QCOMPARE(from.events, QStringList{text}); // without any event loop
    from.client.connectToServer();
    QTRY_VERIFY(from.client.isConnected());
    QCOMPARE(from.client.sendblock("only this"), 0);
    QTRY_COMPARE(to.received, QStringList{"only this"});
}

void tst_ipcclient::answersItselfWhenTheServerHasVanished()
{
    Server to;
    Recorded from(to.name);
    from.client.connectToServer();
    QTRY_VERIFY(from.client.isConnected());
    QTRY_VERIFY(to.server->hasClientConnected());
    to.stop(); // the client's event loop does not run before it sends
    from.client.messageSend("T", nullptr);
    QCOMPARE(from.events, (QStringList{"connected", "error", "disconnected",
                                       "{\"IPCMSG_ERROR_CODE\":6,\"IPCMSG_TYPE\":\"T\"}"}));
}

void tst_ipcclient::returnsSevenWhenNotConnected()
{
    Recorded from(randomServerName());
    QCOMPARE(from.client.sendblock("x"), 7);
    from.client.initSocket();
    QCOMPARE(from.client.sendblock("x"), 7);
    QCOMPARE(from.events, QStringList());
}

void tst_ipcclient::returnsZeroWhenSent()
{
    const LogCapture log;
    Server to;
    Recorded from(to.name);
    from.client.connectToServer();
    QTRY_VERIFY(from.client.isConnected());
    QCOMPARE(from.client.sendblock(QString("caf") + QChar(0xE9)), 0);
    QTRY_COMPARE(to.received, QStringList{QString("caf") + QChar(0xE9)});
    QCOMPARE(log.count("Ipc/ipcclient sendblock Write Len: 21 "), 1);
    QCOMPARE(log.count("Ipc/ipcclient sendblock sendblock __BEGIN__caf"), 1);
}

void tst_ipcclient::returnsSixWhenTheWriteFails()
{
    Recorded from(randomServerName());
    // The flag says connected, the socket is not: nothing can be written.
    from.client.initSocket();
    QVERIFY(QMetaObject::invokeMethod(&from.client, "socket_connected"));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("QIODevice::write .*not open"));
    QCOMPARE(from.client.sendblock("x"), 6);
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("QIODevice::write .*not open"));
    from.client.messageSend("T", nullptr);
    QCOMPARE(from.events,
             (QStringList{"connected", "{\"IPCMSG_ERROR_CODE\":6,\"IPCMSG_TYPE\":\"T\"}"}));
}

void tst_ipcclient::deliversEnvelopesInOrder()
{
    Server to;
    Recorded from(to.name);
    from.client.connectToServer();
    QTRY_VERIFY(to.server->hasClientConnected());
    to.server->sendResponse("{\"n\":1}__END____BEGIN__{\"n\":2}", 1);
    to.server->broadcastMsg("{\"n\":3}");
    QTRY_COMPARE(from.events.mid(1), (QStringList{"{\"n\":1}", "{\"n\":2}", "{\"n\":3}"}));
}

void tst_ipcclient::deliversAnyValueAndDropsWhatIsNone()
{
    Server to;
    Recorded from(to.name);
    from.client.connectToServer();
    QTRY_VERIFY(to.server->hasClientConnected());
    for (const char* text :
         {"{", "", "[1", "{\"a\"", "nonsense", "5", "[1, 2]", "\"text\"", "null"})
        to.server->sendResponse(text, 1);
    to.server->sendResponse(QString(100000, '['), 1);
    to.server->sendResponse("{\"last\":true}", 1);
    QTRY_COMPARE(from.events.mid(1),
                 (QStringList{"5", "[1,2]", "\"text\"", "null", "{\"last\":true}"}));
}

void tst_ipcclient::deliversAFreshMapInsideTheCall()
{
    Server to;
    IPCClient client(to.name);
    QStringList texts;
    connect(&client, &IPCClient::sigMessageReceived, &client, [&](CDataValue* value) {
        value->mapSet("mark", CDataValue(1), true);
        texts << Recorded::compact(*value);
    });
    client.connectToServer();
    QTRY_VERIFY(to.server->hasClientConnected());
    to.server->broadcastMsg("{\"a\":1}");
    to.server->broadcastMsg("{\"b\":1}");
    QTRY_COMPARE(texts, (QStringList{"{\"a\":1,\"mark\":1}", "{\"b\":1,\"mark\":1}"}));
}

void tst_ipcclient::startsEachConnectionWithAnEmptyBuffer()
{
    const LogCapture log;
    const QString name = randomServerName();
    Recorded from(name);
    {
        Server to(name);
        to.server->setMessageHeadAndEndIndication("", "");
        from.client.connectToServer();
        QTRY_VERIFY(to.server->hasClientConnected());
        to.server->broadcastMsg("__BEGIN__{\"half");
        QTRY_VERIFY(log.contains("Ipc/ipcclient socket_readReady __BEGIN__{\"half "));
    }
    QTRY_VERIFY(!from.client.isConnected());
    Server to(name);
    from.client.connectToServer();
    QTRY_VERIFY(to.server->hasClientConnected());
    to.server->broadcastMsg("{\"whole\":1}");
    QTRY_COMPARE(from.events.last(), QString("{\"whole\":1}"));
}

void tst_ipcclient::usesChangedMarkers()
{
    Server to;
    Recorded from(to.name);
    from.client.setDataSplitString("<", ">");
    to.server->setMessageHeadAndEndIndication("<", ">");
    from.client.connectToServer();
    QTRY_VERIFY(to.server->hasClientConnected());
    QCOMPARE(from.client.sendblock("a"), 0);
    QTRY_COMPARE(to.received, QStringList{"a"});
    to.server->broadcastMsg("1");
    QTRY_COMPARE(from.events.last(), QString("1"));
    from.client.setDataSplitString("__BEGIN__", "__END__");
    to.server->broadcastMsg("2>__BEGIN__3__END__<");
    QTRY_COMPARE(from.events.last(), QString("3"));
}

void tst_ipcclient::carriesAMillionCharacters()
{
    Server to;
    Recorded from(to.name);
    from.client.connectToServer();
    QTRY_VERIFY(to.server->hasClientConnected());
    QString text;
    while (text.size() < 1000000)
        text += QString::fromUcs4(U"\u00E9\u20AC\u4E2D\U0001F600");
    const CDataValue data(text);
    from.client.messageSend("T", &data);
    QTRY_COMPARE(to.received.size(), 1);
    QVERIFY(to.received.first() ==
            "{\"IPCMSG_TYPE\":\"T\",\"IPCMSG_USER_DATA\":\"" + text + "\"}\n");
    to.server->broadcastMsg("\"" + text + "\"");
    QTRY_COMPARE(from.events.size(), 2);
    QVERIFY(from.events.last() == "\"" + text + "\"");
}

void tst_ipcclient::logsWhatItDoes()
{
    const LogCapture log;
    Server to;
    Recorded from(to.name);
    from.client.connectToServer();
    QTRY_VERIFY(to.server->hasClientConnected());
    QCOMPARE(log.count("Ipc/ipcclient socket_connected socket_connected "), 1);
    const CDataValue data = payload();
    from.client.messageSend("T", &data);
    QCOMPARE(log.count("Ipc/ipcclient messageSend messageSend [1,\"b\"]\n "), 1);
    QCOMPARE(log.count("Ipc/ipcclient messageSend messageSend {\"IPCMSG_TYPE\":\"T\","
                       "\"IPCMSG_USER_DATA\":[1,\"b\"]}\n "),
             1);
    to.server->broadcastMsg("[]");
    QTRY_COMPARE(log.count("Ipc/ipcclient socket_readReady __BEGIN__[]__END__ "), 1);
    QCOMPARE(log.count("Ipc/ipcclient socket_readReady socket_readReady "), 1);
}

QTEST_GUILESS_MAIN(tst_ipcclient)
#include "tst_ipcclient.moc"
