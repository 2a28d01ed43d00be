#include "dashboard/recordview.h"

#include "common/console.h"
#include "common/demomessages.h"
#include "common/envelope.h"
#include "dashboard/recordtext.h"

namespace {

constexpr DeviceSlots::Item kSlots[] = {
    {DemoMessage::NetworkInfo, "showNetworkInfo"},
    {DemoMessage::NetworkRegState, "showRegistration"},
    {DemoMessage::NetworkCell, "showCell"},
    {DemoMessage::NetworkList, "showNetworks"},
    {DemoMessage::NetworkSet, "showSelection"},
    {DemoMessage::PinState, "showPinState"},
    {DemoMessage::PinVerify, "showAttempts"},
    {DemoMessage::PinChange, "showAttempts"},
    {DemoMessage::PinEnable, "showAttempts"},
    {DemoMessage::PukVerify, "showAttempts"},
    {DemoMessage::EquipmentInfo, "showEquipment"},
    {DemoMessage::Dial, "showConnection"},
    {DemoMessage::HangUp, "showConnection"},
    {DemoMessage::ConnectState, "showConnection"},
    {DemoMessage::Statistics, "showStatistics"},
    {DemoMessage::SmsList, "showMessages"},
    {DemoMessage::SmsStorage, "showMessageStorage"},
    {DemoMessage::SmsDelete, "showDeletion"},
    {DemoMessage::PbList, "showPhonebook"},
    {DemoMessage::PbAdd, "showAddition"},
    {DemoMessage::PbStorage, "showPhonebookStorage"},
    {DemoMessage::UssdSend, "showUssdSent"},
    {DemoMessage::DiagInfo, "showDiagnosis"},
    {DemoMessage::DiagFindings, "showFindings"},
    {DemoMessage::Cancel, "showCancel"},
    {DemoMessage::ReportNetworkInfo, "showNetworkReport"},
    {DemoMessage::ReportConnectState, "showConnectionReport"},
    {DemoMessage::ReportNewSms, "showNewMessage"},
    {DemoMessage::ReportSmsProgress, "showProgress"},
    {DemoMessage::ReportSmsDeleted, "showDeleted"},
    {DemoMessage::ReportUssd, "showUssd"},
};

// "Title    text", further lines of the text below the first.
QString line(const char* title, QString text)
{
    text.replace(QLatin1Char('\n'), QLatin1Char('\n') + QString(14, QLatin1Char(' ')));
    return QStringLiteral("%1%2").arg(QLatin1String(title), -14).arg(text);
}

void print(const char* title, const QString& text)
{
    Console::say(line(title, text));
}

template<class Record>
void show(const char* title, CDataValue* envelope)
{
    const int errorCode = envelope->mapGet("IPCMSG_ERROR_CODE").asInt();
    if (errorCode != 0)
        print(title, errorText(errorCode));
    else
        print(title, textOf(recordFrom<Record>(envelope->mapGet("IPCMSG_RESPONSE_DATA"))));
}

// An answer that carries no record.
void showDone(const char* title, CDataValue* envelope, const char* success)
{
    const int errorCode = envelope->mapGet("IPCMSG_ERROR_CODE").asInt();
    print(title, errorCode == 0 ? QLatin1String(success) : errorText(errorCode));
}

} // namespace

RecordView::RecordView(QObject* parent)
    : QObject(parent)
    , m_slots(this, kSlots)
{
}

void RecordView::showNetworkInfo(CDataValue* envelope)
{
    show<BLNetworkInfo>("Network", envelope);
}

void RecordView::showRegistration(CDataValue* envelope)
{
    show<BLNetRegState>("Registration", envelope);
}

void RecordView::showCell(CDataValue* envelope)
{
    show<BLNetLacAndCellID>("Cell", envelope);
}

void RecordView::showNetworks(CDataValue* envelope)
{
    show<BLNetworkListCnf>("Networks", envelope);
}

void RecordView::showSelection(CDataValue* envelope)
{
    showDone("Selection", envelope, "done");
}

void RecordView::showPinState(CDataValue* envelope)
{
    show<BLPinCheckState>("PIN", envelope);
}

// The attempts that are left are told with a refusal too.
void RecordView::showAttempts(CDataValue* envelope)
{
    const int errorCode = envelope->mapGet("IPCMSG_ERROR_CODE").asInt();
    QString text = errorCode == 0 ? QStringLiteral("accepted") : errorText(errorCode);
    CDataValue& attempts = envelope->mapGet("IPCMSG_RESPONSE_DATA");
    if (attempts.isObject())
        text += QStringLiteral("; ") + textOf(recordFrom<BLPINInfo>(attempts));
    print("PIN", text);
}

void RecordView::showEquipment(CDataValue* envelope)
{
    show<BLEquipmentInfo>("Equipment", envelope);
}

void RecordView::showConnection(CDataValue* envelope)
{
    show<BLConnectState>("Connection", envelope);
}

void RecordView::showStatistics(CDataValue* envelope)
{
    show<BLGetStatisticsCnf>("Statistics", envelope);
}

void RecordView::showNetworkReport(CDataValue* envelope)
{
    show<BLNetworkInfo>("* Network", envelope);
}

void RecordView::showConnectionReport(CDataValue* envelope)
{
    show<BLConnectState>("* Connection", envelope);
}

void RecordView::showMessages(CDataValue* envelope)
{
    show<BLSmsGetListCnf>("Messages", envelope);
}

void RecordView::showMessageStorage(CDataValue* envelope)
{
    show<BLSmsStorageState>("Messages", envelope);
}

void RecordView::showDeletion(CDataValue* envelope)
{
    showDone("Deletion", envelope, "begun");
}

void RecordView::showPhonebook(CDataValue* envelope)
{
    show<BLPbInitListCnf>("Phonebook", envelope);
}

void RecordView::showAddition(CDataValue* envelope)
{
    show<BLPbAddItemCnf>("Phonebook", envelope);
}

void RecordView::showPhonebookStorage(CDataValue* envelope)
{
    show<BLPbGetStorageInfoCnf>("Phonebook", envelope);
}

void RecordView::showUssdSent(CDataValue* envelope)
{
    showDone("USSD", envelope, "sent");
}

void RecordView::showDiagnosis(CDataValue* envelope)
{
    show<BLDiagInfo>("Diagnosis", envelope);
}

void RecordView::showFindings(CDataValue* envelope)
{
    show<GLDiagInfoList>("Diagnosis", envelope);
}

void RecordView::showCancel(CDataValue* envelope)
{
    showDone("Cancel", envelope, "done");
}

void RecordView::showNewMessage(CDataValue* envelope)
{
    show<BLNewSmsReport>("* Message", envelope);
}

void RecordView::showProgress(CDataValue* envelope)
{
    const auto position = recordFrom<BLSmsProgressBarPos>(envelope->mapGet("IPCMSG_RESPONSE_DATA"));
    Console::sayProgress(line("* Deletion", textOf(position)), position.nCurPos >= position.nTotal);
}

void RecordView::showDeleted(CDataValue* envelope)
{
    show<BLSmsDeleteReturnItem>("* Deletion", envelope);
}

void RecordView::showUssd(CDataValue* envelope)
{
    show<BLUssdReport>("* USSD", envelope);
}
