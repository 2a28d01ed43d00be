#ifndef TESTS_EXAMPLES_MODEMLINE_H
#define TESTS_EXAMPLES_MODEMLINE_H

#include "modemsimulator/modemengine.h"

#include <QList>
#include <QStringList>

/// The engine of the simulated modem at the end of a line that remembers everything.
class ModemLine
{
public:
    explicit ModemLine(const ModemState& state = ModemState::makeDefault())
        : m_engine(state, hooks())
    {
    }

    ModemEngine& engine() { return m_engine; }
    QByteArray sent()
    {
        QByteArray bytes;
        bytes.swap(m_sent);
        return bytes;
    }
    QByteArray ask(const QByteArray& bytes)
    {
        m_engine.take(bytes);
        return sent();
    }
    /// Plays a dialogue and returns it with what the modem really says. Lines that begin with "$ "
    /// are command lines, with "^ " texts that Ctrl-Z ends, with "! " what is to happen; "cannot: "
    /// stands before what could not. Every other line is what the modem says.
    QStringList play(const QString& dialogue)
    {
        ask("ATE0\r");
        QStringList transcript;
        for (const QString& line : dialogue.split('\n', Qt::SkipEmptyParts)) {
            const QString rest = line.mid(2);
            if (line.startsWith("$ "))
                m_engine.take(rest.toLatin1() + '\r');
            else if (line.startsWith("^ "))
                m_engine.take(rest.toLatin1() + '\x1a');
            else if (!line.startsWith("! "))
                continue;
            else if (!m_engine.perform(rest))
                transcript += "cannot: " + rest;
            transcript += line;
            for (const QString& said : QString::fromLatin1(sent()).split("\r\n")) {
                if (!said.isEmpty())
                    transcript += said.trimmed();
            }
        }
        return transcript;
    }

    int changes = 0;         ///< of the state
    QByteArray sentAtChange; ///< what had been sent, and not been looked at, at the last one
    QList<int> delays;
    std::vector<QByteArray> answered; ///< names of the last line's commands

private:
    ModemEngine::Hooks hooks()
    {
        ModemEngine::Hooks hooks;
        hooks.send = [this](const QByteArray& bytes) { m_sent += bytes; };
        hooks.delay = [this](int milliseconds) {
            delays.append(milliseconds);
            m_sent += "<delay>";
        };
        hooks.stateChanged = [this] {
            ++changes;
            sentAtChange = m_sent;
        };
        hooks.answered = [this](const std::vector<QByteArray>& commands) { answered = commands; };
        return hooks;
    }

    QByteArray m_sent;
    ModemEngine m_engine;
};

#endif
