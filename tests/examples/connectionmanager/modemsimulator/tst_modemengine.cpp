#include "modemline.h"

#include <QTest>

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
    void refusesTextsOfAnotherSet();
    void tellsWhichCommandsWereAnswered();
    void movesTheSignalUpAndDown();
};

void tst_modemengine::echoesAndFramesAnswers()
{
    ModemLine line;
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
    ModemLine line;
    line.ask("ATE0\r");
    for (const char byte : QByteArray("AT+CS"))
        QCOMPARE(line.ask(QByteArray(1, byte)), QByteArray());
    QCOMPARE(line.ask("X\bQ\n"), QByteArray());
    QCOMPARE(line.ask("\r\nAT"), QByteArray("\r\n+CSQ: 21,99\r\n\r\nOK\r\n"));
    QCOMPARE(line.ask("\r"), QByteArray("\r\nOK\r\n"));
}

void tst_modemengine::ignoresWhatStandsBeforeAt()
{
    ModemLine line;
    line.ask("ATE0\r");
    QCOMPARE(line.ask("\r"), QByteArray());
    QCOMPARE(line.ask("hello\r"), QByteArray());
    QCOMPARE(line.ask("A\r"), QByteArray());
    QCOMPARE(line.ask(QByteArray("\xff\x00\xc3 xyAT\r", 9)), QByteArray("\r\nOK\r\n"));
}

void tst_modemengine::refusesLinesThatAreTooLong()
{
    ModemLine line;
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
        static ModemLine line; // one for all, so that its state wears
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
    ModemLine line;
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

void tst_modemengine::takesTextAfterAPrompt()
{
    ModemLine line;
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
    ModemLine line;
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
    ModemLine line(state);
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
    ModemLine line;
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
    ModemLine line;
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
    ModemLine line;
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
    ModemLine line;
    QVERIFY(line.engine().perform("fault delay 70"));
    QCOMPARE(line.ask("AT\r"), QByteArray("AT\r<delay>\r\nOK\r\n"));
    QCOMPARE(line.delays, QList<int>{70});
}

void tst_modemengine::isSilentUntilItMayTalk()
{
    ModemLine line;
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
    ModemLine line;
    line.ask("ATE0;+CMEE=1;+CMGF=1\rAT+CSQ;+CPIN?\r");
    QCOMPARE(line.changes, 0);
    int expected = 0;
    for (const char* change :
         {"+CPIN=\"0000\"", "+CPIN=\"1234\"", "+CMGL", "+CMGD=1", "+CPBW=,\"1\"", "+CPBW=1",
          "+CGDCONT=1,\"IP\"", "+COPS=1,2,\"00102\"", "+CLCK=\"SC\",0,\"1234\""}) {
        line.ask(QByteArray("AT") + change + '\r');
        QVERIFY2(line.changes == ++expected, change);
    }
    QVERIFY(line.engine().perform("signal 3"));
    QCOMPARE(line.changes, ++expected);
    QVERIFY(line.engine().perform("message 1 Hello"));
    QCOMPARE(line.changes, ++expected);
    const ModemState& state = line.engine().state();
    QCOMPARE(state.network.selected, QString("00102"));
    QCOMPARE(state.network.signal, 3);
    QVERIFY(!state.sim.pinAsked);
    QCOMPARE(state.messages.front().text, QString("Hello"));
}

void tst_modemengine::tellsOfAChangeBeforeItAnswers()
{
    ModemLine line;
    line.ask("ATE0\r");
    QCOMPARE(line.ask("AT+CPIN=\"1234\"\r"), QByteArray("\r\nOK\r\n"));
    QCOMPARE(line.changes, 1);
    QCOMPARE(line.sentAtChange, QByteArray());
}

void tst_modemengine::refusesTextsOfAnotherSet()
{
    ModemLine line;
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
    ModemLine line;
    line.ask("ATE0+CSQ;+BOGUS;+CREG?\r");
    QCOMPARE(line.answered, (std::vector<QByteArray>{"E", "+CSQ", "+BOGUS"}));
}

void tst_modemengine::movesTheSignalUpAndDown()
{
    ModemLine line;
    QList<int> signal;
    for (int i = 0; i < 6; ++i) {
        line.engine().walk();
        signal += line.engine().state().network.signal;
    }
    QCOMPARE(signal, (QList<int>{24, 27, 30, 10, 13, 16}));
}

QTEST_GUILESS_MAIN(tst_modemengine)
#include "tst_modemengine.moc"
