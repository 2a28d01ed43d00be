// Another user, who tries to come between the instances of an application. Arguments: the number of
// the user to become, and:
//     lock FILE       keeps a lock on the file, which it makes, says "ready"
//     listen SOCKET   listens, says "ready", and for each connection how many bytes it was handed
//     send SOCKET     sends a message, and says "answered" or "refused"
// It ends with its input.

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

void say(const char* text)
{
    std::puts(text);
    std::fflush(stdout);
}

sockaddr_un addressOf(const char* path)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path, sizeof address.sun_path - 1);
    return address;
}

bool lock(const char* path)
{
    const int file = open(path, O_RDWR | O_CREAT, 0666);
    return file >= 0 && fchmod(file, 0666) == 0 && flock(file, LOCK_EX | LOCK_NB) == 0;
}

int listenOn(const char* path)
{
    const sockaddr_un address = addressOf(path);
    const int server = socket(AF_UNIX, SOCK_STREAM, 0);
    if (bind(server, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        chmod(path, 0777) != 0 || listen(server, 5) != 0)
        return -1;
    return server;
}

void serveOne(int server)
{
    const int client = accept(server, nullptr, nullptr);
    char buffer[256];
    int handed = 0;
    for (ssize_t count = 1; count > 0; handed += static_cast<int>(count))
        count = read(client, buffer, sizeof buffer);
    close(client);
    std::printf("handed %d\n", handed);
    std::fflush(stdout);
}

void send(const char* path)
{
    const sockaddr_un address = addressOf(path);
    const int client = socket(AF_UNIX, SOCK_STREAM, 0);
    char answer = 0;
    const bool isAnswered =
        connect(client, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
        ::send(client, "\0\0\0\5hello", 9, MSG_NOSIGNAL) == 9 && read(client, &answer, 1) == 1;
    say(isAnswered ? "answered" : "refused");
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 4 || setuid(static_cast<uid_t>(std::atol(argv[1]))) != 0)
        return 2;
    const bool listens = std::strcmp(argv[2], "listen") == 0;
    const int server = listens ? listenOn(argv[3]) : -1;
    if (std::strcmp(argv[2], "send") == 0)
        send(argv[3]);
    else
        say((listens ? server >= 0 : lock(argv[3])) ? "ready" : "failed");
    for (;;) {
        pollfd waits[] = {{STDIN_FILENO, POLLIN, 0}, {server, POLLIN, 0}};
        poll(waits, 2, -1);
        if (waits[0].revents != 0)
            return 0;
        if (waits[1].revents != 0)
            serveOne(server);
    }
}
