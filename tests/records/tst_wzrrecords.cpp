#include "goldenrecords.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QtTest>

// The tool that prints the vocabulary, and the page made by it.
class tst_WzrRecords : public QObject
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

struct Output
{
    int exitCode;
    QByteArray text;
    QByteArray errors;
};

static Output run(const QStringList& arguments, const QString& outputFile = QString())
{
    QProcess process;
    if (!outputFile.isEmpty())
        process.setStandardOutputFile(outputFile);
    process.start(QStringLiteral(HELPER_WZRRECORDS), arguments);
    if (!process.waitForFinished() || process.exitStatus() != QProcess::NormalExit)
        qFatal("wzrrecords did not run: %s", qPrintable(process.errorString()));
    // Without a channel of its own the output reads as empty.
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

static QJsonObject schema(const QStringList& arguments)
{
    const Output output = run(arguments);
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(output.text, &error);
    if (output.exitCode != 0 || error.error != QJsonParseError::NoError)
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

void tst_WzrRecords::pageIsUpToDate()
{
    QFile page(QStringLiteral(RECORDS_PAGE));
    QVERIFY(page.open(QIODevice::ReadOnly));
    const Output output = run({"--markdown"});
    QCOMPARE(output.exitCode, 0);
    QVERIFY2(page.readAll() == output.text,
             "docs/records.md is out of date: wzrrecords --markdown > docs/records.md");
}

void tst_WzrRecords::definesEveryRecord()
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

void tst_WzrRecords::keepsTheOrderOfKeys()
{
    const QByteArray text = run({"BLSmsMoveReq"}).text;
    const auto ref = text.indexOf("\"nRef\":");
    const auto copy = text.indexOf("\"blCopy\":");
    const auto store = text.indexOf("\"nToStoreIn\":");
    QVERIFY(ref > 0 && ref < copy && copy < store);
}

void tst_WzrRecords::definesOneRecordWithWhatItHolds()
{
    const QJsonObject one = schema({"BLPbAddSingleItemRes"});
    QCOMPARE(one[QLatin1String("$ref")].toString(), QStringLiteral("#/$defs/BLPbAddSingleItemRes"));
    QCOMPARE(one[QLatin1String("$defs")].toObject().keys(),
             (QStringList{"BLPbAddSingleItemRes", "BLPbItem"}));
    QCOMPARE(schema({"BLDeleteSmsReq"})[QLatin1String("$defs")].toObject().keys(),
             (QStringList{"BLDeleteItemInfo", "BLDeleteSmsReq"}));
}

void tst_WzrRecords::definesEachKind_data()
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

void tst_WzrRecords::definesEachKind()
{
    QFETCH(QByteArray, record);
    QFETCH(QByteArray, key);
    QFETCH(QByteArray, definition);
    const QJsonObject expected = QJsonDocument::fromJson(definition).object();
    QVERIFY(!expected.isEmpty());
    QCOMPARE(definitionOf(record.constData(), key.constData()), expected);
}

void tst_WzrRecords::listsTheNames()
{
    QByteArray names;
    for (const GoldenRecord& record : goldenRecords())
        names += record.name.toLatin1() + '\n';
    QCOMPARE(run({"--list"}).text, names);
}

void tst_WzrRecords::tellsItsUsageAndVersion()
{
    const Output help = run({"--help"});
    QCOMPARE(help.exitCode, 0);
    QVERIFY(help.text.startsWith("Usage: wzrrecords"));
    for (const char* option : {"--list", "--markdown", "--help", "--version"})
        QVERIFY2(help.text.contains(option), option);
    QCOMPARE(help.errors, QByteArray());
    const Output version = run({"--version"});
    QCOMPARE(version.exitCode, 0);
    QCOMPARE(version.text, QByteArray("wzrrecords " PROJECT_VERSION "\n"));
}

void tst_WzrRecords::manualNamesEveryOption()
{
    QFile page(QStringLiteral(MANUAL_PAGE));
    QVERIFY(page.open(QIODevice::ReadOnly));
    const QByteArray manual = page.readAll();
    for (const char* option : {"\\-\\-list", "\\-\\-markdown", "\\-\\-help", "\\-\\-version"})
        QVERIFY2(manual.contains(QByteArray(".TP\n.B ") + option + '\n'), option);
}

void tst_WzrRecords::refusesAnUnknownRecord()
{
    const Output output = run({"blcallvolume"});
    QCOMPARE(output.exitCode, 1);
    QCOMPARE(output.text, QByteArray());
    QCOMPARE(output.errors, QByteArray("wzrrecords: there is no record blcallvolume\n"));
}

void tst_WzrRecords::refusesWrongArguments_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("unknown option") << QStringList{"--schema"};
    QTest::newRow("lone dash") << QStringList{"-"};
    QTest::newRow("two records") << QStringList{"BLCallVolume", "BLCallMute"};
}

void tst_WzrRecords::refusesWrongArguments()
{
    QFETCH(QStringList, arguments);
    const Output output = run(arguments);
    QCOMPARE(output.exitCode, 2);
    QCOMPARE(output.text, QByteArray());
    QVERIFY(output.errors.contains("Usage: wzrrecords"));
}

void tst_WzrRecords::failsWhenItCannotWrite()
{
    QCOMPARE(run({}, QStringLiteral("/dev/full")).exitCode, 1);
}

QTEST_GUILESS_MAIN(tst_WzrRecords)
#include "tst_wzrrecords.moc"
