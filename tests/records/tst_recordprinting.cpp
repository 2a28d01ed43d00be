#include "goldenrecords.h"
#include "recordsundertest.h"

#include "records/records.h"

#include <QtTest>

// The debug output of records.
class tst_recordprinting : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void printsNameKeysAndValues();
    void printsNestedRecordsAndLists();
    void printsHashesSortedByKey();
    void printsEveryKey_data();
    void printsEveryKey();
    void neverPrintsSecrets();
    void showsWhetherASecretIsEmpty();
    void keepsTheStreamsSettings();
};

template<class R>
static QString printed(const R& record)
{
    QString text;
    QDebug(&text) << record;
    return text.trimmed();
}

void tst_recordprinting::printsNameKeysAndValues()
{
    BLConnectState state;
    state.nErr = -3;
    state.strError = QStringLiteral("no carrier");
    QCOMPARE(printed(state),
             QStringLiteral("BLConnectState(nErr: -3, nState: 0, strError: \"no carrier\")"));
    BLCallMute mute;
    mute.bMuteIn = true;
    QCOMPARE(printed(mute), QStringLiteral("BLCallMute(bMuteOut: false, bMuteIn: true)"));
    SmsSaveNumberToPB number;
    number.nMainID = 4000000000UL;
    QCOMPARE(printed(number),
             QStringLiteral("SmsSaveNumberToPB(nMainID: 4000000000, strNumber: \"\")"));
}

void tst_recordprinting::printsNestedRecordsAndLists()
{
    QCOMPARE(printed(BLSmsSetScCnf{0, {QStringLiteral("+49171")}}),
             QStringLiteral("BLSmsSetScCnf(nErr: 0, tSc: BLSmsAddress(strAddress: \"+49171\"))"));
    BLSmsMoveResult result;
    QCOMPARE(printed(result), QStringLiteral("BLSmsMoveResult(vSucceedRef: [], nFailureRef: [])"));
    result.vSucceedRef = {{2, 1}, {4, 3}};
    result.nFailureRef = {7, 8};
    QCOMPARE(printed(result),
             QStringLiteral("BLSmsMoveResult(vSucceedRef: [BLMoveSucceedRef(nNewRef: 2, nOldRef: "
                            "1), BLMoveSucceedRef(nNewRef: 4, nOldRef: 3)], nFailureRef: [7, 8])"));
}

void tst_recordprinting::printsHashesSortedByKey()
{
    BLPbItem item;
    QString expected; // sorted
    for (char key = 'p'; key >= 'a'; --key) {
        item.contents.insert(QString(QLatin1Char(key)), QString());
        expected.prepend(QStringLiteral("\"%1\": \"\", ").arg(QLatin1Char(key)));
    }
    item.contents.insert(QStringLiteral("z"), QStringLiteral("+49123"));
    QCOMPARE(printed(item),
             "BLPbItem(nStore: 0, nIndex: 0, contents: {" + expected + "\"z\": \"+49123\"})");
}

void tst_recordprinting::printsEveryKey_data()
{
    QTest::addColumn<QString>("name");
    for (const GoldenRecord& record : goldenRecords())
        QTest::newRow(qPrintable(record.name)) << record.name;
}

void tst_recordprinting::printsEveryKey()
{
    QFETCH(QString, name);
    const QString text = recordUnderTest(name).create()->printed();
    QVERIFY(text.startsWith(name + QLatin1Char('(')));
    qsizetype place = 0;
    for (const GoldenField& field : goldenRecord(name).fields) {
        place = text.indexOf(field.key + QStringLiteral(": "), place);
        QVERIFY2(place >= 0, qPrintable(field.key));
    }
}

void tst_recordprinting::neverPrintsSecrets()
{
    const QString secret = QStringLiteral("73519");
    BLConnectionDialUp dialUp;
    dialUp.strPassWord = secret;
    dialUp.strUserName = QStringLiteral("ada");
    const QString all =
        printed(BLPINVerifyPukInfo{secret, secret}) + printed(BLPINChangeInfo{secret, secret}) +
        printed(BLPINEnableInfo{true, secret}) + printed(BLLockChangeInfo{secret, secret}) +
        printed(BLLockEnableInfo{true, secret}) +
        printed(BLProUserNameAndPwd{QStringLiteral("ada"), secret}) + printed(dialUp);
    QVERIFY(!all.contains(secret));
    QCOMPARE(all.count(QStringLiteral("\"ada\"")), 2);
    QCOMPARE(all.count(QStringLiteral("(hidden)")), 10);
}

void tst_recordprinting::showsWhetherASecretIsEmpty()
{
    QCOMPARE(printed(BLPINChangeInfo{QString(), QStringLiteral("1234")}),
             QStringLiteral("BLPINChangeInfo(strOldPin: \"\", strNewPin: (hidden))"));
}

void tst_recordprinting::keepsTheStreamsSettings()
{
    QString text;
    QDebug(&text) << 1 << BLPINInfo{2, 3} << 4;
    QCOMPARE(text.trimmed(), QStringLiteral("1 BLPINInfo(nPinCnt: 2, nPukCnt: 3) 4"));
}

QTEST_GUILESS_MAIN(tst_recordprinting)
#include "tst_recordprinting.moc"
