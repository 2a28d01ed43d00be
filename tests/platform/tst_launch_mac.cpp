#include "platform/launch_p.h"

#include <QTest>

class tst_launch_mac : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void opensTheBundleByName_data();
    void opensTheBundleByName();
};

void tst_launch_mac::opensTheBundleByName_data()
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

void tst_launch_mac::opensTheBundleByName()
{
    QFETCH(QString, name);
    QTEST(openByNameCommand(name), "command");
}

QTEST_APPLESS_MAIN(tst_launch_mac)
#include "tst_launch_mac.moc"
