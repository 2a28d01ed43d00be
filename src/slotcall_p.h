#ifndef SLOTCALL_P_H
#define SLOTCALL_P_H

#include <QByteArray>
#include <QMetaMethod>
#include <QObject>
#include <QPointer>

#include <new>

/// Throws std::bad_alloc for a null pointer where one is required; the interface promises that.
inline void requireNotNull(const void* pointer)
{
    if (!pointer)
        throw std::bad_alloc();
}

/// One registered slot: found by its bare name at the first call, then called at the cost of a
/// function call.
///
/// It is found exactly as QMetaObject::invokeMethod() finds it, from the type names of the
/// arguments and with the same check of the return type. Names are not looked up again as long as
/// the receiver has the same meta-object; it has another one while it is being constructed. All
/// calls of one object use the same types of arguments and result.
///
/// A receiver that was destroyed is passed over.
class SlotCall
{
public:
    SlotCall(const char* slot, const QObject* receiver);

    const QByteArray& slot() const { return m_slot; }
    /// Null once the receiver was destroyed or cancel() was called.
    QObject* receiver() const { return m_receiver.data(); }
    /// Makes all further calls do nothing.
    void cancel() { m_receiver.clear(); }

    /// Calls the slot in this thread. False, without a call, when there is no such slot or it
    /// returns something else than `result` asks for.
    bool call(QGenericArgument first, QGenericArgument second = QGenericArgument());
    bool call(QGenericReturnArgument result, QGenericArgument first,
              QGenericArgument second = QGenericArgument());

private:
    void find(const QMetaObject* metaObject, const char* result, const char* first,
              const char* second);

    QByteArray m_slot;
    QPointer<QObject> m_receiver;
    const QMetaObject* m_metaObject = nullptr; // the receiver's when m_method was found
    QMetaMethod m_method;

    // The function that QMetaMethod::invoke() would call once its checks have passed. They have, as
    // m_method was found by the types of the arguments. Null when the type of the result has
    // another name than the slot's: then invoke() decides at each call whether the two are the
    // same.
    void (*m_metaCall)(QObject*, QMetaObject::Call, int, void**) = nullptr;
    int m_indexInClass = 0;
};

#endif
