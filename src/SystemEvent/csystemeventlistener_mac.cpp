#include "SystemEvent/csystemeventlistener_mac.h"

#include "LogTask/clog.h"
#include "SystemEvent/csystemeventlistener_p.h"

#include <QMutex>
#include <QMutexLocker>

#include <atomic>

#include <Carbon/Carbon.h>
#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/IOMessage.h>
#include <IOKit/pwr_mgt/IOPMLib.h>

namespace {

constexpr char kLogSource[] = "SystemEvent/csystemeventlistener_mac";

// The run loop of the listener's thread while it has one, and the power-management connection.
QMutex g_runLoopMutex;
CFRunLoopRef g_runLoop = nullptr;
std::atomic<io_connect_t> g_rootPort{0};

void setRunLoop(CFRunLoopRef runLoop)
{
    const QMutexLocker lock(&g_runLoopMutex);
    g_runLoop = runLoop;
}

void emitOnInstance(bool userSwitch, bool value)
{
    if (CSystemEventListener::m_pIns)
        CSystemEventListener::m_pIns->emitSignal(userSwitch, value);
}

// The system is answered with the message type where it expects the message's argument, and that
// is meant.
void PowerMsgCallBack(void*, io_service_t, natural_t messageType, void*)
{
    switch (messageType) {
    case kIOMessageCanSystemSleep:
        IOAllowPowerChange(g_rootPort, static_cast<intptr_t>(messageType));
        break;
    case kIOMessageSystemWillSleep:
        Log("%s %s SystemWillSleep", kLogSource, "PowerMsgCallBack");
        emitOnInstance(false, false);
        IOAllowPowerChange(g_rootPort, static_cast<intptr_t>(messageType));
        break;
    case kIOMessageSystemHasPoweredOn:
        Log("%s %s SystemHasPoweredOn", kLogSource, "PowerMsgCallBack");
        emitOnInstance(false, true);
        break;
    default:
        break;
    }
}

OSStatus userSwitchEventHandler(EventHandlerCallRef, EventRef event, void*)
{
    const bool login = GetEventKind(event) != kEventSystemUserSessionDeactivated;
    Log(login ? "%s %s User login" : "%s %s User logout", kLogSource, "userSwitchEventHandler");
    emitOnInstance(true, login);
    return noErr;
}

void installUserSwitchHandler()
{
    const EventTypeSpec types[] = {{kEventClassSystem, kEventSystemUserSessionDeactivated},
                                   {kEventClassSystem, kEventSystemUserSessionActivated}};
    InstallEventHandler(GetApplicationEventTarget(), userSwitchEventHandler, 2, types, nullptr,
                        nullptr);
}

} // namespace

CSystemEventListener* createSystemEventListener()
{
    return new CSystemEventListener_mac;
}

void CSystemEventListener_mac::startListen(bool)
{
    start(InheritPriority);
}

void CSystemEventListener_mac::stopListen()
{
    endThread();
}

void CSystemEventListener_mac::stopLoop()
{
    const QMutexLocker lock(&g_runLoopMutex);
    if (g_runLoop)
        CFRunLoopStop(g_runLoop);
}

// A registration that fails leaves the port null, which the system's functions would follow. The
// loop runs all the same, for the user's events.
void CSystemEventListener_mac::run()
{
    setRunLoop(CFRunLoopGetCurrent());
    IONotificationPortRef port = nullptr;
    io_object_t notifier = 0;
    g_rootPort = IORegisterForSystemPower(nullptr, &port, PowerMsgCallBack, &notifier);
    if (port)
        CFRunLoopAddSource(CFRunLoopGetCurrent(), IONotificationPortGetRunLoopSource(port),
                           kCFRunLoopDefaultMode);
    installUserSwitchHandler();
    CFRunLoopRun();
    setRunLoop(nullptr);
    if (port)
        IONotificationPortDestroy(port);
}
