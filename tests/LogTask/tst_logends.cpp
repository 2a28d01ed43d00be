#include "loggingprogram.h"

#include <QElapsedTimer>
#include <QTest>

#include <sys/stat.h>

#include <memory>

/// How the log of a whole process ends, and what of it is left in the file.
class tst_logends : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void takesCallsAfterTheEndOfQt_data();
    void takesCallsAfterTheEndOfQt();
    void keepsFlushedLinesWhenKilled();
    void keepsEveryLineWhenKilledWithFlushSet();
    void leavesAHangingDiskBehind();
    void survivesALimitOnFileSizes();
    void goesOnAfterAFullDisk();
    void keepsWhatWasWrittenBeforeAPause();
    void keepsBackTextInAPauseByDefault();
    void keepsAllLinesOfACrash_data();
    void keepsAllLinesOfACrash();
    void keepsLinesOnAllStagesInACrash();
    void keepsLinesWholeWhenOthersLogInACrash();
    void endsAtOnceInAChild();
    void lendsAChildALogOfItsOwn();

private:
    using Result = ChildProcess::Result;

    void setSettings(const QByteArray& lines) { m_program->setSettings(lines); }
    Result run(const QStringList& actions) const { return m_program->run(actions); }
    QByteArray log() const { return m_program->log(); }
    QString path() const { return m_program->path(); }
    QStringList actions(const QStringList& between) const { return m_program->actions(between); }

    std::unique_ptr<LoggingProgram> m_program;
};

void tst_logends::init()
{
    m_program = std::make_unique<LoggingProgram>(HELPER_LOGPROGRAM);
    setSettings("TYPE=1\n");
}

void tst_logends::takesCallsAfterTheEndOfQt_data()
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
void tst_logends::takesCallsAfterTheEndOfQt()
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

void tst_logends::keepsFlushedLinesWhenKilled()
{
    const Result result = run({"initpath=" + path(), "log=a", "flush", "written", "log=b", "kill"});
    QCOMPARE(result.code, ChildProcess::kCrashed);
    QCOMPARE(log(), startBanner + "T a\r\nflush to file \r\n");
}

void tst_logends::keepsEveryLineWhenKilledWithFlushSet()
{
    setSettings("TYPE=1\nFLUSH=true\n");
    run({"initpath=" + path(), "log=a", "log=b", "written", "kill"});
    QCOMPARE(log(), startBanner + "T a\r\nT b\r\n");
}

void tst_logends::leavesAHangingDiskBehind()
{
    // Opening a pipe without a reader hangs for ever.
    QCOMPARE(mkfifo(QFile::encodeName(path()).constData(), 0600), 0);
    const Result result = run(actions({"log=a", "state", "destroy", "state"}));
    QCOMPARE(result.code, 0);
    QCOMPARE(result.out, QByteArray("on\non\noff\n"));
}

// The system's signal for such a limit ends a process that does nothing about it.
void tst_logends::survivesALimitOnFileSizes()
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
void tst_logends::goesOnAfterAFullDisk()
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

void tst_logends::keepsWhatWasWrittenBeforeAPause()
{
    setSettings("TYPE=1\nFLUSHIDLE=true\n");
    ChildProcess child(m_program->program(), {"initpath=" + path(), "log=a", "wait"});
    QTRY_COMPARE(log(), startBanner + "T a\r\n"); // no mark of a flush
    child.kill();
    QCOMPARE(log(), startBanner + "T a\r\n");
}

void tst_logends::keepsBackTextInAPauseByDefault()
{
    ChildProcess child(m_program->program(), {"initpath=" + path(), "log=a", "written", "wait"});
    QVERIFY(child.says("written"));
    QCOMPARE(log(), QByteArray());
}

void tst_logends::keepsAllLinesOfACrash_data()
{
    QTest::addColumn<QString>("crash");
    QTest::newRow("abort") << "abort";
    QTest::newRow("segmentation fault") << "segv";
}

void tst_logends::keepsAllLinesOfACrash()
{
    QFETCH(QString, crash);
    setSettings("TYPE=1\nDEBUG=false\n");
    QByteArray expected = startBanner;
    for (int i = 0; i < 20000; ++i)
        expected += "T M line " + QByteArray::number(i) + " \r\n";
    const Result result =
        run({"initpath=" + path(), "crashhandler", "many=20000", "log=last", crash});
    QCOMPARE(result.code, ChildProcess::kCrashed);
    QVERIFY(log() == expected + "T last\r\n");
    // Without the handler, the end is lost.
    run({"initpath=" + path(), "many=20000", "log=last", crash});
    QVERIFY(!log().contains("last"));
}

// One line is with the writer, one has not been taken by it.
void tst_logends::keepsLinesOnAllStagesInACrash()
{
    const QStringList steps = {"initpath=" + path(), "crashhandler", "log=a", "written", "log=b"};
    QCOMPARE(run(steps + QStringList("abort")).code, ChildProcess::kCrashed);
    QCOMPARE(log(), startBanner + "T a\r\nT b\r\n");
}

void tst_logends::keepsLinesWholeWhenOthersLogInACrash()
{
    setSettings("TYPE=1\nDEBUG=false\n");
    for (int i = 0; i < 5; ++i) {
        const Result result = run(
            {"initpath=" + path(), "crashhandler", "storm=3", "many=20000", "log=last", "segv"});
        QCOMPARE(result.code, ChildProcess::kCrashed);
        const QByteArray text = readFile(path());
        QVERIFY(text.contains(" last\r\n"));
        QVERIFY(text.contains(" storm 2 "));
        QVERIFY2(text.endsWith("\r\n"), text.right(100).constData());
        const QRegularExpression line(
            "^\\d\\d:\\d\\d:\\d\\d (\\d{1,3} (line|storm \\d) \\d+ (end )?|last)$");
        QList<QByteArray> lines = text.mid(startBanner.size() + 7).split('\n');
        lines.removeLast();
        for (QByteArray& one : lines) {
            one.chop(1);
            QVERIFY2(line.match(QString::fromUtf8(one)).hasMatch(), one.constData());
        }
    }
}

void tst_logends::endsAtOnceInAChild()
{
    // Waiting for a log thread that is not there would take three seconds.
    QElapsedTimer timer;
    timer.start();
    const Result result =
        run(actions({"log=a", "child=state,log=b,flush,destroy,debug=b", "log=c"}));
    QCOMPARE(result.out, QByteArray("on\noff\nchild ended\n"));
    QVERIFY2(timer.elapsed() < 2900, QByteArray::number(timer.elapsed()).constData());
    QCOMPARE(m_program->lines(), QByteArray("T a\r\nT c\r\n"));
}

void tst_logends::lendsAChildALogOfItsOwn()
{
    const QString other = m_program->path("child");
    const Result result =
        run(actions({"log=a", "child=initpath=" + other + ",log=b,destroy", "log=c"}));
    QCOMPARE(result.out, QByteArray("on\non\nchild ended\n"));
    QCOMPARE(m_program->lines(), QByteArray("T a\r\nT c\r\n"));
    QCOMPARE(withoutTimes(readFile(other)), startBanner + "T b\r\n" + endBanner);
}

QTEST_GUILESS_MAIN(tst_logends)
#include "tst_logends.moc"
