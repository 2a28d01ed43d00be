#include "serialport/serialport.h"

#include "serialport/serialport_posix.h"

CSerialPort::~CSerialPort() = default;

bool CSerialPort::setExclusive(bool exclusive)
{
    return !exclusive;
}

int CSerialPort::lastError() const
{
    return 0;
}

std::int64_t CSerialPort::holder() const
{
    return 0;
}

CSerialPort* CSerialPort::CreateObject()
{
    return new CSerialPort_posix;
}
