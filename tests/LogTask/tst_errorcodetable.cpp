#include "LogTask/errorcodetable_p.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <thread>
#include <vector>

class tst_errorcodetable : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsTheLinesAfterTheHead_data();
    void readsTheLinesAfterTheHead();
    void keepsEntriesOfAnEarlierFile();
    void saysWhyAFileCannotBeRead();
    void givesEmptyTextForUnknownCodes();
    void answersSeveralThreadsAtOnce();
};

namespace {

void load(ErrorCodeTable* table, const QByteArray& content)
{
    QTemporaryDir folder;
    QFile file(folder.filePath("LogFile.ini"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), content.size());
    file.close();
    table->load(file.fileName());
}

} // namespace

void tst_errorcodetable::readsTheLinesAfterTheHead_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("text");
    const auto row = [](const char* name, const char* content, int code, const char* text) {
        QTest::newRow(name) << QByteArray(content) << code << QString::fromUtf8(text);
    };
    row("hexadecimal", "[CODE]\n1A=No signal\n", 26, "No signal");
    row("later line wins", "[CODE]\n1A=No signal\n1a=Nothing\n", 26, "Nothing");
    row("no code before =", "[CODE]\n=x\nzz=x\n1A=No signal\n", 0, "");
    row("no hexadecimal", "[CODE]\n0=zero\nzz=x\n", 0, "zero");
    row("goes on after no code", "[CODE]\n=x\nzz=x\n1A=No signal\n", 26, "No signal");
    row("before the head", "1A=early\n[CODE]\n1B=late\n", 26, "");
    row("head within a line", "; see [CODE] below\n1A=No signal\n", 26, "No signal");
    row("head's own line", "1A=[CODE]\n", 26, "");
    row("head in lower case", "[code]\n1A=No signal\n", 26, "");
    row("other section after", "[CODE]\n1A=x\n[SETTING]\n1B=y\n", 27, "y");
    row("empty lines", "[CODE]\n\n\n1A=No signal\n\n", 26, "No signal");
    row("no line end at the end", "[CODE]\n1A=No signal", 26, "No signa");
    row("only an equals sign at the end", "[CODE]\n1A=", 26, "");
    row("empty text", "[CODE]\n1A=\n", 26, "");
    row("equals sign in the text", "[CODE]\n1A=a=b\n", 26, "a=b");
    row("blanks", "[CODE]\n 1A = No signal \n", 26, " No signal ");
    row("carriage returns", "[CODE]\r\n1A=No signal\r\n", 26, "No signal");
    row("prefix", "[CODE]\n0x1A=No signal\n", 26, "No signal");
    row("negative", "[CODE]\n-1=minus\n", -1, "minus");
    row("32 bits", "[CODE]\nFFFFFFFF=all\n", -1, "all");
    row("more than 32 bits", "[CODE]\n0=zero\n100000000=x\n", 0, "zero");
    row("non-ASCII", "[CODE]\n1A=\xC3\xA9t\xC3\xA9\n", 26, "\xC3\xA9t\xC3\xA9");
    row("non-ASCII at the end", "[CODE]\n1A=\xC3\xA9t\xC3\xA9", 26, "\xC3\xA9t");
}

void tst_errorcodetable::readsTheLinesAfterTheHead()
{
    QFETCH(QByteArray, content);
    QFETCH(int, code);
    QFETCH(QString, text);
    ErrorCodeTable table;
    load(&table, content);
    QCOMPARE(table.text(code), text);
}

void tst_errorcodetable::keepsEntriesOfAnEarlierFile()
{
    ErrorCodeTable table;
    load(&table, "[CODE]\n1=one\n2=two\n");
    load(&table, "[CODE]\n2=zwei\n");
    QCOMPARE(table.text(1), QString("one"));
    QCOMPARE(table.text(2), QString("zwei"));
}

void tst_errorcodetable::saysWhyAFileCannotBeRead()
{
    const QTemporaryDir folder;
    ErrorCodeTable table;
    QTest::ignoreMessage(QtDebugMsg, "\"No such file or directory\"");
    table.load(folder.filePath("missing.ini"));
    QCOMPARE(table.text(1), QString());
}

void tst_errorcodetable::givesEmptyTextForUnknownCodes()
{
    ErrorCodeTable table;
    QCOMPARE(table.text(7), QString());
    QCOMPARE(table.text(7), QString());
    load(&table, "[CODE]\n7=seven\n");
    QCOMPARE(table.text(7), QString("seven"));
}

void tst_errorcodetable::answersSeveralThreadsAtOnce()
{
    ErrorCodeTable table;
    load(&table, "[CODE]\n1A=No signal\n");
    std::vector<std::thread> threads;
    std::vector<int> right(4, 0);
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&table, &right, t] {
            for (int i = 0; i < 2000; ++i) {
                right[t] += table.text(26) == QLatin1String("No signal");
                right[t] += table.text(1000 + 4 * i + t).isEmpty();
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    QCOMPARE(right, std::vector<int>(4, 4000));
}

QTEST_GUILESS_MAIN(tst_errorcodetable)
#include "tst_errorcodetable.moc"
