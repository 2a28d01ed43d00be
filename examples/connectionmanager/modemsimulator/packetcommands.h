#ifndef DEMO_PACKETCOMMANDS_H
#define DEMO_PACKETCOMMANDS_H

#include "modemsimulator/commandfamily.h"

#include <set>

/// The packet contexts, which are the data connections. An active one ends with the registration or
/// the SIM; that is reported as "+CGEV", once this was asked for.
class PacketCommands : public CommandFamily
{
public:
    explicit PacketCommands(ModemCore& core);
    void reset() override { m_reporting = 0; }
    void simChanged() override;
    void registrationChanged() override;

private:
    AtResult define(const AtCommand& command);
    AtResult activate(const AtCommand& command);
    AtResult reporting(const AtCommand& command);
    AtResult address(const AtCommand& command);
    bool drop(const QString& arguments);

    AtResult defineOne(const AtCommand& command);
    AtResult setActive(const AtCommand& command);
    const ContextState* find(int cid) const;
    void deactivateAll(const QByteArray& reason);

    int m_reporting = 0; // <mode> of "+CGEREP"
    std::set<int> m_active;
};

#endif
