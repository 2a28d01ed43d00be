#include "MessageCenter/messagecenter.h"
#include "support/logcapture.h"
#include "threadsexample.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

namespace {

QStringList linesOf(const char* path)
{
    QFile file(QStringLiteral(PROJECT_FOLDER "/") + path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("cannot read %s", path);
    return QString::fromUtf8(file.readAll()).split('\n');
}

/// The texts from a line that is `begin`, or starts with it, to the next line that is `end`.
QStringList blocksOf(const QStringList& lines, const QString& begin, const QString& end)
{
    QStringList blocks;
    bool inside = false;
    QStringList block;
    for (const QString& line : lines) {
        if (!inside && line.startsWith(begin)) {
            inside = true;
            block.clear();
        } else if (inside && line.startsWith(end)) {
            inside = false;
            blocks << block.join('\n');
        } else if (inside) {
            block << line;
        }
    }
    return blocks;
}

} // namespace

class tst_threadsdoc : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void thePageShowsTheCodeThatIsRun();
    void modulesKeepCopies();
    void aRequestThatCannotBeSentIsAnsweredInsideTheCall();
    void workersReachTheMainThread();
    void workersMayLog();
    void theProcessEndsInOrder();
};

void tst_threadsdoc::thePageShowsTheCodeThatIsRun()
{
    const QStringList shown = blocksOf(linesOf("docs/threads-and-ownership.md"), "```cpp", "```");
    const QStringList run = blocksOf(linesOf("tests/docs/threadsexample.cpp"), "//! [", "//! [");
    QCOMPARE(run.size(), 5);
    QCOMPARE(shown, run);
}

void tst_threadsdoc::modulesKeepCopies()
{
    QCOMPARE(languageKept("en"), QString("en"));
    QCOMPARE(MessageCenter::defaultCenter()->postModuleMessage("LANGUAGE", nullptr), 0);
    MessageCenter::release();
}

void tst_threadsdoc::aRequestThatCannotBeSentIsAnsweredInsideTheCall()
{
    QCOMPARE(repliesInsideThePost(), QStringList({"GET_SIGNAL", "6"}));
    MessageCenter::release();
}

void tst_threadsdoc::workersReachTheMainThread()
{
    QCOMPARE(reportsOfAWorker(), QStringList({"4", "main thread"}));
    MessageCenter::release();
}

void tst_threadsdoc::workersMayLog()
{
    LogCapture log;
    logFromWorker();
    QCOMPARE(log.count("worker run started "), 1);
}

void tst_threadsdoc::theProcessEndsInOrder()
{
    QTemporaryDir folder;
    QVERIFY(folder.isValid());
    const QPointer<MessageCenter> center(MessageCenter::defaultCenter());
    bool logged = false;
    QTimer::singleShot(0, qApp, [&] {
        logged = g_bLog;
        QCoreApplication::exit(3);
    });
    QCOMPARE(run(*qApp, QFile::encodeName(folder.filePath("log")).constData()), 3);
    QVERIFY(logged);
    QVERIFY(!g_bLog);
    QVERIFY(center.isNull());
}

QTEST_GUILESS_MAIN(tst_threadsdoc)
#include "tst_threadsdoc.moc"
