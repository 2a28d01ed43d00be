#include "SystemEvent/csystemeventlistener.h"

#include "LogTask/logline_p.h"
#include "SystemEvent/csystemeventlistener_p.h"

#include <QDeadlineTimer>

namespace {

constexpr char kLogSource[] = "SystemEvent/csystemeventlistener";
constexpr int kEndLimitMs = 1000;
constexpr int kRepeatMs = 50; // until a loop that had not begun yet is asked again

} // namespace

CSystemEventListener* CSystemEventListener::m_pIns = nullptr;

CSystemEventListener::CSystemEventListener() = default;

CSystemEventListener* CSystemEventListener::instance()
{
    if (!m_pIns)
        m_pIns = createSystemEventListener();
    return m_pIns;
}

void CSystemEventListener::destroy()
{
    CSystemEventListener* const listener = m_pIns;
    if (!listener)
        return;
    const bool ended = listener->endThread();
    m_pIns = nullptr;
    // Deleting a thread that runs would end the process.
    if (ended)
        delete listener;
    else
        logLine(kLogSource, "destroy", "The listener's thread does not end");
}

bool CSystemEventListener::endThread()
{
    // A thread cannot wait for its own end; it goes on as soon as the caller returns to its loop.
    if (QThread::currentThread() == this) {
        stopLoop();
        quit();
        return false;
    }
    const QDeadlineTimer deadline(kEndLimitMs);
    do {
        stopLoop();
        quit();
        if (wait(static_cast<unsigned long>(qMin<qint64>(kRepeatMs, deadline.remainingTime()))))
            return true;
    } while (!deadline.hasExpired());
    return isFinished() || !isRunning();
}

void CSystemEventListener::emitSignal(bool userSwitch, bool value)
{
    if (userSwitch)
        Q_EMIT this->userSwitch(value);
    else
        Q_EMIT powerEvent(value);
}

void CSystemEventListener::logonEvent(bool logon)
{
    Q_EMIT userLogon(logon);
}

void CSystemEventListener::endSession()
{
    Q_EMIT sessionClose();
}
