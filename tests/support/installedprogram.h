#ifndef TESTS_SUPPORT_INSTALLEDPROGRAM_H
#define TESTS_SUPPORT_INSTALLEDPROGRAM_H

#include "support/childprocess.h"
#include "support/testfile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

/// A helper program installed as an application is, alone in a temporary folder:
///
///     <folder>/bin/<name>                 the program, copied
///     <folder>/Resources/Data/<file>      what addData() puts there
class InstalledProgram
{
public:
    /// `place` is the program's path below the folder.
    explicit InstalledProgram(const char* helper, const QString& place = "bin/program")
        : m_program(m_folder.filePath(place))
    {
        if (!m_folder.isValid() || !QDir().mkpath(QFileInfo(m_program).path()) ||
            !QFile::copy(helper, m_program))
            qFatal("InstalledProgram: cannot install %s", helper);
    }

    /// A path in the folder, which has no symbolic links in it.
    QString path(const QString& below) const
    {
        return QFileInfo(m_folder.path()).canonicalFilePath() + '/' + below;
    }

    void addData(const QString& name, const QByteArray& content)
    {
        const QString folder = QFileInfo(m_program).path() + "/../Resources/Data";
        if (!QDir().mkpath(folder))
            qFatal("InstalledProgram: cannot make %s", qPrintable(folder));
        TestFile::write(folder + '/' + name, content);
    }

    /// The installed program, to be started with ChildProcess.
    QString program() const { return m_program; }

    ChildProcess::Result run(const QStringList& arguments) const
    {
        return ChildProcess::run(m_program, arguments);
    }

private:
    QTemporaryDir m_folder;
    QString m_program;
};

#endif
