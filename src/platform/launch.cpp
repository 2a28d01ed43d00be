#include "common_function.h"

#include "LogTask/logline_p.h"
#include "platform/launch_p.h"

#include <QDebug>
#include <QFile>
#include <QFileInfo>

#include <cstdlib>

namespace {

constexpr char kLogSource[] = "common_function";

// A bare file name would be looked for among the system's programs instead.
QString asFile(const QString& path)
{
    return path.contains(QLatin1Char('/')) ? path : QLatin1String("./") + path;
}

} // namespace

int startApplication(QString path)
{
    qDebug("strName = %s", qUtf8Printable(path));
    QString command;
    if (QFileInfo::exists(path)) {
        logLine(kLogSource, "startApplication", "we need open a application");
        command = shellQuoted(asFile(path)) + QLatin1String(" &");
    } else {
        logLine(kLogSource, "startApplication", "no app we try open an bundle app:", path);
        command = openByNameCommand(path);
        logLine(kLogSource, "startApplication", "cmd", command);
    }
    // The path is escaped, and starting it through the shell is what this function is for.
    return std::system(QFile::encodeName(command).constData()); // NOLINT(cert-env33-c)
}
