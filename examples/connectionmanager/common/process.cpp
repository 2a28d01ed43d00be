#include "common/process.h"

#include "LogTask/clog.h"
#include "MessageCenter/messagecenter.h"
#include "PersoManager/persomanager.h"
#include "appglobal/mainappglobal.h"
#include "common/console.h"
#include "common/demomessages.h"
#include "common/userconfig.h"
#include "deviceservice_global.h"
#include "records/recordcatalogue.h"
#include "singleapplication/qtsinglecoreapplication.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QSocketNotifier>

#include <csignal>
#include <unistd.h>

namespace {

constexpr char kLogSource[] = "common/process";

int s_signalPipe[2] = {-1, -1};

// A signal handler may call hardly any function. write() is allowed, and wakes the event loop.
void onSignal(int)
{
    const char byte = 0;
    if (::write(s_signalPipe[1], &byte, 1) < 0)
        ::_exit(1);
}

void quitOnSignals()
{
    if (::pipe(s_signalPipe) != 0)
        return;
    auto* notifier =
        new QSocketNotifier(s_signalPipe[0], QSocketNotifier::Read, QCoreApplication::instance());
    QObject::connect(notifier, &QSocketNotifier::activated, notifier, [notifier] {
        notifier->setEnabled(false);
        QCoreApplication::quit();
    });
    std::signal(SIGINT, onSignal);
    std::signal(SIGTERM, onSignal);
}

} // namespace

ProcessLife::ProcessLife(const QString& logFile)
{
    // The log repeats its lines on the debug output, which is the user's terminal here.
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    // A PIN travels in the records, and once as a text of its own.
    HideInLog(secretRecordKeys(), {QLatin1String(DemoMessage::PinVerify)});
    InitLog(logFile.isEmpty() ? nullptr : QFile::encodeName(logFile).constData());
    CMainAppGlobal::instance();
    UserConfig::load();
    quitOnSignals();
}

ProcessLife::~ProcessLife()
{
    MessageCenter::release();
    DeviceService_Global::release();
    CPersoManager::destroy();
    CMainAppGlobal::release();
    FlushLog();
    DestroyLog();
}

QString instanceID(const QString& socketName)
{
    const QString folder = QFileInfo(QDir::tempPath()).canonicalFilePath();
    return QDir(folder).filePath(socketName);
}

bool isTaken(QtSingleCoreApplication& application)
{
    if (!application.isRunning())
        return false;
    const QString reason =
        QStringLiteral("another process is running and serves %1").arg(application.id());
    Console::complain(reason);
    CLogFile() << kLogSource << "isTaken" << reason;
    return true;
}
