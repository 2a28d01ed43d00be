#include "LogTask/logfile_p.h"
#include "support/filesizelimit.h"
#include "support/testfile.h"

#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>

namespace {

void write(LogFile* file, const QByteArray& text)
{
    file->write(text.constData(), std::size_t(text.size()));
}

// At once, as with the setting "FLUSH".
void writeOut(LogFile* file, const QByteArray& text)
{
    write(file, text);
    file->flush();
}

int permissions(const QString& path)
{
    struct stat status = {};
    return stat(QFile::encodeName(path).constData(), &status) == 0 ? int(status.st_mode & 07777)
                                                                   : -1;
}

// Files that this process makes have its mask taken from their mode.
class Umask
{
public:
    explicit Umask(mode_t mask)
        : m_before(umask(mask))
    {
    }
    ~Umask() { umask(m_before); }
    Umask(const Umask&) = delete;
    Umask& operator=(const Umask&) = delete;

private:
    mode_t m_before;
};

} // namespace

class tst_logfile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void makesFilesForTheOwnerOnly_data();
    void makesFilesForTheOwnerOnly();
    void closesOlderFilesToOthers_data();
    void closesOlderFilesToOthers();
    void leavesPipesAsTheyAre();
    void keepsTextBackUntilThereIsEnough();
    void saysHowManyLinesAFullDiskLost();
    void endsNoLineThatIsWhole();
    void countsALostTextWithoutALineEnd();
    void goesOnCountingWhileTheDiskIsFull();
    void countsFromTheSamePlaceAfterACutNotice();
    void saysWhatWasLostAtTheEnd();

private:
    QByteArray content() const { return TestFile::read(path()); }
    QString path() const { return m_folder->filePath("log"); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_logfile::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
}

void tst_logfile::makesFilesForTheOwnerOnly_data()
{
    QTest::addColumn<int>("mask");
    QTest::newRow("0") << 0;
    QTest::newRow("022") << 022;
    QTest::newRow("077") << 077;
}

void tst_logfile::makesFilesForTheOwnerOnly()
{
    QFETCH(int, mask);
    const Umask umask(static_cast<mode_t>(mask));
    LogFile file;
    QVERIFY(file.open(path(), true));
    QCOMPARE(permissions(path()), 0600);
}

void tst_logfile::closesOlderFilesToOthers_data()
{
    QTest::addColumn<bool>("append");
    QTest::addColumn<int>("before");
    QTest::addColumn<int>("after");
    QTest::newRow("appended") << true << 0644 << 0600;
    QTest::newRow("truncated") << false << 0666 << 0600;
    QTest::newRow("executable") << true << 0755 << 0700;
    QTest::newRow("the group's") << true << 0660 << 0600;
}

void tst_logfile::closesOlderFilesToOthers()
{
    QFETCH(bool, append);
    QFETCH(int, before);
    QFETCH(int, after);
    TestFile::write(path(), "old");
    QCOMPARE(chmod(QFile::encodeName(path()).constData(), static_cast<mode_t>(before)), 0);
    {
        LogFile file;
        QVERIFY(file.open(path(), append));
        write(&file, "new");
        QCOMPARE(permissions(path()), after);
    }
    QCOMPARE(content(), QByteArray(append ? "oldnew" : "new"));
}

void tst_logfile::leavesPipesAsTheyAre()
{
    const QByteArray name = QFile::encodeName(path());
    QCOMPARE(mkfifo(name.constData(), 0600), 0);
    QCOMPARE(chmod(name.constData(), 0664), 0);
    const int reader = ::open(name.constData(), O_RDWR);
    QVERIFY(reader >= 0);
    LogFile file;
    QVERIFY(file.open(path(), true));
    QCOMPARE(permissions(path()), 0664);
    ::close(reader);
}

void tst_logfile::keepsTextBackUntilThereIsEnough()
{
    LogFile file;
    QVERIFY(file.open(path(), false));
    write(&file, "a\r\n");
    write(&file, QByteArray(16000, 'b'));
    QCOMPARE(content(), QByteArray());
    write(&file, QByteArray(1000, 'c')); // would be too much
    QCOMPARE(content(), "a\r\n" + QByteArray(16000, 'b'));
    write(&file, QByteArray(20000, 'd')); // is
    const QByteArray all = "a\r\n" + QByteArray(16000, 'b') + QByteArray(1000, 'c');
    QCOMPARE(content(), all + QByteArray(20000, 'd'));
}

void tst_logfile::saysHowManyLinesAFullDiskLost()
{
    LogFile file;
    QVERIFY(file.open(path(), false));
    {
        const FileSizeLimit full(100);
        for (int i = 0; i < 7; ++i)
            writeOut(&file, QByteArray::number(i) + QByteArray(27, 'x') + "\r\n");
        QCOMPARE(content().size(), 100);
    }
    writeOut(&file, "after\r\n");
    const QByteArray x(27, 'x');
    QCOMPARE(content(), "0" + x + "\r\n1" + x + "\r\n2" + x + "\r\n3" + QByteArray(9, 'x') +
                            "\r\n4 lines lost here\r\nafter\r\n");
}

void tst_logfile::endsNoLineThatIsWhole()
{
    LogFile file;
    QVERIFY(file.open(path(), false));
    {
        const FileSizeLimit full(5);
        writeOut(&file, "one\r\ntwo\r\nthree\r\n");
    }
    writeOut(&file, "after\r\n");
    QCOMPARE(content(), QByteArray("one\r\n2 lines lost here\r\nafter\r\n"));
}

void tst_logfile::countsALostTextWithoutALineEnd()
{
    LogFile file;
    QVERIFY(file.open(path(), false));
    {
        const FileSizeLimit full(5);
        writeOut(&file, "one\r\ntwo\r\nhalf ");
    }
    writeOut(&file, "line\r\n");
    QCOMPARE(content(), QByteArray("one\r\n2 lines lost here\r\nline\r\n"));
}

void tst_logfile::goesOnCountingWhileTheDiskIsFull()
{
    LogFile file;
    QVERIFY(file.open(path(), false));
    {
        const FileSizeLimit full(5);
        writeOut(&file, "one\r\ntwo\r\n");
        for (int i = 0; i < 1000; ++i)
            writeOut(&file, "more\r\n");
    }
    writeOut(&file, "after\r\n");
    writeOut(&file, "and again\r\n");
    QCOMPARE(content(), QByteArray("one\r\n1001 lines lost here\r\nafter\r\nand again\r\n"));
}

void tst_logfile::countsFromTheSamePlaceAfterACutNotice()
{
    LogFile file;
    QVERIFY(file.open(path(), false));
    {
        FileSizeLimit full(5);
        writeOut(&file, "one\r\ntwo\r\n");
        full.set(12);
        writeOut(&file, "three\r\n");
    }
    writeOut(&file, "after\r\n");
    QCOMPARE(content(), QByteArray("one\r\n1 lines\r\n2 lines lost here\r\nafter\r\n"));
}

void tst_logfile::saysWhatWasLostAtTheEnd()
{
    {
        LogFile file;
        QVERIFY(file.open(path(), false));
        {
            const FileSizeLimit full(4);
            writeOut(&file, "one\r\n");
        }
    }
    QCOMPARE(content(), QByteArray("one\r\r\n1 lines lost here\r\n"));
}

QTEST_APPLESS_MAIN(tst_logfile)
#include "tst_logfile.moc"
