// What receivers leave behind that went without unregistering: nothing that grows.
#include "MessageCenter/messagecenter.h"

#include "support/memoryuse.h"

#include <QtTest>

#include <memory>
#include <vector>

class tst_messagecentermemory : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();
    void forgetsReceiversThatWent_data();
    void forgetsReceiversThatWent();
};

void tst_messagecentermemory::initTestCase()
{
    if (!canCountMemory())
        QSKIP("the allocator does not tell how much is in use");
}

void tst_messagecentermemory::cleanup()
{
    MessageCenter::release();
}

void tst_messagecentermemory::forgetsReceiversThatWent_data()
{
    QTest::addColumn<int>("registry");

    QTest::newRow("module messages") << 0;
    QTest::newRow("device messages") << 1;
    QTest::newRow("services") << 2;
}

void tst_messagecentermemory::forgetsReceiversThatWent()
{
    QFETCH(int, registry);

    MessageCenter* const center = MessageCenter::defaultCenter();
    const auto comeAndGo = [&](int rounds) {
        for (int round = 0; round < rounds; ++round) {
            std::vector<std::unique_ptr<QObject>> receivers;
            for (int i = 0; i < 10; ++i) {
                receivers.push_back(std::make_unique<QObject>());
                QObject* const receiver = receivers.back().get();
                if (registry == 0)
                    center->registerModuleMessage("M", "onM", receiver);
                else if (registry == 1)
                    center->registerDeviceMessage("M", "onM", receiver);
                else
                    center->registerModuleServiceMessage("M", "onM", receiver);
            }
        }
    };
    comeAndGo(10);
    const qint64 before = memoryInUse();
    comeAndGo(1000);
    const qint64 left = memoryInUse() - before;
    QVERIFY2(left < (16 << 10), qPrintable(QString::number(left)));
}

QTEST_GUILESS_MAIN(tst_messagecentermemory)
#include "tst_messagecentermemory.moc"
