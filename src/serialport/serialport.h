#ifndef SERIALPORT_SERIALPORT_H
#define SERIALPORT_SERIALPORT_H

#include "wzrframework_export.h"

#include <cstdint>

/// The speed of the line. Any value beside the two others means 9600 bit/s.
enum BAUDRATE : int { BAUDRATE_9600 = 0, BAUDRATE_19200 = 1, BAUDRATE_38400 = 2 };

/// A raw serial line: bytes in and out, eight data bits, no parity, one stop bit, no echo, and
/// nothing that blocks. An object belongs to one thread at a time.
///
/// Failures are results, as each operation says; the port writes nothing to the log. The reason of
/// the last failure is lastError().
class WZRFRAMEWORK_EXPORT CSerialPort
{
public:
    /// Closes the port.
    virtual ~CSerialPort();
    CSerialPort(const CSerialPort&) = delete;
    CSerialPort& operator=(const CSerialPort&) = delete;

    /// Opens the device node (a path in the system's encoding), fixes the line's settings and
    /// discards what was pending in both directions. False when the node cannot be opened. A node
    /// that is no terminal is opened all the same, without settings: then the result is true and
    /// lastError() says why there are none. An open port stays as it is, whatever the path, with
    /// true. See setExclusive() for a line that nobody else may use.
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

    /// Whether the next open() takes the line for this port alone; false at first. Two openers of
    /// one line get a part of the answers each. An open port refuses with false. An exclusive
    /// open()
    /// - fails with EBUSY when another port or process has the line exclusively, also one of the
    /// same
    ///   user, of root, or of this process (an advisory lock, `flock`, on the node); nothing is
    ///   changed or discarded then;
    /// - keeps programs that know nothing of the lock from opening the line, but for those of root
    ///   (`TIOCEXCL`). One that had it open before, not exclusively, is not noticed.
    /// close() gives the line free. So does the end of the process, with one exception of the
    /// system: `TIOCEXCL` stays while somebody else has the line open, and the far side of a
    /// pseudo-terminal counts. After a crash such a line can be opened again by root only, until
    /// its far side has been closed.
    /// A port of another make that does not offer it returns false for true.
    virtual bool setExclusive(bool exclusive);

    /// The `errno` of the last open(), read() or write() that failed: 0 before the first failure
    /// and again after a successful open(). EAGAIN is a read with no data there, or a write to a
    /// line that takes no more; EBUSY is a line that another has exclusively. close() leaves it.
    virtual int lastError() const;

    /// The process id of who had the line when open() failed with EBUSY; 0 when that cannot be
    /// known (the system shows no processes of other users, or the one in the way has gone), and
    /// after any other open().
    virtual std::int64_t holder() const;

    /// A new, closed port of this platform. The caller deletes it.
    static CSerialPort* CreateObject();

protected:
    CSerialPort() = default;

    bool m_bOpen = false;
    std::int32_t m_nTimeOut = 0; ///< milliseconds
};

#endif
