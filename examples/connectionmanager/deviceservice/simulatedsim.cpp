#include "deviceservice/simulatedsim.h"

#include "common/codes.h"
#include "common/demomessages.h"

#include <algorithm>

namespace {

struct Text
{
    const char* from;
    const char* content;
};

constexpr Text Messages[] = {
    {"+15550101", "Welcome to Example Mobile."},
    {"+15550101", "Your bill is ready."},
    {"+15550102", "Are you at home?"},
    {"+15550102", "Call me back, please."},
    {"+15550103", "The train is late."},
    {"+15550103", "Now it is here."},
    {"+15550104", "Gr\u00fc\u00dfe aus K\u00f6ln!"},
    {"+15550105", "See you tomorrow."},
};

constexpr Text Contacts[] = {
    {"+15550102", "Ada"},
    {"+15550103", "Grace"},
    {"+15550104", "Zo\u00eb"},
};

} // namespace

SimulatedSim::SimulatedSim()
{
    for (const Text& message : Messages)
        addMessage(QString::fromUtf8(message.from), QString::fromUtf8(message.content));
    for (const Text& contact : Contacts) {
        BLPbItem entry;
        entry.contents.insert(QLatin1String(PhonebookField::Name),
                              QString::fromUtf8(contact.content));
        entry.contents.insert(QLatin1String(PhonebookField::Number),
                              QString::fromUtf8(contact.from));
        addPhonebookEntry(entry);
    }
}

BLSmsStorageState SimulatedSim::messageStorage() const
{
    BLSmsStorageState state;
    state.nSimUsed = static_cast<int>(m_messages.listSmsItem.size());
    state.nSimTotal = MessageRoom;
    return state;
}

const BLSmsListItem* SimulatedSim::addMessage(const QString& number, const QString& text)
{
    if (m_messages.listSmsItem.size() >= MessageRoom)
        return nullptr;
    BLSmsListItem item;
    item.nRef = ++m_lastRef;
    item.nStoreIn = Store::Sim;
    item.nTag = MessageTag::Unread;
    item.nCompleted = 1;
    item.nTotalPacket = 1;
    item.nCurrentPacket = 1;
    item.nBoxType = MessageBox::Inbox;
    item.strAddress = number;
    item.strDateTime =
        QStringLiteral("17/05/2024 12:%1").arg(m_lastRef % 60, 2, 10, QLatin1Char('0'));
    item.strContent = text;
    m_messages.listSmsItem.push_back(item);
    return &m_messages.listSmsItem.back();
}

bool SimulatedSim::deleteMessage(int ref)
{
    auto& items = m_messages.listSmsItem;
    const auto found = std::find_if(items.begin(), items.end(),
                                    [ref](const BLSmsListItem& item) { return item.nRef == ref; });
    if (found == items.end())
        return false;
    items.erase(found);
    return true;
}

BLPbGetStorageInfoCnf SimulatedSim::phonebookStorage() const
{
    BLPbGetStorageInfoCnf state;
    state.nSimUsed = static_cast<int>(m_phonebook.listPBItem.size());
    state.nSimTotal = PhonebookRoom;
    return state;
}

bool SimulatedSim::addPhonebookEntry(BLPbItem entry)
{
    if (m_phonebook.listPBItem.size() >= PhonebookRoom)
        return false;
    entry.nStore = Store::Sim;
    entry.nIndex = static_cast<int>(m_phonebook.listPBItem.size()) + 1;
    m_phonebook.listPBItem.append(entry);
    return true;
}
