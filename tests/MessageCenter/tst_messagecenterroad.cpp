// The road of one request and of one report: message center, client, server, plug-in and back.

#include "BusinessBase/businesspluginbase.h"
#include "Ipc/ipccalls.h"
#include "Ipc/ipcclient.h"
#include "Ipc/ipcserver.h"
#include "MessageCenter/messagecenter.h"

#include <QTemporaryDir>
#include <QtTest>

/// Answers with twice the number that it is asked for.
class DoublingPlugin : public BusinessPluginBase
{
    Q_OBJECT

public:
    DoublingPlugin() { registerMessage("DOUBLE", "twice", 0, this); }

private Q_SLOTS:
    int twice(CDataValue& request, CDataValue& response)
    {
        response = CDataValue(2 * request.asInt());
        return 0;
    }
};

/// What a device service does with the pieces: plug-in chosen, reply envelope built and sent.
class Service : public QObject
{
public:
    explicit Service(const QString& name)
    {
        connect(&m_server, &IPCServer::sigMessageReceived, this, &Service::serve);
        connect(&plugin, &BusinessPluginBase::sendUnsolicitedReportDirect, this, &Service::report);
        m_server.startListen(name);
    }

    DoublingPlugin plugin;

private:
    void serve(const QString& text, int client)
    {
        CDataValue envelope;
        if (!CDataValue::parseToDataValue(text, envelope))
            return;
        CDataValue response;
        const int result =
            plugin.handleMessageComing(envelope.mapGet("IPCMSG_TYPE").asQString(),
                                       &envelope.mapGet("IPCMSG_USER_DATA"), &response);
        envelope.mapSet("IPCMSG_ERROR_CODE", CDataValue(result), true);
        envelope.mapSet("IPCMSG_RESPONSE_DATA", response, true);
        m_server.sendResponse(envelope.parseToQString(FAST_STYLE), client);
    }
    void report(const QString& identifier, CDataValue* data, int error)
    {
        CDataValue envelope(MAP_VALUE);
        envelope.mapSet("IPCMSG_TYPE", CDataValue(identifier), true);
        envelope.mapSet("IPCMSG_ERROR_CODE", CDataValue(error), true);
        envelope.mapSet("IPCMSG_RESPONSE_DATA", *data, true);
        m_server.broadcastMsg(envelope.parseToQString(FAST_STYLE));
    }

    IPCServer m_server{nullptr};
};

/// A module that keeps the envelopes it receives, as text.
class Module : public QObject
{
    Q_OBJECT

public:
    QStringList received;

public Q_SLOTS:
    void onEnvelope(CDataValue* envelope) { received << envelope->parseToQString(FAST_STYLE); }
};

class tst_messagecenterroad : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void aRequestComesBackAnswered();
    void aRequestWithoutAHandlerComesBackWith42();
    void aReportReachesTheModules();
    void aRequestWithoutAServiceIsAnsweredInsideTheCall();
    void aCallHasOneEndAndReportsGoOn();
    void aCallWithoutAConnectionIsNotSent();

private:
    void connectClient(IPCClient& client);

    QTemporaryDir m_folder;
    QString m_name;
    std::unique_ptr<Module> m_module;
};

void tst_messagecenterroad::init()
{
    QVERIFY(m_folder.isValid());
    m_name = m_folder.filePath("device");
    m_module = std::make_unique<Module>();
    MessageCenter* center = MessageCenter::defaultCenter();
    for (const char* identifier : {"DOUBLE", "OTHER", "SIGNAL"})
        center->registerDeviceMessage(identifier, "onEnvelope", m_module.get());
}

void tst_messagecenterroad::cleanup()
{
    MessageCenter::release();
}

/// By the names of the signatures, as processes do it that load their parts.
void tst_messagecenterroad::connectClient(IPCClient& client)
{
    MessageCenter* center = MessageCenter::defaultCenter();
    QVERIFY(connect(center,
                    SIGNAL(sigDeviceMessageSend(const char*, const CDataValue*, const char*)),
                    &client, SLOT(messageSend(const char*, const CDataValue*, const char*))));
    QVERIFY(connect(&client, SIGNAL(sigMessageReceived(CDataValue*)), center,
                    SLOT(messageReceived(CDataValue*))));
    QSignalSpy connected(&client, &IPCClient::sigIPCServerConnected);
    client.connectToServer();
    QTRY_COMPARE(connected.size(), 1);
}

void tst_messagecenterroad::aRequestComesBackAnswered()
{
    Service service(m_name);
    IPCClient client(m_name);
    connectClient(client);
    const CDataValue number(21);
    MessageCenter::defaultCenter()->postDeviceMessage("DOUBLE", &number, "dashboard");
    QTRY_COMPARE(m_module->received,
                 QStringList("{\"IPCMSG_ERROR_CODE\":0,\"IPCMSG_MSG_SENDER\":\"dashboard\","
                             "\"IPCMSG_RESPONSE_DATA\":42,\"IPCMSG_TYPE\":\"DOUBLE\","
                             "\"IPCMSG_USER_DATA\":21}\n"));
}

void tst_messagecenterroad::aRequestWithoutAHandlerComesBackWith42()
{
    Service service(m_name);
    IPCClient client(m_name);
    connectClient(client);
    MessageCenter::defaultCenter()->postDeviceMessage("OTHER", nullptr, nullptr);
    QTRY_COMPARE(m_module->received,
                 QStringList("{\"IPCMSG_ERROR_CODE\":42,\"IPCMSG_RESPONSE_DATA\":null,"
                             "\"IPCMSG_TYPE\":\"OTHER\"}\n"));
}

void tst_messagecenterroad::aReportReachesTheModules()
{
    Service service(m_name);
    IPCClient client(m_name);
    connectClient(client);
    MessageCenter::defaultCenter()->postDeviceMessage("DOUBLE", nullptr, nullptr);
    QTRY_COMPARE(m_module->received.size(), 1); // the server has accepted the client
    CDataValue bars(4);
    Q_EMIT service.plugin.sendUnsolicitedReportDirect("SIGNAL", &bars, 0);
    QTRY_COMPARE(m_module->received.value(1),
                 QString("{\"IPCMSG_ERROR_CODE\":0,\"IPCMSG_RESPONSE_DATA\":4,"
                         "\"IPCMSG_TYPE\":\"SIGNAL\"}\n"));
}

void tst_messagecenterroad::aRequestWithoutAServiceIsAnsweredInsideTheCall()
{
    IPCClient client(m_name);
    {
        Service service(m_name);
        connectClient(client);
    }
    QTRY_VERIFY(!client.isConnected());
    const CDataValue number(21);
    MessageCenter::defaultCenter()->postDeviceMessage("DOUBLE", &number, "dashboard");
    QCOMPARE(m_module->received,
             QStringList("{\"IPCMSG_ERROR_CODE\":6,\"IPCMSG_MSG_SENDER\":\"dashboard\","
                         "\"IPCMSG_TYPE\":\"DOUBLE\",\"IPCMSG_USER_DATA\":21}\n"));
}

void tst_messagecenterroad::aCallHasOneEndAndReportsGoOn()
{
    Service service(m_name);
    IPCClient client(m_name);
    IPCCalls calls(&client, "dashboard");
    MessageCenter* const center = MessageCenter::defaultCenter();
    center->setDeviceCalls(&calls);
    connect(&calls, &IPCCalls::sigMessageReceived, center, &MessageCenter::messageReceived);
    QSignalSpy connected(&client, &IPCClient::sigIPCServerConnected);
    client.connectToServer();
    QTRY_COMPARE(connected.size(), 1);

    const CDataValue number(21);
    IPCAnswer answer = center->callDevice("DOUBLE", &number).wait();
    QVERIFY(answer.isOk());
    QCOMPARE(answer.data().asInt(), 42);
    QCOMPARE(center->callDevice("OTHER").wait().errorCode(), 42);

    CDataValue bars(4);
    Q_EMIT service.plugin.sendUnsolicitedReportDirect("SIGNAL", &bars, 0);
    QTRY_COMPARE(m_module->received,
                 QStringList("{\"IPCMSG_ERROR_CODE\":0,\"IPCMSG_RESPONSE_DATA\":4,"
                             "\"IPCMSG_TYPE\":\"SIGNAL\"}\n"));
}

void tst_messagecenterroad::aCallWithoutAConnectionIsNotSent()
{
    MessageCenter* const center = MessageCenter::defaultCenter();
    QCOMPARE(center->callDevice("DOUBLE").wait().end(), IPCAnswer::NotSent);
    {
        IPCClient client(m_name);
        IPCCalls calls(&client);
        center->setDeviceCalls(&calls);
        QCOMPARE(center->callDevice("DOUBLE").wait().end(), IPCAnswer::NotSent);
    }
    QCOMPARE(center->callDevice("DOUBLE").wait().end(), IPCAnswer::NotSent);
    QVERIFY_EXCEPTION_THROWN(center->callDevice(nullptr), std::bad_alloc);
}

QTEST_GUILESS_MAIN(tst_messagecenterroad)
#include "tst_messagecenterroad.moc"
