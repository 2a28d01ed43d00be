#include "SystemEvent/csystemeventlistener.h"

#include "support/logcapture.h"

#include <QElapsedTimer>
#include <QMetaMethod>
#include <QPointer>
#include <QSemaphore>
#include <QSignalSpy>
#include <QTest>

#include <atomic>

namespace {

// A listener whose thread ends when the test says so.
class StubbornListener : public CSystemEventListener
{
public:
    void startListen(bool) override { start(); }
    void stopListen() override { endThread(); }
    QSemaphore mayEnd;

protected:
    void run() override { mayEnd.acquire(); }
    void stopLoop() override {}
};

// A listener whose loop misses the first request to end, as one does that has not begun yet.
class LateListener : public CSystemEventListener
{
public:
    void startListen(bool) override { start(); }
    void stopListen() override { endThread(); }

protected:
    void run() override { m_requests.acquire(2); }
    void stopLoop() override { m_requests.release(); }

private:
    QSemaphore m_requests;
};

// A listener that stops itself in its own thread.
class SelfStoppingListener : public CSystemEventListener
{
public:
    void startListen(bool) override { start(); }
    void stopListen() override { hasEnded = endThread(); }
    // Atomic for the thread sanitizer, which does not see that wait() orders the two threads.
    std::atomic<int> requests{0};
    std::atomic<bool> hasEnded{true};

protected:
    void run() override
    {
        stopListen();
        exec();
    }
    void stopLoop() override { ++requests; }
};

QtMessageHandler g_before = nullptr;
std::atomic<int> g_warnings{0};

void countWarning(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    if (type == QtWarningMsg)
        ++g_warnings;
    g_before(type, context, text);
}

} // namespace

class tst_csystemeventlistener : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { CSystemEventListener::destroy(); }
    void thereIsOneInstance();
    void hasTheSignalsInOrder();
    void emitsWhatItIsTold();
    void destroyWithoutAnInstance();
    void destroyEndsAndDeletesTheListener();
    void destroyLeavesAThreadThatDoesNotEnd();
    void stopWaitsASecondAtMost();
    void stopIsAskedForAgain();
    void stopFromItsOwnThreadOnlyAsks();
};

void tst_csystemeventlistener::thereIsOneInstance()
{
    QVERIFY(!CSystemEventListener::m_pIns);
    CSystemEventListener* const listener = CSystemEventListener::instance();
    QVERIFY(listener);
    QCOMPARE(CSystemEventListener::instance(), listener);
    QCOMPARE(CSystemEventListener::m_pIns, listener);
    QVERIFY(!listener->parent());
    QVERIFY(!listener->isRunning());
    CSystemEventListener::destroy();
    QVERIFY(!CSystemEventListener::m_pIns);
}

void tst_csystemeventlistener::hasTheSignalsInOrder()
{
    const QMetaObject& meta = CSystemEventListener::staticMetaObject;
    QStringList methods;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        QCOMPARE(meta.method(i).methodType(), QMetaMethod::Signal);
        methods << QString::fromLatin1(meta.method(i).methodSignature());
    }
    QCOMPARE(methods, QStringList({"userSwitch(bool)", "powerEvent(bool)", "userLogon(bool)",
                                   "sessionClose()"}));
}

void tst_csystemeventlistener::emitsWhatItIsTold()
{
    CSystemEventListener* const listener = CSystemEventListener::instance();
    QStringList emitted;
    auto record = [&emitted](const char* name) {
        return [&emitted, name](bool value) {
            emitted << QLatin1String(name) + (value ? " true" : " false");
        };
    };
    connect(listener, &CSystemEventListener::userSwitch, this, record("userSwitch"));
    connect(listener, &CSystemEventListener::powerEvent, this, record("powerEvent"));
    connect(listener, &CSystemEventListener::userLogon, this, record("userLogon"));
    connect(listener, &CSystemEventListener::sessionClose, this,
            [&emitted] { emitted << "sessionClose"; });
    listener->emitSignal(true, true);
    listener->emitSignal(true, false);
    listener->emitSignal(false, true);
    listener->emitSignal(false, false);
    listener->logonEvent(true);
    listener->logonEvent(false);
    listener->endSession();
    QCOMPARE(emitted, QStringList({"userSwitch true", "userSwitch false", "powerEvent true",
                                   "powerEvent false", "userLogon true", "userLogon false",
                                   "sessionClose"}));
}

void tst_csystemeventlistener::destroyWithoutAnInstance()
{
    CSystemEventListener::destroy();
    QVERIFY(!CSystemEventListener::m_pIns);
}

void tst_csystemeventlistener::destroyEndsAndDeletesTheListener()
{
    const QPointer<CSystemEventListener> listener = new LateListener;
    CSystemEventListener::m_pIns = listener;
    listener->startListen(true);
    CSystemEventListener::destroy();
    QVERIFY(listener.isNull());
}

void tst_csystemeventlistener::destroyLeavesAThreadThatDoesNotEnd()
{
    const LogCapture log;
    StubbornListener listener;
    CSystemEventListener::m_pIns = &listener;
    listener.startListen(true);
    QElapsedTimer timer;
    timer.start();
    CSystemEventListener::destroy();
    QVERIFY(timer.elapsed() < 10000);
    QVERIFY(!CSystemEventListener::m_pIns);
    QVERIFY(listener.isRunning());
    QVERIFY(log.contains(
        "SystemEvent/csystemeventlistener destroy The listener's thread does not end"));
    listener.mayEnd.release();
    QVERIFY(listener.wait(30000));
}

void tst_csystemeventlistener::stopWaitsASecondAtMost()
{
    StubbornListener listener;
    listener.startListen(true);
    QElapsedTimer timer;
    timer.start();
    listener.stopListen();
    QVERIFY(timer.elapsed() >= 950);
    QVERIFY(timer.elapsed() < 10000);
    listener.mayEnd.release();
    QVERIFY(listener.wait(30000));
    timer.start();
    listener.stopListen();
    QVERIFY(timer.elapsed() < 900);
}

void tst_csystemeventlistener::stopIsAskedForAgain()
{
    LateListener listener;
    listener.startListen(true);
    listener.stopListen();
    QVERIFY(listener.isFinished());
}

void tst_csystemeventlistener::stopFromItsOwnThreadOnlyAsks()
{
    g_warnings = 0;
    g_before = qInstallMessageHandler(countWarning);
    SelfStoppingListener listener;
    listener.startListen(true);
    const bool hasEnded = listener.wait(30000);
    qInstallMessageHandler(g_before);
    QVERIFY(hasEnded);
    QVERIFY(!listener.hasEnded);
    QCOMPARE(listener.requests.load(), 1);
    QCOMPARE(g_warnings.load(), 0);
}

QTEST_GUILESS_MAIN(tst_csystemeventlistener)
#include "tst_csystemeventlistener.moc"
