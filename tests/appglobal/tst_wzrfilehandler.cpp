#include "appglobal/wzrfilehandler.h"
#include "support/testfile.h"

#include <QTemporaryDir>
#include <QTest>

namespace {

/// UTF-16LE of ASCII, without a mark.
QByteArray units(const QByteArray& ascii)
{
    QByteArray bytes;
    for (const char c : ascii)
        bytes.append(c).append('\0');
    return bytes;
}

const QByteArray kMark("\xFF\xFE");

} // namespace

class tst_wzrfilehandler : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void writesTheMarkFirst();
    void writesLines();
    void writesTheBytesOfUtf8AsUnits();
    void writesZeroCharacters();
    void readsLines();
    void readsLinesInPieces_data();
    void readsLinesInPieces();
    void readsWhatIsLeft();
    void readsCharactersAsTheyAre();
    void readsBackWhatItWrote();
    void readsAFileWithoutAMark();
    void readsAnEmptyFile_data();
    void readsAnEmptyFile();
    void goesBackToTheFirstLine();
    void goesToAPosition();
    void isHarmlessWhenNotOpen();
    void isHarmlessAfterItsClose();
    void failsToOpen_data();
    void failsToOpen();
    void opensAnotherFile();
    void flushesAtItsEnd();

private:
    QString path(const char* name = "a.txt") const { return m_folder.filePath(name); }
    static void expectNeutral(WZRFileHandler& file);

    QTemporaryDir m_folder;
};

void tst_wzrfilehandler::writesTheMarkFirst()
{
    TestFile::write(path(), "old content");
    WZRFileHandler file;
    QVERIFY(file.open(path(), true));
    file.close();
    QCOMPARE(TestFile::read(path()), kMark);
}

void tst_wzrfilehandler::writesLines()
{
    WZRFileHandler file;
    QVERIFY(file.open(path(), true));
    file.writeLine("one");
    QCOMPARE(TestFile::read(path()), kMark + units("one\n"));
    file.writeLine("");
    file.writeAll("t\r\nw");
    file.writeAll("o");
    file.close();
    QCOMPARE(TestFile::read(path()), kMark + units("one\n\nt\r\nwo"));
}

void tst_wzrfilehandler::writesTheBytesOfUtf8AsUnits()
{
    WZRFileHandler file;
    QVERIFY(file.open(path(), true));
    file.writeLine(QString(QChar(0x00E9)));
    QCOMPARE(TestFile::read(path()), QByteArray("\xFF\xFE\xC3\x00\xA9\x00\x0A\x00", 8));
    file.writeAll(QString::fromUtf8("\xE4\xB8\xAD\xF0\x9F\x98\x80"));
    file.close();
    QCOMPARE(TestFile::read(path()).mid(8),
             QByteArray("\xE4\x00\xB8\x00\xAD\x00\xF0\x00\x9F\x00\x98\x00\x80\x00", 14));
}

void tst_wzrfilehandler::writesZeroCharacters()
{
    WZRFileHandler file;
    QVERIFY(file.open(path(), true));
    file.writeAll(QString("a") + QChar(0) + 'b');
    file.close();
    QCOMPARE(TestFile::read(path()), QByteArray("\xFF\xFE"
                                                "a\0\0\0b\0",
                                                8));
}

void tst_wzrfilehandler::readsLines()
{
    TestFile::write(path(), kMark + units("one\n\nthree"));
    WZRFileHandler file;
    QVERIFY(file.open(path(), false));
    QVERIFY(!file.atEnd());
    QCOMPARE(file.readLine(0), QString("one"));
    QCOMPARE(file.readLine(), QString(""));
    QVERIFY(!file.atEnd());
    QCOMPARE(file.readLine(), QString("three"));
    QVERIFY(file.atEnd());
    QCOMPARE(file.readLine(), QString());
}

void tst_wzrfilehandler::readsLinesInPieces_data()
{
    QTest::addColumn<qint64>("length");
    QTest::addColumn<QString>("first");
    QTest::newRow("2") << qint64(2) << "ab";
    QTest::newRow("exact") << qint64(5) << "abcde";
    QTest::newRow("more") << qint64(50) << "abcde";
    QTest::newRow("beyond 32 bits") << qint64(1) * 4294967297 << "abcde";
    QTest::newRow("no limit") << qint64(0) << "abcde";
    QTest::newRow("negative") << qint64(-1) << "abcde";
}

void tst_wzrfilehandler::readsLinesInPieces()
{
    QFETCH(qint64, length);
    QFETCH(QString, first);
    TestFile::write(path(), kMark + units("abcde\nf"));
    WZRFileHandler file;
    QVERIFY(file.open(path(), false));
    QCOMPARE(file.readLine(length), first);
}

void tst_wzrfilehandler::readsWhatIsLeft()
{
    TestFile::write(path(), kMark + units("one\ntwo\nthree\n"));
    WZRFileHandler file;
    QVERIFY(file.open(path(), false));
    QCOMPARE(file.readLine(), QString("one"));
    QCOMPARE(file.readAll(), QString("two\nthree\n"));
    QVERIFY(file.atEnd());
    QCOMPARE(file.readAll(), QString(""));
}

void tst_wzrfilehandler::readsCharactersAsTheyAre()
{
    TestFile::write(path(), QByteArray("\xFF\xFE\xE9\x00\x2D\x4E\x3D\xD8\x00\xDE\x0A\x00", 12));
    WZRFileHandler file;
    QVERIFY(file.open(path(), false));
    QCOMPARE(file.readLine(), QString::fromUtf8("\xC3\xA9\xE4\xB8\xAD\xF0\x9F\x98\x80"));
}

void tst_wzrfilehandler::readsBackWhatItWrote()
{
    WZRFileHandler file;
    QVERIFY(file.open(path(), true));
    file.writeLine("plain");
    file.writeLine(QString(QChar(0x00E9)));
    QVERIFY(file.reset());
    QCOMPARE(file.readLine(), QString("plain"));
    // Not U+00E9 again: reading does not undo the two steps of writing.
    QCOMPARE(file.readLine(), QString(QChar(0x00C3)) + QChar(0x00A9));
    QVERIFY(file.atEnd());
    file.writeLine("more");
    file.close();
    QVERIFY(TestFile::read(path()).endsWith(units("more\n")));
}

void tst_wzrfilehandler::readsAFileWithoutAMark()
{
    TestFile::write(path(), units("ab\n"));
    WZRFileHandler file;
    QVERIFY(file.open(path(), false));
    QCOMPARE(file.readAll(), QString("ab\n"));
}

void tst_wzrfilehandler::readsAnEmptyFile_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("no byte") << QByteArray();
    QTest::newRow("the mark only") << kMark;
}

void tst_wzrfilehandler::readsAnEmptyFile()
{
    QFETCH(QByteArray, content);
    TestFile::write(path(), content);
    WZRFileHandler file;
    QVERIFY(file.open(path(), false));
    QVERIFY(file.atEnd());
    QVERIFY(file.readLine().isEmpty());
    QVERIFY(file.readAll().isEmpty());
}

void tst_wzrfilehandler::goesBackToTheFirstLine()
{
    TestFile::write(path(), kMark + units("one\ntwo\n"));
    WZRFileHandler file;
    QVERIFY(file.open(path(), false));
    for (int i = 0; i < 3; ++i) {
        QCOMPARE(file.readLine(), QString("one"));
        QCOMPARE(file.readAll(), QString("two\n"));
        QVERIFY(file.atEnd());
        QVERIFY(file.reset());
        QVERIFY(!file.atEnd());
    }
}

void tst_wzrfilehandler::goesToAPosition()
{
    TestFile::write(path(), kMark + units("abcd"));
    WZRFileHandler file;
    QVERIFY(file.open(path(), false));
    QVERIFY(file.seek(6));
    QCOMPARE(file.readAll(), QString("cd"));
    QVERIFY(file.seek(0));
    QCOMPARE(file.readAll(), QString("abcd"));
    QVERIFY(!file.seek(-1));
}

void tst_wzrfilehandler::expectNeutral(WZRFileHandler& file)
{
    QCOMPARE(file.readLine(0), QString());
    QCOMPARE(file.readAll(), QString());
    QVERIFY(file.atEnd());
    QVERIFY(!file.seek(0));
    QVERIFY(!file.reset());
    file.writeLine("text");
    file.writeAll("text");
    file.flush();
    file.close();
}

void tst_wzrfilehandler::isHarmlessWhenNotOpen()
{
    WZRFileHandler file;
    expectNeutral(file);
}

void tst_wzrfilehandler::isHarmlessAfterItsClose()
{
    WZRFileHandler file;
    QVERIFY(file.open(path(), true));
    file.writeLine("a");
    file.close();
    expectNeutral(file);
    QCOMPARE(TestFile::read(path()), kMark + units("a\n"));
    // A file that is only read is not written to.
    QVERIFY(file.open(path(), false));
    file.writeLine("b");
    file.close();
    QCOMPARE(TestFile::read(path()), kMark + units("a\n"));
}

void tst_wzrfilehandler::failsToOpen_data()
{
    QTest::addColumn<QString>("where");
    QTest::addColumn<bool>("write");
    QTest::newRow("missing") << path("none") << false;
    QTest::newRow("folder") << m_folder.path() << true;
    QTest::newRow("missing folder") << path("none/a.txt") << true;
    QTest::newRow("no name") << QString() << true;
}

void tst_wzrfilehandler::failsToOpen()
{
    QFETCH(QString, where);
    QFETCH(bool, write);
    WZRFileHandler file;
    QVERIFY(!file.open(where, write));
    expectNeutral(file);
    QVERIFY(file.open(path(), true));
    file.writeAll("pending");
    QVERIFY(!file.open(where, write));
    expectNeutral(file);
    QCOMPARE(TestFile::read(path()), kMark + units("pending"));
}

void tst_wzrfilehandler::opensAnotherFile()
{
    WZRFileHandler file;
    QVERIFY(file.open(path(), true));
    file.writeAll("first");
    QVERIFY(file.open(path("b.txt"), true));
    file.writeAll("second");
    file.flush();
    QCOMPARE(TestFile::read(path()), kMark + units("first"));
    QCOMPARE(TestFile::read(path("b.txt")), kMark + units("second"));
}

void tst_wzrfilehandler::flushesAtItsEnd()
{
    {
        WZRFileHandler file;
        QVERIFY(file.open(path(), true));
        file.writeAll("kept");
    }
    QCOMPARE(TestFile::read(path()), kMark + units("kept"));
}

QTEST_GUILESS_MAIN(tst_wzrfilehandler)
#include "tst_wzrfilehandler.moc"
