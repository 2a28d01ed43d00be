#include "modemsimulator/modemengine.h"

#include <QTest>

namespace {

// The engine at the end of a line that remembers everything.
class Line
{
public:
    explicit Line(const ModemState& state = ModemState::makeDefault())
        : m_engine(state, hooks())
    {
    }

    ModemEngine& engine() { return m_engine; }
    QByteArray sent()
    {
        QByteArray bytes;
        bytes.swap(m_sent);
        return bytes;
    }
    QByteArray ask(const QByteArray& bytes)
    {
        m_engine.take(bytes);
        return sent();
    }
    // What is sent, by lines: "$ " before a command line, "^ " before a text that Ctrl-Z ends, "! "
    // before what is to happen. Every other line is what the modem says.
    QStringList play(const QString& dialogue)
    {
        ask("ATE0\r");
        QStringList transcript;
        for (const QString& line : dialogue.split('\n', Qt::SkipEmptyParts)) {
            const QString rest = line.mid(2);
            if (line.startsWith("$ "))
                m_engine.take(rest.toLatin1() + '\r');
            else if (line.startsWith("^ "))
                m_engine.take(rest.toLatin1() + '\x1a');
            else if (!line.startsWith("! "))
                continue;
            else if (!m_engine.perform(rest))
                transcript += "cannot: " + rest;
            transcript += line;
            for (const QString& said : QString::fromLatin1(sent()).split("\r\n")) {
                if (!said.isEmpty())
                    transcript += said.trimmed();
            }
        }
        return transcript;
    }

    int m_changes = 0;
    QByteArray m_sentAtChange;
    QList<int> m_delays;
    std::vector<QByteArray> m_answered;

private:
    ModemEngine::Hooks hooks()
    {
        ModemEngine::Hooks hooks;
        hooks.send = [this](const QByteArray& bytes) { m_sent += bytes; };
        hooks.delay = [this](int milliseconds) {
            m_delays.append(milliseconds);
            m_sent += "<delay>";
        };
        hooks.stateChanged = [this] {
            ++m_changes;
            m_sentAtChange = m_sent;
        };
        hooks.answered = [this](const std::vector<QByteArray>& commands) { m_answered = commands; };
        return hooks;
    }

    QByteArray m_sent;
    ModemEngine m_engine;
};

} // namespace

class tst_modemengine : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void echoesAndFramesAnswers();
    void takesLinesInPieces();
    void ignoresWhatStandsBeforeAt();
    void refusesLinesThatAreTooLong();
    void survivesAnyBytes();
    void forgetsWhatWasBegunWhenTheLineIsClosed();
    void holdsDialogues_data();
    void holdsDialogues();
    void takesTextAfterAPrompt();
    void refusesTextThatIsTooLong();
    void encodesTextsInTheChosenSet_data();
    void encodesTextsInTheChosenSet();
    void reportsOnlyBehindAnAnswer();
    void spoilsAnswers_data();
    void spoilsAnswers();
    void floodsWithoutALineEnd();
    void sendsLate();
    void isSilentUntilItMayTalk();
    void tellsOfEveryChangeOfTheState();
    void tellsOfAChangeBeforeItAnswers();
    void blocksTheSimAfterTheLastWrongPuk();
    void goesOnWithAUssdDialogue();
    void refusesTextsOfAnotherSet();
    void tellsWhichCommandsWereAnswered();
    void movesTheSignalUpAndDown();
};

void tst_modemengine::echoesAndFramesAnswers()
{
    Line line;
    QCOMPARE(line.ask("AT\r"), QByteArray("AT\r\r\nOK\r\n"));
    QCOMPARE(line.ask("ATE0\r"), QByteArray("ATE0\r\r\nOK\r\n"));
    QCOMPARE(line.ask("AT+CSQ\r"), QByteArray("\r\n+CSQ: 21,99\r\n\r\nOK\r\n"));
    QCOMPARE(line.ask("ATE\r"), QByteArray("\r\nOK\r\n"));
    QCOMPARE(line.ask("ATE1\rAT\r"), QByteArray("\r\nOK\r\nAT\r\r\nOK\r\n"));
    QCOMPARE(line.ask("ATE2\r"), QByteArray("ATE2\r\r\nERROR\r\n"));
    QCOMPARE(line.ask("\b"), QByteArray("\b"));
}

void tst_modemengine::takesLinesInPieces()
{
    Line line;
    line.ask("ATE0\r");
    for (const char byte : QByteArray("AT+CS"))
        QCOMPARE(line.ask(QByteArray(1, byte)), QByteArray());
    QCOMPARE(line.ask("X\bQ\n"), QByteArray());
    QCOMPARE(line.ask("\r\nAT"), QByteArray("\r\n+CSQ: 21,99\r\n\r\nOK\r\n"));
    QCOMPARE(line.ask("\r"), QByteArray("\r\nOK\r\n"));
}

void tst_modemengine::ignoresWhatStandsBeforeAt()
{
    Line line;
    line.ask("ATE0\r");
    QCOMPARE(line.ask("\r"), QByteArray());
    QCOMPARE(line.ask("hello\r"), QByteArray());
    QCOMPARE(line.ask("A\r"), QByteArray());
    QCOMPARE(line.ask(QByteArray("\xff\x00\xc3 xyAT\r", 9)), QByteArray("\r\nOK\r\n"));
}

void tst_modemengine::refusesLinesThatAreTooLong()
{
    Line line;
    line.ask("ATE0\r");
    const QByteArray blanks(2046, ' ');
    QCOMPARE(line.ask("AT" + blanks + '\r'), QByteArray("\r\nOK\r\n"));
    QCOMPARE(line.ask("AT" + blanks + " \r"), QByteArray("\r\nERROR\r\n"));
    QCOMPARE(line.ask(QByteArray(3000000, 'x') + '\r'), QByteArray("\r\nERROR\r\n"));
    QCOMPARE(line.ask("AT\r"), QByteArray("\r\nOK\r\n"));
}

void tst_modemengine::survivesAnyBytes()
{
    const QByteArrayList beginnings = {"AT", "AT+", "AT+CPBW=", "AT+CMGS=\"1\"\r", "AT+CUSD=1,\""};
    unsigned int random = 4711;
    for (int i = 0; i < 20000; ++i) {
        static Line line; // one for all, so that its state wears
        QByteArray bytes = beginnings.at(i % 5);
        for (int n = 0; n < 20; ++n) {
            random = random * 1103515245U + 12345U;
            bytes += "\r\x1a\x1b\b\",;=?+0129AZaz &\x80"[random >> 16 & 15];
        }
        line.ask(bytes);
        if (i == 19999) {
            line.ask("\x1b\r");
            line.ask("ATZ\r");
            QCOMPARE(line.ask("ATE0\r"), QByteArray("ATE0\r\r\nOK\r\n"));
        }
    }
}

void tst_modemengine::forgetsWhatWasBegunWhenTheLineIsClosed()
{
    Line line;
    line.ask("ATE0;+CMGF=1;+CPIN=\"1234\"\r");
    line.ask("AT+BOG");
    line.engine().hangUp();
    QCOMPARE(line.ask("AT\r"), QByteArray("\r\nOK\r\n"));
    QCOMPARE(line.ask("AT+CMGS=\"+1555\"\r"), QByteArray("\r\n> "));
    line.engine().hangUp();
    QCOMPARE(line.ask("AT+CSQ\r"), QByteArray("\r\n+CSQ: 21,99\r\n\r\nOK\r\n"));
    line.ask(QByteArray(3000, 'x'));
    line.engine().hangUp();
    QCOMPARE(line.ask("AT\r"), QByteArray("\r\nOK\r\n"));
}

void tst_modemengine::holdsDialogues_data()
{
    QTest::addColumn<QString>("dialogue");
    QTest::newRow("lines") << R"(
$ at
OK
$ AT + c s q ; + C S Q ;
+CSQ: 21,99
+CSQ: 21,99
OK
$ ATE0+CMEE=1;+CMEE?
+CMEE: 1
OK
$ AT+CSQ;+BOGUS;+CSQ
+CSQ: 21,99
ERROR
$ AT+CSQ+CSQ
ERROR
$ AT+CSCS="IRA
ERROR
$ AT+
ERROR
$ AT+CMEE=,
+CME ERROR: 50
$ AT+CSQ?
+CME ERROR: 4
$ ATD*99#
ERROR
$ AT&FE0
OK
$ AT+CMEE?
+CMEE: 0
OK)";
    QTest::newRow("forms of errors") << R"(
$ AT+CIMI
ERROR
$ AT+CMEE=1
OK
$ AT+CIMI
+CME ERROR: 11
$ AT+CMEE=2
OK
$ AT+CIMI
+CME ERROR: SIM PIN required
$ AT+CMGF=1;+CMGL="ALL"
+CMS ERROR: 311
$ AT+CMEE=3
+CME ERROR: Incorrect parameters
$ AT+CMEE=?
+CMEE: (0-2)
OK)";
    QTest::newRow("identity") << R"(
$ AT+CGMI;+CGMM;+CGMR;+CGSN;+CGSN=?
Example Devices
Simulated Modem
1.0
490154203237518
OK
$ AT+CCID
+CCID: 8999901123456789012
OK
$ AT+CMEE=1;+CNUM
+CME ERROR: 11
$ AT+CPIN="1234";+CIMI;+CNUM
001010123456789
+CNUM: "","+15550100",145
OK)";
    QTest::newRow("without a SIM") << R"(
! sim out
$ AT+CMEE=1
OK
$ AT+CPIN?
+CME ERROR: 10
$ AT+CCID
+CME ERROR: 10
$ AT+CPINR
+CME ERROR: 10
$ AT+CMGF=1;+CMGR=1
+CMS ERROR: 310
$ AT+CSQ
+CSQ: 21,99
OK
! sim in
$ AT+CPIN?
+CPIN: SIM PIN
OK
cannot: sim away
! sim away)";
    QTest::newRow("PIN") << R"(
$ AT+CMEE=1;+CPIN?
+CPIN: SIM PIN
OK
$ AT+CPIN="0000"
+CME ERROR: 16
$ AT+CPIN=0000
+CME ERROR: 16
$ AT+CPINR
+CPINR: SIM PIN,1,3
+CPINR: SIM PUK,10,10
OK
$ AT+CPIN="123"
+CME ERROR: 50
$ AT+CPIN="12345678","4321"
+CME ERROR: 3
$ AT+CPIN="1234"
OK
$ AT+CPIN?;+CPINR="SIM PIN"
+CPIN: READY
+CPINR: SIM PIN,3,3
OK
$ AT+CPIN="1234"
+CME ERROR: 3)";
    QTest::newRow("PUK") << R"(
$ AT+CMEE=1
OK
$ AT+CPIN="0000"
+CME ERROR: 16
$ AT+CPIN="0000"
+CME ERROR: 16
$ AT+CPIN="0000"
+CME ERROR: 12
$ AT+CPIN?
+CPIN: SIM PUK
OK
$ AT+CPIN="1234"
+CME ERROR: 12
$ AT+CPIN="00000000","4321"
+CME ERROR: 16
$ AT+CPIN="1","4321"
+CME ERROR: 50
$ AT+CPINR="SIM PUK"
+CPINR: SIM PUK,9,10
OK
$ AT+CMGF=1;+CMGR=1
+CMS ERROR: 316
$ AT+CPIN="12345678","4321"
OK
$ AT+CPIN?;+CPINR
+CPIN: READY
+CPINR: SIM PIN,3,3
+CPINR: SIM PUK,10,10
OK)";
    QTest::newRow("lock and password") << R"(
$ AT+CMEE=1;+CLCK="SC",2
+CME ERROR: 11
$ AT+CPIN="1234";+CLCK="SC",2
+CLCK: 1
OK
$ AT+CPWD="SC","9999","5678"
+CME ERROR: 16
$ AT+CPWD="SC","1234","12a4"
+CME ERROR: 50
$ AT+CPWD="SC","1234","5678"
OK
$ AT+CLCK="SC",0,"1234"
+CME ERROR: 16
$ AT+CLCK="SC",0,"5678";+CLCK="SC",2
+CLCK: 0
OK
$ AT+CPWD="SC","5678","1234"
+CME ERROR: 3
$ AT+CLCK="SC",1
+CME ERROR: 50
$ AT+CLCK="SC",1,"5678";+CPIN?
+CPIN: READY
OK
$ AT+CLCK="PN",2
+CME ERROR: 4
$ AT+CLCK=?;+CPWD=?
+CLCK: ("SC")
+CPWD: ("SC",8)
OK)";
    QTest::newRow("registration") << R"(
$ AT+CMEE=1;+CREG?
+CME ERROR: 11
$ AT+CREG=1;+CGREG=2
OK
$ AT+CPIN="1234"
OK
+CREG: 1
+CGREG: 1,"1A2B","01C3D4E",7
$ AT+CREG?;+CGREG?;+CREG=?
+CREG: 1,1
+CGREG: 2,1,"1A2B","01C3D4E",7
+CREG: (0-2)
OK
! registration 0
+CREG: 0
+CGREG: 0
! registration 0
$ AT+COPS?
+COPS: 0
OK
! registration 5
+CREG: 5
+CGREG: 5,"1A2B","01C3D4E",7
cannot: registration 6
! registration 6
! registration auto
+CREG: 1
+CGREG: 1,"1A2B","01C3D4E",7
$ AT+CREG=3
+CME ERROR: 50)";
    QTest::newRow("operators") << R"(
$ AT+CMEE=1;+COPS?
+CME ERROR: 11
$ AT+CPIN="1234";+COPS?
+COPS: 0,0,"Example Mobile",7
OK
$ AT+COPS=3,2;+COPS?
+COPS: 0,2,"00101",7
OK
$ AT+COPS=?
+COPS: (2,"Example Mobile","Example","00101",7),(1,"Sample Telecom","Sample","00102",2),(3,"Closed Network","Closed","99999",0),,(0-4),(0-2)
OK
$ AT+COPS=1,2,"12345"
+CME ERROR: 22
$ AT+COPS=1,2,"99999"
+CME ERROR: 30
$ AT+COPS=1,2
+CME ERROR: 50
$ AT+COPS=1,2,"00102",7
+CME ERROR: 30
$ AT+COPS=1,0,"Sample Telecom",2;+COPS=3,1;+COPS?;+CREG?
+COPS: 1,1,"Sample",2
+CREG: 0,5
OK
$ AT+COPS=2;+COPS?;+CREG?
+COPS: 2
+CREG: 0,0
OK
$ AT+COPS=4,2,"12345";+COPS=3,0;+COPS?
+COPS: 1,0,"Example Mobile",7
OK
! registration 3
$ AT+COPS?
+COPS: 1
OK
$ AT+COPS=0;+COPS?
+COPS: 0,0,"Example Mobile",7
OK)";
    QTest::newRow("indicators") << R"(
$ AT+CIND?;+CMER=3,0,0,1;+CMER?
+CIND: 5,4,0,0
+CMER: 3,0,0,1,0
OK
! signal 7
+CIEV: 2,2
! signal 8
! signal 31
+CIEV: 2,5
! signal 32
+CIEV: 2,0
cannot: signal strong
! signal strong
$ AT+CSQ
+CSQ: 99,99
OK
$ AT+CPIN="1234"
OK
+CIEV: 3,1
! registration 5
+CIEV: 4,1
$ AT+CMER=0;+CIND=?
+CIND: ("battchg",(0-5)),("signal",(0-5)),("service",(0,1)),("roam",(0,1))
OK
! signal 20
$ AT+CMEE=1;+CMER=2,0,0,1
+CME ERROR: 50)";
    QTest::newRow("packet contexts") << R"(
$ AT+CMEE=1;+CGDCONT?
OK
$ AT+CGDCONT=2,"IP","b.example";+CGDCONT=1,"ipv4v6","a.example";+CGDCONT?;+CGACT?
+CGDCONT: 1,"IPV4V6","a.example","",0,0
+CGDCONT: 2,"IP","b.example","",0,0
+CGACT: 1,0
+CGACT: 2,0
OK
$ AT+CGACT=1,2
+CME ERROR: 11
$ AT+CPIN="1234";+CGACT=1,2
OK
$ AT+CGACT=1,3
+CME ERROR: 21
$ AT+CGACT?;+CGPADDR;+CGPADDR=2;+CGPADDR=?
+CGACT: 1,0
+CGACT: 2,1
+CGPADDR: 1
+CGPADDR: 2,"10.64.0.1"
+CGPADDR: 2,"10.64.0.1"
+CGPADDR: (1,2)
OK
$ AT+CGDCONT=2
+CME ERROR: 3
$ AT+CGEREP=1;+CGEREP?
+CGEREP: 1,0
OK
! drop
+CGEV: NW DEACT "IP","10.64.0.1",2
cannot: drop
! drop
$ AT+CGACT=1;+CGACT?
+CGACT: 1,1
+CGACT: 2,1
OK
$ AT+CGACT=0,1;+CGACT?
+CGACT: 1,0
+CGACT: 2,1
OK
! registration 0
+CGEV: NW DEACT "IP","10.64.0.1",2
$ AT+CGACT=1,1
+CME ERROR: 30
$ AT+CGDCONT=2;+CGDCONT=17,"IP"
+CME ERROR: 50
$ AT+CGDCONT?
+CGDCONT: 1,"IPV4V6","a.example","",0,0
OK)";
    QTest::newRow("a connection ends with the PIN") << R"(
$ AT+CMEE=1;+CPIN="1234";+CGDCONT=1,"IP","a.example";+CGACT=1,1;+CGEREP=1;+CREG=1
OK
$ AT+CPWD="SC","0000","1111"
+CME ERROR: 16
$ AT+CPWD="SC","0000","1111"
+CME ERROR: 16
$ AT+CPWD="SC","0000","1111"
+CME ERROR: 12
+CGEV: ME DEACT "IP","10.64.0.1",1
+CREG: 0
$ AT+CGACT?
+CGACT: 1,0
OK)";
    QTest::newRow("messages") << R"(
$ AT+CMEE=1;+CPIN="1234";+CPMS?
+CPMS: "SM",8,20,"SM",8,20,"SM",8,20
OK
$ AT+CMGR=1
+CMS ERROR: 303
$ AT+CMGF=1;+CMGF?
+CMGF: 1
OK
$ AT+CMGR=8
+CMGR: "REC UNREAD","+15550105",,"24/05/17,12:08:00+00"
See you tomorrow.
OK
$ AT+CMGL="REC READ"
+CMGL: 8,"REC READ","+15550105",,"24/05/17,12:08:00+00"
See you tomorrow.
OK
$ AT+CMGL="NONE"
+CMS ERROR: 305
$ AT+CMGD=8
OK
$ AT+CMGD=8
+CMS ERROR: 321
$ AT+CMGR=21
+CMS ERROR: 321
$ AT+CMGD=0,1;+CPMS="SM","SM","SM"
+CPMS: 7,20,7,20,7,20
OK
$ AT+CPMS="ME"
+CMS ERROR: 303
$ AT+CMGD=?
+CMGD: (1,2,3,4,5,6,7),(0-4)
OK
$ AT+CMGR=1;+CMGD=0,4;+CMGL="ALL"
+CMGR: "REC UNREAD","+15550101",,"24/05/17,12:01:00+00"
Welcome to Example Mobile.
OK
$ AT+CMGD=0,5
+CMS ERROR: 305)";
    QTest::newRow("messages that arrive") << R"(
$ AT+CMEE=1;+CMGF=1;+CNMI=2,1,0,0,0;+CNMI?
+CNMI: 2,1,0,0,0
OK
! message +15550106 Hello there
$ AT+CPIN="1234"
OK
+CMTI: "SM",9
$ AT+CMGR=9;+CMGD=3
+CMGR: "REC UNREAD","+15550106",,"24/05/17,12:09:00+00"
Hello there
OK
! message +15550107 Again
+CMTI: "SM",3
cannot: message +15550107
! message +15550107
$ AT+CNMI=2,0
OK
! message +15550107 Unnoticed
$ AT+CMGR=10
+CMGR: "REC UNREAD","+15550107",,"24/05/17,12:11:00+00"
Unnoticed
OK
$ AT+CNMI=2,2
+CMS ERROR: 303)";
    QTest::newRow("messages that are sent") << R"(
$ AT+CMEE=1;+CMGF=1
OK
$ AT+CMGS="+1555"
+CMS ERROR: 311
$ AT+CPIN="1234"
OK
$ AT+CMGS="12a"
+CMS ERROR: 305
$ AT+CMGS="+15550108",145
>
^ Hello
+CMGS: 1
OK
$ AT+CMGR=9
+CMGR: "STO SENT","+15550108",
Hello
OK
! registration 3
$ AT+CMGS="+1555"
+CMS ERROR: 331)";
    QTest::newRow("phonebook") << R"(
$ AT+CMEE=1;+CPBR=1,10
+CME ERROR: 11
$ AT+CPIN="1234";+CPBS?;+CPBR=?;+CPBS="SM";+CPBS=?
+CPBS: "SM",3,10
+CPBR: (1-10),40,30
+CPBS: ("SM")
OK
$ AT+CPBS="ME"
+CME ERROR: 4
$ AT+CPBR=1,2
+CPBR: 1,"+15550102",145,"Ada"
+CPBR: 2,"+15550103",145,"Grace"
OK
$ AT+CPBW=2;+CPBW=,"555",,"New";+CPBW=9,"1555",145,"Nine";+CPBR=2,10
+CPBR: 2,"555",129,"New"
+CPBR: 3,"+15550104",145,"Zo?"
+CPBR: 9,"+1555",145,"Nine"
OK
$ AT+CPBR=4
OK
$ AT+CPBR=11
+CME ERROR: 21
$ AT+CPBW=0,"1"
+CME ERROR: 21
$ AT+CPBW=,"12x",129,"X"
+CME ERROR: 27
$ AT+CPBW=,"12345678901234567890123456789012345678901",129,"X"
+CME ERROR: 26
$ AT+CPBW=,"1",129,"1234567890123456789012345678901"
+CME ERROR: 24
$ AT+CPBW=,"1",128,"X"
+CME ERROR: 50
$ AT+CPBW=,"4";+CPBW=,"5";+CPBW=,"6";+CPBW=,"7";+CPBW=,"8";+CPBW=,"10"
OK
$ AT+CPBW=,"11"
+CME ERROR: 20
$ AT+CPBW=1,"11",129,"Other";+CPBR=1
+CPBR: 1,"11",129,"Other"
OK)";
    QTest::newRow("USSD") << R"(
$ AT+CMEE=1;+CUSD=1;+CUSD?
+CUSD: 1
OK
$ AT+CUSD=1,"*100#",15
+CME ERROR: 11
$ AT+CPIN="1234";+CUSD=1,"*100#",15
OK
+CUSD: 0,"Your credit is 12.34.",15
$ AT+CUSD=1,"*999#"
OK
+CUSD: 4
! ussd 0 Hello
+CUSD: 0,"Hello",15
cannot: ussd Hello
! ussd Hello
$ AT+CUSD=0,"*100#"
OK
! ussd 0 Hello
! registration 2
$ AT+CUSD=1,"*100#"
+CME ERROR: 30
$ AT+CUSD=3
+CME ERROR: 50)";
}

void tst_modemengine::holdsDialogues()
{
    QFETCH(QString, dialogue);
    Line line;
    QCOMPARE(line.play(dialogue), dialogue.mid(1).split('\n'));
}

void tst_modemengine::takesTextAfterAPrompt()
{
    Line line;
    line.ask("ATE0;+CMEE=1;+CMGF=1;+CPIN=\"1234\"\r");
    QCOMPARE(line.ask("AT+CMGS=\"+1555\"\r"), QByteArray("\r\n> "));
    QVERIFY(line.engine().perform("report RING"));
    QCOMPARE(line.sent(), QByteArray()); // not into the text
    QCOMPARE(line.ask("AT\rlinX\be\x1a"), QByteArray("\r\n+CMGS: 1\r\n\r\nOK\r\n\r\nRING\r\n"));
    QCOMPARE(line.engine().state().messages.back().text, QString("AT\rline"));
    QCOMPARE(line.ask("ATE1\rAT+CMGS=\"+1555\"\rx\x1b"),
             QByteArray("\r\nOK\r\nAT+CMGS=\"+1555\"\r\r\n> x\x1b\r\nOK\r\n"));
    QCOMPARE(line.engine().state().messages.size(), size_t(9));
}

void tst_modemengine::refusesTextThatIsTooLong()
{
    Line line;
    line.ask("ATE0;+CMEE=1;+CMGF=1;+CPIN=\"1234\"\r");
    const auto send = [&line](const QByteArray& text) {
        line.ask("AT+CMGS=\"+1555\"\r");
        return line.ask(text + '\x1a');
    };
    QVERIFY(send(QByteArray(160, 'x')).contains("+CMGS: 1"));
    QCOMPARE(send(QByteArray(161, 'x')), QByteArray("\r\n+CMS ERROR: 305\r\n"));
    QCOMPARE(send(QByteArray(3000000, 'x')), QByteArray("\r\n+CMS ERROR: 305\r\n"));
    line.ask("AT+CSCS=\"UCS2\"\r");
    const auto sendUcs2 = [&line](const QByteArray& text) {
        line.ask("AT+CMGS=\"002B0031\"\r");
        return line.ask(text + '\x1a');
    };
    QVERIFY(sendUcs2(QByteArray("04D0").repeated(70)).contains("+CMGS: 2"));
    QCOMPARE(sendUcs2(QByteArray("04D0").repeated(71)), QByteArray("\r\n+CMS ERROR: 305\r\n"));
    QCOMPARE(sendUcs2("04D"), QByteArray("\r\n+CMS ERROR: 305\r\n"));
    QCOMPARE(line.ask("AT+CMGS=\"+1\"\r"), QByteArray("\r\n+CMS ERROR: 305\r\n"));
}

void tst_modemengine::encodesTextsInTheChosenSet_data()
{
    QTest::addColumn<QByteArray>("set");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("UCS2") << QByteArray("UCS2") << QString(u8"Zo\u00eb \u20ac")
                          << QByteArray("005A006F00EB002020AC");
    QTest::newRow("GSM") << QByteArray("GSM") << QString(u8"\u00fc\u0394|{")
                         << QByteArray("\x7e\x10\x1b\x40\x1b\x28");
    QTest::newRow("IRA") << QByteArray("IRA") << QString("say \"a\\b\"")
                         << QByteArray("say \\22a\\5Cb\\22");
}

// The control characters of the GSM set do not survive in a command line, as in any modem: the
// state gives the name.
void tst_modemengine::encodesTextsInTheChosenSet()
{
    QFETCH(QByteArray, set);
    QFETCH(QString, name);
    QFETCH(QByteArray, bytes);
    ModemState state = ModemState::makeDefault();
    state.contacts = {{1, "1", name}};
    Line line(state);
    line.ask("ATE0;+CPIN=\"1234\";+CSCS=\"" + set + "\"\r");
    QCOMPARE(line.ask("AT+CPBR=1\r"), "\r\n+CPBR: 1,\"1\",129,\"" + bytes + "\"\r\n\r\nOK\r\n");
    QString text;
    TeCharset charset = TeCharset::Ira;
    QVERIFY(charsetByName(set, &charset));
    QVERIFY(decodedText(charset, bytes, &text));
    QCOMPARE(text, name);
}

void tst_modemengine::reportsOnlyBehindAnAnswer()
{
    Line line;
    line.ask("ATE0;+CMEE=1;+CUSD=1\r");
    QCOMPARE(line.ask("AT+CPIN=\"1234\";+CUSD=1,\"*100#\";+CSQ\r"),
             QByteArray("\r\n+CSQ: 21,99\r\n\r\nOK\r\n"
                        "\r\n+CUSD: 0,\"Your credit is 12.34.\",15\r\n"));
}

void tst_modemengine::spoilsAnswers_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<QByteArray>("spoilt"); // the answer to "AT+CPBR=1,2"
    QTest::newRow("silence") << "fault silence" << QByteArray();
    QTest::newRow("half") << "fault half"
                          << QByteArray("\r\n+CPBR: 1,\"+15550102\",145,\"Ada\"\r\n+CP");
    QTest::newRow("final") << "fault final NO CARRIER"
                           << QByteArray("\r\n+CPBR: 1,\"+15550102\",145,\"Ada\""
                                         "\r\n+CPBR: 2,\"+15550103\",145,\"Grace\"\r\n"
                                         "\r\nNO CARRIER\r\n");
    QTest::newRow("interrupt") << "fault +cpbr interrupt +CIEV: 2,1"
                               << QByteArray("\r\n+CPBR: 1,\"+15550102\",145,\"Ada\""
                                             "\r\n+CIEV: 2,1"
                                             "\r\n+CPBR: 2,\"+15550103\",145,\"Grace\"\r\n"
                                             "\r\nOK\r\n");
}

void tst_modemengine::spoilsAnswers()
{
    QFETCH(QString, fault);
    QFETCH(QByteArray, spoilt);
    Line line;
    line.ask("ATE0;+CPIN=\"1234\"\r");
    QVERIFY(line.engine().perform(fault));
    QCOMPARE(line.ask("AT+CPBR=1,2\r"), spoilt);
    QVERIFY(line.ask("AT+CPBR=1,2\r").endsWith("\"Grace\"\r\n\r\nOK\r\n")); // one answer only
    QVERIFY(!line.engine().perform("fault"));
    QVERIFY(!line.engine().perform("fault +CSQ"));
    QVERIFY(!line.engine().perform("fault final"));
    QVERIFY(!line.engine().perform("fault delay soon"));
}

void tst_modemengine::floodsWithoutALineEnd()
{
    Line line;
    line.ask("ATE0\r");
    QVERIFY(line.engine().perform("fault +CSQ flood 100"));
    QVERIFY(line.engine().perform("fault flood"));
    QVERIFY(line.engine().perform("fault garbage"));
    const QByteArray flood = line.ask("AT\r");
    QCOMPARE(flood.size(), decltype(flood.size())(4000000));
    QVERIFY(!flood.contains('\n'));
    const QByteArray afterGarbage = line.ask("AT\r");
    QVERIFY(afterGarbage.size() > 50);
    QVERIFY(afterGarbage.endsWith("\r\nOK\r\n"));
    QCOMPARE(line.ask("AT\r"), QByteArray("\r\nOK\r\n"));
    QCOMPARE(line.ask("AT+CSQ\r"), QByteArray(100, 'U'));
    QVERIFY(line.engine().perform("garbage"));
    QVERIFY(line.sent().endsWith("\r\n+CM"));
}

void tst_modemengine::sendsLate()
{
    Line line;
    QVERIFY(line.engine().perform("fault delay 70"));
    QCOMPARE(line.ask("AT\r"), QByteArray("AT\r<delay>\r\nOK\r\n"));
    QCOMPARE(line.m_delays, QList<int>{70});
}

void tst_modemengine::isSilentUntilItMayTalk()
{
    Line line;
    line.ask("ATE0;+CMER=3,0,0,1\r");
    QVERIFY(line.engine().perform("silence"));
    QCOMPARE(line.ask("AT\rAT+CS"), QByteArray());
    QVERIFY(line.engine().perform("signal 3"));
    QVERIFY(line.engine().perform("garbage"));
    QVERIFY(line.engine().perform("talk"));
    QCOMPARE(line.sent(), QByteArray());
    QCOMPARE(line.ask("AT+CSQ\r"), QByteArray("\r\n+CSQ: 3,99\r\n\r\nOK\r\n"));
}

void tst_modemengine::tellsOfEveryChangeOfTheState()
{
    Line line;
    line.ask("ATE0;+CMEE=1;+CMGF=1\rAT+CSQ;+CPIN?\r");
    QCOMPARE(line.m_changes, 0);
    int expected = 0;
    for (const char* change :
         {"+CPIN=\"0000\"", "+CPIN=\"1234\"", "+CMGL", "+CMGD=1", "+CPBW=,\"1\"", "+CPBW=1",
          "+CGDCONT=1,\"IP\"", "+COPS=1,2,\"00102\"", "+CLCK=\"SC\",0,\"1234\""}) {
        line.ask(QByteArray("AT") + change + '\r');
        QVERIFY2(line.m_changes == ++expected, change);
    }
    QVERIFY(line.engine().perform("signal 3"));
    QCOMPARE(line.m_changes, ++expected);
    QVERIFY(line.engine().perform("message 1 Hello"));
    QCOMPARE(line.m_changes, ++expected);
    const ModemState& state = line.engine().state();
    QCOMPARE(state.network.selected, QString("00102"));
    QCOMPARE(state.network.signal, 3);
    QVERIFY(!state.sim.pinAsked);
    QCOMPARE(state.messages.front().text, QString("Hello"));
}

void tst_modemengine::tellsOfAChangeBeforeItAnswers()
{
    Line line;
    line.ask("ATE0\r");
    QCOMPARE(line.ask("AT+CPIN=\"1234\"\r"), QByteArray("\r\nOK\r\n"));
    QCOMPARE(line.m_changes, 1);
    QCOMPARE(line.m_sentAtChange, QByteArray());
}

void tst_modemengine::blocksTheSimAfterTheLastWrongPuk()
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
    QCOMPARE(Line(state).play(dialogue), dialogue.split('\n'));
}

void tst_modemengine::goesOnWithAUssdDialogue()
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
    QCOMPARE(Line(state).play(dialogue), dialogue.split('\n'));
}

void tst_modemengine::refusesTextsOfAnotherSet()
{
    Line line;
    line.ask("ATE0;+CMEE=1;+CPIN=\"1234\";+CUSD=1\r");
    QCOMPARE(line.ask("AT+CPBW=,\"1\",129,\"\xe9\"\r"), QByteArray("\r\n+CME ERROR: 25\r\n"));
    line.ask("AT+CSCS=\"UCS2\"\r");
    for (const char* text : {"*10#", "00", "004Z", "-041", "+041"}) {
        const QByteArray answer = line.ask(QByteArray("AT+CUSD=1,\"") + text + "\"\r");
        QVERIFY2(answer == "\r\n+CME ERROR: 50\r\n", text);
    }
    QVERIFY(line.ask("AT+CUSD=1,\"002a0031003000300023\"\r").contains("+CUSD: 0,\"00590"));
}

void tst_modemengine::tellsWhichCommandsWereAnswered()
{
    Line line;
    line.ask("ATE0+CSQ;+BOGUS;+CREG?\r");
    QCOMPARE(line.m_answered, (std::vector<QByteArray>{"E", "+CSQ", "+BOGUS"}));
}

void tst_modemengine::movesTheSignalUpAndDown()
{
    Line line;
    QList<int> signal;
    for (int i = 0; i < 6; ++i) {
        line.engine().walk();
        signal += line.engine().state().network.signal;
    }
    QCOMPARE(signal, (QList<int>{24, 27, 30, 10, 13, 16}));
}

QTEST_GUILESS_MAIN(tst_modemengine)
#include "tst_modemengine.moc"
