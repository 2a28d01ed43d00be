#ifndef SERIALPORT_SERIALPORT_POSIX_H
#define SERIALPORT_SERIALPORT_POSIX_H

#include "serialport/serialport.h"

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

private:
    void applySettings();
    int checked(const char* function, long result);
    void logFailure(const char* function, const char* path, int error) const;

    BAUDRATE m_rate = BAUDRATE_9600;
    int m_nFile = -1;
    std::string m_strPath;
    int m_loggedError = 0; // of the last failed transfer; 0 once bytes have flowed again
};

#endif
