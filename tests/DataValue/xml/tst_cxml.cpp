#include "DataValue/xml/cxml.h"
#include "support/testfile.h"

#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

namespace {

constexpr char kPhonebook[] = "<Book><Group name=\"a\"><Item id=\"70\">no</Item>"
                              "<Item id=\"7\">first</Item></Group>"
                              "<Item id=\"1\"><Item id=\"7\">hidden</Item></Item>"
                              "<Item id=\"7\">second</Item><Setting>on</Setting></Book>";

TiXmlElement* const kNoElement = nullptr;
const char* const kNoText = nullptr;

} // namespace

class tst_cxml : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void findsElementsByName();
    void findsElementsByAttribute();
    void staysBelowTheStartOfASearch();
    void findsSectionsBelowTheRootOnly();
    void readsElementTexts();
    void replacesElementTexts();
    void readsAndChangesAttributes();
    void takesNullArguments();
    void findsNothingByNullArguments();
    void printsInLines();
    void keepsAttributesAndTextsThroughAFile_data();
    void keepsAttributesAndTextsThroughAFile();
    void keepsACommentInItsBounds();
    void savesBackToTheLoadedFile();
    void reportsASaveThatFails_data();
    void reportsASaveThatFails();
    void copiesADocument();
    void clears();

private:
    QString path(const char* name) const { return m_folder.filePath(name); }
    QByteArray encoded(const char* name) const { return QFile::encodeName(path(name)); }

    QTemporaryDir m_folder;
};

void tst_cxml::findsElementsByName()
{
    CXml xml;
    QVERIFY(xml.ParseXmlString(kPhonebook));
    QCOMPARE(xml.GetRootElement()->Value(), "Book");
    QCOMPARE(xml.GetElement("Book"), xml.GetRootElement());
    QCOMPARE(xml.GetElement("Item")->GetText(), "no");
    QCOMPARE(xml.GetElement("Setting")->GetText(), "on");
    QCOMPARE(xml.GetElement("item"), kNoElement);
    QCOMPARE(xml.GetElement(""), kNoElement);
}

void tst_cxml::findsElementsByAttribute()
{
    CXml xml;
    QVERIFY(xml.ParseXmlString(kPhonebook));
    QCOMPARE(xml.GetElement("Item", "id", "7")->GetText(), "first");
    QCOMPARE(xml.GetElement("Item", "id", "8"), kNoElement);
    QCOMPARE(xml.GetElement("Item", "no", "7"), kNoElement);
    QVERIFY(xml.ParseXmlString("<b><Item id=\"1\"><Item id=\"7\">in</Item></Item>"
                               "<Item id=\"7\">out</Item></b>"));
    QCOMPARE(xml.GetElement("Item", "id", "7")->GetText(), "out");
}

void tst_cxml::staysBelowTheStartOfASearch()
{
    CXml xml;
    QVERIFY(xml.ParseXmlString(kPhonebook));
    TiXmlElement* const group = xml.GetElement("Group");
    QCOMPARE(xml.GetElement(group, "Group"), group);
    QCOMPARE(xml.GetElement(group, "Item")->GetText(), "no");
    QCOMPARE(xml.GetElement(group, "Setting"), kNoElement);
    QCOMPARE(xml.GetElement(xml.GetElement("Setting"), "Item"), kNoElement);
}

void tst_cxml::findsSectionsBelowTheRootOnly()
{
    CXml xml;
    QVERIFY(xml.ParseXmlString(kPhonebook));
    QCOMPARE(xml.GetSessionElement("Item")->Attribute("id"), "1");
    QCOMPARE(xml.GetSessionElement("Book"), kNoElement);
    QCOMPARE(xml.GetSessionElement("Nothing"), kNoElement);
}

void tst_cxml::readsElementTexts()
{
    CXml xml;
    QVERIFY(xml.ParseXmlString(kPhonebook));
    QCOMPARE(xml.GetElementValue("Setting"), "on");
    QCOMPARE(xml.GetElementValue(xml.GetElement("Group"), "Item"), "no");
    QCOMPARE(xml.GetElementValue(xml.GetElement("Setting")), "on");
    QCOMPARE(xml.GetElementValue("Group"), kNoText);
    QCOMPARE(xml.GetElementValue("Nothing"), kNoText);
}

void tst_cxml::replacesElementTexts()
{
    CXml xml;
    QVERIFY(xml.ParseXmlString("<r>one<c>kept</c>two</r>"));
    TiXmlElement* const root = xml.GetRootElement();
    QVERIFY(xml.ModifyElementValue(root, "new"));
    QCOMPARE(xml.GetElementValue(root), "new");
    QCOMPARE(xml.GetElementValue("c"), "kept");
    QCOMPARE(root->LastChild()->Value(), "c");
    TiXmlElement* const empty = xml.AddChildElement(root, "e", nullptr);
    QVERIFY(xml.ModifyElementValue(empty, "text"));
    QCOMPARE(xml.GetElementValue(empty), "text");
    QVERIFY(xml.ModifyElementValue(empty, xml.GetElementValue(empty)));
    QCOMPARE(xml.GetElementValue(empty), "text");
    TiXmlElement* const added = xml.AddChildElement(root, "a", nullptr);
    QVERIFY(xml.AddElementValue(added, "more"));
    QCOMPARE(xml.GetElementValue(added), "more");
}

void tst_cxml::readsAndChangesAttributes()
{
    CXml xml;
    TiXmlElement* const root = xml.AddXmlRootElement("r", nullptr);
    QVERIFY(xml.AddAttribute(root, "number", -3));
    QVERIFY(xml.AddAttribute(root, "real", 2.5));
    QVERIFY(xml.AddAttribute(root, "text", "t"));
    QCOMPARE(xml.GetIntAttributeValue(root, "number"), -3);
    QCOMPARE(xml.GetDoubleAttributeValue(root, "real"), 2.5);
    QCOMPARE(xml.GetTextAttributeValue(root, "real"), "2.5");
    QCOMPARE(xml.GetTextAttributeValue(root, "text"), "t");

    QVERIFY(xml.ModifyIntAttribute(root, "number", 4));
    QVERIFY(xml.ModifyDoubleAttribute(root, "real", 0.25));
    QVERIFY(xml.ModifyTextAttribute(root, "text", "u"));
    QCOMPARE(xml.GetIntAttributeValue(root, "number"), 4);
    QCOMPARE(xml.GetDoubleAttributeValue(root, "real"), 0.25);
    QCOMPARE(xml.GetTextAttributeValue(root, "text"), "u");

    QVERIFY(!xml.ModifyIntAttribute(root, "absent", 4));
    QVERIFY(!xml.ModifyDoubleAttribute(root, "absent", 4));
    QVERIFY(!xml.ModifyTextAttribute(root, "absent", "4"));
    QCOMPARE(xml.GetIntAttributeValue(root, "absent"), 0);
    QCOMPARE(xml.GetDoubleAttributeValue(root, "absent"), 0.0);
    QCOMPARE(xml.GetTextAttributeValue(root, "absent"), kNoText);
}

void tst_cxml::takesNullArguments()
{
    CXml xml;
    QVERIFY(!xml.ParseXmlString(nullptr));
    QVERIFY(!xml.ParseXmlFile(nullptr, TIXML_ENCODING_UTF8));
    QVERIFY(!xml.SaveFileAs(nullptr));
    QVERIFY(!xml.SaveFile());
    QVERIFY(!xml.AddXmlDeclaration(nullptr, "utf-8", ""));
    QVERIFY(!xml.AddXmlDeclaration("1.0", nullptr, ""));
    QVERIFY(!xml.AddXmlDeclaration("1.0", "utf-8", nullptr));
    QCOMPARE(xml.AddXmlRootElement(nullptr, "t"), kNoElement);
    QCOMPARE(xml.GetElement("r"), kNoElement);
    QCOMPARE(xml.GetSessionElement("r"), kNoElement);
    QVERIFY(xml.NoChildren());

    TiXmlElement* const root = xml.AddXmlRootElement("r", "t");
    QCOMPARE(xml.AddChildElement(nullptr, "c", "t"), kNoElement);
    QCOMPARE(xml.AddChildElement(root, nullptr, "t"), kNoElement);
    QVERIFY(!xml.AddElementValue(nullptr, "t"));
    QVERIFY(!xml.AddElementValue(root, nullptr));
    QVERIFY(!xml.ModifyElementValue(nullptr, "t"));
    QVERIFY(!xml.ModifyElementValue(root, nullptr));
    QVERIFY(!xml.AddAttribute(nullptr, "a", 1));
    QVERIFY(!xml.AddAttribute(root, nullptr, 1.0));
    QVERIFY(!xml.AddAttribute(root, "a", kNoText));
    QVERIFY(!xml.ModifyIntAttribute(nullptr, "a", 1));
    QVERIFY(!xml.ModifyDoubleAttribute(root, nullptr, 1));
    QVERIFY(!xml.ModifyTextAttribute(root, "a", nullptr));
    QVERIFY(!xml.AddXmlComment(nullptr, "c"));
    QVERIFY(!xml.AddXmlComment(root, nullptr));

    // Nothing of this left a trace.
    QVERIFY(xml.SaveFileAs(encoded("null.xml")));
    QCOMPARE(TestFile::read(path("null.xml")), QByteArray("<r>t</r>\n"));
}

void tst_cxml::findsNothingByNullArguments()
{
    CXml xml;
    TiXmlElement* const root = xml.AddXmlRootElement("r", "t");
    QCOMPARE(xml.GetIntAttributeValue(nullptr, "a"), 0);
    QCOMPARE(xml.GetDoubleAttributeValue(root, nullptr), 0.0);
    QCOMPARE(xml.GetTextAttributeValue(nullptr, nullptr), kNoText);
    QCOMPARE(xml.GetElement(kNoText), kNoElement);
    QCOMPARE(xml.GetElement(nullptr, "r"), kNoElement);
    QCOMPARE(xml.GetElement(root, nullptr), kNoElement);
    QCOMPARE(xml.GetElement("r", nullptr, "v"), kNoElement);
    QCOMPARE(xml.GetElement("r", "a", nullptr), kNoElement);
    QCOMPARE(xml.GetSessionElement(nullptr), kNoElement);
    QCOMPARE(xml.GetElementValue(kNoElement), kNoText);
    QCOMPARE(xml.GetElementValue(kNoText), kNoText);
    QCOMPARE(xml.GetElementValue(nullptr, "r"), kNoText);
}

void tst_cxml::printsInLines()
{
    CXml xml;
    QVERIFY(xml.AddXmlDeclaration("1.0", "utf-8", ""));
    TiXmlElement* const root = xml.AddXmlRootElement("Root", nullptr);
    QVERIFY(xml.AddXmlComment(root, " note "));
    QVERIFY(xml.AddAttribute(xml.AddChildElement(root, "Leaf", "a<b"), "id", 7));
    TiXmlElement* const branch = xml.AddChildElement(root, "Branch", nullptr);
    xml.AddChildElement(branch, "Empty", nullptr);
    xml.AddChildElement(xml.AddChildElement(branch, "Mixed", "text"), "Inner", nullptr);
    QVERIFY(xml.SaveFileAs(encoded("lines.xml")));
    QCOMPARE(TestFile::read(path("lines.xml")),
             QByteArray("<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n"
                        "<Root>\n"
                        "    <!-- note -->\n"
                        "    <Leaf id=\"7\">a&lt;b</Leaf>\n"
                        "    <Branch>\n"
                        "        <Empty />\n"
                        "        <Mixed>text\n"
                        "            <Inner />\n"
                        "        </Mixed>\n"
                        "    </Branch>\n"
                        "</Root>\n"));

    CXml standalone;
    QVERIFY(standalone.AddXmlDeclaration("1.0", "utf-8", "yes"));
    QVERIFY(standalone.SaveFileAs(encoded("standalone.xml")));
    QCOMPARE(TestFile::read(path("standalone.xml")),
             QByteArray("<?xml version=\"1.0\" encoding=\"utf-8\" standalone=\"yes\" ?>\n"));
}

void tst_cxml::keepsAttributesAndTextsThroughAFile_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("blanks around") << QByteArray("  two  words  ");
    QTest::newRow("blanks only") << QByteArray("   ");
    QTest::newRow("line ends and tabs") << QByteArray("\n\ta\r\n\tb\r");
    QTest::newRow("blank lines only") << QByteArray("\r\n \t\r");
    QTest::newRow("markup") << QByteArray("<a b='c'>\"&amp;\"</a>");
    QTest::newRow("end of a section") << QByteArray("]]>");
    QTest::newRow("like a reference") << QByteArray("&#x41; &#65; &#x & &#");
    QTest::newRow("non-ASCII") << QByteArray("\xC3\xA9\xE4\xB8\xAD\xF0\x9F\x98\x80");
    QTest::newRow("byte-order mark only") << QByteArray("\xEF\xBB\xBF");
    QTest::newRow("marks and blanks") << QByteArray(" \xEF\xBF\xBE\xEF\xBF\xBF ");
    QTest::newRow("mark in front") << QByteArray("\xEF\xBB\xBF a");
    QTest::newRow("control characters") << QByteArray("\x01\x1F\x7F\x0B\x0C");
    QTest::newRow("vertical blanks only") << QByteArray("\x0B\x0C");
}

void tst_cxml::keepsAttributesAndTextsThroughAFile()
{
    QFETCH(QByteArray, text);
    CXml written;
    TiXmlElement* const root = written.AddXmlRootElement("r", nullptr);
    written.AddChildElement(root, "t", text.constData());
    QVERIFY(written.AddAttribute(root, "a", text.constData()));
    QVERIFY(written.SaveFileAs(encoded("texts.xml")));

    TiXmlBase::SetCondenseWhiteSpace(true);
    CXml read;
    QVERIFY2(read.ParseXmlFile(encoded("texts.xml"), TIXML_ENCODING_UTF8),
             read.GetLastErrorString());
    QVERIFY(TiXmlBase::IsWhiteSpaceCondensed());
    QCOMPARE(QByteArray(read.GetElementValue("t")), text);
    QCOMPARE(QByteArray(read.GetTextAttributeValue(read.GetRootElement(), "a")), text);
}

void tst_cxml::keepsACommentInItsBounds()
{
    CXml xml;
    TiXmlElement* const root = xml.AddXmlRootElement("r", nullptr);
    QVERIFY(xml.AddXmlComment(root, "--><evil/><!--"));
    QVERIFY(xml.SaveFileAs(encoded("comment.xml")));
    QVERIFY(xml.ParseXmlFile(encoded("comment.xml"), TIXML_ENCODING_UTF8));
    QCOMPARE(xml.GetElement("evil"), kNoElement);
}

void tst_cxml::savesBackToTheLoadedFile()
{
    TestFile::write(path("back.xml"), "<r>old</r>");
    CXml xml;
    QVERIFY(xml.ParseXmlFile(encoded("back.xml"), TIXML_DEFAULT_ENCODING));
    QVERIFY(xml.ModifyElementValue(xml.GetRootElement(), "new"));
    QVERIFY(xml.SaveFile());
    QCOMPARE(TestFile::read(path("back.xml")), QByteArray("<r>new</r>\n"));
}

void tst_cxml::reportsASaveThatFails_data()
{
    QTest::addColumn<QString>("where");
    QTest::newRow("missing folder") << path("none/a.xml");
    QTest::newRow("a folder") << m_folder.path();
    QTest::newRow("a folder that takes no files") << "/proc/a.xml";
    QTest::newRow("a device") << "/dev/full";
    QTest::newRow("no name") << QString();
}

void tst_cxml::reportsASaveThatFails()
{
    QFETCH(QString, where);
    CXml xml;
    xml.AddXmlRootElement("r", nullptr);
    QVERIFY(!xml.SaveFileAs(QFile::encodeName(where)));
    QCOMPARE(xml.GetLastErrorID(), int(TiXmlBase::TIXML_ERROR_OPENING_FILE));
    QCOMPARE(xml.GetLastErrorString(), "Failed to write file");
    QVERIFY(xml.IsOK());
    QVERIFY(xml.SaveFileAs(encoded("works.xml")));
    QCOMPARE(xml.GetLastErrorID(), 0);
}

void tst_cxml::copiesADocument()
{
    TiXmlDocument source("source.xml");
    source.InsertEndChild(TiXmlElement("r"));
    CXml xml;
    QVERIFY(xml.ParseXmlString("<old/>"));
    xml.CopyValue(source);
    QCOMPARE(xml.GetRootElement()->Value(), "r");
    QCOMPARE(xml.GetElement("old"), kNoElement);
    QVERIFY(xml.GetRootElement() != source.RootElement());
}

void tst_cxml::clears()
{
    CXml xml;
    QVERIFY(!xml.ParseXmlString("<r>"));
    QVERIFY(!xml.IsOK());
    xml.Clear();
    QVERIFY(xml.IsOK());
    QCOMPARE(xml.GetLastErrorID(), 0);
    QCOMPARE(xml.GetLastErrorString(), "");
    QVERIFY(xml.ParseXmlString("<r/>"));
    xml.Clear();
    QCOMPARE(xml.GetRootElement(), kNoElement);
}

QTEST_GUILESS_MAIN(tst_cxml)
#include "tst_cxml.moc"
