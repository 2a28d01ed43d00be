#include "valuesamples.h"

#include "support/logcapture.h"

#include <QtTest>

#include <climits>
#include <functional>

Q_DECLARE_METATYPE(std::function<void(CDataValue&)>)

/// Reading scalars out of values, with the warning of each wrong kind.
class tst_datavalueconversions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void acceptedConversionsAreSilent();
    void conversionsThatWarnAndConvert();
    void wrongKindsWarn_data();
    void wrongKindsWarn();
    void readsNumbersFromStringsLeniently();
    void readsDatesByTheFormat();
    void readsTextUpToTheFirstZeroByte();
};

void tst_datavalueconversions::acceptedConversionsAreSilent()
{
    LogCapture log;
    QCOMPARE(CDataValue(5).asInt(), 5);
    QCOMPARE(CDataValue(5u).asUInt(), 5u);
    QCOMPARE(CDataValue(2.5).asDouble(), 2.5);
    QCOMPARE(CDataValue(true).asBool(), true);
    QCOMPARE(CDataValue(pointer).asAddress(), pointer);
    QCOMPARE(CDataValue("x").asQString(), QString("x"));
    QCOMPARE(CDataValue("12").asLongLong(), 12LL);
    QCOMPARE(CDataValue("12").asUnsignedLong(), 12ul);
    QCOMPARE(CDataValue("01/02/2003").asQDate(), QDate(2003, 2, 1));
    QVERIFY(!CDataValue("2011-03-09").asQDate().isValid());
    QCOMPARE(log.lines(), QStringList());
}

void tst_datavalueconversions::conversionsThatWarnAndConvert()
{
    LogCapture log;
    const auto warned = [&log](const char* line) {
        const bool only = log.lines().size() == 1 && log.lines().first().endsWith(line);
        log.clear();
        return only;
    };
    QCOMPARE(CDataValue(3u).asInt(), 3);
    QVERIFY(warned(" DataValue/datavalue asInt "
                   "The value type is unsigned int value, convert to int! "));
    QCOMPARE(CDataValue(4294967295u).asInt(), -1);
    QVERIFY(warned("The value type is unsigned int value, convert to int! "));
    QCOMPARE(CDataValue(2147483648u).asInt(), INT_MIN);
    QVERIFY(warned("The value type is unsigned int value, convert to int! "));
    QCOMPARE(CDataValue(7).asUInt(), 7u);
    QVERIFY(warned(" DataValue/datavalue asUInt "
                   "The value type is int value, value >= 0, convert to unsigned int! "));
    QCOMPARE(CDataValue(0).asUInt(), 0u);
    QVERIFY(warned("value >= 0, convert to unsigned int! "));
    QCOMPARE(CDataValue(-5).asUInt(), 0u);
    QVERIFY(warned(" DataValue/datavalue asUInt "
                   "The value type is int value, value < 0, return unsigned int(0)! "));
}

void tst_datavalueconversions::wrongKindsWarn_data()
{
    using Check = std::function<void(CDataValue&)>;
    QTest::addColumn<Check>("check");
    QTest::addColumn<QList<int>>("accepted");
    QTest::addColumn<QString>("line");
    const auto row = [](const char* name, const Check& check, const QList<int>& accepted,
                        const char* message) {
        QTest::newRow(name) << check << accepted
                            << QString(" DataValue/datavalue %1 %2 ").arg(name, message);
    };
    row(
        "asInt", [](CDataValue& v) { QCOMPARE(v.asInt(), 0); }, {1, 2},
        "The value type is not int value, NULL_VALUE, return int(0)!");
    row(
        "asUInt", [](CDataValue& v) { QCOMPARE(v.asUInt(), 0u); }, {1, 2},
        "The value type is not unsigned int value, NULL_VALUE, return unsigned int(0)!");
    row(
        "asDouble", [](CDataValue& v) { QCOMPARE(v.asDouble(), 0.0); }, {3},
        "The value type is not double value, NULL_VALUE, return double(0.000000)!");
    row(
        "asBool", [](CDataValue& v) { QCOMPARE(v.asBool(), false); }, {5},
        "The value type is not bool value, NULL_VALUE, return bool(false)!");
    row(
        "asAddress",
        [](CDataValue& v) { QCOMPARE(v.asAddress(), static_cast<const void*>(nullptr)); }, {8},
        "The value type is not Address value, NULL_VALUE, return NULL!");
    row(
        "asQString", [](CDataValue& v) { QVERIFY(v.asQString().isNull()); }, {4},
        "The value type is not utf8 string, NULL_VALUE, return QString()!");
    row(
        "asLongLong", [](CDataValue& v) { QCOMPARE(v.asLongLong(), 0LL); }, {4},
        "The value type is not utf8 string, NULL_VALUE, return long long(0)!");
    row(
        "asUnsignedLong", [](CDataValue& v) { QCOMPARE(v.asUnsignedLong(), 0ul); }, {4},
        "The value type is not utf8 string, NULL_VALUE, return unsigned long(0)!");
    row(
        "asQDate", [](CDataValue& v) { QVERIFY(v.asQDate().isNull()); }, {4},
        "The value type is NULL_VALUE, return QDate(NULL)!");
}

void tst_datavalueconversions::wrongKindsWarn()
{
    QFETCH(std::function<void(CDataValue&)>, check);
    QFETCH(QList<int>, accepted);
    QFETCH(QString, line);
    LogCapture log;
    int wrongKinds = 0;
    for (NamedValue& sample : oneOfEveryKind()) {
        if (accepted.contains(sample.value.type()))
            continue;
        check(sample.value);
        ++wrongKinds;
    }
    const QStringList lines = log.lines();
    QCOMPARE(int(lines.size()), wrongKinds);
    for (const QString& logged : lines)
        QVERIFY2(logged.endsWith(line), qPrintable(logged));
}

void tst_datavalueconversions::readsNumbersFromStringsLeniently()
{
    QCOMPARE(CDataValue("  +12abc").asLongLong(), 12LL);
    QCOMPARE(CDataValue("").asLongLong(), 0LL);
    QCOMPARE(CDataValue("abc").asLongLong(), 0LL);
    QCOMPARE(CDataValue("0x10").asLongLong(), 0LL);
    QCOMPARE(CDataValue("99999999999999999999").asLongLong(), LLONG_MAX);
    QCOMPARE(CDataValue(" 7 8").asUnsignedLong(), 7ul);
    QCOMPARE(CDataValue("-1").asUnsignedLong(), 18446744073709551615ul);
    QCOMPARE(CDataValue("99999999999999999999").asUnsignedLong(), ULONG_MAX);
}

void tst_datavalueconversions::readsDatesByTheFormat()
{
    QCOMPARE(CDataValue("29/02/2012").asQDate(), QDate(2012, 2, 29));
    for (const char* text : {"29/02/2011", "1/2/2003x", "2011-03-09", "", "32/01/2000"})
        QVERIFY2(!CDataValue(text).asQDate().isValid(), text);
}

void tst_datavalueconversions::readsTextUpToTheFirstZeroByte()
{
    QCOMPARE(CDataValue(std::string("ab\0cd", 5)).asQString(), QString("ab"));
    const QString empty = CDataValue("").asQString();
    QVERIFY(empty.isEmpty());
    QVERIFY(!empty.isNull());
}

QTEST_APPLESS_MAIN(tst_datavalueconversions)

#include "tst_datavalueconversions.moc"
