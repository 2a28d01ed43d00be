#ifndef DEMO_PROCESS_H
#define DEMO_PROCESS_H

#include <QString>

/// What every process of the demo does first and last:
///
///     int main(int argc, char* argv[])
///     {
///         QCoreApplication application(argc, argv);
///         const ProcessLife life(logFile);
///         ...
///         return application.exec();
///     }
///
/// The constructor starts the log and reads the user's configuration. The destructor releases the
/// library's singletons and ends the log, after everything that was made below it in main() is
/// gone. Until then, an interrupt from the keyboard (SIGINT) or a plain `kill` (SIGTERM) ends the
/// event loop with exit code 0.
class ProcessLife
{
public:
    /// `logFile`: path of the log file. Empty: "Log/" beside the executable.
    explicit ProcessLife(const QString& logFile);
    ~ProcessLife();
    ProcessLife(const ProcessLife&) = delete;
    ProcessLife& operator=(const ProcessLife&) = delete;
};

#endif
