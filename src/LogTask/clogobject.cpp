#include "LogTask/clogobject.h"

#include "LogTask/logtext_p.h"

CLogObject::CLogObject(const QString& path, bool append, bool debug, bool flush, QObject* parent)
    : QObject(parent)
    , m_file(path)
    , m_flush(flush)
{
    Q_UNUSED(debug)
    if (!m_file.open(QIODevice::WriteOnly | (append ? QIODevice::Append : QIODevice::Truncate)))
        return;
    m_stream.setDevice(&m_file);
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
    m_stream.setEncoding(QStringConverter::System);
#endif
    banner(QLatin1String("Start Log--"));
}

CLogObject::~CLogObject()
{
    if (!m_file.isOpen())
        return;
    banner(QLatin1String("End Log--"));
    flushStream();
    m_stream.setDevice(nullptr);
    m_file.close();
}

void CLogObject::WriteLog(const QString& text, bool newLine)
{
    if (!m_file.isOpen())
        return;
    m_stream << text;
    if (newLine)
        m_stream << QLatin1String("\r\n");
    if (m_flush)
        flushStream();
    else if (m_stream.status() != QTextStream::Ok)
        m_stream.resetStatus();
}

void CLogObject::flushLog()
{
    if (!m_file.isOpen())
        return;
    m_stream << QLatin1String("flush to file \r\n");
    flushStream();
}

void CLogObject::timerEvent(QTimerEvent* event)
{
    flushStream();
    QObject::timerEvent(event);
}

void CLogObject::banner(QLatin1String title)
{
    QString time;
    appendTime(&time);
    m_stream << QLatin1String("\r\n") << title << time << QLatin1String("\r\n");
}

// A stream that has failed to write keeps its failure and gathers all later text in memory.
void CLogObject::flushStream()
{
    if (!m_file.isOpen())
        return;
    m_stream.flush();
    m_stream.resetStatus();
}
