// Starts a program that runs for long, says its process id, and waits for its own end.

#include "support/childprocess.h"

#include <QCoreApplication>

#include <cstdio>

#include <unistd.h>

int main(int argc, char** argv)
{
    const QCoreApplication app(argc, argv);
    const ChildProcess child(QStringLiteral("sleep"), {QStringLiteral("1000")});
    std::printf("%lld\n", static_cast<long long>(child.processId()));
    std::fflush(stdout);
    pause();
    return 0;
}
