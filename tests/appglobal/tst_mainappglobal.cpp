#include "DataValue/datavalue.h"
#include "support/installedconfig.h"

#include <QTest>

namespace {

constexpr char kPerso[] = R"({"Module Information":{"Mac Version":"2.0"},
                              "Module Names":{"SYSTEM MODULE":{"IsAvailable":true}}})";

constexpr char kSystemModule[] =
    "<DictValue><key>ConfigData</key><DictValue><key>Mac</key><DictValue>"
    "<key>AutoConnect</key><BooleanValue>true</BooleanValue>"
    "<key>StartConfig</key><DictValue>"
    "<key>General</key><DictValue>"
    "<key>CurrentSkin</key><StringValue>Blue</StringValue>"
    "<key>Language</key><StringValue>en</StringValue></DictValue>"
    "<key>Window</key><DictValue><key>nWidth</key><IntValue>640</IntValue></DictValue>"
    "</DictValue></DictValue></DictValue></DictValue>";

constexpr char kDefaults[] = R"({"General":{"CurrentSkin":"Blue","Language":"en"},)"
                             R"("Window":{"nWidth":640}})";
constexpr char kFirst[] = R"({"AutoConnect":true,"General":{"CurrentSkin":"Blue",)"
                          R"("Language":"en"},"Window":{"nWidth":640}})";

constexpr char kSaved[] = "<DictValue><key>General</key><DictValue><key>Language</key>"
                          "<StringValue>de</StringValue></DictValue></DictValue>";

const QString kFile = "Resources/UserData/System.xml";

/// An installation with defaults; the folder of the user's data is not there yet.
class System : public InstalledConfig
{
public:
    System()
        : InstalledConfig(HELPER_CONFIGHELPER)
    {
        addPerso(kPerso);
        addModule("SYSTEM MODULE", kSystemModule);
    }

    /// The JSON text of the saved configuration; empty when there is none.
    QString saved() const
    {
        CDataValue value;
        return value.readFile(path(kFile)) ? value.parseToQString(FAST_STYLE).trimmed() : QString();
    }
};

} // namespace

class tst_mainappglobal : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void makesTheConfigurationAtTheFirstStart();
    void makesItAnewWhenTheFileIsDamaged_data();
    void makesItAnewWhenTheFileIsDamaged();
    void readsTheSavedConfiguration();
    void knowsTheFileThatWasRead();
    void startsWithoutPersonalisation();
    void copiesDefaultsWhenTheyAreRead();
    void addsNothingUsefulForAnUnknownSetting();
    void changesSettings();
    void replacesAGroup();
    void savesAtOnceOnlyWhenAsked();
    void savesANullWithoutDamage();
    void doesNotChangeAGroupThatIsNone();
    void givesTheSkinsFolder();
    void givesTheSoftwareVersion();
    void reportsASaveThatFails();
    void startsAnewAfterItsRelease();
};

void tst_mainappglobal::makesTheConfigurationAtTheFirstStart()
{
    const System system;
    QVERIFY(!QFile::exists(system.path(kFile)));
    QCOMPARE(system.run({"load", "defaults"}).mid(0, 2), QStringList({kFirst, kDefaults}));
    QCOMPARE(system.saved(), QString(kFirst));
}

void tst_mainappglobal::makesItAnewWhenTheFileIsDamaged_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("cut") << QByteArray(kSaved).left(60);
    QTest::newRow("binary") << QByteArray("\x00\xE7\xFF", 3);
    QTest::newRow("another root") << QByteArray("<html/>");
    QTest::newRow("no map") << QByteArray("<ArrayValue><IntValue>1</IntValue></ArrayValue>");
    QTest::newRow("deep") << QByteArray("<DictValue>").repeated(50000);
}

void tst_mainappglobal::makesItAnewWhenTheFileIsDamaged()
{
    QFETCH(QByteArray, content);
    const System system;
    system.add(kFile, content);
    QCOMPARE(system.run({"load"}).value(0), QString(kFirst));
    QCOMPARE(system.saved(), QString(kFirst));
}

void tst_mainappglobal::readsTheSavedConfiguration()
{
    const System system;
    system.add(kFile, kSaved);
    QCOMPARE(system.run({"load", "get:General:Language", "defaults"}),
             QStringList({R"({"General":{"Language":"de"}})", "\"de\"", kDefaults}));
    QCOMPARE(TestFile::read(system.path(kFile)), QByteArray(kSaved));
}

void tst_mainappglobal::knowsTheFileThatWasRead()
{
    const System system;
    system.add(kFile, kSaved);
    QCOMPARE(system.run({"load", "set:General:Language:\"fr\"", "savefile"}).value(2),
             QString("true"));
    QCOMPARE(system.saved(), QString(R"({"General":{"Language":"fr"}})"));
    // A configuration made from the defaults was not read from a file.
    QVERIFY(QFile::remove(system.path(kFile)));
    QCOMPARE(system.run({"load", "savefile"}).value(1), QString("false"));
    QCOMPARE(system.run({"load", "savefile"}).value(1), QString("true"));
}

void tst_mainappglobal::startsWithoutPersonalisation()
{
    const InstalledConfig bare(HELPER_CONFIGHELPER);
    QVERIFY(QDir().mkpath(bare.path("Resources")));
    const QStringList lines =
        bare.run({"load", "get:General:CurrentSkin", "skin", "software", "defaults"});
    QCOMPARE(lines.mid(0, 5), QStringList({R"({"AutoConnect":false})", "null", "", "", "null"}));
    QVERIFY(lines.contains("log PersoManager/persomanager loadModuleData Read perso file error!"));
    QVERIFY(QFile::exists(bare.path(kFile)));
}

void tst_mainappglobal::copiesDefaultsWhenTheyAreRead()
{
    const System system;
    system.add(kFile, kSaved);
    QCOMPARE(
        system.run({"load", "get:Window:nWidth", "get:General:CurrentSkin", "get:Window:", "save"})
            .mid(1),
        QStringList({"640", "\"Blue\"", R"({"nWidth":640})", "true"}));
    QCOMPARE(system.saved(), QString(R"({"General":{"CurrentSkin":"Blue","Language":"de"},)"
                                     R"("Window":{"nWidth":640}})"));
}

void tst_mainappglobal::addsNothingUsefulForAnUnknownSetting()
{
    const System system;
    QCOMPARE(system
                 .run({"load", "get:General:None", "get:None:None", "get:Other:", "save",
                       "get:General:Language"})
                 .mid(1, 5),
             QStringList({"null", "null", "null", "true", "\"en\""}));
    // What a later start reads is as good as before.
    QCOMPARE(system
                 .run({"load", "get:General:None", "get:None:None",
                       "get:Other:", "get:General:Language", "get:Window:nWidth"})
                 .mid(1),
             QStringList({"null", "null", "null", "\"en\"", "640"}));
}

void tst_mainappglobal::changesSettings()
{
    const System system;
    system.add(kFile, kSaved);
    // A group that is missing comes in from the defaults first.
    QCOMPARE(system
                 .run({"load", "set:Window:nHeight:480", "set:General:Language:\"fr\"",
                       "set:New:bOn:true"})
                 .last(),
             QString(R"({"General":{"Language":"fr"},"New":{"bOn":true},)"
                     R"("Window":{"nHeight":480,"nWidth":640}})"));
}

void tst_mainappglobal::replacesAGroup()
{
    const System system;
    system.add(kFile, kSaved);
    QCOMPARE(system.run({"load", "set:General::{\"only\":1}", "get:General:only"}).mid(1),
             QStringList({R"({"General":{"only":1}})", "1"}));
}

void tst_mainappglobal::savesAtOnceOnlyWhenAsked()
{
    const System system;
    system.add(kFile, kSaved);
    system.run({"load", "set:General:Language:\"fr\""});
    QCOMPARE(TestFile::read(system.path(kFile)), QByteArray(kSaved));
    system.run({"load", "setsave:General:Language:\"fr\""});
    QCOMPARE(system.saved(), QString(R"({"General":{"Language":"fr"}})"));
}

void tst_mainappglobal::savesANullWithoutDamage()
{
    const System system;
    system.run({"load", "setsave:General:Nothing:null", "setsave:Gone::null"});
    QCOMPARE(system
                 .run({"load", "get:General:Nothing", "get:General:Language",
                       "get:Gone:", "get:Window:nWidth"})
                 .mid(1),
             QStringList({"null", "\"en\"", "null", "640"}));
}

void tst_mainappglobal::doesNotChangeAGroupThatIsNone()
{
    const System system;
    QCOMPARE(
        system.run({"load", "set:AutoConnect:key:1", "get:AutoConnect:key", "get:AutoConnect:"})
            .mid(1, 3),
        QStringList({kFirst, "null", "true"}));
}

void tst_mainappglobal::givesTheSkinsFolder()
{
    const System system;
    QCOMPARE(system.run({"load", "skin", "set:General:CurrentSkin:\"Red\"", "skin"}).mid(1, 3),
             QStringList({"/Skin/Blue",
                          R"({"AutoConnect":true,"General":{"CurrentSkin":"Red","Language":"en"},)"
                          R"("Window":{"nWidth":640}})",
                          "/Skin/Red"}));
}

void tst_mainappglobal::givesTheSoftwareVersion()
{
    const System system;
    QCOMPARE(system.run({"software"}), QStringList({"2.0"}));
}

void tst_mainappglobal::reportsASaveThatFails()
{
    const System system;
    system.add("Resources/UserData", "a file where the folder should be");
    const QStringList lines = system.run({"load", "save"});
    QCOMPARE(lines.mid(0, 2), QStringList({kFirst, "false"}));
    const QString message = "log appglobal/mainappglobal saveSystemConfig The system configuration "
                            "is not saved: " +
                            system.path("bin/../" + kFile);
    QCOMPARE(lines.count(message), 2);
}

void tst_mainappglobal::startsAnewAfterItsRelease()
{
    const System system;
    QCOMPARE(system.run({"load", "release"}).value(1), QString("true"));
}

QTEST_GUILESS_MAIN(tst_mainappglobal)
#include "tst_mainappglobal.moc"
