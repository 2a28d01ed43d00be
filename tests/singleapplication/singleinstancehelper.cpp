// An instance of a single-instance application. Arguments: the id, and a message for the instance
// that may be running. It waits for a line of input, so that a test can let several go at once, and
// says what became of it: "sent", "failed" (there is one, but it did not take the message), or
// "first" when it is the one. The first says "received <message>" for each message, until it
// receives "quit" or is ended; with the message "sleep" it never enters its event loop.

#include "qtsinglecoreapplication.h"

#include <cstdio>
#include <iostream>
#include <string>

#include <unistd.h>

namespace {

void say(const QString& text)
{
    std::puts(qUtf8Printable(text));
    std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv)
{
    const QString id = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QString();
    QtSingleCoreApplication app(id, argc, argv);
    const QString message = app.arguments().value(2);
    const int timeout = app.arguments().value(3, QStringLiteral("20000")).toInt();
    std::string line;
    std::getline(std::cin, line);

    if (app.sendMessage(message, timeout)) {
        say(QStringLiteral("sent"));
        return 0;
    }
    if (app.isRunning()) {
        say(QStringLiteral("failed"));
        return 1;
    }
    QObject::connect(&app, &QtSingleCoreApplication::messageReceived, &app,
                     [&app](const QString& text) {
                         say(QStringLiteral("received ") + text);
                         if (text == QLatin1String("quit"))
                             app.quit();
                     });
    say(QStringLiteral("first"));
    if (message == QLatin1String("sleep"))
        pause();
    return app.exec();
}
