#ifndef DEMO_SIMCOMMANDS_H
#define DEMO_SIMCOMMANDS_H

#include "modemsimulator/commandfamily.h"

/// The PIN and the PUK. Three wrong PINs, for whatever purpose, ask for the PUK, which sets a new
/// PIN; ten wrong PUKs block the SIM for good.
class SimCommands : public CommandFamily
{
public:
    explicit SimCommands(ModemCore& core);

private:
    AtResult pin(const AtCommand& command);
    AtResult attempts(const AtCommand& command);
    AtResult lock(const AtCommand& command);
    AtResult password(const AtCommand& command);
    bool moveSim(const QString& where);

    AtResult enter(const AtCommand& command);
    AtResult unblock(const QByteArray& puk, const QByteArray& newPin);
    int tryPin(const QByteArray& pin);
};

#endif
