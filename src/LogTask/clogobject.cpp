#include "LogTask/clogobject.h"

#include "LogTask/logfile_p.h"
#include "LogTask/logtext_p.h"

CLogObject::CLogObject(const QString& path, bool append, bool debug, bool flush, QObject* parent)
    : QObject(parent)
    , m_file(std::make_unique<LogFile>())
    , m_flush(flush)
{
    Q_UNUSED(debug)
    m_file->open(path, append);
    banner("Start Log--");
}

CLogObject::~CLogObject()
{
    banner("End Log--");
}

void CLogObject::writeBytes(const char* bytes, qint64 size)
{
    m_file->write(bytes, static_cast<std::size_t>(size));
    if (m_flush)
        m_file->flush();
}

void CLogObject::writeOut()
{
    m_file->flush();
}

void CLogObject::writeInCrash(const char* bytes, std::size_t size)
{
    m_file->writeInCrash(bytes, size);
}

void CLogObject::WriteLog(const QString& text, bool newLine)
{
    LogBytes line;
    appendText(&line, text);
    if (newLine)
        line.append("\r\n", 2);
    writeBytes(line.constData(), line.size());
}

void CLogObject::flushLog()
{
    constexpr char mark[] = "flush to file \r\n";
    m_file->write(mark, sizeof mark - 1);
    m_file->flush();
}

void CLogObject::timerEvent(QTimerEvent* event)
{
    writeOut();
    QObject::timerEvent(event);
}

void CLogObject::banner(const char* title)
{
    LogBytes text;
    text.append("\r\n", 2);
    text.append(title, static_cast<int>(qstrlen(title)));
    appendTime(&text);
    text.append("\r\n", 2);
    m_file->write(text.constData(), static_cast<std::size_t>(text.size()));
}
