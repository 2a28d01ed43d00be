#include "appglobal/executablepath_p.h"

#include <QFile>

QString executableFilePath()
{
    return QFile::symLinkTarget(QStringLiteral("/proc/self/exe"));
}
