#ifndef TESTS_IPC_IPCFIXTURE_H
#define TESTS_IPC_IPCFIXTURE_H

#include "Ipc/ipcserver.h"

#include <QLocalServer>
#include <QString>
#include <QUuid>

/// A server name that nobody else uses.
inline QString randomServerName()
{
    return "wzr-test-" + QUuid::createUuid().toString(QUuid::Id128).left(16);
}

/// The path of the socket file of a listening server.
inline QString socketPath(const IPCServer& server)
{
    const auto* listener = server.findChild<QLocalServer*>();
    return listener ? listener->fullServerName() : QString();
}

inline QString framed(const QString& text)
{
    return "__BEGIN__" + text + "__END__";
}

#endif
