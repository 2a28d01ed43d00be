#include "recordsundertest.h"

#include "goldenrecords.h"
#include "recordmembers.h"

#include "records/records.h"

#include <QHash>
#include <QList>
#include <QVector>

#include <list>

namespace {

/// The name of a type, as the golden files write it.
template<class T>
struct TypeName;

#define NAMED_TYPE(Type)                                                                           \
    template<>                                                                                     \
    struct TypeName<Type>                                                                          \
    {                                                                                              \
        static QString get() { return QStringLiteral(#Type); }                                     \
    };
NAMED_TYPE(int)
NAMED_TYPE(bool)
NAMED_TYPE(QString)
NAMED_TYPE(long long)
NAMED_TYPE(unsigned long)
NAMED_TYPE(BLCallVolume)
NAMED_TYPE(BLCallMute)
NAMED_TYPE(TBLCallItemState)
NAMED_TYPE(TBLCallState)
NAMED_TYPE(BLNetLacAndCellID)
NAMED_TYPE(BLNetRegState)
NAMED_TYPE(BLNetworkSet)
NAMED_TYPE(BLNetworkListItem)
NAMED_TYPE(BLNetworkListCnf)
NAMED_TYPE(BLNetworkInfo)
NAMED_TYPE(BLPINInfo)
NAMED_TYPE(BLPinCheckState)
NAMED_TYPE(BLPINVerifyPukInfo)
NAMED_TYPE(BLPINChangeInfo)
NAMED_TYPE(BLPINEnableInfo)
NAMED_TYPE(BLLockChangeInfo)
NAMED_TYPE(BLLockEnableInfo)
NAMED_TYPE(BLSetPDPContext)
NAMED_TYPE(BLGetPDPContext)
NAMED_TYPE(BLProUserNameAndPwd)
NAMED_TYPE(BLConnectState)
NAMED_TYPE(BLConnectionDialUp)
NAMED_TYPE(BLConnectionStatistics)
NAMED_TYPE(BLGetStatisticsCnf)
NAMED_TYPE(SetECMAutoConnect)
NAMED_TYPE(BLEquipmentInfo)
NAMED_TYPE(BLSmsAddress)
NAMED_TYPE(BLSmsSendItemReq)
NAMED_TYPE(BLSmsSetScReq)
NAMED_TYPE(BLSmsSetScCnf)
NAMED_TYPE(BLSmsGetScCnf)
NAMED_TYPE(BLSmsValidPeriod)
NAMED_TYPE(BLSmsSetProfileReq)
NAMED_TYPE(BLSmsStorageState)
NAMED_TYPE(BLSmsProgressBarPos)
NAMED_TYPE(BLSmsPlayAlertItem)
NAMED_TYPE(BLSmsGetListReq)
NAMED_TYPE(BLSmsListItem)
NAMED_TYPE(BLSmsGetListCnf)
NAMED_TYPE(BLNewSmsReport)
NAMED_TYPE(BLSmsGetPcListInfo)
NAMED_TYPE(SMS_TABLE_INFO)
NAMED_TYPE(BLSmsMessageItem)
NAMED_TYPE(SmsMessageItem)
NAMED_TYPE(SmsMesageSaveItem)
NAMED_TYPE(SmsSaveItemRef)
NAMED_TYPE(smsMessageSaveReturnItem)
NAMED_TYPE(BLSmsNumberRefItem)
NAMED_TYPE(SMS_SEND_RESULT_TO_UI)
NAMED_TYPE(BLSmsModifyTagReq)
NAMED_TYPE(BLSmsMoveReq)
NAMED_TYPE(BLSmsMoveItems)
NAMED_TYPE(BLMoveSucceedRef)
NAMED_TYPE(BLSmsMoveResult)
NAMED_TYPE(BLSmsOutMoveItem)
NAMED_TYPE(BLSmsOutMoveItemList)
NAMED_TYPE(BLSmsRecoverItem)
NAMED_TYPE(BLVSmsRecoverItems)
NAMED_TYPE(BLSmsArchiveItemList)
NAMED_TYPE(BLDeleteItemInfo)
NAMED_TYPE(BLArchiveReq)
NAMED_TYPE(BLDeleteSmsReq)
NAMED_TYPE(BLSmsDeleteReq)
NAMED_TYPE(BLSmsDeleteCnf)
NAMED_TYPE(BLSmsDeleteReturnItem)
NAMED_TYPE(BLDeleteSuccessItem)
NAMED_TYPE(BLDeleteFailureItem)
NAMED_TYPE(BLDeleteSmsCnf)
NAMED_TYPE(BLSmsDelDeletedBoxItem)
NAMED_TYPE(BLSmsDelDeletedBoxList)
NAMED_TYPE(BLUssdSendCmd)
NAMED_TYPE(BLUssdReport)
NAMED_TYPE(BLPbItem)
NAMED_TYPE(BLPbInitListReq)
NAMED_TYPE(BLPbInitListCnf)
NAMED_TYPE(PBGetListMessageCnf)
NAMED_TYPE(BLPBNewItemReq)
NAMED_TYPE(BLPbAddSingleItemRes)
NAMED_TYPE(BLPbAddItemCnf)
NAMED_TYPE(BLPbUpdateItemReq)
NAMED_TYPE(BLPbDeleteItem)
NAMED_TYPE(BLPbDeleteItemReq)
NAMED_TYPE(BLPbDeleteSingleItemRes)
NAMED_TYPE(BLPbDeleteItemCnf)
NAMED_TYPE(BLPbMoveItemReq)
NAMED_TYPE(BLPbMoveSingleItemRes)
NAMED_TYPE(BLPbMoveItemCnf)
NAMED_TYPE(BLPbGetStorageInfoCnf)
NAMED_TYPE(BLPbGetConstraintCnf)
NAMED_TYPE(PBItemExternal)
NAMED_TYPE(PBSendItemVoiceCallCnf)
NAMED_TYPE(PBSendListMessageCnf)
NAMED_TYPE(PBFindMessageCnf)
NAMED_TYPE(SmsSaveNumberToPB)
NAMED_TYPE(BLDiagInfo)
NAMED_TYPE(GLDiagInfo)
NAMED_TYPE(GLDiagInfoList)
NAMED_TYPE(BLCancelMessage)
#undef NAMED_TYPE

using AllRecords = std::tuple<
    BLCallVolume, BLCallMute, TBLCallItemState, TBLCallState, BLNetLacAndCellID, BLNetRegState,
    BLNetworkSet, BLNetworkListItem, BLNetworkListCnf, BLNetworkInfo, BLPINInfo, BLPinCheckState,
    BLPINVerifyPukInfo, BLPINChangeInfo, BLPINEnableInfo, BLLockChangeInfo, BLLockEnableInfo,
    BLSetPDPContext, BLGetPDPContext, BLProUserNameAndPwd, BLConnectState, BLConnectionDialUp,
    BLConnectionStatistics, BLGetStatisticsCnf, SetECMAutoConnect, BLEquipmentInfo, BLSmsAddress,
    BLSmsSendItemReq, BLSmsSetScReq, BLSmsSetScCnf, BLSmsGetScCnf, BLSmsValidPeriod,
    BLSmsSetProfileReq, BLSmsStorageState, BLSmsProgressBarPos, BLSmsPlayAlertItem, BLSmsGetListReq,
    BLSmsListItem, BLSmsGetListCnf, BLNewSmsReport, BLSmsGetPcListInfo, SMS_TABLE_INFO,
    BLSmsMessageItem, SmsMessageItem, SmsMesageSaveItem, SmsSaveItemRef, smsMessageSaveReturnItem,
    BLSmsNumberRefItem, SMS_SEND_RESULT_TO_UI, BLSmsModifyTagReq, BLSmsMoveReq, BLSmsMoveItems,
    BLMoveSucceedRef, BLSmsMoveResult, BLSmsOutMoveItem, BLSmsOutMoveItemList, BLSmsRecoverItem,
    BLVSmsRecoverItems, BLSmsArchiveItemList, BLDeleteItemInfo, BLArchiveReq, BLDeleteSmsReq,
    BLSmsDeleteReq, BLSmsDeleteCnf, BLSmsDeleteReturnItem, BLDeleteSuccessItem, BLDeleteFailureItem,
    BLDeleteSmsCnf, BLSmsDelDeletedBoxItem, BLSmsDelDeletedBoxList, BLUssdSendCmd, BLUssdReport,
    BLPbItem, BLPbInitListReq, BLPbInitListCnf, PBGetListMessageCnf, BLPBNewItemReq,
    BLPbAddSingleItemRes, BLPbAddItemCnf, BLPbUpdateItemReq, BLPbDeleteItem, BLPbDeleteItemReq,
    BLPbDeleteSingleItemRes, BLPbDeleteItemCnf, BLPbMoveItemReq, BLPbMoveSingleItemRes,
    BLPbMoveItemCnf, BLPbGetStorageInfoCnf, BLPbGetConstraintCnf, PBItemExternal,
    PBSendItemVoiceCallCnf, PBSendListMessageCnf, PBFindMessageCnf, SmsSaveNumberToPB, BLDiagInfo,
    GLDiagInfo, GLDiagInfoList, BLCancelMessage>;

template<class T>
struct TypeName<std::list<T>>
{
    static QString get() { return QStringLiteral("std::list<%1>").arg(TypeName<T>::get()); }
};
template<class T>
struct TypeName<QList<T>>
{
    static QString get() { return QStringLiteral("QList<%1>").arg(TypeName<T>::get()); }
};
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
template<class T>
struct TypeName<QVector<T>>
{
    static QString get() { return QStringLiteral("QVector<%1>").arg(TypeName<T>::get()); }
};
#endif
template<>
struct TypeName<QHash<QString, QString>>
{
    static QString get() { return QStringLiteral("QHash<QString, QString>"); }
};

// What each type of member is filled with, and the value that must travel for it.

void fill(int& member, int number)
{
    member = 1000 + number;
}
void fill(bool& member, int)
{
    member = true;
}
void fill(QString& member, int number)
{
    member = QString::fromUtf8("text %1 \"\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80\"").arg(number);
}
void fill(long long& member, int number)
{
    member = -5000000000LL - number;
}
void fill(unsigned long& member, int number)
{
    member = 4000000000UL + unsigned(number);
}
void fill(QHash<QString, QString>& member, int number)
{
    member.insert(QStringLiteral("name"), QStringLiteral("name %1").arg(number));
    member.insert(QStringLiteral("number"), QString());
}
template<class T>
void fill(T& member, int number);

template<class... M>
void fillAll(std::tuple<M&...> all, int number)
{
    std::apply([&](auto&... member) { (fill(member, number++), ...); }, all);
}

CDataValue travelling(const int& member)
{
    return member;
}
CDataValue travelling(const bool& member)
{
    return member;
}
CDataValue travelling(const QString& member)
{
    return member;
}
CDataValue travelling(const long long& member)
{
    return std::to_string(member);
}
CDataValue travelling(const unsigned long& member)
{
    return std::to_string(member);
}
CDataValue travelling(const QHash<QString, QString>& member)
{
    CDataValue map;
    for (auto it = member.begin(); it != member.end(); ++it)
        map.mapSet(it.key(), CDataValue(it.value()), true);
    return map;
}
template<class T>
CDataValue travelling(const T& member);

template<class T, class = void>
struct HasElements : std::false_type
{
};
template<class T>
struct HasElements<T, std::void_t<typename T::value_type>> : std::true_type
{
};

template<class T>
void fill(T& member, int number)
{
    if constexpr (HasElements<T>::value) {
        for (int i : {0, 1}) {
            member.push_back({});
            fill(member.back(), number + 100 * i);
        }
    } else {
        fillAll(members::of(member), number);
    }
}

template<class T>
CDataValue travelling(const T& member)
{
    CDataValue value;
    if constexpr (HasElements<T>::value) {
        for (const auto& element : member)
            value.arrayAppend(travelling(element), true);
    } else {
        T copy = member;
        auto key = goldenRecord(TypeName<T>::get()).fields.begin();
        std::apply(
            [&](auto&... field) { (value.mapSet((key++)->key, travelling(field), true), ...); },
            members::of(copy));
    }
    return value;
}

template<class T>
Member memberOf(T& member)
{
    return {TypeName<T>::get(), &member, [&member](int number) { fill(member, number); },
            [&member] { member = T{}; }, [&member] { return travelling(member); }};
}

template<class R>
class Object final : public RecordObject
{
public:
    std::vector<Member> members() override
    {
        return std::apply([](auto&... member) { return std::vector<Member>{memberOf(member)...}; },
                          members::of(m_record));
    }
    void fill(int number) override { ::fill(m_record, number); }
    CDataValue travelling() override { return ::travelling(m_record); }
    void write(CDataValue& data) override { GetDataValueFromStruct(m_record, data); }
    void read(CDataValue& data) override { GetStructFromDataValue(data, m_record); }
    bool equals(const RecordObject& other) const override
    {
        const R& record = static_cast<const Object&>(other).m_record;
        const bool equal = m_record == record;
        if ((m_record != record) == equal)
            qFatal("== and != disagree");
        return equal;
    }
    QString printed() const override
    {
        QString text;
        QDebug(&text) << m_record;
        return text;
    }

private:
    R m_record;
};

template<class... R>
std::vector<RecordUnderTest> makeAll(const std::tuple<R...>*)
{
    return {{TypeName<R>::get(), [] { return std::unique_ptr<RecordObject>(new Object<R>); }}...};
}

} // namespace

const std::vector<RecordUnderTest>& recordsUnderTest()
{
    static const std::vector<RecordUnderTest> all = makeAll(static_cast<AllRecords*>(nullptr));
    return all;
}

const RecordUnderTest& recordUnderTest(const QString& name)
{
    for (const RecordUnderTest& record : recordsUnderTest()) {
        if (record.name == name)
            return record;
    }
    qFatal("no record %s", qPrintable(name));
    return recordsUnderTest().front();
}
