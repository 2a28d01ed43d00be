#include "serialport/serialport_posix.h"

#include "LogTask/clog.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

namespace {

// The value of a control character that is switched off.
constexpr cc_t disabled = 0xFF;

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
        return false;
    const int file = ::open(path, O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (file < 0) {
        logFailure("open", path, errno);
        return false;
    }
    m_nFile = file;
    m_strPath = path;
    m_loggedError = 0;
    applySettings();
    m_bOpen = true;
    return true;
}

void CSerialPort_posix::applySettings()
{
    termios settings = {};
    if (tcgetattr(m_nFile, &settings) != 0) {
        logFailure("open", m_strPath.c_str(), errno);
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
        settings.c_cc[character] = disabled;
    // Where another value means "off", as on Linux, 0xFF would be the character that stops and
    // starts the line: it would be swallowed, and the output would halt. Without IXON it is not.
    if (disabled != _POSIX_VDISABLE)
        clearFlags(settings.c_iflag, IXON);
    settings.c_cc[VMIN] = 0;
    settings.c_cc[VTIME] = static_cast<cc_t>(std::clamp(m_nTimeOut / 100, 0, 255));
    if (tcsetattr(m_nFile, TCSAFLUSH, &settings) != 0 || tcflush(m_nFile, TCIOFLUSH) != 0)
        logFailure("open", m_strPath.c_str(), errno);
}

void CSerialPort_posix::close()
{
    if (!m_bOpen)
        return;
    ::close(m_nFile);
    m_nFile = -1;
    m_bOpen = false;
    m_strPath.clear();
}

int CSerialPort_posix::read(char* buffer, int length)
{
    if (!m_bOpen)
        return 0;
    // A negative length would be a huge one to the system.
    return checked("read", ::read(m_nFile, buffer, static_cast<size_t>(std::max(length, 0))));
}

int CSerialPort_posix::write(const char* buffer, int length)
{
    if (!m_bOpen)
        return 0;
    return checked("write", ::write(m_nFile, buffer, static_cast<size_t>(std::max(length, 0))));
}

// Logs the reason of a failed transfer, once until bytes flow again; "nothing there now" is none.
int CSerialPort_posix::checked(const char* function, long result)
{
    const int error = result < 0 ? errno : 0;
    if (error != 0 && error != EAGAIN && error != EWOULDBLOCK && error != m_loggedError) {
        m_loggedError = error;
        logFailure(function, m_strPath.c_str(), error);
    } else if (result > 0) {
        m_loggedError = 0;
    }
    return static_cast<int>(result);
}

void CSerialPort_posix::logFailure(const char* function, const char* path, int error) const
{
    CLogFile() << "serialport/serialport_posix" << function << QFile::decodeName(path)
               << std::strerror(error);
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
