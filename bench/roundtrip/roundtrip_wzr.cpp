// This library: roundtrip_wzr server|client ADDRESS CONNECTIONS [OPTION...]
//   log=FILE    with the log on, without its echo
//   once        one flush for what is sent while one read is delivered
#include "exchange.h"
#include "valuemessages.h"

#include "Ipc/ipcclient.h"
#include "Ipc/ipcserver.h"
#include "LogTask/clog.h"

#include <QCoreApplication>
#include <QFile>
#include <QLoggingCategory>

#include <memory>

namespace {

int serve(const QString& address, bool once)
{
    IPCServer server(nullptr);
    server.setOneFlushPerRead(once);
    QObject::connect(&server, &IPCServer::sigMessageReceived, &server,
                     [&server](const QString& text, int id) {
                         CDataValue request(MAP_VALUE);
                         if (!CDataValue::parseToDataValue(text, request))
                             fail("no request");
                         const Asked asked = readRequest(request);
                         const QString answer = answerText(asked, request);
                         if (asked.broadcast)
                             server.broadcastMsg(answer);
                         else
                             server.sendResponse(answer, id);
                     });
    server.startListen(address);
    printReady();
    return runEvents(nullptr);
}

int request(const QString& address, int connections, bool once)
{
    std::vector<std::unique_ptr<IPCClient>> clients;
    // The one that was connected last asks: by then the server has accepted all that came before,
    // and they hear a broadcast.
    IPCClient* latest = nullptr;
    Rounds* current = nullptr;
    const auto send = [&](const char* type, int index, int bytes) {
        const CDataValue data = requestData(index, bytes);
        const int turn = current->turn();
        IPCClient* const client = turn < 0 ? latest : clients[static_cast<size_t>(turn)].get();
        client->messageSend(type, &data, senderName);
    };
    Rounds rounds(
        connections, [&](int index, int bytes) { send(requestType, index, bytes); },
        [&](int index, int bytes) { send(broadcastType, index, bytes); });
    current = &rounds;
    int connected = 0;
    for (int i = 0; i < connections; ++i) {
        clients.push_back(std::make_unique<IPCClient>(address));
        IPCClient* const client = clients.back().get();
        QObject::connect(client, &IPCClient::sigMessageReceived, client,
                         [&](CDataValue* envelope) { rounds.replied(readAnswer(*envelope)); });
        QObject::connect(client, &IPCClient::sigIPCServerConnected, client, [&, client] {
            latest = client;
            if (++connected == connections)
                rounds.ready();
            else // one after the other: a listener's queue is bounded
                clients[static_cast<size_t>(connected)]->connectToServer();
        });
        client->setOneFlushPerRead(once);
    }
    clients.front()->connectToServer();
    return runEvents(&rounds);
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList arguments = app.arguments();
    if (arguments.size() < 4)
        fail("usage: roundtrip_wzr server|client ADDRESS CONNECTIONS [OPTION...]");
    for (const QString& argument : arguments) {
        if (!argument.startsWith(QLatin1String("log=")))
            continue;
        QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
        if (!InitLog(QFile::encodeName(argument.mid(4)).constData()))
            fail("no log");
    }
    const bool once = arguments.contains(QLatin1String("once"));
    const int result = arguments.at(1) == QLatin1String("server")
                           ? serve(arguments.at(2), once)
                           : request(arguments.at(2), arguments.at(3).toInt(), once);
    DestroyLog();
    return result;
}
