#ifndef DEMO_MESSAGECOMMANDS_H
#define DEMO_MESSAGECOMMANDS_H

#include "modemsimulator/commandfamily.h"

#include <vector>

/// Short messages on the SIM, in text mode (3GPP TS 27.005). A message that arrives while the SIM
/// is not ready or has no room waits in the network. A message that is sent is stored as sent
/// where there is room.
class MessageCommands : public CommandFamily
{
public:
    explicit MessageCommands(ModemCore& core);
    void reset() override;
    void registrationChanged() override { deliver(); }

private:
    AtResult storage(const AtCommand& command);
    AtResult mode(const AtCommand& command);
    AtResult list(const AtCommand& command);
    AtResult read(const AtCommand& command);
    AtResult remove(const AtCommand& command);
    AtResult send(const AtCommand& command);
    AtResult notification(const AtCommand& command);
    bool messageWord(const QString& arguments);

    int accessError() const;
    int textModeError() const;
    void answerMessage(const QByteArray& start, MessageState& message);
    MessageState* find(int index);
    AtResult removeRead(int extent);
    AtResult submit(const QString& number, const QByteArray& bytes);
    void deliver();

    bool m_textMode = false;
    int m_notifyMode = 0;    // <mode> of "+CNMI"
    int m_notifyMessage = 0; // <mt> of "+CNMI"
    int m_reference = 0;     // of the last message that was sent
    std::vector<MessageState> m_waiting;
};

#endif
