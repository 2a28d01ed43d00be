// Qt Remote Objects over a local socket, code made by repc:
// roundtrip_remoteobjects server|client ADDRESS CONNECTIONS
#include "exchange.h"

#include "rep_roundtrip_merged.h"

#include <QCoreApplication>
#include <QRemoteObjectHost>
#include <QRemoteObjectNode>
#include <QRemoteObjectPendingCallWatcher>

#include <memory>

namespace {

class Service : public RoundTripSimpleSource
{
public:
    RemoteReply request(QString type, QString sender, int index, int bytes, QString note) override
    {
        if (note.isEmpty() || sender.isEmpty())
            fail("no note");
        QList<RemoteMessage> messages;
        for (const Message& message : messagesFor(bytes))
            messages.append(RemoteMessage(message.index, message.number, message.text));
        const RemoteReply reply(0, index, messages);
        if (type != QLatin1String(broadcastType))
            return reply;
        Q_EMIT report(reply);
        return RemoteReply(0, index, {});
    }
};

Reply replyOf(const RemoteReply& remote)
{
    Reply reply;
    reply.error = remote.error();
    reply.index = remote.index();
    const QList<RemoteMessage> messages = remote.messages();
    reply.messages.reserve(static_cast<size_t>(messages.size()));
    for (const RemoteMessage& message : messages)
        reply.messages.push_back({message.index(), message.number(), message.text()});
    return reply;
}

int serve(const QUrl& url)
{
    Service object;
    QRemoteObjectHost host(url);
    if (!host.enableRemoting(&object))
        fail("cannot serve");
    printReady();
    return runEvents(nullptr);
}

int request(const QUrl& url, int connections)
{
    std::vector<std::unique_ptr<QRemoteObjectNode>> nodes;
    std::vector<std::unique_ptr<RoundTripReplica>> replicas;
    Rounds* reached = nullptr;
    const auto ask = [&](const char* type, int index, int bytes) {
        auto* watcher = new QRemoteObjectPendingCallWatcher(replicas.front()->request(
            QLatin1String(type), QLatin1String(senderName), index, bytes, requestNote()));
        const bool broadcast = type == broadcastType;
        QObject::connect(watcher, &QRemoteObjectPendingCallWatcher::finished, watcher,
                         [&reached, watcher, broadcast] {
                             watcher->deleteLater();
                             if (!broadcast)
                                 reached->replied(
                                     replyOf(watcher->returnValue().value<RemoteReply>()));
                         });
    };
    Rounds rounds(
        connections, [&](int index, int bytes) { ask(requestType, index, bytes); },
        [&](int index, int bytes) { ask(broadcastType, index, bytes); });
    reached = &rounds;
    for (int i = 0; i < connections; ++i) {
        nodes.push_back(std::make_unique<QRemoteObjectNode>());
        if (!nodes.back()->connectToNode(url))
            fail("cannot connect");
        replicas.emplace_back(nodes.back()->acquire<RoundTripReplica>());
        if (!replicas.back()->waitForSource())
            fail("no source");
        QObject::connect(replicas.back().get(), &RoundTripReplica::report,
                         [&rounds](const RemoteReply& reply) { rounds.replied(replyOf(reply)); });
    }
    rounds.ready();
    return runEvents(&rounds);
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    if (argc < 4)
        fail("usage: roundtrip_remoteobjects server|client ADDRESS CONNECTIONS");
    const QUrl url(QStringLiteral("local:") + app.arguments().at(2));
    return app.arguments().at(1) == QLatin1String("server")
               ? serve(url)
               : request(url, app.arguments().at(3).toInt());
}
