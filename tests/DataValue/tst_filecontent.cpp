#include "DataValue/filecontent_p.h"

#include "support/testfile.h"

#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

class tst_filecontent : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsFilesOfEverySize_data();
    void readsFilesOfEverySize();
    void readsFilesWhoseSizeIsNotTold();
    void endsBehindTheFirstZeroByte();
    void hasNothingWhereItDoesNotFit();
    void hasNothingWhereThereIsNoFile_data();
    void hasNothingWhereThereIsNoFile();
    void doesNotWaitAtAPipe();

private:
    QString path(const QString& name) const { return m_folder.filePath(name); }

    QTemporaryDir m_folder;
};

void tst_filecontent::readsFilesOfEverySize_data()
{
    QTest::addColumn<int>("size");
    const int piece = 1024 * 1024;
    for (const int size : {0, 1, 14, 15, 16, 17, 4096, piece - 1, piece, piece + 1, 2 * piece,
                           2 * piece + 1, 3 * piece + 77})
        QTest::addRow("%d", size) << size;
}

void tst_filecontent::readsFilesOfEverySize()
{
    QFETCH(int, size);
    // Each part differs from all others, so that a lost or doubled one shows.
    QByteArray content;
    for (int i = 0; content.size() < size; ++i)
        content += QByteArray::number(i) + ' ';
    content.truncate(size);
    TestFile::write(path("a"), content);
    const std::optional<std::string> read = FileContent::read(path("a"));
    QVERIFY(read.has_value());
    QVERIFY(*read == content.toStdString());
}

void tst_filecontent::readsFilesWhoseSizeIsNotTold()
{
    // The system's own files are regular and say that they are empty.
    QCOMPARE(QFile("/proc/filesystems").size(), qint64(0));
    const QByteArray content = TestFile::read("/proc/filesystems");
    QVERIFY(content.size() > 100);
    const std::optional<std::string> read = FileContent::read("/proc/filesystems");
    QVERIFY(read.has_value());
    QCOMPARE(QByteArray::fromStdString(*read), content);
}

void tst_filecontent::endsBehindTheFirstZeroByte()
{
    TestFile::write(path("hole"), "text");
    QVERIFY(QFile::resize(path("hole"), 64 * 1024 * 1024));
    const std::optional<std::string> read = FileContent::read(path("hole"));
    QVERIFY(read.has_value());
    QCOMPARE(read->find('\0'), std::size_t(4));
    QCOMPARE(read->compare(0, 4, "text"), 0);
    QVERIFY(read->size() < 2 * 1024 * 1024);
}

void tst_filecontent::hasNothingWhereItDoesNotFit()
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    QSKIP("the sanitizer ends a process whose allocation fails");
#endif
    TestFile::write(path("huge"), "text");
    // More than a machine has; the memory is not even promised.
    QVERIFY(QFile::resize(path("huge"), qint64(1) << 43));
    QVERIFY(!FileContent::read(path("huge")).has_value());
}

void tst_filecontent::hasNothingWhereThereIsNoFile_data()
{
    QTest::addColumn<QString>("where");
    QTest::newRow("no name") << QString();
    QTest::newRow("missing") << path("missing");
    QTest::newRow("folder") << m_folder.path();
    QTest::newRow("endless device") << "/dev/zero";
    QTest::newRow("not readable") << "/proc/self/mem";
}

void tst_filecontent::hasNothingWhereThereIsNoFile()
{
    QFETCH(QString, where);
    QVERIFY(!FileContent::read(where).has_value());
}

void tst_filecontent::doesNotWaitAtAPipe()
{
    const QByteArray pipe = QFile::encodeName(path("pipe"));
    QCOMPARE(mkfifo(pipe.constData(), 0600), 0);
    QVERIFY(!FileContent::read(path("pipe")).has_value());
    QVERIFY(!FileContent::replace(path("pipe"), "text"));
    // Nor when somebody holds it open and writes.
    const int end = open(pipe.constData(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    QVERIFY(end >= 0);
    QCOMPARE(write(end, "text", 4), ssize_t(4));
    QVERIFY(!FileContent::read(path("pipe")).has_value());
    close(end);
}

QTEST_GUILESS_MAIN(tst_filecontent)
#include "tst_filecontent.moc"
