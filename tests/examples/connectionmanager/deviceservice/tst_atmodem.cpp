#include "readymodem.h"

#include "common/demomessages.h"

class tst_atmodem : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void makesItsSettingsInThisOrder();
    void makesItsSettingsAgainAfterThePinAndAfterEachOpening();
    void livesWithoutSettingsThatAreRefused();
    void passesErrorsOn();
    void understandsNoGarbage();
    void sendsNoPinThatIsNone();
    void sendsNothingThatWouldBeACommandOfItsOwn();
    void triesThePukOnlyWhereItIsAskedFor();
    void tellsBlockedFromBroken();
    void doesNotKnowTheAttemptsThatAreNotTold();
    void leavesOutWhatTheSimDoesNotTell();
    void selectsByNumberOrName();
    void hasNoCellWithoutANetwork();
    void takesAnEmptyPhonebookForOne();
    void answersNoConnectionWithoutALine();
};

void tst_atmodem::makesItsSettingsInThisOrder()
{
    ReadyModem line;
    QVERIFY(line.open());
    QCOMPARE(line.peer.commands(),
             (QList<QByteArray>{"AT+CMEE?", "ATE0", "AT+CMEE=1", "AT+CSCS=\"UCS2\"", "AT+CMGF=1",
                                "AT+CPMS=\"SM\",\"SM\",\"SM\"", "AT+CNMI=2,1", "AT+CREG=2",
                                "AT+COPS=3,0", "AT+CMER=3,0,0,1", "AT+CGEREP=1", "AT+CPBS=\"SM\"",
                                "AT+CIND=?", "AT+CGACT?"}));
}

void tst_atmodem::makesItsSettingsAgainAfterThePinAndAfterEachOpening()
{
    ReadyModem line;
    QVERIFY(line.open());
    line.peer.answer("AT+CPIN=\"0000\"", "\r\n+CME ERROR: 16\r\n");
    QCOMPARE(line.modem.verifyPin("0000"), 16);
    QCOMPARE(line.peer.commands().count("AT+CNMI=2,1"), 1);
    QCOMPARE(line.modem.verifyPin("1234"), 0);
    QCOMPARE(line.peer.commands().count("AT+CNMI=2,1"), 2);
    line.peer.unplug();
    line.peer.plug();
    QVERIFY(line.waitFor([&] { return line.ready.size() == 2; }));
    QCOMPARE(line.peer.commands().count("AT+CNMI=2,1"), 3);
}

void tst_atmodem::livesWithoutSettingsThatAreRefused()
{
    ReadyModem line;
    line.peer.answer("AT+CGEREP=1", "\r\nERROR\r\n");
    line.peer.answer("AT+CIND=?", "\r\nERROR\r\n");
    QVERIFY(line.open());
    QVERIFY(line.peer.commands().contains("AT+CPBS=\"SM\""));
}

void tst_atmodem::passesErrorsOn()
{
    ReadyModem line;
    QVERIFY(line.open());
    BLNetworkInfo info;
    line.peer.answer("AT+COPS?", "\r\n+CME ERROR: 11\r\n");
    QCOMPARE(line.modem.networkInfo(info), 11);
    BLSmsGetListCnf messages;
    line.peer.answer("AT+CMGL=\"ALL\"", "\r\n+CMS ERROR: 311\r\n");
    QCOMPARE(line.modem.messages(messages), 11);
    line.peer.answer("AT+CMGD=99", "\r\n+CMS ERROR: 321\r\n");
    QCOMPARE(line.modem.deleteMessage(99), 21);
    // The phone's failure has the number of success.
    line.peer.answer("AT+CMGD=1", "\r\n+CME ERROR: 0\r\n");
    QCOMPARE(line.modem.deleteMessage(1), 100);
}

void tst_atmodem::understandsNoGarbage()
{
    ReadyModem line;
    QVERIFY(line.open());
    BLNetRegState state;
    line.peer.inform("AT+CREG?", "+CREG: what,ever");
    QCOMPARE(line.modem.registration(state), 100);
    BLNetworkListCnf networks;
    line.peer.inform("AT+COPS=?", "+COPS: (2,\"Exam");
    QCOMPARE(line.modem.searchNetworks(networks), 100);
    // "OK" without the information is no answer either.
    BLSmsStorageState storage;
    QCOMPARE(line.modem.messageStorage(storage), 100);
    BLPbInitListCnf phonebook;
    line.peer.inform("AT+CPBR=?", "+CPBR: (1-2),40,14");
    line.peer.answer("AT+CPBR=1,2", "\r\n+CPBR: x\r\n+CPBR: 2,\"+1\",145,\"0041\"\r\n\r\nOK\r\n");
    QCOMPARE(line.modem.phonebook(phonebook), 0);
    QCOMPARE(phonebook.listPBItem.size(), 1);
}

void tst_atmodem::sendsNoPinThatIsNone()
{
    ReadyModem line;
    QVERIFY(line.open());
    const auto before = line.peer.commands().size();
    for (const QString pin :
         {"", "123", "123456789", "12a4", "1234\"\rATZ", "\u0661\u0662\u0663\u0664"}) {
        QCOMPARE(line.modem.verifyPin(pin), 50);
        QCOMPARE(line.modem.changePin({pin, "1234"}), 50);
        QCOMPARE(line.modem.changePin({"1234", pin}), 50);
        QCOMPARE(line.modem.enablePin({true, pin}), 50);
        QCOMPARE(line.modem.unblockPin({"12345678", pin}), 50);
    }
    QCOMPARE(line.modem.unblockPin({"1234567", "1234"}), 50);
    QCOMPARE(line.peer.commands().size(), before);
    QCOMPARE(line.modem.changePin({"1234", "87654321"}), 0);
    QCOMPARE(line.modem.enablePin({false, "87654321"}), 0);
    QVERIFY(line.peer.commands().contains("AT+CPWD=\"SC\",\"1234\",\"87654321\""));
    QVERIFY(line.peer.commands().contains("AT+CLCK=\"SC\",0,\"87654321\""));
}

void tst_atmodem::sendsNothingThatWouldBeACommandOfItsOwn()
{
    ReadyModem line;
    QVERIFY(line.open());
    const auto before = line.peer.commands().size();
    QCOMPARE(line.modem.dial(profile("a\"\rATZ\r")), 50);
    BLPbItem entry;
    entry.contents.insert(PhonebookField::Number, "1\"\rATZ\r");
    QCOMPARE(line.modem.addPhonebookEntry(entry), 50);
    QCOMPARE(line.peer.commands().size(), before);
    // Texts travel as digits, whatever is in them.
    entry.contents.insert(PhonebookField::Number, "+1");
    entry.contents.insert(PhonebookField::Name, "\"\r");
    QCOMPARE(line.modem.addPhonebookEntry(entry), 0);
    BLNetworkSet selection;
    selection.nMode = 1;
    selection.strOperator = "a\"\r";
    QCOMPARE(line.modem.selectNetwork(selection), 0);
    QCOMPARE(line.modem.sendUssd(ussd("\r\"", "")), 0);
    QVERIFY(line.peer.commands().contains("AT+CPBW=,\"+1\",145,\"0022000D\""));
    QVERIFY(line.peer.commands().contains("AT+COPS=1,0,\"00610022000D\""));
    QVERIFY(line.peer.commands().contains("AT+CUSD=1,\"000D0022\",15"));
    QVERIFY(!line.peer.commands().contains("ATZ"));
}

void tst_atmodem::triesThePukOnlyWhereItIsAskedFor()
{
    ReadyModem line;
    QVERIFY(line.open());
    const BLPINVerifyPukInfo puk{"12345678", "4321"};
    for (const char* state : {"READY", "SIM PIN"}) {
        line.peer.inform("AT+CPIN?", "+CPIN: " + QByteArray(state));
        QCOMPARE(line.modem.unblockPin(puk), 3);
    }
    QVERIFY(!line.peer.commands().contains("AT+CPIN=\"12345678\",\"4321\""));
    line.peer.inform("AT+CPIN?", "+CPIN: SIM PUK");
    QCOMPARE(line.modem.unblockPin(puk), 0);
    QVERIFY(line.peer.commands().contains("AT+CPIN=\"12345678\",\"4321\""));
}

void tst_atmodem::tellsBlockedFromBroken()
{
    ReadyModem line;
    QVERIFY(line.open());
    line.peer.answer("AT+CPIN?", "\r\n+CME ERROR: 13\r\n");
    line.peer.answer("AT+CPINR", "\r\n+CPINR: SIM PIN,0,3\r\n+CPINR: SIM PUK,0,10\r\n\r\nOK\r\n");
    BLPinCheckState state;
    QCOMPARE(line.modem.pinState(state), 0);
    QCOMPARE(state.nState, 3);
    line.peer.inform("AT+CPINR", "+CPINR: SIM PUK,10,10");
    QCOMPARE(line.modem.pinState(state), 13);
}

void tst_atmodem::doesNotKnowTheAttemptsThatAreNotTold()
{
    ReadyModem line;
    QVERIFY(line.open());
    line.peer.inform("AT+CPIN?", "+CPIN: SIM PIN");
    line.peer.answer("AT+CPINR", "\r\nERROR\r\n");
    BLPinCheckState state;
    QCOMPARE(line.modem.pinState(state), 0);
    QCOMPARE(state.nState, 1);
    QCOMPARE(state.nPinCnt, -1);
    QCOMPARE(state.nPukCnt, -1);
}

void tst_atmodem::leavesOutWhatTheSimDoesNotTell()
{
    ReadyModem line;
    QVERIFY(line.open());
    line.peer.inform("AT+CGMI", "Example Devices");
    line.peer.inform("AT+CGMM", "Model");
    line.peer.inform("AT+CGMR", "+CGMR: 1.0");
    line.peer.inform("AT+CGSN", "490154203237518");
    line.peer.answer("AT+CIMI", "\r\n+CME ERROR: 11\r\n");
    BLEquipmentInfo info;
    QCOMPARE(line.modem.equipment(info), 0);
    QCOMPARE(info.strManufacturer, QString("Example Devices"));
    QCOMPARE(info.strRevision, QString("1.0"));
    QVERIFY(info.strImsi.isEmpty());
    line.peer.inform("AT+CIMI", "001010123456789");
    QCOMPARE(line.modem.equipment(info), 0);
    QCOMPARE(info.strImsi, QString("001010123456789"));
    QVERIFY(info.strMsisdn.isEmpty());
}

void tst_atmodem::selectsByNumberOrName()
{
    ReadyModem line;
    QVERIFY(line.open());
    BLNetworkSet selection;
    QCOMPARE(line.modem.selectNetwork(selection), 0);
    QVERIFY(line.peer.commands().contains("AT+COPS=0"));
    selection.nMode = 1;
    QCOMPARE(line.modem.selectNetwork(selection), 50);
    for (const char* name : {"00102", "001020", "Sample Telecom", "1"}) {
        selection.strOperator = name;
        QCOMPARE(line.modem.selectNetwork(selection), 0);
    }
    const QList<QByteArray> commands = line.peer.commands();
    QVERIFY(commands.contains("AT+COPS=1,2,\"00102\""));
    QVERIFY(commands.contains("AT+COPS=1,2,\"001020\""));
    QVERIFY(commands.contains("AT+COPS=1,0,\"Sample Telecom\""));
    QVERIFY(commands.contains("AT+COPS=1,0,\"1\""));
}

void tst_atmodem::hasNoCellWithoutANetwork()
{
    ReadyModem line;
    QVERIFY(line.open());
    BLNetLacAndCellID cell;
    line.peer.inform("AT+CREG?", "+CREG: 2,2");
    QCOMPARE(line.modem.cell(cell), 30);
    line.peer.inform("AT+CREG?", "+CREG: 2,1,\"1A2B\",\"01C3D4E\"");
    QCOMPARE(line.modem.cell(cell), 0);
    QCOMPARE(cell.nLac, 0x1A2B);
    QCOMPARE(cell.nCellID, 0x1C3D4E);
}

void tst_atmodem::takesAnEmptyPhonebookForOne()
{
    ReadyModem line;
    QVERIFY(line.open());
    line.peer.inform("AT+CPBR=?", "+CPBR: (1-250),40,14");
    line.peer.answer("AT+CPBR=1,250", "\r\n+CME ERROR: 22\r\n");
    BLPbInitListCnf phonebook;
    QCOMPARE(line.modem.phonebook(phonebook), 0);
    QVERIFY(phonebook.listPBItem.isEmpty());
}

void tst_atmodem::answersNoConnectionWithoutALine()
{
    ReadyModem line; // not started
    BLEquipmentInfo equipment;
    QCOMPARE(line.modem.equipment(equipment), 1);
    BLPinCheckState pin;
    QCOMPARE(line.modem.pinState(pin), 1);
    BLPbInitListCnf phonebook;
    QCOMPARE(line.modem.phonebook(phonebook), 1);
    QCOMPARE(line.modem.verifyPin("1234"), 1);
    QCOMPARE(line.modem.hangUp(), 1);
    QCOMPARE(line.modem.sendUssd(ussd("*100#", "a")), 1);
    QCOMPARE(line.modem.sendUssd(ussd("*100#", "a")), 1);
}

QTEST_GUILESS_MAIN(tst_atmodem)
#include "tst_atmodem.moc"
