#include "LogTask/clog.h"
#include "support/installedprogram.h"

#include <QDate>
#include <QMetaMethod>
#include <QRegularExpression>
#include <QTest>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>

/// The log of a whole process, with its settings beside the executable.
class tst_CLog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();

    void namesTheFileByProgramUserAndDay();
    void namesTheDayInPlainDigits();
    void appendsOnTheSameDay();
    void takesAGivenPathAsItIs();
    void truncatesOrAppendsByPolicy_data();
    void truncatesOrAppendsByPolicy();
    void startsALargeFileAnew_data();
    void startsALargeFileAnew();

    void writesEachLineForm_data();
    void writesEachLineForm();
    void writesTheErrorText();
    void dropsTheLastCharacterOfAnUnfinishedTable();
    void writesABegunLineWithoutItsStamp();
    void cutsLongMessages_data();
    void cutsLongMessages();
    void cutsNoCharacterInTwo();
    void cutsContents_data();
    void cutsContents();
    void goesOnAfterALineThatNeverFits();

    void echoesWhatItWrites();
    void echoesNothingWhenToldSo();
    void doesNothingWhenSwitchedOff();
    void readsItsSettingsOnce();
    void debugCallsWorkOnlyWhileTheLogIsOff();
    void endsTwice();
    void startsAgainAfterItsEnd();
    void worksWithoutAndAcrossAnApplicationObject();
    void takesCallsAfterTheEndOfQt_data();
    void takesCallsAfterTheEndOfQt();
    void stopsTheProcessOnAnEmptyPath();
    void losesLinesOfAFileThatCannotBeOpened();

    void keepsFlushedLinesWhenKilled();
    void keepsEveryLineWhenKilledWithFlushSet();
    void callersDoNotWaitForTheDisk();
    void leavesAHangingDiskBehind();
    void survivesALimitOnFileSizes();
    void goesOnAfterAFullDisk();
    void offersItsSignalsInOrder();

private:
    using Result = ChildProcess::Result;

    void setSettings(const QByteArray& lines)
    {
        m_program->addData("LogFile.ini", "[SETTING]\n" + lines);
    }
    /// Runs the program and reads its log file, every time of day as "T" and every stamp as "T M".
    Result run(const QStringList& actions) { return m_program->run(actions); }
    QByteArray log() const;
    /// The log without start banner and end banner.
    QByteArray lines() const;
    QString path() const { return m_program->path("log"); }
    QStringList actions(const QStringList& between) const
    {
        return QStringList("initpath=" + path()) + between + QStringList("destroy");
    }

    std::unique_ptr<InstalledProgram> m_program;
};

namespace {

const QByteArray startBanner = "\r\nStart Log--T\r\n";
const QByteArray endBanner = "\r\nEnd Log--T\r\n";

QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
}

QByteArray withoutTimes(const QByteArray& text)
{
    QString result = QString::fromUtf8(text);
    result.replace(QRegularExpression("\\d\\d:\\d\\d:\\d\\d"), "T");
    result.replace(QRegularExpression("T \\d{1,3} "), "T M ");
    return result.toUtf8();
}

} // namespace

void tst_CLog::initTestCase()
{
    qputenv("SUDO_USER", "alice");
}

void tst_CLog::init()
{
    m_program = std::make_unique<InstalledProgram>(HELPER_LOGPROGRAM);
    setSettings("TYPE=1\n");
}

QByteArray tst_CLog::log() const
{
    return withoutTimes(readFile(path()));
}

QByteArray tst_CLog::lines() const
{
    QByteArray text = log();
    if (!text.startsWith(startBanner) || !text.endsWith(endBanner))
        return "not one whole log: " + text;
    text.chop(endBanner.size());
    return text.mid(startBanner.size());
}

void tst_CLog::namesTheFileByProgramUserAndDay()
{
    const InstalledProgram program(HELPER_LOGPROGRAM); // no settings file
    const QDate before = QDate::currentDate();
    const Result result = program.run({"init", "log=hello", "destroy"});
    const QDate after = QDate::currentDate();
    QCOMPARE(result.code, 0);
    QCOMPARE(result.out, QByteArray("on\n"));
    const QStringList files = QDir(program.path("bin/Log")).entryList(QDir::Files);
    QCOMPARE(files.size(), 1);
    QVERIFY2(files[0] == "program_Log_alice_" + before.toString("yy-MM-dd") ||
                 files[0] == "program_Log_alice_" + after.toString("yy-MM-dd"),
             qPrintable(files[0]));
    QCOMPARE(withoutTimes(readFile(program.path("bin/Log/" + files[0]))),
             startBanner + "T hello\r\n" + endBanner);
}

void tst_CLog::namesTheDayInPlainDigits()
{
    setSettings("");
    const QByteArray locale = qgetenv("LC_ALL");
    qputenv("LC_ALL", "fa_IR.UTF-8"); // a language with digits of its own
    const Result result = run({"initpath=" + path(), "destroy"});
    if (locale.isNull())
        qunsetenv("LC_ALL");
    else
        qputenv("LC_ALL", locale);
    QCOMPARE(result.out, QByteArray("on\n"));
    const QStringList files = QDir(m_program->path("")).entryList({"log_*"}, QDir::Files);
    QCOMPARE(files.size(), 1);
    const QRegularExpression name("^log_[0-9]{2}-[0-9]{2}-[0-9]{2}$");
    QVERIFY2(name.match(files[0]).hasMatch(), qPrintable(files[0]));
}

void tst_CLog::appendsOnTheSameDay()
{
    setSettings("");
    run(actions({"log=one"}));
    run(actions({"log=two"}));
    QByteArray text;
    for (const QString& name : QDir(m_program->path("")).entryList({"log_*"}, QDir::Files))
        text += withoutTimes(readFile(m_program->path(name)));
    QCOMPARE(text, startBanner + "T one\r\n" + endBanner + startBanner + "T two\r\n" + endBanner);
}

void tst_CLog::takesAGivenPathAsItIs()
{
    const QString odd = m_program->path(QString::fromUtf8("a \xC3\xA9 log.txt"));
    QCOMPARE(run({"initpath=" + odd, "log=hello", "destroy"}).out, QByteArray("on\n"));
    QCOMPARE(withoutTimes(readFile(odd)), startBanner + "T hello\r\n" + endBanner);
    QVERIFY(!QFile::exists(m_program->path("bin/Log")));
}

void tst_CLog::truncatesOrAppendsByPolicy_data()
{
    QTest::addColumn<QByteArray>("type");
    QTest::addColumn<bool>("appends");
    QTest::newRow("1") << QByteArray("1") << false;
    QTest::newRow("2") << QByteArray("2") << true;
    QTest::newRow("7") << QByteArray("7") << false;
}

void tst_CLog::truncatesOrAppendsByPolicy()
{
    QFETCH(QByteArray, type);
    QFETCH(bool, appends);
    setSettings("TYPE=" + type + "\n");
    run(actions({"log=one"}));
    run(actions({"log=two"}));
    const QByteArray first = startBanner + "T one\r\n" + endBanner;
    QCOMPARE(log(), (appends ? first : QByteArray()) + startBanner + "T two\r\n" + endBanner);
}

void tst_CLog::startsALargeFileAnew_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<bool>("kept");
    QTest::newRow("99 bytes") << 99 << true;
    QTest::newRow("100 bytes") << 100 << false;
}

void tst_CLog::startsALargeFileAnew()
{
    QFETCH(int, size);
    QFETCH(bool, kept);
    setSettings("TYPE=2\nMAXSIZE=100\n");
    QFile file(path());
    QVERIFY(file.open(QIODevice::WriteOnly));
    const QByteArray old(size, 'x');
    file.write(old);
    file.close();
    // The maximum counts at the start only: this log grows beyond it.
    run(actions({"many=30", "flush", "log=last"}));
    const QByteArray text = log();
    QVERIFY(text.startsWith((kept ? old : QByteArray()) + startBanner + "T M line 0 \r\n"));
    QVERIFY(text.endsWith("flush to file \r\nT last\r\n" + endBanner));
}

void tst_CLog::writesEachLineForm_data()
{
    QTest::addColumn<QString>("action");
    QTest::addColumn<QByteArray>("withTime");
    QTest::addColumn<QByteArray>("withoutTime");
    const auto row = [](const char* name, const char* action, const char* withTime,
                        const char* withoutTime) {
        QTest::newRow(name) << QString::fromUtf8(action) << QByteArray(withTime)
                            << QByteArray(withoutTime);
    };
    row("Log", "log=dial", "T dial", "dial");
    row("Log, formatted", "logmixed", "T five, 3 of 002.2%", "five, 3 of 002.2%");
    row("Log, empty", "log=", "T ", "");
    row("Log, null", "lognothing", "T ", "");
    row("Log, non-ASCII", "log=\xC3\xA9\xE2\x82\xAC", "T \xC3\xA9\xE2\x82\xAC",
        "\xC3\xA9\xE2\x82\xAC");
    row("LogErr", "err=26:dial", "T dial Error code:1a ", "dial Error code:1a ");
    row("LogErr, negative", "err=-1:dial", "T dial Error code:ffffffff ",
        "dial Error code:ffffffff ");
    row("CLogFile", "stream=Ipc/ipcserver,startListen,-7", "T M Ipc/ipcserver startListen -7 ",
        "T M Ipc/ipcserver startListen -7 ");
    row("CLogFile, empty piece", "stream=a,,b", "T M a  b ", "T M a  b ");
    row("CLog, number", "number=5", "5", "5");
    row("CLog, bytes", "bytes=plain \xC3\xA9", "plain \xC3\xA9", "plain \xC3\xA9");
    row("CLog, text", "text=plain \xC3\xA9", "plain \xC3\xA9", "plain \xC3\xA9");
    row("FlushLog", "flush", "flush to file ", "flush to file ");
}

void tst_CLog::writesEachLineForm()
{
    QFETCH(QString, action);
    QFETCH(QByteArray, withTime);
    QFETCH(QByteArray, withoutTime);
    // With the echo a line becomes text first, without it the bytes of the file.
    for (const QByteArray echo : {"DEBUG=true\n", "DEBUG=false\n"}) {
        setSettings("TYPE=1\n" + echo);
        run(actions({action}));
        QCOMPARE(lines(), withTime + "\r\n");
        setSettings("TYPE=1\nADDTIME=false\n" + echo);
        run(actions({action}));
        QCOMPARE(lines(), withoutTime + "\r\n");
    }
}

void tst_CLog::writesTheErrorText()
{
    setSettings("TYPE=1\n[CODE]\n1A=x\nzz=x\n=x\n1a=No signal\n");
    run(actions({"err=26:dial", "err=27:dial"}));
    QCOMPARE(lines(), QByteArray("T dial Error code:1a No signal\r\nT dial Error code:1b \r\n"));
}

void tst_CLog::dropsTheLastCharacterOfAnUnfinishedTable()
{
    setSettings("TYPE=1\n[CODE]\n1A=No signal");
    run(actions({"err=26:dial"}));
    QCOMPARE(lines(), QByteArray("T dial Error code:1a No signa\r\n"));
}

void tst_CLog::writesABegunLineWithoutItsStamp()
{
    run({"begin", "initpath=" + path(), "end=late", "destroy"});
    QCOMPARE(lines(), QByteArray("late \r\n"));
}

void tst_CLog::cutsLongMessages_data()
{
    QTest::addColumn<QString>("action");
    QTest::addColumn<QByteArray>("line");
    const QByteArray cut(1023, 'x');
    QTest::newRow("Log, whole") << "repeat=1023"
                                << "T " + cut;
    QTest::newRow("Log, cut") << "repeat=1024"
                              << "T " + cut;
    QTest::newRow("Log, long") << "repeat=2000"
                               << "T " + cut;
    QTest::newRow("LogErr, whole") << "repeaterr=1023"
                                   << "T " + cut + " Error code:1 ";
    QTest::newRow("LogErr, long") << "repeaterr=2000"
                                  << "T " + cut + " Error code:1 ";
}

void tst_CLog::cutsLongMessages()
{
    QFETCH(QString, action);
    QFETCH(QByteArray, line);
    run(actions({action}));
    QCOMPARE(lines(), line + "\r\n");
}

void tst_CLog::cutsNoCharacterInTwo()
{
    const QString text = QString(1022, 'x') + QString::fromUtf8("\xC3\xA9");
    run(actions({"log=" + text}));
    QCOMPARE(lines(), "T " + QByteArray(1022, 'x') + "\r\n");
}

void tst_CLog::cutsContents_data()
{
    QTest::addColumn<QByteArray>("setting");
    QTest::addColumn<int>("shown");
    QTest::newRow("default") << QByteArray() << 16384;
    QTest::newRow("100") << QByteArray("MAXLINE=100\n") << 100;
    QTest::newRow("none") << QByteArray("MAXLINE=0\n") << 0;
}

void tst_CLog::cutsContents()
{
    QFETCH(QByteArray, setting);
    QFETCH(int, shown);
    setSettings("TYPE=1\n" + setting);
    run(actions({"content=20000"}));
    const QByteArray whole = "{\"k\":\"" + QByteArray(20000, 'x') + "\"}\n";
    const QByteArray length = QByteArray::number(whole.size());
    const QByteArray text =
        shown == 0 ? whole : whole.left(shown) + "... " + length + " characters";
    QCOMPARE(lines(), "T M deviceservice_global getDeviceIDByDeviceName " + text + " \r\n");
}

void tst_CLog::goesOnAfterALineThatNeverFits()
{
    setSettings("TYPE=1\nMAXQUEUE=20\n");
    run(actions({"repeat=100", "written", "log=short"}));
    QCOMPARE(lines(), QByteArray("1 lines lost here\r\nT short\r\n"));
}

void tst_CLog::echoesWhatItWrites()
{
    const QByteArray table = "[CODE]\n1A=No signal\n";
    setSettings("TYPE=1\n" + table);
    const Result result =
        run(actions({"log=\"quoted\"", "err=26:dial", "stream=a,1", "number=5", "text=t"}));
    const QByteArray written = withoutTimes(result.err);
    QCOMPARE(written, QByteArray("T \"quoted\"\nT dial Error code:1a No signal\nT M a 1 \n5\nt\n"));
    QCOMPARE(lines(), QByteArray(written).replace("\n", "\r\n"));
}

void tst_CLog::echoesNothingWhenToldSo()
{
    setSettings("TYPE=1\nDEBUG=false\n");
    const Result result = run(actions({"log=a", "err=1:a", "stream=a", "number=5"}));
    QCOMPARE(result.err, QByteArray());
    QCOMPARE(lines(), QByteArray("T a\r\nT a Error code:1 \r\nT M a \r\n5\r\n"));
}

void tst_CLog::doesNothingWhenSwitchedOff()
{
    setSettings("VALID=false\nTYPE=1\n");
    const Result result =
        run({"initpath=" + path(), "state", "log=a", "err=1:a", "stream=a", "write=a",
             "writeerr=1:a", "debug=a", "flush", "written", "destroy", "state"});
    QCOMPARE(result.code, 0);
    QCOMPARE(result.out, QByteArray("off\noff\nnot written\noff\n"));
    QCOMPARE(result.err, QByteArray());
    QVERIFY(!QFile::exists(path()));
}

void tst_CLog::readsItsSettingsOnce()
{
    const QString other = m_program->path("other");
    const Result result =
        run({"initpath=" + path(), "log=a", "initpath=" + other, "log=b", "destroy"});
    QCOMPARE(result.out, QByteArray("on\non\n"));
    QCOMPARE(lines(), QByteArray("T a\r\nT b\r\n"));
    QVERIFY(!QFile::exists(other));
}

void tst_CLog::debugCallsWorkOnlyWhileTheLogIsOff()
{
    const Result result = run({"debug=before", "initpath=" + path(), "debug=while", "destroy",
                               "debug=after", "repeatdebug=1048580"});
    QCOMPARE(lines(), QByteArray());
    // No writer takes them; only the echo, on by default, shows that they ran.
    const QByteArray longest(1048575, 'x');
    QVERIFY(withoutTimes(result.err) == "T before\nT after\nT " + longest + "\n");
}

void tst_CLog::endsTwice()
{
    const Result result =
        run(actions({"log=a", "destroy", "state", "log=b", "stream=b", "err=1:b", "flush"}));
    QCOMPARE(result.code, 0);
    QCOMPARE(result.out, QByteArray("on\noff\n"));
    QCOMPARE(lines(), QByteArray("T a\r\n"));
}

void tst_CLog::startsAgainAfterItsEnd()
{
    setSettings("TYPE=2\n");
    run(actions({"log=a"}) + actions({"log=b"}));
    QCOMPARE(log(), startBanner + "T a\r\n" + endBanner + startBanner + "T b\r\n" + endBanner);
}

void tst_CLog::worksWithoutAndAcrossAnApplicationObject()
{
    const QString text = QString::fromUtf8("text=\xC3\xA9");
    const Result result =
        run(actions({text, "flush", "written", "app", text, "written", "noapp", text}));
    QCOMPARE(result.out, QByteArray("on\nwritten\nwritten\n"));
    QCOMPARE(lines(), QByteArray("\xC3\xA9\r\nflush to file \r\n\xC3\xA9\r\n\xC3\xA9\r\n"));
    // Nothing but the echo: Qt has no complaint about the missing object.
    QCOMPARE(result.err, QByteArray("\xC3\xA9\n\xC3\xA9\n\xC3\xA9\n"));
}

void tst_CLog::takesCallsAfterTheEndOfQt_data()
{
    QTest::addColumn<QStringList>("during");
    QTest::addColumn<QStringList>("atEnd");
    QTest::addColumn<QByteArray>("written");
    const QStringList all = {"log=b", "err=26:b", "stream=b,1", "number=5", "flush"};
    const QByteArray line = startBanner + "T a\r\n";
    const QByteArray late = "T b\r\nT b Error code:1a \r\nT M b 1 \r\n5\r\nflush to file \r\n";
    QTest::newRow("log on") << QStringList("app") << all + QStringList("written") << line + late;
    QTest::newRow("log ends there")
        << QStringList() << all + QStringList("destroy") << line + late + endBanner;
    QTest::newRow("log ended before")
        << QStringList("destroy") << all + QStringList("debug=b") << line + endBanner;
}

// A global object of the program that logs in its destructor.
void tst_CLog::takesCallsAfterTheEndOfQt()
{
    QFETCH(QStringList, during);
    QFETCH(QStringList, atEnd);
    QFETCH(QByteArray, written);
    for (const QByteArray echo : {"DEBUG=true\n", "DEBUG=false\n"}) {
        setSettings("TYPE=1\n" + echo);
        const Result result = run(QStringList{"initpath=" + path(), "log=a"} + during +
                                  QStringList("atend") + atEnd + QStringList("say=ended"));
        QVERIFY2(result.code == 0, result.err.constData());
        QVERIFY2(result.out.endsWith("ended\n"), result.out.constData());
        QCOMPARE(log(), written);
    }
}

void tst_CLog::stopsTheProcessOnAnEmptyPath()
{
    const Result result = run({"initpath=", "log=a"});
    QCOMPARE(result.code, ChildProcess::kCrashed);
    const QRegularExpression message(
        "ASSERT: \"!m_strFile\\.isEmpty\\(\\)\" in LogTask/clog, line \\d+\n");
    QVERIFY2(message.match(result.err).hasMatch(), result.err.constData());
}

void tst_CLog::losesLinesOfAFileThatCannotBeOpened()
{
    const QString below = m_program->path("missing/log");
    const Result result = run({"initpath=" + below, "stream=a", "flush", "written", "destroy"});
    QCOMPARE(result.code, 0);
    QCOMPARE(result.out, QByteArray("on\nwritten\n"));
    QVERIFY(!QFile::exists(below));
}

void tst_CLog::keepsFlushedLinesWhenKilled()
{
    const Result result = run({"initpath=" + path(), "log=a", "flush", "written", "log=b", "kill"});
    QCOMPARE(result.code, ChildProcess::kCrashed);
    QCOMPARE(log(), startBanner + "T a\r\nflush to file \r\n");
}

void tst_CLog::keepsEveryLineWhenKilledWithFlushSet()
{
    setSettings("TYPE=1\nFLUSH=true\n");
    run({"initpath=" + path(), "log=a", "log=b", "written", "kill"});
    QCOMPARE(log(), startBanner + "T a\r\nT b\r\n");
}

void tst_CLog::callersDoNotWaitForTheDisk()
{
    setSettings("TYPE=1\nDEBUG=false\n");
    // A pipe that nobody reads: the writer stands still after 64 KiB.
    QCOMPARE(mkfifo(QFile::encodeName(path()).constData(), 0600), 0);
    const int end = open(QFile::encodeName(path()).constData(), O_RDWR);
    QVERIFY(end >= 0);

    ChildProcess process(m_program->program(),
                         actions({"many=20000", "flush", "say=logged", "written"}));
    QVERIFY(process.says("logged"));
    QVERIFY(process.isRunning());

    QByteArray text;
    char buffer[65536];
    while (!text.right(200).contains("End Log--")) {
        const auto size = read(end, buffer, sizeof buffer);
        QVERIFY(size > 0);
        text.append(buffer, static_cast<int>(size));
    }
    close(end);
    QCOMPARE(process.exitCode(), 0);
    const QByteArray marks = withoutTimes(text);
    QCOMPARE(marks.count("T M line "), 20000);
    QVERIFY(marks.contains("T M line 19999 \r\nflush to file \r\n"));
}

void tst_CLog::leavesAHangingDiskBehind()
{
    // Opening a pipe without a reader hangs for ever.
    QCOMPARE(mkfifo(QFile::encodeName(path()).constData(), 0600), 0);
    const Result result = run(actions({"log=a", "state", "destroy", "state"}));
    QCOMPARE(result.code, 0);
    QCOMPARE(result.out, QByteArray("on\non\noff\n"));
}

// The system's signal for such a limit ends a process that does nothing about it.
void tst_CLog::survivesALimitOnFileSizes()
{
    const QString command = QStringLiteral("ulimit -f 8; exec \"$0\" \"$@\"");
    const QStringList arguments =
        actions({"many=5000", "flush", "written", "say=alive"}) + QStringList("say=ended");
    const Result result =
        ChildProcess::run("/bin/sh", QStringList{"-c", command, m_program->program()} + arguments);
    QCOMPARE(result.code, 0);
    QCOMPARE(result.out, QByteArray("on\nwritten\nalive\nended\n"));
    QVERIFY(QFile(path()).size() <= 8 * 1024);
}

// A small file system of the test's own, which only this process and its children see.
void tst_CLog::goesOnAfterAFullDisk()
{
    setSettings("TYPE=1\nDEBUG=false\n");
    const QString folder = m_program->path("disk");
    QVERIFY(QDir().mkpath(folder));
    const QStringList own = {"-rm", "/bin/sh", "-c"};
    const QString mount = "mount -t tmpfs -o size=64k none " + folder;
    if (ChildProcess::run("unshare", own + QStringList(mount)).code != 0)
        QSKIP("this machine lets its users mount nothing");
    const QString filler = folder + "/filler";
    const QString command = mount + " && head -c 49152 /dev/zero > " + filler +
                            " && \"$0\" \"$@\"" + " && cat " + folder + "/log";
    const QStringList arguments = {"initpath=" + folder + "/log",
                                   "many=3000",
                                   "flush",
                                   "written",
                                   "remove=" + filler,
                                   "log=after",
                                   "destroy"};
    const Result result =
        ChildProcess::run("unshare", own + QStringList{command, m_program->program()} + arguments);
    QCOMPARE(result.code, 0);
    const QByteArray text = withoutTimes(result.out);
    // Every line is there whole, or counted: 3000 and the mark of the flush. One that is cut just
    // before its line end looks whole, too.
    const QRegularExpression notice("\r\n([0-9]+) lines lost here\r\nT after\r\n");
    const QRegularExpressionMatch match = notice.match(QString::fromUtf8(text));
    QVERIFY2(match.hasMatch(), text.right(200).constData());
    const int whole = static_cast<int>(text.left(match.capturedStart(1)).count(" \r\n"));
    QVERIFY2(whole > 100 && whole < 2000, QByteArray::number(whole).constData());
    const int all = whole + match.captured(1).toInt();
    QVERIFY2(all == 3001 || all == 3002, QByteArray::number(all).constData());
    QVERIFY(text.endsWith(endBanner));
}

void tst_CLog::offersItsSignalsInOrder()
{
    const QMetaObject& meta = CLog::staticMetaObject;
    QCOMPARE(meta.methodCount() - meta.methodOffset(), 2);
    const QMetaMethod first = meta.method(meta.methodOffset());
    const QMetaMethod second = meta.method(meta.methodOffset() + 1);
    QCOMPARE(first.methodType(), QMetaMethod::Signal);
    QCOMPARE(first.methodSignature(), QByteArray("WriteLog(QString,bool)"));
    QCOMPARE(second.methodType(), QMetaMethod::Signal);
    QCOMPARE(second.methodSignature(), QByteArray("flushLog()"));
}

QTEST_GUILESS_MAIN(tst_CLog)
#include "tst_clog.moc"
