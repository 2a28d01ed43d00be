#include "records/recordfields_p.h"

#include <QDebug>

namespace records {

void FieldVisitor::operator()(const char* key, int& member, const char* meaning)
{
    number({key, meaning}, member);
}

void FieldVisitor::operator()(const char* key, bool& member, const char* meaning)
{
    boolean({key, meaning}, member);
}

void FieldVisitor::operator()(const char* key, QString& member, const char* meaning)
{
    text({key, meaning}, member);
}

void FieldVisitor::operator()(const char* key, long long& member, const char* meaning)
{
    longNumber({key, meaning}, member);
}

void FieldVisitor::operator()(const char* key, unsigned long& member, const char* meaning)
{
    unsignedNumber({key, meaning}, member);
}

void FieldVisitor::operator()(const char* key, TextMap& member, const char* meaning)
{
    textMap({key, meaning}, member);
}

void FieldVisitor::secret(const char* key, QString& member, const char* meaning)
{
    text({key, meaning, true}, member);
}

void FieldVisitor::visitRecord(const char* key, const RecordType& type, void* member,
                               const char* meaning)
{
    record({key, meaning}, type, member);
}

void FieldVisitor::visitList(const char* key, const ListType& type, void* member,
                             const char* meaning)
{
    list({key, meaning}, type, member);
}

namespace {

/// Compares each member with the one at the same place of another record.
class Comparer final : public FieldVisitor
{
public:
    Comparer(const void* visited, const void* other)
        : m_visited(static_cast<const char*>(visited))
        , m_other(static_cast<const char*>(other))
    {
    }
    bool isEqual() const { return m_equal; }

private:
    const void* otherPlace(const void* member) const
    {
        return m_other + (static_cast<const char*>(member) - m_visited);
    }
    template<class T>
    void compare(const T& member)
    {
        m_equal = m_equal && member == *static_cast<const T*>(otherPlace(&member));
    }
    void number(const Field&, int& member) override { compare(member); }
    void boolean(const Field&, bool& member) override { compare(member); }
    void text(const Field&, QString& member) override { compare(member); }
    void longNumber(const Field&, long long& member) override { compare(member); }
    void unsignedNumber(const Field&, unsigned long& member) override { compare(member); }
    void textMap(const Field&, TextMap& member) override { compare(member); }
    void record(const Field&, const RecordType& type, void* member) override
    {
        m_equal = m_equal && equalRecords(type, member, otherPlace(member));
    }
    void list(const Field&, const ListType& type, void* member) override
    {
        m_equal = m_equal && type.equal(member, otherPlace(member));
    }

    const char* m_visited;
    const char* m_other;
    bool m_equal = true;
};

/// Prints "key: value" for fields and "value" for elements, with commas between them.
class Printer final : public FieldVisitor
{
public:
    explicit Printer(QDebug& debug)
        : m_debug(debug)
    {
    }

private:
    void begin(const Field& field)
    {
        m_debug << (m_first ? "" : ", ");
        m_first = false;
        if (field.key)
            m_debug << field.key << ": ";
    }
    template<class T>
    void print(const Field& field, const T& member)
    {
        begin(field);
        m_debug << member;
    }
    void number(const Field& field, int& member) override { print(field, member); }
    void boolean(const Field& field, bool& member) override { print(field, member); }
    void text(const Field& field, QString& member) override
    {
        if (field.secret && !member.isEmpty())
            print(field, "(hidden)");
        else
            print(field, member);
    }
    void longNumber(const Field& field, long long& member) override { print(field, member); }
    void unsignedNumber(const Field& field, unsigned long& member) override
    {
        print(field, member);
    }
    void textMap(const Field& field, TextMap& member) override
    {
        begin(field);
        m_debug << '{';
        QList<QString> keys = member.keys();
        std::sort(keys.begin(), keys.end());
        for (const QString& key : std::as_const(keys))
            m_debug << (key == keys.constFirst() ? "" : ", ") << key << ": " << member.value(key);
        m_debug << '}';
    }
    void record(const Field& field, const RecordType& type, void* member) override
    {
        begin(field);
        printRecord(type, member, m_debug);
    }
    void list(const Field& field, const ListType& type, void* member) override
    {
        begin(field);
        m_debug << '[';
        Printer elements(m_debug);
        type.visitElements(elements, member);
        m_debug << ']';
    }

    QDebug& m_debug;
    bool m_first = true;
};

} // namespace

// The lists take records that can be changed, because reading changes them; these visitors change
// nothing.

bool equalRecords(const RecordType& type, const void* left, const void* right)
{
    Comparer comparer(left, right);
    type.visit(comparer, const_cast<void*>(left));
    return comparer.isEqual();
}

QDebug printRecord(const RecordType& type, const void* record, QDebug debug)
{
    const QDebugStateSaver saver(debug);
    debug.nospace() << type.name << '(';
    Printer printer(debug);
    type.visit(printer, const_cast<void*>(record));
    debug << ')';
    return debug;
}

} // namespace records
