#ifndef DEMO_ATCHANNEL_H
#define DEMO_ATCHANNEL_H

#include "deviceservice/attext.h"
#include "deviceservice/workqueue.h"
#include "serialport/serialport.h"

#include <QObject>
#include <QTimer>

#include <memory>

class QEventLoop;

/// How long the answer to a command may take, as a multiple of AtChannel::Options::timeOut.
enum class AtWait {
    Short = 1,    ///< what the modem knows by itself
    Sim = 4,      ///< what lies on the SIM
    Network = 12, ///< what the network must confirm
    Search = 36   ///< +COPS=?, which listens on every frequency
};

/// One command line.
struct AtCommand
{
    QByteArray text;             ///< for example "AT+CSQ", without a line end
    QByteArray prefix;           ///< what its information begins with: "+CSQ:"; empty: any line
    AtWait wait = AtWait::Short; ///< for the whole answer
};

/// The answer to a command.
struct AtReply
{
    int error = 0;           ///< AtError, 0 for success
    QList<QByteArray> lines; ///< the information before the final result
};

/// The conversation with a modem on a serial line: one command and its answer at a time, and what
/// the modem says unasked in between.
///
/// **The line.** The channel opens the port from start() on and again whenever it was lost, at
/// fixed intervals. It counts as open, and opened() is emitted, once the modem answers. It is
/// closed, with closed(), when the device goes, does not take what is written, or does not answer
/// any more. It is taken for this process alone, and closed() says who is in the way when another
/// has it. A node that is no terminal is not written to: it might be somebody's file.
///
/// **In step.** An answer that is late must not be taken for that of the next command. So after a
/// command that was not answered in time, the channel asks for something that only it has asked
/// for, "AT+CMEE?", drops what comes before "+CMEE:", and goes on behind the "OK" of that. Further
/// attempts ask for other things, so that the answer to one is not taken for that of the next.
/// When none is answered, the line is closed.
///
/// **Bounds.** Lines (AtLines::kLongestLine), the lines of an answer and what is read at a time
/// are limited; a modem that sends without end costs neither memory nor the event loop. What
/// cannot be understood is logged once for each series of such lines.
///
/// **Threads.** Belongs to the thread of the event loop and never blocks it: send() runs an event
/// loop while it waits. So everything that sends is done as work of the WorkQueue, one at a time.
/// When the application quits meanwhile, the command is given up at once, and so are all later
/// ones.
class AtChannel : public QObject
{
    Q_OBJECT

public:
    struct Options
    {
        QString port;                   ///< path of the device node
        BAUDRATE rate = BAUDRATE_38400; ///< of a real line
        int timeOut = 5000;             ///< milliseconds for the answer to a short command
        int retryInterval = 2000;       ///< milliseconds until a lost line is tried again
        int probes = 3;                 ///< attempts to get in step again
    };

    /// `port`: closed. `queue` must outlive the channel.
    AtChannel(std::unique_ptr<CSerialPort> port, const Options& options, WorkQueue& queue);
    ~AtChannel() override;

    /// Begins to open the line, as work of the queue.
    void start();
    bool isOpen() const { return m_isOpen; }
    const QString& port() const { return m_options.port; }
    int milliseconds(AtWait wait) const { return m_options.timeOut * static_cast<int>(wait); }

    /// Sends the command and waits for its final result. AtError::NoConnection when the line is not
    /// open, is lost meanwhile, or the answer does not come in time; AtError::LinkReserved when
    /// another command is under way. The lines that came are handed out with an error as well.
    AtReply send(const AtCommand& command);

Q_SIGNALS:
    /// The modem answers; it may be another one than before, and knows nothing of earlier
    /// commands. Slots may send. Comes as work of the queue.
    void opened();
    /// The line is closed; `reason` for people. Once, until it has been open again or the reason
    /// is another one. May come while a command waits.
    void closed(const QString& reason);
    /// A line that the modem says unasked; may come while a command waits.
    void unsolicited(const QByteArray& line);
    /// Everything that goes over the line, for people who want to watch.
    void passed(bool isSent, const QByteArray& line);

private:
    struct Exchange;

    void open();
    void close(const QString& reason);
    QString openPort();
    QString transferError() const;
    bool synchronise();
    AtReply exchange(const AtCommand& command, bool isProbe, int milliseconds);
    void poll();
    void writeWaiting();
    void handleLine(const QByteArray& line);
    void handleAnswer(Exchange& exchange, const QByteArray& line);
    void finish(int error);
    void notUnderstood(const QByteArray& line);
    void tellNotUnderstood();

    std::unique_ptr<CSerialPort> m_port;
    Options m_options;
    WorkQueue& m_queue;
    QTimer m_pollTimer;  // runs while the port is open
    QTimer m_retryTimer; // runs while it is not
    AtLines m_lines;
    QByteArray m_toWrite;
    QString m_writeError;           // why the last write failed
    Exchange* m_exchange = nullptr; // the command under way
    int m_nextProbe = 0;
    bool m_isPortOpen = false;
    bool m_isOpen = false;   // and the modem has answered
    bool m_isEnding = false; // the application quits
    int m_notUnderstood = 0; // lines of the current series
    QString m_closedReason;  // the one that was told last
};

#endif
