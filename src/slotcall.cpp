#include "slotcall_p.h"

SlotCall::SlotCall(const char* slot, const QObject* receiver)
    : m_slot(slot)
    , m_receiver(const_cast<QObject*>(receiver))
{
}

bool SlotCall::call(QGenericArgument first, QGenericArgument second)
{
    return call(QGenericReturnArgument(), first, second);
}

bool SlotCall::call(QGenericReturnArgument result, QGenericArgument first, QGenericArgument second)
{
    QObject* const receiver = m_receiver.data();
    if (!receiver)
        return false;
    const QMetaObject* const metaObject = receiver->metaObject();
    if (metaObject != m_metaObject)
        find(metaObject, result.data() ? result.name() : nullptr, first.name(), second.name());
    if (m_metaCall) {
        void* arguments[] = {result.data(), first.data(), second.data()};
        m_metaCall(receiver, QMetaObject::InvokeMetaMethod, m_indexInClass, arguments);
        return true;
    }
    // The slot may destroy this object: the method is called through a copy.
    const QMetaMethod method = m_method;
    return method.invoke(receiver, Qt::DirectConnection, result, first, second);
}

void SlotCall::find(const QMetaObject* metaObject, const char* result, const char* first,
                    const char* second)
{
    m_method = QMetaMethod();
    m_metaObject = nullptr;
    m_metaCall = nullptr;
    if (m_slot.isEmpty())
        return;
    QByteArray signature = m_slot + '(' + first;
    if (second && *second)
        signature.append(',').append(second);
    signature.append(')');
    int index = metaObject->indexOfMethod(signature.constData());
    if (index < 0)
        index = metaObject->indexOfMethod(QMetaObject::normalizedSignature(signature.constData()));
    if (index < 0)
        return;
    m_method = metaObject->method(index);
    m_metaObject = metaObject;
    // The arguments fit, because the method was found by their types. The result's type may have
    // another name and still be the same.
    if (result && qstrcmp(result, m_method.typeName()) != 0)
        return;
    const QMetaObject* const owner = m_method.enclosingMetaObject();
    m_metaCall = owner->d.static_metacall;
    m_indexInClass = index - owner->methodOffset();
}
