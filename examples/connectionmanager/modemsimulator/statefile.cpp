#include "modemsimulator/statefile.h"

#include <QFileInfo>
#include <QStringList>

#include <algorithm>
#include <set>

namespace {

// What a member may be.
struct Rule
{
    int lowest = 0; // of a number; of the characters of a text
    int highest = 200;
    const char* characters = nullptr; // of a text; null: any
};

constexpr char kDigits[] = "0123456789";
constexpr char kHexDigits[] = "0123456789ABCDEFabcdef";
constexpr char kDialDigits[] = "+0123456789*#";
constexpr int kMaxRoom = 250;

const QStringList& messageStatuses()
{
    static const QStringList statuses = {QStringLiteral("REC UNREAD"), QStringLiteral("REC READ"),
                                         QStringLiteral("STO UNSENT"), QStringLiteral("STO SENT")};
    return statuses;
}

// Writes the fields of the structures below into a map.
class Writer
{
public:
    CDataValue value{MAP_VALUE};

    void field(const char* name, const QString& text, Rule = {})
    {
        value.mapSet(name, CDataValue(text), false);
    }
    void field(const char* name, int number, Rule = {})
    {
        value.mapSet(name, CDataValue(number), false);
    }
    void field(const char* name, bool flag) { value.mapSet(name, CDataValue(flag), false); }
    template<class Part>
    void part(const char* name, Part& part)
    {
        value.mapSet(name, written(part), false);
    }
    template<class Item>
    void list(const char* name, std::vector<Item>& items)
    {
        CDataValue array(ARRAY_VALUE);
        for (Item& item : items)
            array.arrayAppend(written(item), false);
        value.mapSet(name, std::move(array), false);
    }

private:
    template<class Part>
    static CDataValue written(Part& part)
    {
        Writer writer;
        visit(writer, part);
        writer.value.synchJsonData();
        return std::move(writer.value);
    }
};

// Reads them from a map, and remembers the first thing that is wrong.
class Reader
{
public:
    Reader(CDataValue& value, QString path, QString* error)
        : m_value(value)
        , m_path(std::move(path))
        , m_error(error)
    {
        if (!value.isObject())
            fail(QString(), QStringLiteral("must be an object"));
    }

    void field(const char* name, QString& text, Rule rule = {})
    {
        if (CDataValue* member = found(name)) {
            const QString read = member->asQString();
            if (!member->isString() || !isWithin(read, rule))
                fail(QLatin1String(name), textRule(rule));
            else
                text = read;
        }
    }
    void field(const char* name, int& number, Rule rule)
    {
        if (CDataValue* member = found(name)) {
            const int read = member->isInt() ? member->asInt() : rule.lowest - 1;
            if (read < rule.lowest || read > rule.highest)
                fail(QLatin1String(name), QStringLiteral("must be a number from %1 to %2")
                                              .arg(rule.lowest)
                                              .arg(rule.highest));
            else
                number = read;
        }
    }
    void field(const char* name, bool& flag)
    {
        if (CDataValue* member = found(name)) {
            if (!member->isBool())
                fail(QLatin1String(name), QStringLiteral("must be true or false"));
            else
                flag = member->asBool();
        }
    }
    template<class Part>
    void part(const char* name, Part& part)
    {
        if (CDataValue* member = found(name))
            read(*member, pathOf(QLatin1String(name)), part);
    }
    template<class Item>
    void list(const char* name, std::vector<Item>& items)
    {
        CDataValue* member = found(name);
        if (member == nullptr)
            return;
        if (!member->isArray()) {
            fail(QLatin1String(name), QStringLiteral("must be a list"));
            return;
        }
        items.clear();
        for (unsigned int i = 0; i < member->arrayCount(); ++i) {
            items.emplace_back();
            read(member->arrayGet(i),
                 pathOf(QStringLiteral("%1[%2]").arg(QLatin1String(name)).arg(i)), items.back());
        }
    }
    // After all members were visited.
    void refuseUnknown()
    {
        if (!m_value.isObject())
            return;
        for (const std::string& key : m_value.mapGetKeys()) {
            if (m_known.count(key) == 0)
                fail(QString::fromStdString(key), QStringLiteral("is no member of the state"));
        }
    }

private:
    CDataValue* found(const char* name)
    {
        m_known.insert(name);
        return m_value.mapIsMember(name) ? &m_value.mapGet(name) : nullptr;
    }
    template<class Part>
    void read(CDataValue& value, const QString& path, Part& part)
    {
        Reader reader(value, path, m_error);
        visit(reader, part);
        reader.refuseUnknown();
    }
    static bool isWithin(const QString& text, const Rule& rule)
    {
        const auto isAllowed = [&rule](QChar character) {
            return rule.characters == nullptr || QLatin1String(rule.characters).contains(character);
        };
        return text.size() >= rule.lowest && text.size() <= rule.highest &&
               std::all_of(text.begin(), text.end(), isAllowed);
    }
    static QString textRule(const Rule& rule)
    {
        const QString size = QStringLiteral("must be a text of %1 to %2 characters")
                                 .arg(rule.lowest)
                                 .arg(rule.highest);
        return rule.characters == nullptr
                   ? size
                   : size + QStringLiteral(" out of \"%1\"").arg(QLatin1String(rule.characters));
    }
    QString pathOf(const QString& name) const
    {
        return m_path.isEmpty() || name.isEmpty() ? m_path + name
                                                  : m_path + QLatin1Char('.') + name;
    }
    void fail(const QString& name, const QString& what)
    {
        if (m_error->isEmpty())
            *m_error = QStringLiteral("\"%1\" %2").arg(pathOf(name), what);
    }

    CDataValue& m_value;
    QString m_path;
    QString* m_error;
    std::set<std::string> m_known;
};

template<class Visitor>
void visit(Visitor& visitor, EquipmentState& equipment)
{
    visitor.field("manufacturer", equipment.manufacturer);
    visitor.field("model", equipment.model);
    visitor.field("revision", equipment.revision);
    visitor.field("serialNumber", equipment.serialNumber);
}

template<class Visitor>
void visit(Visitor& visitor, SimState& sim)
{
    visitor.field("inserted", sim.inserted);
    visitor.field("iccid", sim.iccid, Rule{0, 20, kDigits});
    visitor.field("imsi", sim.imsi, Rule{0, 15, kDigits});
    visitor.field("number", sim.number, Rule{0, 21, kDialDigits});
    visitor.field("pin", sim.pin, Rule{4, 8, kDigits});
    visitor.field("puk", sim.puk, Rule{8, 8, kDigits});
    visitor.field("pinAsked", sim.pinAsked);
    visitor.field("pinAttempts", sim.pinAttempts, Rule{0, 3});
    visitor.field("pukAttempts", sim.pukAttempts, Rule{0, 10});
}

template<class Visitor>
void visit(Visitor& visitor, OperatorState& network)
{
    visitor.field("numeric", network.numeric, Rule{5, 6, kDigits});
    visitor.field("longName", network.longName, Rule{1, 16});
    visitor.field("shortName", network.shortName, Rule{1, 8});
    visitor.field("forbidden", network.forbidden);
    visitor.field("technology", network.technology, Rule{0, 13});
}

template<class Visitor>
void visit(Visitor& visitor, NetworkState& network)
{
    visitor.field("signal", network.signal, Rule{0, 99});
    visitor.field("mode", network.mode, Rule{0, 2});
    visitor.field("registration", network.registration, Rule{-1, 5});
    visitor.field("selected", network.selected, Rule{5, 6, kDigits});
    visitor.field("area", network.area, Rule{1, 4, kHexDigits});
    visitor.field("cell", network.cell, Rule{1, 8, kHexDigits});
    visitor.field("address", network.address, Rule{1, 45});
    visitor.list("operators", network.operators);
}

template<class Visitor>
void visit(Visitor& visitor, ContextState& context)
{
    visitor.field("cid", context.cid, Rule{1, 16});
    visitor.field("type", context.type, Rule{1, 8});
    visitor.field("apn", context.apn, Rule{0, 100});
}

template<class Visitor>
void visit(Visitor& visitor, MessageState& message)
{
    visitor.field("index", message.index, Rule{1, kMaxRoom});
    visitor.field("status", message.status);
    visitor.field("number", message.number, Rule{1, 21});
    visitor.field("time", message.time, Rule{0, 20});
    visitor.field("text", message.text, Rule{0, 160});
}

template<class Visitor>
void visit(Visitor& visitor, ContactState& contact)
{
    visitor.field("index", contact.index, Rule{1, kMaxRoom});
    visitor.field("number", contact.number, Rule{0, 40});
    visitor.field("name", contact.name, Rule{0, 30});
}

template<class Visitor>
void visit(Visitor& visitor, UssdState& ussd)
{
    visitor.field("request", ussd.request, Rule{1, 200});
    visitor.field("type", ussd.type, Rule{0, 5});
    visitor.field("text", ussd.text, Rule{0, 182});
}

template<class Visitor>
void visit(Visitor& visitor, ModemState& state)
{
    visitor.part("equipment", state.equipment);
    visitor.part("sim", state.sim);
    visitor.part("network", state.network);
    visitor.list("contexts", state.contexts);
    visitor.field("messageRoom", state.messageRoom, Rule{0, kMaxRoom});
    visitor.field("messagesArrived", state.messagesArrived, Rule{0, 24 * 60});
    visitor.list("messages", state.messages);
    visitor.field("contactRoom", state.contactRoom, Rule{1, kMaxRoom});
    visitor.list("contacts", state.contacts);
    visitor.list("ussd", state.ussd);
}

template<class Item>
QString placeError(const char* name, std::vector<Item>& items, int room)
{
    std::sort(items.begin(), items.end(),
              [](const Item& left, const Item& right) { return left.index < right.index; });
    for (size_t i = 0; i < items.size(); ++i) {
        if (items[i].index > room || (i > 0 && items[i].index == items[i - 1].index))
            return QStringLiteral("\"%1\" has no place %2, or has it twice")
                .arg(QLatin1String(name))
                .arg(items[i].index);
    }
    return {};
}

// What one member demands of another.
QString relationError(ModemState& state)
{
    QString error = placeError("messages", state.messages, state.messageRoom);
    if (error.isEmpty())
        error = placeError("contacts", state.contacts, state.contactRoom);
    for (const MessageState& message : state.messages) {
        if (error.isEmpty() && !messageStatuses().contains(message.status))
            error =
                QStringLiteral("\"messages\" has the unknown status \"%1\"").arg(message.status);
    }
    const auto& operators = state.network.operators;
    const auto isSelected = [&state](const OperatorState& candidate) {
        return candidate.numeric == state.network.selected;
    };
    if (error.isEmpty() && std::none_of(operators.begin(), operators.end(), isSelected))
        error = QStringLiteral("\"network.selected\" names none of \"network.operators\"");
    return error;
}

} // namespace

CDataValue toDataValue(const ModemState& state)
{
    // The writer only reads; the list of fields serves both directions.
    ModemState copy = state;
    Writer writer;
    visit(writer, copy);
    writer.value.synchJsonData();
    return std::move(writer.value);
}

bool fromDataValue(CDataValue value, ModemState* state, QString* error)
{
    ModemState read = *state;
    error->clear();
    Reader reader(value, QString(), error);
    visit(reader, read);
    reader.refuseUnknown();
    if (error->isEmpty())
        *error = relationError(read);
    if (!error->isEmpty())
        return false;
    *state = read;
    return true;
}

bool StateFile::load(ModemState* state, QString* error)
{
    if (m_path.isEmpty())
        return true;
    if (!QFileInfo::exists(m_path)) {
        if (save(*state))
            return true;
        *error = QStringLiteral("cannot create the state file %1; its name must end in .config or "
                                ".xml")
                     .arg(m_path);
        return false;
    }
    CDataValue value;
    if (!value.readFile(m_path)) {
        *error = QStringLiteral("cannot read the state file %1: it is no JSON text in a file whose "
                                "name ends in .config")
                     .arg(m_path);
        return false;
    }
    QString reason;
    if (!fromDataValue(value, state, &reason)) {
        *error = QStringLiteral("cannot use the state file %1: %2").arg(m_path, reason);
        return false;
    }
    return true;
}

bool StateFile::save(const ModemState& state) const
{
    return m_path.isEmpty() || toDataValue(state).saveFileAs(m_path);
}
