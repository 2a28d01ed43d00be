#include "DataValue/datavalue.h"
#include "support/childprocess.h"
#include "support/testfile.h"

#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

namespace {

constexpr char kXml[] = "<DictValue>\n"
                        "<key>General</key>\n"
                        "<DictValue>\n"
                        "<key>Language</key><StringValue>en</StringValue>\n"
                        "<key>a/b~c</key><UintValue>5</UintValue>\n"
                        "<key>rScale</key><RealValue>1.5</RealValue>\n"
                        "</DictValue>\n"
                        "<key>list</key>\n"
                        "<ArrayValue><IntValue>1</IntValue><BooleanValue>true</BooleanValue>"
                        "</ArrayValue>\n"
                        "</DictValue>\n";

void checkRow(const char* title, const char* name, const QByteArray& content, const char* message)
{
    QTest::newRow(title) << QString(name) << content << QString(message);
}

void addXmlRows()
{
    checkRow("good XML", "w.xml", kXml, "");
    checkRow("good null", "w.xml", "<ArrayValue><NullValue/></ArrayValue>", "");
    checkRow("large unsigned", "w.xml", "<UintValue>-1</UintValue>", "");
    checkRow("wrong end", "w.xml", "<DictValue>\n</ArrayValue>",
             "w.xml:2: Error reading end tag.\n");
    checkRow("UTF-8", "w.xml", "<DictValue>\n\n\xFF</DictValue>",
             "w.xml:3: The document is not valid UTF-8\n");
    checkRow("another document", "w.xml", "<html/>", "w.xml:1: Unknown element \"html\"\n");
    checkRow("null as the root", "w.xml", "<NullValue/>",
             "w.xml:1: Unknown element \"NullValue\"\n");
    checkRow("unknown element", "w.xml", "<ArrayValue>\n<intValue>1</intValue></ArrayValue>",
             "w.xml:2: Unknown element \"intValue\"\n");
    checkRow("no number", "w.xml",
             "<ArrayValue>\n<IntValue>1x</IntValue>\n<RealValue/></ArrayValue>",
             "w.xml:2: \"1x\" is no \"IntValue\"\nw.xml:3: \"\" is no \"RealValue\"\n");
    checkRow("too large", "w.xml", "<IntValue>99999999999</IntValue>",
             "w.xml:1: \"99999999999\" is no \"IntValue\"\n");
    checkRow("no boolean", "w.xml", "<BooleanValue>TRUE</BooleanValue>",
             "w.xml:1: \"TRUE\" is no \"BooleanValue\"\n");
    checkRow("key at the end", "w.xml", "<DictValue>\n<key>a</key>\n</DictValue>",
             "w.xml:2: Key without a value\n");
    checkRow("two keys", "w.xml",
             "<DictValue>\n<key>a</key>\n<key>b</key><IntValue>1</IntValue></DictValue>",
             "w.xml:2: Key without a value\n");
    checkRow("key in an array", "w.xml",
             "<ArrayValue>\n<key>a</key><IntValue>1</IntValue></ArrayValue>",
             "w.xml:2: Key in an \"ArrayValue\"\n");
    checkRow("same key", "w.xml",
             "<DictValue>\n<key>a</key><IntValue>1</IntValue>\n<key>a</key><IntValue>2</IntValue>"
             "</DictValue>",
             "w.xml:3: Second member named \"a\"\n");
    checkRow("element in a scalar", "w.xml", "<StringValue>a\n<b/></StringValue>",
             "w.xml:2: Element inside a \"StringValue\"\n");
    checkRow("several", "w.xml",
             "<ArrayValue>\n<ArrayValue>\n<x/>\n</ArrayValue>\n<IntValue>y</IntValue></ArrayValue>",
             "w.xml:3: Unknown element \"x\"\nw.xml:5: \"y\" is no \"IntValue\"\n");
}

void addJsonRows()
{
    checkRow("good JSON", "w.config", "{\"a\":1}", "");
    checkRow("JSON syntax", "w.config", "{\n\"a\":\n}",
             "w.config:3: Syntax error: value, object or array expected.\n");
    checkRow("JSON after a mark", "w.perso", "\xEF\xBB\xBF\n[1,\n\n2",
             "w.perso:4: Missing ',' or ']' in array declaration\n");
    checkRow("zero byte", "w.config", QByteArray("[1]\n\0", 5),
             "w.config:2: A zero byte stands in the document\n");
    checkRow("deep JSON", "w.config", QByteArray(5000, '['),
             "w.config: The values are nested too deeply\n");
    checkRow("another name", "w.json", "{}",
             "w.json: The name does not end in .xml, .config or .perso\n");
    checkRow("large", "w.config", "\"" + QByteArray(20 * 1024 * 1024, 'x') + "\"", "");
}

} // namespace

class tst_wzrvalue : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void showsIndented();
    void convertsBetweenForms_data();
    void convertsBetweenForms();
    void getsValues_data();
    void getsValues();
    void setsValues_data();
    void setsValues();
    void setsNothingWithoutAPlace_data();
    void setsNothingWithoutAPlace();
    void saysWhatIsWrong_data();
    void saysWhatIsWrong();
    void checksSeveralFiles();
    void reportsFilesThatCannotBeRead_data();
    void reportsFilesThatCannotBeRead();
    void reportsFilesThatCannotBeWritten();
    void refusesWrongArguments_data();
    void refusesWrongArguments();
    void explainsItself();

private:
    struct Result
    {
        int code;
        QString out;
        QString err;
    };

    Result run(const QStringList& arguments, const QString& output = QString()) const;
    QString path(const QString& name) const { return m_folder->filePath(name); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_wzrvalue::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    TestFile::write(path("a.xml"), kXml);
}

tst_wzrvalue::Result tst_wzrvalue::run(const QStringList& arguments, const QString& output) const
{
    const auto result =
        ChildProcess::run(HELPER_WZRVALUE, arguments, {QString(), m_folder->path(), output});
    return {result.code, QString::fromUtf8(result.out), QString::fromUtf8(result.err)};
}

void tst_wzrvalue::showsIndented()
{
    const Result result = run({"show", "a.xml"});
    QCOMPARE(result.code, 0);
    QCOMPARE(result.out, QString("{\n"
                                 "   \"General\" : {\n"
                                 "      \"Language\" : \"en\",\n"
                                 "      \"a/b~c\" : 5,\n"
                                 "      \"rScale\" : 1.5\n"
                                 "   },\n"
                                 "   \"list\" : [ 1, true ]\n"
                                 "}\n"));
    TestFile::write(path("a.perso"), "{\"a\":[]}");
    QCOMPARE(run({"show", "a.perso"}).out, QString("{\n   \"a\" : []\n}\n"));
}

void tst_wzrvalue::convertsBetweenForms_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow(".config") << "b.config";
    QTest::newRow(".perso") << "b.perso";
    QTest::newRow(".xml") << "b.xml";
}

void tst_wzrvalue::convertsBetweenForms()
{
    QFETCH(QString, name);
    QCOMPARE(run({"convert", "a.xml", name}).code, 0);
    CDataValue value;
    QVERIFY(value.readFile(path(name)));
    QCOMPARE(value.parseToQString(FAST_STYLE),
             QString("{\"General\":{\"Language\":\"en\",\"a/b~c\":5,\"rScale\":1.5},"
                     "\"list\":[1,true]}\n"));
    QCOMPARE(run({"convert", name, "back.xml"}).code, 0);
    QVERIFY(TestFile::read(path("back.xml")).contains("<StringValue>en</StringValue>"));
}

void tst_wzrvalue::getsValues_data()
{
    QTest::addColumn<QString>("where");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("out");
    QTest::newRow("string") << "General/Language" << 0 << "en\n";
    QTest::newRow("escaped key") << "General/a~1b~0c" << 0 << "5\n";
    QTest::newRow("element") << "list/1" << 0 << "true\n";
    QTest::newRow("container") << "list" << 0 << "[1,true]\n";
    QTest::newRow("whole") << "" << 0
                           << "{\"General\":{\"Language\":\"en\",\"a/b~c\":5,\"rScale\":1.5},"
                              "\"list\":[1,true]}\n";
    QTest::newRow("no key") << "General/None" << 3 << "";
    QTest::newRow("one past the end") << "list/2" << 3 << "";
    QTest::newRow("far past the end") << "list/4294967296" << 3 << "";
    QTest::newRow("no index") << "list/-1" << 3 << "";
    QTest::newRow("below a scalar") << "General/Language/x" << 3 << "";
}

void tst_wzrvalue::getsValues()
{
    QFETCH(QString, where);
    QFETCH(int, code);
    QFETCH(QString, out);
    const Result result = run({"get", "a.xml", where});
    QCOMPARE(result.code, code);
    QCOMPARE(result.out, out);
    QCOMPARE(result.err, code ? "a.xml: Nothing at \"" + where + "\"\n" : QString());
}

void tst_wzrvalue::setsValues_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("where");
    QTest::addColumn<QByteArray>("written");
    const auto row = [](const char* name, const QStringList& arguments, const char* written) {
        QTest::newRow(name) << arguments << arguments[arguments.size() - 2] << QByteArray(written);
    };
    row("JSON", {"a.xml", "General/Language", "\"de\""}, "<StringValue>de</StringValue>");
    row("text", {"--string", "a.xml", "General/Language", "5"}, "<StringValue>5</StringValue>");
    row("new key", {"a.xml", "General/New", "true"}, "<key>New</key>");
    row("unsigned stays", {"a.xml", "General/a~1b~0c", "7"}, "<UintValue>7</UintValue>");
    row("negative", {"a.xml", "General/a~1b~0c", "-7"}, "<IntValue>-7</IntValue>");
    row("double stays", {"a.xml", "General/rScale", "2"}, "<RealValue>2.000000</RealValue>");
    row("like an option", {"--string", "a.xml", "General/Language", "-v"},
        "<StringValue>-v</StringValue>");
    row("element", {"a.xml", "list/0", "9"}, "<IntValue>9</IntValue>");
    row("new element", {"a.xml", "list/2", "\"end\""}, "<StringValue>end</StringValue>");
    row("whole", {"a.xml", "", "[]"}, "<ArrayValue />");
}

void tst_wzrvalue::setsValues()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, where);
    QFETCH(QByteArray, written);
    const Result result = run(QStringList("set") + arguments);
    QCOMPARE(result.err, QString());
    QCOMPARE(result.code, 0);
    QVERIFY(TestFile::read(path("a.xml")).contains(written));
    QCOMPARE(run({"get", "a.xml", where}).code, 0);
}

void tst_wzrvalue::setsNothingWithoutAPlace_data()
{
    QTest::addColumn<QString>("where");
    for (const char* where : {"None/key", "list/3", "list/x", "General/Language/x"})
        QTest::newRow(where) << QString(where);
}

void tst_wzrvalue::setsNothingWithoutAPlace()
{
    QFETCH(QString, where);
    QCOMPARE(run({"set", "a.xml", where, "1"}).code, 3);
    QCOMPARE(TestFile::read(path("a.xml")), QByteArray(kXml));
}

void tst_wzrvalue::saysWhatIsWrong_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("message");
    addXmlRows();
    addJsonRows();
}

void tst_wzrvalue::saysWhatIsWrong()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, content);
    QFETCH(QString, message);
    TestFile::write(path(name), content);
    const Result result = run({"check", name});
    QCOMPARE(result.err, message);
    QCOMPARE(result.out, QString());
    QCOMPARE(result.code, message.isEmpty() ? 0 : 1);
}

void tst_wzrvalue::checksSeveralFiles()
{
    TestFile::write(path("b.config"), "[");
    const Result result = run({"check", "b.config", "a.xml", "none.perso"});
    QCOMPARE(result.code, 1);
    QVERIFY(result.err.startsWith("b.config:1: "));
    QVERIFY(result.err.endsWith("\nnone.perso: Failed to open file\n"));
    QVERIFY(!result.err.contains("a.xml"));
}

void tst_wzrvalue::reportsFilesThatCannotBeRead_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("show") << QStringList{"show", "bad.xml"};
    QTest::newRow("convert") << QStringList{"convert", "bad.xml", "good.xml"};
    QTest::newRow("get") << QStringList{"get", "bad.xml", ""};
    QTest::newRow("set") << QStringList{"set", "bad.xml", "", "1"};
}

void tst_wzrvalue::reportsFilesThatCannotBeRead()
{
    QFETCH(QStringList, arguments);
    TestFile::write(path("bad.xml"), "<DictValue>\n<key>");
    const Result result = run(arguments);
    QCOMPARE(result.code, 1);
    QCOMPARE(result.out, QString());
    QCOMPARE(result.err, QString("bad.xml:2: The document ends inside an element\n"));
    QVERIFY(!QFile::exists(path("good.xml")));
    QCOMPARE(TestFile::read(path("bad.xml")), QByteArray("<DictValue>\n<key>"));
}

void tst_wzrvalue::reportsFilesThatCannotBeWritten()
{
    QCOMPARE(run({"convert", "a.xml", "none/b.xml"}).code, 4);
    QCOMPARE(run({"convert", "a.xml", "b.txt"}).err, QString("b.txt: Cannot be written\n"));
    QCOMPARE(run({"set", "a.xml", "", "null"}).code, 4); // XML has no word for it
    QCOMPARE(TestFile::read(path("a.xml")), QByteArray(kXml));
    QCOMPARE(run({"show", "a.xml"}, "/dev/full").code, 4);
}

void tst_wzrvalue::refusesWrongArguments_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("none") << QStringList();
    QTest::newRow("unknown command") << QStringList{"print", "a.xml"};
    QTest::newRow("unknown option") << QStringList{"--verbose"};
    QTest::newRow("unknown option for a file") << QStringList{"show", "--verbose"};
    QTest::newRow("unknown option among files") << QStringList{"check", "a.xml", "--all"};
    QTest::newRow("unknown option before text") << QStringList{"set", "--text", "a.xml", "list"};
    QTest::newRow("more than --version") << QStringList{"--version", "a.xml"};
    QTest::newRow("more than --help") << QStringList{"--help", "a.xml"};
    QTest::newRow("no file") << QStringList{"show"};
    QTest::newRow("too many files") << QStringList{"show", "a.xml", "b.xml"};
    QTest::newRow("nothing to check") << QStringList{"check"};
    QTest::newRow("no value") << QStringList{"set", "a.xml", "list"};
    QTest::newRow("no value but an option") << QStringList{"set", "--string", "a.xml", "list"};
    QTest::newRow("no JSON") << QStringList{"set", "a.xml", "General/Language", "de"};
}

void tst_wzrvalue::refusesWrongArguments()
{
    QFETCH(QStringList, arguments);
    const Result result = run(arguments);
    QCOMPARE(result.code, 2);
    QCOMPARE(result.out, QString());
    QVERIFY(result.err.startsWith("wzrvalue: "));
    QVERIFY(result.err.contains("Usage: wzrvalue show FILE\n"));
    QCOMPARE(TestFile::read(path("a.xml")), QByteArray(kXml));
}

void tst_wzrvalue::explainsItself()
{
    const Result help = run({"--help"});
    QCOMPARE(help.code, 0);
    QVERIFY(QRegularExpression("^wzrvalue \\d+\\.\\d+\\.\\d+\n$")
                .match(run({"--version"}).out)
                .hasMatch());
    const QString manual = QString::fromUtf8(TestFile::read(MANUAL_PAGE)).remove('\\');
    for (const char* word :
         {"show", "convert", "get", "set", "check", "--string", "--help", "--version"}) {
        QVERIFY2(help.out.contains(word), word);
        QVERIFY2(manual.contains(word), word);
    }
    for (int code = 0; code <= 4; ++code)
        QVERIFY(manual.contains(QString(".TP\n.B %1\n").arg(code)));
    QCOMPARE(run({"--help"}, "/dev/full").code, 4);
    QCOMPARE(run({"--version"}, "/dev/full").code, 4);
}

QTEST_GUILESS_MAIN(tst_wzrvalue)
#include "tst_wzrvalue.moc"
