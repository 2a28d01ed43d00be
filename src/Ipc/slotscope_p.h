#ifndef IPC_SLOTSCOPE_P_H
#define IPC_SLOTSCOPE_P_H

#include <QObject>
#include <QPointer>

#include <memory>
#include <utility>
#include <vector>

/// How many slots of an owner's sockets are running, and what waits for their end. While there are
/// any, a socket may be in the middle of its own code, so that it must not be deleted. The scopes
/// share it with the owner, because a slot may delete the owner.
class RunningSlots
{
public:
    bool any() const { return m_count > 0; }

    /// Deletes a socket or listener, at once when no slot runs. deleteLater() alone would not do:
    /// an event loop that a slot runs deletes what was released in it, while the slot still runs.
    void release(QObject* object)
    {
        object->setParent(nullptr);
        if (any())
            m_released.push_back(object);
        else
            delete object;
    }

private:
    friend class SlotScope;

    void begin() { ++m_count; }
    void end()
    {
        if (--m_count > 0)
            return;
        for (QObject* object : std::exchange(m_released, {}))
            object->deleteLater();
    }

    int m_count = 0;
    std::vector<QObject*> m_released;
};

/// Stands in every function that may emit a signal of `owner` while a socket's signal is being
/// delivered. The slots of others may delete the owner: alive() tells, and nothing of the owner
/// may be touched afterwards.
class SlotScope
{
public:
    SlotScope(QObject* owner, std::shared_ptr<RunningSlots> running)
        : m_owner(owner)
        , m_running(std::move(running))
    {
        m_running->begin();
    }
    ~SlotScope() { m_running->end(); }
    SlotScope(const SlotScope&) = delete;
    SlotScope& operator=(const SlotScope&) = delete;

    bool alive() const { return !m_owner.isNull(); }

private:
    QPointer<QObject> m_owner;
    std::shared_ptr<RunningSlots> m_running;
};

#endif
