#include "appglobal/applicationpaths.h"

#include "appglobal/executablepath_p.h"

QString CApplicationPaths::getResourcePath()
{
    const QString executable = executableFilePath();
    return executable.left(executable.lastIndexOf(QLatin1Char('/'))) +
           QLatin1String("/../Resources");
}

QString CApplicationPaths::getDataPath()
{
    return getResourcePath() + QLatin1String("/Data");
}

QString CApplicationPaths::getUserDataPath()
{
    return getResourcePath() + QLatin1String("/UserData");
}
