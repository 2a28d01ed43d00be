// Another opener of a serial line. Arguments: the device node, "shared" or "exclusive", and the
// number of the user to become, if any. It does what it reads, a word a line: "open" says "opened",
// or "failed <errno> <holder>"; "close" says "closed"; the end of its input ends it.

#include "serialport/serialport.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include <sys/prctl.h>
#include <unistd.h>

namespace {

void open(CSerialPort* port, const char* path)
{
    if (port->open(path))
        std::puts("opened");
    else
        std::printf("failed %d %lld\n", port->lastError(), static_cast<long long>(port->holder()));
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 3 || (argc > 3 && setuid(static_cast<uid_t>(std::atol(argv[3]))) != 0))
        return 2;
    prctl(PR_SET_DUMPABLE, 1); // its files are shown to its user, as those of any program
    const std::unique_ptr<CSerialPort> port(CSerialPort::CreateObject());
    if (!port->setExclusive(std::strcmp(argv[2], "exclusive") == 0))
        return 3;
    char word[16];
    while (std::scanf("%15s", word) == 1) {
        if (std::strcmp(word, "open") == 0) {
            open(port.get(), argv[1]);
        } else {
            port->close();
            std::puts("closed");
        }
        std::fflush(stdout);
    }
    return 0;
}
