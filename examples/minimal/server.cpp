#include "DataValue/datavalue.h"
#include "Ipc/ipcserver.h"

#include <QCoreApplication>

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    IPCServer server(nullptr);
    QObject::connect(&server, &IPCServer::sigMessageReceived, [&](const QString& text, int client) {
        CDataValue envelope;
        if (!CDataValue::parseToDataValue(text, envelope) || !envelope.isObject())
            return;
        const CDataValue greeting("Hello, " + envelope.mapGet("IPCMSG_USER_DATA").asQString());
        envelope.mapSet("IPCMSG_ERROR_CODE", 0, true);
        envelope.mapSet("IPCMSG_RESPONSE_DATA", greeting, true);
        server.sendResponse(envelope.parseToQString(FAST_STYLE), client);
    });
    server.startListen("greeter");
    return QCoreApplication::exec();
}
