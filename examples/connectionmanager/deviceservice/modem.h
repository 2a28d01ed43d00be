#ifndef DEMO_MODEM_H
#define DEMO_MODEM_H

#include "DataValue/datavalue.h"
#include "records/records.h"

#include <QObject>
#include <QString>

/// The device as the plug-ins see it: requests in the terms of the business records, and events.
///
/// Every request returns an error number of the modem's command interface (AtError), 0 for
/// success. What it fills in counts on success only, except where a function says otherwise.
/// AtError::NoConnection when the device is away or does not answer.
///
/// Requests wait for the device. They run an event loop meanwhile, so that the rest of the service
/// goes on; therefore they are called as work of the WorkQueue only, never one inside another.
class Modem : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    virtual int equipment(BLEquipmentInfo& info) = 0;

    virtual int networkInfo(BLNetworkInfo& info) = 0;
    virtual int registration(BLNetRegState& state) = 0;
    virtual int cell(BLNetLacAndCellID& cell) = 0;
    virtual int searchNetworks(BLNetworkListCnf& networks) = 0;
    virtual int selectNetwork(const BLNetworkSet& selection) = 0;

    /// Attempts that the device does not tell are -1.
    virtual int pinState(BLPinCheckState& state) = 0;
    virtual int verifyPin(const QString& pin) = 0;
    virtual int unblockPin(const BLPINVerifyPukInfo& unblocking) = 0;
    virtual int changePin(const BLPINChangeInfo& change) = 0;
    virtual int enablePin(const BLPINEnableInfo& enabling) = 0;

    virtual int dial(const BLConnectionDialUp& profile) = 0;
    virtual int hangUp() = 0;
    virtual int connectState(BLConnectState& state) = 0;
    /// The duration in seconds. Counters that the device does not have are -1.
    virtual int statistics(BLConnectionStatistics& statistics) = 0;

    virtual int messages(BLSmsGetListCnf& list) = 0;
    virtual int messageStorage(BLSmsStorageState& state) = 0;
    /// `ref` is BLSmsListItem::nRef.
    virtual int deleteMessage(int ref) = 0;

    virtual int phonebook(BLPbInitListCnf& list) = 0;
    virtual int phonebookStorage(BLPbGetStorageInfoCnf& state) = 0;
    virtual int addPhonebookEntry(const BLPbItem& entry) = 0;

    /// Sends the text; the network's answer, or that there was none in time, comes as
    /// ModemEvent::Ussd. One dialogue at a time: AtError::OperationNotAllowed until then.
    virtual int sendUssd(const BLUssdSendCmd& command) = 0;

Q_SIGNALS:
    /// The device reports something unasked. `event` is one of ModemEvent, `text` what the device
    /// said, `data` what it means; `data` is valid during the emission only. Comes as work of the
    /// WorkQueue, so that slots may make requests; or at the end of a request, when that has
    /// brought the event about.
    void reported(const QString& event, QString text, CDataValue* data);
};

/// What a modem reports. The plug-ins register for these with registererUnsolicitedMessage().
namespace ModemEvent {

// The signal or the registration has changed; the strength now, 0 to 31, or 99 for unknown.
constexpr char Signal[] = "MODEM_SIGNAL";
constexpr char Connection[] = "MODEM_CONNECTION";  // the new state, a number of Connection::Code
constexpr char NewMessage[] = "MODEM_NEW_MESSAGE"; // BLSmsListItem
constexpr char Ussd[] = "MODEM_USSD";              // BLUssdReport

} // namespace ModemEvent

#endif
