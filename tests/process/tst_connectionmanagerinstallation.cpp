// The processes installed in a folder of their own, with the files that a test gives them.

#include "connectionmanager.h"
#include "rawclient.h"
#include "support/testfile.h"

#include <QDir>

namespace {

class Installation
{
public:
    Installation()
    {
        makeFolder("bin");
        makeFolder("Resources/Data/Perso");
        makeFolder("tmp");
        copy(HELPER_APPLICATIONCONTROLLER, "bin/applicationcontroller");
        copy(HELPER_DEVICESERVICE, "bin/deviceservice");
    }

    QString path(const QString& below) const { return m_folder.filePath(below); }
    QString perso(const QString& name) const { return path("Resources/Data/Perso/" + name); }
    QString systemFile() const { return path("Resources/UserData/System.xml"); }
    void makeFolder(const QString& below) const
    {
        if (!QDir().mkpath(path(below)))
            qFatal("Installation: cannot make %s", qPrintable(below));
    }

    /// The files that come with the example.
    void addShippedFiles() const
    {
        const QDir shipped(SOURCE_ROOT "/examples/connectionmanager/Resources/Data/Perso");
        for (const QString& name : shipped.entryList(QDir::Files))
            copy(shipped.filePath(name), "Resources/Data/Perso/" + name);
    }

    std::unique_ptr<ChildProcess> controller(const QStringList& arguments = {}) const
    {
        return start("bin/applicationcontroller", arguments);
    }
    /// Where the service looks for one.
    std::unique_ptr<ChildProcess> modem() const
    {
        auto modem = std::make_unique<ChildProcess>(
            HELPER_MODEMSIMULATOR, QStringList{"--signal-interval", "0", "--log", path("log")},
            path("tmp"));
        if (!modem->says("modemsimulator ready"))
            qFatal("Installation: the modem does not get ready");
        return modem;
    }
    std::unique_ptr<ChildProcess> service(const QStringList& arguments = {}) const
    {
        return start("bin/deviceservice", arguments);
    }

    /// What the service, ready, answers to a request without a payload.
    QString answerTo(const char* messageID) const
    {
        RawClient client(path("tmp/demo-device-1"));
        client.send(QString(R"({"IPCMSG_TYPE":"%1"})").arg(messageID));
        return client.answer();
    }

private:
    void copy(const QString& from, const QString& to) const
    {
        if (!QFile::copy(from, path(to)))
            qFatal("Installation: cannot copy %s", qPrintable(from));
    }
    std::unique_ptr<ChildProcess> start(const QString& program, const QStringList& arguments) const
    {
        return std::make_unique<ChildProcess>(
            path(program), arguments + QStringList{"--log", path("log")}, path("tmp"));
    }

    QTemporaryDir m_folder;
};

QString unknown(const char* messageID)
{
    return QString(R"({"IPCMSG_ERROR_CODE":42,"IPCMSG_RESPONSE_DATA":null,"IPCMSG_TYPE":"%1"})")
        .arg(messageID);
}

bool isSuccess(const QString& answer)
{
    return answer.startsWith(R"({"IPCMSG_ERROR_CODE":0,)");
}

/// Ends a process as its user does; what it keeps is saved then.
void end(ChildProcess& process)
{
    process.terminate();
    QCOMPARE(process.exitCode(), 0);
}

} // namespace

class tst_connectionmanagerinstallation : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void answersForThePluginsOfThePersonalisation();
    void hasNoPluginsWhenTheModuleIsNotAvailable();
    void hasEveryShippedPlugin();
    void tracesWithTheFeature();
    void plugsInTheDevicesOfTheModuleFile();
    void worksWithoutAPersonalisation_data();
    void worksWithoutAPersonalisation();
    void countsItsStarts();
    void savesNothingWhenToldSo();
    void replacesADamagedCount();
};

void tst_connectionmanagerinstallation::answersForThePluginsOfThePersonalisation()
{
    const Installation installation;
    TestFile::write(installation.perso("project.perso"),
                    R"({"Module Names":{"DeviceService":{"IsAvailable":true,)"
                    R"("Plugins":["Equipment","Phonebook"]}}})");
    const auto modem = installation.modem();
    const auto service = installation.service();
    QVERIFY(service->says("deviceservice ready"));
    QVERIFY(isSuccess(installation.answerTo("DEMO_MESSAGE_EQUIPMENT_INFO")));
    QCOMPARE(installation.answerTo("DEMO_MESSAGE_CONNECT_STATE"),
             unknown("DEMO_MESSAGE_CONNECT_STATE"));
    QCOMPARE(installation.answerTo("DEMO_MESSAGE_USSD_SEND"), unknown("DEMO_MESSAGE_USSD_SEND"));
}

void tst_connectionmanagerinstallation::hasNoPluginsWhenTheModuleIsNotAvailable()
{
    const Installation installation;
    TestFile::write(installation.perso("project.perso"),
                    R"({"Module Names":{"DeviceService":{"IsAvailable":false,)"
                    R"("Plugins":["Equipment"]}}})");
    const auto service = installation.service();
    QVERIFY(service->says("deviceservice ready"));
    QCOMPARE(installation.answerTo("DEMO_MESSAGE_EQUIPMENT_INFO"),
             unknown("DEMO_MESSAGE_EQUIPMENT_INFO"));
}

// One request of each plug-in; what it is answered with without a payload is not the point.
void tst_connectionmanagerinstallation::hasEveryShippedPlugin()
{
    const Installation installation;
    installation.addShippedFiles();
    const auto service = installation.service();
    QVERIFY(service->says("deviceservice ready"));
    for (const char* request :
         {"DEMO_MESSAGE_NETWORK_INFO", "DEMO_MESSAGE_PIN_STATE", "DEMO_MESSAGE_EQUIPMENT_INFO",
          "DEMO_MESSAGE_CONNECT_STATE", "DEMO_MESSAGE_SMS_STORAGE", "DEMO_MESSAGE_PB_STORAGE",
          "DEMO_MESSAGE_USSD_SEND", "DEMO_MESSAGE_DIAG_INFO"}) {
        const QString answer = installation.answerTo(request);
        QVERIFY2(answer.startsWith(R"({"IPCMSG_ERROR_CODE":)"), request);
        QVERIFY2(!answer.startsWith(R"({"IPCMSG_ERROR_CODE":42,)"), request);
    }
    QVERIFY(!service->output().contains("trace:"));
}

void tst_connectionmanagerinstallation::tracesWithTheFeature()
{
    const Installation installation;
    installation.addShippedFiles();
    TestFile::write(installation.perso("DeviceService.xml"),
                    "<DictValue><key>Feature</key><DictValue><key>General</key><DictValue>"
                    "<key>Trace</key><BooleanValue>true</BooleanValue>"
                    "</DictValue></DictValue></DictValue>");
    const auto service = installation.service();
    QVERIFY(service->says("deviceservice ready"));
    installation.answerTo("DEMO_MESSAGE_EQUIPMENT_INFO");
    QVERIFY(service->says("trace: IPCServer received from client 1"));
}

void tst_connectionmanagerinstallation::plugsInTheDevicesOfTheModuleFile()
{
    const Installation installation;
    installation.addShippedFiles();
    TestFile::write(installation.perso("ApplicationController.xml"),
                    "<DictValue><key>ConfigData</key><DictValue><key>General</key><DictValue>"
                    "<key>Devices</key><DictValue>"
                    "<key>One</key><StringValue>device-1</StringValue>"
                    "<key>Nothing</key><StringValue></StringValue>"
                    "<key>Two</key><StringValue>device-2</StringValue>"
                    "</DictValue></DictValue></DictValue></DictValue>");
    {
        const auto controller = installation.controller();
        QVERIFY(controller->says("applicationcontroller ready"));
        QVERIFY(controller->output().startsWith("plugged: One (device-1)\n"
                                                "plugged: Two (device-2)\n"
                                                "applicationcontroller ready"));
    }
    const auto controller = installation.controller({"--device", "Three=device-3"});
    QVERIFY(controller->says("applicationcontroller ready"));
    QVERIFY(controller->output().startsWith("plugged: Three (device-3)\n"
                                            "applicationcontroller ready"));
}

void tst_connectionmanagerinstallation::worksWithoutAPersonalisation_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("no file") << QByteArray();
    QTest::newRow("damaged") << QByteArray("{\"Module Names\":");
    QTest::newRow("another kind") << QByteArray("[1]");
}

void tst_connectionmanagerinstallation::worksWithoutAPersonalisation()
{
    QFETCH(QByteArray, content);
    const Installation installation;
    if (!content.isNull())
        TestFile::write(installation.perso("project.perso"), content);
    const auto controller = installation.controller();
    QVERIFY(controller->says("plugged: Demo Modem (demo-device-1)"));
    const auto modem = installation.modem();
    const auto service = installation.service();
    QVERIFY(service->says("deviceservice ready"));
    QVERIFY(isSuccess(installation.answerTo("DEMO_MESSAGE_CONNECT_STATE")));
}

void tst_connectionmanagerinstallation::countsItsStarts()
{
    const Installation installation;
    installation.addShippedFiles();
    {
        const auto controller = installation.controller();
        QVERIFY(controller->says("applicationcontroller ready, start 1"));
        const auto service = installation.service();
        QVERIFY(service->says("deviceservice ready: Demo Modem (demo-device-1), start 1"));
        // The one that ends last has not seen what the other one saves.
        end(*service);
        end(*controller);
    }
    const QByteArray saved = TestFile::read(installation.systemFile());
    QVERIFY2(TestFile::read(SOURCE_ROOT "/docs/files.md").contains("```xml\n" + saved + "```\n"),
             saved.constData());
    const auto controller = installation.controller();
    QVERIFY(controller->says("applicationcontroller ready, start 2"));
    const auto service = installation.service();
    QVERIFY(service->says("deviceservice ready: Demo Modem (demo-device-1), start 2"));
}

void tst_connectionmanagerinstallation::savesNothingWhenToldSo()
{
    const Installation installation;
    installation.addShippedFiles();
    for (int start = 0; start < 2; ++start) {
        const auto controller = installation.controller({"--no-save"});
        QVERIFY(controller->says("applicationcontroller ready, start 1"));
        end(*controller);
    }
}

void tst_connectionmanagerinstallation::replacesADamagedCount()
{
    const Installation installation;
    installation.makeFolder("Resources/UserData");
    TestFile::write(installation.systemFile(),
                    "<DictValue><key>DeviceService</key><StringValue>x</StringValue>"
                    "<key>Other</key><IntValue>7</IntValue></DictValue>");
    {
        const auto service = installation.service();
        QVERIFY(service->says("start 1"));
        end(*service);
    }
    QVERIFY(TestFile::read(installation.systemFile()).contains("<IntValue>7</IntValue>"));
    const auto service = installation.service();
    QVERIFY(service->says("start 2"));
}

QTEST_GUILESS_MAIN(tst_connectionmanagerinstallation)
#include "tst_connectionmanagerinstallation.moc"
