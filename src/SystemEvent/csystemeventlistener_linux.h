#ifndef SYSTEMEVENT_CSYSTEMEVENTLISTENER_LINUX_H
#define SYSTEMEVENT_CSYSTEMEVENTLISTENER_LINUX_H

#include "SystemEvent/csystemeventlistener.h"

/// The listener on logind, the login manager: LogindWatch does the work, in this thread.
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
