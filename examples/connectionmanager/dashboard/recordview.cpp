#include "dashboard/recordview.h"

#include "common/console.h"
#include "common/demomessages.h"
#include "common/envelope.h"
#include "dashboard/recordtext.h"

namespace {

constexpr DeviceSlots::Item Slots[] = {
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
    {DemoMessage::ReportNetworkInfo, "showNetworkReport"},
    {DemoMessage::ReportConnectState, "showConnectionReport"},
};

// "Title    text", further lines of the text below the first.
void print(const char* title, QString text)
{
    text.replace(QLatin1Char('\n'), QLatin1Char('\n') + QString(14, QLatin1Char(' ')));
    Console::say(QStringLiteral("%1%2").arg(QLatin1String(title), -14).arg(text));
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

} // namespace

RecordView::RecordView(QObject* parent)
    : QObject(parent)
    , m_slots(this, Slots)
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

// The answer carries no record.
void RecordView::showSelection(CDataValue* envelope)
{
    const int errorCode = envelope->mapGet("IPCMSG_ERROR_CODE").asInt();
    print("Selection", errorCode == 0 ? QStringLiteral("done") : errorText(errorCode));
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
