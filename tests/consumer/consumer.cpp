// Uses every installed family of headers through the paths that users write.

#include "BusinessBase/businesspluginbase.h"
#include "DataValue/datavalue.h"
#include "DataValue/xml/cxmlconvert.h"
#include "Ipc/ipcclient.h"
#include "Ipc/ipcserver.h"
#include "LogTask/clog.h"
#include "MessageCenter/messagecenter.h"
#include "PersoManager/persomanager.h"
#include "appglobal/applicationpaths.h"
#include "appglobal/mainappglobal.h"
#include "appglobal/wzrfilehandler.h"
#include "applicationcontorllerclient/applicationcontorllerclient.h"
#include "common_function.h"
#include "deviceservice_global.h"
#include "records/records.h"

#include <QCoreApplication>

#include <cstdio>

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
    std::puts("consumer ready");
    return 0;
}
