#ifndef DEMO_PHONEBOOKCOMMANDS_H
#define DEMO_PHONEBOOKCOMMANDS_H

#include "modemsimulator/commandfamily.h"

/// The phonebook of the SIM. Names are texts of the chosen character set, numbers are not.
class PhonebookCommands : public CommandFamily
{
public:
    explicit PhonebookCommands(ModemCore& core);

private:
    AtResult storage(const AtCommand& command);
    AtResult read(const AtCommand& command);
    AtResult write(const AtCommand& command);

    AtResult readRange(const AtCommand& command);
    AtResult store(const AtCommand& command);
    bool remove(int index);
    bool isPlace(int index) const { return index >= 1 && index <= m_core.state.contactRoom; }
};

#endif
