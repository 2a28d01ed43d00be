#ifndef SERIALPORT_SERIALPORT_H
#define SERIALPORT_SERIALPORT_H

#include "wzrframework_export.h"

#include <cstdint>

/// The speed of the line. Any value beside the two others means 9600 bit/s.
enum BAUDRATE : int { BAUDRATE_9600 = 0, BAUDRATE_19200 = 1, BAUDRATE_38400 = 2 };

/// A raw serial line: bytes in and out, eight data bits, no parity, one stop bit, no echo, and
/// nothing that blocks. An object belongs to one thread at a time.
///
/// Failures are results, as each operation says; the reason stands in the log, once per series of
/// equal ones.
class WZRFRAMEWORK_EXPORT CSerialPort
{
public:
    /// Closes the port.
    virtual ~CSerialPort();
    CSerialPort(const CSerialPort&) = delete;
    CSerialPort& operator=(const CSerialPort&) = delete;

    /// Opens the device node (a path in the system's encoding), fixes the line's settings and
    /// discards what was pending in both directions. False when the node cannot be opened. A node
    /// that is no terminal is opened all the same, without settings. An open port stays as it is,
    /// whatever the path, with true.
    virtual bool open(const char* path) = 0;

    /// Closes the device; nothing happens on a closed port.
    virtual void close() = 0;

    /// Reads at most `length` bytes in one system call and returns their count. It never waits:
    /// with no data there, the result is negative (would block) or 0, whatever the time-out.
    /// Negative when the read fails, 0 at the end of the line (the device is gone) and on a closed
    /// port.
    virtual int read(char* buffer, int length) = 0;

    /// Writes in one system call and returns the count of bytes that the device took, which may be
    /// fewer than `length`. Negative when the write fails, 0 on a closed port.
    virtual int write(const char* buffer, int length) = 0;

    /// The time-out of the line in milliseconds, 0 to 25500, kept in tenths of a second: 250
    /// becomes 200. What lies outside is taken as the nearer limit. It takes effect at the next
    /// open(); an open port refuses it with false and keeps the old one.
    virtual bool setTimeOut(int milliseconds) = 0;

    /// The speed from the next open() on; always true. Without any it is 9600 bit/s.
    virtual bool setBaudRate(BAUDRATE rate) = 0;

    /// A new, closed port of this platform. The caller deletes it.
    static CSerialPort* CreateObject();

protected:
    CSerialPort() = default;

    bool m_bOpen = false;
    std::int32_t m_nTimeOut = 0; ///< milliseconds
};

#endif
