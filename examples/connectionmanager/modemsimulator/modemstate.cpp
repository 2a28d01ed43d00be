#include "modemsimulator/modemstate.h"

#include <algorithm>

namespace {

struct Text
{
    const char* number;
    const char* text;
};

constexpr Text kMessages[] = {
    {"+15550101", "Welcome to Example Mobile."},
    {"+15550101", "Your bill is ready."},
    {"+15550102", "Are you at home?"},
    {"+15550102", "Call me back, please."},
    {"+15550103", "The train is late."},
    {"+15550103", "Now it is here."},
    {"+15550104", "Gr\u00fc\u00dfe aus K\u00f6ln!"},
    {"+15550105", "See you tomorrow."},
};

constexpr Text kContacts[] = {
    {"+15550102", "Ada"},
    {"+15550103", "Grace"},
    {"+15550104", "Zo\u00eb"},
};

template<class Item>
int freeIndex(const std::vector<Item>& items, int room)
{
    int index = 1;
    for (const Item& item : items) {
        if (item.index == index)
            ++index;
    }
    return index <= room ? index : 0;
}

template<class Item>
void insertByIndex(std::vector<Item>& items, const Item& item)
{
    const auto isBefore = [](const Item& left, const Item& right) {
        return left.index < right.index;
    };
    items.insert(std::upper_bound(items.begin(), items.end(), item, isBefore), item);
}

} // namespace

ModemState ModemState::makeDefault()
{
    ModemState state;
    // Codes of test networks, which no operator has.
    state.network.operators = {{QStringLiteral("00101"), QStringLiteral("Example Mobile"),
                                QStringLiteral("Example"), false, 7},
                               {QStringLiteral("00102"), QStringLiteral("Sample Telecom"),
                                QStringLiteral("Sample"), false, 2},
                               {QStringLiteral("99999"), QStringLiteral("Closed Network"),
                                QStringLiteral("Closed"), true, 0}};
    for (const Text& message : kMessages)
        state.addReceived(QString::fromUtf8(message.number), QString::fromUtf8(message.text));
    for (const Text& contact : kContacts)
        state.insert(ContactState{state.freeContactIndex(), QString::fromUtf8(contact.number),
                                  QString::fromUtf8(contact.text)});
    state.ussd = {{QStringLiteral("*100#"), 0, QStringLiteral("Your credit is 12.34.")}};
    return state;
}

int ModemState::addReceived(const QString& number, const QString& text)
{
    MessageState message;
    message.index = freeMessageIndex();
    if (message.index == 0)
        return 0;
    messagesArrived = (messagesArrived + 1) % (24 * 60);
    message.status = QStringLiteral("REC UNREAD");
    message.number = number;
    message.time = QStringLiteral("24/05/17,%1:%2:00+00")
                       .arg((12 + messagesArrived / 60) % 24, 2, 10, QLatin1Char('0'))
                       .arg(messagesArrived % 60, 2, 10, QLatin1Char('0'));
    message.text = text;
    insert(message);
    return message.index;
}

int ModemState::freeMessageIndex() const
{
    return freeIndex(messages, messageRoom);
}

int ModemState::freeContactIndex() const
{
    return freeIndex(contacts, contactRoom);
}

void ModemState::insert(const MessageState& message)
{
    insertByIndex(messages, message);
}

void ModemState::insert(const ContactState& contact)
{
    insertByIndex(contacts, contact);
}
