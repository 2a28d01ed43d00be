#ifndef DEMO_CONTROLLERSTATUS_H
#define DEMO_CONTROLLERSTATUS_H

#include <QString>

/// ApplicationContorllerClient::sigConnectStatusChanged() in words.
inline QString controllerStatusText(int status)
{
    switch (status) {
    case 0:
        return QStringLiteral("application controller: not introduced yet");
    case 2:
        return QStringLiteral("application controller: introduced");
    case 3:
        return QStringLiteral("application controller: lost");
    default:
        return QStringLiteral("application controller: status %1").arg(status);
    }
}

#endif
