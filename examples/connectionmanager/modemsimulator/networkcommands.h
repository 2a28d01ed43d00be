#ifndef DEMO_NETWORKCOMMANDS_H
#define DEMO_NETWORKCOMMANDS_H

#include "modemsimulator/commandfamily.h"

/// The signal, the registration and the choice of the network. Reports changes of the registration
/// ("+CREG", "+CGREG") and of the indicators ("+CIEV"), once these were asked for.
class NetworkCommands : public CommandFamily
{
public:
    explicit NetworkCommands(ModemCore& core);
    void reset() override;
    void registrationChanged() override;

    /// 0 to 31; other numbers count as unknown, 99.
    void setSignal(int rssi);

private:
    AtResult signalQuality(const AtCommand& command);
    AtResult circuitRegistration(const AtCommand& command);
    AtResult packetRegistration(const AtCommand& command);
    AtResult operators(const AtCommand& command);
    AtResult indicators(const AtCommand& command);
    AtResult events(const AtCommand& command);
    bool signalWord(const QString& arguments);
    bool registrationWord(const QString& arguments);

    AtResult registration(const AtCommand& command, int& form);
    QByteArray registrationText(int form) const;
    void answerOperator(const AtCommand& command);
    QByteArray operatorList() const;
    AtResult selectOperator(const AtCommand& command);
    const OperatorState* findOperator(int format, const QByteArray& name) const;
    void reportIndicators();

    struct Indicators
    {
        int signal = 0;
        int service = 0;
        int roaming = 0;
    };
    Indicators currentIndicators() const;

    int m_circuitForm = 0; // "+CREG=n"
    int m_packetForm = 0;  // "+CGREG=n"
    int m_operatorFormat = 0;
    int m_events = 0; // <ind> of "+CMER"
    QByteArray m_reportedRegistration;
    Indicators m_reported;
};

#endif
