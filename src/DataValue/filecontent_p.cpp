#include "DataValue/filecontent_p.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <utility>

bool FileContent::read(const QString& path, QByteArray& content)
{
    if (!QFileInfo(path).isFile())
        return false;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    // One byte more than allowed: what a file says of its size need not be true.
    QByteArray bytes = file.read(kMaximumSize + 1);
    if (file.error() != QFileDevice::NoError || bytes.size() > kMaximumSize)
        return false;
    content = std::move(bytes);
    return true;
}

bool FileContent::replace(const QString& path, std::string_view content)
{
    const auto size = static_cast<qint64>(content.size());
    const QFileInfo old(path);
    if (path.isEmpty() || size > kMaximumSize || (old.exists() && !old.isFile()))
        return false;
    // Unbuffered, and each result looked at: after a short write on a full disk the commit alone
    // would report success and put the torn file in the old one's place.
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        return false;
    if (file.write(content.data(), size) != size) {
        file.cancelWriting();
        return false;
    }
    return file.commit();
}
