// The module that watches logind, which alone needs Qt D-Bus, is not loaded before the listener
// asks for it, and may be missing. That it works is the matter of tst_csystemeventlistener_linux.
#include "SystemEvent/csystemeventlistener.h"
#include "SystemEvent/logindmodule_p.h"

#include "support/logcapture.h"

#include <QFile>
#include <QTest>

namespace {

bool isLoaded(const char* library)
{
    QFile maps(QStringLiteral("/proc/self/maps"));
    return maps.open(QIODevice::ReadOnly) && maps.readAll().contains(library);
}

} // namespace

class tst_logindmodule : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void dbusIsNotLoadedBeforeTheListening()
    {
        QVERIFY(CSystemEventListener::instance());
        QVERIFY(isLoaded("libwzrframework-qt") && isLoaded("libQt"));
        QVERIFY(!isLoaded("wzrlogind") && !isLoaded("DBus.so"));
        CSystemEventListener::destroy();
    }

    // The loader that this test compiles itself looks for a module that does not exist.
    void missingModuleIsLogged()
    {
        const LogCapture log;
        QVERIFY(!watchLogind(*CSystemEventListener::instance()));
        QVERIFY(log.contains("SystemEvent/csystemeventlistener_linux watchLogind "));
        QVERIFY(log.contains("missing-module.so"));
        CSystemEventListener::destroy();
    }
};

QTEST_GUILESS_MAIN(tst_logindmodule)

#include "tst_logindmodule.moc"
