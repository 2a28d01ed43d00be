#ifndef SYSTEMEVENT_CSYSTEMEVENTLISTENER_LINUX_H
#define SYSTEMEVENT_CSYSTEMEVENTLISTENER_LINUX_H

#include "SystemEvent/csystemeventlistener.h"

/// The listener on logind, the login manager: LogindWatch does the work, in this thread. It comes
/// from a module that is loaded when the thread starts; without the module there are no events.
class CSystemEventListener_linux final : public CSystemEventListener
{
public:
    void startListen(bool unused) override;
    void stopListen() override;

protected:
    void run() override;
    void stopLoop() override;
};

#endif
