#include "LogTask/logqueue_p.h"

#include <QElapsedTimer>
#include <QtTest>

#include <string>
#include <thread>

namespace {

using namespace std::chrono_literals;

void push(LogQueue* queue, const std::string& text, bool newLine)
{
    queue->push(text.data(), text.size(), newLine);
}

} // namespace

class tst_logqueue : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void joinsLinesInOrder()
    {
        LogQueue queue;
        push(&queue, "half ", false);
        push(&queue, "line", true);
        queue.pushFlush();
        push(&queue, "other", true);
        LogQueue::Batch batch;
        QVERIFY(queue.takeAll(&batch));
        QCOMPARE(batch.text, std::string("half line\r\nother\r\n"));
        QCOMPARE(batch.flushes, std::vector<std::size_t>{11});
        QVERIFY(!queue.takeAll(&batch));
        QVERIFY(batch.isEmpty());
    }

    void keepsAllLinesWithoutALimit()
    {
        LogQueue queue;
        for (int i = 0; i < 1000; ++i)
            push(&queue, std::string(10000, 'x'), false);
        LogQueue::Batch batch;
        QVERIFY(queue.takeAll(&batch));
        QCOMPARE(batch.text.size(), std::size_t(10000000));
    }

    void losesAndCountsLinesAboveTheLimit()
    {
        LogQueue queue;
        queue.setLimit(12);
        push(&queue, "12345", true);
        push(&queue, "123456", true); // does not fit
        push(&queue, "1", true);      // would, but no line overtakes the notice
        LogQueue::Batch batch;
        QVERIFY(queue.takeAll(&batch));
        QCOMPARE(batch.text, std::string("12345\r\n2 lines lost here\r\n"));
        push(&queue, "after", true);
        QVERIFY(queue.takeAll(&batch));
        QCOMPARE(batch.text, std::string("after\r\n"));
    }

    void takesARequestToFlushAlsoAboveTheLimit()
    {
        LogQueue queue;
        queue.setLimit(1);
        push(&queue, "long", true);
        queue.pushFlush();
        LogQueue::Batch batch;
        QVERIFY(queue.takeAll(&batch));
        QCOMPARE(batch.flushes, std::vector<std::size_t>{0});
    }

    void gathersForTheDelayOnly()
    {
        LogQueue queue;
        queue.setDelay(30ms);
        push(&queue, "line", true);
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
        push(&queue, "line", true);
        std::thread other([&] {
            if (reason == 0)
                queue.pushFlush();
            else if (reason == 1)
                push(&queue, std::string(300000, 'x'), true);
            else if (reason == 2)
                queue.wake();
            else
                queue.waitWritten(0ms);
        });
        queue.gather(true);
        other.join();
    }
};

QTEST_GUILESS_MAIN(tst_logqueue)
#include "tst_logqueue.moc"
