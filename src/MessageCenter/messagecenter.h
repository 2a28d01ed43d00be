#ifndef MESSAGECENTER_MESSAGECENTER_H
#define MESSAGECENTER_MESSAGECENTER_H

#include "DataValue/datavalue.h"
#include "Ipc/ipccalls.h"
#include "wzrframework_export.h"

#include <QObject>

#include <memory>

/// The one router of a process: modules register slots under message identifiers, the center
/// calls them by name.
///
/// There are three registries. *Module messages* have any number of receivers, called with what a
/// module of this process posts. *Module service messages* have one provider each, which returns
/// a value. *Device messages* have any number of receivers, called with envelopes that arrive
/// from another process.
///
///     MessageCenter* center = MessageCenter::defaultCenter();
///     center->registerModuleMessage("UI_LANGUAGE_CHANGED", "onLanguage", this);
///     CDataValue language("en");
///     // Calls onLanguage(CDataValue*) before it returns:
///     center->postModuleMessage("UI_LANGUAGE_CHANGED", &language);
///
/// To reach the device service, a process connects sigDeviceMessageSend() to
/// IPCClient::messageSend() and IPCClient::sigMessageReceived() to messageReceived(). Where modules
/// are to make calls with one end each (callDevice()), it puts an IPCCalls between:
///
///     IPCCalls calls(&client, "dashboard");
///     center->setDeviceCalls(&calls);
///     connect(&calls, &IPCCalls::sigMessageReceived, center, &MessageCenter::messageReceived);
///
/// **Slots.** A slot is given as its bare name, without parameters. It is found by the rules of
/// QMetaObject::invokeMethod() for the argument types that each operation names: slots of base
/// classes, private ones, signals and Q_INVOKABLE functions count, and so does the shorter form
/// of a slot with default arguments. A name that does not fit is passed over in silence.
///
/// **Calls** are direct and synchronous, whatever thread the receiver lives in. A slot may post
/// again. Registering and unregistering from inside a slot is safe: whoever is added is called
/// from the next post on, whoever is removed is not called any more.
///
/// **Threads.** Main thread only; no locks.
///
/// **Ownership.** Receivers and values stay their owners'. A receiver unregisters before it is
/// destroyed; one that forgets is passed over from then on. Receivers never delete the value that
/// they are called with, and copy what they keep.
///
/// **Failure.** A null identifier, slot name or receiver in a registration, and a null identifier
/// in a post or call, throw std::bad_alloc: that is meant.
class WZRFRAMEWORK_EXPORT MessageCenter : public QObject
{
    Q_OBJECT

public:
    /// The center of this process, made at the first call.
    static MessageCenter* defaultCenter();
    /// Deletes the center with all registrations and connections. A later defaultCenter() makes a
    /// new, empty one. Does nothing when there is none.
    static void release();

    /// Adds `receiver` as the last one of a module message: slot(CDataValue*). There is no check
    /// for duplicates: whoever registers twice is called twice. Returns 0.
    int registerModuleMessage(const char* messageID, const char* slot, const QObject* receiver);
    /// Adds `receiver` as the last one of a device message: slot(CDataValue*). Returns 0.
    int registerDeviceMessage(const char* messageID, const char* slot, const QObject* receiver);
    /// Makes `receiver` the only provider of a service, in place of an earlier one:
    /// CDataValue slot(CDataValue*). Returns 0.
    int registerModuleServiceMessage(const char* messageID, const char* slot,
                                     const QObject* receiver);

    /// Removes the first registration of `receiver`; further ones stay. The identifier itself
    /// stays known, even without receivers. Returns 0, also when there was nothing to remove.
    int unregisterModuleMessage(const char* messageID, const QObject* receiver);
    /// The same for device messages.
    int unregisterDeviceMessage(const char* messageID, const QObject* receiver);
    /// Removes the provider of a service. Returns 0, also when there was none.
    int unregisterModuleServiceMessage(const char* messageID);

    /// Calls every receiver of the identifier with `data`, in the order of registration. It is
    /// the caller's own object: what a receiver changes, the caller and the next receiver see.
    /// `data` may be null. Returns 0, or -1 with a line in the log when the identifier is unknown.
    int postModuleMessage(const char* messageID, const CDataValue* data);
    /// Calls the provider and returns its result; a null value when there is no provider (with a
    /// line in the log) or when its slot does not fit.
    CDataValue InvokeModuleServiceByMessage(const char* messageID, const CDataValue* data);
    /// Emits sigDeviceMessageSend(). Returns 0, whether or not anybody listens.
    int postDeviceMessage(const char* messageID, const CDataValue* data, const char* szSendID);

    /// The calls that callDevice() makes: not owned, null at first.
    void setDeviceCalls(IPCCalls* calls);
    /// Asks the device service and gets exactly one end of it: see IPCCalls. Ends as not sent while
    /// there are no calls to make it by. What is an answer is not given to the receivers of device
    /// messages.
    IPCCall callDevice(const char* messageID, const CDataValue* data = nullptr,
                       int timeoutMs = IPCCalls::kDefaultTimeoutMs);

    /// Removes all module messages and all module service messages.
    void resetModuleMessageMap();
    /// Removes all device messages.
    void resetDeviceMessageMap();

Q_SIGNALS:
    /// A message for the device service. The arguments are valid during the emission only.
    void sigDeviceMessageSend(const char* messageID, const CDataValue* data,
                              const char* szSendID = nullptr);

public Q_SLOTS:
    /// Calls every receiver registered for the envelope's "IPCMSG_TYPE" with the whole envelope,
    /// in the order of registration. An identifier that is unknown or missing leaves a line in
    /// the log.
    void messageReceived(CDataValue* datavalue);

private:
    MessageCenter();
    ~MessageCenter() override;

    struct Registries;
    std::unique_ptr<Registries> m_registries;
};

#endif
