// How long what belongs to a connection lives: the departed are kept for their time, in portions
// that hold up nobody, and whoever is in use stays.
#include "Ipc/ipcconnection_p.h"

#include <QPointer>
#include <QtTest>

#include <ctime>
#include <memory>

namespace {

std::shared_ptr<IPCConnection> connection()
{
    auto made = std::make_shared<IPCConnection>("<", ">");
    made->socket = std::make_unique<QLocalSocket>();
    return made;
}

qint64 threadMicroseconds()
{
    timespec used = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
    return qint64(used.tv_sec) * 1000000 + used.tv_nsec / 1000;
}

} // namespace

class tst_ipcconnection : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void keepsTheDepartedForTwoSeconds();
    void deletesTheDepartedWhenTheirTimeIsOver();
    void deletesManyInPortions();
    void keepsWhatIsInUse();
    void deletesAtOnceWhatNobodyUses();
    void cutsTheSignalsOfWhatIsStillInUse();
    void tellsWhenOnlyTheOwnerIsLeft();
};

void tst_ipcconnection::keepsTheDepartedForTwoSeconds()
{
    QCOMPARE(DepartedConnections().property("lingerMs").toInt(), 2000);
}

void tst_ipcconnection::deletesTheDepartedWhenTheirTimeIsOver()
{
    DepartedConnections departed;
    QElapsedTimer clock;
    clock.start();
    departed.setProperty("lingerMs", 50);
    auto first = connection();
    const QPointer<QLocalSocket> firstSocket = first->socket.get();
    departed.add(std::move(first));
    departed.setProperty("lingerMs", 150);
    auto second = connection();
    const QPointer<QLocalSocket> secondSocket = second->socket.get();
    departed.add(std::move(second));
    QTRY_VERIFY(!firstSocket);
    QVERIFY(clock.elapsed() >= 50);
    QTRY_VERIFY(!secondSocket);
    QVERIFY(clock.elapsed() >= 150);
}

// The longest time that others wait for their turn, in processor time: that of a loaded machine
// would say nothing.
void tst_ipcconnection::deletesManyInPortions()
{
    DepartedConnections departed;
    departed.setProperty("lingerMs", 0);
    for (int i = 0; i < 40000; ++i)
        departed.add(connection());
    auto last = connection();
    const QPointer<QLocalSocket> lastSocket = last->socket.get();
    departed.add(std::move(last));
    qint64 longest = 0;
    int turns = 0;
    while (lastSocket) {
        const qint64 before = threadMicroseconds();
        QCoreApplication::processEvents();
        longest = qMax(longest, threadMicroseconds() - before);
        ++turns;
    }
    QVERIFY2(longest < 50000, qPrintable(QString::number(longest)));
    QVERIFY(turns > 1);
}

void tst_ipcconnection::keepsWhatIsInUse()
{
    DepartedConnections departed;
    departed.setProperty("lingerMs", 0);
    auto used = connection();
    const QPointer<QLocalSocket> usedSocket = used->socket.get();
    auto other = connection();
    const QPointer<QLocalSocket> otherSocket = other->socket.get();
    {
        const IPCConnectionUse use(*used);
        const IPCConnectionUse further(*used);
        departed.add(std::move(used));
        departed.add(std::move(other));
        QTRY_VERIFY(!otherSocket); // behind it in the queue
        QVERIFY(usedSocket);
    }
    QVERIFY(usedSocket); // code of the socket may still be what called
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!usedSocket);
}

void tst_ipcconnection::deletesAtOnceWhatNobodyUses()
{
    auto unused = connection();
    const QPointer<QLocalSocket> socket = unused->socket.get();
    unused.reset();
    QVERIFY(!socket);
}

void tst_ipcconnection::cutsTheSignalsOfWhatIsStillInUse()
{
    int called = 0;
    auto used = connection();
    QLocalSocket* const socket = used->socket.get();
    used->links.add(connect(socket, &QLocalSocket::readyRead, this, [&] { ++called; }));
    Q_EMIT socket->readyRead();
    QCOMPARE(called, 1);
    {
        const IPCConnectionUse use(*used);
        used->leaveOwner();
        Q_EMIT socket->readyRead();
        used.reset();
    }
    Q_EMIT socket->readyRead(); // it waits for its deletion
    QCOMPARE(called, 1);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void tst_ipcconnection::tellsWhenOnlyTheOwnerIsLeft()
{
    const auto used = connection();
    int called = 0;
    {
        const IPCConnectionUse use(*used);
        used->whenUnused = [&] { ++called; };
        {
            const IPCConnectionUse further(*used);
        }
        QCOMPARE(called, 0);
    }
    QCOMPARE(called, 1);
    {
        const IPCConnectionUse use(*used);
    }
    QCOMPARE(called, 1);
}

QTEST_GUILESS_MAIN(tst_ipcconnection)
#include "tst_ipcconnection.moc"
