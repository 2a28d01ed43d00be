#include "modemsimulator/atcommand.h"

#include <array>

namespace {

struct ErrorText
{
    int number;
    const char* text;
};

constexpr std::array<ErrorText, 21> kErrorTexts = {{
    {3, "operation not allowed"},
    {4, "operation not supported"},
    {10, "SIM not inserted"},
    {11, "SIM PIN required"},
    {12, "SIM PUK required"},
    {13, "SIM failure"},
    {14, "SIM busy"},
    {15, "SIM wrong"},
    {16, "incorrect password"},
    {20, "memory full"},
    {21, "invalid index"},
    {22, "not found"},
    {23, "memory failure"},
    {24, "text string too long"},
    {25, "invalid characters in text string"},
    {26, "dial string too long"},
    {27, "invalid characters in dial string"},
    {30, "no network service"},
    {31, "network timeout"},
    {50, "Incorrect parameters"},
    {100, "unknown"},
}};

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool isLetter(char c)
{
    return c >= 'A' && c <= 'Z';
}

// V.250, 5.4.1.
bool isNameCharacter(char c)
{
    return isLetter(c) || isDigit(c) || (c != '\0' && QByteArray("!%-./:_").contains(c));
}

// Without blanks and in capitals, texts aside.
QByteArray normalised(const QByteArray& body)
{
    QByteArray line;
    line.reserve(body.size());
    bool isText = false;
    for (const char c : body) {
        if (c == '"')
            isText = !isText;
        if (!isText && c >= 'a' && c <= 'z')
            line += static_cast<char>(c - 'a' + 'A');
        else if (isText || c != ' ')
            line += c;
    }
    return line;
}

class Parser
{
public:
    explicit Parser(QByteArray line)
        : m_line(std::move(line))
    {
    }

    AtLine parse()
    {
        AtLine line;
        while (line.isComplete && at() != '\0') {
            if (at() == ';') {
                ++m_at;
                continue;
            }
            AtCommand command;
            line.isComplete = at() == '+' ? extended(command) : basic(command);
            if (line.isComplete)
                line.commands.push_back(std::move(command));
        }
        line.isComplete = line.isComplete && m_at >= m_line.size();
        return line;
    }

private:
    char at() const { return m_at < m_line.size() ? m_line.at(m_at) : '\0'; }
    bool isAtEnd() const { return m_at >= m_line.size() || at() == ';'; }

    bool basic(AtCommand& command)
    {
        if (at() == '&')
            command.name += m_line.at(m_at++);
        if (!isLetter(at()))
            return false;
        command.name += m_line.at(m_at++);
        AtParameter number;
        while (isDigit(at()))
            number.text += m_line.at(m_at++);
        if (!number.text.isEmpty()) {
            command.form = AtCommand::Set;
            command.parameters.push_back(number);
        }
        return true;
    }

    bool extended(AtCommand& command)
    {
        do
            command.name += m_line.at(m_at++);
        while (isNameCharacter(at()));
        if (command.name.size() == 1)
            return false;
        if (at() == '?') {
            ++m_at;
            command.form = AtCommand::Read;
        } else if (at() == '=') {
            ++m_at;
            if (at() != '?')
                return parameters(command);
            ++m_at;
            command.form = AtCommand::Test;
        }
        return isAtEnd();
    }

    bool parameters(AtCommand& command)
    {
        command.form = AtCommand::Set;
        for (;;) {
            AtParameter parameter;
            if (!(at() == '"' ? quoted(parameter) : plain(parameter)))
                return false;
            command.parameters.push_back(parameter);
            if (isAtEnd())
                return true;
            if (at() != ',')
                return false;
            ++m_at;
        }
    }

    bool quoted(AtParameter& parameter)
    {
        const auto end = m_line.indexOf('"', m_at + 1);
        if (end < 0)
            return false;
        parameter.isQuoted = true;
        parameter.text = m_line.mid(m_at + 1, end - m_at - 1);
        m_at = end + 1;
        return true;
    }

    bool plain(AtParameter& parameter)
    {
        while (!isAtEnd() && at() != ',' && at() != '"')
            parameter.text += m_line.at(m_at++);
        return at() != '"';
    }

    QByteArray m_line;
    decltype(m_line.size()) m_at = 0;
};

} // namespace

bool AtCommand::has(int i) const
{
    return !text(i).isEmpty();
}

QByteArray AtCommand::text(int i) const
{
    const auto index = static_cast<size_t>(i);
    return index < parameters.size() ? parameters[index].text : QByteArray();
}

int AtCommand::number(int i, int omitted) const
{
    const auto index = static_cast<size_t>(i);
    if (index < parameters.size() && parameters[index].isQuoted)
        return -1;
    const QByteArray digits = text(i);
    if (digits.isEmpty())
        return omitted;
    for (const char c : digits) {
        if (!isDigit(c))
            return -1;
    }
    return digits.size() <= 9 ? digits.toInt() : -1;
}

QByteArray resultText(const AtResult& result, int cmee)
{
    if (result.kind == AtResult::Ok)
        return QByteArrayLiteral("OK");
    if (result.kind == AtResult::Error || cmee == 0)
        return QByteArrayLiteral("ERROR");
    QByteArray reason = QByteArray::number(result.number);
    if (result.kind == AtResult::CmsError)
        return QByteArrayLiteral("+CMS ERROR: ") + reason;
    for (const ErrorText& error : kErrorTexts) {
        if (cmee == 2 && error.number == result.number)
            reason = error.text;
    }
    return QByteArrayLiteral("+CME ERROR: ") + reason;
}

AtLine parseAtLine(const QByteArray& body)
{
    return Parser(normalised(body)).parse();
}
