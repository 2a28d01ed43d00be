#include "DataValue/datavalue.h"
#include "Ipc/ipcclient.h"

#include <QCoreApplication>
#include <QTimer>

#include <cstdio>

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    IPCClient client("greeter", nullptr);
    QObject::connect(&client, &IPCClient::sigIPCServerConnected, [&] {
        const CDataValue name("world");
        client.messageSend("GREET", &name);
    });
    QObject::connect(&client, &IPCClient::sigIPCSocketError, [] { QCoreApplication::exit(1); });
    QObject::connect(&client, &IPCClient::sigMessageReceived, [](CDataValue* envelope) {
        std::puts(qPrintable(envelope->mapGet("IPCMSG_RESPONSE_DATA").asQString()));
        QCoreApplication::exit(envelope->mapGet("IPCMSG_ERROR_CODE").asInt());
    });
    QTimer::singleShot(0, &client, &IPCClient::connectToServer);
    return QCoreApplication::exec();
}
