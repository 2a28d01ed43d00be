#include "goldenrecords.h"
#include "recordsundertest.h"

#include "records/recordcatalogue.h"

#include <QtTest>

#include <algorithm>

// Every record, key, kind, type and order as fixed, and every list of fields complete.
class tst_recordvocabulary : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void hasTheRecordsInOrder();
    void hasTheKeysAndKindsInOrder_data() { addRecords(); }
    void hasTheKeysAndKindsInOrder();
    void membersHaveTheFixedTypes_data() { addRecords(); }
    void membersHaveTheFixedTypes();
    void everyMemberIsInTheList_data() { addRecords(); }
    void everyMemberIsInTheList();
    void tellsHeadersAndMeanings();
    void codesAndPasswordsAreSecret();

private:
    static void addRecords();
    static const RecordInfo* catalogued(const QString& name);
};

void tst_recordvocabulary::addRecords()
{
    QTest::addColumn<QString>("name");
    for (const GoldenRecord& record : goldenRecords())
        QTest::newRow(qPrintable(record.name)) << record.name;
}

const RecordInfo* tst_recordvocabulary::catalogued(const QString& name)
{
    for (const RecordInfo& record : recordCatalogue()) {
        if (name == QLatin1String(record.name))
            return &record;
    }
    return nullptr;
}

void tst_recordvocabulary::hasTheRecordsInOrder()
{
    QStringList fixed;
    for (const GoldenRecord& record : goldenRecords())
        fixed << record.name;
    QCOMPARE(fixed.size(), 98);
    QStringList present;
    for (const RecordInfo& record : recordCatalogue())
        present << QString::fromLatin1(record.name);
    QCOMPARE(present, fixed);
    QStringList tested;
    for (const RecordUnderTest& record : recordsUnderTest())
        tested << record.name;
    QCOMPARE(tested, fixed);
}

static QString kindOf(const RecordFieldInfo& field)
{
    switch (field.kind) {
    case RecordValueKind::Number:
        return QStringLiteral("number");
    case RecordValueKind::Boolean:
        return QStringLiteral("boolean");
    case RecordValueKind::Text:
        return QStringLiteral("string");
    case RecordValueKind::LongNumber:
        return QStringLiteral("64-bit number as decimal string");
    case RecordValueKind::UnsignedNumber:
        return QStringLiteral("unsigned number as decimal string");
    case RecordValueKind::Record:
        return QStringLiteral("map");
    case RecordValueKind::TextMap:
        return QStringLiteral("map of strings");
    case RecordValueKind::List:
        break;
    }
    if (field.elementKind == RecordValueKind::Record)
        return QStringLiteral("array of maps");
    if (field.elementKind == RecordValueKind::Number)
        return QStringLiteral("array of numbers");
    return QStringLiteral("array of strings");
}

/// The record that a type names: "X" of "X" and of "QList<X>"; empty for other types.
static QString recordIn(const QString& type)
{
    const QString inner = type.mid(type.indexOf(QLatin1Char('<')) + 1).remove(QLatin1Char('>'));
    const auto& all = goldenRecords();
    const bool isRecord = std::any_of(
        all.begin(), all.end(), [&](const GoldenRecord& record) { return record.name == inner; });
    return isRecord ? inner : QString();
}

void tst_recordvocabulary::hasTheKeysAndKindsInOrder()
{
    QFETCH(QString, name);
    QStringList fixed;
    for (const GoldenField& field : goldenRecord(name).fields)
        fixed << field.key + QStringLiteral(": ") + field.kind + QLatin1Char(' ') +
                     recordIn(field.type);
    const RecordInfo* record = catalogued(name);
    QVERIFY(record);
    QStringList present;
    for (const RecordFieldInfo& field : record->fields)
        present << QString::fromLatin1(field.key) + QStringLiteral(": ") + kindOf(field) +
                       QLatin1Char(' ') + QString::fromLatin1(field.record);
    QCOMPARE(present, fixed);
}

void tst_recordvocabulary::membersHaveTheFixedTypes()
{
    QFETCH(QString, name);
    QStringList fixed;
    for (const GoldenField& field : goldenRecord(name).fields) {
        QString type = field.type;
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
        type.replace(QStringLiteral("QVector"), QStringLiteral("QList")); // one type since Qt 6
#endif
        fixed << type;
    }
    QStringList present;
    const auto object = recordUnderTest(name).create();
    for (const Member& member : object->members())
        present << member.type;
    QCOMPARE(present, fixed);
}

void tst_recordvocabulary::everyMemberIsInTheList()
{
    QFETCH(QString, name);
    QCOMPARE(catalogued(name)->fields.size(), recordUnderTest(name).create()->members().size());
}

void tst_recordvocabulary::tellsHeadersAndMeanings()
{
    const auto meaningOf = [](const char* name, const char* key) {
        for (const RecordFieldInfo& field : catalogued(name)->fields) {
            if (QLatin1String(field.key) == QLatin1String(key))
                return QString::fromUtf8(field.meaning);
        }
        return QString();
    };
    QCOMPARE(catalogued("BLNetRegState")->header, "records/connectionrecords.h");
    QCOMPARE(catalogued("BLUssdReport")->header, "records/messagerecords.h");
    QCOMPARE(catalogued("PBItemExternal")->header, "records/phonebookrecords.h");
    QCOMPARE(catalogued("BLCancelMessage")->header, "records/diagnosticrecords.h");
    QCOMPARE(catalogued("BLSmsValidPeriod")->meaning,
             "How long the network tries to deliver a message (3GPP TS 23.040). All four are "
             "numbers, the flag included.");
    QCOMPARE(meaningOf("BLConnectionDialUp", "strNumber"),
             QString("Number to dial, for example \"*99#\""));
    QCOMPARE(meaningOf("BLPINChangeInfo", "strOldPin"),
             QString("The PIN so far, 4 to 8 digits; a secret"));
}

void tst_recordvocabulary::codesAndPasswordsAreSecret()
{
    QStringList secrets;
    for (const RecordInfo& record : recordCatalogue()) {
        for (const RecordFieldInfo& field : record.fields) {
            if (field.secret)
                secrets << QString::fromLatin1(record.name) + QLatin1Char('.') +
                               QLatin1String(field.key);
        }
    }
    QCOMPARE(secrets,
             (QStringList{"BLPINVerifyPukInfo.strPUK", "BLPINVerifyPukInfo.strNewPin",
                          "BLPINChangeInfo.strOldPin", "BLPINChangeInfo.strNewPin",
                          "BLPINEnableInfo.strPinCode", "BLLockChangeInfo.strOldLockCode",
                          "BLLockChangeInfo.strNewLockCode", "BLLockEnableInfo.strLockCode",
                          "BLProUserNameAndPwd.strPwd", "BLConnectionDialUp.strPassWord"}));
}

QTEST_GUILESS_MAIN(tst_recordvocabulary)
#include "tst_recordvocabulary.moc"
