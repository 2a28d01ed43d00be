#ifndef BENCH_ROUNDTRIP_RAWSOCKET_H
#define BENCH_ROUNDTRIP_RAWSOCKET_H

#include "exchange.h"

#include <cstddef>
#include <cstring>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

// Blocking calls on AF_UNIX sockets.

inline bool readAll(int descriptor, char* to, size_t size)
{
    while (size > 0) {
        const ssize_t length = ::read(descriptor, to, size);
        if (length <= 0)
            return false;
        to += length;
        size -= static_cast<size_t>(length);
    }
    return true;
}

inline void writeAll(int descriptor, const char* from, size_t size)
{
    while (size > 0) {
        const ssize_t length = ::send(descriptor, from, size, MSG_NOSIGNAL);
        if (length <= 0)
            return;
        from += length;
        size -= static_cast<size_t>(length);
    }
}

inline sockaddr_un addressOf(const char* path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path, sizeof address.sun_path - 1);
    return address;
}

inline int listenAt(const char* path)
{
    const int listener = ::socket(AF_UNIX, SOCK_STREAM, 0);
    const sockaddr_un address = addressOf(path);
    if (::bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(listener, 64) != 0)
        fail("cannot listen");
    return listener;
}

inline int connectTo(const char* path)
{
    const int descriptor = ::socket(AF_UNIX, SOCK_STREAM, 0);
    const sockaddr_un address = addressOf(path);
    if (::connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        fail("cannot connect");
    return descriptor;
}

#endif
