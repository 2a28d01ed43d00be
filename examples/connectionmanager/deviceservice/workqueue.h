#ifndef DEMO_WORKQUEUE_H
#define DEMO_WORKQUEUE_H

#include <QObject>
#include <QQueue>

#include <functional>

/// Work that uses the device, one piece after another in the order of its arrival.
///
/// A piece of work may wait for the device: the event loop runs meanwhile, so that the service
/// accepts clients, listens to the controller and ends when it is told to. What arrives in such a
/// moment and wants the device, too, must not start inside the work that waits; it is added here
/// and gets its turn. So nothing in this process needs a lock or a thread of its own.
///
/// Belongs to the thread of the event loop. Work that is left when the queue is destroyed is
/// forgotten.
class WorkQueue : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Does the work soon, from the event loop, never inside this call. Work may add work.
    void add(const std::function<void()>& work);

private:
    void doNext();

    QQueue<std::function<void()>> m_work;
    bool m_isWorking = false;
};

#endif
