#include "serialport/serialport_posix.h"

#include "serialport/lineholder_p.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace {

// The value of a control character that is switched off.
constexpr cc_t kDisabled = 0xFF;

#ifdef CBAUD
// Some C libraries define the speeds as plain numbers, which are no codes of this field: OR-ed in,
// they would set other flags.
static_assert((B9600 & ~CBAUD) == 0 && (B19200 & ~CBAUD) == 0 && (B38400 & ~CBAUD) == 0,
              "the speed constants are not codes of the field CBAUD");
#endif

// The platform's speed constants are OR-ed into the control flags as they are, and that is meant:
// the speed functions are not called. Where the constants are codes in a field of those flags, as
// on Linux (B19200, B38400, B9600), the field is cleared first; elsewhere they are the numbers.
void mergeRate(termios& settings, BAUDRATE rate)
{
    tcflag_t speed = B9600;
    if (rate == BAUDRATE_19200)
        speed = B19200;
    else if (rate == BAUDRATE_38400)
        speed = B38400;
#ifdef CBAUD
    settings.c_cflag &= ~static_cast<tcflag_t>(CBAUD);
#endif
    settings.c_cflag |= speed;
}

void clearFlags(tcflag_t& flags, tcflag_t cleared)
{
    flags &= ~cleared;
}

} // namespace

CSerialPort_posix::~CSerialPort_posix()
{
    CSerialPort_posix::close();
}

bool CSerialPort_posix::open(const char* path)
{
    if (m_bOpen)
        return true;
    if (!path)
        return failedToOpen("", EFAULT);
    std::string ownPath = path;
    m_nFile = ::open(path, O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    // The line of somebody else keeps its settings and its data: it is taken first.
    if (m_nFile < 0 || (m_isExclusive && !takeLine()))
        return failedToOpen(path, errno);
    m_strPath = std::move(ownPath);
    m_lastError = 0;
    m_holder = 0;
    applySettings();
    m_bOpen = true;
    return true;
}

// False with errno set. The lock keeps out other exclusive openers, whoever they are. The mark
// keeps out openers that do not ask for the lock, but never those of root.
bool CSerialPort_posix::takeLine()
{
    if (flock(m_nFile, LOCK_EX | LOCK_NB) != 0) {
        if (errno == EWOULDBLOCK)
            errno = EBUSY;
        return false;
    }
    m_hasLine = true;
    // A node that is no terminal has no such mark; it has the lock.
    return ioctl(m_nFile, TIOCEXCL) == 0 || errno == ENOTTY;
}

bool CSerialPort_posix::failedToOpen(const char* path, int error)
{
    closeFile();
    m_lastError = error;
    m_holder = error == EBUSY ? lineHolder(path) : 0;
    return false;
}

void CSerialPort_posix::applySettings()
{
    termios settings = {};
    if (tcgetattr(m_nFile, &settings) != 0) {
        m_lastError = errno;
        return;
    }
    settings.c_cflag |= CLOCAL | CREAD;
    mergeRate(settings, m_rate);
    clearFlags(settings.c_cflag, PARENB | CSTOPB | CSIZE);
    settings.c_cflag |= CS8;
    clearFlags(settings.c_lflag, ICANON | ISIG | ECHO | ECHOE | ECHOK | ECHONL);
    clearFlags(settings.c_iflag, IGNPAR | PARMRK | INPCK | ISTRIP | ICRNL | IXANY);
    clearFlags(settings.c_oflag, OPOST);
    for (int character : {VINTR, VQUIT, VSUSP, VSTART, VSTOP})
        settings.c_cc[character] = kDisabled;
    // Where another value means "off", as on Linux, 0xFF would be the character that stops and
    // starts the line: it would be swallowed, and the output would halt. Without IXON it is not.
    if (kDisabled != _POSIX_VDISABLE)
        clearFlags(settings.c_iflag, IXON);
    settings.c_cc[VMIN] = 0;
    settings.c_cc[VTIME] = static_cast<cc_t>(std::clamp(m_nTimeOut / 100, 0, 255));
    if (tcsetattr(m_nFile, TCSAFLUSH, &settings) != 0 || tcflush(m_nFile, TCIOFLUSH) != 0)
        m_lastError = errno;
}

void CSerialPort_posix::close()
{
    if (!m_bOpen)
        return;
    closeFile();
    m_bOpen = false;
    m_strPath.clear();
}

// The marks are taken back by hand: a child process that has inherited the descriptor would keep
// the lock, and whoever else has the line open would keep it closed to others.
void CSerialPort_posix::closeFile()
{
    if (m_nFile < 0)
        return;
    if (m_hasLine) {
        ioctl(m_nFile, TIOCNXCL);
        flock(m_nFile, LOCK_UN);
    }
    m_hasLine = false;
    ::close(m_nFile);
    m_nFile = -1;
}

int CSerialPort_posix::read(char* buffer, int length)
{
    if (!m_bOpen)
        return 0;
    // A negative length would be a huge one to the system.
    return checked(::read(m_nFile, buffer, static_cast<size_t>(std::max(length, 0))));
}

int CSerialPort_posix::write(const char* buffer, int length)
{
    if (!m_bOpen)
        return 0;
    return checked(::write(m_nFile, buffer, static_cast<size_t>(std::max(length, 0))));
}

int CSerialPort_posix::checked(long result)
{
    if (result < 0)
        m_lastError = errno;
    return static_cast<int>(result);
}

bool CSerialPort_posix::setTimeOut(int milliseconds)
{
    if (m_bOpen)
        return false;
    m_nTimeOut = milliseconds;
    return true;
}

bool CSerialPort_posix::setBaudRate(BAUDRATE rate)
{
    m_rate = rate;
    return true;
}

bool CSerialPort_posix::setExclusive(bool exclusive)
{
    if (m_bOpen)
        return false;
    m_isExclusive = exclusive;
    return true;
}

int CSerialPort_posix::lastError() const
{
    return m_lastError;
}

std::int64_t CSerialPort_posix::holder() const
{
    return m_holder;
}
