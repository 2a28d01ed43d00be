#ifndef DEMO_SIMULATEDMODEM_H
#define DEMO_SIMULATEDMODEM_H

#include "deviceservice/modem.h"
#include "deviceservice/simulatedsim.h"

#include <QElapsedTimer>
#include <QTimer>

/// A modem that lives in memory and behaves like one with a locked SIM: the PIN is "1234", three
/// wrong ones ask for the PUK, "12345678"; ten wrong PUKs block the SIM for good. Without the PIN
/// there is the device's identity and nothing else.
class SimulatedModem : public Modem
{
    Q_OBJECT

public:
    explicit SimulatedModem(QObject* parent = nullptr);

    /// Lets the signal change by itself every so many milliseconds; 0 stops that.
    void changeSignalEvery(int milliseconds);
    /// Changes the signal now: 0 to 31, or 99 for unknown; other numbers count as 99.
    void setSignal(int rssi);

    /// Lets a message arrive.
    void receiveMessage(const QString& number, const QString& text);

    int equipment(BLEquipmentInfo& info) override;
    int networkInfo(BLNetworkInfo& info) override;
    int registration(BLNetRegState& state) override;
    int cell(BLNetLacAndCellID& cell) override;
    int searchNetworks(BLNetworkListCnf& networks) override;
    int selectNetwork(const BLNetworkSet& selection) override;
    int pinState(BLPinCheckState& state) override;
    int verifyPin(const QString& pin) override;
    int unblockPin(const BLPINVerifyPukInfo& unblocking) override;
    int changePin(const BLPINChangeInfo& change) override;
    int enablePin(const BLPINEnableInfo& enabling) override;
    int dial(const BLConnectionDialUp& profile) override;
    int hangUp() override;
    int connectState(BLConnectState& state) override;
    int statistics(BLConnectionStatistics& statistics) override;
    int messages(BLSmsGetListCnf& list) override;
    int messageStorage(BLSmsStorageState& state) override;
    int deleteMessage(int ref) override;
    int phonebook(BLPbInitListCnf& list) override;
    int phonebookStorage(BLPbGetStorageInfoCnf& state) override;
    int addPhonebookEntry(const BLPbItem& entry) override;
    int sendUssd(const BLUssdSendCmd& command) override;

private:
    int simError() const;
    int tryPin(const QString& pin);
    void reportConnection();

    QTimer m_signalTimer;
    int m_rssi = 21;
    QString m_operator; // numeric code of the network in use
    int m_selectionMode = 0;

    QString m_pin = QStringLiteral("1234");
    QString m_puk = QStringLiteral("12345678");
    bool m_pinAsked = true; // whether the SIM asks for the PIN at power-on
    int m_pinState;
    int m_pinAttempts = 3;
    int m_pukAttempts = 10;

    bool m_connected = false;
    QElapsedTimer m_connectedFor;

    SimulatedSim m_sim;
};

#endif
