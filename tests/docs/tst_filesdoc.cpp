// Each example of docs/files.md is read by what it is an example of.

#include "DataValue/datavalue.h"
#include "appglobal/wzrfilehandler.h"
#include "support/installedconfig.h"

#include <QTemporaryDir>
#include <QTest>

namespace {

/// The code block under a heading, the last line feed included; the `number`th, from 0.
QByteArray example(const QByteArray& heading, int number = 0)
{
    const QByteArray page = TestFile::read(PROJECT_FOLDER "/docs/files.md");
    qsizetype at = page.indexOf('\n' + heading + '\n');
    const qsizetype next = page.indexOf("\n#", at + 1);
    for (int i = 0; i <= number && at >= 0; ++i) {
        const qsizetype end = i > 0 ? page.indexOf("\n```\n", at) + 4 : at;
        at = page.indexOf("\n```", end);
    }
    const qsizetype begin = page.indexOf('\n', at + 1) + 1;
    if (at < 0 || (next >= 0 && begin > next))
        qFatal("no example under \"%s\"", heading.constData());
    return page.mid(begin, page.indexOf("\n```\n", begin) + 1 - begin);
}

} // namespace

class tst_filesdoc : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theTypedXmlIsWhatASaveWrites();
    void theJsonHoldsTheSame();
    void thePersonalisationNamesModulesAndPlugins();
    void theModuleFileAnswersForItems();
    void theFirstStartWritesTheConfiguration();
    void theLocalEnvironmentNamesTheProject();
    void theLogSettingsAreRead();
    void theTextFileHasTheseBytes();
    void theDemosFilesAreThese_data();
    void theDemosFilesAreThese();

private:
    QTemporaryDir m_folder;
};

void tst_filesdoc::theTypedXmlIsWhatASaveWrites()
{
    const QByteArray text = example("### Typed XML: `.xml`");
    const QString file = m_folder.filePath("a.xml");
    TestFile::write(file, text);
    CDataValue value;
    QVERIFY(value.readFile(file));
    QCOMPARE(value.mapGet("nSize").type(), UINT_VALUE);
    QCOMPARE(value.mapGet("list").arrayGet(1).asQString(), QString("  "));
    QVERIFY(value.saveFile());
    QCOMPARE(TestFile::read(file), text);
}

void tst_filesdoc::theJsonHoldsTheSame()
{
    TestFile::write(m_folder.filePath("b.xml"), example("### Typed XML: `.xml`"));
    CDataValue value;
    QVERIFY(value.readFile(m_folder.filePath("b.xml")));
    QVERIFY(value.saveFileAs(m_folder.filePath("b.config")));
    QCOMPARE(TestFile::read(m_folder.filePath("b.config")), example("### JSON: `.config`"));
    QVERIFY(value.readFile(m_folder.filePath("b.config")));
    QCOMPARE(value.mapGet("nSize").type(), INT_VALUE);
}

void tst_filesdoc::thePersonalisationNamesModulesAndPlugins()
{
    const InstalledConfig installed(HELPER_CONFIGHELPER);
    installed.addPerso(example("### Personalisation: `.perso`"));
    QCOMPARE(
        installed.run({"subproject", "version", "modules", "plugins:SMS", "plugins:Voice",
                       "plugins:All Module"}),
        QStringList({"Demo", "1.0.2", "[\"SMS\",\"SYSTEM MODULE\"]",
                     "[\"smsplugin\",\"ussdplugin\"]", "[]", "[\"smsplugin\",\"ussdplugin\"]"}));
}

void tst_filesdoc::theModuleFileAnswersForItems()
{
    const InstalledConfig installed(HELPER_CONFIGHELPER);
    installed.addPerso(example("### Personalisation: `.perso`"));
    installed.addModule("SYSTEM MODULE", example("### Module files"));
    QCOMPARE(installed.run({"config:SYSTEM MODULE:AutoConnect", "config:SYSTEM MODULE:StartConfig",
                            "feature:SYSTEM MODULE:LongMessages"}),
             QStringList({"true", R"({"General":{"CurrentSkin":"Blue"}})", "false"}));
}

void tst_filesdoc::theFirstStartWritesTheConfiguration()
{
    const InstalledConfig installed(HELPER_CONFIGHELPER);
    installed.addPerso(example("### Personalisation: `.perso`"));
    installed.addModule("SYSTEM MODULE", example("### Module files"));
    installed.run({"load"});
    QCOMPARE(TestFile::read(installed.path("Resources/UserData/System.xml")),
             example("### The user's configuration: `System.xml`"));
    QCOMPARE(installed.run({"load", "skin"}).value(1), QString("/Skin/Blue"));
}

void tst_filesdoc::theLocalEnvironmentNamesTheProject()
{
    const InstalledConfig installed(HELPER_CONFIGHELPER);
    installed.add("Build/LocalEnvConfig.ini", example("## Settings in INI form"));
    QVERIFY(QDir().mkpath(installed.path("Resources")));
    QCOMPARE(installed.run({"project"}), QStringList({"Demo"}));
}

void tst_filesdoc::theLogSettingsAreRead()
{
    const QByteArray settings = example("## Settings in INI form", 1);
    const InstalledConfig installed(HELPER_CONFIGHELPER);
    installed.add("Resources/Data/LogFile.ini", settings);
    QVERIFY(installed.run({"feature:None:None"}).last().startsWith("log PersoManager/"));
    // The same file with the switch turned: no log, which the helper cannot work without.
    installed.add("Resources/Data/LogFile.ini",
                  QByteArray(settings).replace("VALID=true", "VALID=0"));
    const auto result = ChildProcess::run(installed.path("bin/program"), {"project"});
    QVERIFY(result.err.contains("the log did not start"));
}

void tst_filesdoc::theTextFileHasTheseBytes()
{
    const QByteArray bytes = QByteArray::fromHex(example("## UTF-16 text files"));
    const QString path = m_folder.filePath("a.txt");
    WZRFileHandler file;
    QVERIFY(file.open(path, true));
    file.writeLine("a");
    file.writeLine(QString(QChar(0x00E9)));
    file.close();
    QCOMPARE(TestFile::read(path), bytes);
    QVERIFY(file.open(path, false));
    QCOMPARE(file.readAll(), QString::fromUtf8("a\n\xC3\x83\xC2\xA9\n"));
}

void tst_filesdoc::theDemosFilesAreThese_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("number");
    QTest::newRow("personalisation") << "demo.perso" << 0;
    QTest::newRow("module") << "DeviceService.xml" << 1;
    QTest::newRow("defaults") << "SYSTEM MODULE.xml" << 2;
}

void tst_filesdoc::theDemosFilesAreThese()
{
    QFETCH(QString, name);
    QFETCH(int, number);
    const QString folder = PROJECT_FOLDER "/examples/connectionmanager/Resources/Data/Perso/";
    QCOMPARE(example("## The files of the demo", number), TestFile::read(folder + name));
}

QTEST_GUILESS_MAIN(tst_filesdoc)
#include "tst_filesdoc.moc"
