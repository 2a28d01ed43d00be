#include "SystemEvent/logindmodule_p.h"

#include "LogTask/logline_p.h"

#include <QFile>
#include <QFileInfo>
#include <QLibrary>
#include <QObject>

#include <dlfcn.h>

namespace {

constexpr char kLogSource[] = "SystemEvent/csystemeventlistener_linux";

// The folder of this library, with its symbolic links resolved. The path of the module is relative
// to it, in the build tree and in an installed one, wherever that has been moved to.
QString ownFolder()
{
    Dl_info info{};
    if (!::dladdr(reinterpret_cast<const void*>(&watchLogind), &info) || !info.dli_fname)
        return QString();
    return QFileInfo(QFileInfo(QFile::decodeName(info.dli_fname)).canonicalFilePath()).path();
}

} // namespace

std::unique_ptr<QObject> watchLogind(CSystemEventListener& listener)
{
    QLibrary module(ownFolder() + QLatin1String("/" WZR_LOGIND_MODULE));
    const auto watch = reinterpret_cast<LogindModuleEntry>(module.resolve(kLogindModuleEntry));
    if (watch)
        return std::unique_ptr<QObject>(watch(&listener));
    logLine(kLogSource, "watchLogind", module.errorString());
    return nullptr;
}
