#include "Ipc/messageframe_p.h"
#include "plainreceiver.h"

#include <QtTest>

#include <random>
#include <vector>

namespace {

struct Markers
{
    const char* head;
    const char* end;
};

const Markers markerTable[] = {
    {"__BEGIN__", "__END__"},
    {"a", "b"},
    {"ab", "ba"},
    {"aa", "a"},
    {"a", "aa"},
    {"a", "a"},
    {"aba", "ab"},
    {"_", "__"},
    {"b", "ab"},
    {"aab", "aaa"},
};

class Generator
{
public:
    explicit Generator(unsigned seed)
        : m_engine(seed)
    {
    }
    int below(int limit) { return int(m_engine() % unsigned(limit)); }
    const Markers& markers() { return markerTable[below(int(std::size(markerTable)))]; }

    // Pieces of markers and of what looks like them, frames, and characters of 1 to 4 bytes.
    QString text(const Markers& current)
    {
        static const char* const pieces[] = {"a", "b", "_", "__", "__END__", "__BEGIN__", "x"};
        QString result;
        for (int left = below(12); left > 0; --left) {
            const int kind = below(10);
            if (kind < 4)
                result += pieces[below(int(std::size(pieces)))];
            else if (kind == 4)
                result += QString::fromUcs4(U"\u00E9\u20AC\U0001F600\uFEFF");
            else if (kind == 5)
                result += current.head;
            else if (kind == 6)
                result += current.end;
            else
                result += QString(current.head) + QString(below(4), 'x') + current.end;
        }
        return result;
    }

private:
    std::mt19937 m_engine;
};

// Reads that end at any byte, each with the text that its whole characters make.
struct Read
{
    QByteArray bytes;
    QString text;
};

std::vector<Read> cutAnywhere(const QString& text, Generator& random)
{
    const QByteArray bytes = text.toUtf8();
    std::vector<Read> reads;
    int from = 0;
    int textFrom = 0;
    while (from < bytes.size()) {
        const int to = std::min(int(bytes.size()), from + 1 + random.below(20));
        int whole = to; // the end of the last whole character
        while (whole < bytes.size() && (bytes.at(whole) & 0xC0) == 0x80)
            --whole;
        // A letter in front keeps a first U+FEFF from being taken for a byte-order mark.
        const QString all = QString::fromUtf8("x" + bytes.left(whole)).mid(1);
        reads.push_back({bytes.mid(from, to - from), all.mid(textFrom)});
        textFrom = int(all.size());
        from = to;
    }
    return reads;
}

QString nameOf(MessageFrame::Outcome outcome)
{
    if (outcome == MessageFrame::NoHead)
        return "no head";
    return outcome == MessageFrame::NoEnd ? "no end" : "done";
}

} // namespace

class tst_messageframerandom : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void agreesWithThePlainRules();

private:
    void run(Generator& random);
    void compareOneRead(const Read& read, PlainReceiver& plain, MessageFrame& frame,
                        const Markers& later, int changeAt);
};

void tst_messageframerandom::agreesWithThePlainRules()
{
    bool given = false;
    unsigned seed = qEnvironmentVariableIntValue("WZR_TEST_SEED", &given);
    if (!given)
        seed = std::random_device()();
    qInfo("WZR_TEST_SEED=%u", seed);
    Generator random(seed);
    for (int i = 0; i < 20000 && !QTest::currentTestFailed(); ++i)
        run(random);
}

void tst_messageframerandom::run(Generator& random)
{
    Markers markers = random.markers();
    PlainReceiver plain{markers.head, markers.end, QString()};
    MessageFrame frame(markers.head, markers.end);
    for (int piece = 0; piece < 6; ++piece) {
        const std::vector<Read> reads = cutAnywhere(random.text(markers), random);
        for (const Read& read : reads) {
            const Markers later = random.below(8) == 0 ? random.markers() : markers;
            compareOneRead(read, plain, frame, later, random.below(3));
            if (plain.head != markers.head || plain.end != markers.end)
                markers = later;
        }
    }
}

// Markers may change between two bodies, and between two reads.
void tst_messageframerandom::compareOneRead(const Read& read, PlainReceiver& plain,
                                            MessageFrame& frame, const Markers& later, int changeAt)
{
    QStringList expected;
    const QString expectedOutcome = plain.read(read.text, [&](const QString& body) {
        expected << body;
        if (expected.size() == changeAt) {
            plain.head = later.head;
            plain.end = later.end;
        }
    });
    QStringList bodies;
    QString body;
    frame.append(read.bytes);
    MessageFrame::Outcome outcome = frame.next(body);
    for (; outcome == MessageFrame::Body; outcome = frame.next(body)) {
        bodies << body;
        if (bodies.size() == changeAt)
            frame.setMarkers(later.head, later.end);
    }
    QCOMPARE(bodies, expected);
    QCOMPARE(frame.buffer(), plain.buffer);
    QCOMPARE(nameOf(outcome), expectedOutcome);
}

QTEST_APPLESS_MAIN(tst_messageframerandom)
#include "tst_messageframerandom.moc"
