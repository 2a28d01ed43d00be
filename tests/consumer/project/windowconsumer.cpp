// Uses the component with windows, and both single-instance headers by the names that users write.

#include "qtsingleapplication.h"
#include "qtsinglecoreapplication.h"

#include <QUuid>

#include <cstdio>

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QtSingleApplication application(QUuid::createUuid().toString(), argc, argv);
    QtSingleCoreApplication* const core = nullptr;
    if (core || application.isRunning() || application.sendMessage(QStringLiteral("nobody")))
        return 1;
    std::printf("consumer ready with Qt %s\n", QByteArray(qVersion()).left(1).constData());
    return 0;
}
