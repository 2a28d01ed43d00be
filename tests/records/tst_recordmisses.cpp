#include "recordtexts.h"

#include "support/logcapture.h"

#include "records/records.h"

#include <QtTest>

// What reading a record does to the shared null value, which every miss makes null again.
class tst_recordmisses : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void countsAMissingListAsAMiss_data();
    void countsAMissingListAsAMiss();
    void readsWhatWasWrittenThroughAMiss_data();
    void readsWhatWasWrittenThroughAMiss();
};

void tst_recordmisses::countsAMissingListAsAMiss_data()
{
    QTest::addColumn<bool>("isUnpacked");
    QTest::newRow("packed") << false;
    QTest::newRow("with values of its own") << true;
}

void tst_recordmisses::countsAMissingListAsAMiss()
{
    QFETCH(bool, isUnpacked);
    CDataValue message = parsed("{\"other\":1}");
    if (isUnpacked)
        message.mapGet("other");
    CDataValue::referToMemberNull() = CDataValue(1); // lost with the next miss
    BLSmsGetListCnf list;
    GetStructFromDataValue(message, list);
    QVERIFY(CDataValue::m_sNull.isNull());
}

void tst_recordmisses::readsWhatWasWrittenThroughAMiss_data()
{
    QTest::addColumn<QStringList>("path");
    QTest::addColumn<bool>("isUnpacked");
    const QStringList itself;
    QTest::newRow("itself, packed") << itself << false;
    QTest::newRow("itself, with values of its own") << itself << true;
    QTest::newRow("a member, packed") << QStringList{"tIn"} << false;
    QTest::newRow("a member, with values of its own") << QStringList{"tIn"} << true;
    QTest::newRow("a member of a member") << QStringList{"tIn", "tIn"} << true;
}

void tst_recordmisses::readsWhatWasWrittenThroughAMiss()
{
    QFETCH(QStringList, path);
    QFETCH(bool, isUnpacked);
    // A miss discards what was written into the shared null value, and the record misses "nErr"
    // before it comes to its texts.
    const QString reason(10000, 'x'); // too long to be kept by the allocator as it is
    const QString error = "\"strError\":\"" + reason + '"';
    const QString written = "{" + error + ",\"tIn\":{" + error + ",\"tIn\":{" + error + "}}}";
    CDataValue map(MAP_VALUE);
    CDataValue* data = &map.mapGet("missing");
    QVERIFY(CDataValue::parseToDataValue(written, *data));
    for (const QString& key : path)
        data = &data->mapGet(key);
    if (isUnpacked)
        data->mapGet("strError");
    const LogCapture log;
    BLConnectState state;
    GetStructFromDataValue(*data, state);
    QCOMPARE(state.nErr, 0);
    QCOMPARE(state.strError, reason);
    QVERIFY(CDataValue::m_sNull.isNull());
    QCOMPARE(log.count(kNoInt), 2);
}

QTEST_GUILESS_MAIN(tst_recordmisses)
#include "tst_recordmisses.moc"
