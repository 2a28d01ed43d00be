#include "DataValue/datavalue.h"
#include "deviceservice_global.h"
#include "support/logcapture.h"

#include <QtTest>

#include <climits>

namespace {

DeviceService_Global* store()
{
    return DeviceService_Global::instance();
}

void storeText(const char* key, const char* text)
{
    CDataValue value(text);
    store()->setGlobalDataByKey(key, value);
}

} // namespace

class tst_deviceservice_global : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theErrorTableIsUsedOnceItIsInitialised();
    void mapsEveryErrorNumber_data();
    void mapsEveryErrorNumber();

    void cleanup() { DeviceService_Global::release(); }
    void isOneStoreUntilItIsReleased();
    void givesBackCopiesOfWhatWasStored();
    void leavesTheOutputAloneWithoutData();
    void givesNullForAnAbsentKey();
    void aStoredNullCountsAsAbsent();
    void resettingDropsTheDataOnly();
    void findsDeviceIDsByName();
    void hasNoDeviceIDsWithoutTheirMap();
    void logsTheDataWhenADeviceIDIsLookedUp();
    void cutsLongDataInTheLog();
};

// First, because nothing takes the table out of use again.
void tst_deviceservice_global::theErrorTableIsUsedOnceItIsInitialised()
{
    for (int atError : {0, 5, 38, 39})
        QCOMPARE(DeviceService_Global::atError2IpcError(atError), -1);
    store()->initErrorTable();
    QCOMPARE(DeviceService_Global::atError2IpcError(5), 10);
    store()->initErrorTable();
    QCOMPARE(DeviceService_Global::atError2IpcError(5), 10);
    store()->reset();
    DeviceService_Global::release();
    QCOMPARE(DeviceService_Global::atError2IpcError(5), 10);
}

void tst_deviceservice_global::mapsEveryErrorNumber_data()
{
    QTest::addColumn<int>("atError");
    QTest::addColumn<int>("ipcError");
    const auto row = [](int atError, int ipcError) {
        QTest::newRow(qPrintable(QString::number(atError))) << atError << ipcError;
    };
    row(0, 0);
    row(1, 1);
    row(2, 8);
    row(3, 2);
    for (int atError = 4; atError <= 37; ++atError)
        row(atError, atError + 5);
    row(38, 3);
    for (int unknown : {-1, 39, 42, 100, INT_MIN, INT_MAX})
        row(unknown, -1);
}

void tst_deviceservice_global::mapsEveryErrorNumber()
{
    QFETCH(int, atError);
    QFETCH(int, ipcError);
    store()->initErrorTable();
    QCOMPARE(DeviceService_Global::atError2IpcError(atError), ipcError);
}

void tst_deviceservice_global::isOneStoreUntilItIsReleased()
{
    QCOMPARE(DeviceService_Global::instance(), DeviceService_Global::instance());
    storeText("key", "text");
    DeviceService_Global::release();
    DeviceService_Global::release();
    CDataValue value("before");
    QVERIFY(!store()->getGlobalDataByKey("key", value));
    QCOMPARE(value.asQString(), QString("before"));
}

void tst_deviceservice_global::givesBackCopiesOfWhatWasStored()
{
    CDataValue value("first");
    QVERIFY(store()->setGlobalDataByKey("key", value));
    value = CDataValue("changed");
    CDataValue result;
    QVERIFY(store()->getGlobalDataByKey("key", result));
    QCOMPARE(result.asQString(), QString("first"));
    result = CDataValue("changed");
    QVERIFY(store()->getGlobalDataByKey("key", result));
    QCOMPARE(result.asQString(), QString("first"));
    QVERIFY(store()->setGlobalDataByKey("key", value));
    QVERIFY(store()->getGlobalDataByKey("key", result));
    QCOMPARE(result.asQString(), QString("changed"));
}

void tst_deviceservice_global::leavesTheOutputAloneWithoutData()
{
    CDataValue value("before");
    QVERIFY(!store()->getGlobalDataByKey("key", value));
    QCOMPARE(value.asQString(), QString("before"));
}

void tst_deviceservice_global::givesNullForAnAbsentKey()
{
    storeText("key", "text");
    CDataValue value("before");
    QVERIFY(!store()->getGlobalDataByKey("KEY", value));
    QVERIFY(value.isNull());
}

void tst_deviceservice_global::aStoredNullCountsAsAbsent()
{
    CDataValue null;
    QVERIFY(store()->setGlobalDataByKey("key", null));
    CDataValue value("before");
    QVERIFY(!store()->getGlobalDataByKey("key", value));
    QVERIFY(value.isNull());
}

void tst_deviceservice_global::resettingDropsTheDataOnly()
{
    storeText("key", "text");
    const DeviceService_Global* before = store();
    store()->reset();
    store()->reset();
    QCOMPARE(store(), before);
    CDataValue value("before");
    QVERIFY(!store()->getGlobalDataByKey("key", value));
    QCOMPARE(value.asQString(), QString("before"));
    storeText("key", "again");
    QVERIFY(store()->getGlobalDataByKey("key", value));
    QCOMPARE(value.asQString(), QString("again"));
}

void tst_deviceservice_global::findsDeviceIDsByName()
{
    CDataValue deviceIDs(MAP_VALUE);
    deviceIDs.mapSet("modem \xC3\xBC", CDataValue("wzr-7"), true);
    store()->setGlobalDataByKey("kSYSTEM_DEVICE_ID_MAP", deviceIDs);
    QCOMPARE(store()->getDeviceIDByDeviceName(QString::fromUtf8("modem \xC3\xBC")),
             QString("wzr-7"));
    QVERIFY(store()->getDeviceIDByDeviceName("other").isEmpty());
    QVERIFY(store()->getDeviceIDByDeviceName(QString()).isEmpty());
}

void tst_deviceservice_global::hasNoDeviceIDsWithoutTheirMap()
{
    QVERIFY(store()->getDeviceIDByDeviceName("modem").isEmpty());
    storeText("key", "text");
    QVERIFY(store()->getDeviceIDByDeviceName("modem").isEmpty());
    storeText("kSYSTEM_DEVICE_ID_MAP", "no map");
    QVERIFY(store()->getDeviceIDByDeviceName("modem").isEmpty());
}

void tst_deviceservice_global::logsTheDataWhenADeviceIDIsLookedUp()
{
    LogCapture log;
    store()->getDeviceIDByDeviceName("modem");
    QCOMPARE(log.lines(), QStringList());
    storeText("key", "text");
    store()->getDeviceIDByDeviceName("modem");
    QCOMPARE(log.count("deviceservice_global getDeviceIDByDeviceName {\"key\":\"text\"}"), 1);
}

void tst_deviceservice_global::cutsLongDataInTheLog()
{
    LogCapture log;
    CDataValue value(QString(100000, 'x'));
    store()->setGlobalDataByKey("key", value);
    store()->getDeviceIDByDeviceName("modem");
    QCOMPARE(log.count("... 100011 characters "), 1);
}

QTEST_APPLESS_MAIN(tst_deviceservice_global)
#include "tst_deviceservice_global.moc"
