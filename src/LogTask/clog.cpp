#include "LogTask/clog.h"

#include "LogTask/clogobject.h"
#include "LogTask/errorcodetable_p.h"
#include "LogTask/logqueue_p.h"
#include "LogTask/logsettings_p.h"
#include "LogTask/logtext_p.h"
#include "appglobal/applicationpaths.h"
#include "assertion_p.h"

#include <QAbstractEventDispatcher>
#include <QDeadlineTimer>
#include <QDebug>
#include <QFile>
#include <QLoggingCategory>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>

std::atomic<bool> g_bLog{false};

namespace {

constexpr std::chrono::milliseconds startLimit(1000);
constexpr std::chrono::milliseconds gatherTime(10);
constexpr int settleTime = 50;
constexpr int stopLimit = 3000;

// How many log calls of all threads use the instance at this moment; Destroy() waits for none.
std::atomic<int> s_users{0};

// Keeps the instance alive for one log call; false when the log was ended meanwhile.
class InstanceUse
{
public:
    InstanceUse() { ++s_users; }
    ~InstanceUse() { --s_users; }
    InstanceUse(const InstanceUse&) = delete;
    InstanceUse& operator=(const InstanceUse&) = delete;
    explicit operator bool() const { return g_bLog; }
};

bool waitForUsers()
{
    const QDeadlineTimer deadline(stopLimit);
    while (s_users.load() != 0) {
        if (deadline.hasExpired())
            return false;
        QThread::yieldCurrentThread();
    }
    return true;
}

// The formatted message, at most `size` - 1 bytes, without half a character at the cut.
std::size_t formatMessage(char* buffer, std::size_t size, const char* format, va_list arguments)
{
    buffer[0] = '\0';
    if (format && std::vsnprintf(buffer, size, format, arguments) < 0)
        buffer[0] = '\0';
    const std::size_t length = std::strlen(buffer);
    const std::size_t kept = length + 1 < size ? length : wholeUtf8(buffer, length);
    buffer[kept] = '\0';
    return kept;
}

QString messageLine(const char* text, bool addTime)
{
    const std::size_t size = text ? std::strlen(text) : 0;
    QString line;
    // Room for the time before and an error code after.
    line.reserve(static_cast<int>(size) + 100);
    if (addTime) {
        appendTime(&line);
        line += QLatin1Char(' ');
    }
    appendUtf8(&line, text, size);
    return line;
}

void writeBatch(const LogQueue::Batch& batch, CLogObject* writer)
{
    // Qt 5 counts with int, and while a disk hangs more than that may gather.
    constexpr std::size_t kSlice = std::size_t(1) << 28;
    const auto write = [&](std::size_t from, std::size_t to) {
        while (from < to) {
            const std::size_t size = std::min(to - from, kSlice);
            const auto* const text = reinterpret_cast<const QChar*>(batch.text.data()) + from;
            writer->WriteLog(QString::fromRawData(text, static_cast<int>(size)), false);
            from += size;
        }
    };
    std::size_t done = 0;
    for (const std::size_t flush : batch.flushes) {
        write(done, flush);
        writer->flushLog();
        done = flush;
    }
    write(done, batch.text.size());
}

} // namespace

std::atomic<CLog*> CLog::m_pIns{nullptr};

struct CLogPrivate
{
    bool initialised = false;
    LogSettings settings;
    QString m_strFile;
    ErrorCodeTable codes;
    LogQueue queue;
};

CLog::CLog()
    : d(std::make_unique<CLogPrivate>())
{
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
    if (instance && waitForUsers() && instance->stop())
        delete instance;
}

bool CLog::stop()
{
    requestInterruption();
    d->queue.wake();
    return wait(QDeadlineTimer(stopLimit));
}

void CLog::Init(const char* name)
{
    if (d->initialised)
        return;
    d->initialised = true;
    const QString iniFile =
        CApplicationPaths::getResourcePath() + QLatin1String("/Data/LogFile.ini");
    const QString file = name ? QFile::decodeName(name) : QString();
    d->settings = readLogSettings(iniFile, file, QDate::currentDate());
    if (!d->settings.valid)
        return;
    d->m_strFile = d->settings.file;
    GetErrorCode(iniFile);
    connect(
        this, &CLog::WriteLog, this,
        [this](const QString& text, bool newLine) { d->queue.pushText(text, newLine); },
        Qt::DirectConnection);
    connect(
        this, &CLog::flushLog, this, [this] { d->queue.pushFlush(); }, Qt::DirectConnection);
    d->queue.setDelay(d->settings.flush ? std::chrono::milliseconds(0) : gatherTime);
    d->queue.setLimit(static_cast<std::size_t>(d->settings.maxQueue));
    start(QThread::InheritPriority);
    d->queue.waitAttached(startLimit);
}

// The thread's events are dispatched by hand: QThread::exec() asks for an application object.
void CLog::run()
{
    assertThat(!d->m_strFile.isEmpty(), "!m_strFile.isEmpty()", "LogTask/clog", __LINE__);
    CLogObject writer(d->m_strFile, d->settings.append, d->settings.debug, d->settings.flush,
                      nullptr);
    QAbstractEventDispatcher* dispatcher = QAbstractEventDispatcher::instance();
    LogQueue::Batch batch;
    const auto writeWaiting = [&] {
        if (!d->queue.takeAll(&batch))
            return false;
        writeBatch(batch, &writer);
        d->queue.written();
        return true;
    };

    d->queue.attach(dispatcher);
    while (!isInterruptionRequested()) {
        const bool wrote = writeWaiting();
        dispatcher->processEvents(wrote ? QEventLoop::AllEvents : QEventLoop::WaitForMoreEvents);
        d->queue.gather(wrote);
    }
    writeWaiting();
    d->queue.detach();
}

bool CLog::IsValid() const
{
    return d->settings.valid;
}

void CLog::writeLine(const QString& line)
{
    Q_EMIT WriteLog(line, true);
    // A switched off debug output shows nothing, but building its text costs more than the line.
    if (d->settings.debug && QLoggingCategory::defaultCategory()->isDebugEnabled())
        qDebug().noquote() << line;
}

void CLog::Write(const char* text)
{
    if (d->settings.valid)
        writeLine(messageLine(text, d->settings.addTime));
}

void CLog::Write(int code, const char* text)
{
    if (!d->settings.valid)
        return;
    QString line = messageLine(text, d->settings.addTime);
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
    if (const InstanceUse use{})
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
    if (const InstanceUse use{})
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
    const InstanceUse use;
    CLog::Instance()->Write(buffer.get());
}

void FlushLog()
{
    if (!g_bLog)
        return;
    if (const InstanceUse use{})
        CLog::Instance()->Flush();
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
    m_line.reserve(160);
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
    if (const InstanceUse use{})
        *CLog::Instance() << m_line;
}
