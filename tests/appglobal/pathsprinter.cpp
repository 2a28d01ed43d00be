// Prints the application paths, one per line; with the argument "app" after an application object
// was created.
#include "appglobal/applicationpaths.h"

#include <QCoreApplication>

#include <cstdio>
#include <memory>

int main(int argc, char* argv[])
{
    std::unique_ptr<QCoreApplication> application;
    if (argc > 1 && qstrcmp(argv[1], "app") == 0)
        application = std::make_unique<QCoreApplication>(argc, argv);
    for (const QString& path :
         {CApplicationPaths::getResourcePath(), CApplicationPaths::getDataPath(),
          CApplicationPaths::getUserDataPath()})
        std::printf("%s\n", path.toUtf8().constData());
    return 0;
}
