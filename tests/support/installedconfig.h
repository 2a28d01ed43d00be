#ifndef TESTS_SUPPORT_INSTALLEDCONFIG_H
#define TESTS_SUPPORT_INSTALLEDCONFIG_H

#include "support/installedprogram.h"

/// The program confighelper, installed with the files that a test gives it.
class InstalledConfig
{
public:
    explicit InstalledConfig(const char* helper)
        : m_program(helper)
    {
    }

    QString path(const QString& below) const { return m_program.path(below); }

    /// Writes a file below the installation's folder.
    void add(const QString& below, const QByteArray& content) const
    {
        const QString file = path(below);
        if (!QDir().mkpath(QFileInfo(file).path()))
            qFatal("InstalledConfig: cannot make the folder of %s", qPrintable(file));
        TestFile::write(file, content);
    }
    void addPerso(const QByteArray& content) const
    {
        add("Resources/Data/Perso/project.perso", content);
    }
    void addModule(const QString& name, const QByteArray& content) const
    {
        add("Resources/Data/Perso/" + name + ".xml", content);
    }

    /// The lines that the program prints for the commands.
    QStringList run(const QStringList& commands) const
    {
        const auto result = m_program.run(commands);
        if (result.code != 0)
            qFatal("InstalledConfig: %s", result.err.constData());
        QStringList lines = QString::fromUtf8(result.out).split('\n');
        lines.removeLast();
        return lines;
    }

private:
    InstalledProgram m_program;
};

#endif
