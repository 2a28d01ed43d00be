#include "openline.h"
#include "support/logcapture.h"
#include "support/testfile.h"

#include <QElapsedTimer>

#include <cerrno>

namespace {

/// A port that takes few bytes at a time, or nothing at all, and fails on demand.
class MeanPort : public CSerialPort
{
public:
    bool open(const char* path) override
    {
        m_error = 0;
        return m_port->open(path);
    }
    void close() override { m_port->close(); }
    int read(char* buffer, int length) override
    {
        m_error = 0;
        return readError != 0 ? failed(readError) : m_port->read(buffer, length);
    }
    int write(const char* buffer, int length) override
    {
        if (takesNothing)
            return failed(writeError);
        m_error = 0;
        return m_port->write(buffer, qMin(length, takesAtOnce));
    }
    bool setTimeOut(int milliseconds) override { return m_port->setTimeOut(milliseconds); }
    bool setBaudRate(BAUDRATE rate) override { return m_port->setBaudRate(rate); }

    int lastError() const override { return m_error != 0 ? m_error : m_port->lastError(); }

    bool takesNothing = false;
    int takesAtOnce = 1;     ///< bytes
    int writeError = EAGAIN; ///< of a port that takes nothing
    int readError = 0;

private:
    int failed(int error)
    {
        m_error = error;
        return -1;
    }

    int m_error = 0; // made up; otherwise the real one's
    std::unique_ptr<CSerialPort> m_port{CSerialPort::CreateObject()};
};

const AtCommand kSignal{"AT+CSQ", "+CSQ:"};

} // namespace

class tst_atchannel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void opensWhenTheModemAnswers();
    void asksInAnotherWayWhenItDoesNot();
    void returnsInformationAndErrors();
    void leavesOutTheEcho();
    void handsOnReportsInTheMiddleOfAnAnswer();
    void handsOnReportsBetweenCommands();
    void takesNoLateAnswerForTheNextOne();
    void dropsHalfALine();
    void logsGarbageOnceForEachSeries();
    void boundsALineWithoutEnd();
    void boundsTheLinesOfAnAnswer();
    void closesASilentLineAndOpensItAgain();
    void endsACommandWhenTheDeviceGoes();
    void noticesBetweenCommandsThatTheDeviceGoes();
    void writesInParts();
    void closesALineThatTakesNothing_data();
    void closesALineThatTakesNothing();
    void closesALineThatCannotBeRead();
    void tellsWhoHasTheLine();
    void sendsNothingInsideACommand();
    void sendsNothingBeforeTheModemAnswers();
    void leavesAloneWhatIsNoTerminal_data();
    void leavesAloneWhatIsNoTerminal();
    void opensALineThatAppearsLater();
    void givesUpWhenTheApplicationQuits();
};

void tst_atchannel::opensWhenTheModemAnswers()
{
    OpenLine line;
    QVERIFY(line.open());
    QCOMPARE(line.opened.size(), 1);
    QCOMPARE(line.peer.commands(), QList<QByteArray>{"AT+CMEE?"});
}

void tst_atchannel::asksInAnotherWayWhenItDoesNot()
{
    OpenLine line;
    line.peer.answer("AT+CMEE?", "");
    line.peer.answer("AT+CSCS?", "\r\nERROR\r\n");
    QVERIFY(line.open());
    QCOMPARE(line.peer.commands(), (QList<QByteArray>{"AT+CMEE?", "AT+CSCS?", "AT+CMGF?"}));
    QVERIFY(line.closed.isEmpty());
}

void tst_atchannel::returnsInformationAndErrors()
{
    OpenLine line;
    QVERIFY(line.open());
    line.peer.inform("AT+CSQ", "+CSQ: 7,99");
    AtReply reply = line.channel.send(kSignal);
    QCOMPARE(reply.error, 0);
    QCOMPARE(reply.lines, QList<QByteArray>{"+CSQ: 7,99"});
    line.peer.answer("AT+CPIN=\"0000\"", "\r\n+CME ERROR: 16\r\n");
    QCOMPARE(line.channel.send({"AT+CPIN=\"0000\"", {}}).error, 16);
    line.peer.answer("AT+CMGD=99", "\r\n+CMS ERROR: 321\r\n");
    QCOMPARE(line.channel.send({"AT+CMGD=99", {}}).error, 21);
    line.peer.answer("AT+CGMI", "\r\nExample\r\nDevices\r\n\r\nOK\r\n");
    reply = line.channel.send({"AT+CGMI", {}});
    QCOMPARE(reply.lines, (QList<QByteArray>{"Example", "Devices"}));
}

void tst_atchannel::leavesOutTheEcho()
{
    OpenLine line;
    line.peer.answer("AT+CMEE?", "AT+CMEE?\r\r\n+CMEE: 0\r\n\r\nOK\r\n");
    QVERIFY(line.open());
    QCOMPARE(line.peer.commands().size(), 1);
    line.peer.answer("AT+CGMI", "AT+CGMI\r\r\nExample Devices\r\n\r\nOK\r\n");
    QCOMPARE(line.channel.send({"AT+CGMI", {}}).lines, QList<QByteArray>{"Example Devices"});
}

void tst_atchannel::handsOnReportsInTheMiddleOfAnAnswer()
{
    OpenLine line;
    QVERIFY(line.open());
    line.peer.answer("AT+CREG?",
                     "\r\n+CREG: 5,\"1\",\"2\"\r\n\r\n+CREG: 2,1,\"1A2B\",\"01C3D4E\"\r\n"
                     "\r\n+CMTI: \"SM\",9\r\n\r\nOK\r\n");
    QCOMPARE(line.channel.send({"AT+CREG?", "+CREG:"}).lines,
             QList<QByteArray>{"+CREG: 2,1,\"1A2B\",\"01C3D4E\""});
    QCOMPARE(line.unsolicited.size(), 2);
    QCOMPARE(line.unsolicited.at(0).at(0).toByteArray(), QByteArray("+CREG: 5,\"1\",\"2\""));
    QCOMPARE(line.unsolicited.at(1).at(0).toByteArray(), QByteArray("+CMTI: \"SM\",9"));
}

void tst_atchannel::handsOnReportsBetweenCommands()
{
    OpenLine line;
    QVERIFY(line.open());
    line.peer.say("\r\n+CIEV: 2,");
    line.peer.say("3\r\n");
    QVERIFY(line.waitFor([&] { return !line.unsolicited.isEmpty(); }));
    QCOMPARE(line.unsolicited.at(0).at(0).toByteArray(), QByteArray("+CIEV: 2,3"));
}

void tst_atchannel::takesNoLateAnswerForTheNextOne()
{
    OpenLine line;
    QVERIFY(line.open());
    line.peer.answer("AT+CSQ", "");
    // What comes when the channel asks in the second way is not the answer to that: so it asks in
    // the third. (With the first one the line was opened.)
    line.peer.answer("AT+CSCS?", "\r\n+CSQ: 31,99\r\n\r\nOK\r\n");
    QCOMPARE(line.channel.send(kSignal).error, 1);
    QVERIFY(line.channel.isOpen());
    line.peer.inform("AT+CSQ", "+CSQ: 7,99");
    const AtReply reply = line.channel.send(kSignal);
    QCOMPARE(reply.error, 0);
    QCOMPARE(reply.lines, QList<QByteArray>{"+CSQ: 7,99"});
    QVERIFY(line.closed.isEmpty());
    QCOMPARE(line.peer.commands(),
             (QList<QByteArray>{"AT+CMEE?", "AT+CSQ", "AT+CSCS?", "AT+CMGF?", "AT+CSQ"}));
}

void tst_atchannel::dropsHalfALine()
{
    OpenLine line;
    QVERIFY(line.open());
    line.peer.answer("AT+CSQ", "\r\n+CSQ: 31");
    line.peer.answer("AT+CSCS?", "+CSCS: \"UCS2\"\r\n\r\nOK\r\n");
    QCOMPARE(line.channel.send(kSignal).error, 1);
    QVERIFY(line.channel.isOpen());
    line.peer.inform("AT+CSQ", "+CSQ: 7,99");
    QCOMPARE(line.channel.send(kSignal).lines, QList<QByteArray>{"+CSQ: 7,99"});
}

void tst_atchannel::logsGarbageOnceForEachSeries()
{
    const LogCapture log;
    OpenLine line;
    QVERIFY(line.open());
    line.peer.answer("AT+CSQ", "\r\n^%$#\r\n\xFF\xFE\x80\r\nOKOK\r\n+CSQ: 7,99\r\n\r\nOK\r\n");
    const AtReply reply = line.channel.send(kSignal);
    QCOMPARE(reply.error, 0);
    QCOMPARE(reply.lines, QList<QByteArray>{"+CSQ: 7,99"});
    QCOMPARE(log.count("notUnderstood " + line.channel.port() + " ^%$#"), 1);
    QCOMPARE(log.count("and further lines: 2"), 1);
    QCOMPARE(log.count("notUnderstood"), 2);
}

void tst_atchannel::boundsALineWithoutEnd()
{
    const LogCapture log;
    OpenLine line;
    QVERIFY(line.open());
    line.peer.answer("AT+CGMI", QByteArray(1000000, 'x') + "\r\n\r\nOK\r\n");
    const AtReply reply = line.channel.send({"AT+CGMI", {}, AtWait::Search});
    QCOMPARE(reply.error, 0);
    QCOMPARE(reply.lines, QList<QByteArray>{QByteArray(4096, 'x')});
    QCOMPARE(log.count("a line without end"), 1);
}

void tst_atchannel::boundsTheLinesOfAnAnswer()
{
    OpenLine line;
    QVERIFY(line.open());
    line.peer.answer("AT+CPBR=1,9", QByteArray("+CPBR: 1\r\n").repeated(6000) + "OK\r\n");
    const AtReply reply = line.channel.send({"AT+CPBR=1,9", "+CPBR:", AtWait::Search});
    QCOMPARE(reply.error, 0);
    QCOMPARE(reply.lines.size(), 5000);
}

void tst_atchannel::closesASilentLineAndOpensItAgain()
{
    OpenLine line(nullptr, OpenLine::kIsSilent);
    QVERIFY(line.open());
    line.closed.clear(); // a busy machine may need several attempts
    line.peer.setSilent(true);
    QCOMPARE(line.channel.send(kSignal).error, 1);
    QVERIFY(!line.channel.isOpen());
    QCOMPARE(line.closedReason(), QString("does not answer"));
    // Nothing waits for it any more, and the reason is not told again with every attempt.
    const auto sent = line.peer.commands().count("AT+CSQ");
    QCOMPARE(line.channel.send(kSignal).error, 1);
    QCOMPARE(line.peer.commands().count("AT+CSQ"), sent);
    const auto asked = static_cast<int>(line.peer.commands().count("AT+CMEE?"));
    QVERIFY(line.peer.hears("AT+CMEE?", asked + 3));
    QVERIFY(line.closed.isEmpty());

    line.peer.setSilent(false);
    QVERIFY(line.waitFor([&] { return line.opened.size() == 2; }));
    line.peer.inform("AT+CSQ", "+CSQ: 7,99");
    const AtReply reply = line.channel.send({"AT+CSQ", "+CSQ:", AtWait::Search});
    QCOMPARE(reply.lines, QList<QByteArray>{"+CSQ: 7,99"});
}

void tst_atchannel::endsACommandWhenTheDeviceGoes()
{
    OpenLine line;
    QVERIFY(line.open());
    line.peer.answer("AT+COPS=?", "\r\n+CMTI: \"SM\",1\r\n\r\n+COPS: (2,\"Exam");
    QObject::connect(&line.channel, &AtChannel::unsolicited, &line.channel,
                     [&line] { line.peer.unplug(); });
    QElapsedTimer time;
    time.start();
    QCOMPARE(line.channel.send({"AT+COPS=?", "+COPS:", AtWait::Search}).error, 1);
    QVERIFY(time.elapsed() < line.channel.milliseconds(AtWait::Search));
    QCOMPARE(line.closedReason(), QString("has gone"));
    line.peer.plug();
    QVERIFY(line.waitFor([&] { return line.opened.size() == 2; }));
}

void tst_atchannel::noticesBetweenCommandsThatTheDeviceGoes()
{
    OpenLine line;
    QVERIFY(line.open());
    line.peer.unplug();
    QCOMPARE(line.closedReason(), QString("has gone"));
    QCOMPARE(line.closedReason(), QString("cannot be opened: No such file or directory"));
    QCOMPARE(line.channel.send(kSignal).error, 1);
    line.peer.plug();
    QVERIFY(line.waitFor([&] { return line.opened.size() == 2; }));
    line.peer.inform("AT+CSQ", "+CSQ: 7,99");
    QCOMPARE(line.channel.send(kSignal).error, 0);
}

void tst_atchannel::writesInParts()
{
    OpenLine line(std::make_unique<MeanPort>());
    QVERIFY(line.open());
    line.peer.inform("AT+CSQ", "+CSQ: 7,99");
    QCOMPARE(line.channel.send(kSignal).lines, QList<QByteArray>{"+CSQ: 7,99"});
}

void tst_atchannel::closesALineThatTakesNothing_data()
{
    QTest::addColumn<int>("error");
    QTest::addColumn<QString>("reason");
    QTest::newRow("no room") << EAGAIN << "does not take what is written";
    QTest::newRow("a failure") << EIO << "does not take what is written: Input/output error";
}

void tst_atchannel::closesALineThatTakesNothing()
{
    QFETCH(const int, error);
    auto port = std::make_unique<MeanPort>();
    MeanPort& mean = *port;
    mean.takesAtOnce = 100;
    OpenLine line(std::move(port), OpenLine::kIsSilent);
    QVERIFY(line.open());
    line.closed.clear(); // a busy machine may need several attempts
    const auto opened = line.opened.size();
    mean.takesNothing = true;
    mean.writeError = error;
    QCOMPARE(line.channel.send(kSignal).error, 1);
    QTEST(line.closedReason(), "reason");
    mean.takesNothing = false;
    QVERIFY(line.waitFor([&] { return line.opened.size() > opened; }));
}

void tst_atchannel::closesALineThatCannotBeRead()
{
    auto port = std::make_unique<MeanPort>();
    MeanPort& mean = *port;
    OpenLine line(std::move(port));
    QVERIFY(line.open());
    mean.readError = EIO;
    QCOMPARE(line.closedReason(), QString("cannot be read: Input/output error"));
    mean.readError = 0;
    QVERIFY(line.waitFor([&] { return line.opened.size() == 2; }));
}

void tst_atchannel::tellsWhoHasTheLine()
{
    OpenLine line;
    const std::unique_ptr<CSerialPort> other(CSerialPort::CreateObject());
    QVERIFY(other->setExclusive(true));
    QVERIFY(other->open(QFile::encodeName(line.channel.port()).constData()));
    line.channel.start();
    QCOMPARE(line.closedReason(), QString("cannot be opened: tst_atchannel (process %1) has it")
                                      .arg(QCoreApplication::applicationPid()));
    // It has not been disturbed, and nothing was said on its line.
    QVERIFY(line.peer.commands().isEmpty());
    other->close();
    QVERIFY(line.waitFor([&] { return line.channel.isOpen(); }));
}

void tst_atchannel::sendsNothingInsideACommand()
{
    OpenLine line;
    QVERIFY(line.open());
    line.peer.answer("AT+CSQ", "\r\nRING\r\n\r\n+CSQ: 7,99\r\n\r\nOK\r\n");
    int inner = 0;
    QObject::connect(&line.channel, &AtChannel::unsolicited, &line.channel, [&] {
        inner = line.channel.send({"AT+CGMI", {}}).error;
    });
    QCOMPARE(line.channel.send(kSignal).lines, QList<QByteArray>{"+CSQ: 7,99"});
    QCOMPARE(inner, 2);
    QVERIFY(!line.peer.commands().contains("AT+CGMI"));
}

void tst_atchannel::sendsNothingBeforeTheModemAnswers()
{
    OpenLine line;
    QCOMPARE(line.channel.send(kSignal).error, 1);
    QVERIFY(line.peer.commands().isEmpty());
}

void tst_atchannel::leavesAloneWhatIsNoTerminal_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("reason");
    QTest::newRow("missing") << "missing"
                             << "cannot be opened: No such file or directory";
    QTest::newRow("a file") << "file"
                            << "cannot be opened: it is no terminal";
    QTest::newRow("a folder") << "."
                              << "cannot be opened: Is a directory";
    QTest::newRow("another device") << "/dev/null"
                                    << "cannot be opened: it is no terminal";
    QTest::newRow("empty") << ""
                           << "cannot be opened: No such file or directory";
}

void tst_atchannel::leavesAloneWhatIsNoTerminal()
{
    QFETCH(QString, name);
    const QTemporaryDir folder;
    TestFile::write(folder.filePath("file"), "precious");
    const QString path = name.isEmpty() ? name : QDir(folder.path()).absoluteFilePath(name);
    WorkQueue queue;
    AtChannel channel(std::unique_ptr<CSerialPort>(CSerialPort::CreateObject()),
                      OpenLine::options(path), queue);
    QSignalSpy closed(&channel, &AtChannel::closed);
    channel.start();
    QVERIFY(OpenLine::waitFor([&] { return !closed.isEmpty(); }));
    QTEST(closed.at(0).at(0).toString(), "reason");
    QCOMPARE(channel.send(kSignal).error, 1);
    QCOMPARE(TestFile::read(folder.filePath("file")), QByteArray("precious"));
}

void tst_atchannel::opensALineThatAppearsLater()
{
    OpenLine line;
    line.peer.unplug();
    line.channel.start();
    QCOMPARE(line.closedReason(), QString("cannot be opened: No such file or directory"));
    line.peer.plug();
    QVERIFY(line.waitFor([&] { return line.channel.isOpen(); }));
}

void tst_atchannel::givesUpWhenTheApplicationQuits()
{
    OpenLine line;
    QVERIFY(line.open());
    line.peer.answer("AT+COPS=?", "\r\nRING\r\n");
    QObject::connect(&line.channel, &AtChannel::unsolicited, &QCoreApplication::quit);
    QList<int> errors;
    QElapsedTimer time;
    time.start();
    QTimer::singleShot(0, &line.channel, [&] {
        errors += line.channel.send({"AT+COPS=?", "+COPS:", AtWait::Search}).error;
        errors += line.channel.send(kSignal).error;
    });
    QCOMPARE(QCoreApplication::exec(), 0);
    QCOMPARE(errors, (QList<int>{1, 1}));
    QVERIFY(time.elapsed() < line.channel.milliseconds(AtWait::Search));
    QVERIFY(!line.peer.commands().contains("AT+CSQ"));
    QVERIFY(line.closed.isEmpty()); // that is no fault of the modem
}

QTEST_GUILESS_MAIN(tst_atchannel)
#include "tst_atchannel.moc"
