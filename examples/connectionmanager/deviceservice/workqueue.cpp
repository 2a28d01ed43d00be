#include "deviceservice/workqueue.h"

void WorkQueue::add(const std::function<void()>& work)
{
    m_work.enqueue(work);
    QMetaObject::invokeMethod(this, &WorkQueue::doNext, Qt::QueuedConnection);
}

// There is one call of this for each piece of work. A call that comes while a piece waits for the
// device leaves its own to the loop of the call that is working.
void WorkQueue::doNext()
{
    if (m_isWorking || m_work.isEmpty())
        return;
    m_isWorking = true;
    m_work.dequeue()();
    m_isWorking = false;
    if (!m_work.isEmpty())
        QMetaObject::invokeMethod(this, &WorkQueue::doNext, Qt::QueuedConnection);
}
