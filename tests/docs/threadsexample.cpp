#include "threadsexample.h"

#include "DataValue/datavalue.h"
#include "Ipc/ipcclient.h"
#include "LogTask/clog.h"
#include "MessageCenter/messagecenter.h"
#include "deviceservice_global.h"

#include <QCoreApplication>
#include <QThread>

#include <thread>

// What stands between two markers of one name stands in the page, too.

//! [module]
class LanguageModule : public QObject
{
    Q_OBJECT

public:
    LanguageModule()
    {
        MessageCenter::defaultCenter()->registerModuleMessage("LANGUAGE", "onLanguage", this);
    }
    ~LanguageModule() override
    {
        MessageCenter::defaultCenter()->unregisterModuleMessage("LANGUAGE", this);
    }

    QString language() const { return m_language.asQString(); }

private Q_SLOTS:
    void onLanguage(CDataValue* value)
    {
        m_language = *value; // a copy: the value itself is borrowed
    }

private:
    CDataValue m_language;
};
//! [module]

//! [connect]
void connectCenter(IPCClient* client)
{
    MessageCenter* center = MessageCenter::defaultCenter();
    QObject::connect(center, &MessageCenter::sigDeviceMessageSend, client, &IPCClient::messageSend);
    QObject::connect(client, &IPCClient::sigMessageReceived, center,
                     &MessageCenter::messageReceived);
}
//! [connect]

//! [worker]
void reportFromWorker(int bars)
{
    CDataValue report(MAP_VALUE);
    report.mapSet("nBars", CDataValue(bars), true);
    const auto post = [report]() mutable {
        MessageCenter::defaultCenter()->postModuleMessage("SIGNAL", &report);
    };
    QMetaObject::invokeMethod(QCoreApplication::instance(), post, Qt::QueuedConnection);
}
//! [worker]

//! [log]
void logFromWorker()
{
    std::thread worker([] {
        CLogFile() << "worker"
                   << "run"
                   << "started";
    });
    worker.join();
}
//! [log]

//! [run]
int run(QCoreApplication& app, const char* logFile)
{
    InitLog(logFile);
    int result = 0;
    {
        IPCClient client("deviceservice");
        connectCenter(&client);
        LanguageModule module;
        client.connectToServer();
        result = app.exec();
    } // modules and clients go before the singletons
    MessageCenter::release();
    DeviceService_Global::release();
    DestroyLog();
    return result;
}
//! [run]

/// Receives what the examples send.
class Listener : public QObject
{
    Q_OBJECT

public:
    QStringList seen;

public Q_SLOTS:
    void onReply(CDataValue* envelope)
    {
        seen << envelope->mapGet("IPCMSG_TYPE").asQString()
             << QString::number(envelope->mapGet("IPCMSG_ERROR_CODE").asInt());
    }
    void onSignal(CDataValue* report)
    {
        seen << QString::number(report->mapGet("nBars").asInt())
             << (QThread::currentThread() == thread() ? "main thread" : "other thread");
        QCoreApplication::exit();
    }
};

QString languageKept(const QString& language)
{
    LanguageModule module;
    CDataValue value(language);
    MessageCenter::defaultCenter()->postModuleMessage("LANGUAGE", &value);
    value = CDataValue("changed afterwards");
    return module.language();
}

QStringList repliesInsideThePost()
{
    IPCClient client("nobody");
    connectCenter(&client);
    Listener listener;
    MessageCenter* center = MessageCenter::defaultCenter();
    center->registerDeviceMessage("GET_SIGNAL", "onReply", &listener);
    center->postDeviceMessage("GET_SIGNAL", nullptr, "dashboard");
    center->unregisterDeviceMessage("GET_SIGNAL", &listener);
    return listener.seen;
}

QStringList reportsOfAWorker()
{
    Listener listener;
    MessageCenter* center = MessageCenter::defaultCenter();
    center->registerModuleMessage("SIGNAL", "onSignal", &listener);
    std::thread worker([] { reportFromWorker(4); });
    worker.join();
    const QStringList seenInsideTheCall = listener.seen;
    QCoreApplication::exec();
    center->unregisterModuleMessage("SIGNAL", &listener);
    return seenInsideTheCall + listener.seen;
}

#include "threadsexample.moc"
