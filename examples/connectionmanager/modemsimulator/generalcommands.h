#ifndef DEMO_GENERALCOMMANDS_H
#define DEMO_GENERALCOMMANDS_H

#include "modemsimulator/commandfamily.h"

/// The line itself (E, Z, &F, +CMEE, +CSCS) and who the device and its SIM are.
class GeneralCommands : public CommandFamily
{
public:
    explicit GeneralCommands(ModemCore& core);
    void reset() override;

private:
    AtResult echo(const AtCommand& command);
    AtResult restart(const AtCommand& command);
    AtResult errorForm(const AtCommand& command);
    AtResult charset(const AtCommand& command);
    AtResult manufacturer(const AtCommand& command);
    AtResult model(const AtCommand& command);
    AtResult revision(const AtCommand& command);
    AtResult serialNumber(const AtCommand& command);
    AtResult imsi(const AtCommand& command);
    AtResult ownNumber(const AtCommand& command);
    AtResult iccid(const AtCommand& command);

    AtResult identity(const AtCommand& command, const QByteArray& text, int error = 0);
    bool report(const QString& line);
};

#endif
