#include "applicationcontorllerclient/applicationcontorllerclient.h"
#include "fakecontroller.h"
#include "support/hungserver.h"
#include "support/logcapture.h"

#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace {

/// A client and everything it reports, as text in the order of the signals.
struct Recorder
{
    explicit Recorder(const QString& name = QStringLiteral("dashboard"))
        : client(std::make_unique<ApplicationContorllerClient>(name, nullptr))
    {
        using Client = ApplicationContorllerClient;
        const Client* sender = client.get();
        QObject::connect(sender, &Client::sigConnectStatusChanged, &context,
                         [this](int status) { note(QString("status %1").arg(status)); });
        QObject::connect(sender, &Client::sigResponseGetDevID, &context,
                         [this](bool ok, const QString& device, const QString& id, int event) {
                             note(QString("id %1 '%2' '%3' %4").arg(ok).arg(device, id).arg(event));
                         });
        QObject::connect(sender, &Client::sigResponseGetMultDevID, &context,
                         [this](bool ok, const QMap<QString, QString>& ids) {
                             QString line = QString("ids %1").arg(ok);
                             for (auto i = ids.begin(); i != ids.end(); ++i)
                                 line += QString(" %1=%2").arg(i.key(), i.value());
                             note(line);
                         });
        QObject::connect(sender, &Client::sigDataCardUnpluged, &context,
                         [this] { note("unplugged"); });
        QObject::connect(sender, &Client::sigQuit, &context, [this] { note("quit"); });
        QObject::connect(sender, &Client::sigMessageIncoming, &context,
                         [this](CDataValue* value) { note("incoming " + value->asQString()); });
    }

    void note(const QString& line)
    {
        lines << line;
        if (deleteOnNextSignal)
            client.reset();
    }

    /// Lets the client act on an envelope.
    void receive(const QString& text)
    {
        CDataValue envelope;
        if (!CDataValue::parseToDataValue(text, envelope))
            qFatal("no JSON: %s", qPrintable(text));
        client->handleAppControllerMessageReceived(&envelope);
    }

    /// The timers: when it looks for the controller again, and when it introduces itself again.
    QTimer& nextAttempt() const { return *client->findChild<QTimer*>("nextAttempt"); }
    QTimer& nextIntroduction() const { return *client->findChild<QTimer*>("nextIntroduction"); }
    /// Whether it does nothing by itself any more.
    bool isAtRest() const { return !nextAttempt().isActive() && !nextIntroduction().isActive(); }
    /// Lets the time of a timer be over that has been started for two seconds.
    static bool elapse(QTimer& timer)
    {
        const bool isPending = timer.isActive() && timer.isSingleShot() && timer.interval() == 2000;
        timer.stop();
        return isPending && QMetaObject::invokeMethod(&timer, "timeout");
    }

    QObject context;
    QStringList lines;
    bool deleteOnNextSignal = false;
    std::unique_ptr<ApplicationContorllerClient> client;
};

/// A message whose identifier is "WZR_MESSAGE_" and `identifier`, with the other members of `rest`.
void envelopeRow(const char* name, const char* identifier, const char* rest,
                 const QStringList& expected)
{
    QTest::newRow(name)
        << QString("{\"IPCMSG_TYPE\":\"WZR_MESSAGE_%1\"%2}").arg(QString(identifier), QString(rest))
        << expected;
}

void addIntroductions()
{
    const auto init = "APPLICATION_CLIENT_INIT";
    envelopeRow("introduction accepted", init, ",\"IPCMSG_ERROR_CODE\":0", {"status 2"});
    envelopeRow("introduction refused", init, ",\"IPCMSG_ERROR_CODE\":-1", {"status 0"});
    envelopeRow("introduction without a code", init, "", {"status 2"});
}

void addAnswersOnOneDevice()
{
    const auto one = "APPLICATION_GET_DEV_ID";
    envelopeRow("one: known", one,
                ",\"IPCMSG_ERROR_CODE\":0,\"IPCMSG_RESPONSE_DATA\":{\"n\":\"d\"},"
                "\"IPCMSG_USER_DATA\":{\"Name\":\"n\",\"ID\":4}",
                {"id 1 'n' 'd' 4"});
    envelopeRow("one: unknown", one,
                ",\"IPCMSG_ERROR_CODE\":0,\"IPCMSG_RESPONSE_DATA\":{\"m\":\"d\"},"
                "\"IPCMSG_USER_DATA\":{\"Name\":\"n\",\"ID\":4}",
                {"id 1 'n' '' 4"});
    envelopeRow("one: error hides the ID", one,
                ",\"IPCMSG_ERROR_CODE\":3,\"IPCMSG_RESPONSE_DATA\":{\"n\":\"d\"},"
                "\"IPCMSG_USER_DATA\":{\"Name\":\"n\",\"ID\":4}",
                {"id 0 'n' '' 4"});
    envelopeRow("one: response is no map", one,
                ",\"IPCMSG_ERROR_CODE\":0,\"IPCMSG_RESPONSE_DATA\":[\"d\"],"
                "\"IPCMSG_USER_DATA\":{\"Name\":\"n\",\"ID\":4}",
                {"id 1 'n' '' 4"});
    envelopeRow("one: user data is no map", one,
                ",\"IPCMSG_ERROR_CODE\":0,\"IPCMSG_RESPONSE_DATA\":{},\"IPCMSG_USER_DATA\":7",
                {"id 1 '' '' 0"});
    envelopeRow("one: wrong kinds", one,
                ",\"IPCMSG_ERROR_CODE\":\"3\",\"IPCMSG_RESPONSE_DATA\":{\"n\":{}},"
                "\"IPCMSG_USER_DATA\":{\"Name\":\"n\",\"ID\":\"4\"}",
                {"id 1 'n' '' 0"});
    envelopeRow("one: nothing", one, "", {"id 1 '' '' 0"});
}

void addAnswersOnSeveralDevices()
{
    const auto several = "APPLICATION_GET_MULT_DEV_ID";
    envelopeRow("several", several,
                ",\"IPCMSG_ERROR_CODE\":0,\"IPCMSG_RESPONSE_DATA\":{\"\xC3\xBC\":\"1\",\"b\":2}",
                {QString::fromUtf8("ids 1 b= \xC3\xBC=1")});
    envelopeRow("several: none", several, ",\"IPCMSG_ERROR_CODE\":0,\"IPCMSG_RESPONSE_DATA\":{}",
                {"ids 1"});
    envelopeRow("several: error", several,
                ",\"IPCMSG_ERROR_CODE\":1,\"IPCMSG_RESPONSE_DATA\":{\"a\":\"1\"}", {"ids 0"});
    envelopeRow("several: response is no map", several,
                ",\"IPCMSG_ERROR_CODE\":0,\"IPCMSG_RESPONSE_DATA\":[\"a\"]", {});
    envelopeRow("several: no response", several, ",\"IPCMSG_ERROR_CODE\":0", {});
}

bool logged(const LogCapture& log, const char* text)
{
    const bool is = log.contains(
        QString("applicationcontorllerclient/applicationcontorllerclient %1 ").arg(text));
    if (!is)
        qWarning("not logged: %s", text);
    return is;
}

} // namespace

class tst_applicationcontorllerclient : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();

    void listsEveryFormOfItsSignalsAndSlots();
    void introducesItselfOnceConnected();
    void introducesItselfAgainUntilItIsAccepted();
    void pollsWithoutASignalUntilTheControllerRuns();
    void keepsOnePollHoweverOftenItIsAsked();
    void connectsWithTheNextPollOfAControllerThatHung();
    void leavesAControllerOfAnotherUser();
    void doesNothingWhenConnected();
    void repeatsAnIntroductionThatCannotBeSent();

    void asksForADeviceID();
    void asksForSeveralDeviceIDs();
    void sendsAnyMessage();
    void requestsFailAtOnceWithoutAConnection();

    void actsOnEnvelopes_data();
    void actsOnEnvelopes();
    void ignoresANullEnvelope();
    void passesMessagesThrough();
    void tellsOfUnplugAndQuit();

    void reportsTheLossAndDoesNotReconnect();
    void aLossEndsPendingIntroductions();
    void aLossEndsPendingPolls();
    void connectsAgainWhenAsked();

    void logsItsConnecting();
    void logsWhatItAsks();
    void logsWhatItHears();
    void itsSlotsMayDeleteIt();
    void endsSilently();

private:
    QTemporaryDir m_folder;
};

void tst_applicationcontorllerclient::initTestCase()
{
    // The controller's name is fixed; its socket file stands in the folder for temporary files.
    QVERIFY(m_folder.isValid());
    qputenv("TMPDIR", QFile::encodeName(m_folder.path()));
}

void tst_applicationcontorllerclient::listsEveryFormOfItsSignalsAndSlots()
{
    const QMetaObject& meta = ApplicationContorllerClient::staticMetaObject;
    for (const char* signal :
         {"sigConnectStatusChanged(int)", "sigResponseGetMultDevID(bool,QMap<QString,QString>)",
          "sigResponseGetDevID(bool,QString,QString,int)", "sigDataCardUnpluged()",
          "sigMessageIncoming(CDataValue*)", "sigQuit()"})
        QVERIFY2(meta.indexOfSignal(signal) >= 0, signal);
    for (const char* slot :
         {"connectToServer()", "sendMsgToAppController_ClientInit()",
          "handleAppControllerMessageReceived(CDataValue*)", "handleAppControllerServerConnected()",
          "handleAppControllerServerDisconnected()", "handleMsgFromAppController(CDataValue*)"})
        QVERIFY2(meta.indexOfSlot(slot) >= 0, slot);
    QCOMPARE(meta.methodCount() - meta.methodOffset(), 12);
}

void tst_applicationcontorllerclient::introducesItselfOnceConnected()
{
    FakeController controller;
    Recorder recorder(QString::fromUtf8("dash\xC3\xBC"));
    recorder.client->startConnect();
    QTRY_COMPARE(recorder.lines, QStringList("status 2"));
    QCOMPARE(controller.received,
             QStringList(QString::fromUtf8("{\"IPCMSG_TYPE\":\"WZR_MESSAGE_APPLICATION_CLIENT_INIT"
                                           "\",\"IPCMSG_USER_DATA\":\"dash\xC3\xBC\"}\n")));
}

void tst_applicationcontorllerclient::introducesItselfAgainUntilItIsAccepted()
{
    FakeController controller;
    controller.introductionErrors = {5, -1};
    Recorder recorder;
    recorder.client->startConnect();
    QTRY_COMPARE(recorder.lines, QStringList("status 0"));
    QVERIFY(Recorder::elapse(recorder.nextIntroduction()));
    QTRY_COMPARE(recorder.lines, QStringList({"status 0", "status 0"}));
    // And once in its own time.
    QTRY_COMPARE_WITH_TIMEOUT(recorder.lines, QStringList({"status 0", "status 0", "status 2"}),
                              10000);
    QCOMPARE(controller.connections, 1);
    QCOMPARE(controller.introducedAt.size(), 3);
    const qint64 pause = controller.introducedAt[2] - controller.introducedAt[1];
    QVERIFY2(pause >= 1990, qPrintable(QString::number(pause)));
    QVERIFY(!recorder.nextIntroduction().isActive());
}

void tst_applicationcontorllerclient::pollsWithoutASignalUntilTheControllerRuns()
{
    LogCapture log;
    Recorder recorder;
    recorder.client->startConnect();
    const auto attempts = [&] { return log.count("connectToServer Enter connectToServer "); };
    QCOMPARE(attempts(), 1);
    QTRY_COMPARE_WITH_TIMEOUT(attempts(), 2, 10000); // in its own time
    QVERIFY(Recorder::elapse(recorder.nextAttempt()));
    QCOMPARE(attempts(), 3);
    QCOMPARE(recorder.lines, QStringList());

    FakeController controller;
    QVERIFY(Recorder::elapse(recorder.nextAttempt()));
    QTRY_COMPARE(recorder.lines, QStringList("status 2"));
    QCOMPARE(controller.connections, 1);
    // At most one more: the check that finds the connection up.
    if (recorder.nextAttempt().isActive())
        QVERIFY(Recorder::elapse(recorder.nextAttempt()));
    QVERIFY(attempts() <= 5);
    QVERIFY(recorder.isAtRest());
    QCOMPARE(recorder.lines, QStringList("status 2"));
}

void tst_applicationcontorllerclient::keepsOnePollHoweverOftenItIsAsked()
{
    LogCapture log;
    Recorder recorder;
    for (int i = 0; i < 4; ++i)
        recorder.client->startConnect();
    QTRY_VERIFY(recorder.nextAttempt().remainingTime() < 1900);
    recorder.client->startConnect(); // does not put the poll off
    QVERIFY(recorder.nextAttempt().remainingTime() < 1900);
    const auto attempts = [&] { return log.count("connectToServer Enter connectToServer "); };
    QCOMPARE(attempts(), 5);
    QVERIFY(Recorder::elapse(recorder.nextAttempt()));
    QCOMPARE(attempts(), 6);
}

void tst_applicationcontorllerclient::connectsWithTheNextPollOfAControllerThatHung()
{
    LogCapture log;
    HungServer controller(m_folder.filePath("applicationcontroller"));
    Recorder recorder;
    recorder.client->startConnect();
    for (int i = 0; i < 3; ++i)
        QVERIFY(Recorder::elapse(recorder.nextAttempt()));
    controller.acceptAll();
    QVERIFY(Recorder::elapse(recorder.nextAttempt()));
    QCOMPARE(log.count("Enter handleAppControllerServerConnected"), 1);
    QVERIFY(recorder.isAtRest());
    QCOMPARE(recorder.lines, QStringList());
}

void tst_applicationcontorllerclient::leavesAControllerOfAnotherUser()
{
    LogCapture log;
    FakeController controller;
    Recorder recorder;
    recorder.client->setTrustedServerUsers({getuid() + 1});
    recorder.client->startConnect();
    QTRY_COMPARE(log.count("server refused, of user"), 1);
    QTRY_COMPARE(log.count("Ipc/ipcclient socket_error"), 1);
    QVERIFY(recorder.nextAttempt().isActive());
    QCOMPARE(recorder.lines, QStringList());
    QCOMPARE(controller.received, QStringList());
}

void tst_applicationcontorllerclient::doesNothingWhenConnected()
{
    LogCapture log;
    FakeController controller;
    Recorder recorder;
    recorder.client->startConnect();
    QTRY_COMPARE(recorder.lines, QStringList("status 2"));
    log.clear();
    recorder.client->connectToServer();
    recorder.client->startConnect();
    QCOMPARE(log.count("applicationcontorllerclient/applicationcontorllerclient connectToServer "
                       "already connected!!! "),
             2);
    QVERIFY(recorder.isAtRest());
    recorder.client->sendMsgToAppController("LAST", nullptr);
    QTRY_COMPARE(controller.received.size(), 2);
    QVERIFY(controller.received.last().contains("LAST"));
    QCOMPARE(controller.connections, 1);
}

void tst_applicationcontorllerclient::repeatsAnIntroductionThatCannotBeSent()
{
    Recorder recorder;
    for (int i = 0; i < 3; ++i)
        recorder.client->sendMsgToAppController_ClientInit();
    QCOMPARE(recorder.lines, QStringList({"status 0", "status 0", "status 0"}));
    recorder.lines.clear();
    QVERIFY(Recorder::elapse(recorder.nextIntroduction()));
    QCOMPARE(recorder.lines, QStringList("status 0"));
    QVERIFY(recorder.nextIntroduction().isActive());

    FakeController controller;
    recorder.client->startConnect();
    QTRY_COMPARE(recorder.lines, QStringList({"status 0", "status 2"}));
    QVERIFY(!recorder.nextIntroduction().isActive());
    QCOMPARE(controller.introducedAt.size(), 1);
}

void tst_applicationcontorllerclient::asksForADeviceID()
{
    FakeController controller;
    controller.replies["WZR_MESSAGE_APPLICATION_GET_DEV_ID"] =
        "{\"IPCMSG_ERROR_CODE\":0,\"IPCMSG_RESPONSE_DATA\":{\"modem\":\"wzr-7\",\"x\":\"y\"}}";
    Recorder recorder;
    recorder.client->startConnect();
    QTRY_COMPARE(recorder.lines, QStringList("status 2"));
    recorder.client->sendMsgToAppController_GetDevID("modem", -3);
    QTRY_COMPARE(recorder.lines.value(1), QString("id 1 'modem' 'wzr-7' -3"));
    QCOMPARE(controller.received.value(1),
             QString("{\"IPCMSG_TYPE\":\"WZR_MESSAGE_APPLICATION_GET_DEV_ID\","
                     "\"IPCMSG_USER_DATA\":{\"ID\":-3,\"Name\":\"modem\"}}\n"));
}

void tst_applicationcontorllerclient::asksForSeveralDeviceIDs()
{
    FakeController controller;
    controller.replies["WZR_MESSAGE_APPLICATION_GET_MULT_DEV_ID"] =
        "{\"IPCMSG_ERROR_CODE\":0,\"IPCMSG_RESPONSE_DATA\":{\"a\":\"1\",\"b\":\"2\"}}";
    Recorder recorder;
    recorder.client->startConnect();
    QTRY_COMPARE(recorder.lines, QStringList("status 2"));
    recorder.client->sendMsgToAppController_GetMultDevID({"b", "a"});
    QTRY_COMPARE(recorder.lines.value(1), QString("ids 1 a=1 b=2"));
    QCOMPARE(controller.received.value(1),
             QString("{\"IPCMSG_TYPE\":\"WZR_MESSAGE_APPLICATION_GET_MULT_DEV_ID\","
                     "\"IPCMSG_USER_DATA\":[\"b\",\"a\"]}\n"));
    recorder.client->sendMsgToAppController_GetMultDevID({});
    QTRY_COMPARE(controller.received.value(2),
                 QString("{\"IPCMSG_TYPE\":\"WZR_MESSAGE_APPLICATION_GET_MULT_DEV_ID\","
                         "\"IPCMSG_USER_DATA\":[]}\n"));
}

void tst_applicationcontorllerclient::sendsAnyMessage()
{
    FakeController controller;
    Recorder recorder;
    recorder.client->startConnect();
    QTRY_COMPARE(recorder.lines, QStringList("status 2"));
    CDataValue payload(5);
    recorder.client->sendMsgToAppController("SHOW", &payload);
    recorder.client->sendMsgToAppController("HIDE", nullptr);
    QTRY_COMPARE(controller.received.mid(1),
                 QStringList({"{\"IPCMSG_TYPE\":\"SHOW\",\"IPCMSG_USER_DATA\":5}\n",
                              "{\"IPCMSG_TYPE\":\"HIDE\"}\n"}));
}

void tst_applicationcontorllerclient::requestsFailAtOnceWithoutAConnection()
{
    Recorder recorder;
    const auto askAll = [&] {
        recorder.lines.clear();
        recorder.client->sendMsgToAppController_GetDevID("modem", 9);
        recorder.client->sendMsgToAppController_GetMultDevID({"modem"});
        recorder.client->sendMsgToAppController("WZR_MESSAGE_OTHER", nullptr);
        return recorder.lines;
    };
    const QStringList refused = {"id 0 'modem' '' 9", "ids 0"};
    QCOMPARE(askAll(), refused);
    recorder.client->startConnect();
    QCOMPARE(askAll(), refused);
}

void tst_applicationcontorllerclient::actsOnEnvelopes_data()
{
    QTest::addColumn<QString>("envelope");
    QTest::addColumn<QStringList>("expected");
    addIntroductions();
    addAnswersOnOneDevice();
    addAnswersOnSeveralDevices();
    envelopeRow("unplug", "RPT_DEVICE_UNPLUG", "", {"unplugged"});
    envelopeRow("quit", "QUIT", ",\"IPCMSG_ERROR_CODE\":1", {"quit"});

    envelopeRow("unknown", "RESTART", "", {});
    envelopeRow("other case", "quit", "", {});
    QTest::newRow("no identifier") << "{\"IPCMSG_ERROR_CODE\":0}" << QStringList();
    QTest::newRow("identifier is a number") << "{\"IPCMSG_TYPE\":0}" << QStringList();
    QTest::newRow("no map") << "[\"WZR_MESSAGE_QUIT\"]" << QStringList();
    QTest::newRow("null") << "null" << QStringList();
}

void tst_applicationcontorllerclient::actsOnEnvelopes()
{
    QFETCH(QString, envelope);
    QFETCH(QStringList, expected);
    Recorder recorder;
    recorder.receive(envelope);
    QCOMPARE(recorder.lines, expected);
}

void tst_applicationcontorllerclient::ignoresANullEnvelope()
{
    Recorder recorder;
    recorder.client->handleAppControllerMessageReceived(nullptr);
    QCOMPARE(recorder.lines, QStringList());
}

void tst_applicationcontorllerclient::passesMessagesThrough()
{
    Recorder recorder;
    CDataValue value("text");
    recorder.client->handleMsgFromAppController(&value);
    QCOMPARE(recorder.lines, QStringList("incoming text"));
}

void tst_applicationcontorllerclient::tellsOfUnplugAndQuit()
{
    FakeController controller;
    Recorder recorder;
    recorder.client->startConnect();
    QTRY_COMPARE(recorder.lines, QStringList("status 2"));
    controller.send("{\"IPCMSG_TYPE\":\"WZR_MESSAGE_RPT_DEVICE_UNPLUG\"}");
    controller.send("no JSON");
    controller.send("{\"IPCMSG_TYPE\":\"WZR_MESSAGE_QUIT\"}");
    QTRY_COMPARE(recorder.lines, QStringList({"status 2", "unplugged", "quit"}));
}

void tst_applicationcontorllerclient::reportsTheLossAndDoesNotReconnect()
{
    auto controller = std::make_unique<FakeController>();
    Recorder recorder;
    recorder.client->startConnect();
    QTRY_COMPARE(recorder.lines, QStringList("status 2"));
    controller.reset();
    QTRY_COMPARE(recorder.lines, QStringList({"status 2", "status 3"}));

    QVERIFY(recorder.isAtRest());
}

void tst_applicationcontorllerclient::aLossEndsPendingIntroductions()
{
    auto controller = std::make_unique<FakeController>();
    controller->introductionErrors = {5};
    Recorder recorder;
    recorder.client->startConnect();
    QTRY_COMPARE(recorder.lines, QStringList("status 0"));
    QVERIFY(recorder.nextIntroduction().isActive());
    controller.reset();
    QTRY_COMPARE(recorder.lines, QStringList({"status 0", "status 3"}));
    QVERIFY(recorder.isAtRest());
}

void tst_applicationcontorllerclient::aLossEndsPendingPolls()
{
    Recorder recorder;
    recorder.client->connectToServer();
    QVERIFY(recorder.nextAttempt().isActive());
    recorder.client->handleAppControllerServerDisconnected();
    QCOMPARE(recorder.lines, QStringList("status 3"));
    QVERIFY(recorder.isAtRest());
}

void tst_applicationcontorllerclient::connectsAgainWhenAsked()
{
    auto controller = std::make_unique<FakeController>();
    Recorder recorder;
    QObject::connect(recorder.client.get(), &ApplicationContorllerClient::sigConnectStatusChanged,
                     recorder.client.get(), [&](int status) {
                         if (status == 3)
                             recorder.client->startConnect();
                     });
    recorder.client->startConnect();
    QTRY_COMPARE(recorder.lines, QStringList("status 2"));
    controller.reset();
    QTRY_COMPARE(recorder.lines, QStringList({"status 2", "status 3"}));
    FakeController next;
    QVERIFY(Recorder::elapse(recorder.nextAttempt()));
    QTRY_COMPARE(recorder.lines, QStringList({"status 2", "status 3", "status 2"}));
    QCOMPARE(next.introducedAt.size(), 1);
}

void tst_applicationcontorllerclient::logsItsConnecting()
{
    const LogCapture log;
    Recorder recorder;
    recorder.client->connectToServer();
    QVERIFY(logged(log, "connectToServer Enter connectToServer"));
    recorder.client->sendMsgToAppController("OTHER", nullptr);
    QVERIFY(logged(log, "sendMsgToAppController sendMsgToAppController"));
    QVERIFY(logged(log, "handleAppControllerMessageReceived OTHER"));
    recorder.client->sendMsgToAppController_ClientInit();
    QVERIFY(
        logged(log, "sendMsgToAppController_ClientInit Enter sendMsgToAppController_ClientInit"));
    QVERIFY(logged(
        log, "handleMsgFromAppController_ClientInit Enter handleMsgFromAppController_ClientInit"));
}

void tst_applicationcontorllerclient::logsWhatItAsks()
{
    const LogCapture log;
    Recorder recorder;
    recorder.client->sendMsgToAppController_GetDevID("modem", 4);
    QVERIFY(logged(log, "sendMsgToAppController_GetDevID Enter sendMsgToAppController_GetDevID"));
    const QString function("handleMsgFromAppController_GetDevID ");
    const auto inReply = [&](const char* text) {
        return logged(log, qPrintable(function + QLatin1String(text)));
    };
    QVERIFY(inReply("Enter handleMsgFromAppController_GetDevID"));
    QVERIFY(inReply("incoming data is : {\"IPCMSG_ERROR_CODE\":6,"
                    "\"IPCMSG_TYPE\":\"WZR_MESSAGE_APPLICATION_GET_DEV_ID\","
                    "\"IPCMSG_USER_DATA\":{\"ID\":4,\"Name\":\"modem\"}}\n"));
    QVERIFY(inReply("user data response is: null\n"));
    QVERIFY(inReply("user data is: {\"ID\":4,\"Name\":\"modem\"}\n"));
    QVERIFY(inReply("strDevID: "));
    QVERIFY(inReply("strDevName: modem"));
    recorder.client->sendMsgToAppController_GetMultDevID({"modem"});
    QVERIFY(logged(log, "sendMsgToAppController_GetMultDevID Enter "
                        "sendMsgToAppController_GetMultDevID"));
    QVERIFY(logged(log, "handleMsgFromAppController_GetMultDevID Enter "
                        "handleMsgFromAppController_GetMultDevID"));
    QVERIFY(logged(log, "handleMsgFromAppController_GetMultDevID GetMultDevID error = 6"));
}

void tst_applicationcontorllerclient::logsWhatItHears()
{
    const LogCapture log;
    Recorder recorder;
    recorder.receive("{\"IPCMSG_TYPE\":\"WZR_MESSAGE_RPT_DEVICE_UNPLUG\"}");
    QVERIFY(logged(log, "handleMsgFromAppController_DeviceUnplug Enter "
                        "handleMsgFromAppController_DeviceUnplug"));
    recorder.client->handleAppControllerServerConnected();
    QVERIFY(
        logged(log, "handleAppControllerServerConnected Enter handleAppControllerServerConnected"));
    recorder.client->handleAppControllerServerDisconnected();
    QVERIFY(logged(log, "handleAppControllerServerDisconnected Enter "
                        "handleAppControllerServerDisconnected"));
    recorder.receive("{\"IPCMSG_TYPE\":\"" + QString(100000, 'x') + "\"}");
    QVERIFY(log.contains("... 100000 characters"));
}

void tst_applicationcontorllerclient::itsSlotsMayDeleteIt()
{
    {
        Recorder recorder;
        recorder.deleteOnNextSignal = true;
        recorder.client->sendMsgToAppController_GetDevID("modem", 1);
        QVERIFY(!recorder.client);
    }
    {
        auto controller = std::make_unique<FakeController>();
        Recorder recorder;
        recorder.deleteOnNextSignal = true;
        recorder.client->startConnect();
        QTRY_COMPARE(recorder.lines, QStringList("status 2"));
        QVERIFY(!recorder.client);
    }
    {
        auto controller = std::make_unique<FakeController>();
        Recorder recorder;
        recorder.client->startConnect();
        QTRY_COMPARE(recorder.lines, QStringList("status 2"));
        recorder.deleteOnNextSignal = true;
        controller.reset();
        QTRY_COMPARE(recorder.lines, QStringList({"status 2", "status 3"}));
        QVERIFY(!recorder.client);
    }
    {
        Recorder recorder;
        recorder.client->sendMsgToAppController_ClientInit();
        recorder.deleteOnNextSignal = true;
        recorder.nextIntroduction().start(0);
        QTRY_VERIFY(!recorder.client);
    }
}

void tst_applicationcontorllerclient::endsSilently()
{
    FakeController controller;
    Recorder recorder;
    recorder.client->startConnect();
    QTRY_COMPARE(recorder.lines, QStringList("status 2"));
    recorder.client.reset();
    QTRY_COMPARE(controller.departures, 1);
    QCOMPARE(recorder.lines, QStringList("status 2"));
}

QTEST_GUILESS_MAIN(tst_applicationcontorllerclient)
#include "tst_applicationcontorllerclient.moc"
