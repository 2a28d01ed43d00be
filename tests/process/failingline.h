#ifndef TESTS_PROCESS_FAILINGLINE_H
#define TESTS_PROCESS_FAILINGLINE_H

#include "connectionmanager.h"
#include "rawclient.h"
#include "support/modempeer.h"

/// What the service says of its modem.
constexpr char kReady[] = "modem ready: ";
constexpr char kAway[] = "modem away: ";

/// A service at a scripted line. The time-out is long enough for a modem that answers, also on a
/// busy machine, and short enough to wait for where it does not.
struct FailingLine
{
    explicit FailingLine(const QString& timeOut = "1000")
        : peer(manager.socket("modem"))
        , service(manager.startService({"--port", manager.socket("modem"), "--timeout", timeOut,
                                        "--retry", "20", "--trace"}))
    {
        if (!service->says(kReady))
            qFatal("the service does not find the modem");
        peer.inform("AT+CREG?", "+CREG: 2,1,\"1A2B\",\"01C3D4E\",7");
    }

    ConnectionManager manager;
    ModemPeer peer;
    ConnectionManager::Process service;
};

inline QString request(const char* name)
{
    return QString(R"({"IPCMSG_TYPE":"DEMO_MESSAGE_%1"})").arg(name);
}

/// The error code in an answer; its type is checked.
inline int errorIn(const QString& answer, const char* name)
{
    CDataValue envelope;
    if (!CDataValue::parseToDataValue(answer, envelope) ||
        envelope.mapGet("IPCMSG_TYPE").asQString() != QString("DEMO_MESSAGE_%1").arg(name))
        return -1000;
    return envelope.mapGet("IPCMSG_ERROR_CODE").asInt();
}

inline int ask(RawClient& client, const char* name)
{
    client.send(request(name));
    return errorIn(client.answer(), name);
}

#endif
