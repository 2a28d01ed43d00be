#include "common_function.h"

#include "support/childprocess.h"

#include <QTest>

namespace {

// What Perl's Encode, an implementation of the GSM 7-bit alphabet that shares nothing with ours,
// says of every character of the basic plane: "<code point> <number of septets>" per line.
const char alphabetScript[] = "use Encode;"
                              "for my $c (1 .. 0xD7FF, 0xE000 .. 0xFFFD) {"
                              "  my $text = chr($c);"
                              "  my $bytes = eval { encode('gsm0338', $text, Encode::FB_CROAK) };"
                              "  print $c, ' ', length($bytes), qq(\\n) if defined $bytes;"
                              "}";

QMap<int, int> askOracle()
{
    const auto perl = ChildProcess::run(PERL_PROGRAM, {"-e", alphabetScript});
    if (perl.code != 0)
        qFatal("The oracle failed: %s", perl.err.constData());
    QMap<int, int> septets;
    const QList<QByteArray> lines = perl.out.split('\n');
    for (const QByteArray& line : lines) {
        const QList<QByteArray> parts = line.split(' ');
        if (parts.size() == 2)
            septets.insert(parts[0].toInt(), parts[1].toInt());
    }
    return septets;
}

int encodeTypeOf(int character)
{
    const unsigned short text[] = {static_cast<unsigned short>(character), 0};
    return GetEncodeType(text);
}

} // namespace

class tst_simtexts_gsm : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { m_septets = askOracle(); }
    void oracleKnowsTheAlphabet();
    void classifiesEveryCharacterAsTheOracle();
    void noBreakSpaceStandsAtTheEscapePosition();
    void formFeedNeedsUcs2();
    void zeroIsBasic();
    void extensionNeedsUcs2OnlyForIsUnicodeString();
    void emptyTextIsSevenBit();
    void oneForeignCharacterDecidesForTheText();

private:
    QMap<int, int> m_septets;
};

void tst_simtexts_gsm::oracleKnowsTheAlphabet()
{
    // 127 characters and the escape in the table, 10 in the extension.
    QCOMPARE(m_septets.size(), 137);
    QCOMPARE(m_septets.value('A'), 1);
    QCOMPARE(m_septets.value('['), 2);
    QVERIFY(!m_septets.contains('`'));
}

void tst_simtexts_gsm::classifiesEveryCharacterAsTheOracle()
{
    for (int character = 1; character <= 0xFFFF; ++character) {
        if (character == 0x00A0 || character == 0x000C)
            continue; // The two documented differences, below.
        const int septets = m_septets.value(character);
        const QByteArray name = QByteArray::number(character, 16);
        QVERIFY2(IsUnicode(static_cast<unsigned short>(character)) == (septets == 1 ? 0 : 1),
                 name.constData());
        QVERIFY2(encodeTypeOf(character) == (septets == 0 ? 2 : 0), name.constData());
    }
}

void tst_simtexts_gsm::noBreakSpaceStandsAtTheEscapePosition()
{
    QVERIFY(!m_septets.contains(0x00A0));
    QCOMPARE(IsUnicode(0x00A0), 0);
    QCOMPARE(encodeTypeOf(0x00A0), 0);
    QCOMPARE(IsUnicode(0x001B), 1);
    QCOMPARE(encodeTypeOf(0x001B), 2);
}

void tst_simtexts_gsm::formFeedNeedsUcs2()
{
    QCOMPARE(m_septets.value(0x000C), 2);
    QCOMPARE(IsUnicode(0x000C), 1);
    QCOMPARE(encodeTypeOf(0x000C), 2);
}

void tst_simtexts_gsm::zeroIsBasic()
{
    QCOMPARE(IsUnicode(0), 0);
}

void tst_simtexts_gsm::extensionNeedsUcs2OnlyForIsUnicodeString()
{
    const unsigned short bracketAndEuro[] = {'[', 0x20AC, 0};
    QCOMPARE(GetEncodeType(bracketAndEuro), 0);
    QCOMPARE(isUnicodeString(bracketAndEuro), 1);
}

void tst_simtexts_gsm::emptyTextIsSevenBit()
{
    const unsigned short empty[] = {0};
    QCOMPARE(GetEncodeType(empty), 0);
    QCOMPARE(isUnicodeString(empty), 0);
    QCOMPARE(GetEncodeType(nullptr), 0);
    QCOMPARE(isUnicodeString(nullptr), 0);
}

void tst_simtexts_gsm::oneForeignCharacterDecidesForTheText()
{
    const unsigned short plain[] = {'H', 'e', 'l', 'l', 'o', 0};
    QCOMPARE(GetEncodeType(plain), 0);
    QCOMPARE(isUnicodeString(plain), 0);
    const unsigned short last[] = {'H', 'e', 'l', 'l', 0x0416, 0};
    QCOMPARE(GetEncodeType(last), 2);
    QCOMPARE(isUnicodeString(last), 1);
    const unsigned short first[] = {0x0416, 'e', 0};
    QCOMPARE(GetEncodeType(first), 2);
    QCOMPARE(isUnicodeString(first), 1);
}

QTEST_GUILESS_MAIN(tst_simtexts_gsm)
#include "tst_simtexts_gsm.moc"
