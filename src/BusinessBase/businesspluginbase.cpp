#include "BusinessBase/businesspluginbase.h"

#include "LogTask/logline_p.h"
#include "slotcall_p.h"

#include <QHash>

namespace {

constexpr char kLogSource[] = "BusinessBase/businesspluginbase";

struct Handler
{
    SlotCall slot;
    int value; // the plug-in's own
};

// Shared, so that a handler may reset the registrations while it runs.
using Handlers = QHash<QString, std::shared_ptr<Handler>>;

void store(Handlers& handlers, const char* messageID, const char* slot, int value,
           QObject* receiver)
{
    requireNotNull(messageID);
    requireNotNull(slot);
    requireNotNull(receiver);
    handlers.insert(QString::fromLatin1(messageID),
                    std::make_shared<Handler>(Handler{SlotCall(slot, receiver), value}));
}

} // namespace

struct BusinessPluginBase::Registries
{
    Handlers requests;
    Handlers reports;
};

BusinessPluginBase::BusinessPluginBase(QObject* parent)
    : QObject(parent)
    , m_registries(std::make_unique<Registries>())
{
}

BusinessPluginBase::~BusinessPluginBase() = default;

QString BusinessPluginBase::pluginName()
{
    return QString();
}

void BusinessPluginBase::registerMessage(const char* messageID, const char* slot, int value,
                                         QObject* receiver)
{
    store(m_registries->requests, messageID, slot, value, receiver);
}

void BusinessPluginBase::registererUnsolicitedMessage(const char* messageID, const char* slot,
                                                      int value, QObject* receiver)
{
    store(m_registries->reports, messageID, slot, value, receiver);
}

bool BusinessPluginBase::hasRegeditMessage(const QString& messageID) const
{
    return m_registries->requests.contains(messageID);
}

bool BusinessPluginBase::hasRegeditUnsolicitedMessage(const QString& messageID) const
{
    return m_registries->reports.contains(messageID);
}

int BusinessPluginBase::handleMessageComing(const QString& messageID, CDataValue* request,
                                            CDataValue* response)
{
    requireNotNull(request);
    requireNotNull(response);
    int result = NoHandler;
    const std::shared_ptr<Handler> handler = m_registries->requests.value(messageID);
    if (!handler)
        return result;
    logLine(kLogSource, "handleMessageComing", messageID, handler->slot.slot().constData());
    handler->slot.call(QGenericReturnArgument("int", &result),
                       QGenericArgument("CDataValue&", request),
                       QGenericArgument("CDataValue&", response));
    return result;
}

int BusinessPluginBase::handleUnsolicitedReport(const QString& messageID, QString& text,
                                                CDataValue* data)
{
    requireNotNull(data);
    int result = NoHandler;
    const std::shared_ptr<Handler> handler = m_registries->reports.value(messageID);
    if (handler)
        handler->slot.call(QGenericReturnArgument("int", &result),
                           QGenericArgument("QString", &text),
                           QGenericArgument("CDataValue*", &data));
    return result;
}

void BusinessPluginBase::resetMessageMap()
{
    m_registries->requests.clear();
}

void BusinessPluginBase::resetUnsolicitedMessageMap()
{
    m_registries->reports.clear();
}

void BusinessPluginBase::onCancelMessage(QString messageID)
{
    if (hasRegeditMessage(messageID))
        m_cancelled = true;
}
