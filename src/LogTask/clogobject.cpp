#include "LogTask/clogobject.h"

#include "LogTask/logtext_p.h"

namespace {

// So much text is written without being asked for.
constexpr int kept = 16384;

} // namespace

CLogObject::CLogObject(const QString& path, bool append, bool debug, bool flush, QObject* parent)
    : QObject(parent)
    , m_file(path)
    , m_flush(flush)
{
    Q_UNUSED(debug)
    const auto mode = QIODevice::WriteOnly | QIODevice::Unbuffered;
    if (!m_file.open(mode | (append ? QIODevice::Append : QIODevice::Truncate)))
        return;
    m_unwritten.reserve(kept + kept);
    banner("Start Log--");
}

CLogObject::~CLogObject()
{
    if (!m_file.isOpen())
        return;
    banner("End Log--");
    writeOut();
}

// What finds no room on the disk is lost; nothing gathers here.
void CLogObject::writeBytes(const char* bytes, qint64 size)
{
    if (!m_file.isOpen())
        return;
    if (size >= kept) {
        writeOut();
        m_file.write(bytes, size);
        return;
    }
    m_unwritten.append(bytes, static_cast<int>(size));
    if (m_flush || m_unwritten.size() >= kept)
        writeOut();
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
    const QByteArray mark("flush to file \r\n");
    writeBytes(mark.constData(), mark.size());
    writeOut();
}

void CLogObject::timerEvent(QTimerEvent* event)
{
    writeOut();
    QObject::timerEvent(event);
}

void CLogObject::banner(const char* title)
{
    LogBytes time;
    appendTime(&time);
    m_unwritten += QByteArray("\r\n") + title + QByteArray(time.constData(), time.size()) + "\r\n";
}

void CLogObject::writeOut()
{
    if (m_file.isOpen() && !m_unwritten.isEmpty())
        m_file.write(m_unwritten);
    m_unwritten.resize(0);
}
