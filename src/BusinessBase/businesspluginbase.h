#ifndef BUSINESSBASE_BUSINESSPLUGINBASE_H
#define BUSINESSBASE_BUSINESSPLUGINBASE_H

#include "DataValue/datavalue.h"
#include "wzrframework_export.h"

#include <QObject>
#include <QString>

#include <memory>

/// Base of the business plug-ins of a device service.
///
/// A plug-in declares which of its slots handles which request and which unsolicited report. Its
/// host asks whether an identifier is known and lets the base call the slot by name.
///
///     class PinPlugin : public BusinessPluginBase
///     {
///         Q_OBJECT
///     public:
///         PinPlugin() { registerMessage("PIN_STATUS", "pinStatus", 0, this); }
///         QString pluginName() override { return "Pin"; }
///     private Q_SLOTS:
///         int pinStatus(CDataValue& request, CDataValue& response);
///     };
///
/// Slots are given as bare names and are found by the rules of QMetaObject::invokeMethod(), the
/// return type included: a slot that returns no `int` is not called.
///
/// **Threads.** The thread of the plug-in's host; calls are direct and synchronous; no locks. A
/// handler may register, reset and post further requests.
///
/// **Ownership.** Receivers and values stay their owners'. A receiver that was destroyed counts
/// as one without a handler.
///
/// **Failure.** Null pointers throw std::bad_alloc where a function says so: that is meant.
class WZRFRAMEWORK_EXPORT BusinessPluginBase : public QObject
{
    Q_OBJECT

public:
    /// What both handlers return when there is no handler. It is none of the ordinary results.
    static constexpr int NoHandler = 42;

    explicit BusinessPluginBase(QObject* parent = nullptr);
    ~BusinessPluginBase() override;

    /// The name of the plug-in; empty unless overridden.
    virtual QString pluginName();

    /// Lets `slot` of `receiver` handle the request, in place of an earlier registration:
    /// int slot(CDataValue& request, CDataValue& response). `value` is the plug-in's own; the
    /// base does not read it.
    /// @throws std::bad_alloc for a null identifier, slot name or receiver.
    void registerMessage(const char* messageID, const char* slot, int value, QObject* receiver);
    /// Lets `slot` of `receiver` handle the unsolicited report, in place of an earlier
    /// registration: int slot(QString text, CDataValue* data).
    /// @throws std::bad_alloc for a null identifier, slot name or receiver.
    void registererUnsolicitedMessage(const char* messageID, const char* slot, int value,
                                      QObject* receiver);

    bool hasRegeditMessage(const QString& messageID) const;
    bool hasRegeditUnsolicitedMessage(const QString& messageID) const;

    /// Calls the handler of the request, which fills `response` in place, and returns its result
    /// (0 for success); NoHandler when the identifier is unknown or the slot does not fit.
    /// @throws std::bad_alloc for a null request or response.
    int handleMessageComing(const QString& messageID, CDataValue* request, CDataValue* response);
    /// Calls the handler of the report and returns its result; NoHandler as above.
    /// @throws std::bad_alloc for null data.
    int handleUnsolicitedReport(const QString& messageID, QString& text, CDataValue* data);

    /// Removes all request handlers.
    void resetMessageMap();
    /// Removes all report handlers.
    void resetUnsolicitedMessageMap();

    /// Whether a request was cancelled since the flag was last cleared. False at first.
    bool getCancelValue() const { return m_cancelled; }

public Q_SLOTS:
    /// Sets the cancel flag when `messageID` has a request handler, running or not. A host
    /// delivers it between two steps of a long request.
    void onCancelMessage(QString messageID);

Q_SIGNALS:
    /// An unsolicited report for the host to pass on at once. `dataValue` is valid during the
    /// emission only; `nError` is the report's "IPCMSG_ERROR_CODE".
    void sendUnsolicitedReportDirect(QString strMessage, CDataValue* dataValue, int nError = 0);

protected:
    /// Sets or clears the cancel flag. The base never clears it: a plug-in that polls the flag
    /// during a long request clears it itself.
    void setCancelValue(bool cancelled) { m_cancelled = cancelled; }

private:
    struct Registries;
    bool m_cancelled = false;
    std::unique_ptr<Registries> m_registries;
};

#endif
