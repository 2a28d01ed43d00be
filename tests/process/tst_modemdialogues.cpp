#include "modemline.h"

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

namespace {

struct Dialogue
{
    const char* name;
    const char* text; // the form is that of ModemLine::play()
};

// Each begins with the modem of the demo as it is switched on.
constexpr Dialogue Dialogues[] = {
    {"lines", R"($ at
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
OK)"},
    {"forms of errors", R"($ AT+CIMI
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
OK)"},
    {"identity", R"($ AT+CGMI;+CGMM;+CGMR;+CGSN;+CGSN=?
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
OK)"},
    {"without a SIM", R"(! sim out
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
! sim away)"},
    {"PIN", R"($ AT+CMEE=1;+CPIN?
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
+CME ERROR: 3)"},
    {"PUK", R"($ AT+CMEE=1
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
OK)"},
    {"lock and password", R"($ AT+CMEE=1;+CLCK="SC",2
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
OK)"},
    {"registration", R"($ AT+CMEE=1;+CREG?
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
+CME ERROR: 50)"},
    {"operators", R"($ AT+CMEE=1;+COPS?
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
OK)"},
    {"indicators", R"($ AT+CIND?;+CMER=3,0,0,1;+CMER?
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
+CME ERROR: 50)"},
    {"packet contexts", R"($ AT+CMEE=1;+CGDCONT?
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
OK)"},
    {"a connection ends with the PIN",
     R"($ AT+CMEE=1;+CPIN="1234";+CGDCONT=1,"IP","a.example";+CGACT=1,1;+CGEREP=1;+CREG=1
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
OK)"},
    {"messages", R"($ AT+CMEE=1;+CPIN="1234";+CPMS?
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
+CMS ERROR: 305)"},
    {"messages that arrive", R"($ AT+CMEE=1;+CMGF=1;+CNMI=2,1,0,0,0;+CNMI?
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
+CMS ERROR: 303)"},
    {"messages that are sent", R"($ AT+CMEE=1;+CMGF=1
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
+CMS ERROR: 331)"},
    {"phonebook", R"($ AT+CMEE=1;+CPBR=1,10
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
OK)"},
    {"USSD", R"($ AT+CMEE=1;+CUSD=1;+CUSD?
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
+CME ERROR: 50)"},
};

} // namespace

void tst_modemdialogues::holdsDialogues_data()
{
    QTest::addColumn<QString>("dialogue");
    for (const Dialogue& dialogue : Dialogues)
        QTest::newRow(dialogue.name) << QString(dialogue.text);
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
