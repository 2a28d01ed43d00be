#include "PersoManager/persomanager.h"

#include "LogTask/logline_p.h"
#include "PersoManager/inifile_p.h"
#include "appglobal/applicationpaths.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <utility>

namespace {

constexpr char kLogSource[] = "PersoManager/persomanager";
constexpr char kNoFile[] = "Read perso file error!";
constexpr char kModules[] = "Module Names";
constexpr char kPlugins[] = "Plugins";
constexpr char kAllModules[] = "All Module";

QString persoFolder()
{
    return CApplicationPaths::getDataPath() + QLatin1String("/Perso/");
}

bool isAvailable(CDataValue& entry)
{
    CDataValue& available = entry.mapGet("IsAvailable");
    return available.isBool() && available.asBool();
}

QString textMember(CDataValue map, const char* key)
{
    CDataValue& member = map.mapGet(key);
    return member.isString() ? member.asQString() : QString();
}

void appendPlugins(CDataValue& plugins, CDataValue& result)
{
    const unsigned int count = plugins.arrayCount();
    for (unsigned int i = 0; i < count; ++i)
        result.arrayAppend(CDataValue(plugins.arrayGet(i).asQString()), false);
}

/// The personalisation file's content; a null value, with a line in the log, when there is none.
CDataValue persoFileOrLog(const CPersoManager& manager, const char* operation)
{
    CDataValue perso = manager.readPersoFile();
    if (perso.isNull())
        logLine(kLogSource, operation, kNoFile);
    return perso;
}

} // namespace

QMap<QString, CPersoManager*> CPersoManager::m_mapPersoManager;
CPersoManager* CPersoManager::m_pPersoManager = nullptr;

CPersoManager* CPersoManager::instance(const QString& name)
{
    CPersoManager*& manager = m_mapPersoManager[name];
    if (!manager)
        manager = new CPersoManager(name);
    m_pPersoManager = manager;
    return manager;
}

CPersoManager* CPersoManager::systemInstance()
{
    return instance(QStringLiteral("SYSTEM MODULE"));
}

void CPersoManager::destroy()
{
    m_pPersoManager = nullptr;
    const QMap<QString, CPersoManager*> managers = std::exchange(m_mapPersoManager, {});
    qDeleteAll(managers);
}

CPersoManager::CPersoManager(const QString& name, QObject* parent)
    : QObject(parent)
    , m_moduleData(NULL_VALUE)
{
    loadModuleData(name);
}

CPersoManager::~CPersoManager() = default;

void CPersoManager::loadModuleData(const QString& name)
{
    if (name.isEmpty())
        return;
    CDataValue perso = persoFileOrLog(*this, "loadModuleData");
    if (perso.isNull())
        return;
    m_strModuleFile.clear();
    m_moduleData = CDataValue(NULL_VALUE);
    if (!isAvailable(perso.mapGet(kModules).mapGet(name)))
        return;
    m_strModuleFile = persoFolder() + name + QLatin1String(".xml");
    m_moduleData.readFile(m_strModuleFile);
}

CDataValue CPersoManager::readPersoFile() const
{
    CDataValue perso(NULL_VALUE);
    const QDir folder(persoFolder());
    // Filtered here: the name filter of QDir compiles a regular expression, which would make every
    // start of a process slower.
    QStringList names = folder.entryList(QDir::Files, QDir::Unsorted);
    const auto isOther = [](const QString& name) {
        return !name.endsWith(QLatin1String(".perso"));
    };
    names.erase(std::remove_if(names.begin(), names.end(), isOther), names.end());
    if (names.size() == 1)
        perso.readFile(persoFolder() + names.first());
    return perso;
}

CDataValue CPersoManager::lookUp(const char* section, const QString& item, bool& found)
{
    found = true;
    CDataValue& data = m_moduleData.mapGet(section);
    for (const char* place : {"Mac", "General"}) {
        CDataValue& items = data.mapGet(place);
        if (items.mapIsMember(item))
            return items.mapGet(item);
    }
    found = false;
    return CDataValue(NULL_VALUE);
}

CDataValue CPersoManager::getConfigData(const QString& item)
{
    bool found = false;
    CDataValue result = lookUp("ConfigData", item, found);
    if (!found)
        logLine(kLogSource, "getConfigData",
                "The data does not contain this config data named:", item);
    return result;
}

bool CPersoManager::hasFeature(const QString& item)
{
    bool found = false;
    const CDataValue feature = lookUp("Feature", item, found);
    if (found)
        return feature.asBool();
    logLine(kLogSource, "hasFeature", "The data does not contain this feature named:", item);
    return false;
}

CDataValue CPersoManager::getSupportPlugins(const QString& module) const
{
    CDataValue result(ARRAY_VALUE);
    CDataValue perso = persoFileOrLog(*this, "getSupportPlugins");
    CDataValue& modules = perso.mapGet(kModules);
    const bool all = module == QLatin1String(kAllModules);
    for (const std::string& name : modules.mapGetKeys()) {
        CDataValue& entry = modules.mapGet(name.c_str());
        if (isAvailable(entry) && (all || module == QString::fromStdString(name)))
            appendPlugins(entry.mapGet(kPlugins), result);
    }
    return result;
}

CDataValue CPersoManager::getAllSupportModules() const
{
    CDataValue result(ARRAY_VALUE);
    CDataValue perso = persoFileOrLog(*this, "getAllSupportModules");
    CDataValue& modules = perso.mapGet(kModules);
    for (const std::string& name : modules.mapGetKeys()) {
        if (isAvailable(modules.mapGet(name.c_str())))
            result.arrayAppend(CDataValue(name), false);
    }
    return result;
}

CDataValue CPersoManager::getCurrentProjectInfo() const
{
    CDataValue perso = readPersoFile();
    return perso.isNull() ? CDataValue(MAP_VALUE) : perso.mapGet("Module Information");
}

QString CPersoManager::getSubProjectName() const
{
    return textMember(getCurrentProjectInfo(), "SubProject");
}

QString CPersoManager::getCurSoftWareVersion() const
{
    return textMember(getCurrentProjectInfo(), "Mac Version");
}

QString CPersoManager::getCurrentProjectName() const
{
    return getLoaclIniConfig(QStringLiteral("current_project"), QStringLiteral("LOCAL CONFIG"),
                             CApplicationPaths::getResourcePath() +
                                 QLatin1String("/../Build/LocalEnvConfig.ini"));
}

QString CPersoManager::getLoaclIniConfig(const QString& key, const QString& group,
                                         const QString& file)
{
    if (key.isEmpty() || group.isEmpty() || !QFileInfo(file).isFile())
        return QString();
    QFile ini(file);
    if (!ini.open(QIODevice::ReadOnly))
        return QString();
    return IniFile::text(ini.readAll(), group, key);
}
