// Random documents, well-formed and not: none may crash or hang the process, and what is read is
// written and read again without a change. A document that once did harm is kept in the corpus.
//
//     tst_cxmlrandom            a new seed, which is printed
//     WZR_SEED=1234 ...         that one again

#include "DataValue/xml/cxmlconvert.h"
#include "support/testfile.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include <json/json.h>

#include <random>

namespace {

/// Pieces that the parser's branches look at, whole and cut.
const char* const kPieces[] = {"<",
                               ">",
                               "/",
                               "</",
                               "/>",
                               "=",
                               "\"",
                               "'",
                               "&",
                               ";",
                               "#",
                               "!",
                               "?",
                               "-",
                               "]",
                               "[",
                               " ",
                               "\n",
                               "\r",
                               "\t",
                               "<a>",
                               "</a>",
                               "<a",
                               "<b c=\"",
                               "<b/>",
                               "<!--",
                               "-->",
                               "<!",
                               "<![CDATA[",
                               "]]>",
                               "<?",
                               "?>",
                               "<?xml",
                               "<?xml version=\"1.0\"?>",
                               " version=",
                               " encoding='x'",
                               " foo=",
                               "&#",
                               "&#x",
                               "&#65;",
                               "&#x41;",
                               "&lt;",
                               "&amp",
                               "x",
                               "1",
                               "true",
                               "\x7F",
                               "\x01",
                               "\xC3\xA9",
                               "\xEF\xBB\xBF",
                               "\xEF\xBF\xBE",
                               "\xE7",
                               "\xC3",
                               "<DictValue>",
                               "</DictValue>",
                               "<key>",
                               "</key>",
                               "<ArrayValue>",
                               "</ArrayValue>",
                               "<IntValue>",
                               "</IntValue>",
                               "<StringValue>",
                               "</StringValue>",
                               "<DictValue/>"};

} // namespace

class tst_cxmlrandom : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void survivesTheCorpus_data();
    void survivesTheCorpus();
    void survivesRandomPieces();
    void survivesRepeatedPieces();
    void survivesDamagedFiles();
    void keepsRandomValues();

private:
    int below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(m_random); }
    QByteArray randomPieces(int most);
    std::string randomText();
    Json::Value randomValue(int depth);
    void feed(const QByteArray& text, bool throughFiles = true);

    QTemporaryDir m_folder;
    QByteArray m_file = QFile::encodeName(m_folder.filePath("a.xml"));
    std::mt19937 m_random;
};

void tst_cxmlrandom::initTestCase()
{
    const unsigned int seed = qEnvironmentVariableIsSet("WZR_SEED") ? qgetenv("WZR_SEED").toUInt()
                                                                    : std::random_device()();
    m_random.seed(seed);
    qInfo("WZR_SEED=%u", seed);
}

QByteArray tst_cxmlrandom::randomPieces(int most)
{
    QByteArray text;
    for (int count = 1 + below(most); count > 0; --count)
        text += kPieces[below(static_cast<int>(std::size(kPieces)))];
    return text;
}

/// Reads the document in every way; what could be read must come back from a file. Files are slow
/// on a busy disk, so not every random document goes through one.
void tst_cxmlrandom::feed(const QByteArray& text, bool throughFiles)
{
    CXml xml;
    const bool parsed = xml.ParseXmlString(text.constData());
    QCOMPARE(xml.GetRootElement() != nullptr, parsed);
    if (!throughFiles)
        return;
    TestFile::write(m_file, text);
    xml.ParseXmlFile(m_file, TIXML_ENCODING_LEGACY);
    CXMLConvert convert;
    Json::Value json;
    if (!convert.convertXmlToJson(m_file, json))
        return;
    QVERIFY2(convert.convertJsonToXml(json, m_file), text.constData());
    Json::Value again;
    QVERIFY2(convert.convertXmlToJson(m_file, again), text.constData());
    QVERIFY2(again == json, text.constData());
}

void tst_cxmlrandom::survivesTheCorpus_data()
{
    QTest::addColumn<QString>("file");
    const QStringList names = QDir(XML_CORPUS).entryList(QDir::Files);
    QVERIFY(names.size() >= 10);
    for (const QString& name : names)
        QTest::newRow(qPrintable(name)) << XML_CORPUS "/" + name;
}

void tst_cxmlrandom::survivesTheCorpus()
{
    QFETCH(QString, file);
    const QByteArray text = TestFile::read(file);
    feed(text);
    // A piece as a document makes of it thousands of levels, if a level can be hidden.
    feed("<r>" + text.repeated(20000).left(4000000));
}

void tst_cxmlrandom::survivesRandomPieces()
{
    for (int i = 0; i < 1500 && !QTest::currentTestFailed(); ++i)
        feed(below(2) ? randomPieces(40) : "<r>" + randomPieces(20) + "</r>", i % 10 == 0);
}

void tst_cxmlrandom::survivesRepeatedPieces()
{
    for (int i = 0; i < 12 && !QTest::currentTestFailed(); ++i) {
        const QByteArray piece = "<a>" + randomPieces(8);
        feed((below(2) ? "<r>" : "<r/>") + piece.repeated(20000));
    }
}

void tst_cxmlrandom::survivesDamagedFiles()
{
    const QByteArray whole =
        "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n<DictValue>\n    <key>list</key>\n"
        "    <ArrayValue>\n        <StringValue>a &amp; \xC3\xA9 &#x0A;</StringValue>\n"
        "        <StringValue><![CDATA[  ]]></StringValue>\n    </ArrayValue>\n"
        "    <key>nIndex</key>\n    <IntValue>3</IntValue>\n</DictValue>\n";
    feed(whole);
    for (int i = 0; i < 1000 && !QTest::currentTestFailed(); ++i) {
        QByteArray text = whole;
        for (int damage = 1 + below(3); damage > 0; --damage) {
            const int at = below(static_cast<int>(text.size()));
            switch (below(4)) {
            case 0:
                text.truncate(at + 1);
                break;
            case 1:
                text[at] = static_cast<char>(below(256));
                break;
            case 2:
                text.remove(at, 1 + below(10));
                break;
            default:
                text.insert(at, randomPieces(3));
            }
            if (text.isEmpty())
                break;
        }
        feed(text, i % 10 == 0);
    }
}

std::string tst_cxmlrandom::randomText()
{
    static const char* const parts[] = {
        " ",      "  ", "\n",  "\r", "\t",   "&",  "<", ">",  "\"",           "'",        "]]>",
        "&#x41;", "a",  "key", "1",  "\x01", "\v", "é", "中", "\xEF\xBB\xBF", "<![CDATA["};
    std::string text;
    for (int count = below(6); count > 0; --count)
        text += parts[below(static_cast<int>(std::size(parts)))];
    return text;
}

Json::Value tst_cxmlrandom::randomValue(int depth)
{
    switch (below(depth > 0 ? 8 : 6)) {
    case 0:
        return static_cast<int>(m_random());
    case 1:
        return static_cast<unsigned int>(m_random());
    case 2:
        return below(1000000) / 64.0 - 5000;
    case 3:
        return below(2) == 0;
    case 4:
        return Json::Value();
    case 6: {
        Json::Value array(Json::arrayValue);
        for (int count = below(5); count > 0; --count)
            array.append(randomValue(depth - 1));
        return array;
    }
    case 7: {
        Json::Value object(Json::objectValue);
        for (int count = below(5); count > 0; --count)
            object[randomText()] = randomValue(depth - 1);
        return object;
    }
    default:
        return randomText();
    }
}

void tst_cxmlrandom::keepsRandomValues()
{
    for (int i = 0; i < 100; ++i) {
        Json::Value json(Json::objectValue);
        json[randomText()] = randomValue(4);
        CXMLConvert convert;
        QVERIFY(convert.convertJsonToXml(json, m_file));
        Json::Value read;
        QVERIFY2(convert.convertXmlToJson(m_file, read), json.toStyledString().c_str());
        QVERIFY2(read == json, (json.toStyledString() + read.toStyledString()).c_str());
    }
}

QTEST_GUILESS_MAIN(tst_cxmlrandom)
#include "tst_cxmlrandom.moc"
