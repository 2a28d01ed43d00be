#include "deviceservice/attext.h"

#include <QTest>

class tst_attext : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cutsLines_data();
    void cutsLines();
    void cutsTheSameLinesFromSingleBytes();
    void boundsALineWithoutEnd();
    void knowsFinalResults_data();
    void knowsFinalResults();
    void knowsWhatIsUnsolicited_data();
    void knowsWhatIsUnsolicited();
    void splitsParameters_data();
    void splitsParameters();
    void readsNumbers_data();
    void readsNumbers();
    void encodesTexts();
    void decodesTexts_data();
    void decodesTexts();
    void decodesNumbersOnlyWhereTheyBecomeNumbers();
    void quotesNothingThatEndsAQuotation();
    void hidesSecretsInNames();
    void showsNoSecretOfAnEcho_data();
    void showsNoSecretOfAnEcho();
};

void tst_attext::cutsLines_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QList<QByteArray>>("lines");
    using Lines = QList<QByteArray>;
    QTest::newRow("an answer") << QByteArray("\r\n+CSQ: 7,99\r\n\r\nOK\r\n")
                               << Lines{"+CSQ: 7,99", "OK"};
    QTest::newRow("nothing") << QByteArray() << Lines{};
    QTest::newRow("a line that has only begun") << QByteArray("OK\r\n+CS") << Lines{"OK"};
    QTest::newRow("carriage returns only") << QByteArray("a\rb\r") << Lines{"a", "b"};
    QTest::newRow("line feeds only") << QByteArray("a\nb\n") << Lines{"a", "b"};
    QTest::newRow("control characters") << QByteArray("\x01O\x00\x7FK\x1B\r", 7) << Lines{"OK"};
    QTest::newRow("blanks") << QByteArray("  \r a \r") << Lines{"  ", " a "};
    QTest::newRow("other bytes") << QByteArray("\xC3\xA4\xFF\r") << Lines{"\xC3\xA4\xFF"};
}

void tst_attext::cutsLines()
{
    QFETCH(QByteArray, bytes);
    AtLines lines;
    QTEST(lines.add(bytes.constData(), static_cast<int>(bytes.size())), "lines");
}

void tst_attext::cutsTheSameLinesFromSingleBytes()
{
    AtLines lines;
    QList<QByteArray> cut;
    for (const char byte : QByteArray("\r\n+CSQ: 7,99\r\n\r\nOK\r\n"))
        cut += lines.add(&byte, 1);
    QCOMPARE(cut, (QList<QByteArray>{"+CSQ: 7,99", "OK"}));
    QCOMPARE(lines.cutLines(), 0);
}

void tst_attext::boundsALineWithoutEnd()
{
    AtLines lines;
    const QByteArray endless(1000, 'x');
    for (int i = 0; i < 1000; ++i)
        QVERIFY(lines.add(endless.constData(), 1000).isEmpty());
    QCOMPARE(lines.cutLines(), 1);
    QCOMPARE(lines.add("\rOK\r", 4), (QList<QByteArray>{QByteArray(4096, 'x'), "OK"}));
    lines.add(endless.constData(), 1000);
    lines.clear();
    QCOMPARE(lines.add("OK\r", 3), QList<QByteArray>{"OK"});
}

void tst_attext::knowsFinalResults_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<int>("error"); // -1: not final
    QTest::newRow("OK") << QByteArray("OK") << 0;
    QTest::newRow("ERROR") << QByteArray("ERROR") << 100;
    QTest::newRow("CME 16") << QByteArray("+CME ERROR: 16") << 16;
    QTest::newRow("CME without a blank") << QByteArray("+CME ERROR:11") << 11;
    QTest::newRow("CME 0 is no success") << QByteArray("+CME ERROR: 0") << 100;
    QTest::newRow("CME negative") << QByteArray("+CME ERROR: -3") << 100;
    QTest::newRow("CME in words") << QByteArray("+CME ERROR: SIM PIN required") << 100;
    QTest::newRow("CME empty") << QByteArray("+CME ERROR:") << 100;
    QTest::newRow("CME too large") << QByteArray("+CME ERROR: 99999999999") << 100;
    QTest::newRow("CMS not allowed") << QByteArray("+CMS ERROR: 302") << 3;
    QTest::newRow("CMS not supported") << QByteArray("+CMS ERROR: 303") << 4;
    QTest::newRow("CMS PIN") << QByteArray("+CMS ERROR: 311") << 11;
    QTest::newRow("CMS SIM failure") << QByteArray("+CMS ERROR: 313") << 13;
    QTest::newRow("CMS PUK") << QByteArray("+CMS ERROR: 316") << 12;
    QTest::newRow("CMS index") << QByteArray("+CMS ERROR: 321") << 21;
    QTest::newRow("CMS full") << QByteArray("+CMS ERROR: 322") << 20;
    QTest::newRow("CMS of its own") << QByteArray("+CMS ERROR: 330") << 330;
    QTest::newRow("CMS cause of the network") << QByteArray("+CMS ERROR: 21") << 100;
    QTest::newRow("CMS 0") << QByteArray("+CMS ERROR: 0") << 100;
    QTest::newRow("information") << QByteArray("+CSQ: 7,99") << -1;
    QTest::newRow("beginning like one") << QByteArray("OKAY") << -1;
    QTest::newRow("small letters") << QByteArray("ok") << -1;
    QTest::newRow("empty") << QByteArray() << -1;
}

void tst_attext::knowsFinalResults()
{
    QFETCH(QByteArray, line);
    QTEST(AtText::finalResult(line).value_or(-1), "error");
}

void tst_attext::knowsWhatIsUnsolicited_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<bool>("isUnsolicited");
    QTest::newRow("+CIEV") << QByteArray("+CIEV: 2,3") << true;
    QTest::newRow("+CMTI") << QByteArray("+CMTI: \"SM\",9") << true;
    QTest::newRow("+CUSD") << QByteArray("+CUSD: 4") << true;
    QTest::newRow("+CGEV") << QByteArray("+CGEV: NW DEACT \"IP\",\"10.0.0.1\",1") << true;
    QTest::newRow("RING") << QByteArray("RING") << true;
    QTest::newRow("NO CARRIER") << QByteArray("NO CARRIER") << true;
    QTest::newRow("+CREG, state only") << QByteArray("+CREG: 1") << true;
    QTest::newRow("+CREG, with the place") << QByteArray("+CREG: 1,\"1A2B\",\"01C3D4E\",7") << true;
    QTest::newRow("+CREG, read") << QByteArray("+CREG: 0,1") << false;
    QTest::newRow("+CREG, read with the place")
        << QByteArray("+CREG: 2,1,\"1A2B\",\"01C3D4E\",7") << false;
    QTest::newRow("+CGREG, state only") << QByteArray("+CGREG: 5") << true;
    QTest::newRow("+CGREG, read") << QByteArray("+CGREG: 2,5,\"1\",\"2\"") << false;
    QTest::newRow("+CREG, broken") << QByteArray("+CREG: 1,\"1A") << false;
    QTest::newRow("information") << QByteArray("+CSQ: 7,99") << false;
    QTest::newRow("final") << QByteArray("OK") << false;
    QTest::newRow("a maker's own") << QByteArray("^RSSI: 12") << false;
}

void tst_attext::knowsWhatIsUnsolicited()
{
    QFETCH(QByteArray, line);
    QTEST(AtText::isUnsolicited(line), "isUnsolicited");
}

// Kinds are shown as in the answer, contents between | |.
void tst_attext::splitsParameters_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("shown");
    QTest::newRow("numbers") << QByteArray("7,99") << QByteArray("7|99");
    QTest::newRow("one") << QByteArray("READY") << QByteArray("READY");
    QTest::newRow("empty") << QByteArray() << QByteArray("");
    QTest::newRow("empty ones") << QByteArray(",,") << QByteArray("||");
    QTest::newRow("words") << QByteArray("SIM PIN, 3") << QByteArray("SIM PIN|3");
    QTest::newRow("texts") << QByteArray("\"a,b\", \"\"") << QByteArray("\"a,b|\"");
    QTest::newRow("parentheses in a text") << QByteArray("\"a)(\"") << QByteArray("\"a)(");
    QTest::newRow("groups") << QByteArray("(2,\"a\"),(1,\"b)\"),,(0-4)")
                            << QByteArray("(2,\"a\"|(1,\"b)\"||(0-4");
    QTest::newRow("groups in groups")
        << QByteArray("(\"signal\",(0-5))") << QByteArray("(\"signal\",(0-5)");
    QTest::newRow("open text") << QByteArray("1,\"a") << QByteArray("none");
    QTest::newRow("open group") << QByteArray("(1,2") << QByteArray("none");
    QTest::newRow("closed too often") << QByteArray("1),2") << QByteArray("1)|2");
    QTest::newRow("many groups") << QByteArray(5000, '(') << QByteArray("none");
}

void tst_attext::splitsParameters()
{
    QFETCH(QByteArray, text);
    const QList<AtParameter> parameters = AtText::parameters(text);
    QByteArrayList shown;
    for (const AtParameter& parameter : parameters) {
        const char* kinds[] = {"", "\"", "("};
        shown += kinds[parameter.kind] + parameter.content;
    }
    QTEST(parameters.isEmpty() ? QByteArray("none") : shown.join('|'), "shown");
}

void tst_attext::readsNumbers_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("base");
    QTest::addColumn<int>("number"); // -1: none
    QTest::newRow("decimal") << QByteArray("42") << 10 << 42;
    QTest::newRow("hexadecimal in quotation marks") << QByteArray("\"1A2b\"") << 16 << 0x1A2B;
    QTest::newRow("largest") << QByteArray("2147483647") << 10 << 2147483647;
    QTest::newRow("too large") << QByteArray("2147483648") << 10 << -1;
    QTest::newRow("much too large") << QByteArray("99999999999999999999") << 10 << -1;
    QTest::newRow("negative") << QByteArray("-1") << 10 << -1;
    QTest::newRow("empty") << QByteArray() << 10 << -1;
    QTest::newRow("a word") << QByteArray("7x") << 10 << -1;
}

void tst_attext::readsNumbers()
{
    QFETCH(QByteArray, text);
    QFETCH(int, base);
    const QList<AtParameter> parameters = AtText::parameters(text);
    QTEST(AtText::number(parameters, 0, base).value_or(-1), "number");
    QCOMPARE(AtText::number(parameters, 1, base).value_or(-1), -1);
}

void tst_attext::encodesTexts()
{
    QCOMPARE(AtText::encoded("Zo\u00eb"), QByteArray("005A006F00EB"));
    QCOMPARE(AtText::encoded(QString::fromUtf8("\xF0\x9F\x98\x80")), QByteArray("D83DDE00"));
    QCOMPARE(AtText::encoded(""), QByteArray(""));
}

void tst_attext::decodesTexts_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("decoded");
    QTest::newRow("UCS2") << QByteArray("005A006F00EB") << QString("Zo\u00eb");
    QTest::newRow("small letters") << QByteArray("00eb") << QString("\u00eb");
    QTest::newRow("two units") << QByteArray("D83DDE00") << QString::fromUtf8("\xF0\x9F\x98\x80");
    QTest::newRow("zero") << QByteArray("00410000") << QString("A\uFFFD");
    QTest::newRow("plain") << QByteArray("Example") << QString("Example");
    QTest::newRow("not groups of four") << QByteArray("00101") << QString("00101");
    QTest::newRow("empty") << QByteArray() << QString();
    QTest::newRow("UTF-8") << QByteArray("\xC3\xAB") << QString("\u00eb");
}

void tst_attext::decodesTexts()
{
    QFETCH(QByteArray, text);
    QTEST(AtText::decoded(text), "decoded");
}

void tst_attext::decodesNumbersOnlyWhereTheyBecomeNumbers()
{
    QCOMPARE(AtText::decodedNumber("002B00310035"), QString("+15"));
    QCOMPARE(AtText::decodedNumber("+15550101"), QString("+15550101"));
    QCOMPARE(AtText::decodedNumber("15550101"), QString("15550101"));
    QCOMPARE(AtText::decodedNumber("0049006E0066006F"), QString("0049006E0066006F"));
}

void tst_attext::quotesNothingThatEndsAQuotation()
{
    QVERIFY(AtText::isQuotable("internet.example"));
    QVERIFY(AtText::isQuotable("a b,c;(d)"));
    for (const char* text : {"a\"b", "a\rb", "a\nb", "a\\22b", "\u00eb", "\x7F", "\x1A"})
        QVERIFY2(!AtText::isQuotable(QString::fromUtf8(text)), text);
}

void tst_attext::hidesSecretsInNames()
{
    QCOMPARE(AtText::nameOf("AT+CPIN=\"1234\""), QString("AT+CPIN=..."));
    QCOMPARE(AtText::nameOf("AT+CPIN?"), QString("AT+CPIN?"));
    QCOMPARE(AtText::nameOf("AT+COPS=?"), QString("AT+COPS=?"));
}

void tst_attext::showsNoSecretOfAnEcho_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QString>("shown");
    QTest::newRow("whole") << QByteArray("AT+CPIN=\"1234\"") << QString("AT+CPIN...");
    QTest::newRow("in lower case") << QByteArray("at+cpin=\"1234\"") << QString("at+cpin...");
    QTest::newRow("behind noise") << QByteArray("x AT+CPIN=\"1234\"") << QString("x AT+CPIN...");
    QTest::newRow("with the look of a query")
        << QByteArray("AT+CPIN=1234=?") << QString("AT+CPIN...");
    QTest::newRow("without the sign") << QByteArray("AT+CPIN\"1234\"") << QString("AT+CPIN...");
    QTest::newRow("without both") << QByteArray("AT+CPIN1234\"") << QString("AT+CPIN...");
    QTest::newRow("from the quotation on") << QByteArray("\"1234\"") << QString("6 bytes");
    QTest::newRow("from the digits on") << QByteArray("234\"") << QString("4 bytes");
    QTest::newRow("an answer") << QByteArray("+CME ERROR: 16") << QString("+CME ERROR: 16");
    QTest::newRow("an answer with a text")
        << QByteArray("+COPS: 0,0,\"Example\"") << QString("+COPS: 0,0,...");
    QTest::newRow("a maker's line") << QByteArray("^RSSI:24") << QString("^RSSI:24");
    QTest::newRow("a word") << QByteArray("RUBBISH") << QString("RUBBISH");
    QTest::newRow("long") << QByteArray(100, 'X') << QString(80, 'X');
    QTest::newRow("empty") << QByteArray() << QString("0 bytes");
}

void tst_attext::showsNoSecretOfAnEcho()
{
    QFETCH(QByteArray, line);
    QTEST(AtText::shown(line), "shown");
}

QTEST_GUILESS_MAIN(tst_attext)
#include "tst_attext.moc"
