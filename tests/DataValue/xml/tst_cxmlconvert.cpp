#include "DataValue/xml/cxmlconvert.h"
#include "support/testfile.h"

#include <QTemporaryDir>
#include <QTest>

#include <json/json.h>

#include <cmath>
#include <limits>

namespace {

const char* const kNoText = nullptr;

/// A value inside `levels` - 1 arrays: that many levels in all.
Json::Value nestedValue(int levels)
{
    Json::Value value = 1;
    for (int i = 1; i < levels; ++i) {
        Json::Value outer(Json::arrayValue);
        outer.append(Json::Value()).swap(value);
        value.swap(outer);
    }
    return value;
}

QByteArray nestedText(int levels)
{
    return QByteArray("<ArrayValue>").repeated(levels - 1) + "<IntValue>1</IntValue>" +
           QByteArray("</ArrayValue>").repeated(levels - 1);
}

} // namespace

class tst_cxmlconvert : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void writesScalarsAsText();
    void readsScalarsFromText();
    void recognisesKindsByExactName();
    void readsAMember();
    void readsAMemberWithoutText();
    void writesTheDescribedFile();
    void writesAnElementUnderAParent();
    void takesNullArguments();
    void keepsKindsThroughAFile();
    void keepsNumbersThroughAFile_data();
    void keepsNumbersThroughAFile();
    void keepsStringsThroughAFile_data();
    void keepsStringsThroughAFile();
    void keepsNullsInTheirPlaces();
    void replacesBytesThatAreNotUtf8();
    void writesLargeIntegersAsDoubles();
    void doesNotWriteNull();
    void readsHandWrittenFiles_data();
    void readsHandWrittenFiles();
    void leavesTheResultAloneOnFailure_data();
    void leavesTheResultAloneOnFailure();
    void limitsNesting();
    void readsTheChildrenOfANode();

private:
    QByteArray file(const char* name = "a.xml") const
    {
        return QFile::encodeName(m_folder.filePath(name));
    }
    Json::Value throughAFile(const Json::Value& json) const
    {
        CXMLConvert convert;
        Json::Value result("nothing was read");
        if (!convert.convertJsonToXml(json, file()) || !convert.convertXmlToJson(file(), result))
            qWarning("%s", convert.document().GetLastErrorString());
        return result;
    }

    QTemporaryDir m_folder;
};

void tst_cxmlconvert::writesScalarsAsText()
{
    CXMLConvert convert;
    QCOMPARE(convert.convertToStrBuf(-12), "-12");
    QCOMPARE(convert.convertToStrBuf(7u), "7");
    QCOMPARE(convert.convertToStrBuf(4294967295u), "-1");
    QCOMPARE(convert.convertToStrBuf(2.5), "2.500000");
    QCOMPARE(convert.convertToStrBuf(0.1234567), "0.123457");
    QCOMPARE(QByteArray(convert.convertToStrBuf(-1e308)).size(), 317);
    QCOMPARE(convert.convertToStrBuf(true), "true");
    QCOMPARE(convert.convertToStrBuf(false), "false");
    QCOMPARE(convert.convertToStrBuf(std::string("a b")), "a b");
    QCOMPARE(convert.convertToStrBuf("text"), "text");
    QCOMPARE(convert.convertToStrBuf(kNoText), "");
}

void tst_cxmlconvert::readsScalarsFromText()
{
    CXMLConvert convert;
    QCOMPARE(convert.convertToInt("-12"), -12);
    QCOMPARE(convert.convertToInt(" 12 apples"), 12);
    QCOMPARE(convert.convertToInt("apples"), 0);
    QCOMPARE(convert.convertToUInt("-1"), 4294967295u);
    QCOMPARE(convert.convertToUInt("4294967295"), 4294967295u);
    QCOMPARE(convert.convertToDouble("2.500000"), 2.5);
    QCOMPARE(convert.convertToDouble("1e2x"), 100.0);
    QCOMPARE(convert.convertToDouble("2,5"), 2.0);
    QVERIFY(convert.convertToBoolean("true"));
    QVERIFY(!convert.convertToBoolean("TRUE"));
    QVERIFY(!convert.convertToBoolean("false"));
    QVERIFY(!convert.convertToBoolean("true "));
    QCOMPARE(convert.convertToString("a"), std::string("a"));
    QCOMPARE(convert.convertToInt(nullptr), 0);
    QCOMPARE(convert.convertToUInt(nullptr), 0u);
    QCOMPARE(convert.convertToDouble(nullptr), 0.0);
    QVERIFY(!convert.convertToBoolean(nullptr));
    QCOMPARE(convert.convertToString(nullptr), std::string());
}

void tst_cxmlconvert::recognisesKindsByExactName()
{
    CXMLConvert convert;
    QCOMPARE(convert.convertToEType("IntValue"), INT_VALUE);
    QCOMPARE(convert.convertToEType("UintValue"), UINT_VALUE);
    QCOMPARE(convert.convertToEType("RealValue"), REAL_VALUE);
    QCOMPARE(convert.convertToEType("StringValue"), STRING_VALUE);
    QCOMPARE(convert.convertToEType("BooleanValue"), BOOLEAN_VALUE);
    QCOMPARE(convert.convertToEType("ArrayValue"), ARRAY_VALUE);
    QCOMPARE(convert.convertToEType("DictValue"), MAP_VALUE);
    QCOMPARE(convert.memberKind(), MAP_VALUE);
    QCOMPARE(convert.convertToEType("intvalue"), NULL_VALUE);
    QCOMPARE(convert.memberKind(), NULL_VALUE);
    QCOMPARE(convert.convertToEType("NullValue"), NULL_VALUE);
    QCOMPARE(convert.convertToEType("key"), NULL_VALUE);
    QCOMPARE(convert.convertToEType(nullptr), NULL_VALUE);
}

void tst_cxmlconvert::readsAMember()
{
    CXml xml;
    QVERIFY(xml.ParseXmlString("<DictValue><key>n</key><!-- c --><IntValue>3</IntValue>"
                               "<ArrayValue>stray</ArrayValue><key>end</key></DictValue>"));
    CXMLConvert convert;
    TiXmlNode* node = convert.getJsonTypeFromXml(xml.GetRootElement()->FirstChild());
    QCOMPARE(node, xml.GetElement("IntValue"));
    QCOMPARE(convert.memberName(), std::string("n"));
    QCOMPARE(convert.memberText(), "3");
    QCOMPARE(convert.memberKind(), INT_VALUE);

    node = convert.getJsonTypeFromXml(node->NextSibling());
    QCOMPARE(node, xml.GetElement("ArrayValue"));
    QCOMPARE(convert.memberName(), std::string());
    QCOMPARE(convert.memberText(), kNoText);
    QCOMPARE(convert.memberKind(), ARRAY_VALUE);

    QVERIFY(!convert.getJsonTypeFromXml(node->NextSibling()));
    QCOMPARE(convert.memberName(), std::string("end"));
    QVERIFY(!convert.getJsonTypeFromXml(nullptr));
    QCOMPARE(convert.memberName(), std::string());
}

void tst_cxmlconvert::readsAMemberWithoutText()
{
    CXml xml;
    QVERIFY(xml.ParseXmlString("<DictValue><key>s</key><StringValue/></DictValue>"));
    CXMLConvert convert;
    QVERIFY(convert.getJsonTypeFromXml(xml.GetRootElement()->FirstChild()));
    QCOMPARE(convert.memberText(), kNoText);
    QCOMPARE(convert.memberKind(), STRING_VALUE);
}

void tst_cxmlconvert::writesTheDescribedFile()
{
    Json::Value json;
    json["nIndex"] = 3;
    json["list"].append("a");
    json["list"].append("b");
    CXMLConvert convert;
    QVERIFY(convert.convertJsonToXml(json, file()));
    QCOMPARE(TestFile::read(file()), QByteArray("<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n"
                                                "<DictValue>\n"
                                                "    <key>list</key>\n"
                                                "    <ArrayValue>\n"
                                                "        <StringValue>a</StringValue>\n"
                                                "        <StringValue>b</StringValue>\n"
                                                "    </ArrayValue>\n"
                                                "    <key>nIndex</key>\n"
                                                "    <IntValue>3</IntValue>\n"
                                                "</DictValue>\n"));
}

void tst_cxmlconvert::writesAnElementUnderAParent()
{
    CXml xml;
    TiXmlElement* const parent = xml.AddXmlRootElement("p", nullptr);
    CXMLConvert convert;
    QCOMPARE(convert.getXmlTypeFromJson(true, parent, "on")->Value(), "BooleanValue");
    QCOMPARE(convert.getXmlTypeFromJson(Json::Value(Json::arrayValue), parent, "")->Value(),
             "ArrayValue");
    Json::Value inner;
    inner["a"] = 1.5;
    QVERIFY(convert.changeDataJsonToXml(inner, parent, "in"));
    QVERIFY(xml.SaveFileAs(file()));
    QCOMPARE(TestFile::read(file()), QByteArray("<p>\n"
                                                "    <key>on</key>\n"
                                                "    <BooleanValue>true</BooleanValue>\n"
                                                "    <ArrayValue />\n"
                                                "    <key>in</key>\n"
                                                "    <DictValue>\n"
                                                "        <key>a</key>\n"
                                                "        <RealValue>1.500000</RealValue>\n"
                                                "    </DictValue>\n"
                                                "</p>\n"));
}

void tst_cxmlconvert::takesNullArguments()
{
    CXMLConvert convert;
    Json::Value json(5);
    QVERIFY(!convert.convertJsonToXml(json, nullptr));
    QVERIFY(!convert.convertXmlToJson(nullptr, json));
    QVERIFY(!convert.changeToJsonObject(nullptr, json));
    QVERIFY(!convert.convertToJsonArray(nullptr, json));
    QVERIFY(json == Json::Value(5));
    QCOMPARE(convert.getXmlTypeFromJson(json, nullptr, nullptr)->Value(), "IntValue");
}

void tst_cxmlconvert::keepsKindsThroughAFile()
{
    Json::Value json;
    json["int"] = -3;
    json["uint"] = 5u;
    json["real"] = 2.5;
    json["text"] = "t";
    json["yes"] = true;
    json["no"] = false;
    json["list"] = Json::Value(Json::arrayValue);
    json["map"] = Json::Value(Json::objectValue);
    json["map"]["deeper"].append(json["list"]);
    const Json::Value read = throughAFile(json);
    QVERIFY2(read == json, read.toStyledString().c_str());
    for (const char* scalar : {"int", "uint", "real", "text", "yes"})
        QVERIFY(throughAFile(json[scalar]) == json[scalar]);
}

void tst_cxmlconvert::keepsNumbersThroughAFile_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<double>("number");
    QTest::newRow("least int") << QByteArray("<IntValue>-2147483648</IntValue>") << -2147483648.0;
    QTest::newRow("largest int") << QByteArray("<IntValue>2147483647</IntValue>") << 2147483647.0;
    QTest::newRow("large uint") << QByteArray("<UintValue>-2147483648</UintValue>") << 2147483648.0;
    QTest::newRow("largest uint") << QByteArray("<UintValue>-1</UintValue>") << 4294967295.0;
    QTest::newRow("small uint") << QByteArray("<UintValue>5</UintValue>") << 5.0;
    QTest::newRow("six decimals") << QByteArray("<RealValue>0.123457</RealValue>") << 0.123457;
}

void tst_cxmlconvert::keepsNumbersThroughAFile()
{
    QFETCH(QByteArray, text);
    QFETCH(double, number);
    TestFile::write(file(), text);
    CXMLConvert convert;
    Json::Value json;
    QVERIFY(convert.convertXmlToJson(file(), json));
    QCOMPARE(json.asDouble(), number);
    QVERIFY(convert.convertJsonToXml(json, file()));
    QVERIFY(TestFile::read(file()).contains(text));
}

void tst_cxmlconvert::keepsStringsThroughAFile_data()
{
    QTest::addColumn<QByteArray>("text");
    const auto row = [](const char* name, const QByteArray& text) { QTest::newRow(name) << text; };
    row("empty", "");
    row("leading blanks", "  a");
    row("trailing blanks", "a  ");
    row("repeated blanks", "a  b   c");
    row("one blank", " ");
    row("blanks only", "    ");
    row("tab", "\t");
    row("line feed", "\n");
    row("lines", "\n one\n\n two \n");
    row("carriage returns", "a\r\nb\rc\r");
    row("carriage returns and blanks only", " \r\r\n\r ");
    row("quotes", "\"'\"");
    row("markup", "<StringValue>&lt;</StringValue><!-- -->");
    row("ampersands", "& && &amp; &a");
    row("like a hexadecimal reference", "&#x41;");
    row("like a cut reference", "&#x41 &# &#;");
    row("end of a section", "a]]>b");
    row("section", "<![CDATA[ x ]]>");
    row("non-ASCII", "gr\xC3\xBC\xC3\x9F \xE4\xB8\xAD\xE6\x96\x87 \xF0\x9F\x98\x80");
    row("no-break space", "\xC2\xA0");
    row("byte-order mark", "\xEF\xBB\xBF");
    row("byte-order mark in front", "\xEF\xBB\xBF text");
    row("noncharacters", "\xEF\xBF\xBE \xEF\xBF\xBF");
    row("control characters", "\x01\x02\x08\x0B\x0C\x0E\x1F\x7F");
    row("zero bytes", QByteArray("a\0b\0", 4));
    row("a zero byte", QByteArray("\0", 1));
    row("long", QByteArray("0123456789 \n").repeated(50000));
}

void tst_cxmlconvert::keepsStringsThroughAFile()
{
    QFETCH(QByteArray, text);
    const std::string bytes = text.toStdString();
    Json::Value json;
    json["before"] = 1;
    json["text"] = bytes;
    json["name " + bytes] = "named";
    json["list"].append(bytes);
    json["list"].append("after");
    const Json::Value read = throughAFile(json);
    QVERIFY2(read == json, read.toStyledString().c_str());
    QVERIFY(throughAFile(bytes) == Json::Value(bytes));
    Json::Value named;
    named[bytes] = 1; // as a name by itself, the empty one included
    QVERIFY(throughAFile(named) == named);
}

void tst_cxmlconvert::keepsNullsInTheirPlaces()
{
    Json::Value json;
    json["a"] = Json::Value();
    json["b"] = 2;
    json["list"].append(Json::Value());
    json["list"].append(1);
    json["list"].append(Json::Value());
    const Json::Value read = throughAFile(json);
    QVERIFY2(read == json, read.toStyledString().c_str());
}

void tst_cxmlconvert::replacesBytesThatAreNotUtf8()
{
    Json::Value json;
    json["b\xFF"] = "x\xE7";
    json["ok"] = "\xC3\xA9";
    const Json::Value read = throughAFile(json);
    QCOMPARE(read.getMemberNames().at(0), std::string("b\xEF\xBF\xBD"));
    QCOMPARE(read["b\xEF\xBF\xBD"].asString(), std::string("x\xEF\xBF\xBD"));
    QCOMPARE(read["ok"].asString(), std::string("\xC3\xA9"));
}

void tst_cxmlconvert::writesLargeIntegersAsDoubles()
{
    Json::Value json;
    json["plus"] = Json::UInt64(4294967296);
    json["minus"] = Json::Int64(-2147483649);
    const Json::Value read = throughAFile(json);
    QVERIFY(read["plus"].type() == Json::realValue);
    QCOMPARE(read["plus"].asDouble(), 4294967296.0);
    QCOMPARE(read["minus"].asDouble(), -2147483649.0);
    const double infinite = std::numeric_limits<double>::infinity();
    QCOMPARE(throughAFile(infinite).asDouble(), infinite);
    QVERIFY(std::isnan(throughAFile(std::nan("")).asDouble()));
}

void tst_cxmlconvert::doesNotWriteNull()
{
    TestFile::write(file("kept.xml"), "old");
    CXMLConvert convert;
    QVERIFY(!convert.convertJsonToXml(Json::Value(), file("kept.xml")));
    QCOMPARE(TestFile::read(file("kept.xml")), QByteArray("old"));
}

void tst_cxmlconvert::readsHandWrittenFiles_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("json");
    QTest::newRow("comments") << QByteArray("<!-- a --><DictValue><!-- b --><key>k</key><!-- c -->"
                                            "<StringValue>x<!-- d -->y</StringValue></DictValue>")
                              << QByteArray("{\"k\":\"xy\"}");
    QTest::newRow("blanks around words")
        << QByteArray("<ArrayValue>\n<BooleanValue>\n true\n</BooleanValue>"
                      "<IntValue> 3 </IntValue></ArrayValue>")
        << QByteArray("[true,3]");
    QTest::newRow("unknown kind") << QByteArray("<ArrayValue><DateValue>1</DateValue></ArrayValue>")
                                  << QByteArray("[null]");
    QTest::newRow("key without value")
        << QByteArray("<DictValue><key>a</key><IntValue>1</IntValue><key>b</key></DictValue>")
        << QByteArray("{\"a\":1}");
    QTest::newRow("key twice, a map first")
        << QByteArray("<DictValue><key>a</key><DictValue><key>b</key><ArrayValue/></DictValue>"
                      "<key>a</key><IntValue>1</IntValue></DictValue>")
        << QByteArray("{\"a\":1}");
    QTest::newRow("key twice, a map last")
        << QByteArray("<DictValue><key>a</key><IntValue>1</IntValue>"
                      "<key>a</key><DictValue><key>b</key><ArrayValue/></DictValue></DictValue>")
        << QByteArray("{\"a\":{\"b\":[]}}");
    QTest::newRow("value without key")
        << QByteArray("<DictValue><IntValue>1</IntValue></DictValue>") << QByteArray("{\"\":1}");
    QTest::newRow("texts between elements")
        << QByteArray("<ArrayValue>a<IntValue>1</IntValue>b</ArrayValue>") << QByteArray("[1]");
    QTest::newRow("elements inside a scalar")
        << QByteArray("<ArrayValue><IntValue>1<b>2</b></IntValue></ArrayValue>")
        << QByteArray("[1]");
}

void tst_cxmlconvert::readsHandWrittenFiles()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, json);
    TestFile::write(file(), text);
    CXMLConvert convert;
    Json::Value read;
    QVERIFY(convert.convertXmlToJson(file(), read));
    Json::StreamWriterBuilder compact;
    compact["indentation"] = "";
    QCOMPARE(QByteArray::fromStdString(Json::writeString(compact, read)), json);
}

void tst_cxmlconvert::leavesTheResultAloneOnFailure_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("cut") << QByteArray("<DictValue><key>a</key><IntValue>1");
    QTest::newRow("another document") << QByteArray("<html><body/></html>");
    QTest::newRow("null") << QByteArray("<NullValue/>");
    QTest::newRow("key as root") << QByteArray("<key>a</key><IntValue>1</IntValue>");
    QTest::newRow("1001 levels") << nestedText(1001);
    QTest::newRow("100000 levels") << nestedText(100000);
}

void tst_cxmlconvert::leavesTheResultAloneOnFailure()
{
    QFETCH(QByteArray, text);
    TestFile::write(file(), text);
    CXMLConvert convert;
    Json::Value json("as it was");
    QVERIFY(!convert.convertXmlToJson(file(), json));
    QVERIFY(json == Json::Value("as it was"));
    QVERIFY(!convert.convertXmlToJson(file("missing.xml"), json));
    QVERIFY(json == Json::Value("as it was"));
}

void tst_cxmlconvert::limitsNesting()
{
    QVERIFY(throughAFile(nestedValue(1000)) == nestedValue(1000));
    TestFile::write(file(), "old");
    CXMLConvert convert;
    QVERIFY(!convert.convertJsonToXml(nestedValue(1001), file()));
    QCOMPARE(TestFile::read(file()), QByteArray("old"));
}

void tst_cxmlconvert::readsTheChildrenOfANode()
{
    CXml xml;
    QVERIFY(
        xml.ParseXmlString("<r><key>a</key><IntValue>1</IntValue><UintValue>2</UintValue></r>"));
    CXMLConvert convert;
    Json::Value object;
    QVERIFY(convert.changeToJsonObject(xml.GetRootElement(), object));
    QCOMPARE(object["a"].asInt(), 1);
    QCOMPARE(object[""].asUInt(), 2u);
    QCOMPARE(object.size(), 2u);
    Json::Value array;
    QVERIFY(convert.convertToJsonArray(xml.GetRootElement(), array));
    QCOMPARE(array.size(), 2u);
    QCOMPARE(array[1].asUInt(), 2u);
}

QTEST_GUILESS_MAIN(tst_cxmlconvert)
#include "tst_cxmlconvert.moc"
