#ifndef APPGLOBAL_APPLICATIONPATHS_H
#define APPGLOBAL_APPLICATIONPATHS_H

#include "wzrframework_export.h"

#include <QString>

/// The directories of the installed application, all found from where the executable lies:
///
///     <x>/bin/program            the executable
///     <x>/bin/../Resources       getResourcePath(), the ".." kept as it stands
///
/// Inside and outside an application bundle the rule is the same. No path ends in "/", and none is
/// checked for existence. Any thread may call, also before an application object exists. A base
/// with static operations only; it is never instantiated on its own.
class WZRFRAMEWORK_EXPORT CApplicationPaths
{
public:
    /// The executable's directory and "/../Resources".
    static QString getResourcePath();
    /// Files that come with the application: the resource path and "/Data".
    static QString getDataPath();
    /// Files that the application writes for its user: the resource path and "/UserData".
    static QString getUserDataPath();

protected:
    CApplicationPaths() = default;
    ~CApplicationPaths() = default;
};

#endif
