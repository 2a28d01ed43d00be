#ifndef TESTS_SINGLEAPPLICATION_INSTANCEPROCESS_H
#define TESTS_SINGLEAPPLICATION_INSTANCEPROCESS_H

#include "support/childprocess.h"

/// A started helper, ended with the object at the latest. It waits for go().
class InstanceProcess : public ChildProcess
{
public:
    InstanceProcess(const QString& id, const QString& message, int timeout = 20000)
        : ChildProcess(HELPER_SINGLEINSTANCEHELPER, {id, message, QString::number(timeout)})
    {
    }

    void go() { enter(QByteArray()); }

    /// The next line that it says; null when none comes.
    QString nextLine() { return QString::fromUtf8(lineWith(QByteArray())).trimmed(); }

    /// What it says first once it may go.
    QString outcome()
    {
        go();
        return nextLine();
    }

    /// Ends it without a chance to clean up.
    void crash() { kill(); }
};

#endif
