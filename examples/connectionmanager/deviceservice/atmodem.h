#ifndef DEMO_ATMODEM_H
#define DEMO_ATMODEM_H

#include "deviceservice/atchannel.h"
#include "deviceservice/modem.h"

#include <QElapsedTimer>
#include <QList>
#include <QTimer>

/// A modem that is driven by AT commands (3GPP TS 27.007, and TS 27.005 for messages).
///
/// Whenever the channel is open anew, and after a PIN was accepted, the modem is told how to
/// behave: no echo, errors by number, texts in UCS2, messages as text, reports of messages,
/// registration, signal and contexts. A setting that it refuses is logged and lived without.
///
/// Errors: what the modem says, by number; AtError::NoConnection when the channel has no modem or
/// gets no answer; AtError::Unknown for an answer that cannot be understood;
/// AtError::IncorrectParameters for what must not be sent, such as a PIN that is none: it costs no
/// attempt, and nothing that a client sends can become a command of its own.
///
/// The connection is the packet context of number kContext. The modem counts no bytes for it; how
/// long it lasts is counted here, from the moment on at which it was seen.
class AtModem : public Modem
{
    Q_OBJECT

public:
    static constexpr int kContext = 1;

    /// Channel and queue must outlive the modem.
    AtModem(AtChannel& channel, WorkQueue& queue, QObject* parent = nullptr);

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

Q_SIGNALS:
    /// The modem has its settings, for the first time or again. Comes as work of the queue.
    void ready();

private:
    AtReply ask(const QByteArray& command, const QByteArray& prefix, AtWait wait = AtWait::Short);
    int tell(const QByteArray& command, AtWait wait = AtWait::Short);
    // `read` makes an optional value of the one line of information.
    template<class Value, class Read>
    int askFor(const QByteArray& command, const QByteArray& prefix, Value& value, Read read,
               AtWait wait = AtWait::Short);
    int identity(const QByteArray& command, QString& text);
    static int answerNotUnderstood(const QByteArray& command, const QByteArray& line);

    void initialise();
    void applySettings();
    void lineLost(const QString& reason);
    void hear(const QByteArray& line);
    void handleLater();
    void handleReports();
    void handleSignal();
    void handleReport(const QByteArray& line);
    void messageArrived(const QByteArray& line);
    void ussdAnswered(const QByteArray& line);
    void reportUssd(BLUssdReport report, const QString& text);

    int pinCode(int& state);
    int unlocked(int error);
    int contextState(bool& isActive);
    void setConnected(bool isConnected, const QString& text);

    AtChannel& m_channel;
    WorkQueue& m_queue;

    QByteArray m_signalReport;   // the last one that is not handled yet
    QList<QByteArray> m_reports; // others
    bool m_isHandlingAdded = false;
    int m_signalIndicator = 0; // its number in "+CIEV", 0 for unknown

    QTimer m_ussdTimer; // runs while the network's answer is expected
    QString m_ussdClient;

    bool m_isConnected = false;
    QElapsedTimer m_connectedFor;
};

template<class Value, class Read>
int AtModem::askFor(const QByteArray& command, const QByteArray& prefix, Value& value, Read read,
                    AtWait wait)
{
    const AtReply reply = ask(command, prefix, wait);
    if (reply.error != 0)
        return reply.error;
    const auto result = read(reply.lines.value(0));
    if (!result)
        return answerNotUnderstood(command, reply.lines.value(0));
    value = *result;
    return 0;
}

#endif
