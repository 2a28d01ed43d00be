// An application controller that accepts every introduction. It says so when it listens, and ends
// when its standard input does.

#include "DataValue/datavalue.h"
#include "Ipc/ipcserver.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <cstdio>

#include <unistd.h>

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    IPCServer server(nullptr);
    QObject::connect(&server, &IPCServer::sigMessageReceived, &server,
                     [&server](const QString& text, int client) {
                         CDataValue request;
                         if (!CDataValue::parseToDataValue(text, request))
                             return;
                         CDataValue reply(MAP_VALUE);
                         reply.mapSet("IPCMSG_TYPE", request.mapGet("IPCMSG_TYPE"), false);
                         reply.mapSet("IPCMSG_ERROR_CODE", CDataValue(0), false);
                         server.sendResponse(reply.parseToQString(FAST_STYLE), client);
                     });
    const QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, SIGNAL(activated(int)), &application, SLOT(quit()));
    server.startListen("applicationcontroller");
    std::puts("ready");
    std::fflush(stdout);
    return QCoreApplication::exec();
}
