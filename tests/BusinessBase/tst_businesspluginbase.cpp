#include "BusinessBase/businesspluginbase.h"
#include "support/logcapture.h"

#include <QtTest>

#include <functional>
#include <memory>
#include <new>

/// A plug-in whose handlers note that they ran.
class PinPlugin : public BusinessPluginBase
{
    Q_OBJECT

public:
    QStringList ran;
    std::function<void()> whileHandling;

    QString pluginName() override { return "Pin"; }
    void clearCancel() { setCancelValue(false); }

public Q_SLOTS:
    int pinStatus(CDataValue& request, CDataValue& response)
    {
        ran << "pinStatus";
        response.mapSet("asked", request, true);
        request = CDataValue("read");
        if (whileHandling)
            whileHandling();
        return 3;
    }
    int pinUnlock(CDataValue&, CDataValue&)
    {
        ran << "pinUnlock";
        return 0;
    }
    void returnsNothing(CDataValue&, CDataValue&) { ran << "returnsNothing"; }
    int takesPointers(CDataValue*, CDataValue*)
    {
        ran << "takesPointers";
        return 1;
    }
    int onReport(QString text, CDataValue* data)
    {
        ran << "onReport " + text;
        *data = CDataValue("seen");
        text = "changed here only";
        if (whileHandling)
            whileHandling();
        return 5;
    }
    int onReportByReference(const QString& text, CDataValue*)
    {
        ran << "onReportByReference " + text;
        return 6;
    }

private Q_SLOTS:
    int ofPrivateUse(CDataValue&, CDataValue&)
    {
        ran << "ofPrivateUse";
        return 8;
    }
};

class tst_businesspluginbase : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void listsEveryFormOfItsSignalsAndSlots();
    void theBaseHasNoName();
    void answersARequestThroughItsSlot();
    void logsARequestWithItsSlot();
    void handlesAReportThroughItsSlot();
    void logsNothingForAReport();
    void anUnknownIdentifierGives42();
    void aSlotThatDoesNotFitGives42_data();
    void aSlotThatDoesNotFitGives42();
    void privateSlotsCount();
    void theSecondRegistrationReplacesTheFirst();
    void requestsAndReportsAreSeparate();
    void resetsRequestsAndReportsSeparately();
    void anotherReceiverMayHandle();
    void aDestroyedReceiverGives42();
    void aHandlerMayResetAndRegister();
    void aHandlerMayHandleFurtherRequests();
    void cancelsOnlyWhatIsRegistered();
    void theCancelFlagStaysUntilThePluginClearsIt();
    void pushesReports();
    void refusesNullAsIfMemoryWereShort();

private:
    int handle(PinPlugin& plugin, const QString& messageID)
    {
        CDataValue request;
        CDataValue response;
        return plugin.handleMessageComing(messageID, &request, &response);
    }
    int report(PinPlugin& plugin, const QString& messageID)
    {
        QString text("text");
        CDataValue data;
        return plugin.handleUnsolicitedReport(messageID, text, &data);
    }
};

void tst_businesspluginbase::listsEveryFormOfItsSignalsAndSlots()
{
    const QMetaObject& meta = BusinessPluginBase::staticMetaObject;
    QVERIFY(meta.indexOfSignal("sendUnsolicitedReportDirect(QString,CDataValue*,int)") >= 0);
    QVERIFY(meta.indexOfSignal("sendUnsolicitedReportDirect(QString,CDataValue*)") >= 0);
    QVERIFY(meta.indexOfSlot("onCancelMessage(QString)") >= 0);
    QCOMPARE(meta.methodCount() - meta.methodOffset(), 3);
}

void tst_businesspluginbase::theBaseHasNoName()
{
    BusinessPluginBase base;
    QVERIFY(base.pluginName().isEmpty());
    PinPlugin plugin;
    BusinessPluginBase& asBase = plugin;
    QCOMPARE(asBase.pluginName(), QString("Pin"));
}

void tst_businesspluginbase::answersARequestThroughItsSlot()
{
    PinPlugin plugin;
    plugin.registerMessage("PIN_STATUS", "pinStatus", -7, &plugin);
    QVERIFY(plugin.hasRegeditMessage("PIN_STATUS"));
    CDataValue request("question");
    CDataValue response(MAP_VALUE);
    QCOMPARE(plugin.handleMessageComing("PIN_STATUS", &request, &response), 3);
    QCOMPARE(response.parseToQString(FAST_STYLE), QString("{\"asked\":\"question\"}\n"));
    QCOMPARE(request.asQString(), QString("read"));
    QCOMPARE(plugin.ran, QStringList("pinStatus"));
}

void tst_businesspluginbase::logsARequestWithItsSlot()
{
    LogCapture log;
    PinPlugin plugin;
    plugin.registerMessage("PIN_STATUS", "pinStatus", 0, &plugin);
    handle(plugin, "PIN_STATUS");
    QCOMPARE(log.count("BusinessBase/businesspluginbase handleMessageComing PIN_STATUS pinStatus "),
             1);
    log.clear();
    handle(plugin, "UNKNOWN");
    QCOMPARE(log.lines(), QStringList());
}

void tst_businesspluginbase::handlesAReportThroughItsSlot()
{
    PinPlugin plugin;
    plugin.registererUnsolicitedMessage("RING", "onReport", 0, &plugin);
    plugin.registererUnsolicitedMessage("CREG", "onReportByReference", 0, &plugin);
    QVERIFY(plugin.hasRegeditUnsolicitedMessage("RING"));
    QString text("+CRING: VOICE");
    CDataValue data;
    QCOMPARE(plugin.handleUnsolicitedReport("RING", text, &data), 5);
    QCOMPARE(plugin.handleUnsolicitedReport("CREG", text, &data), 6);
    QCOMPARE(text, QString("+CRING: VOICE"));
    QCOMPARE(data.asQString(), QString("seen"));
    QCOMPARE(plugin.ran,
             QStringList({"onReport +CRING: VOICE", "onReportByReference +CRING: VOICE"}));
}

void tst_businesspluginbase::logsNothingForAReport()
{
    LogCapture log;
    PinPlugin plugin;
    plugin.registererUnsolicitedMessage("RING", "onReport", 0, &plugin);
    QCOMPARE(report(plugin, "RING"), 5);
    QCOMPARE(log.lines(), QStringList());
}

void tst_businesspluginbase::anUnknownIdentifierGives42()
{
    PinPlugin plugin;
    plugin.registerMessage("PIN_STATUS", "pinStatus", 0, &plugin);
    plugin.registererUnsolicitedMessage("RING", "onReport", 0, &plugin);
    for (const char* unknown : {"OTHER", "pin_status", "PIN_STATUS ", ""}) {
        QVERIFY(!plugin.hasRegeditMessage(unknown));
        QVERIFY(!plugin.hasRegeditUnsolicitedMessage(unknown));
        QCOMPARE(handle(plugin, unknown), 42);
        QCOMPARE(report(plugin, unknown), 42);
    }
    QCOMPARE(plugin.ran, QStringList());
}

void tst_businesspluginbase::aSlotThatDoesNotFitGives42_data()
{
    QTest::addColumn<QByteArray>("slot");
    for (const char* slot : {"missing", "", "returnsNothing", "takesPointers", "onCancelMessage",
                             "pinStatus(CDataValue&,CDataValue&)"})
        QTest::newRow(*slot ? slot : "(empty)") << QByteArray(slot);
}

void tst_businesspluginbase::aSlotThatDoesNotFitGives42()
{
    QFETCH(QByteArray, slot);
    PinPlugin plugin;
    plugin.registerMessage("PIN_STATUS", slot.constData(), 0, &plugin);
    plugin.registererUnsolicitedMessage("PIN_STATUS", slot.constData(), 0, &plugin);
    QVERIFY(plugin.hasRegeditMessage("PIN_STATUS"));
    QCOMPARE(handle(plugin, "PIN_STATUS"), 42);
    QCOMPARE(report(plugin, "PIN_STATUS"), 42);
    QCOMPARE(plugin.ran, QStringList());
}

void tst_businesspluginbase::privateSlotsCount()
{
    PinPlugin plugin;
    plugin.registerMessage("PIN_STATUS", "ofPrivateUse", 0, &plugin);
    QCOMPARE(handle(plugin, "PIN_STATUS"), 8);
}

void tst_businesspluginbase::theSecondRegistrationReplacesTheFirst()
{
    PinPlugin plugin;
    plugin.registerMessage("PIN", "pinStatus", 1, &plugin);
    plugin.registerMessage("PIN", "pinUnlock", 2, &plugin);
    plugin.registererUnsolicitedMessage("RING", "onReport", 1, &plugin);
    plugin.registererUnsolicitedMessage("RING", "onReportByReference", 2, &plugin);
    QCOMPARE(handle(plugin, "PIN"), 0);
    QCOMPARE(report(plugin, "RING"), 6);
    QCOMPARE(plugin.ran, QStringList({"pinUnlock", "onReportByReference text"}));
}

void tst_businesspluginbase::requestsAndReportsAreSeparate()
{
    PinPlugin plugin;
    plugin.registerMessage("PIN", "pinUnlock", 0, &plugin);
    plugin.registererUnsolicitedMessage("RING", "onReport", 0, &plugin);
    QVERIFY(!plugin.hasRegeditMessage("RING"));
    QVERIFY(!plugin.hasRegeditUnsolicitedMessage("PIN"));
    QCOMPARE(handle(plugin, "RING"), 42);
    QCOMPARE(report(plugin, "PIN"), 42);
}

void tst_businesspluginbase::resetsRequestsAndReportsSeparately()
{
    PinPlugin plugin;
    plugin.registerMessage("PIN", "pinUnlock", 0, &plugin);
    plugin.registererUnsolicitedMessage("PIN", "onReport", 0, &plugin);
    plugin.resetMessageMap();
    QVERIFY(!plugin.hasRegeditMessage("PIN"));
    QCOMPARE(handle(plugin, "PIN"), 42);
    QCOMPARE(report(plugin, "PIN"), 5);
    plugin.registerMessage("PIN", "pinUnlock", 0, &plugin);
    plugin.resetUnsolicitedMessageMap();
    QVERIFY(!plugin.hasRegeditUnsolicitedMessage("PIN"));
    QCOMPARE(report(plugin, "PIN"), 42);
    QCOMPARE(handle(plugin, "PIN"), 0);
}

void tst_businesspluginbase::anotherReceiverMayHandle()
{
    PinPlugin plugin;
    PinPlugin other;
    plugin.registerMessage("PIN", "pinUnlock", 0, &other);
    QCOMPARE(handle(plugin, "PIN"), 0);
    QCOMPARE(plugin.ran, QStringList());
    QCOMPARE(other.ran, QStringList("pinUnlock"));
}

void tst_businesspluginbase::aDestroyedReceiverGives42()
{
    PinPlugin plugin;
    auto gone = std::make_unique<PinPlugin>();
    plugin.registerMessage("PIN", "pinUnlock", 0, gone.get());
    plugin.registererUnsolicitedMessage("RING", "onReport", 0, gone.get());
    QCOMPARE(handle(plugin, "PIN"), 0);
    gone.reset();
    QCOMPARE(handle(plugin, "PIN"), 42);
    QCOMPARE(report(plugin, "RING"), 42);
}

void tst_businesspluginbase::aHandlerMayResetAndRegister()
{
    PinPlugin plugin;
    plugin.registerMessage("PIN", "pinStatus", 0, &plugin);
    plugin.registererUnsolicitedMessage("PIN", "onReport", 0, &plugin);
    plugin.whileHandling = [&] {
        plugin.resetMessageMap();
        plugin.resetUnsolicitedMessageMap();
        plugin.registerMessage("PIN", "pinUnlock", 0, &plugin);
        plugin.registererUnsolicitedMessage("PIN", "onReport", 0, &plugin);
    };
    QCOMPARE(handle(plugin, "PIN"), 3);
    QCOMPARE(report(plugin, "PIN"), 5);
    QCOMPARE(handle(plugin, "PIN"), 0);
    QCOMPARE(report(plugin, "PIN"), 5);
}

void tst_businesspluginbase::aHandlerMayHandleFurtherRequests()
{
    PinPlugin plugin;
    plugin.registerMessage("PIN", "pinStatus", 0, &plugin);
    plugin.registerMessage("UNLOCK", "pinUnlock", 0, &plugin);
    int inner = -1;
    plugin.whileHandling = [&] { inner = handle(plugin, "UNLOCK"); };
    QCOMPARE(handle(plugin, "PIN"), 3);
    QCOMPARE(inner, 0);
    QCOMPARE(plugin.ran, QStringList({"pinStatus", "pinUnlock"}));
}

void tst_businesspluginbase::cancelsOnlyWhatIsRegistered()
{
    PinPlugin plugin;
    QVERIFY(!plugin.getCancelValue());
    plugin.onCancelMessage("PIN");
    QVERIFY(!plugin.getCancelValue());
    plugin.registererUnsolicitedMessage("PIN", "onReport", 0, &plugin);
    plugin.onCancelMessage("PIN");
    QVERIFY(!plugin.getCancelValue());
    plugin.registerMessage("PIN", "pinUnlock", 0, &plugin);
    plugin.onCancelMessage("OTHER");
    QVERIFY(!plugin.getCancelValue());
    plugin.onCancelMessage("PIN");
    QVERIFY(plugin.getCancelValue());
}

void tst_businesspluginbase::theCancelFlagStaysUntilThePluginClearsIt()
{
    PinPlugin plugin;
    plugin.registerMessage("PIN", "pinUnlock", 0, &plugin);
    plugin.onCancelMessage("PIN");
    handle(plugin, "PIN");
    plugin.onCancelMessage("OTHER");
    plugin.resetMessageMap();
    QVERIFY(plugin.getCancelValue());
    plugin.clearCancel();
    QVERIFY(!plugin.getCancelValue());
}

/// Takes reports in the form without an error code.
class ShortFormHost : public QObject
{
    Q_OBJECT

public:
    QStringList seen;

public Q_SLOTS:
    void take(const QString& messageID, CDataValue* data) { seen << messageID + data->asQString(); }
};

void tst_businesspluginbase::pushesReports()
{
    PinPlugin plugin;
    ShortFormHost host;
    int error = -1;
    connect(&plugin, &BusinessPluginBase::sendUnsolicitedReportDirect, this,
            [&](const QString&, CDataValue*, int nError) { error = nError; });
    QVERIFY(connect(&plugin, SIGNAL(sendUnsolicitedReportDirect(QString, CDataValue*)), &host,
                    SLOT(take(QString, CDataValue*))));
    CDataValue data("!");
    Q_EMIT plugin.sendUnsolicitedReportDirect("SIGNAL", &data);
    QCOMPARE(error, 0);
    Q_EMIT plugin.sendUnsolicitedReportDirect("SIGNAL", &data, 17);
    QCOMPARE(error, 17);
    QCOMPARE(host.seen, QStringList({"SIGNAL!", "SIGNAL!"}));
}

void tst_businesspluginbase::refusesNullAsIfMemoryWereShort()
{
    PinPlugin plugin;
    CDataValue value;
    QString text;
    const auto id = "PIN";
    const auto slot = "pinUnlock";
    QVERIFY_EXCEPTION_THROWN(plugin.registerMessage(nullptr, slot, 0, &plugin), std::bad_alloc);
    QVERIFY_EXCEPTION_THROWN(plugin.registerMessage(id, nullptr, 0, &plugin), std::bad_alloc);
    QVERIFY_EXCEPTION_THROWN(plugin.registerMessage(id, slot, 0, nullptr), std::bad_alloc);
    QVERIFY_EXCEPTION_THROWN(plugin.registererUnsolicitedMessage(nullptr, slot, 0, &plugin),
                             std::bad_alloc);
    QVERIFY_EXCEPTION_THROWN(plugin.registererUnsolicitedMessage(id, nullptr, 0, &plugin),
                             std::bad_alloc);
    QVERIFY_EXCEPTION_THROWN(plugin.registererUnsolicitedMessage(id, slot, 0, nullptr),
                             std::bad_alloc);
    QVERIFY(!plugin.hasRegeditMessage(id));
    QVERIFY(!plugin.hasRegeditUnsolicitedMessage(id));
    QVERIFY_EXCEPTION_THROWN(plugin.handleMessageComing(id, nullptr, &value), std::bad_alloc);
    QVERIFY_EXCEPTION_THROWN(plugin.handleMessageComing(id, &value, nullptr), std::bad_alloc);
    QVERIFY_EXCEPTION_THROWN(plugin.handleUnsolicitedReport(id, text, nullptr), std::bad_alloc);
}

QTEST_APPLESS_MAIN(tst_businesspluginbase)
#include "tst_businesspluginbase.moc"
