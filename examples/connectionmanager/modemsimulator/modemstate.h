#ifndef DEMO_MODEMSTATE_H
#define DEMO_MODEMSTATE_H

#include <QByteArray>
#include <QString>

#include <vector>

/// What the simulated modem, its SIM and its network are and keep. README.md describes the form
/// that this has in the state file.
struct EquipmentState
{
    QString manufacturer = QStringLiteral("Example Devices");
    QString model = QStringLiteral("Simulated Modem");
    QString revision = QStringLiteral("1.0");
    QString serialNumber = QStringLiteral("490154203237518");
};

struct SimState
{
    bool inserted = true;
    QString iccid = QStringLiteral("8999901123456789012");
    QString imsi = QStringLiteral("001010123456789");
    QString number = QStringLiteral("+15550100");
    QString pin = QStringLiteral("1234");
    QString puk = QStringLiteral("12345678");
    bool pinAsked = true; ///< whether the SIM asks for the PIN at power-on
    int pinAttempts = 3;  ///< 0: the PUK is needed
    int pukAttempts = 10; ///< 0: the SIM is blocked for good
};

struct OperatorState
{
    QString numeric;
    QString longName;
    QString shortName;
    bool forbidden = false;
    int technology = 0; ///< <AcT> of "+COPS"
};

struct NetworkState
{
    int signal = 21;                               ///< 0 to 31, or 99 for unknown
    int mode = 0;                                  ///< 0 automatic, 1 manual, 2 none
    int registration = -1;                         ///< <stat> of "+CREG"; -1: as it follows
    QString selected = QStringLiteral("00101");    ///< `numeric` of the operator in use
    QString area = QStringLiteral("1A2B");         ///< hexadecimal
    QString cell = QStringLiteral("01C3D4E");      ///< hexadecimal
    QString address = QStringLiteral("10.64.0.1"); ///< of an active context
    std::vector<OperatorState> operators;          ///< the first one is at home here
};

struct ContextState
{
    int cid = 1;
    QString type = QStringLiteral("IP");
    QString apn;
};

struct MessageState
{
    int index = 1;  ///< its place on the SIM, from 1
    QString status; ///< as "+CMGL" says it: "REC UNREAD"
    QString number;
    QString time; ///< as "+CMGL" says it; empty for a message that was sent
    QString text;
};

struct ContactState
{
    int index = 1; ///< its place on the SIM, from 1
    QString number;
    QString name;
};

struct UssdState
{
    QString request; ///< "*100#"; a later step of a dialogue: "*101#>1"
    int type = 0;    ///< <m> of "+CUSD"; 1: the dialogue goes on
    QString text;
};

struct ModemState
{
    EquipmentState equipment;
    SimState sim;
    NetworkState network;
    std::vector<ContextState> contexts;
    int messageRoom = 20;
    int messagesArrived = 0;            ///< ever; gives a message its time
    std::vector<MessageState> messages; ///< by index
    int contactRoom = 10;
    std::vector<ContactState> contacts; ///< by index
    std::vector<UssdState> ussd;

    /// The modem of the demo: a locked SIM with messages and contacts, and three networks.
    static ModemState makeDefault();
    /// A message from the network at the first free place, the time of which follows from the
    /// number of messages before it. Returns its index, 0 when there is no room.
    int addReceived(const QString& number, const QString& text);
    /// The first free place among messages or contacts; 0 when there is none.
    int freeMessageIndex() const;
    int freeContactIndex() const;
    /// Puts the message or contact at the place that its index names, which must be free.
    void insert(const MessageState& message);
    void insert(const ContactState& contact);
};

#endif
