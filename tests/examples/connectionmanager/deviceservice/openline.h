#ifndef TESTS_EXAMPLES_OPENLINE_H
#define TESTS_EXAMPLES_OPENLINE_H

#include "deviceservice/atchannel.h"
#include "support/modempeer.h"

#include <QSignalSpy>
#include <QTemporaryDir>

#include <memory>

/// A modem peer and a channel to it in one process. The time-outs are short, as a test wants them,
/// yet long enough for a peer that answers.
struct OpenLine
{
    explicit OpenLine(std::unique_ptr<CSerialPort> port = nullptr)
        : peer(folder.filePath("modem"))
        , channel(port ? std::move(port)
                       : std::unique_ptr<CSerialPort>(CSerialPort::CreateObject()),
                  options(folder.filePath("modem")), queue)
        , opened(&channel, &AtChannel::opened)
        , closed(&channel, &AtChannel::closed)
        , unsolicited(&channel, &AtChannel::unsolicited)
    {
    }

    static AtChannel::Options options(const QString& path)
    {
        AtChannel::Options options;
        options.port = path;
        options.timeOut = 1000;
        options.retryInterval = 20;
        return options;
    }

    /// Starts the channel and waits until the modem has answered.
    bool open()
    {
        channel.start();
        return waitFor([this] { return channel.isOpen(); });
    }
    /// The reason of the next closing.
    QString closedReason()
    {
        return waitFor([this] { return !closed.isEmpty(); }) ? closed.takeFirst().at(0).toString()
                                                             : QString("not closed");
    }

    template<class Condition>
    static bool waitFor(Condition condition)
    {
        return QTest::qWaitFor(condition, 30000);
    }

    QTemporaryDir folder;
    ModemPeer peer;
    WorkQueue queue;
    AtChannel channel;
    QSignalSpy opened;
    QSignalSpy closed;
    QSignalSpy unsolicited;
};

#endif
