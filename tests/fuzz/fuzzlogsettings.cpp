// Settings files of the log: what does not convert leaves the default.

#include "fuzztarget.h"

#include "LogTask/logsettings_p.h"
#include "support/testfile.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const QString path = temporaryPath("LogFile.ini");
    static const QString log = temporaryPath("log");
    TestFile::write(path, bytesOf(data, size));
    const LogSettings settings = readLogSettings(path, log, QDate(2026, 1, 2));
    require(settings.timer >= 1, "the timer has a time");
    require(!settings.valid || settings.file.startsWith(log), "the file is the one that was given");
    return 0;
}
