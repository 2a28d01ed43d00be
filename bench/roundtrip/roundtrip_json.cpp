// QLocalSocket, QJsonDocument and a length of 4 bytes before each text:
// roundtrip_json server|client ADDRESS CONNECTIONS [OPTION...]
//   later    sends from the event loop, so that what was queued meanwhile goes out together
#include "exchange.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocalServer>
#include <QLocalSocket>
#include <QtEndian>

#include <memory>

namespace {

bool sendLater = false;

void send(QLocalSocket* socket, const QByteArray& text)
{
    char length[4];
    qToBigEndian<quint32>(static_cast<quint32>(text.size()), length);
    socket->write(length, sizeof length);
    socket->write(text);
    if (!sendLater)
        socket->flush();
}

void receive(QLocalSocket* socket, const std::function<void(const QJsonObject&)>& use)
{
    char length[4];
    while (socket->peek(length, sizeof length) == sizeof length) {
        const qint64 size = qFromBigEndian<quint32>(length);
        if (socket->bytesAvailable() < size + qint64(sizeof length))
            return;
        socket->skip(sizeof length);
        use(QJsonDocument::fromJson(socket->read(size)).object());
    }
}

QByteArray answer(int index, int bytes, const QJsonObject& request)
{
    QJsonArray list;
    for (const Message& message : messagesFor(bytes))
        list.append(QJsonObject{{QStringLiteral("nIndex"), message.index},
                                {QStringLiteral("strContent"), message.text},
                                {QStringLiteral("strNumber"), message.number}});
    const QJsonObject data{{QStringLiteral("nIndex"), index}, {QStringLiteral("lstMessage"), list}};
    const QJsonObject envelope{
        {QStringLiteral("IPCMSG_TYPE"), request.value(QLatin1String("IPCMSG_TYPE"))},
        {QStringLiteral("IPCMSG_ERROR_CODE"), 0},
        {QStringLiteral("IPCMSG_MSG_SENDER"), request.value(QLatin1String("IPCMSG_MSG_SENDER"))},
        {QStringLiteral("IPCMSG_RESPONSE_DATA"), data}};
    return QJsonDocument(envelope).toJson(QJsonDocument::Compact);
}

Reply readAnswer(const QJsonObject& envelope)
{
    Reply reply;
    reply.error = envelope.value(QLatin1String("IPCMSG_ERROR_CODE")).toInt(-1);
    const QJsonObject data = envelope.value(QLatin1String("IPCMSG_RESPONSE_DATA")).toObject();
    reply.index = data.value(QLatin1String("nIndex")).toInt();
    const QJsonArray list = data.value(QLatin1String("lstMessage")).toArray();
    reply.messages.reserve(static_cast<size_t>(list.size()));
    for (const QJsonValue& value : list) {
        const QJsonObject item = value.toObject();
        reply.messages.push_back({item.value(QLatin1String("nIndex")).toInt(),
                                  item.value(QLatin1String("strNumber")).toString(),
                                  item.value(QLatin1String("strContent")).toString()});
    }
    return reply;
}

int serve(const QString& address)
{
    QLocalServer server;
    std::vector<QLocalSocket*> clients;
    const auto handle = [&clients](QLocalSocket* socket, const QJsonObject& request) {
        const QJsonObject data = request.value(QLatin1String("IPCMSG_USER_DATA")).toObject();
        const int index = data.value(QLatin1String("nIndex")).toInt();
        const int bytes = data.value(QLatin1String("nBytes")).toInt();
        if (data.value(QLatin1String("strNote")).toString().isEmpty())
            fail("no note");
        const QByteArray text = answer(index, bytes, request);
        if (request.value(QLatin1String("IPCMSG_TYPE")).toString() !=
            QLatin1String(broadcastType)) {
            send(socket, text);
            return;
        }
        for (QLocalSocket* client : clients)
            send(client, text);
    };
    QObject::connect(&server, &QLocalServer::newConnection, &server, [&] {
        while (QLocalSocket* const socket = server.nextPendingConnection()) {
            clients.push_back(socket);
            QObject::connect(socket, &QLocalSocket::readyRead, socket, [&handle, socket] {
                receive(socket, [&](const QJsonObject& request) { handle(socket, request); });
            });
            QObject::connect(socket, &QLocalSocket::disconnected, socket, [&clients, socket] {
                clients.erase(std::remove(clients.begin(), clients.end(), socket), clients.end());
                socket->deleteLater();
            });
        }
    });
    if (!server.listen(address))
        fail("cannot listen");
    printReady();
    return runEvents(nullptr);
}

int request(const QString& address, int connections)
{
    std::vector<std::unique_ptr<QLocalSocket>> sockets;
    QLocalSocket* latest = nullptr; // the server has accepted all that were connected before it
    Rounds* current = nullptr;
    const auto ask = [&](const char* type, int index, int bytes) {
        const QJsonObject data{{QStringLiteral("nIndex"), index},
                               {QStringLiteral("nBytes"), bytes},
                               {QStringLiteral("strNote"), requestNote()}};
        const QJsonObject envelope{
            {QStringLiteral("IPCMSG_TYPE"), QLatin1String(type)},
            {QStringLiteral("IPCMSG_USER_DATA"), data},
            {QStringLiteral("IPCMSG_MSG_SENDER"), QLatin1String(senderName)}};
        const int turn = current->turn();
        send(turn < 0 ? latest : sockets[static_cast<size_t>(turn)].get(),
             QJsonDocument(envelope).toJson(QJsonDocument::Compact));
    };
    Rounds rounds(
        connections, [&](int index, int bytes) { ask(requestType, index, bytes); },
        [&](int index, int bytes) { ask(broadcastType, index, bytes); });
    current = &rounds;
    int connected = 0;
    for (int i = 0; i < connections; ++i) {
        sockets.push_back(std::make_unique<QLocalSocket>());
        QLocalSocket* const socket = sockets.back().get();
        QObject::connect(socket, &QLocalSocket::readyRead, socket, [&rounds, socket] {
            receive(socket, [&](const QJsonObject& reply) { rounds.replied(readAnswer(reply)); });
        });
        QObject::connect(socket, &QLocalSocket::connected, socket, [&, socket] {
            latest = socket;
            if (++connected == connections)
                rounds.ready();
            else // one after the other: a listener's queue is bounded
                sockets[static_cast<size_t>(connected)]->connectToServer(address);
        });
    }
    sockets.front()->connectToServer(address);
    return runEvents(&rounds);
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList arguments = app.arguments();
    if (arguments.size() < 4)
        fail("usage: roundtrip_json server|client ADDRESS CONNECTIONS [OPTION...]");
    sendLater = arguments.contains(QLatin1String("later"));
    return arguments.at(1) == QLatin1String("server")
               ? serve(arguments.at(2))
               : request(arguments.at(2), arguments.at(3).toInt());
}
