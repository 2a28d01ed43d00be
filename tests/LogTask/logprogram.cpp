// Does with the log what its arguments say, one after the other; see `actions`. "name=value" gives
// the action a value.
#include "DataValue/datavalue.h"
#include "LogTask/clog.h"
#include "deviceservice_global.h"

#include <QCoreApplication>
#include <QFile>
#include <QStringList>

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

void say(const char* text)
{
    std::printf("%s\n", text);
    std::fflush(stdout);
}

// "code:text"
void logError(const std::string& value)
{
    const auto colon = value.find(':');
    LogErr(std::stoi(value.substr(0, colon)), "%s", value.c_str() + colon + 1);
}

void writeError(const std::string& value)
{
    const auto colon = value.find(':');
    CLog::Instance()->Write(std::stoi(value.substr(0, colon)), value.c_str() + colon + 1);
}

// The pieces "a,5,b"; a number is streamed as one.
void streamPieces(const std::string& value)
{
    CLogFile line;
    for (const QString& piece : QString::fromStdString(value).split(',')) {
        bool isNumber = false;
        const int number = piece.toInt(&isNumber);
        if (isNumber)
            line << number;
        else
            line << piece;
    }
}

// A text of `count` characters.
std::string repeated(const std::string& count)
{
    return std::string(std::stoul(count), 'x');
}

void waitWritten(const std::string&)
{
    say(CLog::Instance()->WaitWritten(30000) ? "written" : "not written");
}

// A line with a value of `value` characters and nine more, which surround them.
void logContent(const std::string& value)
{
    DeviceService_Global* const data = DeviceService_Global::instance();
    CDataValue content(repeated(value).c_str());
    data->setGlobalDataByKey("k", content);
    data->getDeviceIDByDeviceName("none");
}

void logMany(const std::string& value)
{
    for (int i = 0; i < std::stoi(value); ++i)
        CLogFile() << "line" << i;
}

// As an application does it: the crash goes its way afterwards.
void installCrashHandler(const std::string&)
{
    const auto handler = [](int number) {
        FlushLogInCrash();
        std::signal(number, SIG_DFL);
        std::raise(number);
    };
    std::signal(SIGSEGV, handler);
    std::signal(SIGABRT, handler);
}

// Threads that log until the process ends.
void startStorm(const std::string& value)
{
    for (int i = 0; i < std::stoi(value); ++i) {
        std::thread([i] {
            for (int line = 0;; ++line)
                CLogFile() << "storm" << i << line << "end";
        }).detach();
    }
}

void runChild(const std::string& value);

using Action = std::function<void(const std::string&)>;

const std::map<std::string, Action>& actions()
{
    static const std::map<std::string, Action> all = {
        {"init", [](const std::string&) { say(InitLog(nullptr) ? "on" : "off"); }},
        {"initpath", [](const std::string& v) { say(InitLog(v.c_str()) ? "on" : "off"); }},
        {"state", [](const std::string&) { say(g_bLog ? "on" : "off"); }},
        {"say", [](const std::string& v) { say(v.c_str()); }},
        {"log", [](const std::string& v) { Log("%s", v.c_str()); }},
        {"logmixed", [](const std::string&) { Log("%s, %d of %05.1f%%", "five", 3, 2.25); }},
        {"lognothing", [](const std::string&) { CLog::Instance()->Write(nullptr); }},
        {"err", logError},
        {"write", [](const std::string& v) { CLog::Instance()->Write(v.c_str()); }},
        {"writeerr", writeError},
        {"debug", [](const std::string& v) { LogDebug("%s", v.c_str()); }},
        {"repeat", [](const std::string& v) { Log("%s", repeated(v).c_str()); }},
        {"repeaterr", [](const std::string& v) { LogErr(1, "%s", repeated(v).c_str()); }},
        {"repeatdebug", [](const std::string& v) { LogDebug("%s", repeated(v).c_str()); }},
        {"stream", streamPieces},
        {"number", [](const std::string& v) { *CLog::Instance() << std::stoi(v); }},
        {"bytes", [](const std::string& v) { *CLog::Instance() << v.c_str(); }},
        {"text", [](const std::string& v) { *CLog::Instance() << QString::fromStdString(v); }},
        {"many", logMany},
        {"content", logContent},
        {"flush", [](const std::string&) { FlushLog(); }},
        {"written", waitWritten},
        {"remove", [](const std::string& v) { QFile::remove(QString::fromStdString(v)); }},
        {"wait", [](const std::string&) { (void)std::getchar(); }},
        {"crashhandler", installCrashHandler},
        {"abort", [](const std::string&) { std::abort(); }},
        {"segv", [](const std::string&) { std::raise(SIGSEGV); }},
        {"storm", startStorm},
        {"child", runChild},
        {"destroy", [](const std::string&) { DestroyLog(); }},
        {"kill", [](const std::string&) { std::raise(SIGKILL); }},
    };
    return all;
}

// A child process that does what stands between the commas, and ends. Says how it ended.
void runChild(const std::string& value)
{
    const pid_t child = fork();
    if (child == 0) {
        alarm(60);
        for (const QString& step : QString::fromStdString(value).split(',')) {
            const std::string name = step.section('=', 0, 0).toStdString();
            actions().at(name)(step.section('=', 1).toStdString());
        }
        std::exit(5);
    }
    int status = 0;
    waitpid(child, &status, 0);
    say(WIFEXITED(status) && WEXITSTATUS(status) == 5 ? "child ended" : "child crashed");
}

// What its destructor does happens after main(), when Qt has taken down its globals: those are
// made later than this one.
class AtEnd
{
public:
    ~AtEnd()
    {
        for (const auto& [action, value] : m_actions)
            action(value);
    }
    void add(const Action& action, const std::string& value)
    {
        m_actions.emplace_back(action, value);
    }

private:
    std::vector<std::pair<Action, std::string>> m_actions;
};

AtEnd atEnd;

} // namespace

int main(int argc, char* argv[])
{
    std::unique_ptr<QCoreApplication> application;
    std::unique_ptr<CLogFile> begunEarly;
    bool isAtEnd = false;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        const auto equals = argument.find('=');
        const std::string name = argument.substr(0, equals);
        const std::string value = equals == std::string::npos ? "" : argument.substr(equals + 1);
        if (name == "app") {
            application = std::make_unique<QCoreApplication>(argc, argv);
        } else if (name == "noapp") {
            application.reset();
        } else if (name == "begin") {
            begunEarly = std::make_unique<CLogFile>();
            *begunEarly << "early";
        } else if (name == "end") {
            *begunEarly << value.c_str();
            begunEarly.reset();
        } else if (name == "atend") { // from here on
            isAtEnd = true;
        } else if (isAtEnd) {
            atEnd.add(actions().at(name), value);
        } else if (actions().count(name)) {
            actions().at(name)(value);
        } else {
            std::fprintf(stderr, "unknown action %s\n", name.c_str());
            return 2;
        }
    }
    return 0;
}
