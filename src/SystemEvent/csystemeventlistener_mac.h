#ifndef SYSTEMEVENT_CSYSTEMEVENTLISTENER_MAC_H
#define SYSTEMEVENT_CSYSTEMEVENTLISTENER_MAC_H

#include "SystemEvent/csystemeventlistener.h"

/// The listener on the system's power notifications and user-session events. It has no members: the
/// notifications' state is the process's, since their callbacks get no object.
class CSystemEventListener_mac final : public CSystemEventListener
{
public:
    void startListen(bool unused) override;
    void stopListen() override;

protected:
    void run() override;
    void stopLoop() override;
};

#endif
