// What documents from anywhere may hold: accepted or refused, never a crash.

#include "DataValue/xml/cxml.h"
#include "support/testfile.h"

#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

namespace {

QByteArray nested(int levels)
{
    return QByteArray("<a>").repeated(levels) + QByteArray("</a>").repeated(levels);
}

QByteArray withAttributes(int count)
{
    QByteArray text = "<r";
    for (int i = 0; i < count; ++i)
        text += " a" + QByteArray::number(i) + "=\"\"";
    return text + "/>";
}

} // namespace

class tst_cxmlinput : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void refuses_data();
    void refuses();
    void accepts_data();
    void accepts();
    void refusesEveryTruncation();
    void doesNotCountWhatOnlyLooksLikeAnEnd_data();
    void doesNotCountWhatOnlyLooksLikeAnEnd();
    void readsNoDefinitions();
    void saysWhereAFileIsWrong_data();
    void saysWhereAFileIsWrong();
    void opensRegularFilesOnly_data();
    void opensRegularFilesOnly();
    void readsLargeDocuments();
    void makesLineEndsOne();
    void readsBytesAsTheyAreWhenAsked();
    void keepsTheGlobalSettingAfterAFailure();
    void replacesTheDocumentBefore();

private:
    QString path(const char* name) const { return m_folder.filePath(name); }

    QTemporaryDir m_folder;
};

void tst_cxmlinput::refuses_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("blanks") << QByteArray(" \n ");
    QTest::newRow("a text") << QByteArray("hello");
    QTest::newRow("a declaration only") << QByteArray("<?xml version=\"1.0\"?>");
    QTest::newRow("a comment only") << QByteArray("<!-- a -->");
    QTest::newRow("a lone bracket") << QByteArray("<");
    QTest::newRow("a cut UTF-8 character") << QByteArray("<x>\xE7");
    QTest::newRow("a cut UTF-8 character in an attribute") << QByteArray("<x a=\"\xF0\x9F");
    QTest::newRow("an overlong character") << QByteArray("<x>\xC0\x80</x>");
    QTest::newRow("a surrogate") << QByteArray("<x>\xED\xA0\x80</x>");
    QTest::newRow("a byte alone") << QByteArray("<x>\x80</x>");
    QTest::newRow("1001 levels") << nested(1001);
    QTest::newRow("1001 levels, the last one empty")
        << QByteArray("<a>").repeated(1000) + "<b/>" + QByteArray("</a>").repeated(1000);
    QTest::newRow("a million levels") << nested(1000000);
    QTest::newRow("a million levels without ends") << QByteArray("<a>").repeated(1000000);
    QTest::newRow("257 attributes") << withAttributes(257);
    QTest::newRow("wrong end") << QByteArray("<a></b>");
    QTest::newRow("reference without end") << QByteArray("<a>&#x41</a>");
    QTest::newRow("reference over elements") << QByteArray("<a>&#1</a><b><b>;</b></b>");
    QTest::newRow("reference over an attribute") << QByteArray("<a b=\"&#\"><c d=\";\"/></a>");
    QTest::newRow("reference to a surrogate") << QByteArray("<a>&#xD800;</a>");
    QTest::newRow("reference beyond all characters") << QByteArray("<a>&#x110000;</a>");
    QTest::newRow("reference with a huge number") << QByteArray("<a>&#99999999999999;</a>");
    QTest::newRow("attribute twice") << QByteArray("<a b=\"1\" b=\"2\"/>");
    QTest::newRow("comment without end") << QByteArray("<a><!-- </a>");
    QTest::newRow("section without end") << QByteArray("<a><![CDATA[ </a>");
    QTest::newRow("binary") << QByteArray("\x7F"
                                          "ELF\x02\x01\x01\xFF\xFE<a/>");
}

void tst_cxmlinput::refuses()
{
    QFETCH(QByteArray, text);
    CXml xml;
    QVERIFY(!xml.ParseXmlString(text.constData()));
    QVERIFY(!xml.IsOK());
    QVERIFY(xml.GetLastErrorID() != 0);
    QVERIFY(*xml.GetLastErrorString() != '\0');
    QVERIFY(!xml.GetRootElement());

    TestFile::write(path("bad.xml"), text);
    QVERIFY(!xml.ParseXmlFile(QFile::encodeName(path("bad.xml")), TIXML_ENCODING_UTF8));
    QVERIFY(!xml.ParseXmlFile(QFile::encodeName(path("bad.xml")), TIXML_ENCODING_UNKNOWN));
    QVERIFY(xml.ParseXmlString("<good/>"));
    QVERIFY(xml.IsOK());
    QCOMPARE(xml.GetLastErrorID(), 0);
}

void tst_cxmlinput::accepts_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("rootText");
    QTest::newRow("byte-order mark") << QByteArray("\xEF\xBB\xBF<r>a</r>") << QByteArray("a");
    QTest::newRow("declaration") << QByteArray(
                                        "<?xml version='1.0' standalone = \"yes\" ?><r>a</r>")
                                 << QByteArray("a");
    QTest::newRow("document type") << QByteArray("<!DOCTYPE r><r>a</r>") << QByteArray("a");
    QTest::newRow("instruction") << QByteArray("<?php echo ?><r>a</r>") << QByteArray("a");
    QTest::newRow("1000 levels") << nested(1000) << QByteArray();
    QTest::newRow("256 attributes") << withAttributes(256) << QByteArray();
    QTest::newRow("entities") << QByteArray("<r>&lt;&#65;&#x42;&#xe9;&unknown; & &amp;</r>")
                              << QByteArray("<AB\xC3\xA9&unknown; & &");
    QTest::newRow("section") << QByteArray("<r><![CDATA[<&>]]></r>") << QByteArray("<&>");
    QTest::newRow("bracket in an attribute")
        << QByteArray("<r a=\"</r>\">a</r>") << QByteArray("a");
    QTest::newRow("blanks in tags") << QByteArray("<r\n a = '1' >a</r >") << QByteArray("a");
}

void tst_cxmlinput::accepts()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, rootText);
    CXml xml;
    QVERIFY2(xml.ParseXmlString(text.constData()), xml.GetLastErrorString());
    QCOMPARE(QByteArray(xml.GetElementValue(xml.GetRootElement())), rootText);
}

void tst_cxmlinput::refusesEveryTruncation()
{
    const QByteArray whole = "<?xml version=\"1.0\"?><r a=\"\xC3\xA9\"><!--c--><b>&amp;&#x41;</b>"
                             "<![CDATA[x]]>\xE4\xB8\xAD<e/></r>";
    CXml xml;
    QVERIFY(xml.ParseXmlString(whole.constData()));
    for (int length = 0; length < whole.size(); ++length)
        QVERIFY2(!xml.ParseXmlString(whole.left(length).constData()),
                 whole.left(length).constData());
}

void tst_cxmlinput::doesNotCountWhatOnlyLooksLikeAnEnd_data()
{
    // Each piece opens one element in the parser's eyes and tries to hide that from the check.
    QTest::addColumn<QByteArray>("piece");
    QTest::newRow("comment") << QByteArray("<a><!--</a>-->");
    QTest::newRow("comment that seems short") << QByteArray("<a><!--></a>-->");
    QTest::newRow("section") << QByteArray("<a><![CDATA[</a>]]>");
    QTest::newRow("attribute") << QByteArray("<a b='</a>'>");
    QTest::newRow("declaration") << QByteArray("<a><?xml version=\"></a>\" ?>");
    QTest::newRow("declaration, odd quotes") << QByteArray("<a><?xml foo=\" version=\"?></a>\" ?>");
    QTest::newRow("instruction") << QByteArray("<a><?p x=\"></a>\" ?>").replace("></a>", "</a>");
    QTest::newRow("reference") << QByteArray("<a b=\"&#\"></a><!-- ;\"> -->");
    QTest::newRow("delete as a name") << QByteArray("<\x7F><b></b>");
    QTest::newRow("mark after the bracket") << QByteArray("<a></\xEF\xBB\xBF"
                                                          "a>");
    QTest::newRow("end in a document type") << QByteArray("<a><!X </a>");
}

void tst_cxmlinput::doesNotCountWhatOnlyLooksLikeAnEnd()
{
    QFETCH(QByteArray, piece);
    CXml xml;
    QVERIFY(!xml.ParseXmlString("<r>" + piece.repeated(200000)));
    QVERIFY(!xml.ParseXmlString("<r/>\xEF\xBB\xBF" + piece.repeated(200000)));
}

void tst_cxmlinput::readsNoDefinitions()
{
    CXml xml;
    QVERIFY(!xml.ParseXmlString("<!DOCTYPE r [<!ENTITY a \"aaaa\"><!ENTITY b \"&a;&a;\">]>"
                                "<r>&b;</r>"));
    QVERIFY(xml.ParseXmlString("<!DOCTYPE r SYSTEM \"file:///etc/hostname\"><r>&x;</r>"));
    QCOMPARE(xml.GetElementValue("r"), "&x;");
}

void tst_cxmlinput::saysWhereAFileIsWrong_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("id");
    QTest::addColumn<QString>("message");
    QTest::addColumn<int>("row");
    QTest::newRow("UTF-8") << QByteArray("<a>\n\n\xFF</a>") << 1
                           << "The document is not valid UTF-8" << 3;
    QTest::newRow("zero") << QByteArray("<a>\n\0</a>", 9) << 1
                          << "A zero byte stands in the document" << 2;
    QTest::newRow("depth") << QByteArray("\n") + nested(1001) << 1
                           << "The elements are nested too deeply" << 2;
    QTest::newRow("not closed") << QByteArray("<a>\n<b>\n</b>\n") << 1
                                << "The document ends inside an element" << 4;
    QTest::newRow("wrong end") << QByteArray("<a>\n<b>\n</a></b>\n")
                               << int(TiXmlBase::TIXML_ERROR_READING_END_TAG)
                               << "Error reading end tag." << 3;
    QTest::newRow("empty") << QByteArray() << int(TiXmlBase::TIXML_ERROR_DOCUMENT_EMPTY)
                           << "Error document empty." << 0;
}

void tst_cxmlinput::saysWhereAFileIsWrong()
{
    QFETCH(QByteArray, text);
    QFETCH(int, id);
    QFETCH(QString, message);
    QFETCH(int, row);
    TestFile::write(path("where.xml"), text);
    CXml xml;
    QVERIFY(!xml.ParseXmlFile(QFile::encodeName(path("where.xml")), TIXML_ENCODING_UTF8));
    QCOMPARE(xml.GetLastErrorID(), id);
    QCOMPARE(QString(xml.GetLastErrorString()), message);
    QCOMPARE(xml.GetLastErrorRow(), row);
}

void tst_cxmlinput::opensRegularFilesOnly_data()
{
    const QByteArray pipe = QFile::encodeName(path("pipe.xml"));
    QCOMPARE(mkfifo(pipe.constData(), 0600), 0);
    QTest::addColumn<QString>("where");
    QTest::newRow("missing") << path("missing.xml");
    QTest::newRow("folder") << m_folder.path();
    QTest::newRow("pipe") << path("pipe.xml");
    QTest::newRow("endless device") << "/dev/zero";
    QTest::newRow("no name") << QString();
}

void tst_cxmlinput::opensRegularFilesOnly()
{
    QFETCH(QString, where);
    CXml xml;
    QVERIFY(!xml.ParseXmlFile(QFile::encodeName(where), TIXML_ENCODING_UTF8));
    QCOMPARE(xml.GetLastErrorID(), int(TiXmlBase::TIXML_ERROR_OPENING_FILE));
    QCOMPARE(xml.GetLastErrorString(), "Failed to open file");
    QCOMPARE(xml.GetLastErrorRow(), 0);
}

void tst_cxmlinput::readsLargeDocuments()
{
    const QByteArray text(20 * 1024 * 1024, 'x');
    const QByteArray large = "<r>" + text + "</r>";
    CXml xml;
    TestFile::write(path("large.xml"), large);
    QVERIFY(xml.ParseXmlFile(QFile::encodeName(path("large.xml")), TIXML_ENCODING_UTF8));
    QVERIFY(text == xml.GetElementValue("r"));
    QVERIFY(xml.ParseXmlString(large.constData()));
    QVERIFY(text == xml.GetElementValue("r"));
    QVERIFY(QFile::remove(path("large.xml")));
}

void tst_cxmlinput::makesLineEndsOne()
{
    TestFile::write(path("ends.xml"), "<r>\r\n<a>1\r\n2\r3\r\r\n4</a>\r</r>\r");
    CXml xml;
    QVERIFY(xml.ParseXmlFile(QFile::encodeName(path("ends.xml")), TIXML_ENCODING_UTF8));
    QCOMPARE(xml.GetElementValue("a"), "1\n2\n3\n\n4");
}

void tst_cxmlinput::readsBytesAsTheyAreWhenAsked()
{
    TestFile::write(path("latin.xml"),
                    "<?xml version=\"1.0\" encoding=\"iso-8859-1\"?><r>\xE9</r>");
    CXml xml;
    const QByteArray file = QFile::encodeName(path("latin.xml"));
    QVERIFY(!xml.ParseXmlFile(file, TIXML_ENCODING_UNKNOWN));
    QVERIFY(xml.ParseXmlFile(file, TIXML_ENCODING_LEGACY));
    QCOMPARE(xml.GetElementValue("r"), "\xE9");
}

void tst_cxmlinput::keepsTheGlobalSettingAfterAFailure()
{
    CXml xml;
    for (const bool condensed : {false, true}) {
        TiXmlBase::SetCondenseWhiteSpace(condensed);
        QVERIFY(!xml.ParseXmlString("<a></b>"));
        QCOMPARE(TiXmlBase::IsWhiteSpaceCondensed(), condensed);
        QVERIFY(xml.ParseXmlString("<a>  x  y </a>"));
        QCOMPARE(xml.GetElementValue("a"), "  x  y ");
        QCOMPARE(TiXmlBase::IsWhiteSpaceCondensed(), condensed);
    }
}

void tst_cxmlinput::replacesTheDocumentBefore()
{
    CXml xml;
    QVERIFY(xml.ParseXmlString("<first/>"));
    QVERIFY(xml.ParseXmlString("<second/>"));
    QVERIFY(!xml.GetElement("first"));
    QCOMPARE(xml.GetRootElement()->Value(), "second");
    QVERIFY(!xml.ParseXmlString("<third>"));
    QVERIFY(!xml.GetRootElement());
}

QTEST_GUILESS_MAIN(tst_cxmlinput)
#include "tst_cxmlinput.moc"
