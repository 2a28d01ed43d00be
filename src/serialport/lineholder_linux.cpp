#include "serialport/lineholder_p.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <string>

#include <dirent.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace {

using Folder = std::unique_ptr<DIR, int (*)(DIR*)>;

Folder openFolder(const std::string& path)
{
    return {opendir(path.c_str()), closedir};
}

// A line of /proc/locks, with the device in hexadecimal digits and the inode in decimal ones:
//     1: FLOCK  ADVISORY  WRITE 26968 00:1a:3 0 EOF
// A process outside the own process namespace has the id 0 or none.
std::int64_t holderOfLock(const struct stat& node)
{
    std::ifstream locks("/proc/locks");
    for (std::string line; std::getline(locks, line);) {
        long long process = 0;
        unsigned major = 0;
        unsigned minor = 0;
        unsigned long long inode = 0;
        if (std::sscanf(line.c_str(), "%*s FLOCK %*s %*s %lld %x:%x:%llu", &process, &major, &minor,
                        &inode) == 4 &&
            process > 0 && makedev(major, minor) == node.st_dev && inode == node.st_ino)
            return process;
    }
    return 0;
}

// Files elsewhere than among the devices are not looked at: asking for one on a network can block.
bool isDevice(const std::string& descriptor, const struct stat& node)
{
    char target[6] = {};
    struct stat file = {};
    return readlink(descriptor.c_str(), target, sizeof target - 1) > 0 &&
           std::strcmp(target, "/dev/") == 0 && stat(descriptor.c_str(), &file) == 0 &&
           S_ISCHR(file.st_mode) && file.st_rdev == node.st_rdev;
}

bool hasOpen(const std::string& process, const struct stat& node)
{
    const std::string path = "/proc/" + process + "/fd/";
    const Folder folder = openFolder(path);
    if (!folder)
        return false;
    while (const dirent* const entry = readdir(folder.get())) {
        if (isDevice(path + entry->d_name, node))
            return true;
    }
    return false;
}

// Among the processes whose files the system shows: those of the same user, to root all.
std::int64_t holderOfOpenFile(const struct stat& node)
{
    const Folder folder = openFolder("/proc");
    if (!folder)
        return 0;
    while (const dirent* const entry = readdir(folder.get())) {
        const std::int64_t process = std::strtoll(entry->d_name, nullptr, 10);
        if (process > 0 && process != getpid() && hasOpen(entry->d_name, node))
            return process;
    }
    return 0;
}

} // namespace

std::int64_t lineHolder(const char* path)
{
    struct stat node = {};
    if (stat(path, &node) != 0)
        return 0;
    const std::int64_t process = holderOfLock(node);
    return process == 0 && S_ISCHR(node.st_mode) ? holderOfOpenFile(node) : process;
}
