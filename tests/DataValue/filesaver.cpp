// Saves a value to a file and says "saved" or "failed": a process that can be limited or killed.
//
//     filesaver <path> <text>              one save of a map with that text
//     filesaver --limit <path> <text>      no file may grow beyond 4096 bytes, as on a full disk
//     filesaver --nobody <path> <text>     without the rights of the superuser
//     filesaver --forever <path> <text>    saves again and again; says "saving" once it has begun
//     filesaver --address <path> <text>    the map holds an address
#include "DataValue/datavalue.h"

#include <csignal>
#include <cstdio>
#include <cstring>

#include <sys/resource.h>
#include <unistd.h>

namespace {

bool prepare(const char* how)
{
    if (std::strcmp(how, "--limit") == 0) {
        const rlimit limit{4096, 4096};
        std::signal(SIGXFSZ, SIG_IGN);
        return setrlimit(RLIMIT_FSIZE, &limit) == 0;
    }
    if (std::strcmp(how, "--nobody") == 0 && geteuid() == 0)
        return setgid(65534) == 0 && setuid(65534) == 0;
    return true;
}

} // namespace

int main(int argc, char* argv[])
{
    const char* const how = argc == 4 ? argv[1] : "";
    if (argc < 3 || !prepare(how))
        return 2;
    CDataValue value(MAP_VALUE);
    value.mapSet("text", CDataValue(argv[argc - 1]), true);
    if (std::strcmp(how, "--address") == 0) {
        value = CDataValue(ADDRESS_MAP_VALUE);
        value.addressMapSet("text", CDataValue(static_cast<const void*>(argv)));
    }
    const QString path = QString::fromLocal8Bit(argv[argc - 2]);
    const bool saved = value.saveFileAs(path);
    std::puts(saved ? "saved" : "failed");
    if (std::strcmp(how, "--forever") == 0) {
        // More than one write call's worth, so that a kill can meet it in the middle.
        const QString filler(2000000, QLatin1Char('x'));
        value.mapSet("filler", CDataValue(filler), true);
        std::puts("saving");
        std::fflush(stdout);
        while (value.saveFileAs(path)) {
        }
    }
    return saved ? 0 : 1;
}
