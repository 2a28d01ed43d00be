// What a log line of 100 characters costs the thread that logs it, and how many lines a second
// reach the file, from 1 and from 4 threads. Prints Markdown tables.
//
// A round starts a fresh log, times bursts of calls one by one, then times many lines from the
// first call until all are in the file, and then compares every line of the file. The candidates
// take turns, and none echoes its lines to the debug output.
#include "LogTask/clog.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QLoggingCategory>
#include <QTemporaryDir>
#include <QTextStream>
#include <QThread>

#include <spdlog/async.h>
#include <spdlog/details/file_helper.h>
#include <spdlog/sinks/base_sink.h>
#include <spdlog/spdlog.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

constexpr int repetitions = 7;
constexpr int burst = 1000; // calls of all threads together, fewer than any queue holds
constexpr int bursts = 20;
constexpr int lines = 200000;

// With the time and the source's name before it, the line has about 100 characters.
const char source[] = "bench/bench_log";
const char function[] = "logOneLine";
const char text[] = "a message of usual length that says what has happened and";
constexpr int number = 4711;

[[noreturn]] void fail(const char* what)
{
    std::fprintf(stderr, "bench_log: %s\n", what);
    std::exit(1);
}

class Candidate
{
public:
    virtual ~Candidate() = default;
    virtual const char* name() const = 0;
    virtual void begin(const QString& path) = 0;
    virtual void log() = 0;
    /// Waits until every line is in the file.
    virtual void drain() = 0;
    virtual void end() = 0;
};

class ThisLibrary : public Candidate
{
public:
    void begin(const QString& path) override
    {
        if (!InitLog(QFile::encodeName(path).constData()))
            fail("the log is switched off");
    }
    void drain() override
    {
        FlushLog();
        if (!CLog::Instance()->WaitWritten(60000))
            fail("the log does not write");
    }
    void end() override { DestroyLog(); }
};

class Stream final : public ThisLibrary
{
public:
    const char* name() const override { return "CLogFile"; }
    void log() override { CLogFile() << source << function << text << number; }
};

class Printf final : public ThisLibrary
{
public:
    const char* name() const override { return "Log"; }
    void log() override { Log("0 %s %s %s %d ", source, function, text, number); }
};

// spdlog's own file sink, which is final, with a count of what has been flushed.
class FileSink final : public spdlog::sinks::base_sink<std::mutex>
{
public:
    explicit FileSink(const QString& path) { m_file.open(path.toStdString(), true); }
    void waitFlushed(int count)
    {
        while (m_flushed.load() < count)
            std::this_thread::yield();
    }

protected:
    void sink_it_(const spdlog::details::log_msg& message) override
    {
        spdlog::memory_buf_t formatted;
        formatter_->format(message, formatted);
        m_file.write(formatted);
    }
    void flush_() override
    {
        m_file.flush();
        ++m_flushed;
    }

private:
    spdlog::details::file_helper m_file;
    std::atomic<int> m_flushed{0};
};

class Spdlog : public Candidate
{
public:
    explicit Spdlog(bool async)
        : m_async(async)
    {
    }
    const char* name() const override { return m_async ? "spdlog, async" : "spdlog, sync"; }
    void begin(const QString& path) override
    {
        m_sink = std::make_shared<FileSink>(path);
        m_flushes = 0;
        if (m_async) {
            m_pool = std::make_shared<spdlog::details::thread_pool>(8192, 1);
            m_logger = std::make_shared<spdlog::async_logger>("bench", m_sink, m_pool);
        } else {
            m_logger = std::make_shared<spdlog::logger>("bench", m_sink);
        }
        m_logger->set_pattern("%H:%M:%S %e %v");
    }
    void log() override { m_logger->info("{} {} {} {} ", source, function, text, number); }
    void drain() override
    {
        m_logger->flush();
        m_sink->waitFlushed(++m_flushes);
    }
    void end() override
    {
        m_logger.reset();
        m_pool.reset();
        m_sink.reset();
    }

private:
    bool m_async;
    int m_flushes = 0;
    std::shared_ptr<FileSink> m_sink;
    std::shared_ptr<spdlog::details::thread_pool> m_pool;
    std::shared_ptr<spdlog::logger> m_logger;
};

QString lineOfQt()
{
    const QTime now = QTime::currentTime();
    QString line = now.toString(QStringLiteral("HH:mm:ss "));
    line += QString::number(now.msec()) + QLatin1Char(' ');
    line += QLatin1String(source) + QLatin1Char(' ') + QLatin1String(function) + QLatin1Char(' ');
    line += QLatin1String(text) + QLatin1Char(' ') + QString::number(number) + QLatin1Char(' ');
    return line;
}

} // namespace

class Writer : public QObject
{
    Q_OBJECT

public:
    explicit Writer(const QString& path)
        : m_file(path)
    {
        if (!m_file.open(QIODevice::WriteOnly))
            fail("no file");
        m_stream.setDevice(&m_file);
    }

public Q_SLOTS:
    void write(const QString& line) { m_stream << line << QLatin1String("\n"); }
    void flush() { m_stream.flush(); }

Q_SIGNALS:
    void written(const QString& line);

private:
    QFile m_file;
    QTextStream m_stream;
};

namespace {

class QueuedSignal final : public Candidate
{
public:
    const char* name() const override { return "queued signal"; }
    void begin(const QString& path) override
    {
        m_writer = std::make_unique<Writer>(path);
        m_writer->moveToThread(&m_thread);
        QObject::connect(m_writer.get(), &Writer::written, m_writer.get(), &Writer::write,
                         Qt::QueuedConnection);
        m_thread.start();
    }
    void log() override { Q_EMIT m_writer->written(lineOfQt()); }
    void drain() override
    {
        QMetaObject::invokeMethod(m_writer.get(), "flush", Qt::BlockingQueuedConnection);
    }
    void end() override
    {
        m_thread.quit();
        m_thread.wait();
        m_writer.reset();
    }

private:
    QThread m_thread;
    std::unique_ptr<Writer> m_writer;
};

class Mutex final : public Candidate
{
public:
    const char* name() const override { return "QTextStream, mutex"; }
    void begin(const QString& path) override { m_writer = std::make_unique<Writer>(path); }
    void log() override
    {
        const QString line = lineOfQt();
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_writer->write(line);
    }
    void drain() override { m_writer->flush(); }
    void end() override { m_writer.reset(); }

private:
    std::mutex m_mutex;
    std::unique_ptr<Writer> m_writer;
};

struct Result
{
    std::vector<double> medians, tails, rates; // ns, ns, lines per second; one of each round
};

double at(std::vector<double> values, double part)
{
    std::sort(values.begin(), values.end());
    return values[static_cast<size_t>(part * static_cast<double>(values.size() - 1))];
}

template<typename Work>
void inThreads(int threads, Work work)
{
    std::vector<std::thread> running;
    for (int i = 0; i < threads; ++i)
        running.emplace_back(work, i);
    for (std::thread& thread : running)
        thread.join();
}

double nanoseconds(Clock::duration duration)
{
    return std::chrono::duration<double, std::nano>(duration).count();
}

// The lines between the banners are those that were logged, whatever their time.
void check(const QString& folder, int expected)
{
    const QStringList names = QDir(folder).entryList(QDir::Files);
    QFile file(folder + QLatin1Char('/') + names.value(0));
    if (names.size() != 1 || !file.open(QIODevice::ReadOnly))
        fail("not one file");
    const QByteArray tail =
        QByteArray(source) + ' ' + function + ' ' + text + ' ' + QByteArray::number(number);
    int found = 0;
    while (!file.atEnd()) {
        if (file.readLine().trimmed().endsWith(tail))
            ++found;
    }
    if (found != expected)
        fail("lines are missing");
}

void runRound(Candidate& candidate, int threads, Result* result)
{
    const QTemporaryDir folder;
    candidate.begin(folder.filePath(QStringLiteral("log")));
    std::vector<std::vector<double>> times(static_cast<size_t>(threads));
    for (int i = 0; i < bursts; ++i) {
        inThreads(threads, [&](int thread) {
            for (int call = 0; call < burst / threads; ++call) {
                const auto start = Clock::now();
                candidate.log();
                times[static_cast<size_t>(thread)].push_back(nanoseconds(Clock::now() - start));
            }
        });
        candidate.drain();
    }
    const auto start = Clock::now();
    inThreads(threads, [&](int) {
        for (int line = 0; line < lines / threads; ++line)
            candidate.log();
    });
    candidate.drain();
    const double passed = nanoseconds(Clock::now() - start);
    candidate.end();
    check(folder.path(), bursts * burst + lines);

    std::vector<double> all;
    for (const std::vector<double>& part : times)
        all.insert(all.end(), part.begin(), part.end());
    result->medians.push_back(at(all, 0.5));
    result->tails.push_back(at(all, 0.99));
    result->rates.push_back(lines * 1e9 / passed);
}

std::string spread(const std::vector<double>& values, const char* format, double unit)
{
    char shown[100];
    std::snprintf(shown, sizeof shown, format, at(values, 0.5) / unit, at(values, 0.25) / unit,
                  at(values, 0.75) / unit);
    return shown;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    std::vector<std::unique_ptr<Candidate>> candidates;
    candidates.push_back(std::make_unique<Stream>());
    candidates.push_back(std::make_unique<Printf>());
    candidates.push_back(std::make_unique<Spdlog>(true));
    candidates.push_back(std::make_unique<Spdlog>(false));
    candidates.push_back(std::make_unique<QueuedSignal>());
    candidates.push_back(std::make_unique<Mutex>());
    for (const int threads : {1, 4}) {
        std::vector<Result> results(candidates.size());
        for (int repetition = 0; repetition < repetitions; ++repetition) {
            for (size_t i = 0; i < candidates.size(); ++i)
                runRound(*candidates[i], threads, &results[i]);
        }
        std::printf("\n**%d thread%s**, medians of %d rounds (quartiles)\n\n", threads,
                    threads == 1 ? "" : "s", repetitions);
        std::puts("| log | call, median ns | call, p99 ns | thousand lines per second | call : "
                  "spdlog async | p99 : spdlog async | lines : spdlog sync |");
        std::puts("|---|---|---|---|---|---|---|");
        const Result& async = results[2];
        const Result& sync = results[3];
        for (size_t i = 0; i < candidates.size(); ++i) {
            const Result& r = results[i];
            std::printf("| %s | %s | %s | %s | %.2f | %.2f | %.2f |\n", candidates[i]->name(),
                        spread(r.medians, "%.0f (%.0f to %.0f)", 1).c_str(),
                        spread(r.tails, "%.0f (%.0f to %.0f)", 1).c_str(),
                        spread(r.rates, "%.0f (%.0f to %.0f)", 1000).c_str(),
                        at(r.medians, 0.5) / at(async.medians, 0.5),
                        at(r.tails, 0.5) / at(async.tails, 0.5),
                        at(r.rates, 0.5) / at(sync.rates, 0.5));
        }
        std::fflush(stdout);
    }
    return 0;
}

#include "bench_log.moc"
