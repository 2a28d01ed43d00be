// sd-bus over the bus at ADDRESS, with typed arguments and its own event loop:
// roundtrip_sdbus server|client ADDRESS CONNECTIONS
#include "exchange.h"

#include <systemd/sd-bus.h>

#include <cstring>

#include <sys/epoll.h>
#include <unistd.h>

namespace {

const char service[] = "bench.SdRoundTrip";
const char path[] = "/bench";

void must(int result)
{
    if (result < 0)
        fail(std::strerror(-result));
}

sd_bus* openBus(const char* address)
{
    sd_bus* bus = nullptr;
    must(sd_bus_new(&bus));
    must(sd_bus_set_address(bus, address));
    must(sd_bus_set_bus_client(bus, 1));
    must(sd_bus_start(bus));
    return bus;
}

void appendReply(sd_bus_message* message, int index, int bytes)
{
    must(sd_bus_message_append(message, "ii", 0, index));
    must(sd_bus_message_open_container(message, 'a', "(iss)"));
    for (const Message& item : messagesFor(bytes))
        must(sd_bus_message_append(message, "(iss)", item.index, item.number.toUtf8().constData(),
                                   item.text.toUtf8().constData()));
    must(sd_bus_message_close_container(message));
}

Reply readReply(sd_bus_message* message)
{
    if (sd_bus_message_is_method_error(message, nullptr) > 0)
        fail("an error came back");
    Reply reply;
    must(sd_bus_message_read(message, "ii", &reply.error, &reply.index));
    must(sd_bus_message_enter_container(message, 'a', "(iss)"));
    int index = 0;
    const char* number = nullptr;
    const char* text = nullptr;
    while (sd_bus_message_read(message, "(iss)", &index, &number, &text) > 0)
        reply.messages.push_back({index, QString::fromUtf8(number), QString::fromUtf8(text)});
    return reply;
}

int onRequest(sd_bus_message* call, void*, sd_bus_error*)
{
    const char* type = nullptr;
    const char* sender = nullptr;
    int index = 0;
    int bytes = 0;
    const char* note = nullptr;
    must(sd_bus_message_read(call, "ssiis", &type, &sender, &index, &bytes, &note));
    if (!*note || !*sender)
        fail("no note");
    sd_bus* const bus = sd_bus_message_get_bus(call);
    sd_bus_message* message = nullptr;
    if (std::strcmp(type, broadcastType) == 0) {
        must(sd_bus_message_new_signal(bus, &message, path, service, "report"));
        appendReply(message, index, bytes);
        must(sd_bus_send(bus, message, nullptr));
        sd_bus_message_unref(message);
        return sd_bus_reply_method_return(call, nullptr);
    }
    must(sd_bus_message_new_method_return(call, &message));
    appendReply(message, index, bytes);
    must(sd_bus_send(bus, message, nullptr));
    sd_bus_message_unref(message);
    return 1;
}

const sd_bus_vtable methods[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("request", "ssiis", "iia(iss)", onRequest, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END};

int serve(const char* address)
{
    sd_bus* const bus = openBus(address);
    must(sd_bus_add_object_vtable(bus, nullptr, path, service, methods, nullptr));
    must(sd_bus_request_name(bus, service, 0));
    printReady();
    for (;;) { // ended by the driver
        const int done = sd_bus_process(bus, nullptr);
        must(done);
        if (done == 0)
            must(sd_bus_wait(bus, UINT64_MAX));
    }
}

class Client
{
public:
    Client(const char* address, int connections)
        : m_rounds(
              connections, [this](int index, int bytes) { ask(requestType, index, bytes); },
              [this](int index, int bytes) { ask(broadcastType, index, bytes); })
        , m_epoll(::epoll_create1(0))
    {
        for (int i = 0; i < connections; ++i) {
            sd_bus* const bus = openBus(address);
            must(sd_bus_match_signal(bus, nullptr, service, path, service, "report", onReport,
                                     this));
            m_buses.push_back(bus);
            epoll_event event{};
            event.events = EPOLLIN;
            event.data.ptr = bus;
            ::epoll_ctl(m_epoll, EPOLL_CTL_ADD, sd_bus_get_fd(bus), &event);
        }
    }

    int run()
    {
        m_rounds.ready();
        while (m_rounds.readCommand()) {
            while (m_rounds.busy())
                processOnce();
        }
        ::_exit(0);
    }

private:
    void processOnce()
    {
        if (m_buses.size() == 1) {
            const int done = sd_bus_process(m_buses.front(), nullptr);
            must(done);
            if (done == 0 && m_rounds.busy())
                must(sd_bus_wait(m_buses.front(), UINT64_MAX));
            return;
        }
        must(sd_bus_flush(m_buses.front()));
        epoll_event events[64];
        const int count = ::epoll_wait(m_epoll, events, 64, -1);
        for (int i = 0; i < count; ++i) {
            while (sd_bus_process(static_cast<sd_bus*>(events[i].data.ptr), nullptr) > 0) {
            }
        }
    }

    static int onReply(sd_bus_message* message, void* client, sd_bus_error*)
    {
        static_cast<Client*>(client)->m_rounds.replied(readReply(message));
        return 1;
    }

    static int onDone(sd_bus_message*, void*, sd_bus_error*) { return 1; }

    static int onReport(sd_bus_message* message, void* client, sd_bus_error*)
    {
        static_cast<Client*>(client)->m_rounds.replied(readReply(message));
        return 0;
    }

    void ask(const char* type, int index, int bytes)
    {
        sd_bus_message_handler_t handler = type == broadcastType ? onDone : onReply;
        must(sd_bus_call_method_async(m_buses.front(), nullptr, service, path, service, "request",
                                      handler, this, "ssiis", type, senderName, index, bytes,
                                      requestNote().toUtf8().constData()));
    }

    std::vector<sd_bus*> m_buses;
    Rounds m_rounds;
    int m_epoll;
};

} // namespace

int main(int argc, char** argv)
{
    if (argc < 4)
        fail("usage: roundtrip_sdbus server|client ADDRESS CONNECTIONS");
    if (std::strcmp(argv[1], "server") == 0)
        return serve(argv[2]);
    return Client(argv[2], std::atoi(argv[3])).run();
}
