#ifndef APPGLOBAL_EXECUTABLEPATH_P_H
#define APPGLOBAL_EXECUTABLEPATH_P_H

#include <QString>

/// The full path of the running executable, symbolic links resolved. Needs no application object;
/// empty when the operating system does not tell. Any thread may call.
QString executableFilePath();

#endif
