// Numbers in the process of a program that has made a language's form of numbers the global one.
#include "DataValue/datavalue.h"

#include <QtTest>

#include <locale>

namespace {

/// 1.234,5
class Comma : public std::numpunct<char>
{
protected:
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

/// 1234,5
class CommaOnly : public Comma
{
protected:
    std::string do_grouping() const override { return ""; }
};

QString readBack(const QByteArray& text)
{
    CDataValue value("before");
    if (!CDataValue::parseToDataValue(text.constData(), value))
        return "refused, " + value.asQString();
    return value.parseToQString(STYLED_STYLE);
}

} // namespace

class tst_numberlocale : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { std::locale::global(std::locale::classic()); }
    void readsWhatItReadsInThePlainLocale_data();
    void readsWhatItReadsInThePlainLocale();
    void readsFractions_data();
    void readsFractions();
    void writesPlainNumbers();
};

void tst_numberlocale::readsWhatItReadsInThePlainLocale_data()
{
    QTest::addColumn<QByteArray>("text");
    for (const char* text : {"[1.5]",
                             "/**/[1.5]",
                             "/* 2.5 */ {\"a 1.5\" : -0.25e-3, \"b\" : 7, \"c\" : 1e5}",
                             "[1.5,]",
                             "// 1.5\n[1e400]",
                             "/**/[1.5e]",
                             "/**/[1.]",
                             "/**/[1.5.5]",
                             "/**/[1e-400]",
                             "/**/[-1.5e-400]",
                             "/**/[12345678901234567890.5]",
                             "/**/[123456789012345678901234567890]",
                             "/**/[4294967289, 4294967290, -2147483640]",
                             "{\"a\" : \"\\\"1.5\" /* 1.5 */}",
                             "/**/[0.1, 1.7976931348623157e308]",
                             "[1.5] // 1,5",
                             "/**/1.5",
                             "/**/[\"1.5",
                             "/* 1.5",
                             "/**/[-]",
                             "/**/[-.5]",
                             "/**/[01.5]",
                             "/**/[1.5-2]"})
        QTest::newRow(text) << QByteArray(text);
}

void tst_numberlocale::readsWhatItReadsInThePlainLocale()
{
    QFETCH(QByteArray, text);
    const QString plain = readBack(text);
    std::locale::global(std::locale(std::locale::classic(), new Comma));
    QCOMPARE(readBack(text), plain);
    std::locale::global(std::locale(std::locale::classic(), new CommaOnly));
    QCOMPARE(readBack(text), plain);
}

void tst_numberlocale::readsFractions_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<double>("number");
    QTest::newRow("point") << QByteArray("/**/[1.5]") << 1.5;
    QTest::newRow("exponent") << QByteArray("/**/[-25e-2]") << -0.25;
    QTest::newRow("shortest") << QByteArray("/**/[0.1]") << 0.1;
}

void tst_numberlocale::readsFractions()
{
    QFETCH(QByteArray, text);
    QFETCH(double, number);
    std::locale::global(std::locale(std::locale::classic(), new Comma));
    CDataValue value;
    QVERIFY(CDataValue::parseToDataValue(text.constData(), value));
    QVERIFY(value.arrayGet(0).isDouble());
    QCOMPARE(value.arrayGet(0).asDouble(), number);
}

void tst_numberlocale::writesPlainNumbers()
{
    std::locale::global(std::locale(std::locale::classic(), new Comma));
    CDataValue list(ARRAY_VALUE);
    list.arrayAppend(CDataValue(1234567), true);
    list.arrayAppend(CDataValue(1234.5), true);
    QCOMPARE(list.parseToQString(FAST_STYLE), QString("[1234567,1234.5]\n"));
}

QTEST_APPLESS_MAIN(tst_numberlocale)
#include "tst_numberlocale.moc"
