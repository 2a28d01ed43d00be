#ifndef TESTS_SUPPORT_INSTALLEDPROGRAM_H
#define TESTS_SUPPORT_INSTALLEDPROGRAM_H

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
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
        QFile file(folder + '/' + name);
        if (!QDir().mkpath(folder) || !file.open(QIODevice::WriteOnly) ||
            file.write(content) != content.size())
            qFatal("InstalledProgram: cannot write %s", qPrintable(name));
    }

    /// The program, not started yet.
    void prepare(QProcess* process, const QStringList& arguments) const
    {
        process->setProgram(m_program);
        process->setArguments(arguments);
    }

    struct Result
    {
        bool exited = false; ///< false when a signal ended it
        int code = -1;
        QByteArray out;
        QByteArray err;
    };

    Result run(const QStringList& arguments) const
    {
        QProcess process;
        prepare(&process, arguments);
        process.start();
        if (!process.waitForFinished(60000))
            qFatal("InstalledProgram: %s does not end", qPrintable(m_program));
        return {process.exitStatus() == QProcess::NormalExit, process.exitCode(),
                process.readAllStandardOutput(), process.readAllStandardError()};
    }

private:
    QTemporaryDir m_folder;
    QString m_program;
};

#endif
