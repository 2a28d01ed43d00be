#include "LogTask/logqueue_p.h"

#include <QElapsedTimer>
#include <QtTest>

#include <thread>

namespace {

using namespace std::chrono_literals;

QString textOf(const LogQueue::Batch& batch)
{
    return QString::fromStdU16String(batch.text);
}

} // namespace

class tst_LogQueue : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void joinsLinesInOrder()
    {
        LogQueue queue;
        queue.pushText("half ", false);
        queue.pushText("line", true);
        queue.pushFlush();
        queue.pushText("other", true);
        LogQueue::Batch batch;
        QVERIFY(queue.takeAll(&batch));
        QCOMPARE(textOf(batch), QString("half line\r\nother\r\n"));
        QCOMPARE(batch.flushes, std::vector<std::size_t>{11});
        QVERIFY(!queue.takeAll(&batch));
        QVERIFY(batch.isEmpty());
    }

    void keepsAllLinesWithoutALimit()
    {
        LogQueue queue;
        for (int i = 0; i < 1000; ++i)
            queue.pushText(QString(10000, QChar('x')), false);
        LogQueue::Batch batch;
        QVERIFY(queue.takeAll(&batch));
        QCOMPARE(batch.text.size(), std::size_t(10000000));
    }

    void losesAndCountsLinesAboveTheLimit()
    {
        LogQueue queue;
        queue.setLimit(12);
        queue.pushText("12345", true);
        queue.pushText("123456", true); // does not fit
        queue.pushText("1", true);      // would, but no line overtakes the notice
        LogQueue::Batch batch;
        QVERIFY(queue.takeAll(&batch));
        QCOMPARE(textOf(batch), QString("12345\r\n2 lines lost here\r\n"));
        queue.pushText("after", true);
        QVERIFY(queue.takeAll(&batch));
        QCOMPARE(textOf(batch), QString("after\r\n"));
    }

    void takesARequestToFlushAlsoAboveTheLimit()
    {
        LogQueue queue;
        queue.setLimit(1);
        queue.pushText("long", true);
        queue.pushFlush();
        LogQueue::Batch batch;
        QVERIFY(queue.takeAll(&batch));
        QCOMPARE(batch.flushes, std::vector<std::size_t>{0});
    }

    void gathersForTheDelayOnly()
    {
        LogQueue queue;
        queue.setDelay(30ms);
        queue.pushText("line", true);
        QElapsedTimer timer;
        timer.start();
        queue.gather(false);
        QVERIFY2(timer.elapsed() >= 29, qPrintable(QString::number(timer.elapsed())));
    }

    void gathersNothingWhenThereIsNothing()
    {
        LogQueue queue;
        queue.setDelay(1h);
        queue.gather(false); // returns at all
    }

    void endsTheGatheringAtOnce_data()
    {
        QTest::addColumn<int>("reason");
        QTest::newRow("flush") << 0;
        QTest::newRow("many lines") << 1;
        QTest::newRow("end of the log") << 2;
        QTest::newRow("somebody waits") << 3;
    }

    void endsTheGatheringAtOnce()
    {
        QFETCH(int, reason);
        LogQueue queue;
        queue.setDelay(1h); // the test would not end
        queue.pushText("line", true);
        std::thread other([&] {
            if (reason == 0)
                queue.pushFlush();
            else if (reason == 1)
                queue.pushText(QString(300000, QChar('x')), true);
            else if (reason == 2)
                queue.wake();
            else
                queue.waitWritten(0ms);
        });
        queue.gather(true);
        other.join();
    }
};

QTEST_GUILESS_MAIN(tst_LogQueue)
#include "tst_logqueue.moc"
