#include "deviceservice/messageplugin.h"

#include "common/codes.h"
#include "common/demomessages.h"
#include "common/envelope.h"
#include "deviceservice/answer.h"
#include "deviceservice/modem.h"
#include "deviceservice/workqueue.h"

MessagePlugin::MessagePlugin(Modem& modem, WorkQueue& queue, int pace)
    : m_modem(modem)
    , m_queue(queue)
{
    registerMessage(DemoMessage::SmsList, "list", 0, this);
    registerMessage(DemoMessage::SmsStorage, "storage", 0, this);
    registerMessage(DemoMessage::SmsDelete, "remove", 0, this);
    registererUnsolicitedMessage(ModemEvent::NewMessage, "messageArrived", 0, this);
    m_nextStep.setSingleShot(true);
    m_nextStep.setInterval(pace);
    connect(&m_nextStep, &QTimer::timeout, this, [this] { m_queue.add([this] { removeNext(); }); });
}

int MessagePlugin::list(CDataValue& request, CDataValue& response)
{
    // Nothing is stored on the computer here.
    BLSmsGetListCnf messages;
    if (recordFrom<BLSmsGetListReq>(request).blPCOnly)
        return answer(AtError::None, messages, response);
    return answerOnSuccess(m_modem.messages(messages), messages, response);
}

int MessagePlugin::storage(CDataValue&, CDataValue& response)
{
    BLSmsStorageState state;
    return answerOnSuccess(m_modem.messageStorage(state), state, response);
}

int MessagePlugin::remove(CDataValue& request, CDataValue&)
{
    const auto removal = recordFrom<BLSmsDeleteReq>(request);
    if (removal.vRef.isEmpty())
        return DeviceService_Global::atError2IpcError(AtError::IncorrectParameters);
    if (m_isRemoving)
        return DeviceService_Global::atError2IpcError(AtError::OperationNotAllowed);
    m_toRemove = removal.vRef;
    m_total = static_cast<int>(m_toRemove.size());
    m_result = BLSmsDeleteReturnItem();
    setCancelValue(false);
    m_isRemoving = true;
    m_nextStep.start();
    return 0;
}

void MessagePlugin::removeNext()
{
    if (getCancelValue()) {
        reportResult();
        return;
    }
    const int ref = m_toRemove.takeFirst();
    if (m_modem.deleteMessage(ref) == AtError::None)
        m_result.vSuccessRef.append(ref);
    else
        m_result.vFailureRef.append(ref);

    BLSmsProgressBarPos position;
    position.nTotal = m_total;
    position.nCurPos = m_total - static_cast<int>(m_toRemove.size());
    CDataValue data = valueOf(position);
    Q_EMIT sendUnsolicitedReportDirect(QLatin1String(DemoMessage::ReportSmsProgress), &data);
    if (m_toRemove.isEmpty())
        reportResult();
    else
        m_nextStep.start();
}

void MessagePlugin::reportResult()
{
    m_isRemoving = false;
    m_result.vFailureRef += m_toRemove;
    m_toRemove.clear();
    CDataValue data = valueOf(m_result);
    Q_EMIT sendUnsolicitedReportDirect(QLatin1String(DemoMessage::ReportSmsDeleted), &data);
}

int MessagePlugin::messageArrived(QString, CDataValue* data)
{
    BLNewSmsReport report;
    report.tListItem = recordFrom<BLSmsListItem>(*data);
    CDataValue value = valueOf(report);
    Q_EMIT sendUnsolicitedReportDirect(QLatin1String(DemoMessage::ReportNewSms), &value);
    return 0;
}
