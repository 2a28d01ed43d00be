#include "deviceservice/atanswers.h"

#include <QTest>

class tst_atanswers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsThePlace_data();
    void readsThePlace();
    void readsTheOperator_data();
    void readsTheOperator();
    void readsTheNetworks();
    void refusesNetworksThatAreBroken_data();
    void refusesNetworksThatAreBroken();
    void readsTheSignal();
    void findsTheSignalsIndicator();
    void readsThePinState_data();
    void readsThePinState();
    void readsTheAttempts();
    void readsTheContexts();
    void readsTheRoom();
    void readsTheMessages();
    void readsOneMessage();
    void readsOddDates_data();
    void readsOddDates();
    void leavesOutMessagesThatAreBroken();
    void readsThePhonebook();
    void readsUssd();
};

void tst_atanswers::readsThePlace_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<bool>("isUnsolicited");
    QTest::addColumn<QList<int>>("place"); // state, area, cell; -1: none
    using Place = QList<int>;
    QTest::newRow("full") << QByteArray("+CREG: 2,1,\"1A2B\",\"01C3D4E\",7") << false
                          << Place{1, 0x1A2B, 0x1C3D4E};
    QTest::newRow("no network") << QByteArray("+CREG: 2,2") << false << Place{2, -1, -1};
    QTest::newRow("unsolicited") << QByteArray("+CREG: 5,\"000A\",\"0000000B\"") << true
                                 << Place{5, 10, 11};
    QTest::newRow("cell too large")
        << QByteArray("+CREG: 2,1,\"1\",\"FFFFFFFF\"") << false << Place{1, 1, -1};
    QTest::newRow("no state") << QByteArray("+CREG: 2") << false << Place{};
    QTest::newRow("half a line") << QByteArray("+CREG: 2,1,\"1A") << false << Place{};
    QTest::newRow("nonsense") << QByteArray("garbage") << false << Place{};
    QTest::newRow("nothing") << QByteArray() << false << Place{};
}

void tst_atanswers::readsThePlace()
{
    QFETCH(QByteArray, line);
    QFETCH(bool, isUnsolicited);
    const auto place = AtAnswer::place(line, isUnsolicited);
    const QList<int> read =
        place ? QList<int>{place->state, place->area.value_or(-1), place->cell.value_or(-1)}
              : QList<int>{};
    QTEST(read, "place");
}

void tst_atanswers::readsTheOperator_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QString>("shown"); // mode, format, name, technology
    QTest::newRow("in use") << QByteArray("+COPS: 0,0,\"Example Mobile\",7")
                            << "0/0/Example Mobile/7";
    QTest::newRow("UCS2") << QByteArray("+COPS: 1,0,\"004100620063\",2") << "1/0/Abc/2";
    QTest::newRow("numeric") << QByteArray("+COPS: 1,2,\"00101\"") << "1/2/00101/0";
    QTest::newRow("no network") << QByteArray("+COPS: 0") << "0/0//0";
    QTest::newRow("nonsense") << QByteArray("+COPS: x,0") << "none";
    QTest::newRow("half a line") << QByteArray("+COPS: 0,0,\"Exam") << "none";
}

void tst_atanswers::readsTheOperator()
{
    QFETCH(QByteArray, line);
    BLNetworkInfo info;
    const QString shown = AtAnswer::readOperator(line, info) ? QString("%1/%2/%3/%4")
                                                                   .arg(info.nMode)
                                                                   .arg(info.nFormat)
                                                                   .arg(info.strOperator)
                                                                   .arg(info.nAct)
                                                             : QString("none");
    QTEST(shown, "shown");
}

void tst_atanswers::readsTheNetworks()
{
    const auto list = AtAnswer::networks("+COPS: (2,\"Example Mobile\",\"Example\",\"00101\",7),"
                                         "(3,\"\",\"\",\"99999\"),,(0-4),(0-2)");
    QVERIFY(list.has_value());
    QCOMPARE(list->listNetworkItem.size(), size_t(2));
    const BLNetworkListItem first = list->listNetworkItem.front();
    QCOMPARE(first.nState, 2);
    QCOMPARE(first.strLongAlpha, QString("Example Mobile"));
    QCOMPARE(first.strShortAlpha, QString("Example"));
    QCOMPARE(first.strNumericAlpha, QString("00101"));
    QCOMPARE(first.nAct, 7);
    QCOMPARE(list->listNetworkItem.back().nState, 3);
    QCOMPARE(list->listNetworkItem.back().strNumericAlpha, QString("99999"));
    QVERIFY(AtAnswer::networks("+COPS: ,,(0-4),(0-2)")->listNetworkItem.empty());
}

void tst_atanswers::refusesNetworksThatAreBroken_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("half a line") << QByteArray("+COPS: (2,\"Example Mobile\",\"Exa");
    QTest::newRow("too short") << QByteArray("+COPS: (2,\"Example Mobile\")");
    QTest::newRow("no state") << QByteArray("+COPS: (\"a\",\"b\",\"c\",\"d\")");
}

void tst_atanswers::refusesNetworksThatAreBroken()
{
    QFETCH(QByteArray, line);
    QVERIFY(!AtAnswer::networks(line));
}

void tst_atanswers::readsTheSignal()
{
    QCOMPARE(AtAnswer::signalStrength("+CSQ: 7,99").value_or(-1), 7);
    QCOMPARE(AtAnswer::signalStrength("+CSQ:31").value_or(-1), 31);
    QVERIFY(!AtAnswer::signalStrength("+CSQ: "));
    QVERIFY(!AtAnswer::signalStrength("+CSQ: 32,99"));
    QVERIFY(!AtAnswer::signalStrength(""));
}

void tst_atanswers::findsTheSignalsIndicator()
{
    QCOMPARE(
        AtAnswer::signalIndicator("+CIND: (\"battchg\",(0-5)),(\"signal\",(0-5))").value_or(-1), 2);
    QCOMPARE(AtAnswer::signalIndicator("+CIND: (\"signal\",(0-5))").value_or(-1), 1);
    QVERIFY(!AtAnswer::signalIndicator("+CIND: (\"battchg\",(0-5))"));
    QVERIFY(!AtAnswer::signalIndicator("+CIND: (\"sig"));
}

void tst_atanswers::readsThePinState_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<int>("state"); // -1: none
    QTest::newRow("ready") << QByteArray("+CPIN: READY") << 0;
    QTest::newRow("PIN") << QByteArray("+CPIN: SIM PIN") << 1;
    QTest::newRow("PIN in quotation marks") << QByteArray("+CPIN: \"SIM PIN\"") << 1;
    QTest::newRow("PUK") << QByteArray("+CPIN: SIM PUK") << 2;
    QTest::newRow("second PIN") << QByteArray("+CPIN: SIM PIN2") << 0;
    QTest::newRow("another lock") << QByteArray("+CPIN: PH-SIM PIN") << -1;
    QTest::newRow("half a line") << QByteArray("+CPIN: SIM") << -1;
}

void tst_atanswers::readsThePinState()
{
    QFETCH(QByteArray, line);
    QTEST(AtAnswer::pinState(line).value_or(-1), "state");
}

void tst_atanswers::readsTheAttempts()
{
    const QList<QByteArray> lines{"+CPINR: SIM PIN,2,3", "+CPINR: \"SIM PUK\",10,10",
                                  "+CPINR: SIM PIN2,x"};
    QCOMPARE(AtAnswer::attempts(lines, "SIM PIN").value_or(-1), 2);
    QCOMPARE(AtAnswer::attempts(lines, "SIM PUK").value_or(-1), 10);
    QVERIFY(!AtAnswer::attempts(lines, "SIM PIN2"));
    QVERIFY(!AtAnswer::attempts(lines, "SIM PUK2"));
}

void tst_atanswers::readsTheContexts()
{
    QCOMPARE(AtAnswer::isActive({"+CGACT: 1,1", "+CGACT: 2,0"}, 1).value(), true);
    QCOMPARE(AtAnswer::isActive({"+CGACT: 1,1", "+CGACT: 2,0"}, 2).value(), false);
    QCOMPARE(AtAnswer::isActive({"+CGACT: 2,1"}, 1).value(), false);
    QCOMPARE(AtAnswer::isActive({}, 1).value(), false); // none is defined
    QVERIFY(!AtAnswer::isActive({"+CGACT: 1"}, 1));
    QVERIFY(!AtAnswer::isActive({"+CGACT: ,1"}, 1));
}

void tst_atanswers::readsTheRoom()
{
    const auto room = AtAnswer::room("+CPMS: \"SM\",8,20,\"SM\",8,20,\"SM\",8,20");
    QVERIFY(room.has_value());
    QCOMPARE(room->used, 8);
    QCOMPARE(room->total, 20);
    QVERIFY(!AtAnswer::room("+CPBS: \"SM\""));
    QVERIFY(!AtAnswer::room("+CPBS: \"SM\",3,"));
}

void tst_atanswers::readsTheMessages()
{
    int skipped = -1;
    const BLSmsGetListCnf list = AtAnswer::messages(
        {"+CMGL: 1,\"REC UNREAD\",\"002B0031\",,\"24/05/17,12:09:00+08\"", "00480069",
         "+CMGL: 2,\"REC READ\",\"+2\",,\"24/05/17,12:10:00+08\"", "+CMGL: 7,\"STO SENT\",\"+3\",,",
         "plain text", "+CMGL: 8,\"REC READ\",\"+4\",,\"24/05/17,12:11:00+08\"", "^RSSI: 4",
         "0041"},
        &skipped);
    QCOMPARE(skipped, 0);
    QCOMPARE(list.listSmsItem.size(), size_t(4));
    auto item = list.listSmsItem.begin();
    QCOMPARE(item->nRef, 1);
    QCOMPARE(item->nTag, 0);
    QCOMPARE(item->nBoxType, 0);
    QCOMPARE(item->nStoreIn, 1);
    QCOMPARE(item->strAddress, QString("+1"));
    QCOMPARE(item->strDateTime, QString("17/05/2024 12:09"));
    QCOMPARE(item->strContent, QString("Hi"));
    ++item;
    QCOMPARE(item->nRef, 2);
    QCOMPARE(item->nTag, 1);
    QCOMPARE(item->strContent, QString());
    ++item;
    QCOMPARE(item->nRef, 7);
    QCOMPARE(item->nBoxType, 1);
    QCOMPARE(item->strContent, QString("plain text"));
    ++item;
    QCOMPARE(item->strContent, QString("A"));
}

void tst_atanswers::readsOneMessage()
{
    const auto item = AtAnswer::message(
        "+CMGR: \"REC UNREAD\",\"+15550106\",,\"24/05/17,12:09:00+08\"", "00480069", 9);
    QVERIFY(item.has_value());
    QCOMPARE(item->nRef, 9);
    QCOMPARE(item->nTag, 0);
    QCOMPARE(item->strAddress, QString("+15550106"));
    QCOMPARE(item->strContent, QString("Hi"));
    QVERIFY(!AtAnswer::message("+CMGR: \"REC UN", "00480069", 9));
    QCOMPARE(AtAnswer::arrivedMessage("+CMTI: \"SM\",9").value_or(-1), 9);
    QVERIFY(!AtAnswer::arrivedMessage("+CMTI: \"SM\""));
}

void tst_atanswers::readsOddDates_data()
{
    QTest::addColumn<QByteArray>("stamp");
    QTest::addColumn<QString>("shown");
    QTest::newRow("with a zone") << QByteArray("24/05/17,12:09:00+08") << "17/05/2024 12:09";
    QTest::newRow("without") << QByteArray("24/05/17,12:09:00") << "17/05/2024 12:09";
    QTest::newRow("no such day") << QByteArray("24/13/45,12:09:00+08") << "24/13/45,12:09:00+08";
    QTest::newRow("nonsense") << QByteArray("today") << "today";
    QTest::newRow("empty") << QByteArray() << "";
}

void tst_atanswers::readsOddDates()
{
    QFETCH(QByteArray, stamp);
    const auto item =
        AtAnswer::message("+CMGR: \"REC READ\",\"1\",,\"" + stamp + '"', QByteArray(), 1);
    QVERIFY(item.has_value());
    QTEST(item->strDateTime, "shown");
}

void tst_atanswers::leavesOutMessagesThatAreBroken()
{
    int skipped = -1;
    const BLSmsGetListCnf list =
        AtAnswer::messages({"garbage", "+CMGL: x,\"REC READ\",\"1\"", "0041", "+CMGL: 3", "0042",
                            "+CMGL: 4,\"REC READ\",\"+1\",,", "0043"},
                           &skipped);
    QCOMPARE(skipped, 3);
    QCOMPARE(list.listSmsItem.size(), size_t(1));
    QCOMPARE(list.listSmsItem.front().nRef, 4);
}

void tst_atanswers::readsThePhonebook()
{
    const auto places = AtAnswer::phonebookPlaces("+CPBR: (1-250),40,14");
    QVERIFY(places.has_value());
    QCOMPARE(places->first, 1);
    QCOMPARE(places->last, 250);
    QVERIFY(!AtAnswer::phonebookPlaces("+CPBR: (1),40,14"));
    QVERIFY(!AtAnswer::phonebookPlaces("+CPBR: (1-x"));
    const auto entry = AtAnswer::phonebookEntry("+CPBR: 3,\"+15550104\",145,\"005A006F00EB\"");
    QVERIFY(entry.has_value());
    QCOMPARE(entry->nIndex, 3);
    QCOMPARE(entry->nStore, 1);
    QCOMPARE(entry->contents.value("number"), QString("+15550104"));
    QCOMPARE(entry->contents.value("name"), QString("Zo\u00eb"));
    QVERIFY(!AtAnswer::phonebookEntry("+CPBR: 3,\"+15550104\""));
    QVERIFY(!AtAnswer::phonebookEntry("+CPBR: a,\"1\",129,\"\""));
    QCOMPARE(AtAnswer::ownNumber("+CNUM: \"\",\"+15550100\",145"), QString("+15550100"));
    QCOMPARE(AtAnswer::ownNumber(""), QString());
}

void tst_atanswers::readsUssd()
{
    const auto report = AtAnswer::ussd("+CUSD: 0,\"00480069\",15");
    QVERIFY(report.has_value());
    QCOMPARE(report->nReportType, 0);
    QCOMPARE(report->strContent, QString("Hi"));
    QCOMPARE(AtAnswer::ussd("+CUSD: 4")->nReportType, 4);
    QVERIFY(!AtAnswer::ussd("+CUSD: x"));
    QVERIFY(!AtAnswer::ussd("+CUSD: 0,\"00"));
}

QTEST_GUILESS_MAIN(tst_atanswers)
#include "tst_atanswers.moc"
