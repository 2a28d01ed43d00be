#include "common_function.h"

#include "support/logcapture.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

#include <sys/stat.h>

namespace {

// A program that tells the path by which it was started; moved into place, so that nobody reads
// half of it.
const char tellingProgram[] = "#!/bin/sh\n"
                              "printf '%s' \"$0\" > \"$LAUNCH_RESULT.part\"\n"
                              "mv \"$LAUNCH_RESULT.part\" \"$LAUNCH_RESULT\"\n";

void nastyNames()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("plain") << "program";
    QTest::newRow("blanks") << " my  program ";
    QTest::newRow("double quotation marks") << "say \"hello\"";
    QTest::newRow("single quotation marks") << "it's";
    QTest::newRow("variable") << "$HOME";
    QTest::newRow("variable in braces") << "${HOME}";
    QTest::newRow("substitution") << "a$(touch injected)b";
    QTest::newRow("arithmetic") << "$((1+1))";
    QTest::newRow("backquotes") << "a`touch injected`b";
    QTest::newRow("closing mark and command") << "a\"; touch injected; \"";
    QTest::newRow("closing mark and background") << "a\" & touch injected & \"";
    QTest::newRow("escaped closing mark") << "a\\\"; touch injected; \"";
    QTest::newRow("escaped substitution") << "a\\$(touch injected)";
    QTest::newRow("escaped backquotes") << "a\\`touch injected\\`";
    QTest::newRow("backslashes") << "a\\b\\\\c\\n";
    QTest::newRow("backslash at the end") << "a\\";
    QTest::newRow("line end") << "a\ntouch injected\n";
    QTest::newRow("backslash and line end") << "a\\\ntouch injected\n";
    QTest::newRow("wildcards") << "*[a-z]?";
    QTest::newRow("operators") << "a;touch injected|b&c>d<e(f)#g!h~";
    QTest::newRow("home mark") << "~root";
    QTest::newRow("leading hyphen") << "-n";
    QTest::newRow("assignment") << "A=b";
    QTest::newRow("non-ASCII") << QStringLiteral("Größe 短信 Ж");
}

} // namespace

class tst_launch : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void startsExactlyTheFile_data() { nastyNames(); }
    void startsExactlyTheFile();
    void startsAFileOfTheWorkingDirectory_data();
    void startsAFileOfTheWorkingDirectory();
    void launchesExactlyTheDesktopEntry_data() { nastyNames(); }
    void launchesExactlyTheDesktopEntry();
    void unknownNameRunsNothing_data() { nastyNames(); }
    void unknownNameRunsNothing();
    void entryOfTheWorkingDirectoryIsNotTaken();
    void zeroInThePathRunsNothing();
    void startedFileIsLogged();
    void openedNameIsLogged();
    void pathGoesToTheDebugOutput();
    void doesNotWaitForTheProgram();

private:
    void writeProgram(const QString& path, const QByteArray& text = tellingProgram);
    void writeEntry(const QString& path);
    QString told();
    bool injected() const { return QFile::exists(m_work.filePath(QStringLiteral("injected"))); }

    std::unique_ptr<QTemporaryDir> m_folder;
    QDir m_work; // the working directory, in which an injected command would leave its mark
    QString m_home;
    QString m_result;
    const QString m_oldWork = QDir::currentPath();
};

void tst_launch::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    QVERIFY(QDir(m_folder->path()).mkpath(QStringLiteral("work")));
    QVERIFY(QDir(m_folder->path()).mkpath(QStringLiteral("home/applications")));
    m_work = QDir(m_folder->filePath(QStringLiteral("work")));
    m_home = m_folder->filePath(QStringLiteral("home"));
    m_result = m_folder->filePath(QStringLiteral("result"));
    QVERIFY(QDir::setCurrent(m_work.path()));
    qputenv("LAUNCH_RESULT", QFile::encodeName(m_result));
    qputenv("XDG_DATA_HOME", QFile::encodeName(m_home));
    qputenv("XDG_DATA_DIRS", QFile::encodeName(m_home));
}

void tst_launch::cleanup()
{
    QDir::setCurrent(m_oldWork);
    m_folder.reset();
}

void tst_launch::writeProgram(const QString& path, const QByteArray& text)
{
    QFile file(path);
    QVERIFY2(file.open(QIODevice::WriteOnly), qPrintable(path));
    QCOMPARE(file.write(text), qint64(text.size()));
    file.close();
    QVERIFY(file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
}

void tst_launch::writeEntry(const QString& path)
{
    const QString program = m_folder->filePath(QStringLiteral("entrysprogram"));
    writeProgram(program);
    writeProgram(path, "[Desktop Entry]\nType=Application\nName=Entry\nExec=" +
                           QFile::encodeName(program) + '\n');
}

// What the started program tells, once it has; empty when nothing was started in time.
QString tst_launch::told()
{
    if (!QTest::qWaitFor([this] { return QFile::exists(m_result); }, 30000))
        return {};
    QFile file(m_result);
    return file.open(QIODevice::ReadOnly) ? QFile::decodeName(file.readAll()) : QString();
}

void tst_launch::startsExactlyTheFile()
{
    QFETCH(QString, name);
    const QString path = m_work.filePath(name);
    writeProgram(path);
    QCOMPARE(startApplication(path), 0);
    QCOMPARE(told(), path);
    QVERIFY(!injected());
}

void tst_launch::startsAFileOfTheWorkingDirectory_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("own name") << "program of the test";
    QTest::newRow("name of a system's program") << "true";
    QTest::newRow("name of a shell's word") << "exit";
    QTest::newRow("name that looks like an option") << "-n";
}

void tst_launch::startsAFileOfTheWorkingDirectory()
{
    QFETCH(QString, name);
    writeProgram(m_work.filePath(name));
    QCOMPARE(startApplication(name), 0);
    QCOMPARE(told(), QString("./" + name));
}

void tst_launch::launchesExactlyTheDesktopEntry()
{
    QFETCH(QString, name);
    writeEntry(m_home + "/applications/" + name + ".desktop");
    QCOMPARE(startApplication(name), 0);
    QCOMPARE(told(), m_folder->filePath(QStringLiteral("entrysprogram")));
    QVERIFY(!injected());
}

void tst_launch::unknownNameRunsNothing()
{
    QFETCH(QString, name);
    QVERIFY(startApplication(name) != 0);
    QVERIFY(!injected());
    QVERIFY(!QFile::exists(m_result));
}

void tst_launch::entryOfTheWorkingDirectoryIsNotTaken()
{
    writeEntry(m_work.filePath(QStringLiteral("planted.desktop")));
    QVERIFY(startApplication(QStringLiteral("planted")) != 0);
    QVERIFY(!QFile::exists(m_result));
}

void tst_launch::zeroInThePathRunsNothing()
{
    const QString path = m_work.filePath(QStringLiteral("program"));
    writeProgram(path);
    QVERIFY(startApplication(path + QChar(0) + "; touch injected") != 0);
    QVERIFY(!injected());
    QVERIFY(!QFile::exists(m_result));
}

void tst_launch::startedFileIsLogged()
{
    LogCapture log;
    const QString path = m_work.filePath(QStringLiteral("my program"));
    writeProgram(path);
    QCOMPARE(startApplication(path), 0);
    QCOMPARE(told(), path);
    QCOMPARE(log.lines().size(), 1);
    QVERIFY(log.contains("common_function startApplication we need open a application "));
}

void tst_launch::openedNameIsLogged()
{
    LogCapture log;
    writeEntry(m_home + "/applications/my $entry.desktop");
    QCOMPARE(startApplication(QStringLiteral("my $entry")), 0);
    QVERIFY(!told().isEmpty());
    QCOMPARE(log.lines().size(), 2);
    QVERIFY(log.lines()[0].endsWith(
        "common_function startApplication no app we try open an bundle app: my $entry "));
    QVERIFY(log.lines()[1].endsWith("common_function startApplication cmd gio launch \"" + m_home +
                                    "/applications/my \\$entry.desktop\" "));
}

void tst_launch::pathGoesToTheDebugOutput()
{
    QTest::ignoreMessage(QtDebugMsg, "strName = no such $name");
    QVERIFY(startApplication(QStringLiteral("no such $name")) != 0);
}

void tst_launch::doesNotWaitForTheProgram()
{
    const QString path = m_work.filePath(QStringLiteral("patient"));
    const QString gate = m_folder->filePath(QStringLiteral("gate"));
    // Reading from the gate blocks the program until the test opens it for writing.
    QCOMPARE(mkfifo(QFile::encodeName(gate).constData(), 0600), 0);
    writeProgram(path, "#!/bin/sh\nread line < '" + QFile::encodeName(gate) + "'\n" +
                           QByteArray(tellingProgram).mid(10));
    QCOMPARE(startApplication(path), 0);
    QVERIFY(!QFile::exists(m_result));
    QFile opened(gate);
    QVERIFY(opened.open(QIODevice::WriteOnly));
    opened.write("go\n");
    opened.close();
    QCOMPARE(told(), path);
}

QTEST_GUILESS_MAIN(tst_launch)
#include "tst_launch.moc"
