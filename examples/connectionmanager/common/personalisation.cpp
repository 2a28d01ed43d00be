#include "common/personalisation.h"

#include "DataValue/datavalue.h"
#include "PersoManager/persomanager.h"

Personalisation::Personalisation(const QString& module)
    : m_module(module)
{
    CPersoManager* perso = CPersoManager::instance(module);
    m_isPersonalised = perso->readPersoFile().isObject();
    CDataValue plugins = perso->getSupportPlugins(module);
    for (unsigned int i = 0; i < plugins.arrayCount(); ++i)
        m_plugins.insert(plugins.arrayGet(i).asQString());
}

bool Personalisation::hasPlugin(const QString& plugin) const
{
    return !m_isPersonalised || m_plugins.contains(plugin);
}

bool Personalisation::hasFeature(const QString& feature) const
{
    return m_isPersonalised && CPersoManager::instance(m_module)->hasFeature(feature);
}

QMap<QString, QString> Personalisation::devices() const
{
    QMap<QString, QString> devices;
    if (!m_isPersonalised)
        return devices;
    CDataValue listed = CPersoManager::instance(m_module)->getConfigData(QStringLiteral("Devices"));
    for (const std::string& key : listed.mapGetKeys()) {
        const QString name = QString::fromStdString(key);
        const QString deviceID = listed.mapGet(name).asQString();
        if (!name.isEmpty() && !deviceID.isEmpty())
            devices.insert(name, deviceID);
    }
    return devices;
}
