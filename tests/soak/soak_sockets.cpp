// Sockets for a long time: round trips, connections that come and go, a burst of them, and many
// clients at once. Prints what it measured; ends with 1 when a promise was broken.
//
//   soak_sockets [--trips N] [--connections N] [--burst N] [--clients N]
//
// The server is a process of its own (soak_sockets serve PATH): its memory and its processor time
// are asked for by messages. "plain" is the same echo on QLocalServer alone, to compare with.
#include "Ipc/ipcserver.h"

#include "support/childprocess.h"
#include "support/memoryuse.h"
#include "support/rawpeer.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QLocalServer>
#include <QLocalSocket>
#include <QTemporaryDir>

#include <cstdio>
#include <ctime>
#include <memory>
#include <sys/resource.h>
#include <vector>

namespace {

constexpr qint64 kMebibyte = 1 << 20;

QByteArray framed(const QByteArray& text)
{
    return "__BEGIN__" + text + "__END__";
}

QByteArray processorMicroseconds()
{
    timespec used = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
    return QByteArray::number(qint64(used.tv_sec) * 1000000 + used.tv_nsec / 1000);
}

// As many descriptors as the system allows.
void raiseDescriptorLimit()
{
    rlimit limit = {};
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
}

void sayReady()
{
    std::puts("ready");
    std::fflush(stdout);
}

QByteArray answerTo(const QByteArray& question)
{
    if (question == "memory")
        return QByteArray::number(memoryInUse());
    if (question == "processor")
        return processorMicroseconds();
    return question;
}

int serve(const QString& path)
{
    raiseDescriptorLimit();
    IPCServer server;
    QObject::connect(&server, &IPCServer::sigMessageReceived, &server,
                     [&](const QString& text, int id) {
                         server.sendResponse(QString::fromUtf8(answerTo(text.toUtf8())), id);
                     });
    server.startListen(path);
    sayReady();
    return QCoreApplication::exec();
}

int servePlainly(const QString& path)
{
    raiseDescriptorLimit();
    QLocalServer server;
    QObject::connect(&server, &QLocalServer::newConnection, &server, [&server] {
        QLocalSocket* const socket = server.nextPendingConnection();
        QObject::connect(socket, &QLocalSocket::readyRead, socket, [socket] {
            const QByteArray read = socket->readAll();
            socket->write(framed(answerTo(read.mid(9, read.size() - 16))));
            socket->flush();
        });
    });
    server.listen(path);
    sayReady();
    return QCoreApplication::exec();
}

/// A connection that waits for its answers.
class Asker
{
public:
    explicit Asker(const QString& path)
    {
        QElapsedTimer clock;
        for (clock.start(); !m_peer || !m_peer->isOpen();) {
            m_peer = std::make_unique<RawPeer>(path); // the system's queue may be full
            if (clock.hasExpired(30000))
                qFatal("nobody listens");
        }
    }

    void send(const QByteArray& question) { m_peer->send(framed(question)); }
    QByteArray answer()
    {
        QByteArray answer;
        while (!answer.endsWith("__END__")) {
            if (!m_peer->waitForBytes(30000))
                qFatal("no answer");
            answer += m_peer->receive();
        }
        return answer.mid(9, answer.size() - 16);
    }
    QByteArray ask(const QByteArray& question)
    {
        send(question);
        return answer();
    }
    qint64 number(const QByteArray& question) { return ask(question).toLongLong(); }

private:
    std::unique_ptr<RawPeer> m_peer;
};

/// A server process, and the folder with its socket.
struct Server
{
    explicit Server(const QString& role)
        : path(folder.filePath("socket"))
        , process(QCoreApplication::applicationFilePath(), {role, path}, folder.path())
    {
        if (!process.says("ready"))
            qFatal("the server does not start");
    }

    QTemporaryDir folder;
    QString path;
    ChildProcess process;
};

/// What was measured, and whether it is what is promised.
class Report
{
public:
    void line(const char* what, double measured, const char* unit, double promised)
    {
        const bool holds = measured < promised;
        std::printf("%-52s %12.1f %s (promised: below %.1f)%s\n", what, measured, unit, promised,
                    holds ? "" : "  BROKEN");
        std::fflush(stdout);
        m_isWhole = m_isWhole && holds;
    }
    void note(const char* what, double measured, const char* unit)
    {
        std::printf("%-52s %12.1f %s\n", what, measured, unit);
        std::fflush(stdout);
    }
    int exitCode() const { return m_isWhole ? 0 : 1; }

private:
    bool m_isWhole = true;
};

/// The least that the server has in use within a while: departed clients are kept for 2 s.
qint64 settledMemory(Asker& asker)
{
    qint64 least = asker.number("memory");
    QElapsedTimer clock;
    for (clock.start(); !clock.hasExpired(4000);)
        least = qMin(least, asker.number("memory"));
    return least;
}

void roundTrips(int count, Report* report)
{
    Server server("serve");
    Asker asker(server.path);
    const QByteArray question(200, 'x');
    QElapsedTimer clock;
    clock.start();
    qint64 half = 0;
    for (int i = 0; i < count; ++i) {
        if (i == count / 2)
            half = asker.number("memory");
        if (asker.ask(question) != question)
            qFatal("a wrong answer");
    }
    report->note("round trips", count, "");
    report->note("  each", 1000.0 * double(clock.elapsed()) / count, "us");
    report->line("  growth in the second half", double(asker.number("memory") - half) / kMebibyte,
                 "MiB", 1);
}

void connections(int count, Report* report)
{
    Server server("serve");
    Asker observer(server.path);
    qint64 half = 0;
    for (int i = 0; i < count; ++i) {
        if (i == count / 2)
            half = settledMemory(observer);
        if (Asker(server.path).ask("x") != "x")
            qFatal("a wrong answer");
    }
    report->note("connections, each with a round trip", count, "");
    report->line("  growth in the second half", double(settledMemory(observer) - half) / kMebibyte,
                 "MiB", 1);
}

/// How long a live client waits for its answers: on the clock, which says much of the machine's
/// load, and in the processor time that the server spends from one answer to the next.
class Waits
{
public:
    explicit Waits(Asker& asker)
        : m_asker(asker)
        , m_processor(asker.number("processor"))
    {
    }

    void ask()
    {
        QElapsedTimer clock;
        clock.start();
        const qint64 processor = m_asker.number("processor");
        m_longest = qMax(m_longest, clock.nsecsElapsed() / 1000);
        m_longestProcessor = qMax(m_longestProcessor, processor - m_processor);
        m_processor = processor;
    }
    double longestMs() const { return double(m_longest) / 1000; }
    double longestProcessorMs() const { return double(m_longestProcessor) / 1000; }

private:
    Asker& m_asker;
    qint64 m_processor;
    qint64 m_longest = 0;
    qint64 m_longestProcessor = 0;
};

void burst(int count, Report* report)
{
    Server server("serve");
    Asker live(server.path);
    const qint64 before = live.number("memory");
    QElapsedTimer all;
    Waits quiet(live);
    for (all.start(); !all.hasExpired(count / 10);)
        quiet.ask();
    Waits waits(live);
    all.start();
    for (int come = 0; come < count;) {
        for (int i = 0; i < 40 && come < count; ++i) // the system queues 50
            come += RawPeer(server.path).isOpen() ? 1 : 0;
        waits.ask();
    }
    const qint64 came = all.elapsed();
    while (all.elapsed() < came + 3000) // until the last of them is deleted
        waits.ask();
    report->note("clients that come and go in a burst", count, "");
    report->note("  within", double(came), "ms");
    report->line("  longest wait of a live client, of processor time", waits.longestProcessorMs(),
                 "ms", 50);
    report->note("  on the clock", waits.longestMs(), "ms");
    report->note("  on the clock, before the burst", quiet.longestMs(), "ms");
    report->line("  kept afterwards", double(live.number("memory") - before) / kMebibyte, "MiB", 1);
}

using Askers = std::vector<std::unique_ptr<Asker>>;

Askers connected(const Server& server, int count)
{
    Askers askers;
    for (int i = 0; i < count; ++i) {
        askers.push_back(std::make_unique<Asker>(server.path));
        askers.back()->ask("here");
    }
    return askers;
}

/// Processor time of the server for one message, the least of some rounds. `turn` has `messages`
/// sent and answered.
template<typename Turn>
double leastCost(Asker& asker, int messages, Turn turn)
{
    double least = 1e9;
    for (int round = 0; round < 10; ++round) {
        const qint64 before = asker.number("processor");
        turn();
        least = qMin(least, double(asker.number("processor") - before) / messages);
    }
    return least;
}

/// All clients ask at once: the event loop looks at the sockets once for many messages.
double costWhenAllAsk(const QString& role, int clients)
{
    Server server(role);
    Asker observer(server.path);
    const Askers askers = connected(server, clients);
    const int turns = 5000 / clients;
    return leastCost(observer, turns * clients, [&] {
        for (int i = 0; i < turns; ++i) {
            for (const auto& asker : askers)
                asker->send("x");
            for (const auto& asker : askers)
                asker->answer();
        }
    });
}

/// One client asks, the others are idle: the event loop looks at all sockets for each message.
double costWhenOneAsks(const QString& role, int others)
{
    Server server(role);
    Asker asker(server.path);
    const Askers idle = connected(server, others);
    constexpr int kMessages = 500;
    return leastCost(asker, kMessages, [&] {
        for (int i = 0; i < kMessages; ++i)
            asker.ask("x");
    });
}

void manyClients(int count, Report* report)
{
    const double few = costWhenAllAsk("serve", count / 10);
    const double all = costWhenAllAsk("serve", count);
    const double plain = costWhenAllAsk("plain", count);
    report->note("clients that ask at once", count, "");
    report->note("  a message, with a tenth of them", few, "us of processor");
    report->note("  a message", all, "us of processor");
    report->note("  a message, QLocalServer alone", plain, "us of processor");
    report->line("  a message, over that with a tenth of them", all / few, "times", 2);
    report->line("  a message, over QLocalServer alone", all / plain, "times", 1.3);
    report->note("idle clients beside one that asks", count, "");
    report->note("  a message", costWhenOneAsks("serve", count), "us of processor");
    report->note("  a message, QLocalServer alone", costWhenOneAsks("plain", count),
                 "us of processor");
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.value(1) == "serve")
        return serve(arguments.value(2));
    if (arguments.value(1) == "plain")
        return servePlainly(arguments.value(2));

    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addOptions({{"trips", "round trips", "N", "1000000"},
                       {"connections", "connections one after the other", "N", "100000"},
                       {"burst", "clients that come and go at once", "N", "40000"},
                       {"clients", "clients that are connected together", "N", "1000"}});
    parser.process(application);
    raiseDescriptorLimit();
    Report report;
    roundTrips(parser.value("trips").toInt(), &report);
    if (parser.value("connections").toInt() > 0)
        connections(parser.value("connections").toInt(), &report);
    burst(parser.value("burst").toInt(), &report);
    if (parser.value("clients").toInt() > 0)
        manyClients(parser.value("clients").toInt(), &report);
    return report.exitCode();
}
