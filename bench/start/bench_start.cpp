// What the start of a process costs in processor time, against a Qt process that does nothing.
// The two are started in turn, so that both see the same machine.

#include "support/installedconfig.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QProcess>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

namespace {

constexpr char kPerso[] = R"({"Module Names":{"SYSTEM MODULE":{"IsAvailable":true,"Plugins":[]}}})";

// Ten settings, as a user's configuration may have them. Every start reads them.
constexpr char kSystem[] = R"(<?xml version="1.0" encoding="utf-8" ?>
<DictValue>
    <key>AutoConnect</key>
    <BooleanValue>false</BooleanValue>
    <key>General</key>
    <DictValue>
        <key>Language</key>
        <StringValue>en</StringValue>
        <key>CurrentSkin</key>
        <StringValue>Default</StringValue>
        <key>StartMinimised</key>
        <BooleanValue>false</BooleanValue>
        <key>WindowX</key>
        <IntValue>120</IntValue>
        <key>WindowY</key>
        <IntValue>80</IntValue>
    </DictValue>
    <key>Sms</key>
    <DictValue>
        <key>PlayAlert</key>
        <BooleanValue>true</BooleanValue>
        <key>SoundFile</key>
        <StringValue>/usr/share/sounds/message.wav</StringValue>
        <key>Validity</key>
        <IntValue>255</IntValue>
        <key>StatusReport</key>
        <BooleanValue>false</BooleanValue>
    </DictValue>
</DictValue>
)";

// The defaults behind them.
constexpr char kSystemModule[] = R"(<?xml version="1.0" encoding="utf-8" ?>
<DictValue>
    <key>ConfigData</key>
    <DictValue>
        <key>General</key>
        <DictValue>
            <key>AutoConnect</key>
            <BooleanValue>true</BooleanValue>
        </DictValue>
    </DictValue>
</DictValue>
)";

double milliseconds(const timeval& time)
{
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
}

/// User and system time of one run, in milliseconds.
double processorTime(const QString& program)
{
    QByteArray path = QFile::encodeName(program);
    char* arguments[] = {path.data(), nullptr};
    pid_t child = 0;
    int status = -1;
    rusage usage{};
    if (posix_spawn(&child, path.constData(), nullptr, nullptr, arguments, environ) != 0 ||
        wait4(child, &status, 0, &usage) != child || status != 0) {
        std::fprintf(stderr, "%s did not end well: %d\n", path.constData(), status);
        std::exit(1);
    }
    return milliseconds(usage.ru_utime) + milliseconds(usage.ru_stime);
}

struct Program
{
    const char* name;
    QString path;
    std::vector<double> times;

    /// The value below which `part` of the runs lie.
    double quantile(double part) const
    {
        std::vector<double> sorted = times;
        std::sort(sorted.begin(), sorted.end());
        return sorted[static_cast<std::size_t>(part * static_cast<double>(sorted.size() - 1))];
    }
};

/// Runs the programs in turn, so that each meets the machine as the others do.
template<std::size_t N>
void measure(Program (&programs)[N], int runs)
{
    for (int run = -3; run < runs; ++run) {
        for (Program& program : programs) {
            const double time = processorTime(program.path);
            if (run >= 0) // the first runs only fill the caches
                program.times.push_back(time);
        }
    }
}

void print(const Program& program, const Program& reference)
{
    std::printf("| %s | %.2f | %.2f to %.2f | %.2f |\n", program.name, program.quantile(0.5),
                program.quantile(0.25), program.quantile(0.75),
                program.quantile(0.5) / reference.quantile(0.5));
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const int runs = argc > 1 ? std::max(1, std::atoi(argv[1])) : 200;
    // The socket lies in the folder for temporary files.
    const QTemporaryDir sockets;
    qputenv("TMPDIR", QFile::encodeName(sockets.path()));

    const InstalledConfig installed(PROGRAM_STARTPROCESS);
    installed.add("Resources/Data/LogFile.ini", "[SETTING]\nDEBUG=false\n");
    installed.addPerso(kPerso);
    installed.addModule("SYSTEM MODULE", kSystemModule);
    installed.add("Resources/UserData/System.xml", kSystem);
    QProcess controller;
    controller.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    controller.start(PROGRAM_STARTCONTROLLER, QStringList());
    if (!controller.waitForReadyRead()) {
        std::fprintf(stderr, "the controller did not start\n");
        return 1;
    }

    Program programs[] = {
        {"QCoreApplication only", PROGRAM_STARTEMPTY, {}},
        {"QCoreApplication, linked with Qt Network", PROGRAM_STARTNETWORK, {}},
        {"QCoreApplication, linked with the library", PROGRAM_STARTLINKED, {}},
        {"log, configuration, introduction accepted", installed.path("bin/program"), {}},
    };
    measure(programs, runs);
    std::printf("| %d runs, processor time in ms | median | half of the runs | ratio |\n"
                "|---|---|---|---|\n",
                runs);
    for (const Program& program : programs)
        print(program, programs[0]);
    controller.closeWriteChannel();
    controller.waitForFinished();
    return 0;
}
