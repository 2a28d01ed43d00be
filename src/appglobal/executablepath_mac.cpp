#include "appglobal/executablepath_p.h"

#include <QByteArray>
#include <QFile>
#include <QFileInfo>

#include <mach-o/dyld.h>

#include <cstdint>

QString executableFilePath()
{
    std::uint32_t size = 0;
    _NSGetExecutablePath(nullptr, &size);
    QByteArray path(static_cast<int>(size), '\0');
    if (_NSGetExecutablePath(path.data(), &size) != 0)
        return QString();
    return QFileInfo(QFile::decodeName(path.constData())).canonicalFilePath();
}
