#include "LogTask/errorcodetable_p.h"

#include <QDebug>
#include <QFile>

namespace {

bool parseCode(const QString& text, int* code)
{
    bool isCode = false;
    *code = text.toInt(&isCode, 16);
    if (!isCode)
        *code = static_cast<int>(text.toUInt(&isCode, 16));
    return isCode;
}

bool parseEntry(const QString& line, int* code, QString* text)
{
    const auto equals = line.indexOf(QLatin1Char('='));
    if (equals <= 0 || !parseCode(line.left(equals), code))
        return false;
    *text = line.mid(equals + 1);
    text->chop(1);
    return true;
}

} // namespace

void ErrorCodeTable::load(const QString& file)
{
    QFile device(file);
    if (!device.open(QIODevice::ReadOnly | QIODevice::Text)) {
        qDebug() << device.errorString();
        return;
    }
    std::map<int, QString> found;
    bool inCodes = false;
    while (!device.atEnd()) {
        const QString line = QString::fromUtf8(device.readLine());
        int code = 0;
        QString text;
        if (!inCodes)
            inCodes = line.contains(QLatin1String("[CODE]"));
        else if (parseEntry(line, &code, &text))
            found[code] = text;
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (const auto& entry : found)
        m_texts[entry.first] = entry.second;
}

QString ErrorCodeTable::text(int code)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_texts[code];
}
