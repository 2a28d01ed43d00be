#include "randomworld.h"

#include <QtTest>

#include <vector>

namespace {

/// A world grows old after this many steps: the next sequence starts with empty values. One in so
/// many of them has large maps, and is shorter.
constexpr int sequenceLength = 300;
constexpr int largeSequenceLength = 40;
constexpr int sequencesPerLargeOne = 6;

struct Outcome
{
    size_t stepsDone = 0;
    std::string mismatch; // empty when both worlds agreed
};

Outcome replay(const std::vector<quint32>& steps, RandomWorld::Size size,
               std::string* story = nullptr)
{
    RandomWorld world(size);
    Outcome outcome;
    for (const quint32 step : steps) {
        const bool same = world.run(step);
        ++outcome.stepsDone;
        if (story)
            *story += world.description() + "\n";
        if (!same) {
            outcome.mismatch = world.mismatch();
            break;
        }
    }
    return outcome;
}

/// Leaves out every step without which both worlds still differ.
std::vector<quint32> shortened(std::vector<quint32> steps, RandomWorld::Size size)
{
    for (size_t chunk = steps.size() / 2; chunk > 0; chunk /= 2) {
        for (size_t at = 0; at + chunk <= steps.size();) {
            std::vector<quint32> fewer(steps);
            const auto from = fewer.begin() + static_cast<std::ptrdiff_t>(at);
            fewer.erase(from, from + static_cast<std::ptrdiff_t>(chunk));
            const Outcome outcome = replay(fewer, size);
            if (outcome.mismatch.empty()) {
                at += chunk;
            } else {
                fewer.resize(outcome.stepsDone);
                steps = fewer;
            }
        }
    }
    return steps;
}

} // namespace

/// Long random sequences of all operations, on CDataValue and on the reference model.
class tst_datavaluerandom : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void agreesWithTheReferenceModel();
};

void tst_datavaluerandom::agreesWithTheReferenceModel()
{
    const quint32 seed = seedOfThisRun();
    const int steps = stepsOfThisRun(24000);
    qInfo("WZR_SEED=%u WZR_STEPS=%d", seed, steps);
    Dice dice(seed);
    for (int done = 0, count = 1; done < steps; ++count) {
        const bool isLarge = count % sequencesPerLargeOne == 0;
        const RandomWorld::Size size = isLarge ? RandomWorld::Large : RandomWorld::Small;
        std::vector<quint32> sequence;
        for (int i = 0; i < (isLarge ? largeSequenceLength : sequenceLength); ++i, ++done)
            sequence.push_back(dice.any());
        Outcome outcome = replay(sequence, size);
        if (outcome.mismatch.empty())
            continue;
        sequence.resize(outcome.stepsDone);
        std::string story;
        outcome = replay(shortened(sequence, size), size, &story);
        QFAIL(qPrintable(QString::fromStdString("These steps lead to a difference:\n" + story +
                                                outcome.mismatch)));
    }
}

QTEST_APPLESS_MAIN(tst_datavaluerandom)

#include "tst_datavaluerandom.moc"
