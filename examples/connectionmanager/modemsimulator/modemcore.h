#ifndef DEMO_MODEMCORE_H
#define DEMO_MODEMCORE_H

#include "modemsimulator/atcommand.h"
#include "modemsimulator/modemstate.h"
#include "modemsimulator/techarset.h"

#include <functional>
#include <vector>

class CommandFamily;

/// What the command families share: the state, the settings that several of them need, and the way
/// to the other side. The engine owns it and collects what the families hand in here.
class ModemCore
{
public:
    explicit ModemCore(ModemState initial);

    ModemState state;
    TeCharset charset = TeCharset::Ira;
    bool echo = true;
    int errorForm = 0;        ///< "+CMEE"
    bool pinVerified = false; ///< since power-on

    /// What the SIM answers to a request that needs it, an error number; 0 when it is ready.
    int simError() const;
    /// <stat> of "+CREG".
    int registration() const;
    bool isRegistered() const;
    const OperatorState& operatorInUse() const;

    /// A line of the running command's answer.
    void answer(const QByteArray& line) { lines.push_back(line); }
    /// A line that nobody asked for. It leaves when no answer is under way.
    void report(const QByteArray& line) { reports.push_back(line); }
    /// The state is not what it was.
    void changed() { hasChanged = true; }
    /// The SIM may be ready now, or not any more. Tells every family; so does the next.
    void simChanged();
    void registrationChanged();
    /// A text between quotation marks in the set of the other side.
    QByteArray quoted(const QString& text) const { return '"' + encodedText(charset, text) + '"'; }

    /// What is done with the text that follows a prompt. Set with AtResult::prompt().
    std::function<AtResult(const QByteArray& text)> takeText;

    // For the engine.
    std::vector<CommandFamily*> families;
    std::vector<QByteArray> lines;
    std::vector<QByteArray> reports;
    bool hasChanged = false;
};

#endif
