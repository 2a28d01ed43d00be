#include "LogTask/clog.h"

#include "LogTask/clogobject.h"
#include "LogTask/errorcodetable_p.h"
#include "LogTask/logformat_p.h"
#include "LogTask/logline_p.h"
#include "LogTask/logqueue_p.h"
#include "LogTask/logsecrets_p.h"
#include "LogTask/logsettings_p.h"
#include "LogTask/logtext_p.h"
#include "LogTask/loguse_p.h"
#include "appglobal/applicationpaths.h"
#include "assertion_p.h"
#include "text/utf8_p.h"

#include <QAbstractEventDispatcher>
#include <QDeadlineTimer>
#include <QDebug>
#include <QFile>
#include <QLoggingCategory>
#include <QMetaMethod>

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstring>
#include <string_view>

#include <pthread.h>

std::atomic<bool> g_bLog{false};

namespace {

constexpr char kLogSource[] = "LogTask/clog";

constexpr std::chrono::milliseconds startLimit(1000);
constexpr std::chrono::milliseconds gatherTime(10);
constexpr int settleTime = 50;
constexpr std::chrono::milliseconds stopLimit(3000);
constexpr int crashLimit = 1000; // ms

// The formatted message, at most `size` - 1 bytes, without half a character at the cut.
std::size_t formatMessage(char* buffer, std::size_t size, const char* format, va_list arguments)
{
    const std::size_t length = formatText(buffer, size, format, arguments);
    const std::size_t kept =
        length + 1 < size ? length : length - Utf8::incompleteTail({buffer, length});
    buffer[kept] = '\0';
    return kept;
}

template<typename Line>
void appendMessage(Line* line, const char* text, bool addTime)
{
    if (addTime) {
        appendTime(line);
        appendUtf8(line, " ", 1);
    }
    appendUtf8(line, text, text ? std::strlen(text) : 0);
}

// A limit on file sizes and a pipe without a reader send signals that would end the process; in
// this thread, the failed write tells.
void blockSignalsOfWriting()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGXFSZ);
    sigaddset(&signals, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

void writeBatch(const LogQueue::Batch& batch, CLogObject* writer)
{
    const char* const text = batch.text.data();
    std::size_t done = 0;
    for (const std::size_t flush : batch.flushes) {
        writer->writeBytes(text + done, static_cast<qint64>(flush - done));
        writer->flushLog();
        done = flush;
    }
    writer->writeBytes(text + done, static_cast<qint64>(batch.text.size() - done));
}

} // namespace

std::atomic<CLog*> CLog::m_pIns{nullptr};

struct CLogPrivate
{
    bool initialised = false;
    const LogSettings defaults{}; // braces, as clang asks for a constant without a constructor
    LogSettings read;
    // The defaults until Init() has read others: log calls of other threads may come earlier.
    std::atomic<const LogSettings*> m_settings{&defaults};
    QString m_strFile;
    ErrorCodeTable codes;

    // Whose turn it is to use the writer and to take lines out of the queue.
    enum Turn { Nobody, LogThread, CrashHandler };
    std::atomic<int> turn{Nobody};
    std::atomic<CLogObject*> writer{nullptr};
    std::atomic<pthread_t> thread{};
    LogQueue queue;

    // From Init() on. Lines that come earlier have no writer and are lost.
    std::atomic<bool> takesLines{false};

    // Receivers of WriteLog() that came so far. The queue is the first.
    std::atomic<int> receivers{0};

    const LogSettings& settings() const { return *m_settings.load(std::memory_order_acquire); }

    // The queue alone waits for lines: they need not become text and a signal first.
    bool goesToFileOnly() const
    {
        return receivers.load(std::memory_order_relaxed) == 1 && !echoes();
    }

    // A switched off debug output shows nothing, but building its text costs more than the line.
    // At the end of the process, when Qt has taken itself down, there is no debug output.
    bool echoes() const
    {
        if (!settings().debug)
            return false;
        const QLoggingCategory* const category = QLoggingCategory::defaultCategory();
        return category && category->isDebugEnabled();
    }

    bool takeTurn(Turn who)
    {
        int expected = Nobody;
        return turn.compare_exchange_strong(expected, who);
    }

    // In a signal handler. Waits for the log thread, unless that is the one that has crashed.
    void flushInCrash()
    {
        CLogObject* const object = writer;
        if (!object)
            return;
        if (pthread_equal(thread, pthread_self())) {
            if (turn.exchange(CrashHandler) == CrashHandler)
                return;
        } else {
            for (int waited = 0; !takeTurn(CrashHandler); ++waited) {
                if (waited == crashLimit || turn == CrashHandler)
                    return;
                sleepMillisecond();
            }
        }
        const std::string_view waiting = queue.closeInCrash(crashLimit);
        object->writeInCrash(waiting.data(), waiting.size());
    }

    void push(const LogBytes& line, bool newLine)
    {
        if (takesLines.load(std::memory_order_relaxed))
            queue.push(line.constData(), static_cast<std::size_t>(line.size()), newLine);
    }
};

CLog::CLog()
    : d(std::make_unique<CLogPrivate>())
{
    connect(
        this, &CLog::WriteLog, this,
        [this](const QString& text, bool newLine) {
            LogBytes line;
            appendText(&line, text);
            d->push(line, newLine);
        },
        Qt::DirectConnection);
    connect(
        this, &CLog::flushLog, this,
        [this] {
            if (d->takesLines)
                d->queue.pushFlush();
        },
        Qt::DirectConnection);
}

CLog::~CLog()
{
    stop();
}

CLog* CLog::Instance()
{
    CLog* instance = m_pIns.load();
    if (instance)
        return instance;
    auto* created = new CLog;
    if (m_pIns.compare_exchange_strong(instance, created))
        return created;
    delete created;
    return instance;
}

void CLog::Destroy()
{
    if (!m_pIns.load())
        return;
    // Time for threads that are about to log their last lines.
    QThread::msleep(settleTime);
    g_bLog = false;
    CLog* instance = m_pIns.exchange(nullptr);
    // What still runs cannot be deleted: a log thread that the disk holds is left behind, with its
    // instance, rather than crash the process at its end.
    if (instance && waitForLogUses(stopLimit) && instance->stop())
        delete instance;
}

// After fork(). Only the thread that called it is there: neither the log thread nor other log
// calls.
void CLog::forgetInChild()
{
    static std::atomic<CLog*> s_parents{nullptr}; // not deleted: its thread cannot be waited for
    g_bLog = false;
    s_parents = m_pIns.exchange(nullptr);
    forgetLogUses();
}

bool CLog::stop()
{
    requestInterruption();
    d->queue.wake();
    if (!wait(QDeadlineTimer(stopLimit)))
        return false;
    d->queue.wake(); // under its lock, so that what the thread did before detach() lies before this
    return true;
}

void CLog::Init(const char* name)
{
    if (d->initialised)
        return;
    d->initialised = true;
    const QString iniFile =
        CApplicationPaths::getResourcePath() + QLatin1String("/Data/LogFile.ini");
    const QString file = name ? QFile::decodeName(name) : QString();
    d->read = readLogSettings(iniFile, file, QDate::currentDate());
    d->m_settings.store(&d->read, std::memory_order_release);
    const LogSettings& settings = d->read;
    if (!settings.valid)
        return;
    d->m_strFile = settings.file;
    setLogExcerptLimit(settings.maxLine);
    GetErrorCode(iniFile);
    d->queue.setDelay(settings.flush ? std::chrono::milliseconds(0) : gatherTime);
    d->queue.setLimit(static_cast<std::size_t>(settings.maxQueue));
    d->takesLines = true;
    static const int s_registered = pthread_atfork(nullptr, nullptr, &CLog::forgetInChild);
    Q_UNUSED(s_registered)
    start(QThread::InheritPriority);
    d->queue.waitAttached(startLimit);
}

// The thread's events are dispatched by hand: QThread::exec() asks for an application object.
void CLog::run()
{
    blockSignalsOfWriting();
    assertThat(!d->m_strFile.isEmpty(), "!m_strFile.isEmpty()", kLogSource, __LINE__);
    const LogSettings& settings = d->settings();
    CLogObject writer(d->m_strFile, settings.append, settings.debug, settings.flush, nullptr);
    QAbstractEventDispatcher* dispatcher = QAbstractEventDispatcher::instance();
    LogQueue::Batch batch;
    const auto writeWaiting = [&] {
        if (!d->takeTurn(CLogPrivate::LogThread))
            return false;
        const bool found = d->queue.takeAll(&batch);
        if (found)
            writeBatch(batch, &writer);
        else if (settings.flushIdle)
            writer.writeOut();
        d->turn = CLogPrivate::Nobody;
        if (found)
            d->queue.written();
        return found;
    };

    d->thread = pthread_self();
    d->writer = &writer;
    d->queue.attach(dispatcher);
    while (!isInterruptionRequested()) {
        const bool wrote = writeWaiting();
        dispatcher->processEvents(wrote ? QEventLoop::AllEvents : QEventLoop::WaitForMoreEvents);
        d->queue.gather(wrote);
    }
    writeWaiting();
    d->writer = nullptr;
    d->queue.detach();
}

bool CLog::IsValid() const
{
    return d->settings().valid;
}

void CLog::connectNotify(const QMetaMethod& signal)
{
    if (signal == QMetaMethod::fromSignal(&CLog::WriteLog))
        ++d->receivers;
}

void CLog::writeLine(const QString& line)
{
    if (hidesSecrets())
        writeShown(withoutSecrets(line));
    else
        writeShown(line);
}

void CLog::writeShown(const QString& line)
{
    if (d->goesToFileOnly()) {
        LogBytes bytes;
        appendText(&bytes, line);
        d->push(bytes, true);
        return;
    }
    Q_EMIT WriteLog(line, true);
    if (d->echoes())
        qDebug().noquote() << line;
}

void CLog::Write(const char* text)
{
    if (!d->settings().valid)
        return;
    if (d->goesToFileOnly() && !hidesSecrets()) {
        LogBytes line;
        appendMessage(&line, text, d->settings().addTime);
        d->push(line, true);
        return;
    }
    QString line;
    appendMessage(&line, text, d->settings().addTime);
    writeLine(line);
}

void CLog::Write(int code, const char* text)
{
    if (!d->settings().valid)
        return;
    QString line;
    appendMessage(&line, text, d->settings().addTime);
    line += QLatin1String(" Error code:");
    appendNumber(&line, code, 16);
    line += QLatin1Char(' ');
    line += d->codes.text(code);
    writeLine(line);
}

CLog& CLog::operator<<(int value)
{
    QString line;
    appendNumber(&line, value);
    writeLine(line);
    return *this;
}

CLog& CLog::operator<<(const QString& text)
{
    writeLine(text);
    return *this;
}

CLog& CLog::operator<<(const char* text)
{
    writeLine(QString::fromUtf8(text));
    return *this;
}

void CLog::Flush()
{
    Q_EMIT flushLog();
}

bool CLog::WaitWritten(int milliseconds)
{
    return d->queue.waitWritten(std::chrono::milliseconds(milliseconds));
}

void CLog::GetErrorCode(const QString& file)
{
    d->codes.load(file);
}

bool InitLog(const char* name)
{
    CLog* log = CLog::Instance();
    log->Init(name);
    g_bLog = log->IsValid();
    return g_bLog;
}

void Log(const char* format, ...)
{
    if (!g_bLog)
        return;
    char buffer[1024];
    va_list arguments;
    va_start(arguments, format);
    formatMessage(buffer, sizeof buffer, format, arguments);
    va_end(arguments);
    if (const LogUse use{})
        CLog::Instance()->Write(buffer);
}

void LogErr(int code, const char* format, ...)
{
    if (!g_bLog)
        return;
    char buffer[1024];
    va_list arguments;
    va_start(arguments, format);
    formatMessage(buffer, sizeof buffer, format, arguments);
    va_end(arguments);
    if (const LogUse use{})
        CLog::Instance()->Write(code, buffer);
}

void LogDebug(const char* format, ...)
{
    if (g_bLog)
        return;
    constexpr std::size_t size = 1048576;
    const std::unique_ptr<char[]> buffer(new char[size]);
    va_list arguments;
    va_start(arguments, format);
    formatMessage(buffer.get(), size, format, arguments);
    va_end(arguments);
    const LogUse use;
    CLog::Instance()->Write(buffer.get());
}

void FlushLog()
{
    if (!g_bLog)
        return;
    if (const LogUse use{})
        CLog::Instance()->Flush();
}

void FlushLogInCrash()
{
    const int error = errno;
    const LogUse use{LogUse::Crash};
    CLog* const log = CLog::m_pIns;
    if (use && log)
        log->d->flushInCrash();
    errno = error;
}

void DestroyLog()
{
    if (!g_bLog)
        return;
    CLog::Destroy();
    g_bLog = false;
}

void CLogFile::begin()
{
    m_line.reserve(200);
    appendStamp(&m_line);
}

void CLogFile::append(int value)
{
    appendNumber(&m_line, value);
    m_line += QLatin1Char(' ');
}

void CLogFile::append(const char* text)
{
    appendUtf8(&m_line, text, text ? std::strlen(text) : 0);
    m_line += QLatin1Char(' ');
}

void CLogFile::append(const QString& text)
{
    m_line += text;
    m_line += QLatin1Char(' ');
}

void CLogFile::end()
{
    if (const LogUse use{})
        *CLog::Instance() << m_line;
}
