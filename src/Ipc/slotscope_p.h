#ifndef IPC_SLOTSCOPE_P_H
#define IPC_SLOTSCOPE_P_H

#include <QObject>
#include <QPointer>

/// Stands in every function that may emit a signal of `owner` while a socket's signal is being
/// delivered. The slots of others may delete the owner: alive() tells, and nothing of the owner
/// may be touched afterwards. While `depth`, a member of the owner, is not 0, a socket may be in
/// the middle of its own code, so that it must not be deleted, only scheduled for it.
class SlotScope
{
public:
    SlotScope(QObject* owner, int& depth)
        : m_owner(owner)
        , m_depth(depth)
    {
        ++m_depth;
    }
    ~SlotScope()
    {
        if (m_owner)
            --m_depth;
    }
    SlotScope(const SlotScope&) = delete;
    SlotScope& operator=(const SlotScope&) = delete;

    bool alive() const { return !m_owner.isNull(); }

private:
    QPointer<QObject> m_owner;
    int& m_depth;
};

#endif
