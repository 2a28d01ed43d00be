#include "slotcall_p.h"

#include <QtTest>

#include <memory>
#include <new>

struct Answer
{
    int number = 0;
};

/// What an invocation did: whether it succeeded, which slots ran, what came back.
struct Outcome
{
    bool done;
    QStringList trace;
    int result;
};

bool operator==(const Outcome& one, const Outcome& other)
{
    return one.done == other.done && one.trace == other.trace && one.result == other.result;
}

char* toString(const Outcome& outcome)
{
    return qstrdup(qPrintable(QString("done %1, ran [%2], result %3")
                                  .arg(outcome.done)
                                  .arg(outcome.trace.join(' '))
                                  .arg(outcome.result)));
}

class BaseReceiver : public QObject
{
    Q_OBJECT

public:
    QStringList trace;

public Q_SLOTS:
    int ofBase(Answer*) { return ran("ofBase", 1); }
    virtual int overridden(Answer*) { return ran("overridden in base", 2); }
    int hidden(Answer*) { return ran("hidden in base", 3); }

protected:
    int ran(const char* slot, int result)
    {
        trace << slot;
        return result;
    }
};

class Receiver : public BaseReceiver
{
    Q_OBJECT

public:
    Receiver()
    {
        connect(this, &Receiver::announced, this, [this] { ran("announced", 0); });
    }
    Q_INVOKABLE int invokable(Answer*) { return ran("invokable", 4); }
    int plain(Answer*) { return ran("plain", 5); }

public Q_SLOTS:
    int overloaded(Answer*) { return ran("overloaded(Answer*)", 6); }
    int overloaded(const Answer*) { return ran("overloaded(const Answer*)", 7); }
    int overloaded(int) { return ran("overloaded(int)", 8); }
    int overloaded() { return ran("overloaded()", 9); }
    int withDefault(Answer*, int more = 3) { return ran("withDefault", 10 + more); }
    int tooManyArguments(Answer*, int) { return ran("tooManyArguments", 14); }
    int noArguments() { return ran("noArguments", 15); }
    int otherArgument(QString) { return ran("otherArgument", 16); }
    int overridden(Answer*) override { return ran("overridden in receiver", 17); }
    int hidden(Answer*) { return ran("hidden in receiver", 18); }
    void returnsNothing(Answer*) { ran("returnsNothing", 0); }
    qint32 returnsTypedef(Answer*) { return ran("returnsTypedef", 19); }
    uint returnsUnsigned(Answer*) { return uint(ran("returnsUnsigned", 20)); }

Q_SIGNALS:
    void announced(Answer*);

private Q_SLOTS:
    int ofPrivateUse(Answer*) { return ran("ofPrivateUse", 21); }
};

/// Calls itself by name before the derived class is constructed.
class EarlyCaller : public QObject
{
    Q_OBJECT

public:
    EarlyCaller()
        : call("work", this)
    {
        foundEarly = invoke();
        invokeGreeting();
    }
    bool invoke()
    {
        Answer* none = nullptr;
        return call.call(QGenericArgument("Answer*", &none));
    }

    void invokeGreeting()
    {
        Answer* none = nullptr;
        greeting.call(QGenericArgument("Answer*", &none));
    }

    SlotCall call;
    SlotCall greeting{"greet", this};
    QStringList greetings;
    bool foundEarly = false;
    int worked = 0;

public Q_SLOTS:
    void greet(Answer*) { greetings << "early"; }
};

class LateReceiver : public EarlyCaller
{
    Q_OBJECT

public Q_SLOTS:
    void work(Answer*) { ++worked; }
    void greet(Answer*) { greetings << "late"; }
};

class Destroyer : public QObject
{
    Q_OBJECT

public:
    std::unique_ptr<SlotCall> call;

public Q_SLOTS:
    void dropCall(Answer*) { call.reset(); }
};

class tst_slotcall : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void findsWhatInvokeMethodFinds_data();
    void findsWhatInvokeMethodFinds();
    void callsTheOverloadOfItsArgumentTypes();
    void passesReferencesAndValues();
    void looksAgainWhenTheReceiverIsFurtherConstructed();
    void passesOverADestroyedReceiver();
    void doesNothingOnceCancelled();
    void survivesItsOwnEndDuringTheCall();
    void refusesNullAsIfMemoryWereShort();

private:
    static Outcome byName(Receiver& receiver, const QByteArray& slot, bool wantsResult);
    static Outcome bySlotCall(Receiver& receiver, SlotCall& call, bool wantsResult);
};

Outcome tst_slotcall::byName(Receiver& receiver, const QByteArray& slot, bool wantsResult)
{
    Answer answer;
    Answer* argument = &answer;
    int result = 42;
    receiver.trace.clear();
    const bool done = QMetaObject::invokeMethod(&receiver, slot.constData(), Qt::DirectConnection,
                                                wantsResult ? QGenericReturnArgument("int", &result)
                                                            : QGenericReturnArgument(),
                                                QGenericArgument("Answer*", &argument));
    return {done, receiver.trace, result};
}

Outcome tst_slotcall::bySlotCall(Receiver& receiver, SlotCall& call, bool wantsResult)
{
    Answer answer;
    Answer* argument = &answer;
    int result = 42;
    receiver.trace.clear();
    const QGenericArgument first("Answer*", &argument);
    const bool done =
        wantsResult ? call.call(QGenericReturnArgument("int", &result), first) : call.call(first);
    return {done, receiver.trace, result};
}

void tst_slotcall::findsWhatInvokeMethodFinds_data()
{
    QTest::addColumn<QStringList>("expectedTrace");
    QTest::addColumn<int>("expectedResult");
    const auto row = [](const char* slot, const QStringList& trace, int result) {
        QTest::newRow(slot) << trace << result;
    };
    row("ofBase", {"ofBase"}, 1);
    row("overridden", {"overridden in receiver"}, 17);
    row("hidden", {"hidden in receiver"}, 18);
    row("invokable", {"invokable"}, 4);
    row("plain", {}, 42);
    row("overloaded", {"overloaded(Answer*)"}, 6);
    row("withDefault", {"withDefault"}, 13);
    row("tooManyArguments", {}, 42);
    row("noArguments", {}, 42);
    row("otherArgument", {}, 42);
    row("returnsNothing", {}, 42);
    row("returnsTypedef", {"returnsTypedef"}, 19);
    row("returnsUnsigned", {}, 42);
    row("announced", {}, 42);
    row("ofPrivateUse", {"ofPrivateUse"}, 21);
    row(" ofBase ", {"ofBase"}, 1);
    row("unknown", {}, 42);
    row("ofBase(Answer*)", {}, 42);
    row("OFBASE", {}, 42);
    row("\xC3\xA9", {}, 42);
    row("ofBase,", {}, 42);
    row("(", {}, 42);
    row(")", {}, 42);
    QTest::newRow("") << QStringList() << 42;
}

void tst_slotcall::findsWhatInvokeMethodFinds()
{
    QFETCH(QStringList, expectedTrace);
    QFETCH(int, expectedResult);
    const QByteArray slot = QTest::currentDataTag();
    Receiver receiver;
    SlotCall call(slot.constData(), &receiver);

    const Outcome expected = {!expectedTrace.isEmpty(), expectedTrace, expectedResult};
    QCOMPARE(byName(receiver, slot, true), expected);
    QCOMPARE(bySlotCall(receiver, call, true), expected); // looks the name up
    QCOMPARE(bySlotCall(receiver, call, true), expected); // knows it

    const Outcome withoutResult = byName(receiver, slot, false);
    QCOMPARE(bySlotCall(receiver, call, false), withoutResult);
    QCOMPARE(bySlotCall(receiver, call, false), withoutResult);
}

void tst_slotcall::callsTheOverloadOfItsArgumentTypes()
{
    Receiver receiver;
    SlotCall call("overloaded", &receiver);
    int number = 5;
    int result = 0;
    QVERIFY(call.call(QGenericReturnArgument("int", &result), QGenericArgument("int", &number)));
    QCOMPARE(receiver.trace, QStringList("overloaded(int)"));
    QCOMPARE(result, 8);
}

class PairReceiver : public QObject
{
    Q_OBJECT

public Q_SLOTS:
    int add(Answer& one, Answer& other)
    {
        other.number += one.number;
        return other.number;
    }
    int length(const QString& text, Answer* answer)
    {
        answer->number = int(text.size());
        return answer->number + 1;
    }
};

void tst_slotcall::passesReferencesAndValues()
{
    PairReceiver receiver;
    Answer one{3};
    Answer other{4};
    int result = 0;
    SlotCall add("add", &receiver);
    QVERIFY(add.call(QGenericReturnArgument("int", &result), QGenericArgument("Answer&", &one),
                     QGenericArgument("Answer&", &other)));
    QCOMPARE(result, 7);
    QCOMPARE(other.number, 7);

    QString text("four");
    Answer* answer = &one;
    SlotCall length("length", &receiver);
    QVERIFY(length.call(QGenericReturnArgument("int", &result), QGenericArgument("QString", &text),
                        QGenericArgument("Answer*", &answer)));
    QCOMPARE(result, 5);
    QCOMPARE(one.number, 4);
}

void tst_slotcall::looksAgainWhenTheReceiverIsFurtherConstructed()
{
    LateReceiver receiver;
    QVERIFY(!receiver.foundEarly);
    QVERIFY(receiver.invoke());
    QCOMPARE(receiver.worked, 1);
    receiver.invokeGreeting();
    QCOMPARE(receiver.greetings, QStringList({"early", "late"}));
}

void tst_slotcall::passesOverADestroyedReceiver()
{
    auto receiver = std::make_unique<Receiver>();
    SlotCall call("ofBase", receiver.get());
    QVERIFY(bySlotCall(*receiver, call, true).done);
    QCOMPARE(call.receiver(), receiver.get());
    receiver.reset();
    Receiver bystander;
    QVERIFY(!bySlotCall(bystander, call, true).done);
    QVERIFY(!call.receiver());
}

void tst_slotcall::doesNothingOnceCancelled()
{
    Receiver receiver;
    SlotCall call("ofBase", &receiver);
    call.cancel();
    const Outcome nothing = {false, {}, 42};
    QCOMPARE(bySlotCall(receiver, call, true), nothing);
}

void tst_slotcall::survivesItsOwnEndDuringTheCall()
{
    Destroyer receiver;
    receiver.call = std::make_unique<SlotCall>("dropCall", &receiver);
    Answer* none = nullptr;
    QVERIFY(receiver.call->call(QGenericArgument("Answer*", &none)));
    QVERIFY(!receiver.call);
}

void tst_slotcall::refusesNullAsIfMemoryWereShort()
{
    QVERIFY_EXCEPTION_THROWN(requireNotNull(nullptr), std::bad_alloc);
    requireNotNull(this);
}

QTEST_APPLESS_MAIN(tst_slotcall)
#include "tst_slotcall.moc"
