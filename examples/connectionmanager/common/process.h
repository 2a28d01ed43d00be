#ifndef DEMO_PROCESS_H
#define DEMO_PROCESS_H

#include <QString>

class QtSingleCoreApplication;

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
/// The constructor starts the log, which shows no PIN, and reads the user's configuration. The
/// destructor releases the library's singletons and ends the log, after everything that was made
/// below it in main() is gone. Until then, an interrupt from the keyboard (SIGINT) or a plain
/// `kill` (SIGTERM) ends the event loop with exit code 0.
class ProcessLife
{
public:
    /// `logFile`: path of the log file. Empty: "Log/" beside the executable.
    explicit ProcessLife(const QString& logFile);
    ~ProcessLife();
    ProcessLife(const ProcessLife&) = delete;
    ProcessLife& operator=(const ProcessLife&) = delete;
};

/// The id of the process that serves the local socket of that name. It is the socket's path, so
/// that sets of processes with folders for temporary files of their own do not disturb each other.
QString instanceID(const QString& socketName);

/// Whether another process has this one's id and is running; says so on the error output and in
/// the log. To be asked before anything is served: a second server takes the name over.
bool isTaken(QtSingleCoreApplication& application);

#endif
