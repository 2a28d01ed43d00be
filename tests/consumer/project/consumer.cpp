// Uses every installed family of headers through the paths that users write.

#include "BusinessBase/businesspluginbase.h"
#include "DataValue/datavalue.h"
#include "DataValue/xml/cxmlconvert.h"
#include "Ipc/ipcclient.h"
#include "Ipc/ipcserver.h"
#include "LogTask/clog.h"
#include "MessageCenter/messagecenter.h"
#include "PersoManager/persomanager.h"
#include "SystemEvent/csystemeventlistener.h"
#include "appglobal/applicationpaths.h"
#include "appglobal/mainappglobal.h"
#include "appglobal/wzrfilehandler.h"
#include "applicationcontorllerclient/applicationcontorllerclient.h"
#include "common_function.h"
#include "deviceservice_global.h"
#include "records/records.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QFile>

#include <cstdio>

namespace {

bool isLoaded(const char* name)
{
    QFile maps(QStringLiteral("/proc/self/maps"));
    return maps.open(QIODevice::ReadOnly) && maps.readAll().contains(name);
}

/// The listener's thread loads the module that watches sessions, which is not linked.
bool loadsItsModule()
{
#ifdef Q_OS_LINUX
    if (isLoaded("wzrlogind"))
        return false;
    CSystemEventListener::instance()->startListen(false);
    const QDeadlineTimer deadline(30000);
    while (!isLoaded("/wzrlogind.so") && !deadline.hasExpired())
        QThread::yieldCurrentThread();
    CSystemEventListener::destroy();
    return !deadline.hasExpired();
#else
    return true;
#endif
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);

    BLNetworkInfo sent;
    sent.strOperator = QStringLiteral("Example");
    sent.nRssi = 17;
    CDataValue message;
    GetDataValueFromStruct(sent, message);

    CDataValue received;
    BLNetworkInfo read;
    if (!CDataValue::parseToDataValue(message.parseToQString(FAST_STYLE), received))
        return 1;
    GetStructFromDataValue(received, read);
    if (read.strOperator != sent.strOperator || read.nRssi != sent.nRssi)
        return 2;

    IPCServer server(nullptr);
    IPCClient client(QStringLiteral("nobody"), nullptr);
    if (server.hasClientConnected() || client.isConnected())
        return 3;

    CXml xml;
    if (!xml.ParseXmlString("<r>text</r>") || !xml.GetElement("r"))
        return 4;
    if (!CMainAppGlobal::systemMapGet(QStringLiteral("General"), QStringLiteral("None")).isNull())
        return 5;
    CMainAppGlobal::release();
    if (!loadsItsModule())
        return 6;
    std::printf("consumer ready with Qt %s\n", QByteArray(qVersion()).left(1).constData());
    return 0;
}
