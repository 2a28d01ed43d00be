#include "common/commandline.h"

#include "common/console.h"
#include "common/exitstatus.h"

#include <QCoreApplication>

#include <clocale>

namespace {

constexpr char kHelp[] = "help";
constexpr char kVersion[] = "version";

QStringList decoded(int argc, char** argv)
{
    // As the application object does later: the arguments are in the user's encoding.
    std::setlocale(LC_ALL, "");
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    return arguments;
}

} // namespace

CommandLine::CommandLine(const char* description, const QList<QCommandLineOption>& options,
                         int argc, char** argv)
{
    m_parser.setApplicationDescription(QLatin1String(description));
    m_parser.addOption(
        {{QStringLiteral("h"), QLatin1String(kHelp)}, QStringLiteral("Print this text.")});
    m_parser.addOption(
        {{QStringLiteral("v"), QLatin1String(kVersion)}, QStringLiteral("Print the version.")});
    m_parser.addOptions(options);
    if (!m_parser.parse(decoded(argc, argv)))
        refuse(m_parser.errorText());
    else if (!m_parser.positionalArguments().isEmpty())
        refuse(QStringLiteral("Unexpected argument '%1'.")
                   .arg(m_parser.positionalArguments().constFirst()));
}

int CommandLine::number(const char* option, int least, int most)
{
    bool isNumber = false;
    const int number = value(option).toInt(&isNumber);
    if (isNumber && number >= least && number <= most)
        return number;
    refuse(QStringLiteral("--%1 takes a number from %2 to %3.")
               .arg(QLatin1String(option))
               .arg(least)
               .arg(most));
    return least;
}

void CommandLine::refuse(const QString& reason)
{
    if (m_refusal.isEmpty())
        m_refusal = reason;
}

std::optional<int> CommandLine::exitStatus() const
{
    if (isSet(kHelp)) {
        Console::say(m_parser.helpText().trimmed());
        return Console::exitStatus(ExitStatus::Done);
    }
    if (isSet(kVersion)) {
        Console::say(QCoreApplication::applicationName() + QLatin1String(" " WZR_VERSION));
        return Console::exitStatus(ExitStatus::Done);
    }
    if (m_refusal.isEmpty())
        return std::nullopt;
    Console::complain(m_refusal + QLatin1String(" See --help."));
    return ExitStatus::WrongUsage;
}
