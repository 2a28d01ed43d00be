#ifndef RECORDS_RECORDPLAN_P_H
#define RECORDS_RECORDPLAN_P_H

// The fields of all records as tables, and the walk over a record by its table.
//
// Each record has one plan, a constant table of its fields:
//
//     WZR_RECORD(BLCallVolume, "records/connectionrecords.h", "Volume of a voice call.",
//         WZR_FIELD(nOut, "Level of the loudspeaker (3GPP TS 27.007, +CLVL)"),
//         WZR_FIELD(nIn, "Level of the microphone"))
//
// recordlists.cmake makes the tables from the headers of the records. Comparing, printing,
// describing, writing and reading walk them without knowing the record's type.

#include "records/recordcatalogue.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QVector>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <list>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

class CDataValue;
class QDebug;

namespace records {

struct ListType;
struct RecordType;
using TextMap = QHash<QString, QString>;

/// How many fields a record may have.
constexpr std::size_t kMostFields = 32;

/// What a member of a record is, or an element of a list.
struct ValueType
{
    RecordValueKind kind;
    union {
        const RecordType* record; // of Record
        const ListType* list;     // of List
    };

    constexpr explicit ValueType(RecordValueKind scalar)
        : kind(scalar)
        , record(nullptr)
    {
    }
    constexpr explicit ValueType(const RecordType& type)
        : kind(RecordValueKind::Record)
        , record(&type)
    {
    }
    constexpr explicit ValueType(const ListType& type)
        : kind(RecordValueKind::List)
        , list(&type)
    {
    }
};

/// One field of a record.
struct Field
{
    const char* key;
    const char* meaning;
    ValueType type;
    std::uint32_t offset; // of the member in the record
    std::uint32_t keySize;

    std::string_view keyText() const { return {key, keySize}; }
    const void* in(const void* record) const { return static_cast<const char*>(record) + offset; }
    void* in(void* record) const { return static_cast<char*>(record) + offset; }
    /// Whether the value must never be printed: its meaning says so.
    bool isSecret() const
    {
        return std::string_view(meaning).find("; a secret") != std::string_view::npos;
    }
};

/// A range of constants.
template<class T>
struct Table
{
    const T* first;
    std::size_t count;

    const T* begin() const { return first; }
    const T* end() const { return first + count; }
    const T& operator[](std::size_t index) const { return first[index]; }
};

/// The plan of a record.
struct RecordType
{
    const char* name;
    const char* header; // which declares it
    const char* meaning;
    Table<Field> fields;       // in the order of the header
    Table<std::uint8_t> byKey; // their places, in the byte order of the keys
};

/// What can be done with a list when only the address of the member is known.
struct ListType
{
    ValueType element;
    std::size_t (*count)(const void* list);
    bool (*equal)(const void* left, const void* right);
    void* (*append)(void* list); // appends a default element and returns its address
    void (*each)(const void* list, void* context,
                 void (*visit)(void* context, const void* element));

    /// Calls `visit` with the place of each element.
    template<class Visit>
    void forEach(const void* listPlace, Visit visit) const
    {
        each(listPlace, &visit,
             [](void* context, const void* place) { (*static_cast<Visit*>(context))(place); });
    }
};

/// `RecordTypeOf<R>::value` is the plan of the record R; WZR_RECORD defines it.
template<class R>
struct RecordTypeOf;

template<class L>
struct ListTypeOf;

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

template<class T>
constexpr ValueType valueTypeOf()
{
    if constexpr (std::is_same_v<T, int>)
        return ValueType(RecordValueKind::Number);
    else if constexpr (std::is_same_v<T, bool>)
        return ValueType(RecordValueKind::Boolean);
    else if constexpr (std::is_same_v<T, QString>)
        return ValueType(RecordValueKind::Text);
    else if constexpr (std::is_same_v<T, long long>)
        return ValueType(RecordValueKind::LongNumber);
    else if constexpr (std::is_same_v<T, unsigned long>)
        return ValueType(RecordValueKind::UnsignedNumber);
    else if constexpr (std::is_same_v<T, TextMap>)
        return ValueType(RecordValueKind::TextMap);
    else if constexpr (IsList<T>::value)
        return ValueType(ListTypeOf<T>::value);
    else
        return ValueType(RecordTypeOf<T>::value);
}

template<class L>
struct ListTypeOf
{
    using Element = typename L::value_type;
    static const L& at(const void* list) { return *static_cast<const L*>(list); }
    static L& at(void* list) { return *static_cast<L*>(list); }

    static constexpr ListType value{
        valueTypeOf<Element>(), [](const void* list) { return std::size_t(at(list).size()); },
        [](const void* left, const void* right) {
            return std::equal(at(left).begin(), at(left).end(), at(right).begin(), at(right).end());
        },
        [](void* list) -> void* {
            at(list).push_back(Element{});
            return &at(list).back();
        },
        [](const void* list, void* context, void (*visit)(void*, const void*)) {
            for (const Element& element : at(list))
                visit(context, &element);
        }};
};

/// A member or element by its place, constant where the place is.
template<class T, class Place>
auto& valueAt(Place* place)
{
    return *static_cast<std::conditional_t<std::is_const_v<Place>, const T, T>*>(place);
}

/// Calls `walker` with the member or element at `place`: with a reference of its own type, or, for
/// a record or a list, with its type and its place.
template<class Place, class Walker>
auto walk(const ValueType& type, Place* place, Walker&& walker)
{
    switch (type.kind) {
    case RecordValueKind::Number:
        return walker(valueAt<int>(place));
    case RecordValueKind::Boolean:
        return walker(valueAt<bool>(place));
    case RecordValueKind::Text:
        return walker(valueAt<QString>(place));
    case RecordValueKind::LongNumber:
        return walker(valueAt<long long>(place));
    case RecordValueKind::UnsignedNumber:
        return walker(valueAt<unsigned long>(place));
    case RecordValueKind::TextMap:
        return walker(valueAt<TextMap>(place));
    case RecordValueKind::Record:
        return walker(*type.record, place);
    case RecordValueKind::List:
        break;
    }
    return walker(*type.list, place);
}

// The walkers, each in a source of its own. The fifth, recordCatalogue(), describes the fields.
bool equalRecords(const RecordType& type, const void* left, const void* right);
QDebug printRecord(const RecordType& type, const void* record, QDebug debug);
void writeRecord(const RecordType& type, const void* record, CDataValue& data);
void readRecord(const RecordType& type, CDataValue& data, void* record);

/// The plans of all records, in the order of the headers.
std::vector<const RecordType*> allRecords();

/// The places of the fields in the byte order of their keys.
template<std::size_t N>
constexpr std::array<std::uint8_t, N> orderByKey(const Field (&fields)[N])
{
    static_assert(N <= kMostFields);
    std::array<std::uint8_t, N> order{};
    for (std::size_t count = 0; count < N; ++count) {
        std::size_t place = count;
        for (; place > 0; --place) {
            const char* before = fields[order[place - 1]].key;
            if (std::string_view(before) < std::string_view(fields[count].key))
                break;
            order[place] = order[place - 1];
        }
        order[place] = std::uint8_t(count);
    }
    return order;
}

} // namespace records

/// A field of a record: the member, which is also the key, and its meaning.
#define WZR_FIELD(member, meaning)                                                                 \
    Field                                                                                          \
    {                                                                                              \
#member, meaning, valueTypeOf < decltype(Record::member)>(), offsetof(Record, member),     \
            sizeof(#member) - 1                                                                    \
    }

/// Defines everything that WZR_DECLARE_RECORD declares, from the fields.
// NOLINTBEGIN(bugprone-macro-parentheses): the argument is a type.
#define WZR_RECORD(R, header, meaning, ...)                                                        \
    template<>                                                                                     \
    struct records::RecordTypeOf<R>                                                                \
    {                                                                                              \
        using Record = R;                                                                          \
        static constexpr Field fields[] = {__VA_ARGS__};                                           \
        static constexpr auto order = orderByKey(fields);                                          \
        static constexpr RecordType value{                                                         \
            #R, header, meaning, {fields, order.size()}, {order.data(), order.size()}};            \
    };                                                                                             \
    void GetDataValueFromStruct(R& record, CDataValue& data)                                       \
    {                                                                                              \
        records::writeRecord(records::RecordTypeOf<R>::value, &record, data);                      \
    }                                                                                              \
    void GetStructFromDataValue(CDataValue& data, R& record)                                       \
    {                                                                                              \
        records::readRecord(records::RecordTypeOf<R>::value, data, &record);                       \
    }                                                                                              \
    bool operator==(const R& left, const R& right)                                                 \
    {                                                                                              \
        return records::equalRecords(records::RecordTypeOf<R>::value, &left, &right);              \
    }                                                                                              \
    QDebug operator<<(QDebug debug, const R& record)                                               \
    {                                                                                              \
        return records::printRecord(records::RecordTypeOf<R>::value, &record, std::move(debug));   \
    }
// NOLINTEND(bugprone-macro-parentheses)

#endif
