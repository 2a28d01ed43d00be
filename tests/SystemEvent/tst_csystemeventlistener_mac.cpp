// Runs the macOS source against stand-ins of the system's functions, which record their calls and,
// like the real ones, follow a port or a source without asking whether it is null.

#include "SystemEvent/csystemeventlistener_mac.h"
#include "SystemEvent/csystemeventlistener_p.h"

#include "support/logcapture.h"

#include <QElapsedTimer>
#include <QMutex>
#include <QMutexLocker>
#include <QSemaphore>
#include <QSignalSpy>
#include <QTest>

#include <atomic>

#include <Carbon/Carbon.h>
#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/IOMessage.h>
#include <IOKit/pwr_mgt/IOPMLib.h>

struct StandInRunLoopSource
{
    int number;
};

struct StandInNotificationPort
{
    int number;
    StandInRunLoopSource source;
};

namespace {

StandInNotificationPort port{32, {48}};

// Shared by the test's thread and the listener's.
QMutex mutex;
QStringList calls;
std::atomic<IOServiceInterestCallback> powerCallback{nullptr};
std::atomic<EventHandlerUPP> eventHandler{nullptr};
QSemaphore running;
QSemaphore stopped;
std::atomic<bool> ignoresStop{false};
std::atomic<io_connect_t> rootPort{77};

void record(const QString& call)
{
    const QMutexLocker lock(&mutex);
    calls << call;
}

QStringList recorded()
{
    const QMutexLocker lock(&mutex);
    return calls;
}

void forgetCalls()
{
    const QMutexLocker lock(&mutex);
    calls.clear();
}

template<typename Handle>
Handle handle(quintptr number)
{
    return reinterpret_cast<Handle>(number);
}

} // namespace

const CFRunLoopMode kCFRunLoopDefaultMode = "default mode";

CFRunLoopRef CFRunLoopGetCurrent()
{
    return handle<CFRunLoopRef>(0x10);
}

void CFRunLoopAddSource(CFRunLoopRef runLoop, CFRunLoopSourceRef source, CFRunLoopMode mode)
{
    record(QStringLiteral("CFRunLoopAddSource %1 %2 %3")
               .arg(quintptr(runLoop))
               .arg(source->number)
               .arg(QLatin1String(mode)));
}

void CFRunLoopRun()
{
    record(QStringLiteral("CFRunLoopRun"));
    running.release();
    stopped.acquire();
}

void CFRunLoopStop(CFRunLoopRef runLoop)
{
    record(QStringLiteral("CFRunLoopStop %1").arg(quintptr(runLoop)));
    if (!ignoresStop)
        stopped.release();
}

io_connect_t IORegisterForSystemPower(void* refcon, IONotificationPortRef* notificationPort,
                                      IOServiceInterestCallback callback, io_object_t* notifier)
{
    record(QStringLiteral("IORegisterForSystemPower %1").arg(quintptr(refcon)));
    *notificationPort = rootPort != 0 ? &port : nullptr;
    *notifier = 5;
    powerCallback = callback;
    return rootPort;
}

IOReturn IOAllowPowerChange(io_connect_t kernelPort, intptr_t notificationID)
{
    record(QStringLiteral("IOAllowPowerChange %1 %2").arg(kernelPort).arg(notificationID, 0, 16));
    return 0;
}

CFRunLoopSourceRef IONotificationPortGetRunLoopSource(IONotificationPortRef ofPort)
{
    record(QStringLiteral("IONotificationPortGetRunLoopSource %1").arg(ofPort->number));
    return &ofPort->source;
}

void IONotificationPortDestroy(IONotificationPortRef destroyed)
{
    record(QStringLiteral("IONotificationPortDestroy %1").arg(destroyed->number));
}

EventTargetRef GetApplicationEventTarget()
{
    return handle<EventTargetRef>(0x40);
}

OSStatus InstallEventHandler(EventTargetRef target, EventHandlerUPP handler, ItemCount count,
                             const EventTypeSpec* types, void* userData, EventHandlerRef* installed)
{
    QString call = QStringLiteral("InstallEventHandler %1 data %2 result %3")
                       .arg(quintptr(target))
                       .arg(quintptr(userData))
                       .arg(quintptr(installed));
    for (ItemCount i = 0; i < count; ++i)
        call += QStringLiteral(" %1:%2").arg(types[i].eventClass, 0, 16).arg(types[i].eventKind);
    record(call);
    eventHandler = handler;
    return noErr;
}

std::uint32_t GetEventKind(EventRef event)
{
    return event->kind;
}

class tst_csystemeventlistener_mac : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void callsTheSystemInOrder();
    void answersPowerMessages_data();
    void answersPowerMessages();
    void tellsUserSwitches_data();
    void tellsUserSwitches();
    void notificationsAfterTheInstanceAreAnswered();
    void failedRegistrationStillListens();
    void startsAgainAfterItsStop();
    void stopAfterTheEndTouchesNoRunLoop();
    void stopIsBoundedWhenTheLoopStays();
    void destroyStopsTheLoop();

private:
    CSystemEventListener* m_listener = nullptr;
};

void tst_csystemeventlistener_mac::init()
{
    forgetCalls();
    rootPort = 77;
    ignoresStop = false;
    running.acquire(running.available());
    stopped.acquire(stopped.available());
    m_listener = createSystemEventListener();
    CSystemEventListener::m_pIns = m_listener;
    m_listener->startListen(true);
    QVERIFY(running.tryAcquire(1, 30000));
}

void tst_csystemeventlistener_mac::cleanup()
{
    CSystemEventListener::destroy();
}

void tst_csystemeventlistener_mac::callsTheSystemInOrder()
{
    m_listener->stopListen();
    QVERIFY(m_listener->isFinished());
    QCOMPARE(recorded(),
             QStringList({"IORegisterForSystemPower 0", "IONotificationPortGetRunLoopSource 32",
                          "CFRunLoopAddSource 16 48 default mode",
                          "InstallEventHandler 64 data 0 result 0 6d616373:11 "
                          "6d616373:10",
                          "CFRunLoopRun", "CFRunLoopStop 16", "IONotificationPortDestroy 32"}));
}

void tst_csystemeventlistener_mac::answersPowerMessages_data()
{
    QTest::addColumn<uint>("message");
    QTest::addColumn<QString>("answer");
    QTest::addColumn<int>("signalled"); // -1: no signal
    QTest::addColumn<QString>("line");
    const QString name = QStringLiteral("SystemEvent/csystemeventlistener_mac PowerMsgCallBack ");
    QTest::newRow("can sleep") << 0xE0000270 << "IOAllowPowerChange 77 e0000270" << -1 << "";
    QTest::newRow("will sleep") << 0xE0000280 << "IOAllowPowerChange 77 e0000280" << 0
                                << name + "SystemWillSleep";
    QTest::newRow("has powered on") << 0xE0000300 << "" << 1 << name + "SystemHasPoweredOn";
    QTest::newRow("will not sleep") << 0xE0000290 << "" << -1 << "";
    QTest::newRow("will power on") << 0xE0000320 << "" << -1 << "";
}

void tst_csystemeventlistener_mac::answersPowerMessages()
{
    QFETCH(uint, message);
    QFETCH(QString, answer);
    QFETCH(int, signalled);
    QFETCH(QString, line);
    LogCapture log;
    QSignalSpy power(m_listener, &CSystemEventListener::powerEvent);
    QSignalSpy user(m_listener, &CSystemEventListener::userSwitch);
    int answersBefore = -1;
    connect(m_listener, &CSystemEventListener::powerEvent, this,
            [&] { answersBefore = static_cast<int>(recorded().filter("Allow").size()); });
    forgetCalls();

    powerCallback(nullptr, 3, message, handle<void*>(0x1234));
    QCOMPARE(recorded(), answer.isEmpty() ? QStringList() : QStringList(answer));
    QCOMPARE(user.size(), 0);
    QCOMPARE(power.size(), signalled < 0 ? 0 : 1);
    if (signalled >= 0) {
        QCOMPARE(power.at(0).at(0).toBool(), signalled == 1);
        QCOMPARE(answersBefore, 0);
    }
    QCOMPARE(log.lines().size(), line.isEmpty() ? 0 : 1);
    QVERIFY(line.isEmpty() || log.contains(line));
}

void tst_csystemeventlistener_mac::tellsUserSwitches_data()
{
    QTest::addColumn<uint>("kind");
    QTest::addColumn<bool>("active");
    QTest::addColumn<QString>("line");
    const QString name =
        QStringLiteral("SystemEvent/csystemeventlistener_mac userSwitchEventHandler User ");
    QTest::newRow("deactivated") << 11U << false << name + "logout";
    QTest::newRow("activated") << 10U << true << name + "login";
    QTest::newRow("another") << 1U << true << name + "login";
}

void tst_csystemeventlistener_mac::tellsUserSwitches()
{
    QFETCH(uint, kind);
    QFETCH(QString, line);
    LogCapture log;
    QSignalSpy power(m_listener, &CSystemEventListener::powerEvent);
    QSignalSpy user(m_listener, &CSystemEventListener::userSwitch);
    StandInEvent event{kind};
    QCOMPARE(int(eventHandler(nullptr, &event, nullptr)), 0);
    QCOMPARE(power.size(), 0);
    QCOMPARE(user.size(), 1);
    QTEST(user.at(0).at(0).toBool(), "active");
    QCOMPARE(log.lines().size(), 1);
    QVERIFY(log.contains(line));
}

void tst_csystemeventlistener_mac::notificationsAfterTheInstanceAreAnswered()
{
    CSystemEventListener::destroy();
    forgetCalls();
    powerCallback(nullptr, 3, kIOMessageSystemWillSleep, nullptr);
    QCOMPARE(recorded(), QStringList("IOAllowPowerChange 77 e0000280"));
    StandInEvent event{11};
    QCOMPARE(int(eventHandler(nullptr, &event, nullptr)), 0);
}

void tst_csystemeventlistener_mac::failedRegistrationStillListens()
{
    m_listener->stopListen();
    rootPort = 0;
    forgetCalls();
    m_listener->startListen(true);
    QVERIFY(running.tryAcquire(1, 30000));
    QSignalSpy user(m_listener, &CSystemEventListener::userSwitch);
    StandInEvent event{10};
    eventHandler(nullptr, &event, nullptr);
    QCOMPARE(user.size(), 1);
    m_listener->stopListen();
    QVERIFY(m_listener->isFinished());
    QCOMPARE(recorded(), QStringList({"IORegisterForSystemPower 0",
                                      "InstallEventHandler 64 data 0 result 0 6d616373:11 "
                                      "6d616373:10",
                                      "CFRunLoopRun", "CFRunLoopStop 16"}));
}

void tst_csystemeventlistener_mac::startsAgainAfterItsStop()
{
    m_listener->stopListen();
    forgetCalls();
    m_listener->startListen(false);
    QVERIFY(running.tryAcquire(1, 30000));
    QCOMPARE(recorded().last(), QStringLiteral("CFRunLoopRun"));
}

void tst_csystemeventlistener_mac::stopAfterTheEndTouchesNoRunLoop()
{
    m_listener->stopListen();
    forgetCalls();
    m_listener->stopListen();
    QCOMPARE(recorded(), QStringList());
}

void tst_csystemeventlistener_mac::stopIsBoundedWhenTheLoopStays()
{
    ignoresStop = true;
    QElapsedTimer timer;
    timer.start();
    m_listener->stopListen();
    QVERIFY(timer.elapsed() >= 950);
    QVERIFY(timer.elapsed() < 10000);
    QVERIFY(m_listener->isRunning());
    ignoresStop = false;
}

void tst_csystemeventlistener_mac::destroyStopsTheLoop()
{
    CSystemEventListener::destroy();
    QVERIFY(!CSystemEventListener::m_pIns);
    QCOMPARE(recorded().last(), QStringLiteral("IONotificationPortDestroy 32"));
}

QTEST_GUILESS_MAIN(tst_csystemeventlistener_mac)
#include "tst_csystemeventlistener_mac.moc"
