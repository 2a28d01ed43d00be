#ifndef TESTS_DATAVALUE_RANDOMJSON_H
#define TESTS_DATAVALUE_RANDOMJSON_H

#include <QByteArray>
#include <QtGlobal>

#include <array>
#include <ctime>
#include <random>
#include <string>

/// Random choices that a seed repeats on every machine.
class Dice
{
public:
    explicit Dice(quint32 seed)
        : m_engine(seed)
    {
    }

    quint32 any() { return static_cast<quint32>(m_engine()); }
    unsigned int below(unsigned int bound) { return any() % bound; }
    bool oneIn(unsigned int n) { return below(n) == 0; }

    template<typename T, std::size_t N>
    const T& of(const std::array<T, N>& choices)
    {
        return choices[below(N)];
    }

private:
    std::mt19937 m_engine;
};

/// The seed of a run: the environment variable WZR_SEED, else the clock.
inline quint32 seedOfThisRun()
{
    bool given = false;
    const quint32 seed = static_cast<quint32>(qEnvironmentVariableIntValue("WZR_SEED", &given));
    return given ? seed : static_cast<quint32>(std::time(nullptr));
}

/// The number of steps of a run: the environment variable WZR_STEPS, else `usual`.
inline int stepsOfThisRun(int usual)
{
    bool given = false;
    const int steps = qEnvironmentVariableIntValue("WZR_STEPS", &given);
    return given ? steps : usual;
}

inline std::string randomJsonComment(Dice& dice)
{
    static const std::array<std::string, 6> comments{
        "// line\n", "/* block */", "/* two\n lines */", "// one\n// two\n", "/**/", "// blank \n"};
    return dice.oneIn(8) ? dice.of(comments) : std::string();
}

inline std::string randomJsonString(Dice& dice)
{
    static const std::array<std::string, 16> pieces{"a",
                                                    "b",
                                                    "B",
                                                    " ",
                                                    "/",
                                                    "\\n",
                                                    "\\\"",
                                                    "\\\\",
                                                    "\\u00e9",
                                                    "\xc3\xa9",
                                                    "\\u0000",
                                                    "\\u001f",
                                                    "\\ud83d\\ude00",
                                                    "\x7f",
                                                    "\xe4\xbd\xa0",
                                                    "\\t"};
    std::string text = "\"";
    for (unsigned int n = dice.below(dice.oneIn(10) ? 60 : 4); n > 0; --n)
        text += dice.of(pieces);
    return text + "\"";
}

inline std::string randomJsonNumber(Dice& dice)
{
    static const std::array<std::string, 22> numbers{"0",
                                                     "-0",
                                                     "1",
                                                     "-1",
                                                     "2147483647",
                                                     "2147483648",
                                                     "-2147483639",
                                                     "-2147483640",
                                                     "-2147483648",
                                                     "4294967289",
                                                     "4294967290",
                                                     "4294967295",
                                                     "4294967296",
                                                     "9223372036854775808",
                                                     "99999999999999999999",
                                                     "0.1",
                                                     "1e20",
                                                     "2.50",
                                                     "-1e-7",
                                                     "1E+3",
                                                     "3.141592653589793238",
                                                     "18446744073709551616"};
    return dice.oneIn(3) ? std::to_string(dice.any()) : dice.of(numbers);
}

/// A JSON text of at most `depth` levels, usually valid, with comments here and there if wanted.
inline std::string randomJson(Dice& dice, unsigned int depth, bool withComments = true)
{
    static const std::array<std::string, 6> keys{"a", "b", "B", "k", "", "\\u00e9"};
    static const std::array<std::string, 3> words{"null", "true", "false"};
    const std::string before = withComments ? randomJsonComment(dice) : std::string();
    const std::string after = withComments ? randomJsonComment(dice) : std::string();
    const unsigned int kind = dice.below(depth > 0 ? 8 : 4);
    if (kind < 4) {
        const std::string atom = kind == 0   ? dice.of(words)
                                 : kind == 1 ? randomJsonString(dice)
                                             : randomJsonNumber(dice);
        return before + atom + after;
    }
    const bool isArray = kind < 6;
    std::string text;
    for (unsigned int n = dice.below(5); n > 0; --n) {
        text += text.empty() ? "" : ",";
        text += isArray ? "" : "\"" + dice.of(keys) + "\":";
        text += randomJson(dice, depth - 1, withComments);
    }
    return before + (isArray ? "[" + text + "]" : "{" + text + "}") + after;
}

#endif
