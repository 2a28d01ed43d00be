#ifndef DEMO_COMMANDFAMILY_H
#define DEMO_COMMANDFAMILY_H

#include "modemsimulator/atcommand.h"
#include "modemsimulator/modemcore.h"

#include <QHash>
#include <QString>

#include <functional>

/// The commands on one subject: a table of handlers by name. Beside them, the words of a script or
/// of the console that let something happen in the same subject. The core is borrowed and must
/// live longer.
class CommandFamily
{
public:
    using Handler = std::function<AtResult(const AtCommand&)>;
    /// Takes what stands behind the word. False when it makes no sense or cannot happen now.
    using WordHandler = std::function<bool(const QString& arguments)>;

    virtual ~CommandFamily() = default;
    CommandFamily(const CommandFamily&) = delete;
    CommandFamily& operator=(const CommandFamily&) = delete;

    const QHash<QByteArray, Handler>& commands() const { return m_commands; }
    const QHash<QString, WordHandler>& words() const { return m_words; }

    /// The settings as after power-on.
    virtual void reset() {}
    /// After a change that concerns whether the SIM is ready.
    virtual void simChanged() {}
    /// After a change that concerns the registration; it may have remained the same.
    virtual void registrationChanged() {}

protected:
    explicit CommandFamily(ModemCore& core)
        : m_core(core)
    {
    }

    template<class Family>
    void command(const char* name, AtResult (Family::*handler)(const AtCommand&))
    {
        m_commands.insert(name, [this, handler](const AtCommand& command) {
            return (static_cast<Family*>(this)->*handler)(command);
        });
    }
    template<class Family>
    void word(const char* name, bool (Family::*handler)(const QString&))
    {
        m_words.insert(QLatin1String(name), [this, handler](const QString& arguments) {
            return (static_cast<Family*>(this)->*handler)(arguments);
        });
    }

    /// A command that only keeps a number, with its three forms.
    AtResult numberSetting(const AtCommand& command, int highest, int& value);
    /// "+CSCS: ..." as a line of the answer.
    void answer(const AtCommand& command, const QByteArray& values);

    ModemCore& m_core;

private:
    QHash<QByteArray, Handler> m_commands;
    QHash<QString, WordHandler> m_words;
};

#endif
