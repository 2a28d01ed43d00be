#ifndef TESTS_SUPPORT_TESTFILE_H
#define TESTS_SUPPORT_TESTFILE_H

#include <QByteArray>
#include <QFile>
#include <QString>

/// Writes and reads whole files; a failure ends the test program.
namespace TestFile {

inline void write(const QString& path, const QByteArray& content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("TestFile: cannot write %s", qPrintable(path));
}

inline QByteArray read(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("TestFile: cannot read %s", qPrintable(path));
    return file.readAll();
}

} // namespace TestFile

#endif
