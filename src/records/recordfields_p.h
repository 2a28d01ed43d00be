#ifndef RECORDS_RECORDFIELDS_P_H
#define RECORDS_RECORDFIELDS_P_H

// The lists of fields and what walks them.
//
// A source file gives each record one list:
//
//     WZR_RECORD(BLCallVolume, "Volume of a voice call.")
//     {
//         field("nOut", record.nOut, "Level of the loudspeaker (3GPP TS 27.007, +CLVL)");
//         field("nIn", record.nIn, "Level of the microphone");
//     }
//
// and that is all a record costs: comparing, printing and the catalogue walk the list with a
// FieldVisitor each, and writing and reading go by a plan made from it. The visitors are reached
// through virtual functions, so that each list is compiled once and not once per visitor.

#include "records/recordcatalogue.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QVector>

#include <algorithm>
#include <list>
#include <type_traits>
#include <utility>

class CDataValue;
class QDebug;

namespace records {

class FieldVisitor;
class RecordPlan;

/// What is known of a record without its type.
struct RecordType
{
    const char* name;
    const char* meaning;
    void (*visit)(FieldVisitor& visitor, void* record);
    /// Where the fields lie: worked out with the first record, any one, and kept.
    const RecordPlan& (*plan)(const void* record);
};

/// What is known of a list without its type. `record` is the record type of the elements, null
/// for lists of other elements.
struct ListType
{
    RecordValueKind elementKind;
    const RecordType* record;
    std::size_t (*count)(const void* list);
    /// Visits every element, without a key.
    void (*visitElements)(FieldVisitor& visitor, const void* list);
    /// Visits a fresh element, without a key, and appends what the visitor made of it.
    void (*append)(FieldVisitor& visitor, void* list);
    bool (*equal)(const void* left, const void* right);
};

/// The key and what the catalogue says of a field. An element of a list has no key.
struct Field
{
    const char* key = nullptr;
    const char* meaning = nullptr;
    bool secret = false;
};

using TextMap = QHash<QString, QString>;

/// Walks the fields of one record in the order of its list.
class FieldVisitor
{
public:
    FieldVisitor() = default;
    FieldVisitor(const FieldVisitor&) = delete;
    FieldVisitor& operator=(const FieldVisitor&) = delete;

    void operator()(const char* key, int& member, const char* meaning);
    void operator()(const char* key, bool& member, const char* meaning);
    void operator()(const char* key, QString& member, const char* meaning);
    void operator()(const char* key, long long& member, const char* meaning);
    void operator()(const char* key, unsigned long& member, const char* meaning);
    void operator()(const char* key, TextMap& member, const char* meaning);
    /// A record or a list.
    template<class T>
    void operator()(const char* key, T& member, const char* meaning);
    /// A text that must never be printed.
    void secret(const char* key, QString& member, const char* meaning);

protected:
    ~FieldVisitor() = default;

private:
    void visitRecord(const char* key, const RecordType& type, void* member, const char* meaning);
    void visitList(const char* key, const ListType& type, void* member, const char* meaning);

    virtual void number(const Field& field, int& member) = 0;
    virtual void boolean(const Field& field, bool& member) = 0;
    virtual void text(const Field& field, QString& member) = 0;
    virtual void longNumber(const Field& field, long long& member) = 0;
    virtual void unsignedNumber(const Field& field, unsigned long& member) = 0;
    virtual void textMap(const Field& field, TextMap& member) = 0;
    virtual void record(const Field& field, const RecordType& type, void* member) = 0;
    virtual void list(const Field& field, const ListType& type, void* member) = 0;
};

/// Never destroyed: records are written until the process ends.
const RecordPlan& makePlan(const RecordType& type, const void* record);

/// `RecordTypeOf<R>::value` is the type of the record R; WZR_RECORD defines it.
template<class R>
struct RecordTypeOf;

template<class R>
const RecordPlan& planOf(const void* record)
{
    static const RecordPlan& plan = makePlan(RecordTypeOf<R>::value, record);
    return plan;
}

template<class T>
struct IsList : std::false_type
{
};
template<class T>
struct IsList<std::list<T>> : std::true_type
{
};
template<class T>
struct IsList<QList<T>> : std::true_type
{
};
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
template<class T>
struct IsList<QVector<T>> : std::true_type
{
};
#endif

template<class L>
class ListTypeOf
{
    using Element = typename L::value_type;

    static constexpr RecordValueKind elementKind()
    {
        if constexpr (std::is_same_v<Element, int>)
            return RecordValueKind::Number;
        else if constexpr (std::is_same_v<Element, QString>)
            return RecordValueKind::Text;
        else
            return RecordValueKind::Record;
    }
    static constexpr const RecordType* recordType()
    {
        if constexpr (elementKind() == RecordValueKind::Record)
            return &RecordTypeOf<Element>::value;
        else
            return nullptr;
    }
    static std::size_t count(const void* list)
    {
        return static_cast<std::size_t>(static_cast<const L*>(list)->size());
    }
    static void visitElements(FieldVisitor& visitor, const void* list)
    {
        // Visitors that are given a constant list only read, and a shared list stays shared.
        for (const Element& element : *static_cast<const L*>(list))
            visitor(nullptr, const_cast<Element&>(element), nullptr);
    }
    static void append(FieldVisitor& visitor, void* list)
    {
        Element element{};
        visitor(nullptr, element, nullptr);
        static_cast<L*>(list)->push_back(std::move(element));
    }
    static bool equal(const void* left, const void* right)
    {
        const L& one = *static_cast<const L*>(left);
        const L& other = *static_cast<const L*>(right);
        return std::equal(one.begin(), one.end(), other.begin(), other.end());
    }

public:
    static constexpr ListType value{elementKind(), recordType(), count,
                                    visitElements, append,       equal};
};

template<class T>
void FieldVisitor::operator()(const char* key, T& member, const char* meaning)
{
    if constexpr (IsList<T>::value)
        visitList(key, ListTypeOf<T>::value, &member, meaning);
    else
        visitRecord(key, RecordTypeOf<T>::value, &member, meaning);
}

void writeRecord(const RecordType& type, const void* record, CDataValue& data);
void readRecord(const RecordType& type, CDataValue& data, void* record);
bool equalRecords(const RecordType& type, const void* left, const void* right);
QDebug printRecord(const RecordType& type, const void* record, QDebug debug);

/// The records of one source file, in their order there, for the catalogue.
class RecordRegistration;
struct RecordGroup
{
    const char* header; ///< which declares them
    const RecordRegistration* first = nullptr;
    const RecordRegistration* last = nullptr;
};
class RecordRegistration
{
public:
    /// Runs before main(), and only links itself into the group.
    RecordRegistration(RecordGroup& group, const RecordType& type,
                       void (*describe)(FieldVisitor& visitor)) noexcept;

    const RecordType& type;
    /// Walks the list of a record with default values. Runs once, hence small rather than fast.
    void (*const describe)(FieldVisitor& visitor);
    mutable const RecordRegistration* next = nullptr;
};

extern RecordGroup connectionRecords;
extern RecordGroup messageRecords;
extern RecordGroup phonebookRecords;
extern RecordGroup diagnosticRecords;

} // namespace records

/// Defines everything that WZR_DECLARE_RECORD declares. The list of the fields follows in braces,
/// in which `record` is the record and `field` the visitor. The file names its group `recordGroup`.
// NOLINTBEGIN(bugprone-macro-parentheses): the argument is a type.
#define WZR_RECORD(Record, meaning)                                                                \
    static void visitFields(FieldVisitor& field, Record& record);                                  \
    template<>                                                                                     \
    struct records::RecordTypeOf<Record>                                                           \
    {                                                                                              \
        static constexpr RecordType value{#Record, meaning,                                        \
                                          [](FieldVisitor& field, void* record) {                  \
                                              visitFields(field, *static_cast<Record*>(record));   \
                                          },                                                       \
                                          planOf<Record>};                                         \
    };                                                                                             \
    void GetDataValueFromStruct(Record& record, CDataValue& data)                                  \
    {                                                                                              \
        writeRecord(RecordTypeOf<Record>::value, &record, data);                                   \
    }                                                                                              \
    void GetStructFromDataValue(CDataValue& data, Record& record)                                  \
    {                                                                                              \
        readRecord(RecordTypeOf<Record>::value, data, &record);                                    \
    }                                                                                              \
    bool operator==(const Record& left, const Record& right)                                       \
    {                                                                                              \
        return equalRecords(RecordTypeOf<Record>::value, &left, &right);                           \
    }                                                                                              \
    QDebug operator<<(QDebug debug, const Record& record)                                          \
    {                                                                                              \
        return printRecord(RecordTypeOf<Record>::value, &record, std::move(debug));                \
    }                                                                                              \
    static const RecordRegistration registrationOf##Record(                                        \
        recordGroup, RecordTypeOf<Record>::value, [](FieldVisitor& visitor) Q_DECL_COLD_FUNCTION { \
            Record record;                                                                         \
            visitFields(visitor, record);                                                          \
        });                                                                                        \
    static void visitFields(FieldVisitor& field, Record& record)
// NOLINTEND(bugprone-macro-parentheses)

#endif
