#ifndef DEMO_COMMANDLINE_H
#define DEMO_COMMANDLINE_H

#include <QCommandLineParser>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

/// The command line of a program: its own options, "--help", "--version", and one answer to
/// everything that is wrong.
///
///     CommandLine line("Device service.", {{"retry", "Try again after MS.", "MS", "2000"}},
///                      argc, argv);
///     const int retry = line.number("retry", 1, 60000);
///     QCoreApplication application(argc, argv);
///     if (const auto status = line.exitStatus())
///         return *status;
///
/// The values can be read before there is an application object, which may need one of them.
class CommandLine
{
public:
    CommandLine(const char* description, const QList<QCommandLineOption>& options, int argc,
                char** argv);

    bool isSet(const char* option) const { return m_parser.isSet(QLatin1String(option)); }
    QString value(const char* option) const { return m_parser.value(QLatin1String(option)); }
    QStringList values(const char* option) const { return m_parser.values(QLatin1String(option)); }
    /// The value as a number from `least` to `most`. Anything else is wrong; the result is `least`
    /// then.
    int number(const char* option, int least, int most);

    /// Says what is wrong with the command line; the first reason counts.
    void refuse(const QString& reason);

    /// Prints the help or the version to standard output, or what is wrong to the error output, and
    /// returns the status with which the program is to end at once; nothing when it is to go on.
    /// Needs the application object.
    std::optional<int> exitStatus() const;

private:
    QCommandLineParser m_parser;
    QString m_refusal;
};

#endif
