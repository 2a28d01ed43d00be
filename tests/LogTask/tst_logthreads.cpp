#include "LogTask/clog.h"
#include "support/logcapture.h"

#include <QLoggingCategory>
#include <QSemaphore>
#include <QSignalSpy>
#include <QTest>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

class tst_logthreads : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void writesLinesOfAllThreadsInTheOrderOfTheirEmission();
    void losesNoLineAtStart();
    void looksUpNewCodesFromSeveralThreads();
    void acceptsLinesEmittedAsSignals();
    void tellsReceiversEveryLine();
    void survivesThreadsThatLogWhileItEnds();
    void waitsForCallsThatStillRunWhenItEnds();
    void takesDebugLinesWhileItStartsAndEnds();
    void keepsLinesWhole();
};

namespace {

void inThreads(int count, const std::function<void(int)>& work)
{
    std::vector<std::thread> threads;
    threads.reserve(static_cast<std::size_t>(count));
    for (int t = 0; t < count; ++t)
        threads.emplace_back(work, t);
    for (std::thread& thread : threads)
        thread.join();
}

} // namespace

void tst_logthreads::writesLinesOfAllThreadsInTheOrderOfTheirEmission()
{
    LogCapture log;
    std::mutex mutex;
    int next = 0;
    inThreads(4, [&](int) {
        for (int i = 0; i < 2000; ++i) {
            const std::lock_guard<std::mutex> lock(mutex);
            CLogFile() << "number" << next++;
        }
    });
    const QStringList lines = log.lines();
    QCOMPARE(lines.size(), 8000);
    for (int i = 0; i < 8000; ++i)
        QVERIFY2(lines[i].endsWith(QString(" number %1 ").arg(i)), qPrintable(lines[i]));
}

void tst_logthreads::losesNoLineAtStart()
{
    for (int run = 0; run < 20; ++run) {
        LogCapture log;
        CLogFile() << "first";
        Log("second");
        const QStringList lines = log.lines();
        QCOMPARE(lines.size(), 2);
        QVERIFY(lines[0].endsWith(" first "));
        QVERIFY(lines[1].endsWith(" second"));
    }
}

void tst_logthreads::looksUpNewCodesFromSeveralThreads()
{
    LogCapture log;
    inThreads(4, [](int t) {
        for (int i = 0; i < 500; ++i)
            LogErr(4 * i + t, "thread %d", t);
    });
    for (int t = 0; t < 4; ++t) {
        const QStringList lines = log.lines().filter(QString("thread %1 ").arg(t));
        QCOMPARE(lines.size(), 500);
        for (int i = 0; i < 500; ++i)
            QVERIFY2(lines[i].endsWith(QString(" Error code:%1 ").arg(4 * i + t, 0, 16)),
                     qPrintable(lines[i]));
    }
}

void tst_logthreads::acceptsLinesEmittedAsSignals()
{
    LogCapture log;
    CLog* instance = CLog::Instance();
    inThreads(1, [instance](int) {
        Q_EMIT instance->WriteLog("half ", false);
        Q_EMIT instance->WriteLog("line", true);
        Q_EMIT instance->flushLog();
        Q_EMIT instance->WriteLog("other", true);
    });
    QCOMPARE(log.lines(), QStringList({"half line", "other"}));
    QVERIFY(log.text().contains("half line\r\nflush to file \r\nother\r\n"));
}

void tst_logthreads::tellsReceiversEveryLine()
{
    for (const bool early : {true, false}) {
        std::unique_ptr<QSignalSpy> spy;
        const auto listen = [&spy] {
            spy = std::make_unique<QSignalSpy>(CLog::Instance(), &CLog::WriteLog);
        };
        if (early)
            listen(); // before the log has started
        LogCapture log;
        Log("unheard when late");
        if (!early)
            listen();
        Log("%s", "one");
        LogErr(26, "two");
        CLogFile() << "three" << 3;
        *CLog::Instance() << 4;
        QStringList heard;
        for (const QList<QVariant>& arguments : std::as_const(*spy)) {
            QVERIFY(arguments.at(1).toBool());
            heard += arguments.at(0).toString();
        }
        // Once in the file, too, and the same there.
        const QStringList written = log.lines();
        QCOMPARE(written.size(), 5);
        QCOMPARE(heard, QStringList(written.mid(early ? 0 : 1)));
        QVERIFY2(heard.last() == "4" && written.at(2).endsWith(" two Error code:1a "),
                 qPrintable(written.join('|')));
    }
}

void tst_logthreads::survivesThreadsThatLogWhileItEnds()
{
    for (int run = 0; run < 5; ++run) {
        std::atomic<bool> end{false};
        std::atomic<int> running{0};
        std::vector<std::thread> threads;
        {
            LogCapture log;
            for (int t = 0; t < 3; ++t) {
                threads.emplace_back([&end, &running, t] {
                    ++running;
                    while (!end) {
                        CLogFile() << "late" << t;
                        LogErr(t, "late");
                        FlushLog();
                        std::this_thread::yield();
                    }
                });
            }
            QTRY_COMPARE(running.load(), 3);
            QVERIFY(log.contains("late"));
        }
        QVERIFY(!g_bLog);
        end = true;
        for (std::thread& thread : threads)
            thread.join();
    }
}

// A call that a receiver holds back: the log thread ends after it, and the instance after that.
void tst_logthreads::waitsForCallsThatStillRunWhenItEnds()
{
    std::atomic<bool> isHeld{false};
    std::atomic<bool> hasReturned{false};
    std::atomic<bool> endedEarly{false};
    QSemaphore threadEnded;
    std::unique_ptr<std::thread> caller;
    {
        LogCapture log;
        CLog* const instance = CLog::Instance();
        connect(
            instance, &CLog::finished, instance, [&] { threadEnded.release(); },
            Qt::DirectConnection);
        connect(
            instance, &QObject::destroyed, this,
            [&] {
                if (!hasReturned)
                    endedEarly = true;
            },
            Qt::DirectConnection);
        connect(
            instance, &CLog::WriteLog, this,
            [&] {
                isHeld = true;
                while (g_bLog)
                    std::this_thread::yield();
                if (threadEnded.tryAcquire(1, 100)) // must not come
                    endedEarly = true;
                hasReturned = true;
            },
            Qt::DirectConnection);
        caller = std::make_unique<std::thread>([] { Log("held"); });
        QTRY_VERIFY(isHeld);
    }
    caller->join();
    QVERIFY(hasReturned);
    QVERIFY(!endedEarly);
}

// For the thread sanitizer. Nothing of these lines reaches the file: they come before the log.
void tst_logthreads::takesDebugLinesWhileItStartsAndEnds()
{
    QLoggingCategory::setFilterRules("default.debug=false");
    std::atomic<bool> end{false};
    std::atomic<int> calls{0};
    std::thread other([&] {
        while (!end) {
            LogDebug("early %d", ++calls);
            std::this_thread::yield();
        }
    });
    QTRY_VERIFY(calls > 0);
    for (int run = 0; run < 5; ++run) {
        LogCapture log;
        Log("on");
        QVERIFY(log.contains("on"));
    }
    const int before = calls;
    QTRY_VERIFY(calls > before); // the log is off again
    end = true;
    other.join();
    DestroyLog();
}

void tst_logthreads::keepsLinesWhole()
{
    LogCapture log;
    inThreads(4, [](int t) {
        const QString text(5000, QChar('a' + t));
        for (int i = 0; i < 50; ++i)
            CLogFile() << text;
    });
    const QStringList lines = log.lines();
    QCOMPARE(lines.size(), 200);
    for (const QString& line : lines)
        QVERIFY(line.endsWith(' ' + QString(5000, line[line.size() - 2]) + ' '));
}

QTEST_GUILESS_MAIN(tst_logthreads)
#include "tst_logthreads.moc"
