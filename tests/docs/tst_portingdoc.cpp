// What the page on porting says of the kinds in which sizes and times are stored.

#include "DataValue/datavalue.h"
#include "support/testfile.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QTest>
#include <QVector>

#include <type_traits>
#include <vector>

namespace {

//! [storeSizes]
void storeSizes(CDataValue& map, const QList<QString>& names, const QDateTime& when)
{
    map.mapSet("nNames", CDataValue(int(names.size())), false);
    map.mapSet("nFirst", CDataValue(int(names.indexOf("first"))), false);
    map.mapSet("strSeconds", CDataValue(when.toSecsSinceEpoch()), true); // a text with both
}
//! [storeSizes]

constexpr bool kIsQt5 = QT_VERSION < QT_VERSION_CHECK(6, 0, 0);

QString textOf(const CDataValue& value)
{
    return value.parseToQString(FAST_STYLE).trimmed();
}

} // namespace

class tst_portingdoc : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void thePageShowsTheCodeThatIsRun();
    void namedTypesAreStoredAlike();
    void theTableTellsTheKinds();
    void theTypesOfListsAreAsThePageSays();
    void readingTakesOneKind();
};

void tst_portingdoc::thePageShowsTheCodeThatIsRun()
{
    const QString code = TestFile::read(PROJECT_FOLDER "/tests/docs/tst_portingdoc.cpp");
    const QString run = code.section("//! [storeSizes]\n", 1, 1);
    QVERIFY(run.startsWith("void storeSizes("));
    const QString page = TestFile::read(PROJECT_FOLDER "/docs/porting.md");
    QVERIFY2(page.contains("```cpp\n" + run + "```\n"), "the page shows other code");
}

void tst_portingdoc::namedTypesAreStoredAlike()
{
    CDataValue map;
    storeSizes(map, {"none", "first", "last"}, QDateTime::fromSecsSinceEpoch(86400));
    QCOMPARE(textOf(map), QString(R"({"nFirst":1,"nNames":3,"strSeconds":"86400"})"));
}

void tst_portingdoc::theTableTellsTheKinds()
{
    const QString sizes = kIsQt5 ? "3" : "\"3\"";
    const QList<int> list{1, 2, 3};
    QCOMPARE(textOf(CDataValue(list.size())), sizes);
    QCOMPARE(textOf(CDataValue(QString("a,b").size())), sizes);
    QCOMPARE(textOf(CDataValue(QByteArray("abc").length())), sizes);
    QCOMPARE(textOf(CDataValue(QString("abc3").indexOf('3'))), sizes);
    QCOMPARE(textOf(CDataValue(std::vector<int>(3).size())), QString("\"3\""));
    QCOMPARE(textOf(CDataValue(QDateTime::fromMSecsSinceEpoch(3).toMSecsSinceEpoch())),
             QString("\"3\""));
    QVERIFY((std::is_same_v<decltype(QFile().size()), long long>));
    QVERIFY((std::is_same_v<decltype(QElapsedTimer().elapsed()), long long>));
    QCOMPARE(textOf(CDataValue(unsigned(QDateTime::fromSecsSinceEpoch(3).toSecsSinceEpoch()))),
             QString("3"));
}

void tst_portingdoc::theTypesOfListsAreAsThePageSays()
{
    QCOMPARE((std::is_same_v<QList<int>, QVector<int>>), !kIsQt5);
}

void tst_portingdoc::readingTakesOneKind()
{
    QCOMPARE(CDataValue("3").asInt(), 0);
    QCOMPARE(CDataValue(3).asLongLong(), 0LL);
    QVERIFY(CDataValue(3LL).isString());
    QCOMPARE(CDataValue(3LL).asLongLong(), 3LL);
}

QTEST_GUILESS_MAIN(tst_portingdoc)
#include "tst_portingdoc.moc"
