// This library: roundtrip_wzr server|client ADDRESS CONNECTIONS [OPTION...]
//   log=FILE    with the log on, without its echo
//   once        one flush for what is sent while one read is delivered
#include "exchange.h"

#include "DataValue/datavalue.h"
#include "Ipc/ipcclient.h"
#include "Ipc/ipcserver.h"
#include "LogTask/clog.h"

#include <QCoreApplication>
#include <QFile>
#include <QLoggingCategory>

#include <memory>

namespace {

QString answer(int index, int bytes, CDataValue& request)
{
    CDataValue list(ARRAY_VALUE);
    for (const Message& message : messagesFor(bytes)) {
        CDataValue item(MAP_VALUE);
        item.mapSet("nIndex", CDataValue(message.index), false);
        item.mapSet("strContent", CDataValue(message.text), false);
        item.mapSet("strNumber", CDataValue(message.number), false);
        list.arrayAppend(std::move(item), false);
    }
    CDataValue data(MAP_VALUE);
    data.mapSet("nIndex", CDataValue(index), false);
    data.mapSet("lstMessage", std::move(list), false);
    CDataValue envelope(MAP_VALUE);
    envelope.mapSet("IPCMSG_TYPE", request.mapGet("IPCMSG_TYPE"), false);
    envelope.mapSet("IPCMSG_ERROR_CODE", CDataValue(0), false);
    envelope.mapSet("IPCMSG_MSG_SENDER", request.mapGet("IPCMSG_MSG_SENDER"), false);
    envelope.mapSet("IPCMSG_RESPONSE_DATA", std::move(data), false);
    envelope.synchJsonData();
    return envelope.parseToQString(FAST_STYLE);
}

Reply readAnswer(CDataValue& envelope)
{
    Reply reply;
    reply.error = envelope.mapGet("IPCMSG_ERROR_CODE").asInt();
    CDataValue& data = envelope.mapGet("IPCMSG_RESPONSE_DATA");
    reply.index = data.mapGet("nIndex").asInt();
    CDataValue& list = data.mapGet("lstMessage");
    const unsigned count = list.arrayCount();
    reply.messages.reserve(count);
    for (unsigned i = 0; i < count; ++i) {
        CDataValue& item = list.arrayGet(i);
        reply.messages.push_back({item.mapGet("nIndex").asInt(),
                                  item.mapGet("strNumber").asQString(),
                                  item.mapGet("strContent").asQString()});
    }
    return reply;
}

int serve(const QString& address, bool once)
{
    IPCServer server(nullptr);
    server.setOneFlushPerRead(once);
    QObject::connect(&server, &IPCServer::sigMessageReceived, &server,
                     [&server](const QString& text, int id) {
                         CDataValue request(MAP_VALUE);
                         if (!CDataValue::parseToDataValue(text, request))
                             fail("no request");
                         CDataValue& data = request.mapGet("IPCMSG_USER_DATA");
                         const int index = data.mapGet("nIndex").asInt();
                         const int bytes = data.mapGet("nBytes").asInt();
                         if (data.mapGet("strNote").asQString().isEmpty())
                             fail("no note");
                         const QString type = request.mapGet("IPCMSG_TYPE").asQString();
                         const QString text2 = answer(index, bytes, request);
                         if (type == QLatin1String(broadcastType))
                             server.broadcastMsg(text2);
                         else
                             server.sendResponse(text2, id);
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
    const auto send = [&latest](const char* type, int index, int bytes) {
        CDataValue data(MAP_VALUE);
        data.mapSet("nIndex", CDataValue(index), false);
        data.mapSet("nBytes", CDataValue(bytes), false);
        data.mapSet("strNote", CDataValue(requestNote()), false);
        data.synchJsonData();
        latest->messageSend(type, &data, senderName);
    };
    Rounds rounds(
        connections, [&](int index, int bytes) { send(requestType, index, bytes); },
        [&](int index, int bytes) { send(broadcastType, index, bytes); });
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
        });
        client->setOneFlushPerRead(once);
        client->connectToServer();
    }
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
