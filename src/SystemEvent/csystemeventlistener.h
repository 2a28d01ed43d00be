#ifndef SYSTEMEVENT_CSYSTEMEVENTLISTENER_H
#define SYSTEMEVENT_CSYSTEMEVENTLISTENER_H

#include "wzrframework_export.h"

#include <QThread>

/// Turns the system's notifications about sleep, waking and the switching of users into signals.
///
/// It is a thread of its own, which waits for the notifications and emits powerEvent() and
/// userSwitch(); receivers in other threads get them queued. The main thread creates the one
/// listener with instance(), which the class owns, starts it, and at the end stops and destroys it.
/// Where the system has nothing that notifies, no signal comes; nothing is reported.
class WZRFRAMEWORK_EXPORT CSystemEventListener : public QThread
{
    Q_OBJECT

public:
    /// The one listener, created on first call as that of the platform, not listening yet.
    static CSystemEventListener* instance();

    /// Stops the thread, waits at most 1000 ms for its end and deletes the listener, if there is
    /// one. A thread that has not ended by then, because the system does not answer or because it
    /// is the caller, is left behind with its listener, which is no longer the instance.
    static void destroy();

    /// Emits userSwitch(value) when `userSwitch` is true, else powerEvent(value).
    void emitSignal(bool userSwitch, bool value);

    /// Emits userLogon() with the argument.
    void logonEvent(bool logon);

    /// Emits sessionClose().
    void endSession();

    /// Starts the thread with inherited priority; nothing happens while it runs. The argument is
    /// not used.
    virtual void startListen(bool unused) = 0;

    /// Stops the thread and waits at most 1000 ms for its end. It can be started again. Called in
    /// the listener's own thread, as by a slot that is connected directly, it only asks the loop to
    /// end, which it does once the slot has returned.
    virtual void stopListen() = 0;

    /// The instance, null without one.
    static CSystemEventListener* m_pIns;

Q_SIGNALS:
    /// The user's session became active (true: login, switch back) or inactive (false: logout,
    /// switch away). Each change is signalled once; changes in quick succession may be merged, the
    /// last signal matches the session's state. The state at the start is no change. No session is
    /// a state too, inactive: a process outside of any hears of its user's first login.
    void userSwitch(bool active);

    /// The system has woken (true) or will sleep (false). On Linux, sleep waits for the receivers:
    /// until direct ones have returned, until those in the main thread and in the listener's own
    /// have been entered, for 2 seconds at most, and until half a second has passed for receivers
    /// in other threads.
    void powerEvent(bool poweredOn);

    /// See logonEvent().
    void userLogon(bool logon);

    /// See endSession().
    void sessionClose();

protected:
    CSystemEventListener();

    /// Asks the thread's notification loop to end, from any thread, without waiting. It may be
    /// called before the loop runs, and again.
    virtual void stopLoop() = 0;

    /// Stops the loop and waits at most 1000 ms; whether the thread has ended. In the thread itself
    /// it does not wait, and the result is false.
    bool endThread();
};

#endif
