#ifndef DEMO_EXITSTATUS_H
#define DEMO_EXITSTATUS_H

/// How the programs of the demo end.
namespace ExitStatus {

enum Code {
    Done = 0,
    Failed = 1,        ///< refused, or the output could not be written
    WrongUsage = 2,    ///< an option, or a file that an option names, cannot be used
    NoAnswer = 3,      ///< no answer in time
    AlreadyRunning = 4 ///< another process serves the same name
};

} // namespace ExitStatus

#endif
