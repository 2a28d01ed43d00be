#include "MessageCenter/messagecenter.h"

#include "DataValue/valueaccess_p.h"
#include "LogTask/logline_p.h"
#include "slotcall_p.h"

#include <QByteArray>
#include <QHash>
#include <QPointer>
#include <QString>
#include <QVector>

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

constexpr char kLogSource[] = "MessageCenter/messagecenter";

using Registration = std::shared_ptr<SlotCall>;
using Receivers = QVector<Registration>; // in the order of registration

MessageCenter* g_center = nullptr;

constexpr char kByteOrderMark[] = "\xEF\xBB\xBF";

Registration makeRegistration(const char* messageID, const char* slot, const QObject* receiver)
{
    requireNotNull(messageID);
    requireNotNull(slot);
    requireNotNull(receiver);
    return std::make_shared<SlotCall>(slot, receiver);
}

/// The key of an identifier, for a look-up only: it borrows the text.
QByteArray borrowedKey(const char* messageID)
{
    return QByteArray::fromRawData(messageID, messageID ? int(std::strlen(messageID)) : 0);
}

/// Identifiers from `const char*` are Latin-1 texts, those in envelopes are UTF-8.
QByteArray deviceKey(const char* messageID)
{
    return QString::fromLatin1(messageID).toUtf8();
}

/// The key of the envelope's identifier, for a look-up only: it borrows the text where it can.
QByteArray borrowedDeviceKey(CDataValue& envelope)
{
    const CDataValue& type = envelope.mapGet("IPCMSG_TYPE");
    const char* const text = ValueAccess::text(type);
    if (!text || *text == kByteOrderMark[0]) // a mark is no part of the text
        return type.asQString().toUtf8();
    return borrowedKey(text);
}

QGenericArgument asArgument(CDataValue* const& value)
{
    return QGenericArgument("CDataValue*", &value);
}

void logUnknownIdentifier(const char* function)
{
    logLine(kLogSource, function, "No message id found!!");
}

/// Forgets receivers that went without unregistering: their address may belong to a new object.
void removeGone(Receivers& receivers)
{
    const auto isGone = [](const Registration& item) { return !item->receiver(); };
    receivers.erase(std::remove_if(receivers.begin(), receivers.end(), isGone), receivers.end());
}

void append(Receivers& receivers, const Registration& registration)
{
    removeGone(receivers);
    receivers.append(registration);
}

void removeFirst(Receivers& receivers, const QObject* receiver)
{
    removeGone(receivers);
    const auto isWanted = [receiver](const Registration& i) { return i->receiver() == receiver; };
    const auto item = std::find_if(receivers.begin(), receivers.end(), isWanted);
    if (item == receivers.end())
        return;
    (*item)->cancel();
    receivers.erase(item);
}

// By value: a slot may change the registry or release the center while the list is walked.
void callAll(const Receivers receivers, CDataValue* value)
{
    for (const Registration& item : receivers)
        item->call(asArgument(value));
}

/// Cancels, so that a walk in progress calls none of them any more.
template<typename Map>
void cancelAll(Map& map)
{
    for (const Receivers& receivers : std::as_const(map)) {
        for (const Registration& item : receivers)
            item->cancel();
    }
    map.clear();
}

} // namespace

struct MessageCenter::Registries
{
    QHash<QByteArray, Registration> services;
    QHash<QByteArray, Receivers> modules;
    QHash<QByteArray, Receivers> devices; // by UTF-8
    QPointer<IPCCalls> deviceCalls;
};

MessageCenter::MessageCenter()
    : m_registries(std::make_unique<Registries>())
{
}

MessageCenter::~MessageCenter()
{
    resetModuleMessageMap();
    resetDeviceMessageMap();
}

MessageCenter* MessageCenter::defaultCenter()
{
    if (!g_center)
        g_center = new MessageCenter;
    return g_center;
}

void MessageCenter::release()
{
    delete std::exchange(g_center, nullptr);
}

int MessageCenter::registerModuleMessage(const char* messageID, const char* slot,
                                         const QObject* receiver)
{
    const Registration registration = makeRegistration(messageID, slot, receiver);
    append(m_registries->modules[QByteArray(messageID)], registration);
    return 0;
}

int MessageCenter::registerDeviceMessage(const char* messageID, const char* slot,
                                         const QObject* receiver)
{
    const Registration registration = makeRegistration(messageID, slot, receiver);
    append(m_registries->devices[deviceKey(messageID)], registration);
    return 0;
}

int MessageCenter::registerModuleServiceMessage(const char* messageID, const char* slot,
                                                const QObject* receiver)
{
    m_registries->services[QByteArray(messageID)] = makeRegistration(messageID, slot, receiver);
    return 0;
}

int MessageCenter::unregisterModuleMessage(const char* messageID, const QObject* receiver)
{
    const auto found = m_registries->modules.find(borrowedKey(messageID));
    if (found != m_registries->modules.end())
        removeFirst(*found, receiver);
    return 0;
}

int MessageCenter::unregisterDeviceMessage(const char* messageID, const QObject* receiver)
{
    const auto found = m_registries->devices.find(deviceKey(messageID));
    if (found != m_registries->devices.end())
        removeFirst(*found, receiver);
    return 0;
}

int MessageCenter::unregisterModuleServiceMessage(const char* messageID)
{
    m_registries->services.remove(borrowedKey(messageID));
    return 0;
}

int MessageCenter::postModuleMessage(const char* messageID, const CDataValue* data)
{
    requireNotNull(messageID);
    const auto found = m_registries->modules.constFind(borrowedKey(messageID));
    if (found == m_registries->modules.constEnd()) {
        logUnknownIdentifier("postModuleMessage");
        return -1;
    }
    callAll(*found, const_cast<CDataValue*>(data));
    return 0;
}

CDataValue MessageCenter::InvokeModuleServiceByMessage(const char* messageID,
                                                       const CDataValue* data)
{
    CDataValue result;
    const Registration provider = m_registries->services.value(borrowedKey(messageID));
    if (provider)
        provider->call(QGenericReturnArgument("CDataValue", &result),
                       asArgument(const_cast<CDataValue*>(data)));
    else
        logUnknownIdentifier("InvokeModuleServiceByMessage");
    return result;
}

int MessageCenter::postDeviceMessage(const char* messageID, const CDataValue* data,
                                     const char* szSendID)
{
    requireNotNull(messageID);
    Q_EMIT sigDeviceMessageSend(messageID, data, szSendID);
    return 0;
}

void MessageCenter::setDeviceCalls(IPCCalls* calls)
{
    m_registries->deviceCalls = calls;
}

IPCCall MessageCenter::callDevice(const char* messageID, const CDataValue* data, int timeoutMs)
{
    requireNotNull(messageID);
    IPCCalls* const calls = m_registries->deviceCalls;
    return calls ? calls->call(messageID, data, timeoutMs) : IPCCall(IPCAnswer::NotSent);
}

void MessageCenter::resetModuleMessageMap()
{
    cancelAll(m_registries->modules);
    m_registries->services.clear();
}

void MessageCenter::resetDeviceMessageMap()
{
    cancelAll(m_registries->devices);
}

void MessageCenter::messageReceived(CDataValue* datavalue)
{
    const auto found =
        m_registries->devices.constFind(datavalue ? borrowedDeviceKey(*datavalue) : QByteArray());
    if (found == m_registries->devices.constEnd())
        logUnknownIdentifier("messageReceived");
    else
        callAll(*found, datavalue);
}
