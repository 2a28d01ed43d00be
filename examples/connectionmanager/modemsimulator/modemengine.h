#ifndef DEMO_MODEMENGINE_H
#define DEMO_MODEMENGINE_H

#include "modemsimulator/commandfamily.h"
#include "modemsimulator/faults.h"
#include "modemsimulator/modemcore.h"

#include <QStringList>

#include <functional>
#include <memory>
#include <vector>

class NetworkCommands;

/// The modem without its line: bytes of the other side in, bytes for the other side out. It reads
/// command lines (ITU-T V.250), lets the command families answer them, and performs what a script
/// or a person wants to happen.
///
/// Lines without "AT" are passed over in silence, as they are by a modem that was spoken to at the
/// wrong speed; what stands before "AT" is ignored. It keeps nothing longer than a command line of
/// kMaxLine bytes and a text of kMaxText bytes, whatever is sent.
class ModemEngine
{
public:
    static constexpr int kMaxLine = 2048;
    static constexpr int kMaxText = 2048;

    /// What the engine calls, at any time during take(), hangUp() and perform(). All are optional.
    struct Hooks
    {
        std::function<void(const QByteArray& bytes)> send;
        /// What is sent from now on is to leave that number of milliseconds later.
        std::function<void(int milliseconds)> delay;
        /// Comes before the answer to the command that has changed the state.
        std::function<void()> stateChanged;
        /// A command line was worked off: the names of its commands. Its answer was sent.
        std::function<void(const std::vector<QByteArray>& commands)> answered;
    };

    ModemEngine(ModemState state, Hooks hooks);
    ~ModemEngine();
    ModemEngine(const ModemEngine&) = delete;
    ModemEngine& operator=(const ModemEngine&) = delete;

    /// Takes what the other side sends, in pieces of any size.
    void take(const QByteArray& bytes);
    /// The other side has closed the line: what it had begun is forgotten. Settings remain.
    void hangUp();

    /// Lets something happen: a word and what belongs to it ("signal 7"). False when there is no
    /// such word, or it cannot happen now.
    bool perform(const QString& line);
    /// The words of perform().
    QStringList words() const { return m_words.keys(); }

    const ModemState& state() const { return m_core.state; }
    /// Moves the signal up and down between 10 and 28, as if somebody walked about.
    void walk();

private:
    template<class Family>
    Family* add();
    void addOwnWords();
    void takeByte(char byte);
    void takeTextByte(char byte);
    void executeLine();
    AtResult executeCommands(const AtLine& line);
    void finish(const AtResult& result);
    void sendReports();
    void settle();

    ModemCore m_core;
    Hooks m_hooks;
    Faults m_faults;
    std::vector<std::unique_ptr<CommandFamily>> m_families;
    NetworkCommands* m_network = nullptr; // one of m_families
    QHash<QByteArray, CommandFamily::Handler> m_commands;
    QHash<QString, CommandFamily::WordHandler> m_words;

    bool m_isSilent = false;
    bool m_isTooLong = false;
    bool m_isAtPrompt = false;
    QByteArray m_input;                // the line or the text so far
    std::vector<QByteArray> m_running; // names of the commands of the line that is worked off
    QByteArray m_information;          // its answer so far
    QByteArray m_output;
};

#endif
