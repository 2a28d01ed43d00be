#include "platform/launch_p.h"

#include <QStandardPaths>

// The launcher takes the path of a desktop entry. A name without an entry becomes the path at which
// the user's would stand: the launcher says that it is missing, and never takes a file of that name
// from the working directory.
QString openByNameCommand(const QString& name)
{
    const QString entry = name + QLatin1String(".desktop");
    QString path = QStandardPaths::locate(QStandardPaths::ApplicationsLocation, entry);
    if (path.isEmpty()) {
        path = QStandardPaths::writableLocation(QStandardPaths::ApplicationsLocation) +
               QLatin1Char('/') + entry;
    }
    return QLatin1String("gio launch ") + shellQuoted(path);
}
