#include "modemsimulator/packetcommands.h"

#include "common/codes.h"

#include <algorithm>

namespace {

constexpr int kMaxContext = 16;

} // namespace

PacketCommands::PacketCommands(ModemCore& core)
    : CommandFamily(core)
{
    command("+CGDCONT", &PacketCommands::define);
    command("+CGACT", &PacketCommands::activate);
    command("+CGEREP", &PacketCommands::reporting);
    command("+CGPADDR", &PacketCommands::address);
    word("drop", &PacketCommands::drop);
}

void PacketCommands::simChanged()
{
    if (m_core.simError() != AtError::None)
        deactivateAll("ME DEACT");
}

void PacketCommands::registrationChanged()
{
    if (!m_core.isRegistered())
        deactivateAll("NW DEACT");
}

AtResult PacketCommands::define(const AtCommand& command)
{
    switch (command.form) {
    case AtCommand::Test:
        for (const char* type : {"\"IP\"", "\"IPV6\"", "\"IPV4V6\""})
            answer(command, "(1-16)," + QByteArray(type) + ",,,(0),(0)");
        return AtResult::ok();
    case AtCommand::Read:
        for (const ContextState& context : m_core.state.contexts)
            answer(command, QByteArray::number(context.cid) + ",\"" + context.type.toLatin1() +
                                "\",\"" + encodedText(TeCharset::Ira, context.apn) + "\",\"\",0,0");
        return AtResult::ok();
    case AtCommand::Set:
        return defineOne(command);
    default:
        return AtResult::cme(AtError::OperationNotSupported);
    }
}

AtResult PacketCommands::defineOne(const AtCommand& command)
{
    ContextState context;
    context.cid = command.number(0);
    const QByteArray type = command.text(1).toUpper();
    const bool isType = type == "IP" || type == "IPV6" || type == "IPV4V6";
    const bool isRemoval = command.parameters.size() == 1;
    const bool isName =
        command.text(2).size() <= 100 && decodedText(TeCharset::Ira, command.text(2), &context.apn);
    if (context.cid < 1 || context.cid > kMaxContext || (!isType && !isRemoval) || !isName)
        return AtResult::cme(AtError::IncorrectParameters);
    if (m_active.count(context.cid) != 0)
        return AtResult::cme(AtError::OperationNotAllowed);
    context.type = QString::fromLatin1(type);
    auto& contexts = m_core.state.contexts;
    auto place = contexts.begin();
    while (place != contexts.end() && place->cid < context.cid)
        ++place;
    if (place != contexts.end() && place->cid == context.cid)
        place = contexts.erase(place);
    if (!isRemoval)
        contexts.insert(place, context);
    m_core.changed();
    return AtResult::ok();
}

const ContextState* PacketCommands::find(int cid) const
{
    for (const ContextState& context : m_core.state.contexts) {
        if (context.cid == cid)
            return &context;
    }
    return nullptr;
}

AtResult PacketCommands::activate(const AtCommand& command)
{
    switch (command.form) {
    case AtCommand::Test:
        answer(command, "(0,1)");
        return AtResult::ok();
    case AtCommand::Read:
        for (const ContextState& context : m_core.state.contexts)
            answer(command, QByteArray::number(context.cid) + ',' +
                                (m_active.count(context.cid) != 0 ? '1' : '0'));
        return AtResult::ok();
    case AtCommand::Set:
        return setActive(command);
    default:
        return AtResult::cme(AtError::OperationNotSupported);
    }
}

// Without a number all contexts are meant. One that is in that state already stays in it.
AtResult PacketCommands::setActive(const AtCommand& command)
{
    if (m_core.simError() != AtError::None)
        return AtResult::cme(m_core.simError());
    const int state = command.number(0);
    if (state < 0 || state > 1)
        return AtResult::cme(AtError::IncorrectParameters);
    std::set<int> wanted;
    for (int i = 1; command.has(i); ++i)
        wanted.insert(command.number(i));
    if (wanted.empty()) {
        for (const ContextState& context : m_core.state.contexts)
            wanted.insert(context.cid);
    }
    for (const int cid : wanted) {
        if (find(cid) == nullptr)
            return AtResult::cme(AtError::InvalidIndex);
    }
    if (state == 1 && !m_core.isRegistered())
        return AtResult::cme(AtError::NoNetworkService);
    for (const int cid : wanted) {
        if (state == 1)
            m_active.insert(cid);
        else
            m_active.erase(cid);
    }
    return AtResult::ok();
}

AtResult PacketCommands::reporting(const AtCommand& command)
{
    if (command.form == AtCommand::Test) {
        answer(command, "(0-2),(0)");
        return AtResult::ok();
    }
    if (command.form == AtCommand::Read) {
        answer(command, QByteArray::number(m_reporting) + ",0");
        return AtResult::ok();
    }
    const int mode = command.number(0, 0);
    if (mode < 0 || mode > 2 || command.number(1, 0) != 0)
        return AtResult::cme(AtError::IncorrectParameters);
    m_reporting = mode;
    return AtResult::ok();
}

AtResult PacketCommands::address(const AtCommand& command)
{
    if (command.form == AtCommand::Read)
        return AtResult::cme(AtError::OperationNotSupported);
    const int cid = command.number(0, 0);
    if (cid != 0 && find(cid) == nullptr)
        return AtResult::cme(AtError::InvalidIndex);
    QByteArray defined;
    for (const ContextState& context : m_core.state.contexts) {
        const QByteArray number = QByteArray::number(context.cid);
        defined += (defined.isEmpty() ? "" : ",") + number;
        if (command.form == AtCommand::Test || (cid != 0 && cid != context.cid))
            continue;
        const bool isActive = m_active.count(context.cid) != 0;
        const QByteArray address = m_core.state.network.address.toLatin1();
        answer(command, number + (isActive ? ",\"" + address + '"' : QByteArray()));
    }
    if (command.form == AtCommand::Test)
        answer(command, '(' + defined + ')');
    return AtResult::ok();
}

bool PacketCommands::drop(const QString& arguments)
{
    if (!arguments.isEmpty() && arguments != QLatin1String("me"))
        return false;
    const bool wasActive = !m_active.empty();
    deactivateAll(arguments.isEmpty() ? "NW DEACT" : "ME DEACT");
    return wasActive;
}

void PacketCommands::deactivateAll(const QByteArray& reason)
{
    for (const int cid : m_active) {
        const ContextState* context = find(cid);
        if (m_reporting > 0 && context != nullptr)
            m_core.report("+CGEV: " + reason + " \"" + context->type.toLatin1() + "\",\"" +
                          m_core.state.network.address.toLatin1() + "\"," +
                          QByteArray::number(cid));
    }
    m_active.clear();
}
