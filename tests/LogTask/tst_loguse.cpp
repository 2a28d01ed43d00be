#include "LogTask/loguse_p.h"

#include <QTest>

#include <memory>
#include <thread>
#include <vector>

using namespace std::chrono_literals;

class tst_loguse : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { forgetLogUses(); }

    void hasNothingToWaitForWithoutUses() { QVERIFY(waitForLogUses(0ms)); }

    void waitsForEachUse()
    {
        auto first = std::make_unique<LogUse>();
        auto second = std::make_unique<LogUse>();
        auto inCrash = std::make_unique<LogUse>(LogUse::Crash);
        QVERIFY(!waitForLogUses(0ms));
        first.reset();
        inCrash.reset();
        QVERIFY(!waitForLogUses(0ms));
        second.reset();
        QVERIFY(waitForLogUses(0ms));
    }

    void waitsForUsesOfManyThreads()
    {
        std::vector<std::unique_ptr<LogUse>> uses(40);
        for (auto& use : uses)
            std::thread([&use] { use = std::make_unique<LogUse>(); }).join();
        while (!uses.empty()) {
            QVERIFY(!waitForLogUses(0ms));
            uses.pop_back();
        }
        QVERIFY(waitForLogUses(0ms));
    }

    void returnsWhenTheUseHasEnded()
    {
        auto use = std::make_unique<LogUse>();
        std::thread other([&] { use.reset(); });
        QVERIFY(waitForLogUses(1h));
        other.join();
    }

    void forgetsUses()
    {
        const LogUse use;
        forgetLogUses();
        QVERIFY(waitForLogUses(0ms));
    }
};

QTEST_APPLESS_MAIN(tst_loguse)
#include "tst_loguse.moc"
