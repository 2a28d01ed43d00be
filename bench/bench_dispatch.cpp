// Calls by identifier, with a hundred identifiers registered: by the routers, and by what a user
// would write instead, a map and QMetaObject::invokeMethod() by name. A direct signal and slot is
// the limit.

#include "BusinessBase/businesspluginbase.h"
#include "DataValue/datavalue.h"
#include "MessageCenter/messagecenter.h"

#include <QMap>
#include <QObject>
#include <QVector>

#include <benchmark/benchmark.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>

/// Receives everything and counts.
class Receiver : public QObject
{
    Q_OBJECT

public:
    int messages = 0;
    int services = 0;
    int requests = 0;

public Q_SLOTS:
    void onMessage(CDataValue*) { ++messages; }
    CDataValue onService(CDataValue*) { return CDataValue(++services); }
    int onRequest(CDataValue&, CDataValue&)
    {
        ++requests;
        return 0;
    }

Q_SIGNALS:
    void message(CDataValue* value);
    CDataValue service(CDataValue* value);
    int request(CDataValue& request, CDataValue& response);
};

namespace {

constexpr int kIdentifiers = 100;

struct Entry
{
    QObject* receiver;
    QByteArray slot;
};
using Registry = QMap<QString, Entry>;

/// The same registrations in every router.
struct World
{
    World()
    {
        for (int i = 0; i < kIdentifiers; ++i) {
            const QByteArray identifier =
                QByteArray("WZR_MESSAGE_") + (i % 2 ? "SMS_" : "NETWORK_") + QByteArray::number(i);
            bytes[i] = identifier;
            texts[i] = QString::fromLatin1(identifier);
            envelopes[i].mapSet("IPCMSG_TYPE", CDataValue(identifier.constData()), false);
            envelopes[i].mapSet("IPCMSG_ERROR_CODE", CDataValue(0), false);
            envelopes[i].mapSet("IPCMSG_RESPONSE_DATA", CDataValue("ok"), false);
            center->registerModuleMessage(identifier, "onMessage", &receiver);
            center->registerDeviceMessage(identifier, "onMessage", &receiver);
            center->registerModuleServiceMessage(identifier, "onService", &receiver);
            plugin.registerMessage(identifier, "onRequest", 0, &receiver);
            messages.insert(texts[i], {&receiver, "onMessage"});
            services.insert(texts[i], {&receiver, "onService"});
            requests.insert(texts[i], {&receiver, "onRequest"});
        }
        QObject::connect(&receiver, &Receiver::message, &receiver, &Receiver::onMessage,
                         Qt::DirectConnection);
        QObject::connect(&receiver, &Receiver::service, &receiver, &Receiver::onService,
                         Qt::DirectConnection);
        QObject::connect(&receiver, &Receiver::request, &receiver, &Receiver::onRequest,
                         Qt::DirectConnection);
    }

    Receiver receiver;
    MessageCenter* center = MessageCenter::defaultCenter();
    BusinessPluginBase plugin;
    Registry messages;
    Registry services;
    Registry requests;
    std::array<QByteArray, kIdentifiers> bytes;
    std::array<QString, kIdentifiers> texts;
    std::array<CDataValue, kIdentifiers> envelopes;
    CDataValue data{"data"};
    CDataValue response;
};

World* g_world = nullptr;

namespace post {
void wzrframework(World& world, int i)
{
    world.center->postModuleMessage(world.bytes[i].constData(), &world.data);
}
void invokeByName(World& world, int i)
{
    const auto found = world.messages.constFind(world.texts[i]);
    CDataValue* data = &world.data;
    QMetaObject::invokeMethod(found->receiver, found->slot.constData(), Qt::DirectConnection,
                              Q_ARG(CDataValue*, data));
}
void signalAndSlot(World& world, int)
{
    Q_EMIT world.receiver.message(&world.data);
}
} // namespace post

namespace invokeService {
void wzrframework(World& world, int i)
{
    benchmark::DoNotOptimize(
        world.center->InvokeModuleServiceByMessage(world.bytes[i].constData(), &world.data));
}
void invokeByName(World& world, int i)
{
    const auto found = world.services.constFind(world.texts[i]);
    CDataValue* data = &world.data;
    CDataValue result;
    QMetaObject::invokeMethod(found->receiver, found->slot.constData(), Qt::DirectConnection,
                              Q_RETURN_ARG(CDataValue, result), Q_ARG(CDataValue*, data));
    benchmark::DoNotOptimize(result);
}
void signalAndSlot(World& world, int)
{
    benchmark::DoNotOptimize(world.receiver.service(&world.data));
}
} // namespace invokeService

namespace receive {
void wzrframework(World& world, int i)
{
    world.center->messageReceived(&world.envelopes[i]);
}
void invokeByName(World& world, int i)
{
    CDataValue* envelope = &world.envelopes[i];
    const auto found = world.messages.constFind(envelope->mapGet("IPCMSG_TYPE").asQString());
    QMetaObject::invokeMethod(found->receiver, found->slot.constData(), Qt::DirectConnection,
                              Q_ARG(CDataValue*, envelope));
}
void signalAndSlot(World& world, int i)
{
    Q_EMIT world.receiver.message(&world.envelopes[i]);
}
} // namespace receive

namespace handle {
void wzrframework(World& world, int i)
{
    benchmark::DoNotOptimize(
        world.plugin.handleMessageComing(world.texts[i], &world.data, &world.response));
}
void invokeByName(World& world, int i)
{
    const auto found = world.requests.constFind(world.texts[i]);
    int result = 0;
    QMetaObject::invokeMethod(found->receiver, found->slot.constData(), Qt::DirectConnection,
                              Q_RETURN_ARG(int, result), Q_ARG(CDataValue&, world.data),
                              Q_ARG(CDataValue&, world.response));
    benchmark::DoNotOptimize(result);
}
void signalAndSlot(World& world, int)
{
    benchmark::DoNotOptimize(world.receiver.request(world.data, world.response));
}
} // namespace handle

using Call = void (*)(World& world, int i);

int callsMade(const Receiver& receiver)
{
    return receiver.messages + receiver.services + receiver.requests;
}

void add(const std::string& name, Call call)
{
    const int before = callsMade(g_world->receiver);
    for (int i = 0; i < kIdentifiers; ++i)
        call(*g_world, i);
    if (callsMade(g_world->receiver) != before + kIdentifiers) {
        std::fprintf(stderr, "%s does not reach the slot\n", name.c_str());
        std::exit(1);
    }
    benchmark::RegisterBenchmark(name.c_str(), [call](benchmark::State& state) {
        int i = 0;
        for (auto _ : state) {
            call(*g_world, i);
            i = i + 1 == kIdentifiers ? 0 : i + 1;
        }
    });
}

void addAll(const std::string& workload, Call own, Call byName, Call direct)
{
    add(workload + "/wzrframework", own);
    add(workload + "/invokeMethod", byName);
    add(workload + "/signal-slot", direct);
}

} // namespace

int main(int argc, char** argv)
{
    const auto world = std::make_unique<World>();
    g_world = world.get();
    addAll("postModuleMessage", post::wzrframework, post::invokeByName, post::signalAndSlot);
    addAll("InvokeModuleServiceByMessage", invokeService::wzrframework, invokeService::invokeByName,
           invokeService::signalAndSlot);
    addAll("messageReceived", receive::wzrframework, receive::invokeByName, receive::signalAndSlot);
    addAll("handleMessageComing", handle::wzrframework, handle::invokeByName,
           handle::signalAndSlot);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    MessageCenter::release();
    return 0;
}

#include "bench_dispatch.moc"
