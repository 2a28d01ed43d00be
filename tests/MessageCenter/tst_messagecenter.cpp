#include "MessageCenter/messagecenter.h"
#include "support/logcapture.h"

#include <QPointer>
#include <QtTest>

#include <functional>
#include <memory>
#include <new>

using Operation = std::function<void(QObject*)>;
Q_DECLARE_METATYPE(Operation)

namespace {

MessageCenter* center()
{
    return MessageCenter::defaultCenter();
}

} // namespace

/// A module: notes in a common diary which of its slots ran and with what.
class Module : public QObject
{
    Q_OBJECT

public:
    Module(const QString& name, QStringList* diary)
        : m_name(name)
        , m_diary(diary)
    {
    }

    std::function<void()> whileCalled;
    CDataValue* lastValue = nullptr;

public Q_SLOTS:
    void onMessage(CDataValue* value) { note("onMessage", value); }
    void onOther(CDataValue* value) { note("onOther", value); }
    void change(CDataValue* value)
    {
        note("change", value);
        value->mapSet("changedBy", CDataValue(m_name), true);
    }
    CDataValue provide(CDataValue* request)
    {
        note("provide", request);
        return CDataValue(m_name + " was asked");
    }
    int provideNumber(CDataValue* request)
    {
        note("provideNumber", request);
        return 7;
    }

private:
    void note(const char* slot, CDataValue* value)
    {
        lastValue = value;
        *m_diary << m_name + '.' + slot;
        if (whileCalled)
            whileCalled();
    }

    QString m_name;
    QStringList* m_diary;
};

class tst_messagecenter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_diary.clear(); }
    void cleanup() { MessageCenter::release(); }

    void listsEveryFormOfItsSignalsAndSlots();
    void isOneCenterUntilItIsReleased();
    void releaseWithoutACenterDoesNothing();

    void postWithoutReceiversIsRefusedAndLogged();
    void callsReceiversInTheOrderOfRegistration();
    void callsTwiceWhoRegisteredTwice();
    void unregisteringRemovesOneRegistrationOnly();
    void keepsTheIdentifierOfAnEmptyList();
    void unregisteringTheUnknownDoesNothing();
    void comparesIdentifiersExactly();
    void passesThePostersOwnValue();
    void passesANullValue();
    void passesOverSlotsThatDoNotFit();

    void servicesAnswerWithTheirValue();
    void serviceWithoutAProviderIsNullAndLogged();
    void aSecondProviderReplacesTheFirst();
    void anUnregisteredServiceIsUnknown();
    void aServiceThatReturnsNoValueIsNotCalled();

    void deviceMessagesReachTheirReceiversWhole();
    void anUnknownEnvelopeIsLogged_data();
    void anUnknownEnvelopeIsLogged();
    void identifiersOfEnvelopesAreLatin1();
    void identifiersOfEnvelopesBeginBehindAByteOrderMark();
    void theRegistriesAreSeparate();
    void resettingModulesKeepsDevices();
    void resettingDevicesKeepsModules();

    void announcesDeviceMessages();
    void announcesDeviceMessagesInTheShortForm();

    void slotsMayPostAgain();
    void whoRegistersDuringAPostIsCalledFromTheNextOn();
    void whoIsUnregisteredDuringAPostIsNotCalledAnyMore();
    void aResetDuringAPostEndsIt();
    void theCenterMayBeReleasedDuringAPost();
    void aProviderMayBeReplacedWhileItWorks();
    void aReceiverMayBeDestroyedDuringAPost();
    void passesOverReceiversThatWentWithoutUnregistering();
    void aNewReceiverAtAnOldAddressIsItsOwn();

    void refusesNullAsIfMemoryWereShort_data();
    void refusesNullAsIfMemoryWereShort();
    void toleratesNullElsewhere();

private:
    QStringList m_diary;
};

void tst_messagecenter::listsEveryFormOfItsSignalsAndSlots()
{
    const QMetaObject& meta = MessageCenter::staticMetaObject;
    for (const char* signal : {"sigDeviceMessageSend(const char*,const CDataValue*,const char*)",
                               "sigDeviceMessageSend(const char*,const CDataValue*)"})
        QVERIFY2(meta.indexOfSignal(signal) >= 0, signal);
    QVERIFY(meta.indexOfSlot("messageReceived(CDataValue*)") >= 0);
    QCOMPARE(meta.methodCount() - meta.methodOffset(), 3);
}

void tst_messagecenter::isOneCenterUntilItIsReleased()
{
    Module module("a", &m_diary);
    const QPointer<MessageCenter> first = center();
    QCOMPARE(center(), first.data());
    QVERIFY(!first->parent());
    center()->registerModuleMessage("NEWS", "onMessage", &module);
    MessageCenter::release();
    QVERIFY(first.isNull());
    QCOMPARE(center()->postModuleMessage("NEWS", nullptr), -1);
    QCOMPARE(m_diary, QStringList());
}

void tst_messagecenter::releaseWithoutACenterDoesNothing()
{
    MessageCenter::release();
    MessageCenter::release();
    QVERIFY(center());
}

void tst_messagecenter::postWithoutReceiversIsRefusedAndLogged()
{
    LogCapture log;
    const CDataValue value(1);
    QCOMPARE(center()->postModuleMessage("NOBODY", &value), -1);
    QCOMPARE(log.count("MessageCenter/messagecenter postModuleMessage No message id found!! "), 1);
}

void tst_messagecenter::callsReceiversInTheOrderOfRegistration()
{
    LogCapture log;
    Module a("a", &m_diary);
    Module b("b", &m_diary);
    Module c("c", &m_diary);
    QCOMPARE(center()->registerModuleMessage("NEWS", "onMessage", &b), 0);
    QCOMPARE(center()->registerModuleMessage("OTHER", "onMessage", &a), 0);
    QCOMPARE(center()->registerModuleMessage("NEWS", "onOther", &c), 0);
    QCOMPARE(center()->registerModuleMessage("NEWS", "onMessage", &a), 0);
    const CDataValue value(1);
    QCOMPARE(center()->postModuleMessage("NEWS", &value), 0);
    QCOMPARE(m_diary, QStringList({"b.onMessage", "c.onOther", "a.onMessage"}));
    QCOMPARE(log.lines(), QStringList());
}

void tst_messagecenter::callsTwiceWhoRegisteredTwice()
{
    Module a("a", &m_diary);
    Module b("b", &m_diary);
    center()->registerModuleMessage("NEWS", "onMessage", &a);
    center()->registerModuleMessage("NEWS", "onMessage", &b);
    center()->registerModuleMessage("NEWS", "onMessage", &a);
    center()->postModuleMessage("NEWS", nullptr);
    QCOMPARE(m_diary, QStringList({"a.onMessage", "b.onMessage", "a.onMessage"}));
}

void tst_messagecenter::unregisteringRemovesOneRegistrationOnly()
{
    Module a("a", &m_diary);
    Module b("b", &m_diary);
    center()->registerModuleMessage("NEWS", "onMessage", &a);
    center()->registerModuleMessage("NEWS", "onMessage", &b);
    center()->registerModuleMessage("NEWS", "onOther", &a);
    QCOMPARE(center()->unregisterModuleMessage("NEWS", &a), 0);
    center()->postModuleMessage("NEWS", nullptr);
    QCOMPARE(m_diary, QStringList({"b.onMessage", "a.onOther"}));

    m_diary.clear();
    center()->registerDeviceMessage("NEWS", "onMessage", &a);
    center()->registerDeviceMessage("NEWS", "onOther", &a);
    QCOMPARE(center()->unregisterDeviceMessage("NEWS", &a), 0);
    CDataValue envelope(MAP_VALUE);
    envelope.mapSet("IPCMSG_TYPE", CDataValue("NEWS"), true);
    center()->messageReceived(&envelope);
    QCOMPARE(m_diary, QStringList({"a.onOther"}));
}

void tst_messagecenter::keepsTheIdentifierOfAnEmptyList()
{
    LogCapture log;
    Module a("a", &m_diary);
    center()->registerModuleMessage("NEWS", "onMessage", &a);
    center()->unregisterModuleMessage("NEWS", &a);
    QCOMPARE(center()->postModuleMessage("NEWS", nullptr), 0);
    QCOMPARE(m_diary, QStringList());
    QCOMPARE(log.lines(), QStringList());
}

void tst_messagecenter::unregisteringTheUnknownDoesNothing()
{
    Module a("a", &m_diary);
    Module b("b", &m_diary);
    center()->registerModuleMessage("NEWS", "onMessage", &a);
    QCOMPARE(center()->unregisterModuleMessage("NEWS", &b), 0);
    QCOMPARE(center()->unregisterModuleMessage("OTHER", &a), 0);
    QCOMPARE(center()->unregisterDeviceMessage("NEWS", &a), 0);
    QCOMPARE(center()->unregisterModuleServiceMessage("NEWS"), 0);
    QCOMPARE(center()->postModuleMessage("NEWS", nullptr), 0);
    QCOMPARE(center()->postModuleMessage("OTHER", nullptr), -1);
    QCOMPARE(m_diary, QStringList({"a.onMessage"}));
}

void tst_messagecenter::comparesIdentifiersExactly()
{
    Module a("a", &m_diary);
    center()->registerModuleMessage("NEWS", "onMessage", &a);
    center()->registerModuleMessage("", "onOther", &a);
    for (const char* other : {"news", "NEWS ", "NEW", "NEWSS"})
        QCOMPARE(center()->postModuleMessage(other, nullptr), -1);
    QCOMPARE(center()->postModuleMessage("", nullptr), 0);
    QCOMPARE(m_diary, QStringList({"a.onOther"}));
}

void tst_messagecenter::passesThePostersOwnValue()
{
    Module a("a", &m_diary);
    Module b("b", &m_diary);
    center()->registerModuleMessage("NEWS", "change", &a);
    center()->registerModuleMessage("NEWS", "onMessage", &b);
    CDataValue value(MAP_VALUE);
    center()->postModuleMessage("NEWS", &value);
    QCOMPARE(a.lastValue, &value);
    QCOMPARE(b.lastValue, &value);
    QCOMPARE(value.parseToQString(FAST_STYLE), QString("{\"changedBy\":\"a\"}\n"));
}

void tst_messagecenter::passesANullValue()
{
    Module a("a", &m_diary);
    CDataValue value;
    a.lastValue = &value;
    center()->registerModuleMessage("NEWS", "onMessage", &a);
    QCOMPARE(center()->postModuleMessage("NEWS", nullptr), 0);
    QVERIFY(!a.lastValue);
}

void tst_messagecenter::passesOverSlotsThatDoNotFit()
{
    Module a("a", &m_diary);
    center()->registerModuleMessage("NEWS", "missing", &a);
    center()->registerModuleMessage("NEWS", "", &a);
    center()->registerModuleMessage("NEWS", "onMessage(CDataValue*)", &a);
    center()->registerModuleMessage("NEWS", "provideNumber", &a);
    center()->registerModuleMessage("NEWS", "deleteLater", &a);
    center()->registerModuleMessage("NEWS", "onMessage", &a);
    QCOMPARE(center()->postModuleMessage("NEWS", nullptr), 0);
    QCOMPARE(m_diary, QStringList({"a.provideNumber", "a.onMessage"}));
}

void tst_messagecenter::servicesAnswerWithTheirValue()
{
    Module a("a", &m_diary);
    QCOMPARE(center()->registerModuleServiceMessage("SERVICE", "provide", &a), 0);
    CDataValue request("question");
    const CDataValue result = center()->InvokeModuleServiceByMessage("SERVICE", &request);
    QCOMPARE(a.lastValue, &request);
    QCOMPARE(result.asQString(), QString("a was asked"));
}

void tst_messagecenter::serviceWithoutAProviderIsNullAndLogged()
{
    LogCapture log;
    const CDataValue request("question");
    QVERIFY(center()->InvokeModuleServiceByMessage("SERVICE", &request).isNull());
    QCOMPARE(log.count("MessageCenter/messagecenter InvokeModuleServiceByMessage "
                       "No message id found!! "),
             1);
}

void tst_messagecenter::aSecondProviderReplacesTheFirst()
{
    Module a("a", &m_diary);
    Module b("b", &m_diary);
    center()->registerModuleServiceMessage("SERVICE", "provide", &a);
    center()->registerModuleServiceMessage("SERVICE", "provide", &b);
    const CDataValue result = center()->InvokeModuleServiceByMessage("SERVICE", nullptr);
    QCOMPARE(result.asQString(), QString("b was asked"));
    QCOMPARE(m_diary, QStringList({"b.provide"}));
}

void tst_messagecenter::anUnregisteredServiceIsUnknown()
{
    LogCapture log;
    Module a("a", &m_diary);
    center()->registerModuleServiceMessage("SERVICE", "provide", &a);
    QCOMPARE(center()->unregisterModuleServiceMessage("SERVICE"), 0);
    QVERIFY(center()->InvokeModuleServiceByMessage("SERVICE", nullptr).isNull());
    QCOMPARE(m_diary, QStringList());
    QCOMPARE(log.count("No message id found!!"), 1);
}

void tst_messagecenter::aServiceThatReturnsNoValueIsNotCalled()
{
    LogCapture log;
    Module a("a", &m_diary);
    for (const char* slot : {"onMessage", "provideNumber", "missing"}) {
        center()->registerModuleServiceMessage("SERVICE", slot, &a);
        QVERIFY(center()->InvokeModuleServiceByMessage("SERVICE", nullptr).isNull());
    }
    QCOMPARE(m_diary, QStringList());
    QCOMPARE(log.lines(), QStringList());
}

void tst_messagecenter::deviceMessagesReachTheirReceiversWhole()
{
    Module a("a", &m_diary);
    Module b("b", &m_diary);
    QCOMPARE(center()->registerDeviceMessage("SIGNAL", "onMessage", &b), 0);
    QCOMPARE(center()->registerDeviceMessage("SIGNAL", "onMessage", &a), 0);
    CDataValue envelope(MAP_VALUE);
    envelope.mapSet("IPCMSG_TYPE", CDataValue("SIGNAL"), true);
    envelope.mapSet("IPCMSG_RESPONSE_DATA", CDataValue(17), true);
    center()->messageReceived(&envelope);
    QCOMPARE(m_diary, QStringList({"b.onMessage", "a.onMessage"}));
    QCOMPARE(a.lastValue, &envelope);
    QCOMPARE(b.lastValue, &envelope);
}

void tst_messagecenter::anUnknownEnvelopeIsLogged_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("unknown identifier") << "{\"IPCMSG_TYPE\":\"OTHER\"}";
    QTest::newRow("no identifier") << "{\"IPCMSG_ERROR_CODE\":0}";
    QTest::newRow("a number") << "{\"IPCMSG_TYPE\":5}";
    QTest::newRow("a map") << "{\"IPCMSG_TYPE\":{\"SIGNAL\":1}}";
    QTest::newRow("no map") << "[\"SIGNAL\"]";
    QTest::newRow("null") << "null";
    QTest::newRow("nothing") << QString();
}

void tst_messagecenter::anUnknownEnvelopeIsLogged()
{
    QFETCH(QString, text);
    LogCapture log;
    Module a("a", &m_diary);
    center()->registerDeviceMessage("SIGNAL", "onMessage", &a);
    CDataValue envelope;
    QCOMPARE(CDataValue::parseToDataValue(text, envelope), !text.isNull());
    center()->messageReceived(text.isNull() ? nullptr : &envelope);
    QCOMPARE(m_diary, QStringList());
    QCOMPARE(log.count("MessageCenter/messagecenter messageReceived No message id found!! "), 1);
}

void tst_messagecenter::identifiersOfEnvelopesAreLatin1()
{
    Module a("a", &m_diary);
    center()->registerDeviceMessage("caf\xE9", "onMessage", &a);
    CDataValue envelope(MAP_VALUE);
    envelope.mapSet("IPCMSG_TYPE", CDataValue("caf\xC3\xA9"), true);
    center()->messageReceived(&envelope);
    QCOMPARE(m_diary, QStringList({"a.onMessage"}));
    center()->unregisterDeviceMessage("caf\xE9", &a);
    center()->messageReceived(&envelope);
    QCOMPARE(m_diary.size(), 1);
}

void tst_messagecenter::identifiersOfEnvelopesBeginBehindAByteOrderMark()
{
    Module a("a", &m_diary);
    center()->registerDeviceMessage("REPORT", "onMessage", &a);
    CDataValue envelope(MAP_VALUE);
    envelope.mapSet("IPCMSG_TYPE", CDataValue("\xEF\xBB\xBFREPORT"), true);
    center()->messageReceived(&envelope);
    QCOMPARE(m_diary, QStringList({"a.onMessage"}));
}

void tst_messagecenter::theRegistriesAreSeparate()
{
    Module a("a", &m_diary);
    center()->registerModuleMessage("NEWS", "onMessage", &a);
    center()->registerModuleServiceMessage("NEWS", "provide", &a);
    center()->registerDeviceMessage("NEWS", "onOther", &a);
    CDataValue envelope(MAP_VALUE);
    envelope.mapSet("IPCMSG_TYPE", CDataValue("NEWS"), true);
    center()->messageReceived(&envelope);
    center()->InvokeModuleServiceByMessage("NEWS", nullptr);
    center()->postModuleMessage("NEWS", nullptr);
    QCOMPARE(m_diary, QStringList({"a.onOther", "a.provide", "a.onMessage"}));
}

void tst_messagecenter::resettingModulesKeepsDevices()
{
    Module a("a", &m_diary);
    center()->registerModuleMessage("NEWS", "onMessage", &a);
    center()->registerModuleServiceMessage("SERVICE", "provide", &a);
    center()->registerDeviceMessage("SIGNAL", "onOther", &a);
    center()->resetModuleMessageMap();
    QCOMPARE(center()->postModuleMessage("NEWS", nullptr), -1);
    QVERIFY(center()->InvokeModuleServiceByMessage("SERVICE", nullptr).isNull());
    CDataValue envelope(MAP_VALUE);
    envelope.mapSet("IPCMSG_TYPE", CDataValue("SIGNAL"), true);
    center()->messageReceived(&envelope);
    QCOMPARE(m_diary, QStringList({"a.onOther"}));
}

void tst_messagecenter::resettingDevicesKeepsModules()
{
    Module a("a", &m_diary);
    center()->registerModuleMessage("NEWS", "onMessage", &a);
    center()->registerModuleServiceMessage("SERVICE", "provide", &a);
    center()->registerDeviceMessage("SIGNAL", "onOther", &a);
    center()->resetDeviceMessageMap();
    CDataValue envelope(MAP_VALUE);
    envelope.mapSet("IPCMSG_TYPE", CDataValue("SIGNAL"), true);
    center()->messageReceived(&envelope);
    QCOMPARE(m_diary, QStringList());
    QCOMPARE(center()->postModuleMessage("NEWS", nullptr), 0);
    QCOMPARE(center()->InvokeModuleServiceByMessage("SERVICE", nullptr).asQString(),
             QString("a was asked"));
}

void tst_messagecenter::announcesDeviceMessages()
{
    const CDataValue payload("payload");
    QStringList seen;
    const CDataValue* seenPayload = nullptr;
    connect(center(), &MessageCenter::sigDeviceMessageSend, this,
            [&](const char* messageID, const CDataValue* data, const char* sender) {
                seen << messageID << (sender ? sender : "no sender");
                seenPayload = data;
            });
    QCOMPARE(center()->postDeviceMessage("GET_SIGNAL", &payload, "dashboard"), 0);
    QCOMPARE(seen, QStringList({"GET_SIGNAL", "dashboard"}));
    QCOMPARE(seenPayload, &payload);

    seen.clear();
    QCOMPARE(center()->postDeviceMessage("GET_SIGNAL", nullptr, nullptr), 0);
    QCOMPARE(seen, QStringList({"GET_SIGNAL", "no sender"}));
    QVERIFY(!seenPayload);
}

/// Takes messages in the form without a sender.
class ShortFormListener : public QObject
{
    Q_OBJECT

public:
    QStringList seen;

public Q_SLOTS:
    void take(const char* messageID, const CDataValue* data)
    {
        seen << messageID << data->asQString();
    }
};

void tst_messagecenter::announcesDeviceMessagesInTheShortForm()
{
    ShortFormListener listener;
    QVERIFY(connect(center(), SIGNAL(sigDeviceMessageSend(const char*, const CDataValue*)),
                    &listener, SLOT(take(const char*, const CDataValue*))));
    const CDataValue payload("payload");
    center()->postDeviceMessage("GET_SIGNAL", &payload, "dashboard");
    QCOMPARE(listener.seen, QStringList({"GET_SIGNAL", "payload"}));
}

void tst_messagecenter::slotsMayPostAgain()
{
    Module a("a", &m_diary);
    Module b("b", &m_diary);
    center()->registerModuleMessage("OUTER", "onMessage", &a);
    center()->registerModuleMessage("OUTER", "onMessage", &b);
    center()->registerModuleMessage("INNER", "onOther", &b);
    center()->registerModuleServiceMessage("SERVICE", "provide", &b);
    int depth = 0;
    a.whileCalled = [&] {
        if (++depth > 2)
            return;
        center()->postModuleMessage("INNER", nullptr);
        center()->InvokeModuleServiceByMessage("SERVICE", nullptr);
        center()->postModuleMessage("OUTER", nullptr);
    };
    QCOMPARE(center()->postModuleMessage("OUTER", nullptr), 0);
    QCOMPARE(m_diary, QStringList({"a.onMessage", "b.onOther", "b.provide", "a.onMessage",
                                   "b.onOther", "b.provide", "a.onMessage", "b.onMessage",
                                   "b.onMessage", "b.onMessage"}));
}

void tst_messagecenter::whoRegistersDuringAPostIsCalledFromTheNextOn()
{
    Module a("a", &m_diary);
    Module b("b", &m_diary);
    center()->registerModuleMessage("NEWS", "onMessage", &a);
    a.whileCalled = [&] {
        a.whileCalled = nullptr;
        for (int i = 0; i < 100; ++i)
            center()->registerModuleMessage("NEWS", "onMessage", &b);
    };
    center()->postModuleMessage("NEWS", nullptr);
    QCOMPARE(m_diary, QStringList({"a.onMessage"}));
    center()->postModuleMessage("NEWS", nullptr);
    QCOMPARE(m_diary.size(), 102);
}

void tst_messagecenter::whoIsUnregisteredDuringAPostIsNotCalledAnyMore()
{
    Module a("a", &m_diary);
    Module b("b", &m_diary);
    Module c("c", &m_diary);
    for (Module* module : {&a, &b, &c})
        center()->registerModuleMessage("NEWS", "onMessage", module);
    a.whileCalled = [&] {
        center()->unregisterModuleMessage("NEWS", &a);
        center()->unregisterModuleMessage("NEWS", &b);
    };
    QCOMPARE(center()->postModuleMessage("NEWS", nullptr), 0);
    QCOMPARE(m_diary, QStringList({"a.onMessage", "c.onMessage"}));
}

void tst_messagecenter::aResetDuringAPostEndsIt()
{
    Module a("a", &m_diary);
    Module b("b", &m_diary);
    for (Module* module : {&a, &b})
        center()->registerModuleMessage("NEWS", "onMessage", module);
    a.whileCalled = [] { center()->resetModuleMessageMap(); };
    QCOMPARE(center()->postModuleMessage("NEWS", nullptr), 0);
    QCOMPARE(m_diary, QStringList({"a.onMessage"}));
    QCOMPARE(center()->postModuleMessage("NEWS", nullptr), -1);
}

void tst_messagecenter::theCenterMayBeReleasedDuringAPost()
{
    Module a("a", &m_diary);
    Module b("b", &m_diary);
    CDataValue envelope(MAP_VALUE);
    envelope.mapSet("IPCMSG_TYPE", CDataValue("NEWS"), true);
    a.whileCalled = [] { MessageCenter::release(); };
    const auto registerBoth = [&](auto registration) {
        for (Module* module : {&a, &b})
            (center()->*registration)("NEWS", "onMessage", module);
    };
    registerBoth(&MessageCenter::registerModuleMessage);
    QCOMPARE(center()->postModuleMessage("NEWS", nullptr), 0);
    registerBoth(&MessageCenter::registerDeviceMessage);
    center()->messageReceived(&envelope);
    center()->registerModuleServiceMessage("NEWS", "provide", &a);
    const CDataValue result = center()->InvokeModuleServiceByMessage("NEWS", nullptr);
    QCOMPARE(result.asQString(), QString("a was asked"));
    QCOMPARE(m_diary, QStringList({"a.onMessage", "a.onMessage", "a.provide"}));
}

void tst_messagecenter::aProviderMayBeReplacedWhileItWorks()
{
    Module a("a", &m_diary);
    Module b("b", &m_diary);
    center()->registerModuleServiceMessage("SERVICE", "provide", &a);
    a.whileCalled = [&] { center()->registerModuleServiceMessage("SERVICE", "provide", &b); };
    const CDataValue first = center()->InvokeModuleServiceByMessage("SERVICE", nullptr);
    const CDataValue second = center()->InvokeModuleServiceByMessage("SERVICE", nullptr);
    QCOMPARE(first.asQString(), QString("a was asked"));
    QCOMPARE(second.asQString(), QString("b was asked"));
}

void tst_messagecenter::aReceiverMayBeDestroyedDuringAPost()
{
    Module a("a", &m_diary);
    auto b = std::make_unique<Module>("b", &m_diary);
    Module c("c", &m_diary);
    for (Module* module : {&a, b.get(), &c})
        center()->registerModuleMessage("NEWS", "onMessage", module);
    a.whileCalled = [&] { b.reset(); };
    QCOMPARE(center()->postModuleMessage("NEWS", nullptr), 0);
    QCOMPARE(m_diary, QStringList({"a.onMessage", "c.onMessage"}));
}

void tst_messagecenter::passesOverReceiversThatWentWithoutUnregistering()
{
    Module a("a", &m_diary);
    {
        Module gone("gone", &m_diary);
        center()->registerModuleMessage("NEWS", "onMessage", &gone);
        center()->registerModuleServiceMessage("SERVICE", "provide", &gone);
        center()->registerDeviceMessage("SIGNAL", "onMessage", &gone);
        center()->registerModuleMessage("NEWS", "onMessage", &a);
        center()->postModuleMessage("NEWS", nullptr);
    }
    m_diary.clear();
    QCOMPARE(center()->postModuleMessage("NEWS", nullptr), 0);
    QVERIFY(center()->InvokeModuleServiceByMessage("SERVICE", nullptr).isNull());
    CDataValue envelope(MAP_VALUE);
    envelope.mapSet("IPCMSG_TYPE", CDataValue("SIGNAL"), true);
    center()->messageReceived(&envelope);
    QCOMPARE(m_diary, QStringList({"a.onMessage"}));
}

void tst_messagecenter::aNewReceiverAtAnOldAddressIsItsOwn()
{
    alignas(Module) unsigned char place[sizeof(Module)];
    auto* first = new (place) Module("first", &m_diary);
    center()->registerModuleMessage("NEWS", "onMessage", first);
    first->~Module();
    auto* second = new (place) Module("second", &m_diary);
    center()->postModuleMessage("NEWS", nullptr);
    QCOMPARE(m_diary, QStringList());
    center()->registerModuleMessage("NEWS", "onMessage", second);
    center()->postModuleMessage("NEWS", nullptr);
    QCOMPARE(m_diary, QStringList({"second.onMessage"}));
    center()->unregisterModuleMessage("NEWS", second);
    center()->postModuleMessage("NEWS", nullptr);
    QCOMPARE(m_diary, QStringList({"second.onMessage"}));
    second->~Module();
}

void tst_messagecenter::refusesNullAsIfMemoryWereShort_data()
{
    using Registration = int (MessageCenter::*)(const char*, const char*, const QObject*);
    QTest::addColumn<Operation>("operation");
    const auto rows = [](const char* name, Registration registration) {
        const auto row = [&](const char* what, const char* id, const char* slot, bool receiver) {
            const Operation operation = [=](QObject* module) {
                (center()->*registration)(id, slot, receiver ? module : nullptr);
            };
            QTest::newRow(qPrintable(QString("%1, %2").arg(name, what))) << operation;
        };
        row("identifier", nullptr, "onMessage", true);
        row("slot", "NEWS", nullptr, true);
        row("receiver", "NEWS", "onMessage", false);
    };
    rows("module message", &MessageCenter::registerModuleMessage);
    rows("service", &MessageCenter::registerModuleServiceMessage);
    rows("device message", &MessageCenter::registerDeviceMessage);
    QTest::newRow("post to modules")
        << Operation([](QObject*) { center()->postModuleMessage(nullptr, nullptr); });
    QTest::newRow("post to the device")
        << Operation([](QObject*) { center()->postDeviceMessage(nullptr, nullptr, nullptr); });
}

void tst_messagecenter::refusesNullAsIfMemoryWereShort()
{
    QFETCH(Operation, operation);
    Module a("a", &m_diary);
    QVERIFY_EXCEPTION_THROWN(operation(&a), std::bad_alloc);
    QCOMPARE(center()->postModuleMessage("NEWS", nullptr), -1);
}

void tst_messagecenter::toleratesNullElsewhere()
{
    Module a("a", &m_diary);
    center()->registerModuleMessage("NEWS", "onMessage", &a);
    QVERIFY(center()->InvokeModuleServiceByMessage(nullptr, nullptr).isNull());
    QCOMPARE(center()->unregisterModuleMessage(nullptr, &a), 0);
    QCOMPARE(center()->unregisterModuleMessage("NEWS", nullptr), 0);
    QCOMPARE(center()->unregisterDeviceMessage(nullptr, nullptr), 0);
    QCOMPARE(center()->unregisterModuleServiceMessage(nullptr), 0);
    center()->postModuleMessage("NEWS", nullptr);
    QCOMPARE(m_diary, QStringList({"a.onMessage"}));
}

QTEST_GUILESS_MAIN(tst_messagecenter)
#include "tst_messagecenter.moc"
