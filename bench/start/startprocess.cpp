// A process of the system from its start until the controller has accepted its introduction. The
// exit code is 0 only then. The end of the process is part of what is measured.

#include "DataValue/datavalue.h"
#include "LogTask/clog.h"
#include "PersoManager/persomanager.h"
#include "appglobal/mainappglobal.h"
#include "applicationcontorllerclient/applicationcontorllerclient.h"

#include <QCoreApplication>

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    InitLog(nullptr);
    CMainAppGlobal::loadSystemConfig();
    if (CMainAppGlobal::systemMapGet("General", "Language").asQString() != QLatin1String("en"))
        return 2;
    ApplicationContorllerClient controller("startprocess", nullptr);
    QObject::connect(&controller, &ApplicationContorllerClient::sigConnectStatusChanged,
                     &application, [](int status) { QCoreApplication::exit(status == 2 ? 0 : 1); });
    controller.startConnect();
    const int result = QCoreApplication::exec();
    CPersoManager::destroy();
    CMainAppGlobal::release();
    DestroyLog();
    return result;
}
