#include "platform/launch_p.h"

QString openByNameCommand(const QString& name)
{
    return QLatin1String("open -a ") + shellQuoted(name + QLatin1String(".app"));
}
