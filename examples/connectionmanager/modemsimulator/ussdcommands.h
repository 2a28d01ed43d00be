#ifndef DEMO_USSDCOMMANDS_H
#define DEMO_USSDCOMMANDS_H

#include "modemsimulator/commandfamily.h"

/// Dialogues with the network. A request is answered at once with "OK"; what the network says
/// follows as "+CUSD".
class UssdCommands : public CommandFamily
{
public:
    explicit UssdCommands(ModemCore& core);
    void reset() override { m_reporting = 0; }
    void registrationChanged() override;

private:
    AtResult ussd(const AtCommand& command);
    bool ussdWord(const QString& arguments);

    void ask(const QString& text);
    const UssdState* find(const QString& request) const;
    void report(int type, const QString& text);

    int m_reporting = 0; // <n> of "+CUSD"
    QString m_dialogue;  // the requests so far, "*101#>1"; empty: none is open
};

#endif
