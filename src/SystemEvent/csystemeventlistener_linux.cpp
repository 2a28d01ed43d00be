#include "SystemEvent/csystemeventlistener_linux.h"

#include "SystemEvent/csystemeventlistener_p.h"
#include "SystemEvent/logindmodule_p.h"

#include <QObject>

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
    const std::unique_ptr<QObject> watch = watchLogind(*this);
    exec();
}
