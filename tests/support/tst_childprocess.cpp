#include "support/childprocess.h"

#include <QFile>
#include <QTest>

namespace {

// Whether the process is there and not merely waiting to be noticed as ended.
bool isAlive(const QByteArray& processId)
{
    QFile file("/proc/" + QString::fromLatin1(processId) + "/stat");
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QByteArray status = file.readAll();
    return !status.mid(status.lastIndexOf(')')).startsWith(") Z");
}

} // namespace

class tst_childprocess : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void endsWithAParentThatIsKilled()
    {
        ChildProcess parent(HELPER_PROCESSPARENT, {});
        const QByteArray child = parent.lineWith(QByteArray());
        QVERIFY(isAlive(child));
        parent.kill();
        QTRY_VERIFY(!isAlive(child));
    }
};

QTEST_GUILESS_MAIN(tst_childprocess)
#include "tst_childprocess.moc"
