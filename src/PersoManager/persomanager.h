#ifndef PERSOMANAGER_PERSOMANAGER_H
#define PERSOMANAGER_PERSOMANAGER_H

#include "DataValue/datavalue.h"
#include "wzrframework_export.h"

#include <QMap>
#include <QObject>
#include <QString>

/// What the personalisation of this installation says of one software module: configuration items,
/// features, plug-ins; and of the whole: modules, project, version.
///
/// The folder <data path>/Perso/ holds exactly one personalisation file ("*.perso") and one module
/// file per module (its name and ".xml"):
///
///     {"Module Information":{"SubProject":"B","Mac Version":"1.0"},
///      "Module Names":{"SMS":{"IsAvailable":true,"Plugins":["smsplugin"]}}}
///
///     CPersoManager* sms = CPersoManager::instance("SMS");
///     if (sms->hasFeature("LongMessage")) ...
///
/// A module file is read once, when its manager is made. The personalisation file is read again by
/// every call that needs it. With no ".perso" file or several of them, every call behaves as if
/// there were none.
///
/// **Failure.** Missing and damaged files never fail a call: the answer is empty or false, and the
/// log says what is missing.
///
/// **Threads and ownership.** Main thread only; no locks. Managers made by instance() belong to
/// the registry and live until destroy().
class WZRFRAMEWORK_EXPORT CPersoManager : public QObject
{
    Q_OBJECT

public:
    /// The one manager of that module name, made at the first call.
    static CPersoManager* instance(const QString& name);
    /// instance("SYSTEM MODULE").
    static CPersoManager* systemInstance();
    /// Deletes all managers that instance() made.
    static void destroy();

    /// Makes a manager outside the registry and reads the module's file.
    explicit CPersoManager(const QString& name, QObject* parent = nullptr);
    ~CPersoManager() override;

    /// Reads the module's file. A module that the personalisation file does not mark as available
    /// has no data. Without a personalisation file that is logged, and the data stay as they were.
    /// Does nothing for an empty name.
    void loadModuleData(const QString& name);

    /// The personalisation file's content; null when there is none.
    CDataValue readPersoFile() const;

    /// A configuration item: under "ConfigData", from "Mac" if it is there, else from "General".
    /// A null value, and a line in the log, when it is in neither.
    CDataValue getConfigData(const QString& item);
    /// A feature switch, looked up under "Feature" in the same order. False when it is missing.
    bool hasFeature(const QString& item);

    /// The names of the plug-ins of an available module, in their order, as an array of texts;
    /// "All Module" asks for those of all available modules, an entry of that name included.
    CDataValue getSupportPlugins(const QString& module) const;
    /// The names of all available modules, in byte order, as an array of texts.
    CDataValue getAllSupportModules() const;

    /// "Module Information" of the personalisation file; an empty map when there is none.
    CDataValue getCurrentProjectInfo() const;
    QString getSubProjectName() const;
    QString getCurSoftWareVersion() const;

    /// "current_project" of the group "LOCAL CONFIG" in the local environment file,
    /// <resource path>/../Build/LocalEnvConfig.ini.
    QString getCurrentProjectName() const;
    /// A text of an INI file as it stands there, commas included; empty when an argument is empty
    /// or names nothing. A group "General" is a group like any other. The file is UTF-8, with the
    /// escapes and quotation marks of QSettings.
    static QString getLoaclIniConfig(const QString& key, const QString& group, const QString& file);

private:
    CDataValue lookUp(const char* section, const QString& item, bool& found);

    static QMap<QString, CPersoManager*> m_mapPersoManager;
    static CPersoManager* m_pPersoManager;

    QString m_strModuleFile;
    CDataValue m_moduleData;
};

#endif
