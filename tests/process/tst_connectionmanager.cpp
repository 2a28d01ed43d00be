#include "connectionmanager.h"

#include <iterator>

namespace {

// What the dashboard shows of the simulated modem: how each line begins.
constexpr const char* kShown[] = {
    "dashboard ready",
    "application controller: introduced",
    "device: Demo Modem is demo-device-1",
    "PIN           the SIM asks for the PIN; 3 attempts left for the PIN, 10 for the PUK",
    "PIN           accepted; 3 attempts left for the PIN, 10 for the PUK",
    "* Network     Example Mobile, LTE, signal 21 of 31 (-71 dBm), at home",
    "Equipment     Example Devices Simulated Modem, firmware 1.0, serial number "
    "490154203237518, SIM 001010123456789, own number +15550100",
    "Registration  registered in the home network",
    "Network       Example Mobile, LTE, signal 21 of 31 (-71 dBm), at home",
    "Cell          area 1A2B, cell 1C3D4E",
    "Networks      3 found",
    "              Example Mobile (00101), LTE, in use",
    "              Sample Telecom (00102), UMTS, available",
    "              Closed Network (99999), GSM, forbidden",
    "Messages      8 messages",
    "              1 unread from +15550101, 17/05/2024 12:01: Welcome to Example Mobile.",
    "              2 unread from +15550101, 17/05/2024 12:02: Your bill is ready.",
    "              3 unread from +15550102, 17/05/2024 12:03: Are you at home?",
    "              4 unread from +15550102, 17/05/2024 12:04: Call me back, please.",
    "              5 unread from +15550103, 17/05/2024 12:05: The train is late.",
    "              6 unread from +15550103, 17/05/2024 12:06: Now it is here.",
    "              7 unread from +15550104, 17/05/2024 12:07: Grüße aus Köln!",
    "              8 unread from +15550105, 17/05/2024 12:08: See you tomorrow.",
    "Messages      room for messages on the SIM: 8 of 20 used",
    "Phonebook     3 entries",
    "              1 Ada: +15550102",
    "              2 Grace: +15550103",
    "              3 Zoë: +15550104",
    "Phonebook     room for entries on the SIM: 3 of 10 used",
    "Diagnosis     Example Devices Simulated Modem, Example Mobile, signal 21 of 31 (-71 dBm), "
    "the SIM is ready, registered in the home network",
    "Diagnosis     nothing wrong",
    "* Connection  connected",
    "Connection    connected",
    "Connection    connected",
    "Statistics    connected for",
    "* Network     Example Mobile, LTE, signal 7 of 31 (-99 dBm), at home"};

/// The messages that a process has traced at a step, in order.
QList<QByteArray> traced(const ChildProcess& process, const QByteArray& step)
{
    QList<QByteArray> frames;
    for (const QByteArray& line : process.output().split('\n')) {
        if (line.startsWith("trace: " + step))
            frames += line.mid(line.indexOf("__BEGIN__"));
    }
    return frames;
}

} // namespace

class tst_connectionmanager : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void showsEveryRecordAndTheReports();
    void carriesTheSameTextOnBothEnds();
    void refusesAWrongPin();
    void asksForThePukAfterThreeWrongPins();
    void selectsANetwork();
    void dialsOnlyOnce();
    void answersOnlyTheOneWhoAsks();
    void reportsToEveryDashboard();
    void givesUpInTimeWithoutADevice();
};

void tst_connectionmanager::showsEveryRecordAndTheReports()
{
    ConnectionManager manager;
    const auto controller = manager.startController();
    const auto service = manager.startService();
    QVERIFY(service->says("application controller: introduced"));
    const auto dashboard =
        manager.startDashboard({"--once", "--pin", "1234", "--dial", "--reports", "3"});
    QVERIFY(dashboard->says("Statistics"));
    manager.modem().enter("signal 7");
    QCOMPARE(dashboard->exitCode(), 0);

    const QList<QByteArray> lines = dashboard->output().trimmed().split('\n');
    constexpr int kCount = std::size(kShown);
    QCOMPARE(int(lines.size()), kCount);
    for (int i = 0; i < kCount; ++i)
        QVERIFY2(lines[i].startsWith(kShown[i]), lines[i] + " / " + kShown[i]);

    controller->enter("quit");
    QCOMPARE(service->exitCode(), 0);
    QCOMPARE(controller->exitCode(), 0);
}

void tst_connectionmanager::carriesTheSameTextOnBothEnds()
{
    ConnectionManager manager;
    const auto controller = manager.startController();
    const auto service = manager.startService({"--trace"});
    const auto dashboard = manager.startDashboard(
        {"--name", "desk", "--once", "--pin", "1234", "--dial", "--reports", "3", "--trace"});
    QVERIFY(dashboard->says("Statistics"));
    manager.modem().enter("signal 7");
    QCOMPARE(dashboard->exitCode(), 0);
    service->terminate();
    QCOMPARE(service->exitCode(), 0);

    const QList<QByteArray> sent = traced(*dashboard, "IPCClient sends");
    QCOMPARE(sent.size(), 16);
    QCOMPARE(sent.first(), QByteArray("__BEGIN__{\"IPCMSG_MSG_SENDER\":\"desk\","
                                      "\"IPCMSG_TYPE\":\"DEMO_MESSAGE_PIN_STATE\"}\\n__END__"));
    QCOMPARE(sent, traced(*service, "IPCServer received"));

    const QList<QByteArray> received = traced(*dashboard, "IPCClient received");
    QCOMPARE(received.size(), 19);
    QCOMPARE(received.first(),
             QByteArray("__BEGIN__{\"IPCMSG_ERROR_CODE\":0,\"IPCMSG_MSG_SENDER\":\"desk\","
                        "\"IPCMSG_RESPONSE_DATA\":{\"nPinCnt\":3,\"nPukCnt\":10,\"nState\":1},"
                        "\"IPCMSG_TYPE\":\"DEMO_MESSAGE_PIN_STATE\"}\\n__END__"));
    QCOMPARE(received.last(),
             QByteArray("__BEGIN__{\"IPCMSG_ERROR_CODE\":0,\"IPCMSG_RESPONSE_DATA\":{\"nAct\":7,"
                        "\"nBearer\":0,\"nDisplayMask\":0,\"nFormat\":0,\"nGprsState\":1,"
                        "\"nMode\":0,\"nRoamState\":0,\"nRssi\":7,\"strOperator\":"
                        "\"Example Mobile\",\"strPnn\":\"\",\"strSpName\":"
                        "\"\"},\"IPCMSG_TYPE\":"
                        "\"DEMO_MESSAGE_RPT_NETWORK_INFO\"}\\n__END__"));
    QCOMPARE(received, traced(*service, "IPCServer sends"));
}

void tst_connectionmanager::refusesAWrongPin()
{
    ConnectionManager manager;
    const auto controller = manager.startController();
    const auto service = manager.startService();
    const auto dashboard = manager.startDashboard({"--once", "--pin", "0000"});
    QVERIFY(dashboard->says("PIN           incorrect password (error 21); "
                            "2 attempts left for the PIN, 10 for the PUK"));
    QCOMPARE(dashboard->exitCode(), 1);
    QVERIFY(!dashboard->output().contains("Equipment"));
}

void tst_connectionmanager::asksForThePukAfterThreeWrongPins()
{
    ConnectionManager manager;
    const auto controller = manager.startController();
    const auto service = manager.startService();
    const auto dashboard = manager.startDashboard();
    QVERIFY(dashboard->says("Network       the SIM asks for the PIN (error 16)"));
    QVERIFY(dashboard->says("Statistics"));
    dashboard->enter("pin 0000");
    dashboard->enter("pin 1111");
    dashboard->enter("pin 2222");
    QVERIFY(dashboard->says("incorrect password (error 21); 2 attempts left"));
    QVERIFY(dashboard->says("incorrect password (error 21); 1 attempts left"));
    QVERIFY(dashboard->says("the SIM asks for the PUK (error 17); 0 attempts left"));
    dashboard->enter("pin 1234");
    QVERIFY(dashboard->says("the SIM asks for the PUK (error 17); 0 attempts left"));
    dashboard->enter("puk 00000000 4321");
    QVERIFY(dashboard->says("incorrect password (error 21); 0 attempts left for the PIN, 9 for"));
    dashboard->enter("puk 12345678 4321");
    QVERIFY(dashboard->says("PIN           accepted; 3 attempts left for the PIN, 10 for the PUK"));
    dashboard->enter("changepin 4321 5678");
    QVERIFY(dashboard->says("PIN           accepted; 3 attempts left for the PIN, 10 for the PUK"));
    dashboard->enter("nonsense");
    QVERIFY(dashboard->says("cannot do: nonsense"));
    dashboard->enter("quit");
    QCOMPARE(dashboard->exitCode(), 0);
}

void tst_connectionmanager::selectsANetwork()
{
    ConnectionManager manager;
    const auto controller = manager.startController();
    const auto service = manager.startService();
    const auto dashboard = manager.startDashboard({"--pin", "1234"});
    QVERIFY(dashboard->says("Statistics"));
    dashboard->enter("network Sample Telecom");
    QVERIFY(dashboard->says("Selection     done"));
    QVERIFY(dashboard->says("* Network     Sample Telecom, UMTS, signal 21 of 31 (-71 dBm), "
                            "roaming"));
    dashboard->enter("network Closed Network");
    QVERIFY(dashboard->says("Selection     no network service (error 35)"));
    dashboard->enter("network Nobody");
    QVERIFY(dashboard->says("Selection     not found (error 27)"));
    dashboard->enter("network");
    QVERIFY(dashboard->says("* Network     Example Mobile, LTE"));
}

void tst_connectionmanager::dialsOnlyOnce()
{
    ConnectionManager manager;
    const auto controller = manager.startController();
    const auto service = manager.startService();
    const auto dashboard = manager.startDashboard({"--pin", "1234"});
    QVERIFY(dashboard->says("Statistics    not connected"));
    dashboard->enter("dial");
    QVERIFY(dashboard->says("* Connection  connected"));
    QVERIFY(dashboard->says("Connection    connected"));
    dashboard->enter("dial");
    QVERIFY(dashboard->says("Connection    operation not allowed (error 2)"));
    dashboard->enter("hangup");
    QVERIFY(dashboard->says("* Connection  not connected (hung up)"));
    QVERIFY(dashboard->says("Connection    not connected"));
}

void tst_connectionmanager::answersOnlyTheOneWhoAsks()
{
    ConnectionManager manager;
    const auto controller = manager.startController();
    const auto service = manager.startService();
    const auto first = manager.startDashboard({"--pin", "1234"});
    QVERIFY(first->says("Statistics"));
    const auto second = manager.startDashboard();
    QVERIFY(second->says("Statistics"));
    second->enter("ask");
    QVERIFY(second->says("Statistics"));
    // The report comes behind all answers.
    manager.modem().enter("signal 3");
    QVERIFY(first->says("* Network     Example Mobile, LTE, signal 3 of 31"));
    QVERIFY(second->says("* Network     Example Mobile, LTE, signal 3 of 31"));
    QCOMPARE(first->output().count("Equipment"), 1);
    QCOMPARE(second->output().count("Equipment"), 2);
}

void tst_connectionmanager::reportsToEveryDashboard()
{
    ConnectionManager manager;
    const auto controller = manager.startController();
    const auto service = manager.startService();
    const auto first = manager.startDashboard({"--pin", "1234"});
    QVERIFY(first->says("Statistics"));
    const auto second = manager.startDashboard();
    QVERIFY(second->says("Statistics"));
    first->enter("dial");
    QVERIFY(second->says("* Connection  connected"));
    first->enter("quit");
    QCOMPARE(first->exitCode(), 0);
    manager.modem().enter("signal 99");
    QVERIFY(second->says("* Network     Example Mobile, LTE, signal unknown, at home"));
}

void tst_connectionmanager::givesUpInTimeWithoutADevice()
{
    ConnectionManager manager;
    const auto controller = manager.startController();
    const auto dashboard =
        manager.startDashboard({"--device", "Another Modem", "--once", "--timeout", "1"});
    QVERIFY(dashboard->says("no answer in time"));
    QCOMPARE(dashboard->exitCode(), 3);
}

QTEST_GUILESS_MAIN(tst_connectionmanager)
#include "tst_connectionmanager.moc"
