#include "appglobal/wzrfilehandler.h"

#include <QFile>
#include <QTextStream>

#include <limits>

namespace {

constexpr char kMark[] = "\xFF\xFE";
constexpr qint64 kMarkSize = 2;

/// The bytes of the text's UTF-8 form, each as one character: the first of the two steps.
QString bytesAsCharacters(const QString& text)
{
    const QByteArray utf8 = text.toUtf8();
    return QString::fromLatin1(utf8.constData(), static_cast<int>(utf8.size()));
}

} // namespace

WZRFileHandler::WZRFileHandler(QObject* parent)
    : QObject(parent)
{
}

WZRFileHandler::~WZRFileHandler() = default;

bool WZRFileHandler::isOpen() const
{
    return m_pStream && m_pFile->isOpen();
}

bool WZRFileHandler::open(const QString& path, bool write)
{
    m_pStream.reset();
    m_pFile = std::make_unique<QFile>(path);
    if (!m_pFile->open(write ? QIODevice::ReadWrite | QIODevice::Truncate : QIODevice::ReadOnly) ||
        (write && m_pFile->write(kMark, kMarkSize) != kMarkSize)) {
        m_pFile->close();
        return false;
    }
    if (!write && m_pFile->peek(kMarkSize) == kMark)
        m_pFile->seek(kMarkSize);
    m_pStream = std::make_unique<QTextStream>(m_pFile.get());
    m_pStream->setAutoDetectUnicode(false);
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
    m_pStream->setEncoding(QStringConverter::Utf16LE);
#else
    m_pStream->setCodec("UTF-16LE");
#endif
    return true;
}

QString WZRFileHandler::readLine(qint64 maxLength)
{
    constexpr qint64 longest = std::numeric_limits<int>::max();
    return isOpen() ? m_pStream->readLine(qBound<qint64>(0, maxLength, longest)) : QString();
}

QString WZRFileHandler::readAll()
{
    return isOpen() ? m_pStream->readAll() : QString();
}

void WZRFileHandler::writeLine(const QString& line)
{
    if (!isOpen())
        return;
    writeAll(line);
    *m_pStream << QLatin1Char('\n');
    m_pStream->flush();
}

void WZRFileHandler::writeAll(const QString& text)
{
    if (isOpen())
        *m_pStream << bytesAsCharacters(text);
}

bool WZRFileHandler::seek(qint64 position)
{
    return isOpen() && m_pStream->seek(position);
}

bool WZRFileHandler::reset()
{
    return seek(kMarkSize);
}

bool WZRFileHandler::atEnd() const
{
    return !isOpen() || m_pStream->atEnd();
}

void WZRFileHandler::flush()
{
    if (isOpen())
        m_pStream->flush();
}

void WZRFileHandler::close()
{
    if (!m_pFile)
        return;
    if (m_pFile->isWritable())
        flush();
    m_pFile->close();
}
