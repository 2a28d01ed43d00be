#include "PersoManager/persomanager.h"
#include "support/installedconfig.h"

#include <QTemporaryDir>
#include <QTest>

namespace {

constexpr char kPerso[] =
    R"({"Module Information":{"SubProject":"Sub","Mac Version":"1.2.3"},
        "Module Names":{"SMS":{"IsAvailable":true,"Plugins":["smsplugin","inbox"]},
                        "Call":{"IsAvailable":false,"Plugins":["callplugin"]},
                        "Odd":{"IsAvailable":"true","Plugins":["odd"]},
                        "Bare":{"IsAvailable":true},
                        "All Module":{"IsAvailable":true,"Plugins":["common"]},
                        "Text":{"IsAvailable":true,"Plugins":"no array"}}})";

constexpr char kModule[] = R"(<?xml version="1.0" encoding="utf-8" ?>
<DictValue>
    <key>ConfigData</key>
    <DictValue>
        <key>General</key>
        <DictValue>
            <key>Both</key>
            <StringValue>general</StringValue>
            <key>Common</key>
            <IntValue>7</IntValue>
        </DictValue>
        <key>Mac</key>
        <DictValue>
            <key>Both</key>
            <StringValue>mac</StringValue>
        </DictValue>
    </DictValue>
    <key>Feature</key>
    <DictValue>
        <key>General</key>
        <DictValue>
            <key>Both</key>
            <BooleanValue>true</BooleanValue>
            <key>Common</key>
            <BooleanValue>true</BooleanValue>
        </DictValue>
        <key>Mac</key>
        <DictValue>
            <key>Both</key>
            <BooleanValue>false</BooleanValue>
        </DictValue>
    </DictValue>
</DictValue>
)";

} // namespace

class tst_persomanager : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void prefersThePlatformsValue();
    void givesNoDataToAModuleThatIsNotAvailable_data();
    void givesNoDataToAModuleThatIsNotAvailable();
    void listsPlugins();
    void listsModules();
    void tellsTheProject();
    void takesSeveralFilesForNone_data();
    void takesSeveralFilesForNone();
    void countsPersonalisationFilesOnly();
    void survivesDamagedFiles_data();
    void survivesDamagedFiles();
    void readsTheModuleFileOnce();
    void keepsOneManagerPerName();
    void loadsAnotherModule();
    void keepsItsDataWithoutPersonalisation();
    void readsTheLocalEnvironment_data();
    void readsTheLocalEnvironment();
    void readsNoIniWithoutAllArguments();
};

void tst_persomanager::prefersThePlatformsValue()
{
    const InstalledConfig installed(HELPER_CONFIGHELPER);
    installed.addPerso(kPerso);
    installed.addModule("SMS", kModule);
    QCOMPARE(installed.run({"config:SMS:Both", "config:SMS:Common", "feature:SMS:Both",
                            "feature:SMS:Common", "config:SMS:None", "feature:SMS:None"}),
             QStringList({"\"mac\"", "7", "false", "true", "null", "false",
                          "log PersoManager/persomanager getConfigData The data does not contain "
                          "this config data named: None",
                          "log PersoManager/persomanager hasFeature The data does not contain this "
                          "feature named: None"}));
}

void tst_persomanager::givesNoDataToAModuleThatIsNotAvailable_data()
{
    QTest::addColumn<QString>("module");
    for (const char* module : {"Call", "Odd", "Absent", "sms"})
        QTest::newRow(module) << QString(module);
}

void tst_persomanager::givesNoDataToAModuleThatIsNotAvailable()
{
    QFETCH(QString, module);
    const InstalledConfig installed(HELPER_CONFIGHELPER);
    installed.addPerso(kPerso);
    installed.addModule(module, kModule);
    QCOMPARE(installed.run({"feature:" + module + ":Common", "config:" + module + ":Common"}),
             QStringList({"false", "null",
                          "log PersoManager/persomanager hasFeature The data does not contain this "
                          "feature named: Common",
                          "log PersoManager/persomanager getConfigData The data does not contain "
                          "this config data named: Common"}));
}

void tst_persomanager::listsPlugins()
{
    const InstalledConfig installed(HELPER_CONFIGHELPER);
    installed.addPerso(kPerso);
    QCOMPARE(installed.run({"plugins:SMS", "plugins:Call", "plugins:Odd", "plugins:Bare",
                            "plugins:Text", "plugins:Absent", "plugins:All Module"}),
             QStringList({"[\"smsplugin\",\"inbox\"]", "[]", "[]", "[]", "[]", "[]",
                          "[\"common\",\"smsplugin\",\"inbox\"]"}));
}

void tst_persomanager::listsModules()
{
    const InstalledConfig installed(HELPER_CONFIGHELPER);
    installed.addPerso(kPerso);
    QCOMPARE(installed.run({"modules"}),
             QStringList({"[\"All Module\",\"Bare\",\"SMS\",\"Text\"]"}));
}

void tst_persomanager::tellsTheProject()
{
    const InstalledConfig installed(HELPER_CONFIGHELPER);
    installed.addPerso(kPerso);
    QCOMPARE(installed.run({"info", "subproject", "version"}),
             QStringList({"{\"Mac Version\":\"1.2.3\",\"SubProject\":\"Sub\"}", "Sub", "1.2.3"}));
    installed.addPerso("{\"Module Information\":{}}");
    QCOMPARE(installed.run({"info", "subproject", "version"}), QStringList({"{}", "", ""}));
}

void tst_persomanager::takesSeveralFilesForNone_data()
{
    QTest::addColumn<QStringList>("names");
    QTest::newRow("no folder") << QStringList();
    QTest::newRow("none") << QStringList{"other.config"};
    QTest::newRow("two") << QStringList{"a.perso", "b.perso"};
    QTest::newRow("three") << QStringList{"a.perso", "b.perso", "c.perso"};
}

void tst_persomanager::takesSeveralFilesForNone()
{
    QFETCH(QStringList, names);
    const InstalledConfig installed(HELPER_CONFIGHELPER);
    for (const QString& name : names)
        installed.add("Resources/Data/Perso/" + name, kPerso);
    if (!names.isEmpty())
        installed.addModule("SMS", kModule);
    const QString log = "log PersoManager/persomanager ";
    QCOMPARE(installed.run({"perso", "modules", "plugins:SMS", "plugins:All Module", "info",
                            "subproject", "version", "feature:SMS:Common"}),
             QStringList({"null", "[]", "[]", "[]", "{}", "", "", "false",
                          log + "getAllSupportModules Read perso file error!",
                          log + "getSupportPlugins Read perso file error!",
                          log + "getSupportPlugins Read perso file error!",
                          log + "loadModuleData Read perso file error!",
                          log + "hasFeature The data does not contain this feature named: "
                                "Common"}));
}

void tst_persomanager::countsPersonalisationFilesOnly()
{
    const InstalledConfig installed(HELPER_CONFIGHELPER);
    installed.addPerso(kPerso);
    installed.add("Resources/Data/Perso/project.perso.bak", "x");
    installed.add("Resources/Data/Perso/folder.perso/x", "x");
    QCOMPARE(installed.run({"subproject"}), QStringList({"Sub"}));
}

void tst_persomanager::survivesDamagedFiles_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("cut") << QByteArray("{\"Module Names\":{\"SMS\":");
    QTest::newRow("binary") << QByteArray("\x7F\x00\xFF\xE7", 4);
    QTest::newRow("an array") << QByteArray("[1,2]");
    QTest::newRow("a number") << QByteArray("5");
    QTest::newRow("names that are no map") << QByteArray("{\"Module Names\":[\"SMS\"]}");
    QTest::newRow("a module that is no map") << QByteArray("{\"Module Names\":{\"SMS\":true}}");
    QTest::newRow("information that is no map") << QByteArray("{\"Module Information\":3}");
    QTest::newRow("deep") << QByteArray(100000, '[');
}

void tst_persomanager::survivesDamagedFiles()
{
    QFETCH(QByteArray, content);
    const InstalledConfig installed(HELPER_CONFIGHELPER);
    installed.addPerso(content);
    installed.addModule("SMS", kModule);
    const QStringList lines = installed.run({"modules", "plugins:SMS", "plugins:All Module",
                                             "subproject", "version", "config:SMS:Both"});
    QCOMPARE(lines.mid(0, 6), QStringList({"[]", "[]", "[]", "", "", "null"}));

    // The same done to the module's file.
    installed.addPerso(kPerso);
    installed.addModule("SMS", content);
    QCOMPARE(installed.run({"config:SMS:Both", "feature:SMS:Both"}).mid(0, 2),
             QStringList({"null", "false"}));
}

void tst_persomanager::readsTheModuleFileOnce()
{
    const InstalledConfig installed(HELPER_CONFIGHELPER);
    installed.addPerso(kPerso);
    QCOMPARE(installed.run({"config:SMS:Both", "feature:SMS:Both"}),
             QStringList({"null", "false",
                          "log DataValue/datavalue readXMLFile " +
                              installed.path("bin/../Resources/Data/Perso/SMS.xml"),
                          "log DataValue/datavalue readXMLFile Read file error",
                          "log PersoManager/persomanager getConfigData The data does not contain "
                          "this config data named: Both",
                          "log PersoManager/persomanager hasFeature The data does not contain this "
                          "feature named: Both"}));
}

void tst_persomanager::keepsOneManagerPerName()
{
    const InstalledConfig installed(HELPER_CONFIGHELPER);
    installed.addPerso(kPerso);
    QCOMPARE(installed.run({"instances"}), QStringList({"true"}));
}

void tst_persomanager::loadsAnotherModule()
{
    // Beside this test program lies no installation: every name leaves the data empty.
    CPersoManager manager("");
    manager.loadModuleData("SMS");
    manager.loadModuleData("");
    QVERIFY(manager.getConfigData("Both").isNull());
    QObject parent;
    QCOMPARE((new CPersoManager("SMS", &parent))->parent(), &parent);
}

void tst_persomanager::keepsItsDataWithoutPersonalisation()
{
    const InstalledConfig installed(HELPER_CONFIGHELPER);
    installed.addPerso(kPerso);
    installed.addModule("SMS", kModule);
    QCOMPARE(installed.run({"reload:SMS:Both"}),
             QStringList({"\"mac\" \"mac\"",
                          "log PersoManager/persomanager loadModuleData Read perso file error!"}));
}

void tst_persomanager::readsTheLocalEnvironment_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("project");
    QTest::newRow("plain") << QByteArray("[LOCAL CONFIG]\ncurrent_project=Demo\n") << "Demo";
    QTest::newRow("other groups")
        << QByteArray("current_project=a\n[X]\ncurrent_project=b\n[LOCAL CONFIG]\r\n"
                      "current_project = Demo Project\r\n")
        << "Demo Project";
    QTest::newRow("quoted") << QByteArray("[LOCAL CONFIG]\ncurrent_project=\"a, b\"\n") << "a, b";
    QTest::newRow("commas") << QByteArray("[LOCAL CONFIG]\ncurrent_project=a,b,  c ,\n")
                            << "a,b,  c ,";
    QTest::newRow("non-ASCII") << QByteArray("[LOCAL CONFIG]\ncurrent_project=\"\xC3\xA9\"\n")
                               << QString::fromUtf8("\xC3\xA9");
    QTest::newRow("no key") << QByteArray("[LOCAL CONFIG]\nproject=Demo\n") << "";
    QTest::newRow("no group") << QByteArray("current_project=Demo\n") << "";
    QTest::newRow("empty") << QByteArray() << "";
    QTest::newRow("binary") << QByteArray("\x00\xFF[LOCAL", 8) << "";
}

void tst_persomanager::readsTheLocalEnvironment()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, project);
    const InstalledConfig installed(HELPER_CONFIGHELPER);
    QVERIFY(QDir().mkpath(installed.path("Resources")));
    QCOMPARE(installed.run({"project"}), QStringList({""}));
    installed.add("Build/LocalEnvConfig.ini", content);
    QCOMPARE(installed.run({"project"}), QStringList({project}));
}

void tst_persomanager::readsNoIniWithoutAllArguments()
{
    const QTemporaryDir folder;
    const QString file = folder.filePath("a.ini");
    TestFile::write(file, "[group]\nkey=5\n");
    QCOMPARE(CPersoManager::getLoaclIniConfig("key", "group", file), QString("5"));
    QCOMPARE(CPersoManager::getLoaclIniConfig("", "group", file), QString());
    QCOMPARE(CPersoManager::getLoaclIniConfig("key", "", file), QString());
    QCOMPARE(CPersoManager::getLoaclIniConfig("key", "group", ""), QString());
    QCOMPARE(CPersoManager::getLoaclIniConfig("key", "group", folder.path()), QString());
    QCOMPARE(CPersoManager::getLoaclIniConfig("none", "group", file), QString());
}

QTEST_GUILESS_MAIN(tst_persomanager)
#include "tst_persomanager.moc"
