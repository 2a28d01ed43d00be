#include "common_function.h"

#include <QTest>

#include <vector>

using Units = std::vector<unsigned short>;
using Wides = std::vector<wchar_t>;

class tst_simtexts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void lengthEndsAtTheZero();
    void copyWritesTextAndZero();
    void boundedCopyAlwaysEndsTheText();
    void boundedCopyOfAShorterText();
    void widensUnitsToWideCharacters();
    void narrowsWideCharactersWithoutAZero();
    void keepsTheLowByteOfUnits();
    void widensBytesAsSignedValues();
    void nullSources();
    void dividesNumbers_data();
    void dividesNumbers();
    void dividedPartsAreAppended();
    void noNumberIsNotDivided();
};

void tst_simtexts::lengthEndsAtTheZero()
{
    const unsigned short text[] = {'a', 0xD83D, 0xFFFF, 0, 'b', 0};
    QCOMPARE(unistrlen(text), 3);
    QCOMPARE(unistrlen(text + 3), 0);
}

void tst_simtexts::copyWritesTextAndZero()
{
    const unsigned short source[] = {'a', 0x0416, 0, 'b'};
    Units target(5, 0x7777);
    QCOMPARE(unistrcpy(target.data(), source), 2);
    QCOMPARE(target, (Units{'a', 0x0416, 0, 0x7777, 0x7777}));
    QCOMPARE(unistrcpy(target.data(), source + 2), 0);
    QCOMPARE(target, (Units{0, 0x0416, 0, 0x7777, 0x7777}));
}

void tst_simtexts::boundedCopyAlwaysEndsTheText()
{
    const unsigned short source[] = {1, 2, 3, 4, 5, 0};
    Units target(6, 0x7777);
    QCOMPARE(unistrncpy(target.data(), source, 3), 3);
    QCOMPARE(target, (Units{1, 2, 3, 0, 0x7777, 0x7777}));
    QCOMPARE(unistrncpy(target.data(), source, 0), 0);
    QCOMPARE(target, (Units{0, 2, 3, 0, 0x7777, 0x7777}));
}

void tst_simtexts::boundedCopyOfAShorterText()
{
    const unsigned short source[] = {1, 2, 0, 9, 9, 9};
    Units target(6, 0x7777);
    QCOMPARE(unistrncpy(target.data(), source, 5), 2);
    QCOMPARE(target, (Units{1, 2, 0, 0x7777, 0x7777, 0x7777}));
    QCOMPARE(unistrncpy(target.data(), source + 2, 5), 0);
    QCOMPARE(target, (Units{0, 2, 0, 0x7777, 0x7777, 0x7777}));
}

void tst_simtexts::widensUnitsToWideCharacters()
{
    const unsigned short source[] = {'a', 0xFFFF, 0};
    Wides target(4, L'?');
    QCOMPARE(unichars2wchars(target.data(), source), 2);
    QCOMPARE(target, (Wides{L'a', wchar_t(0xFFFF), 0, L'?'}));
}

void tst_simtexts::narrowsWideCharactersWithoutAZero()
{
    const wchar_t source[] = {L'a', wchar_t(0x12345), 0};
    Units target(4, 0x7777);
    QCOMPARE(wchars2unichars(target.data(), source), 2);
    QCOMPARE(target, (Units{'a', 0x2345, 0x7777, 0x7777}));
}

void tst_simtexts::keepsTheLowByteOfUnits()
{
    const unsigned short source[] = {'a', 0x0416, 0x0100, 0x00FF, 0};
    std::vector<char> target(6, '?');
    QCOMPARE(wstr2str(source, target.data()), 4);
    QCOMPARE(target, (std::vector<char>{'a', '\x16', '\0', '\xFF', '\0', '?'}));
}

void tst_simtexts::widensBytesAsSignedValues()
{
    Units target(7, 0x7777);
    QCOMPARE(str2wstr("a\x7F\x80\xE9\xFF", target.data()), 5);
    QCOMPARE(target, (Units{'a', 0x007F, 0xFF80, 0xFFE9, 0xFFFF, 0, 0x7777}));
}

void tst_simtexts::nullSources()
{
    QCOMPARE(unistrlen(nullptr), 0);
    Units units(2, 0x7777);
    QCOMPARE(wchars2unichars(units.data(), nullptr), 0);
    QCOMPARE(str2wstr(nullptr, units.data()), 0);
    QCOMPARE(units, Units(2, 0x7777));
    Wides wides(2, L'?');
    QCOMPARE(unichars2wchars(wides.data(), nullptr), 0);
    QCOMPARE(wides, Wides(2, L'?'));
    std::vector<char> bytes(2, '?');
    QCOMPARE(wstr2str(nullptr, bytes.data()), 0);
    QCOMPARE(bytes, std::vector<char>(2, '?'));
    QCOMPARE(unistrcpy(units.data(), nullptr), 0);
    QCOMPARE(units, (Units{0, 0x7777}));
    units = Units(2, 0x7777);
    QCOMPARE(unistrncpy(units.data(), nullptr, 5), 0);
    QCOMPARE(units, (Units{0, 0x7777}));
}

void tst_simtexts::dividesNumbers_data()
{
    QTest::addColumn<QByteArray>("number");
    QTest::addColumn<bool>("accepted");
    QTest::addColumn<QByteArray>("dial");
    QTest::addColumn<QByteArray>("tones");
    auto row = [](const char* name, const char* number, bool accepted, const char* dial,
                  const char* tones) {
        QTest::newRow(name) << QByteArray(number) << accepted << QByteArray(dial)
                            << QByteArray(tones);
    };
    row("empty", "", false, "", "");
    row("digits", "0123456789", true, "0123456789", "");
    row("international with tones", "+123p4#a", true, "+123", "4#A");
    row("star before the pause", "12*3", false, "12", "");
    row("hash before the pause", "#31#", false, "", "");
    row("letter before the pause", "1A", false, "1", "");
    row("small letter before the pause", "1d2", false, "1", "");
    row("plus alone", "+", true, "+", "");
    row("second plus", "++1", false, "+", "");
    row("plus after a digit", "1+2", false, "1", "");
    row("plus after the pause", "1p+2", false, "1", "");
    row("every pause mark", "1P2T3W4p5t6w7", true, "1", "234567");
    row("pause first", "p45", true, "", "45");
    row("pause last", "45w", true, "45", "");
    row("pause alone", "W", true, "", "");
    row("all tones", "1p0#*ABCD", true, "1", "0#*ABCD");
    row("tones in small letters", "1pabcd", true, "1", "ABCD");
    row("letter beyond D", "1p2E3", false, "1", "2");
    row("small letter beyond d", "1p2e3", false, "1", "2");
    row("blank", "12 34", false, "12", "");
    row("hyphen after the pause", "1p2-3", false, "1", "2");
    row("non-ASCII", "1\xC3\xA9", false, "1", "");
}

void tst_simtexts::dividesNumbers()
{
    QFETCH(QByteArray, number);
    std::string dial;
    std::string tones;
    QTEST(DivideNumber(number.constData(), dial, tones), "accepted");
    QTEST(QByteArray::fromStdString(dial), "dial");
    QTEST(QByteArray::fromStdString(tones), "tones");
}

void tst_simtexts::dividedPartsAreAppended()
{
    std::string dial = "x";
    std::string tones = "y";
    QVERIFY(DivideNumber("12p3", dial, tones));
    QVERIFY(DivideNumber("4p5", dial, tones));
    QCOMPARE(dial, std::string("x124"));
    QCOMPARE(tones, std::string("y35"));
}

void tst_simtexts::noNumberIsNotDivided()
{
    std::string dial;
    std::string tones;
    QVERIFY(!DivideNumber(nullptr, dial, tones));
}

QTEST_GUILESS_MAIN(tst_simtexts)
#include "tst_simtexts.moc"
