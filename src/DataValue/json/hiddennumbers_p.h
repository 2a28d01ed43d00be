#ifndef DATAVALUE_JSON_HIDDENNUMBERS_P_H
#define DATAVALUE_JSON_HIDDENNUMBERS_P_H

#include <cstddef>
#include <string>
#include <vector>

/// JsonCpp's reader converts fractions by a C++ stream, and so by the global locale of the process:
/// where that has a decimal comma, it reads 1.5 as 1 or refuses it. In such a process the fractions
/// of a text are hidden from it behind zeros, and put in again where it has read those.
///
///     HiddenNumbers hidden(text); // text: "[1.5]", afterwards "[000]"
///     ...
///     if (const double* number = hidden.at(1)) // offset in the text
///         ...
class HiddenNumbers
{
public:
    /// Whether the global locale has another form of numbers than JSON.
    static bool areNeeded();

    /// None.
    HiddenNumbers() = default;
    /// Hides the fractions of a JSON text: numbers with a point or an exponent, outside of strings
    /// and comments.
    explicit HiddenNumbers(std::string& text);

    /// False when one is no number, or beyond the largest double: the text is to be refused then.
    bool areValid() const { return m_areValid; }

    /// The number that began at `offset`; null when none was hidden there.
    const double* at(std::ptrdiff_t offset) const;

private:
    struct Number
    {
        std::ptrdiff_t offset;
        double value;
    };

    void hide(std::string& text, std::size_t begin, std::size_t end);

    std::vector<Number> m_numbers; // in the order of the text
    bool m_areValid = true;
};

#endif
