// A process that talks to another one, for the tests. The first argument says what it does:
//   server NAME         an IPCServer that answers each message with the message; "quit" ends it
//   poor NAME COUNT LOG the same, with no more than COUNT descriptors, and with a log
//   client NAME         an IPCClient that sends one request and prints each envelope it receives
//   half PATH           connects to a socket file, sends half a frame and stays until it is killed
//   flood PATH COUNT    sends COUNT small frames, then ends
// It prints "ready" when the others may count on it.
#include "DataValue/datavalue.h"
#include "Ipc/ipcclient.h"
#include "Ipc/ipcserver.h"
#include "LogTask/clog.h"

#include <QCoreApplication>
#include <QLocalSocket>
#include <QLoggingCategory>

#include <cstdio>
#include <sys/resource.h>

namespace {

void print(const QString& line)
{
    std::puts(line.toUtf8().constData());
    std::fflush(stdout);
}

int serve(const QString& name)
{
    IPCServer server;
    QObject::connect(&server, &IPCServer::sigMessageReceived, &server,
                     [&](const QString& text, int id) {
                         if (text == "quit")
                             QCoreApplication::quit();
                         else
                             server.sendResponse(text, id);
                     });
    server.startListen(name);
    print("ready");
    return QCoreApplication::exec();
}

int serveWithFewDescriptors(const QString& name, rlim_t count, const QString& log)
{
    QLoggingCategory::setFilterRules("default.debug=false"); // the log's echo
    InitLog(log.toUtf8().constData());
    rlimit limit = {};
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = count;
    setrlimit(RLIMIT_NOFILE, &limit);
    const int result = serve(name);
    DestroyLog();
    return result;
}

int request(const QString& name)
{
    IPCClient client(name);
    QObject::connect(&client, &IPCClient::sigMessageReceived, &client, [](CDataValue* envelope) {
        print(envelope->parseToQString(FAST_STYLE).trimmed());
    });
    QObject::connect(&client, &IPCClient::sigIPCServerConnected, &client, [&] {
        const CDataValue number(QCoreApplication::applicationPid());
        client.messageSend("HELLO", &number, "ipcpeer");
        print("ready");
    });
    QObject::connect(&client, &IPCClient::sigIPCServerDisconnected, &client,
                     &QCoreApplication::quit);
    client.connectToServer();
    return QCoreApplication::exec();
}

int write(const QString& path, const QByteArray& bytes, bool stay)
{
    QLocalSocket socket;
    socket.connectToServer(path);
    if (!socket.waitForConnected())
        return 1;
    socket.write(bytes);
    while (socket.bytesToWrite() > 0) {
        if (!socket.waitForBytesWritten())
            return 2;
    }
    print("ready");
    return stay ? QCoreApplication::exec() : 0;
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const QString role = arguments.value(1);
    const QString name = arguments.value(2);
    if (role == "server")
        return serve(name);
    if (role == "poor")
        return serveWithFewDescriptors(name, arguments.value(3).toUInt(), arguments.value(4));
    if (role == "client")
        return request(name);
    if (role == "half")
        return write(name, "__BEGIN__{\"half\":", true);
    if (role == "flood")
        return write(name, QByteArray("__BEGIN__[1]__END__").repeated(arguments.value(3).toInt()),
                     false);
    return 3;
}
