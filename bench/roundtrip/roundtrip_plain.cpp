// The values of this library over a QLocalServer of one's own, a length of 4 bytes before each
// text: what the library's framing, numbering and logging cost on top of Qt's sockets.
// roundtrip_plain server|client ADDRESS CONNECTIONS
#include "exchange.h"
#include "valuemessages.h"

#include <QCoreApplication>
#include <QLocalServer>
#include <QLocalSocket>
#include <QtEndian>

#include <algorithm>
#include <memory>

namespace {

void send(QLocalSocket* socket, const QString& text)
{
    const QByteArray utf8 = text.toUtf8();
    char length[4];
    qToBigEndian<quint32>(static_cast<quint32>(utf8.size()), length);
    socket->write(length, sizeof length);
    socket->write(utf8);
    socket->flush();
}

template<typename Use>
void receive(QLocalSocket* socket, Use use)
{
    char length[4];
    while (socket->peek(length, sizeof length) == sizeof length) {
        const qint64 size = qFromBigEndian<quint32>(length);
        if (socket->bytesAvailable() < size + qint64(sizeof length))
            return;
        socket->skip(sizeof length);
        CDataValue envelope;
        if (!CDataValue::parseToDataValue(QString::fromUtf8(socket->read(size)), envelope))
            fail("no value");
        use(envelope);
    }
}

class Server
{
public:
    int run(const QString& address)
    {
        QObject::connect(&m_server, &QLocalServer::newConnection, &m_server, [this] {
            while (QLocalSocket* const socket = m_server.nextPendingConnection())
                add(socket);
        });
        if (!m_server.listen(address))
            fail("cannot listen");
        printReady();
        return runEvents(nullptr);
    }

private:
    void add(QLocalSocket* socket)
    {
        m_clients.push_back(socket);
        QObject::connect(socket, &QLocalSocket::readyRead, socket, [this, socket] {
            receive(socket, [&](CDataValue& request) { answer(socket, request); });
        });
        QObject::connect(socket, &QLocalSocket::disconnected, socket, [this, socket] {
            m_clients.erase(std::find(m_clients.begin(), m_clients.end(), socket));
            socket->deleteLater();
        });
    }
    void answer(QLocalSocket* socket, CDataValue& request)
    {
        const Asked asked = readRequest(request);
        const QString text = answerText(asked, request);
        if (!asked.broadcast) {
            send(socket, text);
            return;
        }
        for (QLocalSocket* client : m_clients)
            send(client, text);
    }

    QLocalServer m_server;
    std::vector<QLocalSocket*> m_clients;
};

int request(const QString& address, int connections)
{
    std::vector<std::unique_ptr<QLocalSocket>> sockets;
    QLocalSocket* latest = nullptr; // the server has accepted all that were connected before it
    Rounds* current = nullptr;
    const auto ask = [&](const char* type, int index, int bytes) {
        const int turn = current->turn();
        send(turn < 0 ? latest : sockets[static_cast<size_t>(turn)].get(),
             requestText(type, index, bytes));
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
            receive(socket, [&](CDataValue& reply) { rounds.replied(readAnswer(reply)); });
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
        fail("usage: roundtrip_plain server|client ADDRESS CONNECTIONS");
    return arguments.at(1) == QLatin1String("server")
               ? Server().run(arguments.at(2))
               : request(arguments.at(2), arguments.at(3).toInt());
}
