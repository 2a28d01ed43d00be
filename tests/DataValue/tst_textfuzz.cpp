#include "jsonjudge.h"
#include "randomjson.h"

#include <QDir>
#include <QFile>
#include <QtTest>

#include <algorithm>
#include <iterator>
#include <vector>

namespace {

/// A text that is shown in a message: what is not printable stands as \xNN.
QByteArray shown(const std::string& text)
{
    QByteArray out;
    for (const char c : text) {
        if (c >= ' ' && c <= '~')
            out += c;
        else
            out += "\\x" + QByteArray(1, c).toHex();
    }
    return out;
}

/// One change as a broken sender or an attacker makes it.
void mutate(Dice& dice, std::string& text, const std::string& other)
{
    static const std::array<std::string, 24> pieces{
        "[",   "]",  "{",    "}",    ",",     ":",     "\"",      "\\",
        "\\u", "/*", "*/",   "//",   "\n",    " ",     "null",    "-",
        "e",   ".",  "\xff", "\xc3", "\\ud8", "99999", "\\udc00", std::string(1, '\0')};
    const auto place = [&](const std::string& s) {
        return dice.below(static_cast<unsigned int>(s.size()) + 1);
    };
    const std::size_t at = place(text);
    const std::size_t length = dice.below(dice.oneIn(4) ? 60 : 4);
    switch (dice.below(6)) {
    case 0:
        text.insert(at, dice.of(pieces));
        break;
    case 1:
        text.erase(at, length);
        break;
    case 2:
        text.insert(at, text.substr(place(text), length));
        break;
    case 3:
        text.insert(at, other.substr(place(other), length));
        break;
    case 4:
        text.resize(at);
        break;
    default:
        if (at < text.size())
            text[at] = static_cast<char>(dice.below(256));
    }
}

std::vector<std::string> corpus()
{
    const QDir folder(QStringLiteral(TEST_CORPUS));
    std::vector<std::string> texts;
    for (const QString& name : folder.entryList(QDir::Files, QDir::Name)) {
        QFile file(folder.filePath(name));
        if (!file.open(QIODevice::ReadOnly))
            qFatal("The corpus cannot be read");
        texts.push_back(file.readAll().toStdString());
    }
    return texts;
}

} // namespace

/// Reading JSON text from strangers: the corpus as it is, changed at random, and made-up texts.
/// A text that once crashed belongs into the corpus.
class tst_textfuzz : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void replaysTheCorpus();
    void cutsTheCorpusAtEveryByte();
    void readsMutatedAndGeneratedTexts();
};

void tst_textfuzz::replaysTheCorpus()
{
    const std::vector<std::string> texts = corpus();
    QVERIFY(texts.size() >= 14);
    for (const std::string& text : texts) {
        const QString wrong = check(text);
        QVERIFY2(wrong.isEmpty(), shown(text) + " " + wrong.toUtf8());
    }
}

void tst_textfuzz::cutsTheCorpusAtEveryByte()
{
    for (const std::string& text : corpus()) {
        for (std::size_t length = 0; length < text.size(); ++length) {
            const std::string cut = text.substr(0, length);
            const QString wrong = check(cut);
            QVERIFY2(wrong.isEmpty(), shown(cut) + " " + wrong.toUtf8());
        }
    }
}

void tst_textfuzz::readsMutatedAndGeneratedTexts()
{
    const quint32 seed = seedOfThisRun();
    const int steps = stepsOfThisRun(12000);
    qInfo("WZR_SEED=%u WZR_STEPS=%d", seed, steps);
    Dice dice(seed);
    const std::vector<std::string> texts = corpus();
    const auto anyText = [&] {
        return dice.oneIn(2) ? randomJson(dice, 5)
                             : texts[dice.below(static_cast<unsigned int>(texts.size()))];
    };
    int accepted = 0;
    for (int step = 0; step < steps; ++step) {
        std::string text = anyText();
        for (unsigned int changes = dice.below(5); changes > 0; --changes)
            mutate(dice, text, anyText());
        bool valid = false;
        const QString wrong = check(text, &valid);
        QVERIFY2(wrong.isEmpty(), shown(text) + " " + wrong.toUtf8());
        accepted += valid ? 1 : 0;
    }
    // Neither side of the reader went untested.
    QVERIFY(accepted > steps / 20);
    QVERIFY(accepted < steps - steps / 20);
}

QTEST_APPLESS_MAIN(tst_textfuzz)

#include "tst_textfuzz.moc"
