#include "goldenrecords.h"
#include "recordsundertest.h"

#include "records/recordcatalogue.h"

#include <QRegularExpression>
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
    void listNamesEachMemberByItsKey_data() { addFiles(); }
    void listNamesEachMemberByItsKey();
    void headerSaysWhatTheCatalogueSays_data() { addFiles(); }
    void headerSaysWhatTheCatalogueSays();
    void codesAndPasswordsAreSecret();

private:
    static void addRecords();
    static void addFiles();
    static QString contentOf(const QString& name);
    static const RecordInfo* catalogued(const QString& name);
};

void tst_recordvocabulary::addRecords()
{
    QTest::addColumn<QString>("name");
    for (const GoldenRecord& record : goldenRecords())
        QTest::newRow(qPrintable(record.name)) << record.name;
}

void tst_recordvocabulary::addFiles()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<int>("fieldCount");
    QTest::newRow("connection") << "connectionrecords" << 110;
    QTest::newRow("message") << "messagerecords" << 144;
    QTest::newRow("phonebook") << "phonebookrecords" << 60;
    QTest::newRow("diagnostic") << "diagnosticrecords" << 30;
}

QString tst_recordvocabulary::contentOf(const QString& name)
{
    QFile file(QStringLiteral(RECORDS_FOLDER "/") + name);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("cannot read %s", qPrintable(name));
    return QString::fromUtf8(file.readAll());
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

void tst_recordvocabulary::listNamesEachMemberByItsKey()
{
    QFETCH(QString, file);
    QFETCH(int, fieldCount);
    static const QRegularExpression call(
        QStringLiteral("field(?:\\.secret)?\\(\\s*\"(\\w+)\",\\s*record\\.(\\w+),"));
    auto match = call.globalMatch(contentOf(file + QStringLiteral(".cpp")));
    int found = 0;
    for (; match.hasNext(); ++found) {
        const QRegularExpressionMatch field = match.next();
        QCOMPARE(field.captured(2), field.captured(1));
    }
    QCOMPARE(found, fieldCount);
}

void tst_recordvocabulary::headerSaysWhatTheCatalogueSays()
{
    QFETCH(QString, file);
    QFETCH(int, fieldCount);
    // Comments that go on in the next line are joined first.
    QString header = contentOf(file + QStringLiteral(".h"));
    header.replace(QRegularExpression(QStringLiteral("\n +///< ")), QStringLiteral(" "));
    header.replace(QRegularExpression(QStringLiteral("(?<=[^\n])\n/// ")), QStringLiteral(" "));
    static const QRegularExpression structure(
        QStringLiteral("\n/// ([^\n]*)\nstruct (\\w+)\n\\{\n([^}]*)\\};"));
    static const QRegularExpression member(QStringLiteral("(\\w+)(?: = \\w+)?; +///< ([^\n]*)\n"));
    int found = 0;
    for (auto structures = structure.globalMatch(header); structures.hasNext();) {
        const QRegularExpressionMatch declared = structures.next();
        const RecordInfo* record = catalogued(declared.captured(2));
        QVERIFY2(record, qPrintable(declared.captured(2)));
        QCOMPARE(declared.captured(1), QString::fromLatin1(record->meaning));
        auto members = member.globalMatch(declared.captured(3));
        for (const RecordFieldInfo& field : record->fields) {
            QVERIFY2(members.hasNext(), field.key);
            const QRegularExpressionMatch documented = members.next();
            QCOMPARE(documented.captured(1), QString::fromLatin1(field.key));
            QCOMPARE(documented.captured(2), QString::fromLatin1(field.meaning));
            ++found;
        }
        QVERIFY(!members.hasNext());
    }
    QCOMPARE(found, fieldCount);
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
