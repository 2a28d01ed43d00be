// How the programs are started, what they say of a wrong start, and how they end.

#include "connectionmanager.h"
#include "rawclient.h"
#include "support/testfile.h"

#include <QFile>

namespace {

ChildProcess::Result run(const QString& program, const QStringList& arguments,
                         const QString& output = {})
{
    const QTemporaryDir folder;
    return ChildProcess::run(program, arguments + QStringList{"--log", folder.filePath("log")},
                             {folder.path(), {}, output});
}

void addPrograms()
{
    QTest::addColumn<QString>("program");
    QTest::addColumn<QString>("name");
    QTest::newRow("controller") << HELPER_APPLICATIONCONTROLLER << "applicationcontroller";
    QTest::newRow("service") << HELPER_DEVICESERVICE << "deviceservice";
    QTest::newRow("dashboard") << HELPER_DASHBOARD << "dashboard";
    QTest::newRow("simulator") << HELPER_MODEMSIMULATOR << "modemsimulator";
}

} // namespace

class tst_connectionmanagerprograms : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tellsItsVersionAndOptions_data() { addPrograms(); }
    void tellsItsVersionAndOptions();
    void refusesWrongOptions_data();
    void refusesWrongOptions();
    void failsWhenNothingCanBeWritten_data() { addPrograms(); }
    void failsWhenNothingCanBeWritten();
    void refusesASecondController();
    void refusesASecondServiceOfADevice();
    void takesTheNameAfterOneThatWasKilled();
    void readsThePin_data();
    void readsThePin();
    void readsThePinFromStandardInput();
    void refusesAFileWithoutAPin_data();
    void refusesAFileWithoutAPin();
    void endsTheDashboardWithItsInput();
    void finishesARoundWithoutInput();
    void keepsSecretsOutOfTheLogs();
    void runsTheDemo();
};

void tst_connectionmanagerprograms::tellsItsVersionAndOptions()
{
    QFETCH(const QString, program);
    QFETCH(const QString, name);
    for (const char* option : {"--version", "-v"}) {
        const auto version = run(program, {option});
        QCOMPARE(version.code, 0);
        QCOMPARE(version.out, name.toUtf8() + " " WZR_VERSION "\n");
        QCOMPARE(version.err, QByteArray());
    }
    const auto help = run(program, {"--help"});
    QCOMPARE(help.code, 0);
    QVERIFY(help.out.startsWith("Usage: "));
    QVERIFY(help.out.contains("--log <FILE>"));
    QCOMPARE(help.err, QByteArray());
}

void tst_connectionmanagerprograms::refusesWrongOptions_data()
{
    QTest::addColumn<QString>("program");
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("reason");
    struct
    {
        const char* name;
        const char* program;
    } const programs[] = {{"applicationcontroller", HELPER_APPLICATIONCONTROLLER},
                          {"deviceservice", HELPER_DEVICESERVICE},
                          {"dashboard", HELPER_DASHBOARD},
                          {"modemsimulator", HELPER_MODEMSIMULATOR}};
    const auto row = [&programs](int index, const QStringList& arguments, const char* reason) {
        QTest::addRow("%s %s", programs[index].name, qPrintable(arguments.join(' ')))
            << programs[index].program << arguments
            << QByteArray(programs[index].name) + ": " + reason + " See --help.\n";
    };
    for (int i = 0; i < 4; ++i) {
        row(i, {"--nonsense"}, "Unknown option 'nonsense'.");
        row(i, {"nonsense"}, "Unexpected argument 'nonsense'.");
    }
    row(0, {"--device", "nameless"}, "--device takes NAME=ID.");
    row(1, {"--pace", "x"}, "--pace takes a number from 0 to 60000.");
    row(1, {"--timeout", "0"}, "--timeout takes a number from 5 to 60000.");
    row(1, {"--retry", "-1"}, "--retry takes a number from 1 to 60000.");
    row(1, {"--retry", "60001"}, "--retry takes a number from 1 to 60000.");
    row(1, {"--baud", "115200"}, "--baud takes 9600, 19200 or 38400.");
    row(2, {"--reports", "many"}, "--reports takes a number from 0 to 1000000.");
    row(2, {"--timeout", "-1"}, "--timeout takes a number from 0 to 86400.");
    row(2, {"--pin", "1234", "--pin-file", "x"}, "--pin and --pin-file exclude each other.");
    row(3, {"--signal-interval", "-1"}, "--signal-interval takes a number from 0 to 3600000.");
}

void tst_connectionmanagerprograms::refusesWrongOptions()
{
    QFETCH(const QString, program);
    QFETCH(const QStringList, arguments);
    QFETCH(const QByteArray, reason);
    const auto result = run(program, arguments);
    QCOMPARE(result.code, 2);
    QCOMPARE(result.out, QByteArray());
    QCOMPARE(result.err, reason);
}

void tst_connectionmanagerprograms::failsWhenNothingCanBeWritten()
{
    QFETCH(const QString, program);
    QFETCH(const QString, name);
    if (!QFile::exists("/dev/full"))
        QSKIP("this system has no /dev/full");
    const QByteArray reason = name.toUtf8() + ": cannot write: No space left on device\n";
    for (const QStringList& arguments : {QStringList{"--help"}, {"--version"}, {}}) {
        const auto result = run(program, arguments, "/dev/full");
        QCOMPARE(result.code, 1);
        QCOMPARE(result.err, reason);
    }
}

void tst_connectionmanagerprograms::refusesASecondController()
{
    ConnectionManager manager;
    const auto controller = manager.startController();
    const auto dashboard = manager.startDashboard();
    QVERIFY(dashboard->says("application controller: introduced"));
    const auto second = manager.start(HELPER_APPLICATIONCONTROLLER);
    QCOMPARE(second->exitCode(), 4);
    QCOMPARE(second->output(), QByteArray());
    QVERIFY(manager.logs().contains("another process is running and serves " +
                                    manager.socket("applicationcontroller").toUtf8()));
    // The first one still has the name, and everybody.
    controller->enter("quit");
    QCOMPARE(dashboard->exitCode(), 0);
    QCOMPARE(controller->exitCode(), 0);
    QVERIFY(!dashboard->output().contains("lost"));
}

void tst_connectionmanagerprograms::refusesASecondServiceOfADevice()
{
    ConnectionManager manager;
    const auto controller = manager.startController();
    const auto service = manager.startService();
    const auto second = manager.start(HELPER_DEVICESERVICE, {"--no-save"});
    QCOMPARE(second->exitCode(), 4);
    QVERIFY(manager.logs().contains("another process is running and serves " +
                                    manager.socket("demo-device-1").toUtf8()));
    const auto dashboard = manager.startDashboard();
    QVERIFY(dashboard->says("PIN           the SIM asks for the PIN"));
    // Another device is another name.
    const auto other =
        manager.startService({"--id", "demo-device-2", "--port", manager.socket("nothing")});
}

void tst_connectionmanagerprograms::takesTheNameAfterOneThatWasKilled()
{
    ConnectionManager manager;
    const auto controller = manager.startController();
    controller->kill();
    QCOMPARE(controller->exitCode(), ChildProcess::kCrashed);
    const auto successor = manager.startController();
    const auto dashboard = manager.startDashboard();
    QVERIFY(dashboard->says("application controller: introduced"));
}

void tst_connectionmanagerprograms::readsThePin_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("a line") << QByteArray("1234\n");
    QTest::newRow("without an end") << QByteArray("1234");
    QTest::newRow("from another system") << QByteArray(" 1234\r\n");
    QTest::newRow("the first of several") << QByteArray("1234\n0000\n");
}

void tst_connectionmanagerprograms::readsThePin()
{
    QFETCH(const QByteArray, content);
    ConnectionManager manager;
    const auto controller = manager.startController();
    const auto service = manager.startService();
    TestFile::write(manager.socket("pin"), content);
    const auto dashboard = manager.startDashboard({"--once", "--pin-file", manager.socket("pin")});
    QVERIFY(dashboard->says("PIN           accepted"));
    QCOMPARE(dashboard->exitCode(), 0);
}

void tst_connectionmanagerprograms::readsThePinFromStandardInput()
{
    ConnectionManager manager;
    const auto controller = manager.startController();
    const auto service = manager.startService();
    const auto dashboard = manager.start(HELPER_DASHBOARD, {"--pin-file", "-"});
    dashboard->enter("1234");
    QVERIFY(dashboard->says("PIN           accepted"));
    QVERIFY(dashboard->says("Statistics"));
    // What follows the PIN is a command, also when both come at once.
    const auto next = manager.start(HELPER_DASHBOARD, {"--pin-file", "-"});
    next->enter("1234\nnonsense");
    QVERIFY(next->says("cannot do: nonsense"));
}

void tst_connectionmanagerprograms::refusesAFileWithoutAPin_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QByteArray>("reason");
    const QByteArray noPin = "its first line is no PIN";
    QTest::newRow("no file") << QByteArray() << QByteArray("No such file or directory");
    QTest::newRow("empty") << QByteArray("") << noPin;
    QTest::newRow("an empty line") << QByteArray(" \n1234\n") << noPin;
    QTest::newRow("a long line") << QByteArray(65, '1') << noPin;
}

void tst_connectionmanagerprograms::refusesAFileWithoutAPin()
{
    QFETCH(const QByteArray, content);
    QFETCH(const QByteArray, reason);
    const QTemporaryDir folder;
    const QString path = folder.filePath("pin");
    if (!content.isNull())
        TestFile::write(path, content);
    const auto result = run(HELPER_DASHBOARD, {"--pin-file", path});
    QCOMPARE(result.code, 2);
    QCOMPARE(result.err,
             "dashboard: cannot read a PIN from " + path.toUtf8() + ": " + reason + '\n');
    // A folder can be opened, but not read.
    QCOMPARE(run(HELPER_DASHBOARD, {"--pin-file", folder.path()}).code, 2);
}

void tst_connectionmanagerprograms::endsTheDashboardWithItsInput()
{
    ConnectionManager manager;
    const auto dashboard = manager.startDashboard();
    dashboard->enter("nonsense");
    dashboard->closeInput();
    QVERIFY(dashboard->says("cannot do: nonsense"));
    QCOMPARE(dashboard->exitCode(), 0);
}

void tst_connectionmanagerprograms::finishesARoundWithoutInput()
{
    ConnectionManager manager;
    const auto controller = manager.startController();
    const auto service = manager.startService();
    const auto dashboard = manager.startDashboard({"--once", "--pin", "1234"});
    dashboard->closeInput();
    controller->closeInput();
    service->closeInput();
    manager.modem().closeInput();
    QVERIFY(dashboard->says("Statistics"));
    QCOMPARE(dashboard->exitCode(), 0);
    service->terminate();
    QCOMPARE(service->exitCode(), 0);
}

void tst_connectionmanagerprograms::keepsSecretsOutOfTheLogs()
{
    ConnectionManager manager;
    TestFile::write(manager.socket("state.config"),
                    R"({"sim":{"pin":"86420975","puk":"97531086"}})");
    TestFile::write(manager.socket("pin"), "86420975\n");
    const auto modem = manager.startModem({"--state", manager.socket("state.config")});
    const auto controller = manager.startController();
    const auto service = manager.startService({"--port", manager.socket("demo-modem")});
    QVERIFY(service->says("modem ready"));
    const auto dashboard = manager.startDashboard({"--pin-file", manager.socket("pin")});
    QVERIFY(dashboard->says("PIN           accepted"));
    dashboard->enter("changepin 86420975 75319086");
    QVERIFY(dashboard->says("PIN           accepted"));
    for (int i = 0; i < 3; ++i)
        dashboard->enter("changepin 64209753 53190864");
    QVERIFY(dashboard->says("the SIM asks for the PUK"));
    dashboard->enter("puk 97531086 42097531");
    QVERIFY(dashboard->says("PIN           accepted"));
    RawClient client(manager.socket("demo-device-1"));
    client.send(R"({"IPCMSG_TYPE":"DEMO_MESSAGE_PIN_ENABLE",)"
                R"("IPCMSG_USER_DATA":{"blPinEnable":true,"strPinCode":"31908642"}})");
    QVERIFY(!client.answerWith("DEMO_MESSAGE_PIN_ENABLE").isNull());
    controller->enter("quit");
    for (ChildProcess* process : {dashboard.get(), service.get(), controller.get()})
        QCOMPARE(process->exitCode(), 0);

    const QByteArray logs = manager.logs();
    for (const char* message : {"PIN_VERIFY", "PIN_CHANGE", "PUK_VERIFY", "PIN_ENABLE"})
        QVERIFY2(logs.contains(QByteArray("DEMO_MESSAGE_") + message), message);
    QVERIFY(logs.contains("***"));
    for (const char* secret :
         {"86420975", "75319086", "64209753", "53190864", "97531086", "42097531", "31908642"})
        QVERIFY2(!logs.contains(secret), secret);
}

void tst_connectionmanagerprograms::runsTheDemo()
{
    const QTemporaryDir folder;
    const auto demo =
        ChildProcess::run(SOURCE_ROOT "/scripts/demo",
                          {"--bin", QFileInfo(HELPER_DASHBOARD).absolutePath()}, folder.path());
    QCOMPARE(demo.err, QByteArray());
    QCOMPARE(demo.code, 0);
    QVERIFY(demo.out.contains("== The road of one request"));
    QVERIFY(demo.out.contains("== The road of one report"));
    QVERIFY(demo.out.endsWith("The modem is unplugged.\n"));
    QCOMPARE(QDir(folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList());
}

QTEST_GUILESS_MAIN(tst_connectionmanagerprograms)
#include "tst_connectionmanagerprograms.moc"
