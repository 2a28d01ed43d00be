// The values of this library over AF_UNIX with blocking calls, one connection, a length of 4 bytes
// before each text: the limit of what a transport can reach whose ends build and parse the same.
// roundtrip_rawvalues server|client ADDRESS CONNECTIONS
#include "exchange.h"
#include "rawsocket.h"
#include "valuemessages.h"

#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

void sendText(int descriptor, const QString& text)
{
    const QByteArray utf8 = text.toUtf8();
    const auto size = static_cast<uint32_t>(utf8.size());
    std::string frame(sizeof size + size, '\0');
    std::memcpy(&frame[0], &size, sizeof size);
    std::memcpy(&frame[sizeof size], utf8.constData(), size);
    writeAll(descriptor, frame.data(), frame.size());
}

/// False when the other end has gone.
bool receiveValue(int descriptor, std::string& buffer, CDataValue& value)
{
    uint32_t size = 0;
    if (!readAll(descriptor, reinterpret_cast<char*>(&size), sizeof size))
        return false;
    buffer.resize(size);
    if (!readAll(descriptor, &buffer[0], size))
        return false;
    if (!CDataValue::parseToDataValue(
            QString::fromUtf8(buffer.data(), static_cast<int>(buffer.size())), value))
        fail("no value");
    return true;
}

/// A server of one client, ended by the end of that client.
int serve(const char* path)
{
    const int listener = listenAt(path);
    printReady();
    const int client = ::accept(listener, nullptr, nullptr);
    if (client < 0)
        fail("cannot accept");
    std::string buffer;
    for (;;) {
        CDataValue request;
        if (!receiveValue(client, buffer, request))
            return 0;
        sendText(client, answerText(readRequest(request), request));
    }
}

int request(const char* path)
{
    const int server = connectTo(path);
    std::string buffer;
    const auto ask = [server](int index, int bytes) {
        sendText(server, requestText(requestType, index, bytes));
    };
    Rounds rounds(1, ask, [](int, int) { fail("nobody to hear a broadcast"); });
    rounds.ready();
    while (rounds.readCommand()) {
        while (rounds.busy()) {
            CDataValue reply;
            if (!receiveValue(server, buffer, reply))
                fail("the server has gone");
            rounds.replied(readAnswer(reply));
        }
    }
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 4)
        fail("usage: roundtrip_rawvalues server|client ADDRESS CONNECTIONS");
    return std::strcmp(argv[1], "server") == 0 ? serve(argv[2]) : request(argv[2]);
}
