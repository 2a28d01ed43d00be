#include "DataValue/datavalue.h"
#include "support/logcapture.h"
#include "support/testfile.h"

#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr char kText[] = "{\"a\":1,\"list\":[true,\"x\"]}\n";

CDataValue example()
{
    CDataValue value;
    CDataValue list;
    list.arrayAppend(CDataValue(true), false);
    list.arrayAppend(CDataValue("x"), false);
    value.mapSet("a", CDataValue(1), false);
    value.mapSet("list", list, true);
    return value;
}

QString textOf(const CDataValue& value)
{
    return value.parseToQString(FAST_STYLE);
}

/// A value of that many levels, the innermost a scalar.
CDataValue nested(int levels)
{
    CDataValue value(1);
    for (int i = 1; i < levels; ++i) {
        CDataValue outer(ARRAY_VALUE);
        outer.arrayAppend(std::move(value), false);
        value = std::move(outer);
    }
    return value;
}

} // namespace

class tst_datavaluefiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void refusesOtherNames_data();
    void refusesOtherNames();
    void readsEitherJsonStyle_data();
    void readsEitherJsonStyle();
    void writesOneLineOfJson();
    void savesBackToThePathItWasReadFrom();
    void leavesTheValueAloneWhenReadingFails_data();
    void leavesTheValueAloneWhenReadingFails();
    void logsTwoLinesWhenXmlCannotBeRead();
    void doesNotWaitAtAPipe();
    void keepsKindsInXml();
    void keepsStringsInBothForms_data();
    void keepsStringsInBothForms();
    void keepsEmptyValues_data() { forms(); }
    void keepsEmptyValues();
    void keepsTheRestBesideANull();
    void savesWhatTheTextShows();
    void keepsItsPathWhenItIsAssigned();
    void reads8BitPaths();
    void limitsNestingWithoutALine_data() { forms(); }
    void limitsNestingWithoutALine();
    void keepsLargeValues_data() { forms(); }
    void keepsLargeValues();
    void checksTheNameOfEachForm();
    void replacesReadMembersInPlace();

private:
    static void forms();
    QString path(const QString& name) const { return m_folder.filePath(name); }

    QTemporaryDir m_folder;
};

void tst_datavaluefiles::refusesOtherNames_data()
{
    QTest::addColumn<QString>("name");
    for (const char* name : {"a.XML", "a.json", "a.txt", "a", "xml", "a.xml ", "a.Perso", ""})
        QTest::newRow(name) << QString(name);
}

void tst_datavaluefiles::refusesOtherNames()
{
    QFETCH(QString, name);
    const QString file = name.isEmpty() ? QString() : path(name);
    if (!name.isEmpty())
        TestFile::write(file, kText);
    LogCapture log;
    CDataValue value(5);
    QVERIFY(!value.readFile(file));
    QVERIFY(!value.readFile(file.toUtf8().constData()));
    QCOMPARE(log.count("DataValue/datavalue readFile Do not support read other file type except "
                       ".xml, .config or .perso "),
             2);
    QCOMPARE(textOf(value), QString("5\n"));
    QVERIFY(!value.saveFileAs(file));
    QVERIFY(!value.saveFileAs(file.toUtf8().constData()));
    QVERIFY(!value.saveFile());
    QCOMPARE(log.count("DataValue/datavalue saveFileAs Do not support save other file type except "
                       ".xml, .config or .perso "),
             3);
    QCOMPARE(log.lines().size(), 5);
    if (!name.isEmpty())
        QCOMPARE(TestFile::read(file), QByteArray(kText));
}

void tst_datavaluefiles::readsEitherJsonStyle_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("compact") << QByteArray(kText);
    QTest::newRow("indented") << QByteArray("{\n   \"a\" : 1,\n   \"list\" : [ true, \"x\" ]\n}\n");
    QTest::newRow("comments") << QByteArray("// c\n{\"a\":1, /* d */ \"list\":[true,\"x\"]}");
    QTest::newRow("byte-order mark") << QByteArray("\xEF\xBB\xBF") + kText;
    QTest::newRow("zero byte at the end") << QByteArray(kText) + QByteArray("\0}]", 3);
}

void tst_datavaluefiles::readsEitherJsonStyle()
{
    QFETCH(QByteArray, content);
    for (const char* name : {"a.perso", "a.config"}) {
        TestFile::write(path(name), content);
        CDataValue value;
        QVERIFY(value.readFile(path(name)));
        QCOMPARE(textOf(value), QString(kText));
        QVERIFY(value.saveFile());
        QCOMPARE(TestFile::read(path(name)), QByteArray(kText));
    }
}

void tst_datavaluefiles::writesOneLineOfJson()
{
    CDataValue value = example();
    value.mapSet("\xC3\xA9", CDataValue("\xE4\xB8\xAD"), true);
    QVERIFY(value.saveFileAs(path("line.config")));
    QCOMPARE(TestFile::read(path("line.config")),
             QByteArray("{\"a\":1,\"list\":[true,\"x\"],\"\xC3\xA9\":\"\xE4\xB8\xAD\"}\n"));
}

void tst_datavaluefiles::savesBackToThePathItWasReadFrom()
{
    for (const char* name : {"back.perso", "back.config", "back.xml"}) {
        CDataValue value = example();
        QVERIFY(value.saveFileAs(path(name)));
        CDataValue read;
        QVERIFY(!read.saveFile());
        QVERIFY(read.readFile(path(name).toUtf8().constData()));
        read.mapSet("a", CDataValue(2), true);
        QVERIFY(!read.readFile(path("missing.xml")));
        QVERIFY(read.saveFile());
        QVERIFY(value.readFile(path(name)));
        QCOMPARE(textOf(value), QString("{\"a\":2,\"list\":[true,\"x\"]}\n"));
    }
}

void tst_datavaluefiles::leavesTheValueAloneWhenReadingFails_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("content");
    const auto row = [](const char* name, const char* file, const QByteArray& content) {
        QTest::addRow("%s: %s", file, name) << QString(file) << content;
    };
    row("syntax", "a.config", "{\"a\":");
    row("empty", "a.config", "");
    row("blanks", "a.perso", " \n");
    row("binary", "a.perso",
        "\x7F"
        "ELF\x01\xFF\xFE");
    row("cut UTF-8", "a.config", "\"\xE7");
    row("zero byte in a string", "a.config", QByteArray("{\"a\":\"x\0y\"}", 11));
    row("1001 levels", "a.config", QByteArray(1001, '[') + QByteArray(1001, ']'));
    row("deep", "a.config", QByteArray(1000000, '['));
    row("JSON after a zero byte", "a.perso", QByteArray("\0{}", 3));
    row("XML in a JSON file", "a.config", "<DictValue/>");
    row("JSON in an XML file", "a.xml", kText);
    row("empty", "a.xml", "");
    row("binary", "a.xml",
        "\x7F"
        "ELF\x01\xFF\xFE");
    row("cut", "a.xml", "<DictValue><key>a</key>");
    row("cut UTF-8", "a.xml", "<x>\xE7");
    row("another root", "a.xml", "<html/>");
    row("deep", "a.xml", QByteArray("<ArrayValue>").repeated(100000));
}

void tst_datavaluefiles::leavesTheValueAloneWhenReadingFails()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, content);
    TestFile::write(path(name), content);
    LogCapture log;
    CDataValue value = example();
    QVERIFY(!value.readFile(path(name)));
    QCOMPARE(textOf(value), QString(kText));
    QCOMPARE(log.lines().size(), name.endsWith(".xml") ? 2 : 0);
    QVERIFY(!value.saveFile());
}

void tst_datavaluefiles::logsTwoLinesWhenXmlCannotBeRead()
{
    const QByteArray pipe = QFile::encodeName(path("pipe.xml"));
    QCOMPARE(mkfifo(pipe.constData(), 0600), 0);
    for (const QString& file : {path("none.xml"), path("pipe.xml"), QStringLiteral("/proc/.xml")}) {
        LogCapture log;
        CDataValue value;
        QVERIFY(!value.readFile(file));
        const QStringList lines = log.lines();
        QCOMPARE(lines.size(), 2);
        QVERIFY(lines[0].endsWith(" DataValue/datavalue readXMLFile " + file + ' '));
        QVERIFY(lines[1].endsWith(" DataValue/datavalue readXMLFile Read file error "));
    }
}

void tst_datavaluefiles::doesNotWaitAtAPipe()
{
    const QByteArray pipe = QFile::encodeName(path("pipe.config"));
    QCOMPARE(mkfifo(pipe.constData(), 0600), 0);
    CDataValue value(5);
    QVERIFY(!value.readFile(path("pipe.config")));
    QVERIFY(!value.saveFileAs(path("pipe.config")));
    // Nor when somebody holds it open and writes.
    const int end = open(pipe.constData(), O_RDWR | O_NONBLOCK);
    QVERIFY(end >= 0);
    QCOMPARE(write(end, "7\n", 2), ssize_t(2));
    QVERIFY(!value.readFile(path("pipe.config")));
    QCOMPARE(textOf(value), QString("5\n"));
    close(end);
}

void tst_datavaluefiles::keepsKindsInXml()
{
    CDataValue value;
    value.mapSet("i", CDataValue(3), false);
    value.mapSet("u", CDataValue(5u), false);
    value.mapSet("r", CDataValue(2.5), false);
    value.mapSet("fine", CDataValue(0.1234567), false);
    value.mapSet("least", CDataValue(-2147483647 - 1), false);
    value.mapSet("most", CDataValue(4294967295u), false);
    value.mapSet("no", CDataValue(false), true);
    QVERIFY(value.saveFileAs(path("kinds.xml")));
    CDataValue read;
    QVERIFY(read.readFile(path("kinds.xml")));
    QCOMPARE(read.getSize(), 7u);
    QVERIFY(read.mapGet("i").isEqual(CDataValue(3)));
    QVERIFY(read.mapGet("u").isEqual(CDataValue(5u)));
    QVERIFY(read.mapGet("r").isEqual(CDataValue(2.5)));
    QVERIFY(read.mapGet("fine").isEqual(CDataValue(0.123457)));
    QVERIFY(read.mapGet("least").isEqual(CDataValue(-2147483647 - 1)));
    QVERIFY(read.mapGet("most").isEqual(CDataValue(4294967295u)));
    QVERIFY(read.mapGet("no").isEqual(CDataValue(false)));
}

void tst_datavaluefiles::keepsStringsInBothForms_data()
{
    QTest::addColumn<QByteArray>("text");
    const auto row = [](const char* name, const QByteArray& text) { QTest::newRow(name) << text; };
    row("empty", "");
    row("leading, trailing and repeated blanks", "  a  b  ");
    row("blanks only", "   ");
    row("line feeds", "\na\n\nb\n");
    row("line feeds only", "\n\n");
    row("tabs", "\ta\t\tb");
    row("carriage returns", "\r\n \r");
    row("quotes", "\"a\" 'b'");
    row("ampersand", "a & b &amp; &#x41;");
    row("markup", "</StringValue>");
    row("end of a section", "]]>");
    row("non-ASCII", "\xC3\xA9 \xE4\xB8\xAD \xF0\x9F\x98\x80");
    row("byte-order mark", "\xEF\xBB\xBFx");
    row("backslash", "C:\\n");
}

void tst_datavaluefiles::keepsStringsInBothForms()
{
    QFETCH(QByteArray, text);
    CDataValue value;
    value.mapSet("text", CDataValue(text.constData()), false);
    value.mapSet("list", CDataValue(), false).arrayAppend(CDataValue(text.constData()), true);
    value.mapSet(text.constData(), CDataValue("key"), true);
    for (const char* name : {"s.xml", "s.config", "s.perso"}) {
        QVERIFY(value.saveFileAs(path(name)));
        CDataValue read;
        QVERIFY(read.readFile(path(name)));
        QVERIFY2(read.isEqual(value), qPrintable(textOf(read)));
    }
}

void tst_datavaluefiles::forms()
{
    QTest::addColumn<QString>("name");
    for (const char* name : {"a.xml", "a.config", "a.perso"})
        QTest::newRow(name) << QString(name);
}

void tst_datavaluefiles::keepsEmptyValues()
{
    QFETCH(QString, name);
    for (const ENUM_VALUE_TYPE kind : {ARRAY_VALUE, MAP_VALUE, STRING_VALUE, BOOLEAN_VALUE}) {
        CDataValue value(kind);
        QVERIFY(value.saveFileAs(path(name)));
        CDataValue read(5);
        QVERIFY(read.readFile(path(name)));
        QCOMPARE(read.type(), kind);
        QVERIFY(read.isEqual(value));
    }
    // Null has a JSON text but no XML document.
    CDataValue null;
    QCOMPARE(null.saveFileAs(path(name)), name != "a.xml");
    CDataValue read;
    QVERIFY(read.readFile(path(name)));
    QCOMPARE(read.type(), name == "a.xml" ? BOOLEAN_VALUE : NULL_VALUE);
}

void tst_datavaluefiles::keepsTheRestBesideANull()
{
    CDataValue value = example();
    value.mapSet("gone", CDataValue(), false);
    value.mapGet("list").arrayInsert(1, CDataValue(), true);
    for (const char* name : {"null.xml", "null.config"}) {
        QVERIFY(value.saveFileAs(path(name)));
        CDataValue read;
        QVERIFY(read.readFile(path(name)));
        QCOMPARE(textOf(read), QString("{\"a\":1,\"gone\":null,\"list\":[true,null,\"x\"]}\n"));
    }
}

void tst_datavaluefiles::savesWhatTheTextShows()
{
    CDataValue value = example();
    value.mapGet("list").arrayAppend(CDataValue("unseen"), false);
    for (const char* name : {"text.xml", "text.config"}) {
        QVERIFY(value.saveFileAs(path(name)));
        CDataValue read;
        QVERIFY(read.readFile(path(name)));
        QCOMPARE(textOf(read), QString(kText));
    }
}

void tst_datavaluefiles::keepsItsPathWhenItIsAssigned()
{
    QVERIFY(example().saveFileAs(path("kept.config")));
    CDataValue value;
    QVERIFY(value.readFile(path("kept.config")));
    value = CDataValue("other");
    QVERIFY(value.saveFile());
    QCOMPARE(TestFile::read(path("kept.config")), QByteArray("\"other\"\n"));
    CDataValue copy(value);
    QVERIFY(!copy.saveFile());
}

void tst_datavaluefiles::reads8BitPaths()
{
    const QString file = path(QString::fromUtf8("\xC3\xA9 \xE4\xB8\xAD.xml"));
    QVERIFY(example().saveFileAs(file.toUtf8().constData()));
    QVERIFY(QFile::exists(file));
    CDataValue read;
    QVERIFY(read.readFile(file.toUtf8().constData()));
    QCOMPARE(textOf(read), QString(kText));
    QVERIFY(!read.readFile(static_cast<const char*>(nullptr)));
    QVERIFY(!read.saveFileAs(static_cast<const char*>(nullptr)));
}

void tst_datavaluefiles::limitsNestingWithoutALine()
{
    QFETCH(QString, name);
    CDataValue value = nested(1000);
    QVERIFY(value.saveFileAs(path(name)));
    CDataValue read;
    QVERIFY(read.readFile(path(name)));
    QVERIFY(read.isEqual(value));
    LogCapture log;
    for (const int levels : {1001, 100000}) {
        QVERIFY(!nested(levels).saveFileAs(path(name)));
        QVERIFY(read.readFile(path(name)));
        QVERIFY(read.isEqual(value));
    }
    QCOMPARE(log.lines(), QStringList());
}

void tst_datavaluefiles::keepsLargeValues()
{
    QFETCH(QString, name);
    // Texts that differ in each piece that is read, so that a lost or doubled one shows.
    constexpr int size = 20 * 1024 * 1024;
    QByteArray text;
    text.reserve(size);
    for (int i = 0; text.size() + 8 <= size; ++i)
        text += QByteArray::number(i).rightJustified(7, '0') + ' ';
    CDataValue value;
    value.mapSet("text", CDataValue(text.constData()), false);
    value.mapSet("end", CDataValue(1), true);
    QVERIFY(value.saveFileAs(path(name)));
    QVERIFY(QFileInfo(path(name)).size() > size);
    CDataValue read;
    QVERIFY(read.readFile(path(name)));
    QVERIFY(read.isEqual(value));
    QVERIFY(QFile::remove(path(name)));
}

void tst_datavaluefiles::checksTheNameOfEachForm()
{
    CDataValue value = example();
    LogCapture log;
    QVERIFY(!value.saveXMLFile(QString()));
    QVERIFY(!value.saveXMLFile(path("form.config")));
    QVERIFY(!value.saveConfigFile(path("form.xml")));
    QVERIFY(!value.saveConfigFile(QString()));
    QVERIFY(!QFile::exists(path("form.xml")) && !QFile::exists(path("form.config")));
    QVERIFY(log.lines().isEmpty());
    QVERIFY(value.saveXMLFile(path("form.xml")));
    TestFile::write(path("form.other"), TestFile::read(path("form.xml")));
    QVERIFY(value.readXMLFile(path("form.other")));
    TestFile::write(path("form.other"), kText);
    QVERIFY(value.readConfigFile(path("form.other")));
}

void tst_datavaluefiles::replacesReadMembersInPlace()
{
    QVERIFY(example().saveFileAs(path("member.config")));
    CDataValue outer;
    outer.mapSet("in", CDataValue(1), false);
    QVERIFY(outer.mapGet("in").readFile(path("member.config")));
    QCOMPARE(textOf(outer), QString("{\"in\":1}\n"));
    outer.synchJsonData();
    QCOMPARE(textOf(outer), QString("{\"in\":{\"a\":1,\"list\":[true,\"x\"]}}\n"));
}

QTEST_GUILESS_MAIN(tst_datavaluefiles)
#include "tst_datavaluefiles.moc"
