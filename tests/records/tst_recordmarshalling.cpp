#include "goldenrecords.h"
#include "recordsundertest.h"

#include "support/logcapture.h"

#include <QtTest>

#include <algorithm>
#include <map>
#include <memory>
#include <utility>

// What holds for every record: writing, reading, and reading what is not as it should be.
class tst_recordmarshalling : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanupTestCase() { m_log.reset(); }

    void startsEmpty_data() { addRecords(); }
    void startsEmpty();
    void writesEachMemberUnderItsKey_data() { addRecords(); }
    void writesEachMemberUnderItsKey();
    void readsBackWhatItWrote_data() { addRecords(); }
    void readsBackWhatItWrote();
    void readsBackThroughText_data() { addRecords(); }
    void readsBackThroughText();
    void writingLeavesTheRecordAlone_data() { addRecords(); }
    void writingLeavesTheRecordAlone();
    void writesEmptyListsAndHashesAsNull_data() { addRecords(); }
    void writesEmptyListsAndHashesAsNull();
    void readsNothingAsAnEmptyRecord_data() { addRecords(); }
    void readsNothingAsAnEmptyRecord();
    void readsAMissingKeyAsEmpty_data() { addRecords(); }
    void readsAMissingKeyAsEmpty();
    void readsAWrongKindAsEmpty_data() { addRecords(); }
    void readsAWrongKindAsEmpty();
    void readsElementsOfTheWrongKindAsEmpty_data() { addRecords(); }
    void readsElementsOfTheWrongKindAsEmpty();
    void readingTwiceDoublesListsOnly_data() { addRecords(); }
    void readingTwiceDoublesListsOnly();
    void writingKeepsOtherMembers_data() { addRecords(); }
    void writingKeepsOtherMembers();
    void writingIntoAnotherKindChangesNothing_data() { addRecords(); }
    void writingIntoAnotherKindChangesNothing();
    void comparesEveryMember_data() { addRecords(); }
    void comparesEveryMember();

private:
    static void addRecords();
    std::unique_ptr<RecordObject> create() const;
    std::unique_ptr<RecordObject> readFrom(CDataValue& data) const;
    const std::vector<GoldenField>& fields() const;

    std::unique_ptr<LogCapture> m_log;
    int m_rows = 0;
};

void tst_recordmarshalling::init()
{
    // A fresh log now and then: reading one costs its length, starting one costs a thread.
    if (m_rows++ % 25 == 0) {
        m_log.reset();
        m_log = std::make_unique<LogCapture>();
    }
}

void tst_recordmarshalling::addRecords()
{
    QTest::addColumn<QString>("name");
    for (const GoldenRecord& record : goldenRecords())
        QTest::newRow(qPrintable(record.name)) << record.name;
}

std::unique_ptr<RecordObject> tst_recordmarshalling::create() const
{
    return recordUnderTest(QString::fromLatin1(QTest::currentDataTag())).create();
}

std::unique_ptr<RecordObject> tst_recordmarshalling::readFrom(CDataValue& data) const
{
    auto record = create();
    record->read(data);
    return record;
}

const std::vector<GoldenField>& tst_recordmarshalling::fields() const
{
    return goldenRecord(QString::fromLatin1(QTest::currentDataTag())).fields;
}

/// The text of a value: equal texts mean equal kinds, keys and contents.
static QString textOf(const CDataValue& value)
{
    return value.parseToQString(FAST_STYLE);
}

static bool isList(const GoldenField& field)
{
    return field.kind.startsWith(QStringLiteral("array of "));
}

static bool isHash(const GoldenField& field)
{
    return field.kind == QStringLiteral("map of strings");
}

/// Whether reading adds to what the field holds, itself or in a record nested in it.
static bool isAddedTo(const GoldenField& field)
{
    if (field.kind != QStringLiteral("map"))
        return isList(field) || isHash(field);
    const auto& nested = goldenRecord(field.type).fields;
    return std::any_of(nested.begin(), nested.end(), isAddedTo);
}

void tst_recordmarshalling::startsEmpty()
{
    auto record = create();
    auto reset = create();
    for (const Member& member : reset->members()) {
        member.fill(1);
        member.reset();
    }
    QVERIFY(record->equals(*reset));
    QCOMPARE(textOf(record->travelling()), textOf(reset->travelling()));
}

void tst_recordmarshalling::writesEachMemberUnderItsKey()
{
    // One member at a time, so that no two can be mixed up.
    for (std::size_t i = 0; i < fields().size(); ++i) {
        auto record = create();
        const Member member = record->members().at(i);
        member.fill(int(i));
        CDataValue data;
        record->write(data);
        QCOMPARE(data.type(), MAP_VALUE);
        QCOMPARE(data.mapGetKeys().size(), fields().size());
        QCOMPARE(textOf(data.mapGet(fields()[i].key)), textOf(member.travelling()));
        QCOMPARE(textOf(data), textOf(record->travelling()));
    }
}

void tst_recordmarshalling::readsBackWhatItWrote()
{
    for (std::size_t i = 0; i < fields().size(); ++i) {
        auto record = create();
        record->members().at(i).fill(int(i));
        CDataValue data;
        record->write(data);
        m_log->clear();
        const auto read = readFrom(data);
        QVERIFY(read->equals(*record));
        QCOMPARE(textOf(read->travelling()), textOf(record->travelling()));
        QCOMPARE(m_log->lines(), QStringList());
    }
}

void tst_recordmarshalling::readsBackThroughText()
{
    auto record = create();
    record->fill(7);
    CDataValue data;
    record->write(data);
    for (ENUM_STYLE style : {FAST_STYLE, STYLED_STYLE}) {
        CDataValue parsed;
        QVERIFY(CDataValue::parseToDataValue(data.parseToQString(style), parsed));
        QVERIFY(readFrom(parsed)->equals(*record));
    }
}

void tst_recordmarshalling::writingLeavesTheRecordAlone()
{
    auto record = create();
    record->fill(3);
    auto same = create();
    same->fill(3);
    CDataValue data;
    record->write(data);
    QVERIFY(record->equals(*same));
}

void tst_recordmarshalling::writesEmptyListsAndHashesAsNull()
{
    CDataValue data;
    create()->write(data);
    for (const GoldenField& field : fields()) {
        QVERIFY(data.mapIsMember(field.key));
        QCOMPARE(data.mapGet(field.key).isNull(), isList(field) || isHash(field));
    }
}

/// How many warnings of each reader the reading of a record without any key gives.
static void countWarnings(const QString& name, std::map<QString, int>& warnings)
{
    static const std::map<QString, QString> texts = {
        {"number", "asInt The value type is not int value, NULL_VALUE, return int(0)!"},
        {"boolean", "asBool The value type is not bool value, NULL_VALUE, return bool(false)!"},
        {"string", "asQString The value type is not utf8 string, NULL_VALUE, return QString()!"},
        {"64-bit number as decimal string",
         "asLongLong The value type is not utf8 string, NULL_VALUE, return long long(0)!"},
        {"unsigned number as decimal string",
         "asUnsignedLong The value type is not utf8 string, NULL_VALUE, return unsigned long(0)!"},
    };
    for (const GoldenField& field : goldenRecord(name).fields) {
        if (field.kind == QStringLiteral("map"))
            countWarnings(field.type, warnings);
        else if (!isList(field) && !isHash(field))
            ++warnings[texts.at(field.kind)];
    }
}

void tst_recordmarshalling::readsNothingAsAnEmptyRecord()
{
    std::map<QString, int> warnings;
    countWarnings(QString::fromLatin1(QTest::currentDataTag()), warnings);
    int expected = 0;
    for (const auto& warning : warnings)
        expected += warning.second;
    for (CDataValue& data :
         std::vector<CDataValue>{CDataValue(NULL_VALUE), CDataValue(MAP_VALUE), CDataValue(5),
                                 CDataValue("text"), CDataValue(ARRAY_VALUE)}) {
        const QString before = textOf(data);
        m_log->clear();
        auto record = create();
        for (std::size_t i = 0; i < fields().size(); ++i) {
            if (!isAddedTo(fields()[i]))
                record->members()[i].fill(1); // is overwritten
        }
        record->read(data);
        QCOMPARE(m_log->lines().size(), expected);
        for (const auto& warning : warnings)
            QCOMPARE(m_log->count("DataValue/datavalue " + warning.first), warning.second);
        QVERIFY(record->equals(*create()));
        QCOMPARE(textOf(data), before);
    }
}

void tst_recordmarshalling::readsAMissingKeyAsEmpty()
{
    for (std::size_t i = 0; i < fields().size(); ++i) {
        auto record = create();
        record->fill(1);
        CDataValue data;
        record->write(data);
        data.mapRemove(fields()[i].key, true);
        record->members().at(i).reset();
        QVERIFY2(readFrom(data)->equals(*record), qPrintable(fields()[i].key));
    }
}

/// Values of every kind; with the kinds that a field reads from left out.
static std::vector<CDataValue> valuesThatAreNo(const GoldenField& field)
{
    CDataValue array;
    array.arrayAppend(CDataValue(1), true);
    CDataValue map;
    map.mapSet("nOther", CDataValue(1), true);
    std::vector<CDataValue> values = {CDataValue(NULL_VALUE), CDataValue(2.5)};
    const bool readsText = field.kind.endsWith(QStringLiteral("string"));
    if (field.kind != QStringLiteral("number")) {
        values.emplace_back(7);
        values.emplace_back(7u);
    }
    if (field.kind != QStringLiteral("boolean"))
        values.emplace_back(true);
    if (!readsText)
        values.emplace_back("7");
    if (!isList(field))
        values.push_back(array);
    if (!isHash(field))
        values.push_back(map);
    return values;
}

void tst_recordmarshalling::readsAWrongKindAsEmpty()
{
    for (std::size_t i = 0; i < fields().size(); ++i) {
        for (const CDataValue& wrong : valuesThatAreNo(fields()[i])) {
            auto record = create();
            record->fill(1);
            CDataValue data;
            record->write(data);
            data.mapSet(fields()[i].key, wrong, true);
            record->members().at(i).reset();
            m_log->clear();
            QVERIFY2(readFrom(data)->equals(*record), qPrintable(fields()[i].key));
            if (!isList(fields()[i]) && !isHash(fields()[i]))
                QVERIFY(!m_log->lines().isEmpty());
            else
                QCOMPARE(m_log->lines(), QStringList());
        }
    }
}

void tst_recordmarshalling::readsElementsOfTheWrongKindAsEmpty()
{
    for (std::size_t i = 0; i < fields().size(); ++i) {
        if (!isList(fields()[i]))
            continue;
        CDataValue array;
        array.arrayAppend(CDataValue(true), true);
        array.arrayAppend(CDataValue(NULL_VALUE), true);
        auto record = create();
        CDataValue data;
        data.mapSet(fields()[i].key, array, true);
        record->read(data);
        CDataValue written;
        record->write(written);
        CDataValue& list = written.mapGet(fields()[i].key);
        QCOMPARE(list.arrayCount(), 2u);
        QCOMPARE(textOf(list.arrayGet(0)), textOf(list.arrayGet(1)));
        if (fields()[i].kind == QStringLiteral("array of numbers"))
            QCOMPARE(textOf(list), QStringLiteral("[0,0]\n"));
        else if (fields()[i].kind == QStringLiteral("array of strings"))
            QCOMPARE(textOf(list), QStringLiteral("[\"\",\"\"]\n"));
        else
            QCOMPARE(list.arrayGet(0).type(), MAP_VALUE);
    }
}

void tst_recordmarshalling::readingTwiceDoublesListsOnly()
{
    auto record = create();
    record->fill(1);
    CDataValue data;
    record->write(data);
    auto twice = readFrom(data);
    twice->read(data);
    const std::vector<Member> once = record->members();
    const std::vector<Member> again = twice->members();
    for (std::size_t i = 0; i < fields().size(); ++i) {
        CDataValue expected = once[i].travelling();
        if (isList(fields()[i])) {
            for (unsigned int index : {0u, 1u})
                expected.arrayAppend(CDataValue(expected.arrayGet(index)), true);
            QCOMPARE(expected.arrayCount(), 4u);
        }
        QCOMPARE(textOf(again[i].travelling()), textOf(expected));
    }
}

void tst_recordmarshalling::writingKeepsOtherMembers()
{
    auto record = create();
    record->fill(1);
    CDataValue data;
    data.mapSet("anotherKey", CDataValue("stays"), true);
    for (const GoldenField& field : fields())
        data.mapSet(field.key, CDataValue("is replaced"), true);
    record->write(data);
    QCOMPARE(data.mapGetKeys().size(), fields().size() + 1);
    QCOMPARE(data.mapGet("anotherKey").asQString(), QStringLiteral("stays"));
    data.mapRemove("anotherKey", true);
    QCOMPARE(textOf(data), textOf(record->travelling()));
}

void tst_recordmarshalling::writingIntoAnotherKindChangesNothing()
{
    auto record = create();
    record->fill(1);
    for (CDataValue& data :
         std::vector<CDataValue>{CDataValue(5), CDataValue(5u), CDataValue(0.5), CDataValue("text"),
                                 CDataValue(true), CDataValue(ARRAY_VALUE)}) {
        const QString before = textOf(data);
        record->write(data);
        QCOMPARE(textOf(data), before);
    }
}

void tst_recordmarshalling::comparesEveryMember()
{
    for (std::size_t i = 0; i < fields().size(); ++i) {
        auto left = create();
        auto right = create();
        QVERIFY(left->equals(*right));
        left->members().at(i).fill(1);
        QVERIFY2(!left->equals(*right), qPrintable(fields()[i].key));
        QVERIFY2(!right->equals(*left), qPrintable(fields()[i].key));
        right->members().at(i).fill(1);
        QVERIFY2(left->equals(*right), qPrintable(fields()[i].key));
        if (fields()[i].kind == QStringLiteral("boolean"))
            continue;
        right->members().at(i).reset();
        right->members().at(i).fill(2); // other content, as many elements
        QVERIFY2(!left->equals(*right), qPrintable(fields()[i].key));
    }
}

QTEST_GUILESS_MAIN(tst_recordmarshalling)
#include "tst_recordmarshalling.moc"
