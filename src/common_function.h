#ifndef COMMON_FUNCTION_H
#define COMMON_FUNCTION_H

#include "wzrframework_export.h"

#include <QString>

/// The name of the user on whose behalf the process runs, from the environment: "SUDO_USER", else
/// "LOGNAME", else the last part of "HOME" ("/home/alice/" gives "alice"). A variable that is set
/// to nothing counts as set and gives the empty name; so does an environment without any of them.
/// Any thread may call, as long as none changes the environment at the same time.
WZRFRAMEWORK_EXPORT QString getActiveUserName();

/// Always empty, and meant to be: callers build the paths of a user themselves.
WZRFRAMEWORK_EXPORT QString getActiveUserDirectory();

#endif
