#include "SystemEvent/csystemeventlistener_linux.h"

#include "SystemEvent/csystemeventlistener_p.h"
#include "SystemEvent/logindwatch_p.h"

CSystemEventListener* createSystemEventListener()
{
    return new CSystemEventListener_linux;
}

void CSystemEventListener_linux::startListen(bool)
{
    start(InheritPriority);
}

void CSystemEventListener_linux::stopListen()
{
    endThread();
}

void CSystemEventListener_linux::stopLoop()
{
    quit();
}

void CSystemEventListener_linux::run()
{
    LogindWatch watch(*this);
    watch.begin();
    exec();
}
