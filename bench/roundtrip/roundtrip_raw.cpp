// Bytes over AF_UNIX with blocking calls, a thread for each connection: the limit of what a
// transport between two processes on one processor can reach. Nothing is built or parsed.
// roundtrip_raw server|client ADDRESS CONNECTIONS
#include "exchange.h"
#include "rawsocket.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string>
#include <thread>

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

struct Request
{
    int32_t broadcast;
    int32_t index;
    int32_t bytes;
    char filling[200 - 12];
};

struct Header
{
    int32_t index;
    int32_t bytes; // with this header
};

std::mutex mutex;
std::vector<int> clients;

void serveOne(int descriptor)
{
    Request request{};
    std::string reply;
    while (readAll(descriptor, reinterpret_cast<char*>(&request), sizeof request)) {
        const Header header{request.index, request.bytes};
        reply.resize(static_cast<size_t>(request.bytes), 'r');
        std::memcpy(&reply[0], &header, sizeof header);
        if (!request.broadcast) {
            writeAll(descriptor, reply.data(), reply.size());
            continue;
        }
        const std::lock_guard<std::mutex> lock(mutex);
        for (const int client : clients)
            writeAll(client, reply.data(), reply.size());
    }
    const std::lock_guard<std::mutex> lock(mutex);
    clients.erase(std::find(clients.begin(), clients.end(), descriptor));
    ::close(descriptor);
}

int serve(const char* path)
{
    const int listener = listenAt(path);
    printReady();
    pollfd descriptors[] = {{listener, POLLIN, 0}, {STDIN_FILENO, POLLIN, 0}};
    while (::poll(descriptors, 2, -1) > 0 && !descriptors[1].revents) {
        const int client = ::accept(listener, nullptr, nullptr);
        if (client < 0)
            fail("cannot accept");
        const std::lock_guard<std::mutex> lock(mutex);
        clients.push_back(client);
        std::thread(serveOne, client).detach();
    }
    ::_exit(0); // the threads may still wait
}

class Client
{
public:
    Client(const char* path, int connections)
        : m_rounds(
              connections, [this](int index, int bytes) { ask(0, index, bytes); },
              [this](int index, int bytes) { ask(1, index, bytes); })
    {
        for (int i = 0; i < connections; ++i)
            m_sockets.push_back(connectTo(path));
    }

    int run()
    {
        m_rounds.ready();
        while (m_rounds.readCommand()) {
            while (m_rounds.busy())
                hear();
        }
        return 0;
    }

private:
    void ask(int broadcast, int index, int bytes)
    {
        Request request{broadcast, index, bytes, {}};
        m_broadcast = broadcast != 0;
        m_reply.error = 0;
        if (m_bytes != bytes)
            m_reply.messages = messagesFor(bytes);
        m_bytes = bytes;
        writeAll(m_sockets.front(), reinterpret_cast<const char*>(&request), sizeof request);
    }

    // The bytes stand for the messages, which are not carried.
    void hear()
    {
        const size_t count = m_broadcast ? m_sockets.size() : 1;
        for (size_t i = 0; i < count; ++i) {
            m_buffer.resize(static_cast<size_t>(m_bytes));
            if (!readAll(m_sockets[i], &m_buffer[0], m_buffer.size()))
                fail("the server has gone");
            Header header{};
            std::memcpy(&header, m_buffer.data(), sizeof header);
            if (header.bytes != m_bytes || m_buffer.back() != 'r')
                fail("not the expected bytes");
            m_reply.index = header.index;
            m_rounds.replied(m_reply);
        }
    }

    std::vector<int> m_sockets;
    std::string m_buffer;
    Reply m_reply;
    int m_bytes = 0;
    bool m_broadcast = false;
    Rounds m_rounds;
};

} // namespace

int main(int argc, char** argv)
{
    if (argc < 4)
        fail("usage: roundtrip_raw server|client ADDRESS CONNECTIONS");
    if (std::strcmp(argv[1], "server") == 0)
        return serve(argv[2]);
    return Client(argv[2], std::atoi(argv[3])).run();
}
