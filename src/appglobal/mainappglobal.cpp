#include "appglobal/mainappglobal.h"

#include "LogTask/logline_p.h"
#include "PersoManager/persomanager.h"

#include <QDir>

#include <utility>

namespace {

constexpr char kLogSource[] = "appglobal/mainappglobal";

QString configFile()
{
    return CApplicationPaths::getUserDataPath() + QLatin1String("/System.xml");
}

/// The group, copied in from the defaults when it is missing.
CDataValue& groupOf(const QString& group)
{
    CDataValue& config = CMainAppGlobal::data();
    CDataValue& present = config.mapGet(group);
    if (!present.isNull())
        return present;
    return config.mapSet(group, CMainAppGlobal::persoData().mapGet(group), true);
}

} // namespace

CMainAppGlobal* CMainAppGlobal::m_this = nullptr;

CMainAppGlobal* CMainAppGlobal::instance()
{
    if (!m_this)
        m_this = new CMainAppGlobal;
    return m_this;
}

void CMainAppGlobal::release()
{
    delete std::exchange(m_this, nullptr);
}

CDataValue& CMainAppGlobal::data()
{
    return instance()->m_data;
}

CDataValue& CMainAppGlobal::persoData()
{
    return instance()->m_persoData;
}

void CMainAppGlobal::loadSystemConfig()
{
    CPersoManager* const perso = CPersoManager::systemInstance();
    persoData() = perso->getConfigData(QStringLiteral("StartConfig"));
    // Read into the member itself, which then knows its file: data().saveFile() writes it back.
    if (data().readFile(configFile()) && data().isObject())
        return;
    data() = persoData();
    if (!data().isObject())
        data() = CDataValue(MAP_VALUE);
    const CDataValue automatic = perso->getConfigData(QStringLiteral("AutoConnect"));
    data().mapSet("AutoConnect", CDataValue(automatic.asBool()), true);
    saveSystemConfig();
}

bool CMainAppGlobal::saveSystemConfig()
{
    // The folder is the user's, and an installation need not come with it.
    QDir().mkpath(getUserDataPath());
    if (data().saveFileAs(configFile()))
        return true;
    logLine(kLogSource, "saveSystemConfig", "The system configuration is not saved:", configFile());
    return false;
}

CDataValue& CMainAppGlobal::systemMapGet(const QString& group, const QString& key)
{
    CDataValue& settings = groupOf(group);
    if (key.isEmpty())
        return settings;
    CDataValue& present = settings.mapGet(key);
    if (!present.isNull())
        return present;
    return settings.mapSet(key, persoData().mapGet(group).mapGet(key), true);
}

void CMainAppGlobal::systemMapSet(const QString& group, const QString& key, const CDataValue& value,
                                  bool save)
{
    if (key.isEmpty())
        data().mapSet(group, value, true);
    else
        groupOf(group).mapSet(key, value, true);
    if (save)
        saveSystemConfig();
}

QString CMainAppGlobal::getSoftwareVersion()
{
    return CPersoManager::systemInstance()->getCurSoftWareVersion();
}

QString CMainAppGlobal::getSkinPath()
{
    const CDataValue& skin = systemMapGet(QStringLiteral("General"), QStringLiteral("CurrentSkin"));
    return skin.isNull() ? QString()
                         : getResourcePath() + QLatin1String("/Skin/") + skin.asQString();
}
