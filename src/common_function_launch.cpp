#include "common_function.h"

#include "LogTask/clog.h"
#include "common_function_launch_p.h"

#include <QDebug>
#include <QFile>
#include <QFileInfo>

#include <cstdlib>

namespace {

const char source[] = "common_function";

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
        CLogFile() << source << "startApplication"
                   << "we need open a application";
        command = shellQuoted(asFile(path)) + QLatin1String(" &");
    } else {
        CLogFile() << source << "startApplication"
                   << "no app we try open an bundle app:" << path;
        command = openByNameCommand(path);
        CLogFile() << source << "startApplication"
                   << "cmd" << command;
    }
    // The path is escaped, and starting it through the shell is what this function is for.
    return std::system(QFile::encodeName(command).constData()); // NOLINT(cert-env33-c)
}
