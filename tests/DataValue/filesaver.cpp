// Saves a value to a file and says "saved" or "failed": a process that can be limited or killed.
//
//     filesaver <path> <text>              one save of a map with that text
//     filesaver --full <path> <text>       the disk is full after 4096 bytes
//     filesaver --limit <path> <text>      the process may make no file larger than 4096 bytes
//     filesaver --nobody <path> <text>     without the rights of the superuser
//     filesaver --forever <path> <text>    saves again and again; says "saving" once it has begun
//     filesaver --address <path> <text>    the map holds an address
#include "DataValue/datavalue.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr std::size_t kFewBytes = 4096;
bool g_isDiskLimited = false;
std::size_t g_left = kFewBytes;

bool isRegular(int descriptor)
{
    struct stat status = {};
    return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

bool prepare(const char* how)
{
    g_isDiskLimited = std::strcmp(how, "--full") == 0;
    if (std::strcmp(how, "--limit") == 0) {
        const rlimit limit{kFewBytes, kFewBytes};
        return setrlimit(RLIMIT_FSIZE, &limit) == 0;
    }
    if (std::strcmp(how, "--nobody") == 0 && geteuid() == 0)
        return setgid(65534) == 0 && setuid(65534) == 0;
    return true;
}

} // namespace

/// Takes the place of the system's write() in this process, the library's and Qt's calls included:
/// like that of a full disk, it takes part of the bytes, and then none.
extern "C" __attribute__((visibility("default"))) ssize_t write(int descriptor, const void* bytes,
                                                                size_t size)
{
    if (g_isDiskLimited && isRegular(descriptor)) {
        if (g_left == 0) {
            errno = ENOSPC;
            return -1;
        }
        size = std::min(size, g_left);
        g_left -= size;
    }
    return syscall(SYS_write, descriptor, bytes, size);
}

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
