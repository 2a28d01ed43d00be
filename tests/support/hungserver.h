#ifndef TESTS_SUPPORT_HUNGSERVER_H
#define TESTS_SUPPORT_HUNGSERVER_H

#include "support/rawpeer.h"

#include <QString>

#include <memory>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

/// A listening socket that accepts nobody until it is told to, and has no room for anybody else.
class HungServer
{
public:
    explicit HungServer(const QString& path)
        : m_descriptor(listenAt(path, 1))
    {
        while (m_waiting.empty() || m_waiting.back()->isOpen())
            m_waiting.push_back(std::make_unique<RawPeer>(path));
    }
    ~HungServer()
    {
        for (const int descriptor : m_accepted)
            ::close(descriptor);
        ::close(m_descriptor);
    }
    HungServer(const HungServer&) = delete;
    HungServer& operator=(const HungServer&) = delete;

    /// Takes everybody who is waiting.
    void acceptAll()
    {
        for (;;) {
            const int descriptor = accept4(m_descriptor, nullptr, nullptr, SOCK_NONBLOCK);
            if (descriptor < 0)
                return;
            m_accepted.push_back(descriptor);
        }
    }

private:
    int m_descriptor;
    std::vector<std::unique_ptr<RawPeer>> m_waiting;
    std::vector<int> m_accepted;
};

#endif
