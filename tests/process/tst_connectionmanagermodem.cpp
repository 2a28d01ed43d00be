// The device service at a line that fails, and at a modem that is taken away.

#include "failingline.h"
#include "support/testfile.h"

class tst_connectionmanagermodem : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void answersAfterGarbage();
    void answersAfterHalfALine();
    void answersEveryRequestAtASilentModem();
    void servesTwoClientsAtASilentModem();
    void handlesTheRequestsOfAllClientsInOrder();
    void reachesALongOperationWithACancel();
    void cancelsARequestThatWaits();
    void refusesAFlood();
    void endsAtOnceWhileTheModemIsSilent();
    void obeysTheControllerWhileTheModemIsSilent();
    void findsAModemThatIsPluggedInAgain();
    void worksWithoutAModem_data();
    void worksWithoutAModem();
    void leavesTheLineToTheServiceThatHasIt();
    void reportsADroppedConnection();
    void reportsUnpluggingToTheDashboard();
    void passesTheModemsErrorsOn();
};

void tst_connectionmanagermodem::answersAfterGarbage()
{
    FailingLine line;
    RawClient client(line.manager.socket("demo-device-1"));
    line.peer.say("\xFF\x00garbage\r\n+CREG: 2,\r\n%$#");
    line.peer.answer("AT+CREG?", "\r\n^?\r\n+CREG: 2,what\r\n\r\nOK\r\n");
    QCOMPARE(ask(client, "NETWORK_REG_STATE"), -1);
    line.peer.inform("AT+CREG?", "+CREG: 2,5");
    client.send(request("NETWORK_REG_STATE"));
    QVERIFY(client.answer().contains(R"("nState":5)"));
}

void tst_connectionmanagermodem::answersAfterHalfALine()
{
    FailingLine line;
    RawClient client(line.manager.socket("demo-device-1"));
    line.peer.answer("AT+CREG?", "\r\n+CREG: 2,1,\"1A");
    QCOMPARE(ask(client, "NETWORK_REG_STATE"), 1);
    line.peer.inform("AT+CREG?", "+CREG: 2,5");
    client.send(request("NETWORK_REG_STATE"));
    QVERIFY(client.answer().contains(R"("nState":5)"));
    QVERIFY(!line.service->output().contains(kAway));
}

// Each kind of request ends; only the first one waits for a time-out.
void tst_connectionmanagermodem::answersEveryRequestAtASilentModem()
{
    FailingLine line("300");
    RawClient client(line.manager.socket("demo-device-1"));
    line.peer.setSilent(true);
    for (const char* name :
         {"NETWORK_INFO", "NETWORK_REG_STATE", "NETWORK_CELL", "NETWORK_LIST", "NETWORK_SET",
          "PIN_STATE", "EQUIPMENT_INFO", "HANG_UP", "CONNECT_STATE", "STATISTICS", "SMS_LIST",
          "SMS_STORAGE", "PB_LIST", "PB_STORAGE", "DIAG_INFO", "DIAG_FINDINGS"})
        QVERIFY2(ask(client, name) == 1, name);
    QVERIFY(line.service->says("modem away: " + line.manager.socket("modem").toLocal8Bit() +
                               " does not answer"));
    // A PIN is a text, a dial-up and USSD are records.
    client.send(R"({"IPCMSG_TYPE":"DEMO_MESSAGE_PIN_VERIFY","IPCMSG_USER_DATA":"1234"})");
    QCOMPARE(errorIn(client.answer(), "PIN_VERIFY"), 1);
    client.send(R"({"IPCMSG_TYPE":"DEMO_MESSAGE_USSD_SEND",)"
                R"("IPCMSG_USER_DATA":{"strUssdCmd":"*100#"}})");
    QCOMPARE(errorIn(client.answer(), "USSD_SEND"), 1);
    client.send(R"({"IPCMSG_TYPE":"DEMO_MESSAGE_DIAL",)"
                R"("IPCMSG_USER_DATA":{"strAPN":"a","strNumber":"*99#"}})");
    QCOMPARE(errorIn(client.answer(), "DIAL"), 1);

    line.peer.setSilent(false);
    QVERIFY(line.service->says(kReady));
    QCOMPARE(ask(client, "NETWORK_REG_STATE"), 0);
}

void tst_connectionmanagermodem::servesTwoClientsAtASilentModem()
{
    FailingLine line;
    RawClient first(line.manager.socket("demo-device-1"));
    line.peer.answer("AT+COPS=?", "");
    first.send(request("NETWORK_LIST"));
    QVERIFY(line.peer.hears("AT+COPS=?"));
    // The search goes on for 36 s; a client that comes now is accepted and heard meanwhile, and
    // what needs no modem is answered.
    RawClient second(line.manager.socket("demo-device-1"));
    second.send(request("NETWORK_REG_STATE"));
    QCOMPARE(ask(second, "NOBODY_KNOWS"), 42);
    QCOMPARE(ask(second, "CANCEL"), 42);
    line.peer.say("\r\nERROR\r\n");
    QCOMPARE(errorIn(first.answer(), "NETWORK_LIST"), -1);
    QCOMPARE(errorIn(second.answer(), "NETWORK_REG_STATE"), 0);
}

void tst_connectionmanagermodem::handlesTheRequestsOfAllClientsInOrder()
{
    FailingLine line;
    RawClient first(line.manager.socket("demo-device-1"));
    RawClient second(line.manager.socket("demo-device-1"));
    line.peer.answer("AT+COPS=?", "");
    first.send(request("NETWORK_LIST"));
    QVERIFY(line.peer.hears("AT+COPS=?"));
    second.send(request("NETWORK_REG_STATE"));
    QVERIFY(line.service->says("IPCServer received from client 2"));
    first.send(request("SMS_STORAGE"));
    QVERIFY(line.service->says("IPCServer received from client 1"));
    line.peer.inform("AT+CPMS?", "+CPMS: \"SM\",1,20,\"SM\",1,20,\"SM\",1,20");
    line.peer.say("\r\n+COPS: (2,\"a\",\"b\",\"00101\",7),,(0-4),(0-2)\r\n\r\nOK\r\n");
    QCOMPARE(errorIn(first.answer(), "NETWORK_LIST"), 0);
    QCOMPARE(errorIn(second.answer(), "NETWORK_REG_STATE"), 0);
    QCOMPARE(errorIn(first.answer(), "SMS_STORAGE"), 0);
    const QList<QByteArray> commands = line.peer.commands();
    const auto search = commands.indexOf("AT+COPS=?");
    QCOMPARE(commands.mid(search), (QList<QByteArray>{"AT+COPS=?", "AT+CREG?", "AT+CPMS?"}));
}

void tst_connectionmanagermodem::reachesALongOperationWithACancel()
{
    FailingLine line;
    RawClient client(line.manager.socket("demo-device-1"));
    line.peer.answer("AT+CMGD=2", "");
    client.send(R"({"IPCMSG_TYPE":"DEMO_MESSAGE_SMS_DELETE","IPCMSG_USER_DATA":{"vRef":[1,2,3]}})");
    QCOMPARE(errorIn(client.answer(), "SMS_DELETE"), 0);
    QVERIFY(line.peer.hears("AT+CMGD=2"));
    // While the second step waits for the modem, the cancel is answered.
    client.send(R"({"IPCMSG_TYPE":"DEMO_MESSAGE_CANCEL",)"
                R"("IPCMSG_USER_DATA":{"msgId":"DEMO_MESSAGE_SMS_DELETE"}})");
    QCOMPARE(errorIn(client.answerWith("\"DEMO_MESSAGE_CANCEL\""), "CANCEL"), 0);
    line.peer.say("\r\nOK\r\n");
    const QString result = client.answerWith("RPT_SMS_DELETED");
    QVERIFY2(result.contains(R"("vFailureRef":[3],"vSuccessRef":[1,2])"), qPrintable(result));
    QVERIFY(!line.peer.commands().contains("AT+CMGD=3"));
}

// The cancel does not overtake what it is meant for: that would forget it.
void tst_connectionmanagermodem::cancelsARequestThatWaits()
{
    FailingLine line;
    RawClient client(line.manager.socket("demo-device-1"));
    line.peer.answer("AT+COPS=?", "");
    client.send(request("NETWORK_LIST"));
    QVERIFY(line.peer.hears("AT+COPS=?"));
    client.send(R"({"IPCMSG_TYPE":"DEMO_MESSAGE_SMS_DELETE","IPCMSG_USER_DATA":{"vRef":[1,2]}})");
    client.send(R"({"IPCMSG_TYPE":"DEMO_MESSAGE_CANCEL",)"
                R"("IPCMSG_USER_DATA":{"msgId":"DEMO_MESSAGE_SMS_DELETE"}})");
    QVERIFY(line.service->says("DEMO_MESSAGE_CANCEL"));
    line.peer.say("\r\nERROR\r\n");
    QCOMPARE(errorIn(client.answer(), "NETWORK_LIST"), -1);
    QCOMPARE(errorIn(client.answer(), "SMS_DELETE"), 0);
    QCOMPARE(errorIn(client.answer(), "CANCEL"), 0);
    const QString result = client.answerWith("RPT_SMS_DELETED");
    QVERIFY2(result.contains(R"("vFailureRef":[1,2],"vSuccessRef":null)"), qPrintable(result));
    QVERIFY(!line.peer.commands().contains("AT+CMGD=1"));
}

void tst_connectionmanagermodem::refusesAFlood()
{
    FailingLine line;
    RawClient flooding(line.manager.socket("demo-device-1"));
    RawClient other(line.manager.socket("demo-device-1"));
    line.peer.answer("AT+COPS=?", "");
    flooding.send(request("NETWORK_LIST"));
    QVERIFY(line.peer.hears("AT+COPS=?"));
    for (int i = 0; i < 101; ++i)
        flooding.send(request("NETWORK_REG_STATE"));
    QCOMPARE(errorIn(flooding.answer(), "NETWORK_REG_STATE"), 8);
    other.send(request("NETWORK_REG_STATE"));
    line.peer.say("\r\nERROR\r\n");
    QCOMPARE(errorIn(flooding.answer(), "NETWORK_LIST"), -1);
    QCOMPARE(errorIn(other.answer(), "NETWORK_REG_STATE"), 0);
    for (int i = 0; i < 100; ++i)
        QCOMPARE(errorIn(flooding.answer(), "NETWORK_REG_STATE"), 0);
    QCOMPARE(ask(flooding, "NETWORK_REG_STATE"), 0);
}

void tst_connectionmanagermodem::endsAtOnceWhileTheModemIsSilent()
{
    FailingLine line;
    RawClient client(line.manager.socket("demo-device-1"));
    line.peer.answer("AT+COPS=?", "");
    client.send(request("NETWORK_LIST"));
    client.send(request("NETWORK_INFO"));
    QVERIFY(line.peer.hears("AT+COPS=?"));
    line.service->terminate();
    QCOMPARE(line.service->exitCode(), 0);
    // What waited was not begun any more.
    QCOMPARE(line.peer.commands().last(), QByteArray("AT+COPS=?"));
}

void tst_connectionmanagermodem::obeysTheControllerWhileTheModemIsSilent()
{
    FailingLine line;
    RawClient client(line.manager.socket("demo-device-1"));
    line.peer.answer("AT+COPS=?", "");
    client.send(request("NETWORK_LIST"));
    QVERIFY(line.peer.hears("AT+COPS=?"));
    // It gets to know the controller, and is told to quit, in the middle of the search.
    const auto controller = line.manager.startController();
    QVERIFY(line.service->says("application controller: introduced"));
    controller->enter("quit");
    QCOMPARE(line.service->exitCode(), 0);
    QCOMPARE(controller->exitCode(), 0);
}

void tst_connectionmanagermodem::findsAModemThatIsPluggedInAgain()
{
    FailingLine line;
    RawClient client(line.manager.socket("demo-device-1"));
    line.peer.answer("AT+CREG?", "\r\n+CREG: 2,");
    client.send(request("NETWORK_REG_STATE"));
    QVERIFY(line.peer.hears("AT+CREG?"));
    line.peer.unplug();
    QCOMPARE(errorIn(client.answer(), "NETWORK_REG_STATE"), 1);
    QVERIFY(line.service->says("has gone"));
    QCOMPARE(ask(client, "EQUIPMENT_INFO"), 1);
    line.peer.inform("AT+CREG?", "+CREG: 2,1");
    const auto settings = line.peer.commands().count("AT+CNMI=2,1");
    line.peer.plug();
    QVERIFY(line.service->says(kReady));
    QCOMPARE(line.peer.commands().count("AT+CNMI=2,1"), settings + 1);
    QCOMPARE(ask(client, "NETWORK_REG_STATE"), 0);
}

void tst_connectionmanagermodem::worksWithoutAModem_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("reason");
    QTest::newRow("missing") << "missing" << QByteArray("No such file or directory");
    QTest::newRow("a file") << "file" << QByteArray("it is no terminal");
    QTest::newRow("a socket") << "demo-device-1" << QByteArray("No such device or address");
}

void tst_connectionmanagermodem::worksWithoutAModem()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, reason);
    ConnectionManager manager;
    TestFile::write(manager.socket("file"), "precious");
    const auto service = manager.startService({"--port", manager.socket(name), "--retry", "1"});
    QVERIFY(
        service->says(kAway + manager.socket(name).toLocal8Bit() + " cannot be opened: " + reason));
    RawClient client(manager.socket("demo-device-1"));
    QCOMPARE(ask(client, "EQUIPMENT_INFO"), 1);
    QCOMPARE(ask(client, "CONNECT_STATE"), 1);
    QCOMPARE(TestFile::read(manager.socket("file")), QByteArray("precious"));
    service->terminate();
    QCOMPARE(service->exitCode(), 0);
    QCOMPARE(service->output().count(kAway), 1);
}

void tst_connectionmanagermodem::leavesTheLineToTheServiceThatHasIt()
{
    ConnectionManager manager;
    const auto first = manager.startService();
    QVERIFY(first->says(kReady));
    const QString line = manager.socket("demo-modem");
    const auto second =
        manager.startService({"--id", "demo-device-2", "--port", line, "--retry", "1"});
    const QByteArray reason = line.toUtf8() + " cannot be opened: deviceservice (process " +
                              QByteArray::number(first->processId()) + ") has it";
    QVERIFY(second->says(kAway + reason));
    // No answer went to the wrong one.
    RawClient client(manager.socket("demo-device-1"));
    for (int i = 0; i < 20; ++i)
        QCOMPARE(ask(client, "EQUIPMENT_INFO"), 0);
    RawClient other(manager.socket("demo-device-2"));
    QCOMPARE(ask(other, "EQUIPMENT_INFO"), 1);

    first->kill();
    QVERIFY(second->says(kReady));
    QCOMPARE(ask(other, "EQUIPMENT_INFO"), 0);
    second->terminate();
    QCOMPARE(second->exitCode(), 0);
    QVERIFY(manager.logs().contains(line.toUtf8() + " cannot be opened: deviceservice"));
}

void tst_connectionmanagermodem::reportsADroppedConnection()
{
    ConnectionManager manager;
    const auto controller = manager.startController();
    const auto service = manager.startService();
    const auto dashboard = manager.startDashboard({"--pin", "1234", "--dial"});
    QVERIFY(dashboard->says("Statistics    connected for"));
    manager.modem().enter("drop");
    QVERIFY(dashboard->says("* Connection  not connected (+CGEV: NW DEACT"));
    dashboard->enter("dial");
    QVERIFY(dashboard->says("* Connection  connected"));
}

void tst_connectionmanagermodem::reportsUnpluggingToTheDashboard()
{
    ConnectionManager manager;
    const auto controller = manager.startController();
    const auto service = manager.startService({"--retry", "20"});
    const auto dashboard = manager.startDashboard({"--pin", "1234", "--dial"});
    QVERIFY(dashboard->says("Statistics    connected for"));
    manager.modem().enter("unplug");
    QVERIFY(dashboard->says("* Connection  not connected (the modem has gone)"));
    dashboard->enter("ask");
    QVERIFY(dashboard->says("PIN           no connection to the modem (error 1)"));
    // Another modem, whose SIM wants its PIN.
    const auto modem = manager.startModem();
    QVERIFY(service->says(kReady));
    QVERIFY(service->says(kReady));
    dashboard->enter("ask");
    QVERIFY(dashboard->says("PIN           the SIM asks for the PIN"));
    QVERIFY(dashboard->says("* Connection  connected"));
}

void tst_connectionmanagermodem::passesTheModemsErrorsOn()
{
    FailingLine line;
    RawClient client(line.manager.socket("demo-device-1"));
    struct
    {
        const char* result;
        int error;
    } const results[] = {{"+CME ERROR: 11", 16}, {"+CME ERROR: 16", 21}, {"+CME ERROR: 30", 35},
                         {"+CME ERROR: 3", 2},   {"+CME ERROR: 38", 3},  {"+CME ERROR: 100", -1},
                         {"+CME ERROR: 0", -1},  {"+CME ERROR: 2", 8},   {"ERROR", -1}};
    for (const auto& result : results) {
        line.peer.answer("AT+CREG?", "\r\n" + QByteArray(result.result) + "\r\n");
        QVERIFY2(ask(client, "NETWORK_REG_STATE") == result.error, result.result);
    }
}

QTEST_GUILESS_MAIN(tst_connectionmanagermodem)
#include "tst_connectionmanagermodem.moc"
