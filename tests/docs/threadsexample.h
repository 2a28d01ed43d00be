#ifndef TESTS_THREADSEXAMPLE_H
#define TESTS_THREADSEXAMPLE_H

#include <QStringList>

class IPCClient;
class QCoreApplication;

// The examples of docs/threads-and-ownership.md, for the test to run.

/// Posts the language and changes it afterwards; returns what the module has kept.
QString languageKept(const QString& language);
/// Sends a request through a client that is not connected; returns the identifiers and error codes
/// that came back inside the call.
QStringList repliesInsideThePost();
/// Reports from another thread; returns what the receiver saw, and in which thread.
QStringList reportsOfAWorker();
void logFromWorker();
int run(QCoreApplication& app, const char* logFile);

#endif
