#include "appglobal/applicationpaths.h"
#include "support/installedprogram.h"

#include <QTest>

class tst_applicationpaths : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void followTheExecutable_data();
    void followTheExecutable();
    void agreeWithTheApplicationObject();
};

void tst_applicationpaths::followTheExecutable_data()
{
    QTest::addColumn<QString>("place");
    QTest::addColumn<QString>("resources");
    QTest::addColumn<QStringList>("arguments");
    const QStringList bare;
    const QStringList withApplication{"app"};
    const QString bundle = "Name.app/Contents/MacOS/Name";
    const QString inBundle = "Name.app/Contents/MacOS/../Resources";
    QTest::newRow("bundle") << bundle << inBundle << bare;
    QTest::newRow("bundle, application object") << bundle << inBundle << withApplication;
    QTest::newRow("no bundle") << "bin/program"
                               << "bin/../Resources" << bare;
    QTest::newRow("no bundle, application object") << "bin/program"
                                                   << "bin/../Resources" << withApplication;
    const QString odd = QString::fromUtf8("a folder/\xC3\xA9t\xC3\xA9/the program");
    QTest::newRow("blanks and non-ASCII")
        << odd << QString::fromUtf8("a folder/\xC3\xA9t\xC3\xA9/../Resources") << bare;
}

void tst_applicationpaths::followTheExecutable()
{
    QFETCH(QString, place);
    QFETCH(QString, resources);
    QFETCH(QStringList, arguments);
    const InstalledProgram program(HELPER_PATHSPRINTER, place);
    const auto result = program.run(arguments);
    QCOMPARE(result.code, 0);
    QCOMPARE(result.err, QByteArray());
    const QString expected = program.path(resources);
    QCOMPARE(QString::fromUtf8(result.out),
             expected + '\n' + expected + "/Data\n" + expected + "/UserData\n");
}

void tst_applicationpaths::agreeWithTheApplicationObject()
{
    QCOMPARE(CApplicationPaths::getResourcePath(),
             QCoreApplication::applicationDirPath() + "/../Resources");
}

QTEST_GUILESS_MAIN(tst_applicationpaths)
#include "tst_applicationpaths.moc"
