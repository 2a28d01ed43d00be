#include "LogTask/clog.h"

#include "loggingprogram.h"

#include <QDate>
#include <QMetaMethod>
#include <QRegularExpression>
#include <QTest>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>

/// The log of a whole process, with its settings beside the executable.
class tst_clog : public QObject
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
    void stopsTheProcessOnAnEmptyPath();
    void losesLinesOfAFileThatCannotBeOpened();

    void callersDoNotWaitForTheDisk();
    void offersItsSignalsInOrder();

private:
    using Result = ChildProcess::Result;

    void setSettings(const QByteArray& lines) { m_program->setSettings(lines); }
    Result run(const QStringList& actions) const { return m_program->run(actions); }
    QByteArray log() const { return m_program->log(); }
    QByteArray lines() const { return m_program->lines(); }
    QString path() const { return m_program->path(); }
    QStringList actions(const QStringList& between) const { return m_program->actions(between); }

    std::unique_ptr<LoggingProgram> m_program;
};

void tst_clog::initTestCase()
{
    qputenv("SUDO_USER", "alice");
}

void tst_clog::init()
{
    m_program = std::make_unique<LoggingProgram>(HELPER_LOGPROGRAM);
    setSettings("TYPE=1\n");
}

void tst_clog::namesTheFileByProgramUserAndDay()
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

void tst_clog::namesTheDayInPlainDigits()
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

void tst_clog::appendsOnTheSameDay()
{
    setSettings("");
    run(actions({"log=one"}));
    run(actions({"log=two"}));
    QByteArray text;
    for (const QString& name : QDir(m_program->path("")).entryList({"log_*"}, QDir::Files))
        text += withoutTimes(readFile(m_program->path(name)));
    QCOMPARE(text, startBanner + "T one\r\n" + endBanner + startBanner + "T two\r\n" + endBanner);
}

void tst_clog::takesAGivenPathAsItIs()
{
    const QString odd = m_program->path(QString::fromUtf8("a \xC3\xA9 log.txt"));
    QCOMPARE(run({"initpath=" + odd, "log=hello", "destroy"}).out, QByteArray("on\n"));
    QCOMPARE(withoutTimes(readFile(odd)), startBanner + "T hello\r\n" + endBanner);
    QVERIFY(!QFile::exists(m_program->path("bin/Log")));
}

void tst_clog::truncatesOrAppendsByPolicy_data()
{
    QTest::addColumn<QByteArray>("type");
    QTest::addColumn<bool>("appends");
    QTest::newRow("1") << QByteArray("1") << false;
    QTest::newRow("2") << QByteArray("2") << true;
    QTest::newRow("7") << QByteArray("7") << false;
}

void tst_clog::truncatesOrAppendsByPolicy()
{
    QFETCH(QByteArray, type);
    QFETCH(bool, appends);
    setSettings("TYPE=" + type + "\n");
    run(actions({"log=one"}));
    run(actions({"log=two"}));
    const QByteArray first = startBanner + "T one\r\n" + endBanner;
    QCOMPARE(log(), (appends ? first : QByteArray()) + startBanner + "T two\r\n" + endBanner);
}

void tst_clog::startsALargeFileAnew_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<bool>("kept");
    QTest::newRow("99 bytes") << 99 << true;
    QTest::newRow("100 bytes") << 100 << false;
}

void tst_clog::startsALargeFileAnew()
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

void tst_clog::writesEachLineForm_data()
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

void tst_clog::writesEachLineForm()
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

void tst_clog::writesTheErrorText()
{
    setSettings("TYPE=1\n[CODE]\n1A=x\nzz=x\n=x\n1a=No signal\n");
    run(actions({"err=26:dial", "err=27:dial"}));
    QCOMPARE(lines(), QByteArray("T dial Error code:1a No signal\r\nT dial Error code:1b \r\n"));
}

void tst_clog::dropsTheLastCharacterOfAnUnfinishedTable()
{
    setSettings("TYPE=1\n[CODE]\n1A=No signal");
    run(actions({"err=26:dial"}));
    QCOMPARE(lines(), QByteArray("T dial Error code:1a No signa\r\n"));
}

void tst_clog::writesABegunLineWithoutItsStamp()
{
    run({"begin", "initpath=" + path(), "end=late", "destroy"});
    QCOMPARE(lines(), QByteArray("late \r\n"));
}

void tst_clog::cutsLongMessages_data()
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

void tst_clog::cutsLongMessages()
{
    QFETCH(QString, action);
    QFETCH(QByteArray, line);
    run(actions({action}));
    QCOMPARE(lines(), line + "\r\n");
}

void tst_clog::cutsNoCharacterInTwo()
{
    const QString text = QString(1022, 'x') + QString::fromUtf8("\xC3\xA9");
    run(actions({"log=" + text}));
    QCOMPARE(lines(), "T " + QByteArray(1022, 'x') + "\r\n");
}

void tst_clog::cutsContents_data()
{
    QTest::addColumn<QByteArray>("setting");
    QTest::addColumn<int>("shown");
    QTest::newRow("default") << QByteArray() << 16384;
    QTest::newRow("100") << QByteArray("MAXLINE=100\n") << 100;
    QTest::newRow("none") << QByteArray("MAXLINE=0\n") << 0;
}

void tst_clog::cutsContents()
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

void tst_clog::goesOnAfterALineThatNeverFits()
{
    setSettings("TYPE=1\nMAXQUEUE=20\n");
    run(actions({"repeat=100", "written", "log=short"}));
    QCOMPARE(lines(), QByteArray("1 lines lost here\r\nT short\r\n"));
}

void tst_clog::echoesWhatItWrites()
{
    const QByteArray table = "[CODE]\n1A=No signal\n";
    setSettings("TYPE=1\n" + table);
    const Result result =
        run(actions({"log=\"quoted\"", "err=26:dial", "stream=a,1", "number=5", "text=t"}));
    const QByteArray written = withoutTimes(result.err);
    QCOMPARE(written, QByteArray("T \"quoted\"\nT dial Error code:1a No signal\nT M a 1 \n5\nt\n"));
    QCOMPARE(lines(), QByteArray(written).replace("\n", "\r\n"));
}

void tst_clog::echoesNothingWhenToldSo()
{
    setSettings("TYPE=1\nDEBUG=false\n");
    const Result result = run(actions({"log=a", "err=1:a", "stream=a", "number=5"}));
    QCOMPARE(result.err, QByteArray());
    QCOMPARE(lines(), QByteArray("T a\r\nT a Error code:1 \r\nT M a \r\n5\r\n"));
}

void tst_clog::doesNothingWhenSwitchedOff()
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

void tst_clog::readsItsSettingsOnce()
{
    const QString other = m_program->path("other");
    const Result result =
        run({"initpath=" + path(), "log=a", "initpath=" + other, "log=b", "destroy"});
    QCOMPARE(result.out, QByteArray("on\non\n"));
    QCOMPARE(lines(), QByteArray("T a\r\nT b\r\n"));
    QVERIFY(!QFile::exists(other));
}

void tst_clog::debugCallsWorkOnlyWhileTheLogIsOff()
{
    const Result result = run({"debug=before", "initpath=" + path(), "debug=while", "destroy",
                               "debug=after", "repeatdebug=1048580"});
    QCOMPARE(lines(), QByteArray());
    // No writer takes them; only the echo, on by default, shows that they ran.
    const QByteArray longest(1048575, 'x');
    QVERIFY(withoutTimes(result.err) == "T before\nT after\nT " + longest + "\n");
}

void tst_clog::endsTwice()
{
    const Result result =
        run(actions({"log=a", "destroy", "state", "log=b", "stream=b", "err=1:b", "flush"}));
    QCOMPARE(result.code, 0);
    QCOMPARE(result.out, QByteArray("on\noff\n"));
    QCOMPARE(lines(), QByteArray("T a\r\n"));
}

void tst_clog::startsAgainAfterItsEnd()
{
    setSettings("TYPE=2\n");
    run(actions({"log=a"}) + actions({"log=b"}));
    QCOMPARE(log(), startBanner + "T a\r\n" + endBanner + startBanner + "T b\r\n" + endBanner);
}

void tst_clog::worksWithoutAndAcrossAnApplicationObject()
{
    const QString text = QString::fromUtf8("text=\xC3\xA9");
    const Result result =
        run(actions({text, "flush", "written", "app", text, "written", "noapp", text}));
    QCOMPARE(result.out, QByteArray("on\nwritten\nwritten\n"));
    QCOMPARE(lines(), QByteArray("\xC3\xA9\r\nflush to file \r\n\xC3\xA9\r\n\xC3\xA9\r\n"));
    // Nothing but the echo: Qt has no complaint about the missing object.
    QCOMPARE(result.err, QByteArray("\xC3\xA9\n\xC3\xA9\n\xC3\xA9\n"));
}

void tst_clog::stopsTheProcessOnAnEmptyPath()
{
    const Result result = run({"initpath=", "log=a"});
    QCOMPARE(result.code, ChildProcess::kCrashed);
    const QRegularExpression message(
        "ASSERT: \"!m_strFile\\.isEmpty\\(\\)\" in LogTask/clog, line \\d+\n");
    QVERIFY2(message.match(result.err).hasMatch(), result.err.constData());
}

void tst_clog::losesLinesOfAFileThatCannotBeOpened()
{
    const QString below = m_program->path("missing/log");
    const Result result = run({"initpath=" + below, "stream=a", "flush", "written", "destroy"});
    QCOMPARE(result.code, 0);
    QCOMPARE(result.out, QByteArray("on\nwritten\n"));
    QVERIFY(!QFile::exists(below));
}

void tst_clog::callersDoNotWaitForTheDisk()
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

void tst_clog::offersItsSignalsInOrder()
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

QTEST_GUILESS_MAIN(tst_clog)
#include "tst_clog.moc"
