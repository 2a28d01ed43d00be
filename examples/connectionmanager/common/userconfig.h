#ifndef DEMO_USERCONFIG_H
#define DEMO_USERCONFIG_H

#include "DataValue/datavalue.h"

#include <QString>

/// The user's configuration, where several processes of one installation keep it at a time. Each
/// operation holds a lock file beside it, so that none undoes what another one saves.
namespace UserConfig {

/// CMainAppGlobal::loadSystemConfig().
void load();
/// Reads the file again, changes that one setting and saves.
void save(const QString& group, const QString& key, const CDataValue& value);

} // namespace UserConfig

#endif
