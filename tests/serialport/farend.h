#ifndef TESTS_SERIALPORT_FAREND_H
#define TESTS_SERIALPORT_FAREND_H

#include "serialport/serialport.h"

#include <QByteArray>
#include <QTest>

#include <array>
#include <memory>
#include <string>

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

/// The far end of a pseudo-terminal, in the place of a modem.
class FarEnd
{
public:
    FarEnd()
        : m_file(posix_openpt(O_RDWR | O_NOCTTY))
    {
        std::array<char, 128> name{};
        if (m_file < 0 || grantpt(m_file) != 0 || unlockpt(m_file) != 0 ||
            ptsname_r(m_file, name.data(), name.size()) != 0)
            qFatal("No pseudo-terminal");
        m_path = name.data();
    }
    ~FarEnd() { vanish(); }
    FarEnd(const FarEnd&) = delete;
    FarEnd& operator=(const FarEnd&) = delete;

    const char* path() const { return m_path.c_str(); }
    termios settings() const
    {
        termios settings = {};
        if (tcgetattr(m_file, &settings) != 0)
            qFatal("No settings");
        return settings;
    }
    void setSettings(const termios& settings) const
    {
        if (tcsetattr(m_file, TCSANOW, &settings) != 0)
            qFatal("Settings refused");
    }
    void send(const QByteArray& bytes) const
    {
        if (::write(m_file, bytes.constData(), static_cast<size_t>(bytes.size())) != bytes.size())
            qFatal("Short write");
    }
    /// What has arrived, once there is something or the time is over.
    QByteArray received(int milliseconds = 5000) const
    {
        pollfd wait = {m_file, POLLIN, 0};
        if (poll(&wait, 1, milliseconds) != 1)
            return {};
        QByteArray bytes(4096, '\0');
        const auto count = ::read(m_file, bytes.data(), static_cast<size_t>(bytes.size()));
        bytes.resize(static_cast<int>(count));
        return bytes;
    }
    void vanish()
    {
        if (m_file >= 0)
            ::close(m_file);
        m_file = -1;
    }

private:
    int m_file;
    std::string m_path;
};

using Port = std::unique_ptr<CSerialPort>;

inline Port newPort()
{
    return Port(CSerialPort::CreateObject());
}

/// The result of one read that brought bytes, once there is one or the time is over.
inline QByteArray readFrom(CSerialPort& port, int length = 100)
{
    QByteArray bytes(length, '\0');
    int count = 0;
    const bool arrived = QTest::qWaitFor([&] {
        count = port.read(bytes.data(), length);
        return count > 0;
    });
    bytes.resize(arrived ? count : 0);
    return bytes;
}

#endif
