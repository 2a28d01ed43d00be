// A save replaces the file as a whole or not at all, whatever meets it.

#include "DataValue/datavalue.h"
#include "support/childprocess.h"
#include "support/testfile.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

namespace {

const QString kLong(100000, QLatin1Char('y'));

} // namespace

class tst_filesaving : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void saves_data() { forms(); }
    void saves();
    void keepsTheOldFileOnAFullDisk_data() { forms(); }
    void keepsTheOldFileOnAFullDisk();
    void keepsTheOldFileBeyondTheLimitOfTheProcess_data() { forms(); }
    void keepsTheOldFileBeyondTheLimitOfTheProcess();
    void keepsTheOldFileWhereItMayNotWrite_data() { forms(); }
    void keepsTheOldFileWhereItMayNotWrite();
    void failsWhereNoFileCanBe_data();
    void failsWhereNoFileCanBe();
    void keepsAWholeFileWhenKilled_data() { forms(); }
    void keepsAWholeFileWhenKilled();
    void keepsThePermissionsOfTheFile();
    void followsASymbolicLink();
    void refusesToSaveAnAddress();

private:
    using Result = ChildProcess::Result;

    static void forms();
    void keepsTheOldFile(const QString& where);
    Result run(const QStringList& arguments);
    /// The text in the file; null when it cannot be read.
    QString savedText(const QString& file);

    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_filesaving::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
}

void tst_filesaving::forms()
{
    QTest::addColumn<QString>("name");
    for (const char* name : {"a.xml", "a.config", "a.perso"})
        QTest::newRow(name) << QString(name);
}

tst_filesaving::Result tst_filesaving::run(const QStringList& arguments)
{
    return ChildProcess::run(HELPER_FILESAVER, arguments);
}

QString tst_filesaving::savedText(const QString& file)
{
    CDataValue value;
    return value.readFile(file) ? value.mapGet("text").asQString() : QString();
}

void tst_filesaving::saves()
{
    QFETCH(QString, name);
    const QString file = m_folder->filePath(name);
    QCOMPARE(run({file, "old"}).out, QByteArray("saved\n"));
    QCOMPARE(savedText(file), QString("old"));
    QCOMPARE(run({file, kLong}).out, QByteArray("saved\n"));
    QCOMPARE(savedText(file), kLong);
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files), QStringList(name));
}

void tst_filesaving::keepsTheOldFileOnAFullDisk()
{
    keepsTheOldFile("--full");
}

// The system ends a process that writes beyond its limit, by a signal.
void tst_filesaving::keepsTheOldFileBeyondTheLimitOfTheProcess()
{
    keepsTheOldFile("--limit");
}

void tst_filesaving::keepsTheOldFile(const QString& where)
{
    QFETCH(QString, name);
    const QString file = m_folder->filePath(name);
    QCOMPARE(run({file, "old"}).code, 0);
    const Result tooLong = run({where, file, kLong});
    QCOMPARE(tooLong.out, QByteArray("failed\n"));
    QCOMPARE(tooLong.code, 1);
    QCOMPARE(savedText(file), QString("old"));
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files), QStringList(name));
    QCOMPARE(run({where, file, "short"}).out, QByteArray("saved\n"));
    QCOMPARE(savedText(file), QString("short"));
}

void tst_filesaving::keepsTheOldFileWhereItMayNotWrite()
{
    QFETCH(QString, name);
    const QByteArray folder = QFile::encodeName(m_folder->path());
    const QString file = m_folder->filePath(name);
    QCOMPARE(run({file, "old"}).code, 0);
    // A folder that takes no new file, then a file that takes no new content.
    QCOMPARE(chmod(folder.constData(), 0555), 0);
    QCOMPARE(chmod(QFile::encodeName(file).constData(), 0666), 0);
    QCOMPARE(run({"--nobody", file, "new"}).out, QByteArray("failed\n"));
    QCOMPARE(savedText(file), QString("old"));
    QCOMPARE(chmod(folder.constData(), 0777), 0);
    QCOMPARE(chmod(QFile::encodeName(file).constData(), 0444), 0);
    QCOMPARE(run({"--nobody", file, "new"}).out, QByteArray("failed\n"));
    QCOMPARE(savedText(file), QString("old"));
    QCOMPARE(chmod(QFile::encodeName(file).constData(), 0666), 0);
    QCOMPARE(run({"--nobody", file, "new"}).out, QByteArray("saved\n"));
    QCOMPARE(savedText(file), QString("new"));
}

void tst_filesaving::failsWhereNoFileCanBe_data()
{
    QTest::addColumn<QString>("file");
    for (const char* end : {".xml", ".config"}) {
        QTest::addRow("missing folder, %s", end) << "/nonexistent/folder/a" + QString(end);
        QTest::addRow("a folder without files, %s", end) << "/proc/a" + QString(end);
        QTest::addRow("below a file, %s", end) << "/dev/null/a" + QString(end);
    }
}

void tst_filesaving::failsWhereNoFileCanBe()
{
    QFETCH(QString, file);
    QCOMPARE(run({file, "new"}).out, QByteArray("failed\n"));
    QVERIFY(!QFile::exists(file));
    // The name may be taken by something that is no file.
    const QString taken = m_folder->filePath(QFileInfo(file).fileName());
    QVERIFY(QDir().mkdir(taken));
    QCOMPARE(run({taken, "new"}).out, QByteArray("failed\n"));
    QVERIFY(QFileInfo(taken).isDir());
    QVERIFY(QDir().rmdir(taken));
    QVERIFY(QFile::link("/dev/full", taken));
    QCOMPARE(run({taken, "new"}).out, QByteArray("failed\n"));
    QVERIFY(!QFileInfo("/dev/full").isFile());
}

void tst_filesaving::keepsAWholeFileWhenKilled()
{
    QFETCH(QString, name);
    const QString file = m_folder->filePath(name);
    for (int i = 0; i < 8; ++i) {
        QCOMPARE(run({file, QString::number(i)}).code, 0);
        ChildProcess process(HELPER_FILESAVER, {"--forever", file, QString::number(i)});
        QVERIFY(process.says("saving"));
        // The first of the long saves is over, so it is in the middle of one of the next.
        QTRY_VERIFY_WITH_TIMEOUT(QFileInfo(file).size() > 2000000, 60000);
        process.kill();
        QCOMPARE(process.exitCode(), ChildProcess::kCrashed);
        QCOMPARE(savedText(file), QString::number(i));
    }
}

void tst_filesaving::keepsThePermissionsOfTheFile()
{
    const QString file = m_folder->filePath("a.config");
    QCOMPARE(run({file, "old"}).code, 0);
    QCOMPARE(chmod(QFile::encodeName(file).constData(), 0640), 0);
    QCOMPARE(run({file, "new"}).code, 0);
    struct stat status = {};
    QCOMPARE(stat(QFile::encodeName(file).constData(), &status), 0);
    QCOMPARE(int(status.st_mode & 0777), 0640);
}

void tst_filesaving::followsASymbolicLink()
{
    const QString file = m_folder->filePath("a.config");
    const QString link = m_folder->filePath("link.config");
    QCOMPARE(run({file, "old"}).code, 0);
    QVERIFY(QFile::link(file, link));
    QCOMPARE(run({link, "new"}).code, 0);
    QVERIFY(QFileInfo(link).isSymLink());
    QCOMPARE(savedText(file), QString("new"));
}

void tst_filesaving::refusesToSaveAnAddress()
{
    const QString file = m_folder->filePath("a.config");
    const Result result = run({"--address", file, "text"});
    QCOMPARE(result.code, -1);
    QVERIFY2(result.err.contains("\"!bHasAddress\" in DataValue/datavalue, line "),
             result.err.constData());
    QVERIFY(!QFile::exists(file));
}

QTEST_GUILESS_MAIN(tst_filesaving)
#include "tst_filesaving.moc"
