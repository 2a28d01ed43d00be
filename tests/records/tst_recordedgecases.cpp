#include "recordtexts.h"

#include "support/logcapture.h"

#include "records/records.h"

#include <QtTest>

#include <memory>

// The odd keys and kinds, each spelt out.
class tst_recordedgecases : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { m_log = std::make_unique<LogCapture>(); }
    void init() { m_log->clear(); }
    void cleanupTestCase() { m_log.reset(); }

    void writesExactlyTheKeysIntoNull();
    void writesIntoAMapWithOtherMembers();
    void writesIntoAScalarWithoutEffect();
    void writesAnEmptyListAsNull();
    void readsAMissingListAsEmpty();
    void appendsToAListThatHasEntries();
    void readsTwiceIntoADoubledList();
    void goesOnAfterAKeySpeltDifferently();
    void readsTextAndTrueUnderANumberAsZero();
    void readsANumberUnderABooleanAsFalse();
    void readsAnUnsignedNumberAsANumber();
    void leavesWhatItReadsUnsynchronised();
    void hashKeysOutsideAsciiChange();
    void hashKeysWithTheSameBytesAreOneMember();
    void hashKeysEndAtAZeroCharacter();
    void carriesAWidgetsAddressAsText();

    void networkListItemHasModeWithoutPrefix();
    void linkedListsKeepTheirOrder();
    void statisticsWithoutNestedRecordsHaveDefaults();
    void countersKeepSixtyFourBits();

    void deleteSuccessItemHasItsOwnStoreKey();
    void validPeriodFlagsAreNumbers();
    void sendResultWithoutRecipientsHasNulls();
    void archiveRequestReadsADeleteRequest();
    void unreadFlagIsANumber();
    void failedReferencesAreAList();

    void phonebookItemWithoutContents();
    void phonebookItemMergesContents();
    void maskIsTextNotANumber();

    void noFindingsAreNull();
    void singleTextIsNoListOfLines();

private:
    std::unique_ptr<LogCapture> m_log;
};

void tst_recordedgecases::writesExactlyTheKeysIntoNull()
{
    BLNetworkSet set;
    set.nMask = 3;
    set.nMode = -1;
    set.strOperator = QStringLiteral("26201");
    CDataValue data(NULL_VALUE);
    GetDataValueFromStruct(set, data);
    QCOMPARE(data.type(), MAP_VALUE);
    QCOMPARE(
        data.parseToQString(FAST_STYLE),
        QStringLiteral(
            "{\"nAct\":0,\"nFormat\":0,\"nMask\":3,\"nMode\":-1,\"strOperator\":\"26201\"}\n"));
}

void tst_recordedgecases::writesIntoAMapWithOtherMembers()
{
    CDataValue data = parsed("{\"nPinCnt\":\"old\",\"zebra\":1}");
    BLPINInfo info;
    info.nPinCnt = 3;
    info.nPukCnt = 10;
    GetDataValueFromStruct(info, data);
    QCOMPARE(data.parseToQString(FAST_STYLE),
             QStringLiteral("{\"nPinCnt\":3,\"nPukCnt\":10,\"zebra\":1}\n"));
}

void tst_recordedgecases::writesIntoAScalarWithoutEffect()
{
    CDataValue data("text");
    BLSmsMoveResult result;
    result.vSucceedRef.push_back({1, 2});
    result.nFailureRef.push_back(3);
    GetDataValueFromStruct(result, data);
    QVERIFY(data.isString());
    QCOMPARE(data.asQString(), QStringLiteral("text"));
}

void tst_recordedgecases::writesAnEmptyListAsNull()
{
    QCOMPARE(textOf(BLSmsMoveResult{}),
             QByteArray("{\"nFailureRef\":null,\"vSucceedRef\":null}\n"));
    QVERIFY(readFrom<BLSmsMoveResult>("{\"nFailureRef\":null,\"vSucceedRef\":null}") ==
            BLSmsMoveResult{});
    QCOMPARE(m_log->lines(), QStringList());
}

void tst_recordedgecases::readsAMissingListAsEmpty()
{
    QVERIFY(readFrom<BLSmsMoveResult>("{}") == BLSmsMoveResult{});
    QCOMPARE(m_log->lines(), QStringList());
}

void tst_recordedgecases::appendsToAListThatHasEntries()
{
    CDataValue data = parsed("{\"blInbox\":true,\"vRef\":[7,8]}");
    BLSmsArchiveItemList list;
    list.vRef = {1, 2};
    GetStructFromDataValue(data, list);
    QCOMPARE(list.vRef, (QVector<int>{1, 2, 7, 8}));
}

void tst_recordedgecases::readsTwiceIntoADoubledList()
{
    CDataValue data = parsed("{\"vSmsMoveItems\":[{\"blCopy\":true,\"nRef\":4,\"nToStoreIn\":2}]}");
    BLSmsMoveItems items;
    GetStructFromDataValue(data, items);
    GetStructFromDataValue(data, items);
    QCOMPARE(items.vSmsMoveItems.size(), 2);
    const BLSmsMoveReq expected{4, true, 2};
    QVERIFY(items.vSmsMoveItems.at(0) == expected);
    QVERIFY(items.vSmsMoveItems.at(1) == expected);
}

void tst_recordedgecases::goesOnAfterAKeySpeltDifferently()
{
    const auto item = readFrom<BLDeleteSuccessItem>("{\"nStoreIn\":9,\"nOldRef\":5,\"nNewRef\":6}");
    QCOMPARE(item.nSotreIn, 0);
    QCOMPARE(item.nOldRef, 5);
    QCOMPARE(item.nNewRef, 6);
    QCOMPARE(m_log->lines().size(), 1);
    QCOMPARE(m_log->count(kNoInt), 1);
}

void tst_recordedgecases::readsTextAndTrueUnderANumberAsZero()
{
    const auto info = readFrom<BLPINInfo>("{\"nPinCnt\":\"3\",\"nPukCnt\":true}");
    QCOMPARE(info.nPinCnt, 0);
    QCOMPARE(info.nPukCnt, 0);
    QCOMPARE(m_log->lines().size(), 2);
    QCOMPARE(m_log->count(kNoInt), 2);
}

void tst_recordedgecases::readsANumberUnderABooleanAsFalse()
{
    const auto info = readFrom<BLPINEnableInfo>("{\"blPinEnable\":1,\"strPinCode\":\"1234\"}");
    QCOMPARE(info.blPinEnable, false);
    QCOMPARE(info.strPinCode, QStringLiteral("1234"));
    QCOMPARE(m_log->lines().size(), 1);
    QCOMPARE(m_log->count(kNoBool), 1);
}

void tst_recordedgecases::readsAnUnsignedNumberAsANumber()
{
    CDataValue data;
    data.mapSet("nPinCnt", CDataValue(3u), true);
    data.mapSet("nPukCnt", CDataValue(4294967295u), true);
    BLPINInfo info;
    GetStructFromDataValue(data, info);
    QCOMPARE(info.nPinCnt, 3);
    QCOMPARE(info.nPukCnt, -1);
    QCOMPARE(m_log->count("asInt The value type is unsigned int value, convert to int!"), 2);
}

void tst_recordedgecases::leavesWhatItReadsUnsynchronised()
{
    // A record written into a member reaches the text of the member at once, and that of the
    // envelope when it is synchronised.
    CDataValue envelope = parsed("{\"IPCMSG_RESPONSE_DATA\":{}}");
    CDataValue& body = envelope.mapGet("IPCMSG_RESPONSE_DATA");
    BLSmsDeleteCnf answer;
    answer.nRef = 5;
    GetDataValueFromStruct(answer, body);
    QCOMPARE(body.parseToQString(FAST_STYLE), QStringLiteral("{\"nErr\":0,\"nRef\":5}\n"));
    QCOMPARE(envelope.parseToQString(FAST_STYLE),
             QStringLiteral("{\"IPCMSG_RESPONSE_DATA\":{}}\n"));
    envelope.synchJsonData();
    QCOMPARE(envelope.parseToQString(FAST_STYLE),
             QStringLiteral("{\"IPCMSG_RESPONSE_DATA\":{\"nErr\":0,\"nRef\":5}}\n"));
}

void tst_recordedgecases::hashKeysOutsideAsciiChange()
{
    BLPbItem item;
    item.contents.insert(QString::fromUtf8("Stra\xc3\x9f"
                                           "e"),
                         QStringLiteral("text"));
    CDataValue data;
    GetDataValueFromStruct(item, data);
    QCOMPARE(data.parseToQString(FAST_STYLE),
             QString::fromUtf8("{\"contents\":{\"Stra\xc3\x9f"
                               "e\":\"text\"},\"nIndex\":0,\"nStore\":0}\n"));
    BLPbItem read;
    GetStructFromDataValue(data, read);
    // Each of the two UTF-8 bytes has become a character of its own, under which no text is found.
    const QString changed = QString::fromUtf8("Stra\xc3\x83\xc2\x9f"
                                              "e");
    QCOMPARE(read.contents.size(), 1);
    QVERIFY(read.contents.contains(changed));
    QVERIFY(read.contents.value(changed).isNull());
    QCOMPARE(m_log->lines().size(), 1);
    QCOMPARE(m_log->count(kNoText), 1);
}

void tst_recordedgecases::hashKeysWithTheSameBytesAreOneMember()
{
    // Halves of surrogate pairs have no UTF-8, so that these two keys are written alike.
    BLPbItem item;
    item.contents = {{QString(QChar(0xD800)), QStringLiteral("one")},
                     {QString(QChar(0xD801)), QStringLiteral("other")},
                     {QStringLiteral("name"), QStringLiteral("Ada")}};
    QString last; // in the order of the hash, which is another one in each process
    for (auto text = item.contents.cbegin(); text != item.contents.cend(); ++text) {
        if (text.key() != QStringLiteral("name"))
            last = text.value();
    }
    CDataValue data;
    GetDataValueFromStruct(item, data);
    CDataValue& contents = data.mapGet("contents");
    QCOMPARE(contents.mapGetKeys().size(), std::size_t(2));
    QCOMPARE(contents.mapGet("name").asQString(), QStringLiteral("Ada"));
    QCOMPARE(contents.mapGet(QString(QChar(0xD800))).asQString(), last);
    // A text with the same key twice would be read as well, and hide the second member.
    const QString text = data.parseToQString(FAST_STYLE);
    QCOMPARE(text.count(QStringLiteral("\"one\"")) + text.count(QStringLiteral("\"other\"")), 1);
}

void tst_recordedgecases::hashKeysEndAtAZeroCharacter()
{
    BLPbItem item;
    item.contents = {{QStringLiteral("old"), QStringLiteral("stays")}};
    CDataValue data = parsed("{\"nStore\":1,\"nIndex\":2,\"contents\":"
                             "{\"a\":\"1\",\"a\\u0000b\":\"2\",\"c\\u0000d\":\"3\"}}");
    GetStructFromDataValue(data, item);
    QCOMPARE(item.contents,
             (QHash<QString, QString>{{"old", "stays"}, {"a", "1"}, {"c", QString()}}));
    QCOMPARE(m_log->lines().size(), 1);
    QCOMPARE(m_log->count(kNoText), 1);
}

void tst_recordedgecases::carriesAWidgetsAddressAsText()
{
    PBSendItemVoiceCallCnf call;
    call.parentWidget = 3735928559UL;
    call.pbItem = {QStringLiteral("Ada"), QStringLiteral("+49123")};
    QCOMPARE(textOf(call), QByteArray("{\"parentWidget\":\"3735928559\",\"pbItem\":{\"m_name\":"
                                      "\"Ada\",\"m_number\":\"+49123\"}}\n"));
    const auto list = readFrom<PBSendListMessageCnf>(
        "{\"isMultiSelect\":true,\"parentWidget\":\"3735928559\",\"pbList\":[{\"m_name\":\"Ada\","
        "\"m_number\":\"+49123\"}]}");
    QCOMPARE(list.isMultiSelect, true);
    QCOMPARE(list.parentWidget, 3735928559UL);
    QCOMPARE(list.pbList.size(), 1);
    QVERIFY(list.pbList.at(0) == call.pbItem);
}

void tst_recordedgecases::networkListItemHasModeWithoutPrefix()
{
    const auto item = readFrom<BLNetworkListItem>(
        "{\"nMode\":4,\"nState\":2,\"strLongAlpha\":\"Long\",\"strShortAlpha\":\"Short\","
        "\"strNumericAlpha\":\"26201\",\"strPnn\":\"\",\"nAct\":7}");
    QCOMPARE(item.mode, 0);
    QCOMPARE(item.nState, 2);
    QCOMPARE(item.nAct, 7);
    QCOMPARE(m_log->lines().size(), 1);
    QCOMPARE(m_log->count(kNoInt), 1);

    BLNetworkListItem written;
    written.mode = 4;
    QVERIFY(textOf(written).contains("\"mode\":4"));
    BLNetworkInfo info;
    info.nMode = 4;
    QVERIFY(textOf(info).contains("\"nMode\":4"));
}

void tst_recordedgecases::linkedListsKeepTheirOrder()
{
    TBLCallState state;
    QCOMPARE(textOf(state), QByteArray("{\"lstState\":null}\n"));
    QVERIFY(readFrom<TBLCallState>("{\"lstState\":null}").lstState.empty());
    QCOMPARE(textOf(BLNetworkListCnf{}), QByteArray("{\"listNetworkItem\":null}\n"));
    QVERIFY(readFrom<BLNetworkListCnf>("{\"listNetworkItem\":null}").listNetworkItem.empty());

    for (int index : {3, 1, 2}) {
        state.lstState.emplace_back();
        state.lstState.back().nIdx = index;
    }
    CDataValue data;
    GetDataValueFromStruct(state, data);
    CDataValue& list = data.mapGet("lstState");
    QCOMPARE(list.arrayCount(), 3u);
    QCOMPARE(list.arrayGet(0).mapGet("nIdx").asInt(), 3);
    QCOMPARE(list.arrayGet(2).mapGet("nIdx").asInt(), 2);
    TBLCallState read;
    GetStructFromDataValue(data, read);
    QVERIFY(read == state);
}

void tst_recordedgecases::statisticsWithoutNestedRecordsHaveDefaults()
{
    const auto answer = readFrom<BLGetStatisticsCnf>("{\"nErr\":3}");
    QCOMPARE(answer.nErr, 3);
    QVERIFY(answer.tState == BLConnectState{});
    QVERIFY(answer.tInfo == BLConnectionStatistics{});
    // One warning for each of the 3 and 7 fields of the nested records.
    QCOMPARE(m_log->lines().size(), 10);
}

void tst_recordedgecases::countersKeepSixtyFourBits()
{
    BLConnectionStatistics counters;
    counters.dwDuration = 4294967296LL;
    counters.dwByteTransferred = 9223372036854775807LL;
    counters.dwByteReceived = -9223372036854775807LL - 1;
    CDataValue data;
    GetDataValueFromStruct(counters, data);
    QVERIFY(data.mapGet("dwDuration").isString());
    QCOMPARE(data.mapGet("dwDuration").asQString(), QStringLiteral("4294967296"));
    QCOMPARE(data.mapGet("dwByteTransferred").asQString(), QStringLiteral("9223372036854775807"));
    QCOMPARE(data.mapGet("dwByteReceived").asQString(), QStringLiteral("-9223372036854775808"));
    BLConnectionStatistics read;
    GetStructFromDataValue(data, read);
    QVERIFY(read == counters);
    // A JSON number is not what travels here.
    QCOMPARE(readFrom<BLConnectionStatistics>("{\"dwDuration\":5}").dwDuration, 0LL);
}

void tst_recordedgecases::deleteSuccessItemHasItsOwnStoreKey()
{
    QCOMPARE(textOf(BLDeleteSuccessItem{1, 2, 3}),
             QByteArray("{\"nNewRef\":3,\"nOldRef\":2,\"nSotreIn\":1}\n"));
    QCOMPARE(textOf(BLDeleteFailureItem{1, 2}), QByteArray("{\"nRef\":2,\"nStoreIn\":1}\n"));
    QCOMPARE(readFrom<BLDeleteSuccessItem>("{\"nStoreIn\":1}").nSotreIn, 0);
}

void tst_recordedgecases::validPeriodFlagsAreNumbers()
{
    const auto period = readFrom<BLSmsValidPeriod>(
        "{\"bAvailable\":true,\"bWeek\":true,\"bDay\":true,\"bHour\":true}");
    QVERIFY(period == BLSmsValidPeriod{});
    QCOMPARE(m_log->lines().size(), 4);
    QCOMPARE(m_log->count(kNoInt), 4);
    QCOMPARE(textOf(BLSmsValidPeriod{1, 2, 3, 4}),
             QByteArray("{\"bAvailable\":1,\"bDay\":3,\"bHour\":4,\"bWeek\":2}\n"));
}

void tst_recordedgecases::sendResultWithoutRecipientsHasNulls()
{
    QCOMPARE(textOf(SMS_SEND_RESULT_TO_UI{}),
             QByteArray("{\"nBoxType\":0,\"strContent\":\"\",\"strDateTime\":\"\","
                        "\"vFailureItem\":null,\"vSucceedItem\":null}\n"));
}

void tst_recordedgecases::archiveRequestReadsADeleteRequest()
{
    BLDeleteSmsReq deletion;
    deletion.blFromDeletedBox = true;
    deletion.blFromArchiveBox = true;
    deletion.DeleteItemInfoList.push_back({});
    deletion.DeleteItemInfoList.back().nBoxtype = 3;
    deletion.DeleteItemInfoList.back().strContent = QStringLiteral("text");
    CDataValue data;
    GetDataValueFromStruct(deletion, data);
    BLArchiveReq archiving;
    GetStructFromDataValue(data, archiving);
    QCOMPARE(archiving.DeleteItemInfoList, deletion.DeleteItemInfoList);
    QCOMPARE(m_log->lines(), QStringList());
    // And the other way round the items arrive without the two flags.
    CDataValue archived;
    GetDataValueFromStruct(archiving, archived);
    BLDeleteSmsReq read;
    GetStructFromDataValue(archived, read);
    QCOMPARE(read.DeleteItemInfoList, deletion.DeleteItemInfoList);
    QCOMPARE(read.blFromDeletedBox, false);
    QCOMPARE(read.blFromArchiveBox, false);
    QCOMPARE(m_log->count(kNoBool), 2);
}

void tst_recordedgecases::unreadFlagIsANumber()
{
    QCOMPARE(readFrom<BLSmsModifyTagReq>("{\"nRef\":1,\"blUnread\":true}").blUnread, 0);
    QCOMPARE(m_log->count(kNoInt), 1);
    QCOMPARE(textOf(BLSmsModifyTagReq{1, 1}), QByteArray("{\"blUnread\":1,\"nRef\":1}\n"));
}

void tst_recordedgecases::failedReferencesAreAList()
{
    const auto result = readFrom<BLSmsMoveResult>(
        "{\"vSucceedRef\":[{\"nNewRef\":2,\"nOldRef\":1}],\"nFailureRef\":[5,\"6\",7]}");
    QCOMPARE(result.nFailureRef, (QVector<int>{5, 0, 7}));
    QCOMPARE(result.vSucceedRef, (QVector<BLMoveSucceedRef>{{2, 1}}));
    QCOMPARE(m_log->count(kNoInt), 1);
}

void tst_recordedgecases::phonebookItemWithoutContents()
{
    QCOMPARE(textOf(BLPbItem{}), QByteArray("{\"contents\":null,\"nIndex\":0,\"nStore\":0}\n"));
    QVERIFY(readFrom<BLPbItem>("{\"contents\":null,\"nIndex\":0,\"nStore\":0}").contents.isEmpty());
    QCOMPARE(m_log->lines(), QStringList());
}

void tst_recordedgecases::phonebookItemMergesContents()
{
    CDataValue data =
        parsed("{\"nStore\":1,\"nIndex\":2,\"contents\":{\"name\":\"new\",\"group\":\"work\"}}");
    BLPbItem item;
    item.contents.insert(QStringLiteral("name"), QStringLiteral("old"));
    item.contents.insert(QStringLiteral("email"), QStringLiteral("a@example.org"));
    GetStructFromDataValue(data, item);
    QCOMPARE(item.contents, (QHash<QString, QString>{
                                {"name", "new"}, {"group", "work"}, {"email", "a@example.org"}}));
}

void tst_recordedgecases::maskIsTextNotANumber()
{
    QCOMPARE(readFrom<BLPbGetConstraintCnf>("{\"dwMask\":\"4294967295\"}").dwMask, 4294967295UL);
    m_log->clear();
    QCOMPARE(readFrom<BLPbGetConstraintCnf>("{\"dwMask\":255}").dwMask, 0UL);
    QCOMPARE(m_log->count("asUnsignedLong The value type is not utf8 string, NULL_VALUE, return "
                          "unsigned long(0)!"),
             1);
}

void tst_recordedgecases::noFindingsAreNull()
{
    QCOMPARE(textOf(GLDiagInfoList{}), QByteArray("{\"listDiagInfo\":null}\n"));
    QVERIFY(readFrom<GLDiagInfoList>("{\"listDiagInfo\":null}").listDiagInfo.isEmpty());
}

void tst_recordedgecases::singleTextIsNoListOfLines()
{
    const auto finding = readFrom<GLDiagInfo>(
        "{\"nGroup\":1,\"strErr\":\"e\",\"strSolution\":\"s\",\"strDiscription\":\"one line\"}");
    QVERIFY(finding.strDiscription.isEmpty());
    QCOMPARE(finding.strSolution, QStringLiteral("s"));
    QCOMPARE(m_log->lines(), QStringList());
}

QTEST_GUILESS_MAIN(tst_recordedgecases)
#include "tst_recordedgecases.moc"
