#include "readymodem.h"

#include "common/demomessages.h"

class tst_atmodemreports : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void reportsEachChangeOfTheConnectionOnce();
    void findsAConnectionThatIsOlder();
    void reportsThatTheConnectionIsLostWithTheLine();
    void dialsThePacketServiceOnly();
    void countsTheDurationOnly();
    void readsAMessageThatArrivesInsideACommand();
    void gathersReportsOfTheSignal();
    void ignoresOtherIndicators();
    void boundsTheReportsThatWait();
    void hasOneUssdDialogueAtATime();
    void reportsThatTheNetworkDoesNotAnswer();
};

void tst_atmodemreports::reportsEachChangeOfTheConnectionOnce()
{
    ReadyModem line;
    QVERIFY(line.open());
    QCOMPARE(line.modem.dial(profile("internet.example")), 0);
    QVERIFY(line.peer.commands().contains("AT+CGDCONT=1,\"IP\",\"internet.example\""));
    QVERIFY(line.peer.commands().contains("AT+CGACT=1,1"));
    QCOMPARE(line.reports.size(), 1);
    QCOMPARE(line.report().data.asInt(), 1);
    line.peer.inform("AT+CGACT?", "+CGACT: 1,1");
    QCOMPARE(line.modem.dial(profile("internet.example")), 3);
    // Of another context.
    line.peer.say("\r\n+CGEV: NW DEACT \"IP\",\"10.0.0.2\",2\r\n");
    QVERIFY(line.peer.hears("AT+CGACT?", 4));
    line.peer.inform("AT+CGACT?", "+CGACT: 1,0");
    line.peer.say("\r\n+CGEV: NW DEACT \"IP\",\"10.0.0.1\",1\r\n\r\nNO CARRIER\r\n");
    const Report report = line.report();
    QCOMPARE(report.event, QString("MODEM_CONNECTION"));
    QCOMPARE(report.text, QString("+CGEV: NW DEACT \"IP\",\"10.0.0.1\",1"));
    QCOMPARE(report.data.asInt(), 0);
    QCOMPARE(line.modem.hangUp(), 3);
    BLConnectState state;
    QCOMPARE(line.modem.connectState(state), 0);
    QCOMPARE(state.nState, 0);
    QVERIFY(line.reports.isEmpty());
}

void tst_atmodemreports::findsAConnectionThatIsOlder()
{
    ReadyModem line;
    line.peer.inform("AT+CGACT?", "+CGACT: 1,1");
    QVERIFY(line.open());
    QCOMPARE(line.report().data.asInt(), 1);
    BLConnectState state;
    QCOMPARE(line.modem.connectState(state), 0);
    QCOMPARE(state.nState, 1);
    QCOMPARE(line.modem.hangUp(), 0);
    QVERIFY(line.peer.commands().contains("AT+CGACT=0,1"));
    QCOMPARE(line.report().data.asInt(), 0);
}

void tst_atmodemreports::reportsThatTheConnectionIsLostWithTheLine()
{
    ReadyModem line;
    QVERIFY(line.open());
    QCOMPARE(line.modem.dial(profile("internet.example")), 0);
    QCOMPARE(line.report().data.asInt(), 1);
    line.peer.unplug();
    const Report report = line.report();
    QCOMPARE(report.text, QString("the modem has gone"));
    QCOMPARE(report.data.asInt(), 0);
    BLConnectState state;
    QCOMPARE(line.modem.connectState(state), 1);
    BLConnectionStatistics statistics;
    QCOMPARE(line.modem.statistics(statistics), 1);
}

void tst_atmodemreports::dialsThePacketServiceOnly()
{
    ReadyModem line;
    QVERIFY(line.open());
    QCOMPARE(line.modem.dial(profile("")), 50);
    QCOMPARE(line.modem.dial(profile("internet.example", "")), 50);
    QCOMPARE(line.modem.dial(profile("internet.example", "+15550100")), 4);
    BLConnectionDialUp named = profile("internet.example");
    named.strUserName = "somebody"; // no command carries it
    QCOMPARE(line.modem.dial(named), 4);
    QVERIFY(!line.peer.commands().contains("AT+CGACT=1,1"));
    QCOMPARE(line.modem.dial(profile("internet.example", "*99***1#")), 0);
}

void tst_atmodemreports::countsTheDurationOnly()
{
    ReadyModem line;
    QVERIFY(line.open());
    BLConnectionStatistics statistics;
    QCOMPARE(line.modem.statistics(statistics), 0);
    QCOMPARE(statistics.dwByteTransferred, 0LL);
    QCOMPARE(line.modem.dial(profile("internet.example")), 0);
    QCOMPARE(line.modem.statistics(statistics), 0);
    QVERIFY(statistics.dwDuration >= 0);
    QCOMPARE(statistics.dwByteTransferred, -1LL);
    QCOMPARE(statistics.dwRateReceived, -1LL);
}

void tst_atmodemreports::readsAMessageThatArrivesInsideACommand()
{
    ReadyModem line;
    QVERIFY(line.open());
    line.peer.answer("AT+CSQ", "\r\n+CMTI: \"SM\",9\r\n\r\n+CSQ: 7,99\r\n\r\nOK\r\n");
    line.peer.answer("AT+CREG?", "\r\n+CREG: 2,1\r\n\r\nOK\r\n");
    line.peer.answer("AT+CMGR=9", "\r\n+CMGR: \"REC UNREAD\",\"002B0031\",,"
                                  "\"24/05/17,12:09:00+08\"\r\n00480069\r\n\r\nOK\r\n");
    // As a request's work would.
    line.queue.add([&line] {
        line.channel.send({"AT+CSQ", "+CSQ:"});
        line.channel.send({"AT+CREG?", "+CREG:"});
    });
    Report report = line.report();
    QCOMPARE(report.event, QString("MODEM_NEW_MESSAGE"));
    const auto item = recordFrom<BLSmsListItem>(report.data);
    QCOMPARE(item.nRef, 9);
    QCOMPARE(item.strAddress, QString("+1"));
    QCOMPARE(item.strContent, QString("Hi"));
    // The work that was under way came first.
    const QList<QByteArray> commands = line.peer.commands();
    QVERIFY(commands.indexOf("AT+CMGR=9") > commands.indexOf("AT+CREG?"));
}

void tst_atmodemreports::gathersReportsOfTheSignal()
{
    ReadyModem line;
    QVERIFY(line.open());
    line.peer.inform("AT+CSQ", "+CSQ: 7,99");
    line.peer.answer("AT+COPS=1,2,\"00102\"", "\r\nOK\r\n\r\n+CREG: 5,\"1\",\"2\"\r\n"
                                              "\r\n+CIEV: 2,3\r\n\r\n+CIEV: 2,1\r\n");
    BLNetworkSet selection;
    selection.nMode = 1;
    selection.strOperator = "00102";
    line.queue.add([&] { QCOMPARE(line.modem.selectNetwork(selection), 0); });
    const Report report = line.report();
    QCOMPARE(report.event, QString("MODEM_SIGNAL"));
    QCOMPARE(report.data.asInt(), 7);
    // A later one comes behind all of those.
    line.peer.inform("AT+CSQ", "+CSQ: 9,99");
    line.peer.say("\r\n+CIEV: 2,2\r\n");
    QVERIFY(line.waitFor(
        [&] { return !line.reports.isEmpty() && line.reports.last().data.asInt() == 9; }));
    QVERIFY(line.peer.commands().count("AT+CSQ") <= 3);
}

void tst_atmodemreports::ignoresOtherIndicators()
{
    ReadyModem line;
    QVERIFY(line.open());
    line.peer.inform("AT+CSQ", "+CSQ: 7,99");
    line.peer.say("\r\n+CIEV: 1,3\r\n\r\n+CIEV: 22,3\r\n\r\nRING\r\n\r\n+CGREG: 1\r\n"
                  "\r\n+CUSD: 0,\"0041\",15\r\n");
    const Report report = line.report();
    QCOMPARE(report.event, QString("MODEM_USSD"));
    QVERIFY(!line.peer.commands().contains("AT+CSQ"));
}

void tst_atmodemreports::boundsTheReportsThatWait()
{
    ReadyModem line;
    QVERIFY(line.open());
    line.peer.answer("AT+CSQ",
                     QByteArray("+CUSD: 0,\"0041\"\r\n").repeated(1000) + "+CSQ: 7,99\r\nOK\r\n");
    line.queue.add([&line] { line.channel.send({"AT+CSQ", "+CSQ:", AtWait::Network}); });
    QVERIFY(line.waitFor([&] { return !line.reports.isEmpty(); }));
    QCOMPARE(line.reports.size(), 100);
}

void tst_atmodemreports::hasOneUssdDialogueAtATime()
{
    ReadyModem line;
    QVERIFY(line.open());
    QCOMPARE(line.modem.sendUssd(ussd("", "a")), 50);
    QCOMPARE(line.modem.sendUssd(ussd("*100#", "a")), 0);
    QVERIFY(line.peer.commands().contains("AT+CUSD=1,\"002A0031003000300023\",15"));
    QCOMPARE(line.modem.sendUssd(ussd("*100#", "b")), 3);
    line.peer.say("\r\n+CUSD: 0,\"00480069\",15\r\n");
    Report report = line.report();
    auto record = recordFrom<BLUssdReport>(report.data);
    QCOMPARE(record.strClientID, QString("a"));
    QCOMPARE(record.strContent, QString("Hi"));
    QCOMPARE(record.nReportType, 0);
    // What the network begins is for nobody.
    line.peer.say("\r\n+CUSD: 1,\"0041\",15\r\n");
    report = line.report();
    record = recordFrom<BLUssdReport>(report.data);
    QCOMPARE(record.strClientID, QString());
    line.peer.answer("AT+CUSD=1,\"0023\",15", "\r\n+CME ERROR: 30\r\n");
    QCOMPARE(line.modem.sendUssd(ussd("#", "b")), 30);
    QCOMPARE(line.modem.sendUssd(ussd("*100#", "b")), 0);
}

void tst_atmodemreports::reportsThatTheNetworkDoesNotAnswer()
{
    ReadyModem line;
    QVERIFY(line.open());
    BLUssdSendCmd command = ussd("*100#", "a");
    command.nTimeOutSec = 1;
    QCOMPARE(line.modem.sendUssd(command), 0);
    Report report = line.report();
    const auto record = recordFrom<BLUssdReport>(report.data);
    QCOMPARE(record.nReportType, 5);
    QCOMPARE(record.strClientID, QString("a"));
    QCOMPARE(line.modem.sendUssd(command), 0);
}

QTEST_GUILESS_MAIN(tst_atmodemreports)
#include "tst_atmodemreports.moc"
