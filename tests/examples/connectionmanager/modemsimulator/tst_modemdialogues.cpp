// Dialogues with the modem of the demo, each from where it is switched on. Their form is that of
// ModemLine::play(); those in the folder beside this file have no other set-up.

#include "modemline.h"
#include "support/testfile.h"

#include <QDir>
#include <QTest>

class tst_modemdialogues : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void holdsDialogues_data();
    void holdsDialogues();
    void blocksTheSimAfterTheLastWrongPuk();
    void goesOnWithAUssdDialogue();
};

void tst_modemdialogues::holdsDialogues_data()
{
    QTest::addColumn<QString>("dialogue");
    const QDir folder(DIALOGUES);
    const QStringList names = folder.entryList({"*.txt"}, QDir::Files);
    QCOMPARE(names.size(), 17);
    for (const QString& name : names)
        QTest::newRow(qPrintable(name))
            << QString::fromUtf8(TestFile::read(folder.filePath(name))).trimmed();
}

void tst_modemdialogues::holdsDialogues()
{
    QFETCH(QString, dialogue);
    ModemLine line;
    QCOMPARE(line.play(dialogue), dialogue.split('\n'));
}

void tst_modemdialogues::blocksTheSimAfterTheLastWrongPuk()
{
    ModemState state = ModemState::makeDefault();
    state.sim.pinAttempts = 0;
    state.sim.pukAttempts = 2;
    const QString dialogue = R"($ AT+CMEE=1;+CPIN="00000000","4321"
+CME ERROR: 16
$ AT+CPIN="00000000","4321"
+CME ERROR: 13
$ AT+CPIN="12345678","4321"
+CME ERROR: 13
$ AT+CPIN?
+CME ERROR: 13
$ AT+CMGF=1;+CMGR=1
+CMS ERROR: 313
$ AT+CPINR
+CPINR: SIM PIN,0,3
+CPINR: SIM PUK,0,10
OK)";
    QCOMPARE(ModemLine(state).play(dialogue), dialogue.split('\n'));
}

void tst_modemdialogues::goesOnWithAUssdDialogue()
{
    ModemState state = ModemState::makeDefault();
    state.sim.pinAsked = false;
    state.ussd = {{"*1#", 1, "1: credit"}, {"*1#>1", 0, "12.34"}, {"*2#", 0, "Two"}};
    const QString dialogue = R"($ AT+CUSD=1,"*1#"
OK
+CUSD: 1,"1: credit",15
$ AT+CUSD=1,"1"
OK
+CUSD: 0,"12.34",15
$ AT+CUSD=1,"1"
OK
+CUSD: 4
$ AT+CUSD=1,"*1#"
OK
+CUSD: 1,"1: credit",15
$ AT+CUSD=2
OK
$ AT+CUSD=1,"1"
OK
+CUSD: 4
$ AT+CUSD=1,"*1#"
OK
+CUSD: 1,"1: credit",15
$ AT+CUSD=1,"*2#"
OK
+CUSD: 0,"Two",15)";
    QCOMPARE(ModemLine(state).play(dialogue), dialogue.split('\n'));
}

QTEST_GUILESS_MAIN(tst_modemdialogues)
#include "tst_modemdialogues.moc"
