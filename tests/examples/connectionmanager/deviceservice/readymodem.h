#ifndef TESTS_EXAMPLES_READYMODEM_H
#define TESTS_EXAMPLES_READYMODEM_H

#include "common/envelope.h"
#include "deviceservice/atmodem.h"
#include "openline.h"

/// What a modem has reported.
struct Report
{
    QString event;
    QString text;
    CDataValue data;
};

/// A modem at a scripted line.
struct ReadyModem : OpenLine
{
    ReadyModem()
        : modem(channel, queue)
        , ready(&modem, &AtModem::ready)
    {
        QObject::connect(&modem, &Modem::reported,
                         [this](const QString& event, const QString& text, CDataValue* data) {
                             reports.append({event, text, *data});
                         });
    }

    bool open()
    {
        channel.start();
        return waitFor([this] { return !ready.isEmpty(); });
    }
    /// Waits for the next report and takes it.
    Report report()
    {
        return waitFor([this] { return !reports.isEmpty(); }) ? reports.takeFirst() : Report();
    }

    AtModem modem;
    QSignalSpy ready;
    QList<Report> reports;
};

inline BLConnectionDialUp profile(const QString& apn, const QString& number = "*99#")
{
    BLConnectionDialUp profile;
    profile.strAPN = apn;
    profile.strNumber = number;
    return profile;
}

inline BLUssdSendCmd ussd(const QString& text, const QString& client)
{
    BLUssdSendCmd command;
    command.strUssdCmd = text;
    command.strClientID = client;
    return command;
}

#endif
