#include "serialport/serialport.h"

#include "support/childprocess.h"
#include "support/testfile.h"

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <memory>
#include <set>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

// The device node as a program opens it that knows nothing of terminals: without settings, and
// discarding nothing.
class PlainPort final : public CSerialPort
{
public:
    ~PlainPort() override { close(); }
    bool open(const char* path) override
    {
        m_file = ::open(path, O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
        return m_file >= 0;
    }
    void close() override
    {
        if (m_file >= 0)
            ::close(m_file);
        m_file = -1;
    }
    int read(char* buffer, int length) override
    {
        return static_cast<int>(::read(m_file, buffer, static_cast<size_t>(length)));
    }
    int write(const char* buffer, int length) override
    {
        return static_cast<int>(::write(m_file, buffer, static_cast<size_t>(length)));
    }
    bool setTimeOut(int) override { return false; }
    bool setBaudRate(BAUDRATE) override { return false; }

private:
    int m_file = -1;
};

// A host that talks to the modem at its device node; it owns the port.
class Host
{
public:
    explicit Host(const QString& link, CSerialPort* port = CSerialPort::CreateObject())
        : m_port(port)
    {
        if (!m_port->open(QFile::encodeName(link).constData()))
            qFatal("Cannot open %s", qPrintable(link));
    }

    void send(const QByteArray& bytes)
    {
        if (m_port->write(bytes.constData(), static_cast<int>(bytes.size())) != bytes.size())
            qFatal("Short write");
    }
    // Waits until what has come since the last call ends so; returns it, whatever it is in the end.
    QByteArray receive(const QByteArray& end)
    {
        const auto isThere = [this, &end] {
            readAll();
            return m_received.endsWith(end);
        };
        if (!QTest::qWaitFor(isThere, 30000))
            qWarning("Received only \"%s\"", m_received.left(1000).constData());
        QByteArray received;
        received.swap(m_received);
        return received;
    }
    QByteArray ask(const QByteArray& line, const QByteArray& end = "\r\nOK\r\n")
    {
        send(line + '\r');
        return receive(end);
    }
    // 0: the device is gone; negative: there is nothing, or the device has failed.
    int readOnce()
    {
        char bytes[65536];
        const int count = m_port->read(bytes, sizeof bytes);
        if (count > 0)
            m_received.append(bytes, count);
        return count;
    }

private:
    void readAll()
    {
        while (readOnce() > 0) {
        }
    }

    std::unique_ptr<CSerialPort> m_port;
    QByteArray m_received;
};

using Process = std::unique_ptr<ChildProcess>;

QString link(const QTemporaryDir& folder)
{
    return folder.filePath("modem");
}
QStringList arguments(const QTemporaryDir& folder, const QStringList& more)
{
    return QStringList{"--link", link(folder), "--log", folder.filePath("log"), "--signal-interval",
                       "0"} +
           more;
}
Process start(const QTemporaryDir& folder, const QStringList& more = {})
{
    auto process = std::make_unique<ChildProcess>(HELPER_MODEMSIMULATOR, arguments(folder, more),
                                                  folder.path());
    if (!process->says("modemsimulator ready: " + link(folder).toUtf8()))
        qFatal("The simulator does not get ready");
    return process;
}

// A simulator, and a host that has its echo switched off.
struct Pair
{
    explicit Pair(const QStringList& options = {})
        : modem(start(folder, options))
        , host(link(folder))
    {
        host.ask("ATE0");
    }

    QTemporaryDir folder;
    Process modem;
    Host host;
};

} // namespace

class tst_modemsimulator : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void answersAtASerialPort();
    void forgetsTheHalfLineOfASideThatHasClosed();
    void discardsWhatNobodyReads();
    void givesTheLineFreeOfAProgramThatCrashed();
    void keepsItsStateOverARestart();
    void letsHappenWhatIsEntered();
    void followsAScript();
    void refusesWhatItCannotUse_data();
    void refusesWhatItCannotUse();
    void replacesALinkThatWasLeftBehind();
    void leavesTheLinkOfAnotherAlone();
    void takesTheLineAwayWhenUnplugged();
    void removesTheLinkInTheEnd();
    void passesMegabytesOn();
    void answersLate();
    void movesTheSignalByItself();
    void tracesTheDialogue();
};

void tst_modemsimulator::answersAtASerialPort()
{
    Pair pair;
    QCOMPARE(pair.host.ask("ATE1"), QByteArray("\r\nOK\r\n"));
    QCOMPARE(pair.host.ask("ATE0"), QByteArray("ATE0\r\r\nOK\r\n"));
    QCOMPARE(pair.host.ask("AT+CGMM;+CSQ"),
             QByteArray("\r\nSimulated Modem\r\n\r\n+CSQ: 21,99\r\n\r\nOK\r\n"));
    pair.host.send(QByteArray("\x00\xff\x11\x13\x03\x04 noise\n", 13));
    QCOMPARE(pair.host.ask("AT"), QByteArray("\r\nOK\r\n"));
    QCOMPARE(pair.host.ask("AT+CMEE=1;+CMGF=1;+CPIN=\"1234\""), QByteArray("\r\nOK\r\n"));
    QCOMPARE(pair.host.ask("AT+CMGS=\"+15550108\"", "> "), QByteArray("\r\n> "));
    pair.host.send("Hello\x1a");
    QCOMPARE(pair.host.receive("OK\r\n"), QByteArray("\r\n+CMGS: 1\r\n\r\nOK\r\n"));
}

void tst_modemsimulator::forgetsTheHalfLineOfASideThatHasClosed()
{
    const QTemporaryDir folder;
    const Process modem = start(folder, {"--trace"});
    for (int i = 0; i < 3; ++i) {
        Host host(link(folder));
        host.ask("ATE0");
        host.send("AT+BOG");
        // So that it is not just lost on the line.
        QVERIFY(modem->says("trace: received: AT+BOG"));
    }
    Host host(link(folder));
    QCOMPARE(host.ask("AT"), QByteArray("\r\nOK\r\n"));
}

void tst_modemsimulator::discardsWhatNobodyReads()
{
    const QTemporaryDir folder;
    const Process modem = start(folder, {"--trace"});
    {
        Host host(link(folder), new PlainPort);
        host.ask("ATE0");
        modem->enter("report UNREAD");
        QVERIFY(modem->says("trace: sent: \\r\\nUNREAD"));
        host.send("AT+BOG");
        QVERIFY(modem->says("trace: received: AT+BOG"));
    }
    modem->enter("report UNHEARD");
    QVERIFY(modem->says("done: report UNHEARD"));
    Host host(link(folder), new PlainPort);
    QCOMPARE(host.ask("AT"), QByteArray("\r\nOK\r\n"));
    modem->enter("report HEARD");
    QCOMPARE(host.receive("D\r\n"), QByteArray("\r\nHEARD\r\n"));
}

void tst_modemsimulator::givesTheLineFreeOfAProgramThatCrashed()
{
    const QTemporaryDir folder;
    const Process modem = start(folder);
    const auto open = [&folder] {
        return ::open(QFile::encodeName(link(folder)).constData(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    };
    // The mark is not taken back, as by a program that is killed.
    const int crashed = open();
    QCOMPARE(::ioctl(crashed, TIOCEXCL), 0);
    ::close(crashed);
    // Root may open the line in any case, and sees the mark; others see that they may not.
    const auto isFree = [&open] {
        const int file = open();
        int isMarked = 1;
        const bool isUnmarked = ::ioctl(file, TIOCGEXCL, &isMarked) == 0 && isMarked == 0;
        ::close(file);
        return isUnmarked;
    };
    QVERIFY(QTest::qWaitFor(isFree, 30000));
}

void tst_modemsimulator::keepsItsStateOverARestart()
{
    const QTemporaryDir folder;
    const QStringList state = {"--state", folder.filePath("state.config")};
    {
        const Process modem = start(folder, state);
        Host host(link(folder));
        host.ask("ATE0;+CPIN=\"1234\"");
        host.ask("AT+CPWD=\"SC\",\"1234\",\"5678\";+CMGD=3;+CPBW=,\"555\",,\"New\";+COPS=1,2,"
                 "\"00102\"");
        modem->kill(); // it was saved at once
    }
    const Process modem = start(folder, state);
    Host host(link(folder));
    host.ask("ATE0;+CMEE=1");
    QCOMPARE(host.ask("AT+CPIN=\"1234\"", "16\r\n"), QByteArray("\r\n+CME ERROR: 16\r\n"));
    QCOMPARE(host.ask("AT+CPIN=\"5678\";+CPMS=\"SM\";+CPBR=4;+COPS?"),
             QByteArray("\r\n+CPMS: 7,20,7,20,7,20\r\n\r\n+CPBR: 4,\"555\",129,\"New\"\r\n"
                        "\r\n+COPS: 1,0,\"Sample Telecom\",2\r\n\r\nOK\r\n"));
}

void tst_modemsimulator::letsHappenWhatIsEntered()
{
    Pair pair;
    pair.host.ask("ATE0;+CMER=3,0,0,1;+CPIN=\"1234\"", "+CIEV: 3,1\r\n");
    pair.modem->enter("signal 7");
    QCOMPARE(pair.host.receive("2\r\n"), QByteArray("\r\n+CIEV: 2,2\r\n"));
    for (const char* line : {"dance", "signal", "after soon signal 1", "once", "after 1"}) {
        pair.modem->enter(line);
        QVERIFY(pair.modem->says(QByteArray("cannot do: ") + line));
    }
    pair.modem->enter("silence");
    QVERIFY(pair.modem->says("done: silence"));
    pair.host.send("AT\r");
    pair.modem->enter("after 1 talk");
    QVERIFY(pair.modem->says("done: talk"));
    pair.modem->enter("once +CREG signal 31");
    pair.modem->enter("report RING");
    QCOMPARE(pair.host.receive("RING\r\n"), QByteArray("\r\nRING\r\n"));
    QVERIFY(pair.host.ask("AT+CSQ").endsWith("\r\n+CSQ: 7,99\r\n\r\nOK\r\n"));
    QCOMPARE(pair.host.ask("AT+CREG?", "5\r\n"),
             QByteArray("\r\n+CREG: 0,1\r\n\r\nOK\r\n\r\n+CIEV: 2,5\r\n"));
}

void tst_modemsimulator::followsAScript()
{
    const QTemporaryDir folder;
    TestFile::write(folder.filePath("script"), "# the signal falls\n"
                                               "signal 20\r\n"
                                               "\n"
                                               "once +CMER signal 7\n"
                                               "  after 20 signal 1\n"
                                               "once +csq report RING\n"
                                               "drop\n"
                                               "fault final NO\n");
    const Process modem = start(folder, {"--script", folder.filePath("script")});
    QVERIFY(modem->says("done: signal 20"));
    Host host(link(folder));
    host.ask("ATE0");
    QCOMPARE(host.ask("AT+CSQ"), QByteArray("\r\n+CSQ: 20,99\r\n\r\nOK\r\n"));
    QCOMPARE(host.ask("AT+CMER=3,0,0,1", "2,1\r\n"),
             QByteArray("\r\nOK\r\n\r\n+CIEV: 2,2\r\n\r\n+CIEV: 2,1\r\n"));
    QCOMPARE(host.ask("AT+CSQ", "RING\r\n"),
             QByteArray("\r\n+CSQ: 1,99\r\n\r\nOK\r\n\r\nRING\r\n"));
    QVERIFY(modem->says("cannot do: drop")); // and goes on
    QVERIFY(modem->says("done: fault final NO"));
    QCOMPARE(host.ask("AT", "NO\r\n"), QByteArray("\r\nNO\r\n"));
}

void tst_modemsimulator::refusesWhatItCannotUse_data()
{
    QTest::addColumn<QStringList>("options"); // "%1": the folder
    QTest::addColumn<QByteArray>("reason");
    QTest::newRow("broken state")
        << QStringList{"--state", "%1/broken.config"}
        << QByteArray("modemsimulator: cannot read the state file %1/broken.config: it is no JSON "
                      "text in a file whose name ends in .config\n");
    QTest::newRow("script that is not there")
        << QStringList{"--script", "%1/missing"}
        << QByteArray(
               "modemsimulator: cannot read the script %1/missing: No such file or directory\n");
    QTest::newRow("script without sense")
        << QStringList{"--script", "%1/broken.config"}
        << QByteArray("modemsimulator: cannot use the script %1/broken.config: no such word: {\n");
    QTest::newRow("file in the place of the link")
        << QStringList{"--link", "%1/broken.config"}
        << QByteArray("modemsimulator: cannot use %1/broken.config: it is there and no link\n");
    QTest::newRow("link in no folder")
        << QStringList{"--link", "%1/missing/modem"}
        << QByteArray("modemsimulator: cannot use %1/missing/modem: another simulator does, or "
                      "the folder is closed\n");
}

void tst_modemsimulator::refusesWhatItCannotUse()
{
    QFETCH(QStringList, options);
    QFETCH(QByteArray, reason);
    const QTemporaryDir folder;
    TestFile::write(folder.filePath("broken.config"), "{");
    options.replaceInStrings("%1", folder.path());
    const auto result = ChildProcess::run(HELPER_MODEMSIMULATOR, arguments(folder, options));
    QCOMPARE(result.code, 2);
    QCOMPARE(result.err, reason.replace("%1", folder.path().toUtf8()));
    QCOMPARE(result.out, QByteArray());
    QCOMPARE(TestFile::read(folder.filePath("broken.config")), QByteArray("{"));
}

void tst_modemsimulator::replacesALinkThatWasLeftBehind()
{
    const QTemporaryDir folder;
    start(folder)->kill();
    QVERIFY(QFileInfo(link(folder)).isSymLink());
    const Process modem = start(folder);
    QVERIFY(Host(link(folder)).ask("AT").endsWith("\r\nOK\r\n"));
    QVERIFY(QFile::remove(link(folder)));
    QVERIFY(QFile::link("/nowhere", link(folder)));
    modem->kill();
    const Process other = start(folder);
    QVERIFY(Host(link(folder)).ask("AT").endsWith("\r\nOK\r\n"));
}

void tst_modemsimulator::leavesTheLinkOfAnotherAlone()
{
    const QTemporaryDir folder;
    const Process modem = start(folder);
    const auto other = ChildProcess::run(HELPER_MODEMSIMULATOR, arguments(folder, {}));
    QCOMPARE(other.code, 2);
    QVERIFY(other.err.contains("another simulator"));
    Host host(link(folder));
    QVERIFY(host.ask("AT").endsWith("\r\nOK\r\n"));
}

void tst_modemsimulator::takesTheLineAwayWhenUnplugged()
{
    const QTemporaryDir folder;
    TestFile::write(folder.filePath("script"), "once +CSQ unplug\n");
    const Process modem = start(folder, {"--script", folder.filePath("script")});
    Host host(link(folder));
    host.send("AT+CSQ\r");
    QCOMPARE(modem->exitCode(), 0);
    QVERIFY(!QFileInfo(link(folder)).isSymLink());
    while (host.readOnce() > 0) {
    }
    QCOMPARE(host.readOnce(), 0);
}

void tst_modemsimulator::removesTheLinkInTheEnd()
{
    const QTemporaryDir folder;
    const Process modem = start(folder);
    modem->terminate();
    QCOMPARE(modem->exitCode(), 0);
    QVERIFY(!QFileInfo(link(folder)).isSymLink());
    QVERIFY(!QFileInfo::exists(link(folder) + ".lock"));
}

void tst_modemsimulator::passesMegabytesOn()
{
    Pair pair;
    pair.modem->enter("once +CSQ report END");
    pair.modem->enter("fault flood");
    QVERIFY(pair.modem->says("done: fault flood"));
    pair.host.send("AT+CSQ\r");
    const QByteArray flood = pair.host.receive("\r\nEND\r\n");
    QCOMPARE(flood.size(), decltype(flood.size())(4000000 + 7));
    QCOMPARE(pair.host.ask("AT"), QByteArray("\r\nOK\r\n"));
    // Nobody reads it: the modem is not held up.
    pair.modem->enter("fault flood");
    QVERIFY(pair.modem->says("done: fault flood"));
    pair.host.send("AT\r");
    pair.modem->enter("signal 9");
    QVERIFY(pair.modem->says("done: signal 9"));
}

void tst_modemsimulator::answersLate()
{
    Pair pair;
    pair.modem->enter("fault delay 300");
    QVERIFY(pair.modem->says("done: fault delay 300"));
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(pair.host.ask("AT"), QByteArray("\r\nOK\r\n"));
    QVERIFY(timer.elapsed() >= 290);
}

void tst_modemsimulator::movesTheSignalByItself()
{
    Pair pair({"--signal-interval", "1"});
    std::set<QByteArray> seen;
    const auto hasMoved = [&] {
        seen.insert(pair.host.ask("AT+CSQ"));
        return seen.size() >= 3;
    };
    QTRY_VERIFY(hasMoved());
}

void tst_modemsimulator::tracesTheDialogue()
{
    Pair pair({"--trace"});
    pair.host.send("AT\r\x01");
    QVERIFY(pair.modem->says("trace: received: AT\\r\\x01"));
    QVERIFY(pair.modem->says("trace: sent: \\r\\nOK\\r\\n"));
    pair.host.send(QByteArray(1000, '"') + '\r');
    QVERIFY(pair.modem->says("\"\"... (1001 bytes)"));
}

QTEST_GUILESS_MAIN(tst_modemsimulator)
#include "tst_modemsimulator.moc"
