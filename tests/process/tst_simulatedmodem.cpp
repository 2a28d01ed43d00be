#include "deviceservice/simulatedmodem.h"

#include "common/codes.h"

#include <QSignalSpy>
#include <QTest>

class tst_simulatedmodem : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tellsTheIdentityOnlyOfALockedSim();
    void countsPinAttemptsAnewAfterTheRightPin();
    void dropsTheConnectionWhenThePinIsLost();
    void blocksAfterTenWrongPuks();
    void refusesCodesThatAreNoPins();
    void changesTheSignalByItself();
};

void tst_simulatedmodem::tellsTheIdentityOnlyOfALockedSim()
{
    SimulatedModem modem;
    BLEquipmentInfo equipment;
    QCOMPARE(modem.equipment(equipment), 0);
    QCOMPARE(equipment.strModel, QString("Simulated Modem"));
    QVERIFY(equipment.strImsi.isEmpty());
    BLNetworkInfo network;
    QCOMPARE(modem.networkInfo(network), 11);
    QCOMPARE(modem.verifyPin("1234"), 0);
    QCOMPARE(modem.equipment(equipment), 0);
    QCOMPARE(equipment.strImsi, QString("001010123456789"));
    QCOMPARE(modem.networkInfo(network), 0);
    QCOMPARE(modem.verifyPin("1234"), 3);
}

void tst_simulatedmodem::countsPinAttemptsAnewAfterTheRightPin()
{
    SimulatedModem modem;
    QCOMPARE(modem.verifyPin("0000"), 16);
    QCOMPARE(modem.verifyPin("0000"), 16);
    BLPinCheckState state;
    QCOMPARE(modem.pinState(state), 0);
    QCOMPARE(state.nPinCnt, 1);
    QCOMPARE(modem.verifyPin("1234"), 0);
    QCOMPARE(modem.pinState(state), 0);
    QCOMPARE(state.nState, 0);
    QCOMPARE(state.nPinCnt, 3);
}

void tst_simulatedmodem::dropsTheConnectionWhenThePinIsLost()
{
    SimulatedModem modem;
    QCOMPARE(modem.verifyPin("1234"), 0);
    BLConnectionDialUp profile;
    QCOMPARE(modem.dial(profile), 50);
    profile.strAPN = "internet.example";
    profile.strNumber = "*99#";
    QCOMPARE(modem.dial(profile), 0);
    const BLPINChangeInfo wrong{"0000", "1111"};
    QCOMPARE(modem.changePin(wrong), 16);
    QCOMPARE(modem.changePin(wrong), 16);
    BLConnectState connection;
    QCOMPARE(modem.connectState(connection), 0);
    QCOMPARE(connection.nState, 1);
    QSignalSpy reports(&modem, &Modem::reported);
    QCOMPARE(modem.changePin(wrong), 12);
    QCOMPARE(reports.size(), 1);
    QCOMPARE(reports.first().at(0).toString(), QString("MODEM_CONNECTION"));
    QCOMPARE(modem.connectState(connection), 0);
    QCOMPARE(connection.nState, 0);
    QCOMPARE(modem.dial(profile), 12);
}

void tst_simulatedmodem::blocksAfterTenWrongPuks()
{
    SimulatedModem modem;
    QCOMPARE(modem.unblockPin({"12345678", "4321"}), 3);
    for (int i = 0; i < 3; ++i)
        modem.verifyPin("0000");
    for (int i = 0; i < 9; ++i)
        QCOMPARE(modem.unblockPin({"00000000", "4321"}), 16);
    QCOMPARE(modem.unblockPin({"00000000", "4321"}), 13);
    QCOMPARE(modem.unblockPin({"12345678", "4321"}), 13);
    QCOMPARE(modem.verifyPin("1234"), 13);
    BLPinCheckState state;
    QCOMPARE(modem.pinState(state), 0);
    QCOMPARE(state.nState, 3);
    QCOMPARE(state.nPukCnt, 0);
}

void tst_simulatedmodem::refusesCodesThatAreNoPins()
{
    SimulatedModem modem;
    QCOMPARE(modem.verifyPin("1234"), 0);
    for (const char* pin : {"", "123", "123456789", "12a4"})
        QCOMPARE(modem.changePin({"1234", pin}), 50);
    QCOMPARE(modem.changePin({"1234", "87654321"}), 0);
    QCOMPARE(modem.enablePin({false, "1234"}), 16);
    QCOMPARE(modem.enablePin({false, "87654321"}), 0);
    // A PIN that is not asked for cannot be changed.
    QCOMPARE(modem.changePin({"87654321", "1234"}), 3);
}

void tst_simulatedmodem::changesTheSignalByItself()
{
    SimulatedModem modem;
    QSignalSpy reports(&modem, &Modem::reported);
    QVERIFY(!reports.wait(1)); // not before it was asked to
    modem.changeSignalEvery(1);
    QTRY_VERIFY(reports.size() >= 3);
    modem.changeSignalEvery(0);
    QCOMPARE(reports.at(0).at(1).toString(), QString("+CSQ: 24,99"));
    QCOMPARE(reports.at(1).at(1).toString(), QString("+CSQ: 27,99"));
    QCOMPARE(reports.at(2).at(1).toString(), QString("+CSQ: 30,99"));
    modem.setSignal(32);
    QCOMPARE(reports.last().at(1).toString(), QString("+CSQ: 99,99"));
}

QTEST_GUILESS_MAIN(tst_simulatedmodem)
#include "tst_simulatedmodem.moc"
