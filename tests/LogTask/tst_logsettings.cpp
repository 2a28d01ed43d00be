#include "LogTask/logsettings_p.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

class tst_logsettings : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void haveDefaultsWithoutAFile();
    void haveDefaultsWithoutTheGroup();
    void readEverySetting();
    void readNothingMoreWhenSwitchedOff();
    void skipValuesThatDoNotConvert_data();
    void skipValuesThatDoNotConvert();
    void keepATimerOfAtLeastOne_data();
    void keepATimerOfAtLeastOne();
    void setLimits_data();
    void setLimits();
    void applyTheFilePolicy_data();
    void applyTheFilePolicy();
    void nameANewFileOnTheNextDay();
    void deleteALargeFileForPolicyTwo_data();
    void deleteALargeFileForPolicyTwo();
    void testSizeOnThePathWithoutTheDate();
    void buildThePathFromExecutableAndUser();

private:
    LogSettings read(const QByteArray& ini);
    QString logFile() const { return m_folder->filePath("log"); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

namespace {

const QDate today(2024, 5, 17);

void writeFile(const QString& path, const QByteArray& content)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), content.size());
}

void compareDefaults(const LogSettings& settings)
{
    QCOMPARE(settings.valid, true);
    QCOMPARE(settings.addTime, true);
    QCOMPARE(settings.maxSize, 1048576);
    QCOMPARE(settings.maxQueue, 0);
    QCOMPARE(settings.maxLine, 16384);
    QCOMPARE(settings.append, true); // "TYPE" 0
    QCOMPARE(settings.debug, true);
    QCOMPARE(settings.flush, false);
    QCOMPARE(settings.flushIdle, false);
    QCOMPARE(settings.timer, 10);
}

} // namespace

void tst_logsettings::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
}

LogSettings tst_logsettings::read(const QByteArray& ini)
{
    const QString path = m_folder->filePath("LogFile.ini");
    writeFile(path, ini);
    return readLogSettings(path, logFile(), today);
}

void tst_logsettings::haveDefaultsWithoutAFile()
{
    const QString missing = m_folder->filePath("missing.ini");
    const LogSettings settings = readLogSettings(missing, logFile(), today);
    compareDefaults(settings);
    QCOMPARE(settings.file, logFile() + "_24-05-17");
    QVERIFY(!QFile::exists(missing));
}

void tst_logsettings::haveDefaultsWithoutTheGroup()
{
    compareDefaults(read("[OTHER]\nVALID=false\nADDTIME=false\nFLUSH=true\nTIMER=3\n"));
    compareDefaults(read("VALID=false\nDEBUG=false\n"));
    compareDefaults(read(""));
    compareDefaults(read("\x01\xFF no settings at all\n[SETTING\n===\n"));
}

void tst_logsettings::readEverySetting()
{
    const LogSettings settings = read("[SETTING]\nVALID=true\nADDTIME=false\nMAXSIZE=2048\nTYPE=1\n"
                                      "TIMER=25\nDEBUG=0\nFLUSH=1\n");
    QCOMPARE(settings.valid, true);
    QCOMPARE(settings.addTime, false);
    QCOMPARE(settings.maxSize, 2048);
    QCOMPARE(settings.append, false);
    QCOMPARE(settings.timer, 25);
    QCOMPARE(settings.debug, false);
    QCOMPARE(settings.flush, true);
    QCOMPARE(settings.file, logFile());
}

void tst_logsettings::readNothingMoreWhenSwitchedOff()
{
    writeFile(logFile(), "old");
    const LogSettings settings =
        read("[SETTING]\nVALID=false\nADDTIME=false\nTYPE=2\nMAXSIZE=1\nTIMER=3\n");
    QCOMPARE(settings.valid, false);
    QCOMPARE(settings.addTime, true);
    QCOMPARE(settings.timer, 10);
    QCOMPARE(settings.file, QString());
    QVERIFY(QFile::exists(logFile()));
}

void tst_logsettings::skipValuesThatDoNotConvert_data()
{
    QTest::addColumn<QByteArray>("values");
    QTest::newRow("words") << QByteArray("MAXSIZE=big\nTIMER=often\nTYPE=daily\n");
    QTest::newRow("beyond 32 bits")
        << QByteArray("MAXSIZE=99999999999\nTIMER=4294967297\nTYPE=4294967297\n");
    QTest::newRow("fractions") << QByteArray("MAXSIZE=1.5\nTIMER=2.0\nTYPE=1.0\n");
    QTest::newRow("hexadecimal") << QByteArray("MAXSIZE=0x10\nTIMER=0x10\nTYPE=0x1\n");
    QTest::newRow("nothing") << QByteArray("MAXSIZE=\nTIMER=\nTYPE=\n");
    QTest::newRow("lists") << QByteArray(
        "VALID=false,false\nADDTIME=0,0\nMAXSIZE=1,2\nTYPE=1,2\nTIMER=1,2\nDEBUG=0,0\nFLUSH=1,1\n");
    QTest::newRow("other case") << QByteArray("Valid=false\nAddTime=false\nMaxSize=5\nType=1\n");
}

void tst_logsettings::skipValuesThatDoNotConvert()
{
    QFETCH(QByteArray, values);
    compareDefaults(read("[SETTING]\n" + values));
}

void tst_logsettings::keepATimerOfAtLeastOne_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("timer");
    QTest::newRow("zero") << QByteArray("0") << 10;
    QTest::newRow("negative") << QByteArray("-5") << 10;
    QTest::newRow("one") << QByteArray("1") << 1;
    QTest::newRow("largest") << QByteArray("2147483647") << 2147483647;
}

void tst_logsettings::keepATimerOfAtLeastOne()
{
    QFETCH(QByteArray, text);
    QFETCH(int, timer);
    QCOMPARE(read("[SETTING]\nTIMER=" + text + "\n").timer, timer);
}

void tst_logsettings::setLimits_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("maxQueue");
    QTest::addColumn<int>("maxLine");
    QTest::newRow("number") << QByteArray("500000") << 500000 << 500000;
    QTest::newRow("none") << QByteArray("0") << 0 << 0;
    QTest::newRow("below zero") << QByteArray("-1") << 0 << 0;
    QTest::newRow("no number") << QByteArray("many") << 0 << 16384;
}

void tst_logsettings::setLimits()
{
    QFETCH(QByteArray, text);
    QFETCH(int, maxQueue);
    QFETCH(int, maxLine);
    QCOMPARE(read("[SETTING]\nMAXQUEUE=" + text + "\n").maxQueue, maxQueue);
    QCOMPARE(read("[SETTING]\nMAXLINE=" + text + "\n").maxLine, maxLine);
}

void tst_logsettings::applyTheFilePolicy_data()
{
    QTest::addColumn<QByteArray>("type");
    QTest::addColumn<bool>("append");
    QTest::addColumn<QString>("suffix");
    QTest::newRow("0") << QByteArray("0") << true << "_24-05-17";
    QTest::newRow("1") << QByteArray("1") << false << "";
    QTest::newRow("2") << QByteArray("2") << true << "";
    QTest::newRow("3") << QByteArray("3") << false << "";
    QTest::newRow("-1") << QByteArray("-1") << false << "";
}

void tst_logsettings::applyTheFilePolicy()
{
    QFETCH(QByteArray, type);
    QFETCH(bool, append);
    QFETCH(QString, suffix);
    const LogSettings settings = read("[SETTING]\nTYPE=" + type + "\n");
    QCOMPARE(settings.append, append);
    QCOMPARE(settings.file, logFile() + suffix);
}

void tst_logsettings::nameANewFileOnTheNextDay()
{
    const QString missing = m_folder->filePath("missing.ini");
    QCOMPARE(readLogSettings(missing, logFile(), QDate(2024, 12, 31)).file,
             logFile() + "_24-12-31");
    QCOMPARE(readLogSettings(missing, logFile(), QDate(2025, 1, 1)).file, logFile() + "_25-01-01");
}

void tst_logsettings::deleteALargeFileForPolicyTwo_data()
{
    QTest::addColumn<QByteArray>("settings");
    QTest::addColumn<int>("size");
    QTest::addColumn<bool>("kept");
    QTest::newRow("below") << QByteArray("TYPE=2\nMAXSIZE=100") << 99 << true;
    QTest::newRow("equal") << QByteArray("TYPE=2\nMAXSIZE=100") << 100 << false;
    QTest::newRow("above") << QByteArray("TYPE=2\nMAXSIZE=100") << 101 << false;
    QTest::newRow("default maximum, below") << QByteArray("TYPE=2") << 1048575 << true;
    QTest::newRow("default maximum") << QByteArray("TYPE=2") << 1048576 << false;
    QTest::newRow("no maximum") << QByteArray("TYPE=2\nMAXSIZE=0") << 0 << false;
    QTest::newRow("other policy") << QByteArray("TYPE=0\nMAXSIZE=100") << 101 << true;
}

void tst_logsettings::deleteALargeFileForPolicyTwo()
{
    QFETCH(QByteArray, settings);
    QFETCH(int, size);
    QFETCH(bool, kept);
    writeFile(logFile(), QByteArray(size, 'x'));
    read("[SETTING]\n" + settings + "\n");
    QCOMPARE(QFile::exists(logFile()), kept);
}

void tst_logsettings::testSizeOnThePathWithoutTheDate()
{
    writeFile(logFile() + "_24-05-17", QByteArray(200, 'x'));
    const LogSettings settings = read("[SETTING]\nMAXSIZE=100\n");
    QCOMPARE(settings.file, logFile() + "_24-05-17");
    QCOMPARE(QFile(settings.file).size(), qint64(200));
}

void tst_logsettings::buildThePathFromExecutableAndUser()
{
    const QString folder = m_folder->filePath("not/yet/there");
    QCOMPARE(defaultLogFile(folder + "/dashboard", "alice"), folder + "/Log/dashboard_Log_alice");
    QVERIFY(QDir(folder + "/Log").exists());
}

QTEST_GUILESS_MAIN(tst_logsettings)
#include "tst_logsettings.moc"
