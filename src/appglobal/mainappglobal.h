#ifndef APPGLOBAL_MAINAPPGLOBAL_H
#define APPGLOBAL_MAINAPPGLOBAL_H

#include "DataValue/datavalue.h"
#include "appglobal/applicationpaths.h"
#include "wzrframework_export.h"

#include <QString>

/// The directories of the application and the user's configuration: settings in groups, kept in
/// <user-data path>/System.xml, with defaults from the personalisation of the "SYSTEM MODULE".
///
///     CMainAppGlobal::instance();
///     CMainAppGlobal::loadSystemConfig();
///     CMainAppGlobal::systemMapGet("General", "CurrentSkin").asQString();
///     CMainAppGlobal::systemMapSet("General", "Language", CDataValue("en"), true);
///     CMainAppGlobal::release();
///
/// A setting that is only in the defaults is copied into the configuration when it is first read,
/// and is from then on saved with it.
///
/// **Threads.** Main thread only; no locks. **Ownership.** References to settings stay valid until
/// their group changes shape, the configuration is loaded again or release().
///
/// **Failure.** A missing or damaged file is replaced by the defaults. A setting without a value
/// and without a default is a null value.
class WZRFRAMEWORK_EXPORT CMainAppGlobal : public CApplicationPaths
{
public:
    /// The one instance, made at the first call of any operation on the configuration.
    static CMainAppGlobal* instance();
    /// Destroys the instance with both values. Nothing is saved.
    static void release();

    /// The configuration: a map of groups, each a map of settings. Once it has been read from its
    /// file, saveFile() of this value writes it back there; saveSystemConfig() does so in any case.
    static CDataValue& data();
    /// The defaults, in the same shape.
    static CDataValue& persoData();

    /// Reads defaults and configuration. Where there is no configuration yet, or its file is
    /// damaged, it is made from the defaults and the item "AutoConnect", and saved.
    static void loadSystemConfig();
    /// False when the file could not be written; the old one is then still there.
    static bool saveSystemConfig();

    /// A setting, to read and to change; the whole group when `key` is empty.
    static CDataValue& systemMapGet(const QString& group, const QString& key);
    /// Changes a setting, or replaces the whole group when `key` is empty. With `save` the
    /// configuration is saved at once.
    static void systemMapSet(const QString& group, const QString& key, const CDataValue& value,
                             bool save);

    /// The software version that the personalisation file names.
    static QString getSoftwareVersion();
    /// The resource path, "/Skin/" and the setting "General" / "CurrentSkin"; empty when that is
    /// not set.
    static QString getSkinPath();

private:
    CMainAppGlobal() = default;
    ~CMainAppGlobal() = default;

    static CMainAppGlobal* m_this;

    CDataValue m_data;
    CDataValue m_persoData;
};

#endif
