#include "support/childprocess.h"

#include <QLocalSocket>
#include <QTemporaryDir>

class tst_minimal : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void greets();
    void failsWithoutAServer();
};

void tst_minimal::greets()
{
    const QTemporaryDir folder;
    const ChildProcess server(HELPER_MINIMALSERVER, {}, folder.path());
    // The server says nothing: it is ready when somebody can connect.
    QTRY_VERIFY_WITH_TIMEOUT(
        [&folder] {
            QLocalSocket socket;
            socket.connectToServer(folder.filePath("greeter"));
            return socket.waitForConnected(1000);
        }(),
        30000);
    ChildProcess client(HELPER_MINIMALCLIENT, {}, folder.path());
    QCOMPARE(client.exitCode(), 0);
    QCOMPARE(client.output(), QByteArray("Hello, world\n"));
}

void tst_minimal::failsWithoutAServer()
{
    const QTemporaryDir folder;
    ChildProcess client(HELPER_MINIMALCLIENT, {}, folder.path());
    QCOMPARE(client.exitCode(), 1);
    QCOMPARE(client.output(), QByteArray());
}

QTEST_GUILESS_MAIN(tst_minimal)
#include "tst_minimal.moc"
