#ifndef TESTS_EXAMPLES_OPENLINE_H
#define TESTS_EXAMPLES_OPENLINE_H

#include "deviceservice/atchannel.h"
#include "support/modempeer.h"

#include <QSignalSpy>
#include <QTemporaryDir>

#include <memory>

/// A modem peer and a channel to it in one process.
struct OpenLine
{
    /// Milliseconds for the answer to a short command: long enough for a peer that answers, also on
    /// a busy machine; and short enough to wait for, where none does.
    static constexpr int kAnswers = 1000;
    static constexpr int kIsSilent = 100;

    explicit OpenLine(std::unique_ptr<CSerialPort> port = nullptr, int timeOut = kAnswers)
        : peer(folder.filePath("modem"))
        , channel(port ? std::move(port)
                       : std::unique_ptr<CSerialPort>(CSerialPort::CreateObject()),
                  options(folder.filePath("modem"), timeOut), queue)
        , opened(&channel, &AtChannel::opened)
        , closed(&channel, &AtChannel::closed)
        , unsolicited(&channel, &AtChannel::unsolicited)
    {
    }

    static AtChannel::Options options(const QString& path, int timeOut = kAnswers)
    {
        AtChannel::Options options;
        options.port = path;
        options.timeOut = timeOut;
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
