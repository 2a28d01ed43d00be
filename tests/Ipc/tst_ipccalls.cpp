// Calls on a real connection: each has exactly one end, and gets its own answer.
#include "DataValue/datavalue.h"
#include "Ipc/ipccalls.h"
#include "Ipc/ipcclient.h"
#include "Ipc/ipcserver.h"

#include "ipcfixture.h"

#include <QThread>
#include <QtTest>

#include <memory>

namespace {

using End = IPCAnswer::End;

/// Answers what it is told to, when it is told to.
class Server : public IPCServer
{
public:
    Server()
    {
        startListen(name);
        connect(this, &IPCServer::sigMessageReceived, this, [this](const QString& text, int id) {
            CDataValue request;
            CDataValue::parseToDataValue(text, request);
            requests.append(request);
            client = id;
        });
    }

    void answer(int index, const QString& response, int errorCode = 0)
    {
        CDataValue envelope = requests[index];
        envelope.mapSet("IPCMSG_ERROR_CODE", CDataValue(errorCode), true);
        envelope.mapSet("IPCMSG_RESPONSE_DATA", CDataValue(response), true);
        send(envelope);
    }
    /// As a server that does not carry a member back.
    void answerWithout(const char* key, int index, const QString& response)
    {
        requests[index].mapRemove(key, true);
        answer(index, response);
    }
    void send(const CDataValue& envelope)
    {
        sendResponse(envelope.parseToQString(FAST_STYLE), client);
    }

    const QString name = randomServerName();
    QList<CDataValue> requests;
    int client = 0;
};

/// The ends of calls, as texts: "Answered 0 hello".
class Ends : public QObject
{
public:
    IPCCall::Handler note(const QString& name)
    {
        return [this, name](IPCAnswer& answer) {
            texts << QStringLiteral("%1: %2 %3 %4")
                         .arg(name)
                         .arg(answer.end())
                         .arg(answer.errorCode())
                         .arg(answer.data().isString() ? answer.data().asQString() : QString("-"));
        };
    }
    /// How many watch for the end of this object.
    int watchers() const { return receivers(SIGNAL(destroyed(QObject*))); }

    QStringList texts;
};

QString ended(const char* name, End end, int errorCode, const char* data = "-")
{
    return QStringLiteral("%1: %2 %3 %4").arg(name).arg(end).arg(errorCode).arg(data);
}

} // namespace

class tst_ipccalls : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void endsWithTheAnswer();
    void endsWithTheServersError();
    void waitReturnsTheAnswer();
    void tellsCallsApartByPayload();
    void equalCallsAreAnsweredInOrder();
    void findsTheCallByWhatIsCarriedBack_data();
    void findsTheCallByWhatIsCarriedBack();
    void findsEachOfManyByAPart();
    void endsWhenItCannotBeSent();
    void anAnswerWhileAnotherCallIsSentIsItsOwn();
    void endsWhenTheTimeIsOver();
    void eachCallHasItsOwnDeadline();
    void endsWhenTheConnectionIsLostAfterItLeft();
    void endsWhenTheClientGoes();
    void endsWhenTheCallsGo();
    void endsWhenItIsCancelled();
    void isCancelledWithItsLastContext();
    void handlersNeverRunInsideTheCall();
    void handlersRunInTheThreadOfTheirContext();
    void handlersMayDeleteEverything();
    void waitEndsWithTheApplication();
    void envelopesOfNobodyGoOn();
    void reportsAreNotTakenForAnswers();
    void aLateAnswerGoesToTheNextEqualCall();
    void marksMakeEqualCallsExact();
    void aMarkedLateAnswerIsDropped();
    void marksAreTakenOffTheAnswer();
    void keepsNothingOfCallsThatEnded();

private:
    void haveAnswered(int requests) { QTRY_COMPARE(m_server->requests.size(), requests); }

    std::unique_ptr<Server> m_server;
    std::unique_ptr<IPCClient> m_client;
    std::unique_ptr<IPCCalls> m_calls;
    std::unique_ptr<Ends> m_ends;
};

void tst_ipccalls::init()
{
    m_server = std::make_unique<Server>();
    m_client = std::make_unique<IPCClient>(m_server->name);
    m_calls = std::make_unique<IPCCalls>(m_client.get(), "tester");
    m_ends = std::make_unique<Ends>();
    m_client->connectToServer();
    QTRY_VERIFY(m_client->isConnected() && m_server->hasClientConnected());
}

void tst_ipccalls::cleanup()
{
    m_ends.reset();
    m_calls.reset();
    m_client.reset();
    m_server.reset();
}

void tst_ipccalls::endsWithTheAnswer()
{
    const CDataValue name("world");
    m_calls->call("GREET", &name).then(m_ends.get(), m_ends->note("a"));
    haveAnswered(1);
    QCOMPARE(m_server->requests[0].parseToQString(FAST_STYLE),
             QString("{\"IPCMSG_MSG_SENDER\":\"tester\",\"IPCMSG_TYPE\":\"GREET\","
                     "\"IPCMSG_USER_DATA\":\"world\"}\n"));
    QCOMPARE(m_calls->pendingCount(), 1);
    m_server->answer(0, "hello");
    QTRY_COMPARE(m_ends->texts, QStringList(ended("a", End::Answered, 0, "hello")));
    QCOMPARE(m_calls->pendingCount(), 0);
}

void tst_ipccalls::endsWithTheServersError()
{
    IPCCall call = m_calls->call("GREET");
    haveAnswered(1);
    m_server->answer(0, "no", 42);
    const IPCAnswer answer = call.wait();
    QCOMPARE(answer.end(), End::Answered);
    QVERIFY(!answer.isOk());
    QCOMPARE(answer.errorCode(), 42);
    QCOMPARE(answer.data().asQString(), QString("no"));
}

void tst_ipccalls::waitReturnsTheAnswer()
{
    connect(m_server.get(), &IPCServer::sigMessageReceived, this,
            [this] { m_server->answer(0, "hello"); });
    IPCCall call = m_calls->call("GREET");
    QVERIFY(!call.isFinished());
    const IPCAnswer answer = call.wait();
    QVERIFY(answer.isOk());
    QVERIFY(call.isFinished());
    QCOMPARE(answer.data().asQString(), QString("hello"));
    QCOMPARE(call.wait().data().asQString(), QString("hello"));
}

void tst_ipccalls::tellsCallsApartByPayload()
{
    for (const char* name : {"a", "b", "c"}) {
        const CDataValue payload(name);
        m_calls->call("READ", &payload).then(m_ends.get(), m_ends->note(name));
    }
    haveAnswered(3);
    m_server->answer(2, "third");
    m_server->answer(0, "first");
    m_server->answer(1, "second");
    QTRY_COMPARE(m_ends->texts, (QStringList{ended("c", End::Answered, 0, "third"),
                                             ended("a", End::Answered, 0, "first"),
                                             ended("b", End::Answered, 0, "second")}));
}

void tst_ipccalls::equalCallsAreAnsweredInOrder()
{
    for (const char* name : {"a", "b", "c"})
        m_calls->call("READ").then(m_ends.get(), m_ends->note(name));
    haveAnswered(3);
    for (const char* response : {"1", "2", "3"})
        m_server->answer(0, response);
    QTRY_COMPARE(m_ends->texts,
                 (QStringList{ended("a", End::Answered, 0, "1"), ended("b", End::Answered, 0, "2"),
                              ended("c", End::Answered, 0, "3")}));
}

void tst_ipccalls::findsTheCallByWhatIsCarriedBack_data()
{
    QTest::addColumn<QByteArray>("missing");
    QTest::newRow("the payload only") << QByteArray("IPCMSG_MSG_SENDER");
    QTest::newRow("the sender only") << QByteArray("IPCMSG_USER_DATA");
}

void tst_ipccalls::findsTheCallByWhatIsCarriedBack()
{
    QFETCH(QByteArray, missing);
    const CDataValue payload(7);
    m_calls->call("OTHER", &payload).then(m_ends.get(), m_ends->note("other"));
    m_calls->call("READ", &payload).then(m_ends.get(), m_ends->note("a"));
    haveAnswered(2);
    m_server->answerWithout(missing.constData(), 1, "hello");
    QTRY_COMPARE(m_ends->texts, QStringList(ended("a", End::Answered, 0, "hello")));
}

// Answered from the last one on, so that a walk through those who wait would cost its square.
void tst_ipccalls::findsEachOfManyByAPart()
{
    QStringList expected;
    for (int i = 0; i < 50; ++i) {
        const CDataValue payload(i);
        m_calls->call("READ", &payload).then(m_ends.get(), m_ends->note(QString::number(i)));
        expected.prepend(ended(qPrintable(QString::number(i)), End::Answered, 0, "hello"));
    }
    haveAnswered(50);
    for (int i = 50; i-- > 0;)
        m_server->answerWithout("IPCMSG_MSG_SENDER", i, "hello");
    QTRY_COMPARE(m_ends->texts, expected);
    QCOMPARE(m_calls->pendingCount(), 0);
}

void tst_ipccalls::endsWhenItCannotBeSent()
{
    m_server->close();
    m_server.reset();
    QTRY_VERIFY(!m_client->isConnected());
    QSignalSpy others(m_calls.get(), &IPCCalls::sigMessageReceived);
    IPCCall call = m_calls->call("GREET");
    QVERIFY(call.isFinished());
    call.then(m_ends.get(), m_ends->note("a"));
    QTRY_COMPARE(m_ends->texts, QStringList(ended("a", End::NotSent, 6)));
    QCOMPARE(others.size(), 0);
    QCOMPARE(m_calls->pendingCount(), 0);
}

// The server's own error has the code that the client gives to what was not sent.
void tst_ipccalls::anAnswerWhileAnotherCallIsSentIsItsOwn()
{
    IPCClient client(m_server->name);
    std::unique_ptr<IPCCalls> calls;
    auto* const once = new QObject(&client);
    connect(&client, &IPCClient::sigMessageReceived, once, [&] {
        delete once;
        client.connectToServer();
        calls->call("READ").then(m_ends.get(), m_ends->note("read"));
        haveAnswered(1);
        m_server->answer(0, "busy", 6);
        QTRY_COMPARE(calls->pendingCount(), 1);
    });
    calls = std::make_unique<IPCCalls>(&client, "tester");
    calls->call("WRITE").then(m_ends.get(), m_ends->note("write"));
    QTRY_COMPARE(m_ends->texts.size(), 2);
    QCOMPARE(m_ends->texts, (QStringList{ended("read", End::Answered, 6, "busy"),
                                         ended("write", End::NotSent, 6)}));
    QCOMPARE(calls->pendingCount(), 0);
}

void tst_ipccalls::endsWhenTheTimeIsOver()
{
    m_calls->call("GREET", nullptr, 1).then(m_ends.get(), m_ends->note("a"));
    QTRY_COMPARE(m_ends->texts, QStringList(ended("a", End::TimedOut, -1)));
    QCOMPARE(m_calls->pendingCount(), 0);
}

void tst_ipccalls::eachCallHasItsOwnDeadline()
{
    m_calls->call("A", nullptr, 0).then(m_ends.get(), m_ends->note("for ever"));
    m_calls->call("B", nullptr, 3600000).then(m_ends.get(), m_ends->note("in an hour"));
    m_calls->call("C", nullptr, 30).then(m_ends.get(), m_ends->note("later"));
    m_calls->call("D", nullptr, 1).then(m_ends.get(), m_ends->note("soon"));
    QTRY_COMPARE(m_ends->texts, (QStringList{ended("soon", End::TimedOut, -1),
                                             ended("later", End::TimedOut, -1)}));
    QCOMPARE(m_calls->pendingCount(), 2);
}

void tst_ipccalls::endsWhenTheConnectionIsLostAfterItLeft()
{
    m_calls->call("A").then(m_ends.get(), m_ends->note("a"));
    m_calls->call("B").then(m_ends.get(), m_ends->note("b"));
    haveAnswered(2);
    m_server.reset();
    QTRY_COMPARE(m_ends->texts, (QStringList{ended("a", End::ConnectionLost, -1),
                                             ended("b", End::ConnectionLost, -1)}));
}

void tst_ipccalls::endsWhenTheClientGoes()
{
    m_calls->call("A").then(m_ends.get(), m_ends->note("a"));
    m_client.reset();
    QTRY_COMPARE(m_ends->texts, QStringList(ended("a", End::ConnectionLost, -1)));
    m_calls->call("B").then(m_ends.get(), m_ends->note("b"));
    QTRY_COMPARE(m_ends->texts.size(), 2);
    QCOMPARE(m_ends->texts[1], ended("b", End::NotSent, 6));
}

void tst_ipccalls::endsWhenTheCallsGo()
{
    IPCCall call = m_calls->call("A");
    call.then(m_ends.get(), m_ends->note("a"));
    m_calls.reset();
    QVERIFY(call.isFinished());
    call.cancel();
    QTRY_COMPARE(m_ends->texts, QStringList(ended("a", End::Cancelled, -1)));
}

void tst_ipccalls::endsWhenItIsCancelled()
{
    IPCCall call = m_calls->call("A");
    call.then(m_ends.get(), m_ends->note("a"));
    call.cancel();
    QCOMPARE(m_calls->pendingCount(), 0);
    call.cancel();
    haveAnswered(1);
    QSignalSpy others(m_calls.get(), &IPCCalls::sigMessageReceived);
    m_server->answer(0, "too late");
    QTRY_COMPARE(others.size(), 1);
    QCOMPARE(m_ends->texts, QStringList(ended("a", End::Cancelled, -1)));
}

void tst_ipccalls::isCancelledWithItsLastContext()
{
    auto one = std::make_unique<Ends>();
    auto two = std::make_unique<Ends>();
    IPCCall call = m_calls->call("A");
    call.then(one.get(), one->note("one")).then(two.get(), two->note("two"));
    one.reset();
    QVERIFY(!call.isFinished());
    two.reset();
    QVERIFY(call.isFinished());
    QCOMPARE(m_calls->pendingCount(), 0);
    QCOMPARE(call.wait().end(), End::Cancelled);
}

void tst_ipccalls::handlersNeverRunInsideTheCall()
{
    IPCCall call = m_calls->call("A");
    call.then(m_ends.get(), m_ends->note("cancelled"));
    call.cancel();
    QCOMPARE(m_ends->texts, QStringList());
    call.then(m_ends.get(), m_ends->note("added afterwards"));
    QCOMPARE(m_ends->texts, QStringList());
    QTRY_COMPARE(m_ends->texts.size(), 2);

    // The write finds that the server has vanished: the loss is told inside the call, of both.
    const CDataValue large(QString(10 << 20, QLatin1Char('x')));
    m_calls->call("B").then(m_ends.get(), m_ends->note("lost"));
    haveAnswered(2);
    m_server.reset();
    while (m_client->isConnected())
        m_calls->call("C", &large).then(m_ends.get(), m_ends->note("C"));
    QCOMPARE(m_ends->texts.size(), 2);
    QTRY_COMPARE(m_calls->pendingCount(), 0);
    QTRY_VERIFY(m_ends->texts.contains(ended("lost", End::ConnectionLost, -1)));
}

void tst_ipccalls::handlersRunInTheThreadOfTheirContext()
{
    QThread thread;
    thread.start();
    auto* const context = new QObject;
    context->moveToThread(&thread);
    QAtomicPointer<QThread> ranIn = nullptr;
    m_calls->call("A").then(context,
                            [&](IPCAnswer&) { ranIn.storeRelease(QThread::currentThread()); });
    haveAnswered(1);
    m_server->answer(0, "hello");
    QTRY_COMPARE(ranIn.loadAcquire(), &thread);
    context->deleteLater();
    thread.quit();
    QVERIFY(thread.wait());
}

void tst_ipccalls::handlersMayDeleteEverything()
{
    m_calls->call("A").then(this, [this](IPCAnswer&) {
        m_calls.reset();
        m_client.reset();
    });
    m_calls->call("A").then(m_ends.get(), m_ends->note("b"));
    haveAnswered(2);
    m_server->answer(0, "hello");
    m_server->answer(1, "hello");
    QTRY_COMPARE(m_ends->texts, QStringList(ended("b", End::Cancelled, -1)));
}

void tst_ipccalls::waitEndsWithTheApplication()
{
    QTimer::singleShot(0, this, [this] {
        QTimer::singleShot(0, qApp, &QCoreApplication::quit);
        QCOMPARE(m_calls->call("A", nullptr, 0).wait().end(), End::Cancelled);
    });
    QCoreApplication::exec();
    QCOMPARE(m_calls->pendingCount(), 0);
}

void tst_ipccalls::envelopesOfNobodyGoOn()
{
    QStringList seen;
    connect(m_calls.get(), &IPCCalls::sigMessageReceived, this,
            [&](CDataValue* envelope) { seen << envelope->mapGet("IPCMSG_TYPE").asQString(); });
    m_calls->call("A").then(m_ends.get(), m_ends->note("a"));
    haveAnswered(1);
    CDataValue report(MAP_VALUE);
    report.mapSet("IPCMSG_TYPE", CDataValue("REPORT"), true);
    m_server->send(report);
    report.mapSet("IPCMSG_TYPE", CDataValue(7), true);
    m_server->send(report);
    m_server->send(CDataValue(MAP_VALUE));
    m_server->answer(0, "hello");
    QTRY_COMPARE(m_ends->texts.size(), 1);
    QCOMPARE(seen, (QStringList{"REPORT", "", ""}));
}

void tst_ipccalls::reportsAreNotTakenForAnswers()
{
    const CDataValue payload(7);
    m_calls->call("NETWORK", &payload).then(m_ends.get(), m_ends->note("a"));
    haveAnswered(1);
    QSignalSpy others(m_calls.get(), &IPCCalls::sigMessageReceived);
    CDataValue report(MAP_VALUE);
    report.mapSet("IPCMSG_TYPE", CDataValue("NETWORK"), true);
    m_server->send(report);
    report.mapSet("IPCMSG_ERROR_CODE", CDataValue(0), true);
    report.mapSet("IPCMSG_RESPONSE_DATA", CDataValue("roaming"), true);
    m_server->send(report);
    QTRY_COMPARE(others.size(), 2);
    QCOMPARE(m_ends->texts, QStringList());
}

void tst_ipccalls::aLateAnswerGoesToTheNextEqualCall()
{
    m_calls->call("A", nullptr, 1).then(m_ends.get(), m_ends->note("a"));
    QTRY_COMPARE(m_ends->texts.size(), 1);
    m_calls->call("A").then(m_ends.get(), m_ends->note("b"));
    haveAnswered(2);
    m_server->answer(0, "late");
    QTRY_COMPARE(m_ends->texts, (QStringList{ended("a", End::TimedOut, -1),
                                             ended("b", End::Answered, 0, "late")}));
}

void tst_ipccalls::marksMakeEqualCallsExact()
{
    m_calls->setMarked(true);
    for (const char* name : {"a", "b"})
        m_calls->call("READ").then(m_ends.get(), m_ends->note(name));
    haveAnswered(2);
    m_server->answer(1, "second");
    m_server->answerWithout("IPCMSG_USER_DATA", 0, "first");
    QTRY_COMPARE(m_ends->texts, (QStringList{ended("b", End::Answered, 0, "second"),
                                             ended("a", End::Answered, 0, "first")}));
}

void tst_ipccalls::aMarkedLateAnswerIsDropped()
{
    m_calls->setMarked(true);
    m_calls->call("A", nullptr, 1).then(m_ends.get(), m_ends->note("a"));
    QTRY_COMPARE(m_ends->texts.size(), 1);
    m_calls->call("A").then(m_ends.get(), m_ends->note("b"));
    haveAnswered(2);
    QSignalSpy others(m_calls.get(), &IPCCalls::sigMessageReceived);
    m_server->answer(0, "late");
    m_server->answer(1, "in time");
    QTRY_COMPARE(m_ends->texts, (QStringList{ended("a", End::TimedOut, -1),
                                             ended("b", End::Answered, 0, "in time")}));
    QCOMPARE(others.size(), 0);
}

void tst_ipccalls::marksAreTakenOffTheAnswer()
{
    m_calls->setMarked(true);
    IPCCalls nameless(m_client.get());
    nameless.setMarked(true);
    const CDataValue payload(7);
    IPCCall named = m_calls->call("A", &payload);
    IPCCall unnamed = nameless.call("A");
    haveAnswered(2);
    QVERIFY(m_server->requests[0].mapGet("IPCMSG_MSG_SENDER").asQString().startsWith("tester#"));
    QVERIFY(m_server->requests[1].mapGet("IPCMSG_MSG_SENDER").asQString().startsWith("#"));
    m_server->answer(0, "hello");
    m_server->answer(1, "hello");
    QCOMPARE(named.wait().envelope().parseToQString(FAST_STYLE),
             QString("{\"IPCMSG_ERROR_CODE\":0,\"IPCMSG_MSG_SENDER\":\"tester\","
                     "\"IPCMSG_RESPONSE_DATA\":\"hello\",\"IPCMSG_TYPE\":\"A\","
                     "\"IPCMSG_USER_DATA\":7}\n"));
    QCOMPARE(unnamed.wait().envelope().parseToQString(FAST_STYLE),
             QString("{\"IPCMSG_ERROR_CODE\":0,\"IPCMSG_RESPONSE_DATA\":\"hello\","
                     "\"IPCMSG_TYPE\":\"A\"}\n"));
}

void tst_ipccalls::keepsNothingOfCallsThatEnded()
{
    const auto kept = std::make_shared<int>(0);
    for (int i = 0; i < 10; ++i)
        m_calls->call("A", nullptr, 1).then(m_ends.get(), [kept](IPCAnswer&) { ++*kept; });
    QVERIFY(m_ends->watchers() > 0);
    QTRY_COMPARE(*kept, 10);
    QCOMPARE(kept.use_count(), 1L);
    QCOMPARE(m_ends->watchers(), 0);
    for (int i = 0; i < 10; ++i)
        m_calls->call("A").then(m_ends.get(), [kept](IPCAnswer&) { ++*kept; });
    m_ends.reset();
    QCOMPARE(kept.use_count(), 1L);
    QCOMPARE(*kept, 10);
}

QTEST_GUILESS_MAIN(tst_ipccalls)
#include "tst_ipccalls.moc"
