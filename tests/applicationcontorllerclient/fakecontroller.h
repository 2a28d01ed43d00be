#ifndef TESTS_FAKECONTROLLER_H
#define TESTS_FAKECONTROLLER_H

#include "DataValue/datavalue.h"
#include "Ipc/ipcserver.h"

#include <QElapsedTimer>
#include <QList>
#include <QMap>
#include <QObject>
#include <QStringList>

/// An application controller in the test's process. It keeps what it receives and answers as it
/// was told to; what it was told nothing about, it leaves unanswered.
class FakeController : public QObject
{
public:
    FakeController()
    {
        connect(&m_server, &IPCServer::sigIPCServerConnected, this, [this] { ++connections; });
        connect(&m_server, &IPCServer::sigIPCServerDisconnected, this, [this] { ++departures; });
        connect(&m_server, &IPCServer::sigMessageReceived, this, &FakeController::answer);
        m_server.startListen("applicationcontroller");
    }

    /// The error codes of the next introductions; accepted when none is left.
    QList<int> introductionErrors;
    /// By identifier: the rest of the reply's members as JSON text, the request's user data is
    /// added.
    QMap<QString, QString> replies;

    QStringList received;
    QList<qint64> introducedAt; // milliseconds since the controller started
    int connections = 0;
    int departures = 0;

    void send(const QString& text) { m_server.broadcastMsg(text); }

private:
    void answer(const QString& text, int client)
    {
        received << text;
        CDataValue request;
        if (!CDataValue::parseToDataValue(text, request))
            return;
        const QString identifier = request.mapGet("IPCMSG_TYPE").asQString();
        CDataValue reply(MAP_VALUE);
        if (identifier == QLatin1String("WZR_MESSAGE_APPLICATION_CLIENT_INIT")) {
            introducedAt << m_clock.elapsed();
            const int error = introductionErrors.isEmpty() ? 0 : introductionErrors.takeFirst();
            reply.mapSet("IPCMSG_ERROR_CODE", CDataValue(error), true);
        } else if (!CDataValue::parseToDataValue(replies.value(identifier), reply)) {
            return;
        }
        reply.mapSet("IPCMSG_TYPE", request.mapGet("IPCMSG_TYPE"), true);
        if (request.mapIsMember("IPCMSG_USER_DATA"))
            reply.mapSet("IPCMSG_USER_DATA", request.mapGet("IPCMSG_USER_DATA"), true);
        m_server.sendResponse(reply.parseToQString(FAST_STYLE), client);
    }

    IPCServer m_server{nullptr};
    QElapsedTimer m_clock = [] {
        QElapsedTimer clock;
        clock.start();
        return clock;
    }();
};

#endif
