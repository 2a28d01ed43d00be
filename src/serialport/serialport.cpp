#include "serialport/serialport.h"

#include "serialport/serialport_posix.h"

CSerialPort::~CSerialPort() = default;

CSerialPort* CSerialPort::CreateObject()
{
    return new CSerialPort_posix;
}
