#ifndef SERIALPORT_SERIALPORT_POSIX_H
#define SERIALPORT_SERIALPORT_POSIX_H

#include "serialport/serialport.h"

#include <cstdint>
#include <string>

/// The serial line on the POSIX terminal interface. It holds the one descriptor of the device.
class CSerialPort_posix final : public CSerialPort
{
public:
    CSerialPort_posix() = default;
    ~CSerialPort_posix() override;

    bool open(const char* path) override;
    void close() override;
    int read(char* buffer, int length) override;
    int write(const char* buffer, int length) override;
    bool setTimeOut(int milliseconds) override;
    bool setBaudRate(BAUDRATE rate) override;
    bool setExclusive(bool exclusive) override;
    int lastError() const override;
    std::int64_t holder() const override;

private:
    bool takeLine();
    void applySettings();
    int checked(long result);
    bool failedToOpen(const char* path, int error);
    void closeFile();

    BAUDRATE m_rate = BAUDRATE_9600;
    int m_nFile = -1;
    std::string m_strPath;
    bool m_isExclusive = false;
    bool m_hasLine = false; // the marks of an exclusive open() are set
    int m_lastError = 0;
    std::int64_t m_holder = 0;
};

#endif
