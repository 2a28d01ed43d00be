#include "serialport/serialport.h"

#include "farend.h"
#include "support/logcapture.h"

#include <QDir>
#include <QElapsedTimer>
#include <QScopeGuard>
#include <QTest>

#include <cerrno>

#include <sys/wait.h>

namespace {

int countOpenFiles()
{
    return static_cast<int>(QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::Files).size());
}

} // namespace

class tst_serialport : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void makesARawLine();
    void leavesOtherSettingsAlone();
    void appliesTheRate_data();
    void appliesTheRate();
    void rateReplacesTheDevicesOwn();
    void rateWithoutAChoiceIs9600();
    void rateTakesEffectAtTheNextOpen();
    void timeOutBecomesTenthsOfASecond_data();
    void timeOutBecomesTenthsOfASecond();
    void timeOutIsRefusedWhileOpen();
    void secondOpenChangesNothing();
    void discardsWhatWasPending();
    void carriesBytesUnchanged();
    void readTakesAtMostTheLength();
    void readWithoutDataReturnsAtOnce_data();
    void readWithoutDataReturnsAtOnce();
    void closedPortTransfersNothing();
    void negativeLengthTransfersNothing();
    void opensAgainAfterClose();
    void missingDeviceTellsItsCause();
    void nodeThatIsNoTerminalOpens();
    void noPathDoesNotOpen();
    void vanishedPeerFailsTransfers();
    void failuresReachNoLog();
    void causeIsToldAgainAfterBytesFlowed();
    void fullLineTakesNoMore();
    void destructionClosesTheDevice();
    void doesNotBecomeTheControllingTerminal();
};

void tst_serialport::makesARawLine()
{
    FarEnd modem;
    termios before = modem.settings();
    before.c_cflag |= PARENB | CSTOPB;
    before.c_cflag &= ~static_cast<tcflag_t>(CREAD | CLOCAL);
    before.c_lflag |= ICANON | ISIG | ECHO | ECHOE | ECHOK | ECHONL;
    before.c_iflag |= IGNPAR | PARMRK | INPCK | ISTRIP | ICRNL | IXANY;
    before.c_oflag |= OPOST;
    before.c_cc[VMIN] = 7;
    modem.setSettings(before);

    const Port port = newPort();
    QVERIFY(port->open(modem.path()));
    const termios now = modem.settings();
    const auto set = static_cast<tcflag_t>(CLOCAL | CREAD);
    QCOMPARE(now.c_cflag & set, set);
    QCOMPARE(now.c_cflag & (PARENB | CSTOPB), tcflag_t(0));
    QCOMPARE(now.c_cflag & CSIZE, tcflag_t(CS8));
    QCOMPARE(now.c_lflag & (ICANON | ISIG | ECHO | ECHOE | ECHOK | ECHONL), tcflag_t(0));
    QCOMPARE(now.c_iflag & (IGNPAR | PARMRK | INPCK | ISTRIP | ICRNL | IXANY), tcflag_t(0));
    QCOMPARE(now.c_oflag & OPOST, tcflag_t(0));
    for (int character : {VINTR, VQUIT, VSUSP, VSTART, VSTOP})
        QCOMPARE(int(now.c_cc[character]), 0xFF);
    QCOMPARE(int(now.c_cc[VMIN]), 0);
    QCOMPARE(int(now.c_cc[VTIME]), 0);
}

void tst_serialport::leavesOtherSettingsAlone()
{
    FarEnd modem;
    termios before = modem.settings();
    before.c_lflag |= NOFLSH;
    before.c_iflag |= IGNBRK;
    before.c_cflag |= HUPCL;
    before.c_cc[VKILL] = 0x33;
    modem.setSettings(before);
    const Port port = newPort();
    QVERIFY(port->open(modem.path()));
    const termios now = modem.settings();
    QVERIFY(now.c_lflag & NOFLSH);
    QVERIFY(now.c_iflag & IGNBRK);
    QVERIFY(now.c_cflag & HUPCL);
    QCOMPARE(int(now.c_cc[VKILL]), 0x33);
}

void tst_serialport::appliesTheRate_data()
{
    QTest::addColumn<int>("rate");
    QTest::addColumn<int>("speed");
    QTest::newRow("1") << 1 << int(B19200);
    QTest::newRow("2") << 2 << int(B38400);
    QTest::newRow("0") << 0 << int(B9600);
    QTest::newRow("3") << 3 << int(B9600);
    QTest::newRow("negative") << -1 << int(B9600);
}

void tst_serialport::appliesTheRate()
{
    QFETCH(int, rate);
    FarEnd modem;
    const Port port = newPort();
    QVERIFY(port->setBaudRate(static_cast<BAUDRATE>(rate)));
    QVERIFY(port->open(modem.path()));
    const termios now = modem.settings();
    QTEST(int(cfgetospeed(&now)), "speed");
    QTEST(int(cfgetispeed(&now)), "speed");
}

void tst_serialport::rateReplacesTheDevicesOwn()
{
    FarEnd modem;
    termios before = modem.settings();
    cfsetspeed(&before, B115200);
    modem.setSettings(before);
    const Port port = newPort();
    port->setBaudRate(BAUDRATE_19200);
    QVERIFY(port->open(modem.path()));
    const termios now = modem.settings();
    QCOMPARE(int(cfgetospeed(&now)), int(B19200));
}

void tst_serialport::rateWithoutAChoiceIs9600()
{
    FarEnd modem;
    const Port port = newPort();
    QVERIFY(port->open(modem.path()));
    const termios now = modem.settings();
    QCOMPARE(int(cfgetospeed(&now)), int(B9600));
}

void tst_serialport::rateTakesEffectAtTheNextOpen()
{
    FarEnd modem;
    const Port port = newPort();
    port->setBaudRate(BAUDRATE_19200);
    QVERIFY(port->open(modem.path()));
    QVERIFY(port->setBaudRate(BAUDRATE_38400));
    termios now = modem.settings();
    QCOMPARE(int(cfgetospeed(&now)), int(B19200));
    port->close();
    QVERIFY(port->open(modem.path()));
    now = modem.settings();
    QCOMPARE(int(cfgetospeed(&now)), int(B38400));
}

void tst_serialport::timeOutBecomesTenthsOfASecond_data()
{
    QTest::addColumn<int>("milliseconds");
    QTest::addColumn<int>("tenths");
    QTest::newRow("250") << 250 << 2;
    QTest::newRow("none") << 0 << 0;
    QTest::newRow("below a tenth") << 99 << 0;
    QTest::newRow("a tenth") << 100 << 1;
    QTest::newRow("longest") << 25500 << 255;
    QTest::newRow("too long") << 25600 << 255;
    QTest::newRow("negative") << -500 << 0;
}

void tst_serialport::timeOutBecomesTenthsOfASecond()
{
    QFETCH(int, milliseconds);
    FarEnd modem;
    const Port port = newPort();
    QVERIFY(port->setTimeOut(milliseconds));
    QVERIFY(port->open(modem.path()));
    QTEST(int(modem.settings().c_cc[VTIME]), "tenths");
}

void tst_serialport::timeOutIsRefusedWhileOpen()
{
    FarEnd modem;
    const Port port = newPort();
    QVERIFY(port->setTimeOut(300));
    QVERIFY(port->open(modem.path()));
    QVERIFY(!port->setTimeOut(700));
    QCOMPARE(int(modem.settings().c_cc[VTIME]), 3);
    port->close();
    QVERIFY(port->open(modem.path()));
    QCOMPARE(int(modem.settings().c_cc[VTIME]), 3);
    port->close();
    QVERIFY(port->setTimeOut(700));
}

void tst_serialport::secondOpenChangesNothing()
{
    FarEnd modem;
    FarEnd other;
    const Port port = newPort();
    QVERIFY(port->open(modem.path()));
    modem.send("AT");
    termios changed = modem.settings();
    changed.c_cc[VTIME] = 9;
    modem.setSettings(changed);
    const int files = countOpenFiles();

    QVERIFY(port->open(modem.path()));
    QVERIFY(port->open(other.path()));
    QVERIFY(port->open("/nowhere"));
    QVERIFY(port->open(nullptr));
    QCOMPARE(countOpenFiles(), files);
    QCOMPARE(int(modem.settings().c_cc[VTIME]), 9);
    QCOMPARE(readFrom(*port), QByteArray("AT"));
}

void tst_serialport::discardsWhatWasPending()
{
    FarEnd modem;
    // Somebody else keeps the device open, so that its input outlives the time before our open.
    const int holder = ::open(modem.path(), O_RDWR | O_NOCTTY | O_NONBLOCK);
    QVERIFY(holder >= 0);
    const auto release = qScopeGuard([holder] { ::close(holder); });
    termios raw = modem.settings();
    cfmakeraw(&raw);
    modem.setSettings(raw);
    modem.send("stale");
    pollfd wait = {holder, POLLIN, 0};
    QCOMPARE(poll(&wait, 1, 5000), 1);
    const Port port = newPort();
    QVERIFY(port->open(modem.path()));
    modem.send("fresh");
    QCOMPARE(readFrom(*port), QByteArray("fresh"));
}

void tst_serialport::carriesBytesUnchanged()
{
    FarEnd modem;
    const Port port = newPort();
    QVERIFY(port->open(modem.path()));
    const QByteArray bytes("AT\r\n\x03\x04\x1A\x1C\x7F\x80\xFF\0end", 15);
    QCOMPARE(port->write(bytes.constData(), static_cast<int>(bytes.size())), 15);
    QCOMPARE(modem.received(), bytes);
    modem.send(bytes);
    QCOMPARE(readFrom(*port), bytes);
    // Nothing came back as an echo.
    QCOMPARE(modem.received(0), QByteArray());
}

void tst_serialport::readTakesAtMostTheLength()
{
    FarEnd modem;
    const Port port = newPort();
    QVERIFY(port->open(modem.path()));
    modem.send("abcdef");
    QCOMPARE(readFrom(*port, 4), QByteArray("abcd"));
    QCOMPARE(readFrom(*port, 4), QByteArray("ef"));
}

void tst_serialport::readWithoutDataReturnsAtOnce_data()
{
    QTest::addColumn<int>("timeOut");
    QTest::newRow("without a time-out") << 0;
    QTest::newRow("with the longest time-out") << 25500;
}

void tst_serialport::readWithoutDataReturnsAtOnce()
{
    QFETCH(int, timeOut);
    FarEnd modem;
    const Port port = newPort();
    port->setTimeOut(timeOut);
    QVERIFY(port->open(modem.path()));
    QElapsedTimer timer;
    timer.start();
    char byte = 0;
    QVERIFY(port->read(&byte, 1) <= 0);
    QVERIFY(timer.elapsed() < 5000);
    modem.send("x");
    QCOMPARE(readFrom(*port), QByteArray("x"));
}

void tst_serialport::closedPortTransfersNothing()
{
    FarEnd modem;
    const Port port = newPort();
    char byte = 0;
    QCOMPARE(port->read(&byte, 1), 0);
    QCOMPARE(port->write("x", 1), 0);
    port->close();
    QVERIFY(port->open(modem.path()));
    port->close();
    port->close();
    QCOMPARE(port->read(&byte, 1), 0);
    QCOMPARE(port->write("x", 1), 0);
    QCOMPARE(modem.received(0), QByteArray());
}

void tst_serialport::negativeLengthTransfersNothing()
{
    FarEnd modem;
    const Port port = newPort();
    QVERIFY(port->open(modem.path()));
    modem.send("abc");
    char byte = '?';
    QCOMPARE(port->read(&byte, -1), 0);
    QCOMPARE(port->write("x", -1), 0);
    QCOMPARE(byte, '?');
    QCOMPARE(readFrom(*port), QByteArray("abc"));
    QCOMPARE(modem.received(0), QByteArray());
}

void tst_serialport::opensAgainAfterClose()
{
    FarEnd first;
    FarEnd second;
    const Port port = newPort();
    QVERIFY(port->open(first.path()));
    port->close();
    QVERIFY(port->open(second.path()));
    QCOMPARE(port->write("x", 1), 1);
    QCOMPARE(second.received(), QByteArray("x"));
}

void tst_serialport::missingDeviceTellsItsCause()
{
    const Port port = newPort();
    QCOMPARE(port->lastError(), 0);
    QVERIFY(!port->open("/dev/no such modem"));
    QCOMPARE(port->lastError(), ENOENT);
    QCOMPARE(port->holder(), std::int64_t(0));
    char byte = 0;
    QCOMPARE(port->read(&byte, 1), 0);
    QCOMPARE(port->lastError(), ENOENT);
    FarEnd modem;
    QVERIFY(port->open(modem.path()));
    QCOMPARE(port->lastError(), 0);
}

void tst_serialport::nodeThatIsNoTerminalOpens()
{
    const Port port = newPort();
    QVERIFY(port->open("/dev/null"));
    QCOMPARE(port->lastError(), ENOTTY);
    QCOMPARE(port->write("x", 1), 1);
    QCOMPARE(port->lastError(), ENOTTY);
}

void tst_serialport::noPathDoesNotOpen()
{
    const Port port = newPort();
    QVERIFY(!port->open(nullptr));
    QCOMPARE(port->lastError(), EFAULT);
    QVERIFY(!port->open(""));
    QCOMPARE(port->lastError(), ENOENT);
}

void tst_serialport::vanishedPeerFailsTransfers()
{
    FarEnd modem;
    const Port port = newPort();
    QVERIFY(port->open(modem.path()));
    char byte = 0;
    modem.send("a");
    QCOMPARE(readFrom(*port), QByteArray("a"));
    modem.vanish();
    QVERIFY(port->read(&byte, 1) <= 0);
    QVERIFY(port->write("x", 1) < 0);
    QCOMPARE(port->lastError(), EIO);
    QVERIFY(port->read(&byte, 1) <= 0);
    QVERIFY(port->write("x", 1) < 0);
    port->close();
    QCOMPARE(port->lastError(), EIO);
}

void tst_serialport::failuresReachNoLog()
{
    const LogCapture log;
    FarEnd modem;
    const Port port = newPort();
    QVERIFY(!port->open("/dev/no such modem"));
    QVERIFY(port->open(modem.path()));
    char byte = 0;
    QVERIFY(port->read(&byte, 1) <= 0);
    modem.vanish();
    QVERIFY(port->write("x", 1) < 0);
    port->close();
    QVERIFY(port->open("/dev/null"));
    QCOMPARE(log.lines(), QStringList());
}

void tst_serialport::causeIsToldAgainAfterBytesFlowed()
{
    FarEnd modem;
    const Port port = newPort();
    port->setTimeOut(100);
    QVERIFY(port->open(modem.path()));
    char byte = 0;
    QCOMPARE(port->read(&byte, 1), -1);
    QCOMPARE(port->lastError(), EAGAIN);
    QCOMPARE(port->write("x", 1), 1);
    QCOMPARE(port->lastError(), EAGAIN);
    modem.vanish();
    QVERIFY(port->write("x", 1) < 0);
    QCOMPARE(port->lastError(), EIO);
    FarEnd other;
    port->close();
    QVERIFY(port->open(other.path()));
    QCOMPARE(port->write("x", 1), 1);
    QCOMPARE(port->lastError(), 0);
    other.vanish();
    QVERIFY(port->write("x", 1) < 0);
    QCOMPARE(port->lastError(), EIO);
}

void tst_serialport::fullLineTakesNoMore()
{
    FarEnd modem;
    const Port port = newPort();
    QVERIFY(port->open(modem.path()));
    const QByteArray block(65536, 'x');
    int result = 0;
    qint64 taken = 0;
    for (int round = 0; round < 1000 && result >= 0; ++round) {
        result = port->write(block.constData(), static_cast<int>(block.size()));
        taken += qMax(0, result);
    }
    QVERIFY(result < 0);
    QCOMPARE(port->lastError(), EAGAIN);
    QVERIFY(taken > 0);
    while (taken > 0) {
        const QByteArray bytes = modem.received();
        QVERIFY(!bytes.isEmpty());
        taken -= bytes.size();
    }
    QTRY_COMPARE(port->write("y", 1), 1);
}

void tst_serialport::destructionClosesTheDevice()
{
    FarEnd modem;
    const int files = countOpenFiles();
    Port port = newPort();
    QVERIFY(port->open(modem.path()));
    QCOMPARE(countOpenFiles(), files + 1);
    port.reset();
    QCOMPARE(countOpenFiles(), files);
}

void tst_serialport::doesNotBecomeTheControllingTerminal()
{
    FarEnd modem;
    const pid_t child = fork();
    QVERIFY(child >= 0);
    if (child == 0) {
        // A session of its own has no controlling terminal yet: the first terminal opened
        // without O_NOCTTY would become it.
        setsid();
        CSerialPort* const port = CSerialPort::CreateObject();
        const bool opened = port->open(modem.path());
        _exit(opened && ::open("/dev/tty", O_RDWR) < 0 ? 0 : 1);
    }
    int status = -1;
    QCOMPARE(waitpid(child, &status, 0), child);
    QVERIFY(WIFEXITED(status));
    QCOMPARE(WEXITSTATUS(status), 0);
}

QTEST_GUILESS_MAIN(tst_serialport)
#include "tst_serialport.moc"
