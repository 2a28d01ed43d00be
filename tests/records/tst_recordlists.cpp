// The lists of fields as they are made from headers.

#include "support/childprocess.h"
#include "support/testfile.h"

#include <QDateTime>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

class tst_recordlists : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void listsEachMemberWithItsMeaning();
    void leavesAnOutputThatWouldNotChange();
    void refusesWhatIsNotDescribed_data();
    void refusesWhatIsNotDescribed();

private:
    QString path(const QString& name) const { return m_folder.filePath(name); }
    ChildProcess::Result makeLists(const QByteArray& header) const;

    QTemporaryDir m_folder;
};

ChildProcess::Result tst_recordlists::makeLists(const QByteArray& header) const
{
    TestFile::write(path("some.h"), header);
    TestFile::write(path("make.cmake"), QString("include(\"%1\")\n"
                                                "wzr_make_record_lists(\"%2\" folder \"%3\")\n")
                                            .arg(LISTS_SCRIPT, path("lists.cpp"), path("some.h"))
                                            .toUtf8());
    return ChildProcess::run(CMAKE_PROGRAM, {"-P", path("make.cmake")});
}

static const char kHeader[] = "#ifndef SOME_H\n"
                              "#include <QString>\n"
                              "\n"
                              "// What these are for; nothing of it is listed.\n"
                              "//\n"
                              "// \"Nothing\" at all.\n"
                              "\n"
                              "/// One; with\n"
                              "/// three\n"
                              "/// lines.\n"
                              "struct First\n"
                              "{\n"
                              "    int nOne = 0;      ///< A number; of \"things\"\n"
                              "    bool bTwo = false; ///< On C:\\ and [so\n"
                              "                       ///< on]\n"
                              "    unsigned long dwMask = 0;        ///< Bits = 0;\n"
                              "    QHash<QString, QString> texts; ///< By name\n"
                              "};\n"
                              "WZR_DECLARE_RECORD(First)\n"
                              "\n"
                              "/// Another.\n"
                              "struct Second_2\n"
                              "{\n"
                              "    std::list<First> lstAll; ///< All of them\n"
                              "};\n"
                              "WZR_DECLARE_RECORD(Second_2)\n"
                              "\n"
                              "#endif\n";

void tst_recordlists::listsEachMemberWithItsMeaning()
{
    const auto result = makeLists(kHeader);
    QVERIFY2(result.code == 0, result.err.constData());
    const QByteArray lists = TestFile::read(path("lists.cpp"));
    QCOMPARE(lists.mid(lists.indexOf("WZR_RECORD")),
             QByteArray("WZR_RECORD(First, \"folder/some.h\", \"One; with three lines.\",\n"
                        "    WZR_FIELD(nOne, \"A number; of \\\"things\\\"\"),\n"
                        "    WZR_FIELD(bTwo, \"On C:\\\\ and [so on]\"),\n"
                        "    WZR_FIELD(dwMask, \"Bits = 0;\"),\n"
                        "    WZR_FIELD(texts, \"By name\"))\n"
                        "WZR_RECORD(Second_2, \"folder/some.h\", \"Another.\",\n"
                        "    WZR_FIELD(lstAll, \"All of them\"))\n"
                        "\n"
                        "std::vector<const records::RecordType*> records::allRecords()\n"
                        "{\n"
                        "    return {\n"
                        "        &RecordTypeOf<First>::value,\n"
                        "        &RecordTypeOf<Second_2>::value};\n"
                        "}\n"));
}

void tst_recordlists::leavesAnOutputThatWouldNotChange()
{
    QCOMPARE(makeLists(kHeader).code, 0);
    const QDateTime before = QDateTime::fromSecsSinceEpoch(1000000000);
    QFile output(path("lists.cpp"));
    QVERIFY(output.open(QIODevice::ReadWrite));
    QVERIFY(output.setFileTime(before, QFileDevice::FileModificationTime));
    output.close();
    QCOMPARE(makeLists(kHeader).code, 0);
    QCOMPARE(QFileInfo(output.fileName()).lastModified(), before);
    QCOMPARE(makeLists(QByteArray(kHeader).replace("All of", "Each of")).code, 0);
    QVERIFY(QFileInfo(output.fileName()).lastModified() > before);
}

void tst_recordlists::refusesWhatIsNotDescribed_data()
{
    QTest::addColumn<QByteArray>("described");
    QTest::addColumn<QByteArray>("instead");
    QTest::addColumn<QByteArray>("shown");
    QTest::newRow("member without a comment") << QByteArray("0;      ///< A number; of \"things\"")
                                              << QByteArray("0;") << QByteArray("int nOne");
    QTest::newRow("member with another comment")
        << QByteArray("///< All") << QByteArray("// All") << QByteArray("lstAll");
    QTest::newRow("record without a comment")
        << QByteArray("/// Another.\n") << QByteArray() << QByteArray("struct Second_2");
    QTest::newRow("record without members")
        << QByteArray("    std::list<First> lstAll; ///< All of them\n") << QByteArray()
        << QByteArray("struct Second_2");
    QTest::newRow("function") << QByteArray("    int nOne")
                              << QByteArray("    int get() const;\n    int nOne")
                              << QByteArray("int get");
    QTest::newRow("base") << QByteArray("struct First\n") << QByteArray("struct First : Base\n")
                          << QByteArray("First : Base");
}

void tst_recordlists::refusesWhatIsNotDescribed()
{
    QFETCH(QByteArray, described);
    QFETCH(QByteArray, instead);
    QFETCH(QByteArray, shown);
    const QByteArray header = QByteArray(kHeader).replace(described, instead);
    QVERIFY(header != kHeader);
    const auto result = makeLists(header);
    QVERIFY(result.code != 0);
    QVERIFY2(result.err.contains(shown) && result.err.contains("some.h"), result.err.constData());
}

QTEST_GUILESS_MAIN(tst_recordlists)
#include "tst_recordlists.moc"
