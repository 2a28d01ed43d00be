#include "common/userconfig.h"

#include "appglobal/mainappglobal.h"

#include <QDir>
#include <QLockFile>

namespace {

constexpr int kLockWithinMs = 5000;

// Where no lock can be had, the folder cannot be written to either, or a process holds it that
// hangs: then going on is better than waiting.
class Locked
{
public:
    Locked()
        : m_file(CMainAppGlobal::getUserDataPath() + QLatin1String("/System.lock"))
    {
        QDir().mkpath(CMainAppGlobal::getUserDataPath());
        m_file.tryLock(kLockWithinMs);
    }

private:
    QLockFile m_file;
};

} // namespace

void UserConfig::load()
{
    const Locked locked;
    CMainAppGlobal::loadSystemConfig();
}

void UserConfig::save(const QString& group, const QString& key, const CDataValue& value)
{
    const Locked locked;
    CMainAppGlobal::loadSystemConfig();
    // A damaged group would refuse the setting.
    if (!CMainAppGlobal::systemMapGet(group, QString()).isObject())
        CMainAppGlobal::systemMapSet(group, QString(), CDataValue(MAP_VALUE), false);
    CMainAppGlobal::systemMapSet(group, key, value, true);
}
