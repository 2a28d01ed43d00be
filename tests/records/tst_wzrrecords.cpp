#include "goldenrecords.h"

#include "support/childprocess.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

// The tool that prints the vocabulary, and the page made by it.
class tst_wzrrecords : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void pageIsUpToDate();
    void definesEveryRecord();
    void keepsTheOrderOfKeys();
    void definesOneRecordWithWhatItHolds();
    void definesEachKind_data();
    void definesEachKind();
    void listsTheNames();
    void tellsItsUsageAndVersion();
    void manualNamesEveryOption();
    void refusesAnUnknownRecord();
    void refusesWrongArguments_data();
    void refusesWrongArguments();
    void failsWhenItCannotWrite();
};

using Output = ChildProcess::Result;

static Output run(const QStringList& arguments, const QString& outputFile = QString())
{
    return ChildProcess::run(HELPER_WZRRECORDS, arguments, {QString(), QString(), outputFile});
}

static QJsonObject schema(const QStringList& arguments)
{
    const Output output = run(arguments);
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(output.out, &error);
    if (output.code != 0 || error.error != QJsonParseError::NoError)
        qFatal("no JSON: %s", qPrintable(error.errorString()));
    return document.object();
}

static QJsonObject definitionOf(const char* record, const char* key)
{
    static const QJsonObject all = schema({});
    return all[QLatin1String("$defs")][QLatin1String(record)][QLatin1String("properties")]
              [QLatin1String(key)]
                  .toObject();
}

void tst_wzrrecords::pageIsUpToDate()
{
    QFile page(QStringLiteral(RECORDS_PAGE));
    QVERIFY(page.open(QIODevice::ReadOnly));
    const Output output = run({"--markdown"});
    QCOMPARE(output.code, 0);
    QVERIFY2(page.readAll() == output.out,
             "docs/records.md is out of date: wzrrecords --markdown > docs/records.md");
}

void tst_wzrrecords::definesEveryRecord()
{
    const QJsonObject all = schema({});
    QCOMPARE(all[QLatin1String("$schema")].toString(),
             QStringLiteral("https://json-schema.org/draft/2020-12/schema"));
    const QJsonObject definitions = all[QLatin1String("$defs")].toObject();
    QCOMPARE(definitions.size(), 98);
    for (const GoldenRecord& record : goldenRecords()) {
        const QJsonObject definition = definitions[record.name].toObject();
        QCOMPARE(definition[QLatin1String("type")].toString(), QStringLiteral("object"));
        QVERIFY(!definition[QLatin1String("description")].toString().isEmpty());
        const QJsonObject properties = definition[QLatin1String("properties")].toObject();
        QCOMPARE(std::size_t(properties.size()), record.fields.size());
        QStringList required;
        for (const GoldenField& field : record.fields) {
            QVERIFY2(properties.contains(field.key), qPrintable(field.key));
            if (!field.type.contains(QLatin1Char('<')))
                required << field.key;
        }
        QCOMPARE(definition[QLatin1String("required")].toArray(),
                 QJsonArray::fromStringList(required));
    }
}

void tst_wzrrecords::keepsTheOrderOfKeys()
{
    const QByteArray text = run({"BLSmsMoveReq"}).out;
    const auto ref = text.indexOf("\"nRef\":");
    const auto copy = text.indexOf("\"blCopy\":");
    const auto store = text.indexOf("\"nToStoreIn\":");
    QVERIFY(ref > 0 && ref < copy && copy < store);
}

void tst_wzrrecords::definesOneRecordWithWhatItHolds()
{
    const QJsonObject one = schema({"BLPbAddSingleItemRes"});
    QCOMPARE(one[QLatin1String("$ref")].toString(), QStringLiteral("#/$defs/BLPbAddSingleItemRes"));
    QCOMPARE(one[QLatin1String("$defs")].toObject().keys(),
             (QStringList{"BLPbAddSingleItemRes", "BLPbItem"}));
    QCOMPARE(schema({"BLDeleteSmsReq"})[QLatin1String("$defs")].toObject().keys(),
             (QStringList{"BLDeleteItemInfo", "BLDeleteSmsReq"}));
}

void tst_wzrrecords::definesEachKind_data()
{
    QTest::addColumn<QByteArray>("record");
    QTest::addColumn<QByteArray>("key");
    QTest::addColumn<QByteArray>("definition");
    const auto row = [](const char* kind, const char* record, const char* key,
                        const char* definition) {
        QTest::newRow(kind) << QByteArray(record) << QByteArray(key) << QByteArray(definition);
    };
    row("number", "BLCallVolume", "nIn",
        R"({"description": "Level of the microphone", "type": "integer",
            "minimum": -2147483648, "maximum": 2147483647})");
    row("boolean", "BLSmsMoveReq", "blCopy",
        R"({"description": "Whether it is copied instead of moved", "type": "boolean"})");
    row("text", "BLSetPDPContext", "strPdpType",
        R"({"description": "Packet data protocol, for example \"IP\"", "type": "string"})");
    row("64-bit number", "BLConnectionStatistics", "dwByteSent",
        R"({"description": "Bytes sent", "type": "string", "pattern": "^-?[0-9]{1,19}$"})");
    row("unsigned number", "SmsSaveNumberToPB", "nMainID",
        R"({"description": "Main identifier of the request", "type": "string",
            "pattern": "^[0-9]{1,20}$"})");
    row("record", "BLNewSmsReport", "tListItem",
        R"({"description": "The message", "$ref": "#/$defs/BLSmsListItem"})");
    row("list of records", "TBLCallState", "lstState",
        R"({"description": "One entry per call", "type": ["array", "null"],
            "items": {"$ref": "#/$defs/TBLCallItemState"}})");
    row("list of numbers", "BLSmsDeleteReq", "vRef",
        R"({"description": "References of the messages", "type": ["array", "null"],
            "items": {"type": "integer", "minimum": -2147483648, "maximum": 2147483647}})");
    row("list of texts", "PBFindMessageCnf", "results",
        R"({"description": "Texts found", "type": ["array", "null"],
            "items": {"type": "string"}})");
    row("texts by key", "BLPbItem", "contents",
        R"({"description": "Texts of the entry by field name", "type": ["object", "null"],
            "additionalProperties": {"type": "string"}})");
}

void tst_wzrrecords::definesEachKind()
{
    QFETCH(QByteArray, record);
    QFETCH(QByteArray, key);
    QFETCH(QByteArray, definition);
    const QJsonObject expected = QJsonDocument::fromJson(definition).object();
    QVERIFY(!expected.isEmpty());
    QCOMPARE(definitionOf(record.constData(), key.constData()), expected);
}

void tst_wzrrecords::listsTheNames()
{
    QByteArray names;
    for (const GoldenRecord& record : goldenRecords())
        names += record.name.toLatin1() + '\n';
    QCOMPARE(run({"--list"}).out, names);
}

void tst_wzrrecords::tellsItsUsageAndVersion()
{
    const Output help = run({"--help"});
    QCOMPARE(help.code, 0);
    QVERIFY(help.out.startsWith("Usage: wzrrecords"));
    for (const char* option : {"--list", "--markdown", "--help", "--version"})
        QVERIFY2(help.out.contains(option), option);
    QCOMPARE(help.err, QByteArray());
    const Output version = run({"--version"});
    QCOMPARE(version.code, 0);
    QCOMPARE(version.out, QByteArray("wzrrecords " PROJECT_VERSION "\n"));
}

void tst_wzrrecords::manualNamesEveryOption()
{
    QFile page(QStringLiteral(MANUAL_PAGE));
    QVERIFY(page.open(QIODevice::ReadOnly));
    const QByteArray manual = page.readAll();
    for (const char* option : {"\\-\\-list", "\\-\\-markdown", "\\-\\-help", "\\-\\-version"})
        QVERIFY2(manual.contains(QByteArray(".TP\n.B ") + option + '\n'), option);
}

void tst_wzrrecords::refusesAnUnknownRecord()
{
    const Output output = run({"blcallvolume"});
    QCOMPARE(output.code, 1);
    QCOMPARE(output.out, QByteArray());
    QCOMPARE(output.err, QByteArray("wzrrecords: there is no record blcallvolume\n"));
}

void tst_wzrrecords::refusesWrongArguments_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("unknown option") << QStringList{"--schema"};
    QTest::newRow("lone dash") << QStringList{"-"};
    QTest::newRow("two records") << QStringList{"BLCallVolume", "BLCallMute"};
}

void tst_wzrrecords::refusesWrongArguments()
{
    QFETCH(QStringList, arguments);
    const Output output = run(arguments);
    QCOMPARE(output.code, 2);
    QCOMPARE(output.out, QByteArray());
    QVERIFY(output.err.contains("Usage: wzrrecords"));
}

void tst_wzrrecords::failsWhenItCannotWrite()
{
    for (const QStringList& arguments :
         {QStringList(), QStringList("--list"), QStringList("--version")})
        QCOMPARE(run(arguments, QStringLiteral("/dev/full")).code, 1);
}

QTEST_GUILESS_MAIN(tst_wzrrecords)
#include "tst_wzrrecords.moc"
