#include "common_function_launch_p.h"

#include <QTest>

class tst_CommonFunctionLaunchMac : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void opensTheBundleByName_data();
    void opensTheBundleByName();
};

void tst_CommonFunctionLaunchMac::opensTheBundleByName_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("command");
    QTest::newRow("plain") << "Notes"
                           << "open -a \"Notes.app\"";
    QTest::newRow("blanks") << "My Notes"
                            << "open -a \"My Notes.app\"";
    QTest::newRow("non-ASCII") << QStringLiteral("Größe")
                               << QStringLiteral("open -a \"Größe.app\"");
    QTest::newRow("specials") << R"(a"b$c`d\e)"
                              << R"(open -a "a\"b\$c\`d\\e.app")";
}

void tst_CommonFunctionLaunchMac::opensTheBundleByName()
{
    QFETCH(QString, name);
    QTEST(openByNameCommand(name), "command");
}

QTEST_APPLESS_MAIN(tst_CommonFunctionLaunchMac)
#include "tst_common_function_launch_mac.moc"
