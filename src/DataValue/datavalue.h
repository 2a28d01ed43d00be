#ifndef DATAVALUE_DATAVALUE_H
#define DATAVALUE_DATAVALUE_H

#include "wzrframework_export.h"

#include <QDate>
#include <QMetaType>
#include <QString>

#include <list>
#include <string>
#include <string_view>
#include <vector>

namespace Json {
class Value;
}
class PackedBlock;
struct PackedNode;

/// The kind of a CDataValue. 0 to 7 are also the numbers of JsonCpp's value types.
enum ENUM_VALUE_TYPE : int {
    NULL_VALUE = 0,          ///< no value
    INT_VALUE = 1,           ///< signed 32-bit integer
    UINT_VALUE = 2,          ///< unsigned 32-bit integer
    REAL_VALUE = 3,          ///< double
    STRING_VALUE = 4,        ///< byte string, UTF-8
    BOOLEAN_VALUE = 5,       ///< bool
    ARRAY_VALUE = 6,         ///< list of values, in index order
    MAP_VALUE = 7,           ///< members by key, in byte order of the keys
    ADDRESS_VALUE = 8,       ///< an untyped pointer that means something in this process only
    ADDRESS_ARRAY_VALUE = 9, ///< list of values that may be addresses
    ADDRESS_MAP_VALUE = 10   ///< members that may be addresses
};

/// The style of the JSON text of a value.
enum ENUM_STYLE : int {
    FAST_STYLE = 0,  ///< one line without blanks, then a line feed
    STYLED_STYLE = 1 ///< indented by three blanks, short arrays on one line, then a line feed
};

// The characters of the literals u8"...": from C++20 on they are of a type of their own, and would
// be taken for addresses.
#ifdef __cpp_char8_t
using DataValueChar8 = char8_t;
#else
struct DataValueChar8;
#endif

/// The one value type for all data: requests, answers, business records, configuration.
///
/// A value is a scalar, a container of further values, or an address (a pointer that is never
/// written as text). It is a plain value: changing a copy leaves the source alone.
///
/// **Text and children.** Conceptually every value keeps a JSON mirror, and text, counts, keys,
/// searches and equality are read from that mirror. A scalar is its own mirror; a container's
/// mirror repeats its children's. An operation on a container updates that container's mirror at
/// once. It reaches the ancestors' mirrors only when it is asked to *synchronise* (the trailing
/// `bool` of the operations). So a child changed through a reference, without synchronising, shows
/// in its own text at once and in the text of its ancestors only after a later synchronising
/// operation; until then they show what was there before. This is meant: a tree is built with
/// `false` and synchronised once, or finished children are stored, whose copies are complete.
///
///     CDataValue envelope(MAP_VALUE);
///     envelope.mapSet("IPCMSG_TYPE", CDataValue("WZR_MESSAGE_QUIT"), false);
///     envelope.parseToQString(FAST_STYLE); // {"IPCMSG_TYPE":"WZR_MESSAGE_QUIT"} and a line feed
///
/// **Misses.** A look-up that finds nothing returns a reference to the process-wide null value
/// m_sNull, never an error. What a caller writes into it is discarded at the next miss, with a
/// warning in the log.
///
/// **Wrong kinds.** A conversion of the wrong kind returns 0, false, empty text or a null pointer
/// and logs one warning. A container operation on the wrong kind changes nothing.
///
/// **Want of memory.** std::bad_alloc passes on from every operation, moves and reading text
/// included. The values are then as they were or consistent, so that they can be used further.
///
/// **Assertions.** Ordinary containers never hold addresses. Storing one, or calling an ordinary
/// container operation on a value that holds one, is a programming error and ends the process.
///
/// **Threads.** `const` operations, copying included, only read: several threads may read one value
/// at once, as long as none changes it or the tree that it belongs to. Everything else, look-ups
/// that hand out references included, is for one thread at a time. Copies are values of their own
/// and may be used by other threads. Look-ups that may miss are made on one thread only, because
/// they rewrite m_sNull.
///
/// **Costs.** Parsed values, copies and records as values are one block of memory, in which maps of
/// containers are searched member by member; the first look-up that hands out a reference into a
/// container takes that container out of the block, in time linear in its children. From then on a
/// member is found in logarithmic time. Copying what is still one block costs a count, whatever its
/// size; copying other values is linear. Text, comparing and searching are linear.
///
/// **References** handed out by look-ups stay valid until their container changes shape.
class WZRFRAMEWORK_EXPORT CDataValue
{
public:
    /// The shared null value that every miss returns. Lives from library load to process exit.
    static CDataValue m_sNull;

    /// A value of the given kind with its default content: 0, "", false, no children.
    /// A number outside 0 to 10 gives a value of that kind number without any content.
    CDataValue(ENUM_VALUE_TYPE kind = NULL_VALUE)
    {
        if (kind != NULL_VALUE)
            construct(kind);
    }
    /// Beware of the sizes of Qt's containers: `list.size()` is an `int` with Qt 5 and is stored as
    /// the number `3`, but a `long long` with Qt 6, stored as the text `"3"`. Where both have to
    /// agree, name the type: `CDataValue(int(list.size()))`.
    CDataValue(bool value)
        : m_kind(BOOLEAN_VALUE)
    {
        m_payload.flag = value;
    }
    CDataValue(int value)
        : m_kind(INT_VALUE)
    {
        m_payload.signedNumber = value;
    }
    CDataValue(unsigned int value)
        : m_kind(UINT_VALUE)
    {
        m_payload.unsignedNumber = value;
    }
    CDataValue(double value)
        : m_kind(REAL_VALUE)
    {
        m_payload.real = value;
    }
    /// A string: the bytes up to the terminating zero; a null pointer gives the empty string.
    CDataValue(const char* utf8);
    CDataValue(const std::string& utf8);
    /// The same for the literals u8"..." of C++20.
    CDataValue(const DataValueChar8* utf8)
        : CDataValue(reinterpret_cast<const char*>(utf8))
    {
    }
    // Texts of other encodings would be taken for addresses: convert them to QString.
    CDataValue(const char16_t* utf16) = delete;
    CDataValue(const char32_t* utf32) = delete;
    CDataValue(const wchar_t* text) = delete;
    /// A string: the bytes from `begin` up to, not including, `end`.
    CDataValue(const char* begin, const char* end);
    CDataValue(const QString& text);
    /// A string in the form "dd/MM/yyyy"; an invalid date gives the empty string.
    CDataValue(const QDate& date);
    /// A string of decimal digits: a 64-bit number would not survive as a JSON number.
    CDataValue(long long value);
    /// A string of decimal digits, as for `long long`.
    CDataValue(unsigned long value);
    /// An address. It is neither owned nor ever written as text.
    CDataValue(const void* address)
        : m_kind(ADDRESS_VALUE)
    {
        m_payload.address = address;
    }

    /// A deep copy without parent and file path. The copy's own text is the source's as it
    /// stands, even where it is stale; everything below the copy is brought in step.
    CDataValue(const CDataValue& other);
    /// Takes the content over, with the result of a copy. A source that is itself an element or
    /// member of a container is copied instead and stays as it is, and so is one that holds the
    /// value it is moved to.
    CDataValue(CDataValue&& other) // NOLINT(performance-noexcept-move-constructor): it may copy
        : CDataValue(NULL_VALUE)
    {
        take(other);
    }
    ~CDataValue()
    {
        if (mayOwn())
            destroy();
    }

    /// Replaces the content by a deep copy. Parent and file path stay.
    CDataValue& operator=(const CDataValue& other);
    CDataValue& operator=(CDataValue&& other); // NOLINT(performance-noexcept-move-constructor)

    /// Exchanges kind and content; parent and file path stay. Children of swapped containers
    /// name no parent until synchPreDataPoint() or a synchronising operation sets it anew.
    void swap(CDataValue& other);

    /// Removes all children of an array or map; the kind stays. Null values and address
    /// containers are left as they are. A scalar is left as it is, with a warning in the log.
    void clear();

    ENUM_VALUE_TYPE type() const { return m_kind; }

    /// Whether both texts describe the same content. Kinds of numbers count (1 and 1u differ);
    /// addresses do not: an address value equals a null value.
    bool isEqual(const CDataValue& other) const;

    /// Number of elements of an array or members of a map, as the text shows them; else 0.
    unsigned int getSize() const;
    /// True for null, an empty array and an empty map (and for address kinds); false for every
    /// scalar, 0 and "" included.
    bool isEmpty() const;

    bool isNull() const { return m_kind == NULL_VALUE; }
    bool isInt() const { return m_kind == INT_VALUE; }
    bool isUInt() const { return m_kind == UINT_VALUE; }
    bool isDouble() const { return m_kind == REAL_VALUE; }
    bool isString() const { return m_kind == STRING_VALUE; }
    bool isBool() const { return m_kind == BOOLEAN_VALUE; }
    bool isArray() const { return m_kind == ARRAY_VALUE; }
    bool isObject() const { return m_kind == MAP_VALUE; }
    bool isAddress() const { return m_kind == ADDRESS_VALUE; }
    bool isAddressArray() const { return m_kind == ADDRESS_ARRAY_VALUE; }
    bool isAddressMap() const { return m_kind == ADDRESS_MAP_VALUE; }
    /// Integers and booleans: booleans count as integral, as they do in JsonCpp.
    bool isIntegral() const;
    /// Integers, doubles and booleans.
    bool isNumeric() const;
    /// Whether this value is of an address kind or an ordinary container that holds one.
    bool isHasAddressType() const;

    /// The integer; an unsigned one is reinterpreted as signed, with a warning. Else 0.
    int asInt() const;
    /// The unsigned integer; a signed one that is not negative too, with a warning. Else 0.
    unsigned int asUInt() const;
    /// The double; integers are not widened. Else 0.0.
    double asDouble() const;
    bool asBool() const;
    const void* asAddress() const;
    /// The text up to its first zero byte; a null string for other kinds.
    QString asQString() const;
    /// The string read as a decimal number by strtoll; 0 for other kinds.
    long long asLongLong() const;
    /// The string read as a decimal number by strtoul; 0 for other kinds.
    unsigned long asUnsignedLong() const;
    /// The string read as "dd/MM/yyyy"; an invalid date when it does not match or is no string.
    QDate asQDate();

    // Ordinary maps. Keys are UTF-8; a null key is the empty key.

    /// Stores a copy of `value` under `key`, replacing a member of that name. A null value
    /// becomes a map first. Returns the stored member; m_sNull, with nothing changed, when this
    /// is of another kind.
    CDataValue& mapSet(const char* key, const CDataValue& value, bool synchronise);
    CDataValue& mapSet(const QString& key, const CDataValue& value, bool synchronise);
    /// The same, taking the content of `value` over instead of copying it.
    CDataValue& mapSet(const char* key, CDataValue&& value, bool synchronise);
    CDataValue& mapSet(const QString& key, CDataValue&& value, bool synchronise);
    /// The member, to read and to change; m_sNull when there is none or this is no map.
    CDataValue& mapGet(const char* key);
    CDataValue& mapGet(const QString& key);
    bool mapIsMember(const char* key) const;
    bool mapIsMember(const QString& key) const;
    /// The keys in byte order ("B" before "a"); empty when this is no map.
    std::vector<std::string> mapGetKeys() const;
    /// Removes a member. Returns a map that holds it as the text showed it, or an empty map.
    CDataValue mapRemove(const char* key, bool synchronise);
    CDataValue mapRemove(const QString& key, bool synchronise);
    /// Copies of every member named `key` at any depth: parents before their descendants,
    /// siblings in key order. An array directly inside an array is not entered.
    std::list<CDataValue> mapFind(const char* key) const;
    std::list<CDataValue> mapFind(const QString& key) const;
    /// The same, below `node`, which must be a map, else the list is empty.
    std::list<CDataValue> mapFind(const char* key, const CDataValue& node) const;
    std::list<CDataValue> mapFind(const QString& key, const CDataValue& node) const;

    // Ordinary arrays.

    /// Adds a copy of `value` at the end. A null value becomes an array first. Returns the
    /// index of the new element; 0, with nothing changed, when this is of another kind.
    unsigned int arrayAppend(const CDataValue& value, bool synchronise);
    /// The same, taking the content of `value` over instead of copying it.
    unsigned int arrayAppend(CDataValue&& value, bool synchronise);
    /// Inserts a copy of `value` before element `index`, at the end when `index` is the number
    /// of elements. A larger index inserts nothing, but leaves a null at the end of the text and
    /// counts it: that is meant. A null value becomes an array of the one element, synchronised
    /// whatever the flag says.
    void arrayInsert(unsigned int index, const CDataValue& value, bool synchronise);
    /// Replaces element `index` and returns it. m_sNull when this is no array, is empty, or
    /// `index` is greater than arrayCount().
    /// @throws std::out_of_range "vector::_M_range_check" for one past the end: that is meant.
    CDataValue& arrayModify(unsigned int index, const CDataValue& value, bool synchronise);
    /// Element `index`, to read and to change; misses and exception as for arrayModify().
    CDataValue& arrayGet(unsigned int index);
    unsigned int arrayCount() const;
    /// Removes up to `count` elements from `index` on. Returns an array of them as the text
    /// showed them; an empty one when nothing could be removed.
    CDataValue arrayRemove(unsigned int index, int count, bool synchronise);

    // Address containers: no text, no synchronising; wrong kinds are misses.

    CDataValue& addressMapSet(const char* key, const CDataValue& value);
    CDataValue& addressMapSet(const QString& key, const CDataValue& value);
    CDataValue& addressMapGet(const char* key);
    CDataValue& addressMapGet(const QString& key);
    bool addressMapIsMember(const char* key) const;
    bool addressMapIsMember(const QString& key) const;
    std::vector<std::string> addressMapGetKeys() const;
    void addressMapRemove(const char* key);
    void addressMapRemove(const QString& key);
    /// As mapFind(), with an address map at the top; ordinary containers below it are searched,
    /// address containers below it are not.
    std::list<CDataValue> addressMapFind(const char* key) const;
    std::list<CDataValue> addressMapFind(const QString& key) const;
    std::list<CDataValue> addressMapFind(const char* key, const CDataValue& node) const;
    std::list<CDataValue> addressMapFind(const QString& key, const CDataValue& node) const;
    /// Adds a copy of `value` at the end. Returns 0 for the first element and 4294967295 for
    /// every later one, since addressArrayCount() is always 0: that is meant.
    unsigned int addressArrayAppend(const CDataValue& value);
    /// Index 0 only: every other index is greater than addressArrayCount() and does nothing.
    void addressArrayInsert(unsigned int index, const CDataValue& value);
    /// Index 0 of a non-empty address array only; else m_sNull.
    CDataValue& addressArrayModify(unsigned int index, const CDataValue& value);
    /// Index 0 of a non-empty address array only; else m_sNull.
    CDataValue& addressArrayGet(unsigned int index);
    /// Index 0 only: erases up to `count` elements from the front.
    void addressArrayRemove(unsigned int index, int count);
    /// Always 0: the text of an address array has no elements. Walk address arrays by index 0,
    /// or use address maps.
    unsigned int addressArrayCount() const;

    // Synchronising, for callers who changed children through references.

    /// Brings this container's text, and everything below it, in step with its children.
    void synchJsonData();
    /// Brings the children, but not this container's own text, in step; sets their parent.
    void synchPreDataPoint();
    /// Runs synchJsonData() on `start` and then on each of its parents up to the root.
    void synPreDataValue(CDataValue* start);
    /// Appends to `list` copies of the members named `key` below `node`: the step of mapFind()
    /// for the values below the top. Reads the children themselves, not the text.
    void dataValueFind(const char* key, const CDataValue& node, std::list<CDataValue>* list) const;

    // Text.

    /// The JSON text, the line feed at its end included. An unknown style gives a null string
    /// and a line in the log.
    QString parseToQString(ENUM_STYLE style) const;
    /// Reads JSON text (comments allowed, any value as the root) into `out`. False on a syntax
    /// error, nesting beyond 1000 levels included, with `out` unchanged and nothing logged. The
    /// styled text shows the comments again, unless there are very many on very long lines (their
    /// number times the bytes of the longest line exceeds 2^28): those are not kept.
    static bool parseToDataValue(const QString& text, CDataValue& out);
    /// The same for zero-terminated UTF-8; a null pointer is a syntax error.
    static bool parseToDataValue(const char* text, CDataValue& out);
    /// The value of a JSON tree, comments included: each kind is that of the JSON type, but an
    /// integer outside 32 bits is a double.
    static CDataValue jsontoDataValue(const Json::Value& json);
    /// The kind of a JSON value; an unknown JSON type gives NULL_VALUE.
    static ENUM_VALUE_TYPE toValueType(const Json::Value& json);

    // Files. The end of the path, case-sensitive, chooses the form: ".xml" is the typed XML form,
    // ".config" and ".perso" are the compact JSON text. Files are regular files of any size whose
    // values nest at most 1000 levels deep, scalars included; others are neither read nor written,
    // nor is what does not fit into memory.

    /// Reads a file into this value and remembers its path. False, with this value unchanged, when
    /// that fails: any other name is refused with a line in the log, and so is an XML file that
    /// cannot be read; a JSON file that cannot be read is not logged.
    bool readFile(const QString& path);
    bool readFile(const char* path);
    /// The two forms for themselves, whatever the name.
    bool readXMLFile(const QString& path);
    bool readConfigFile(const QString& path);
    /// Saves to the path of the last successful read.
    bool saveFile();
    /// Saves what the text shows. The file is replaced as a whole or not at all: false means that
    /// an old one is still as it was. Any other name is refused with a line in the log. A value
    /// that holds an address ends the process.
    bool saveFileAs(const QString& path);
    bool saveFileAs(const char* path);
    /// The two forms for themselves; false for a path that does not end accordingly. Doubles keep
    /// six decimals in the XML form; unsigned integers stay unsigned there and only there.
    bool saveXMLFile(const QString& path);
    bool saveConfigFile(const QString& path);

    /// Returns m_sNull after making it null again. When somebody had written into it, that is
    /// lost and one warning is logged.
    static CDataValue& referToMemberNull();

private:
    friend struct DataValueTree;
    struct Container;
    struct Extras;

    union Payload {
        Payload()
            : address(nullptr)
        {
        }
        int signedNumber;
        unsigned int unsignedNumber;
        double real;
        bool flag;
        const void* address;
        char text[16]; // a DataValueText
        Container* children;
        struct
        {
            PackedBlock* block;
            const PackedNode* node;
        } packed;
    };

    /// Whether the destructor has something to do.
    bool mayOwn() const
    {
        return m_extras || m_kind == STRING_VALUE || m_kind == ARRAY_VALUE || m_kind == MAP_VALUE ||
               m_kind > ADDRESS_VALUE;
    }
    void construct(ENUM_VALUE_TYPE kind);
    void destroy() noexcept;
    /// Fills this new null value with the content of `other`, with the result of a copy.
    void take(CDataValue& other)
    {
        if (other.m_holder || other.m_extras || other.m_kind > STRING_VALUE) {
            takeTree(other);
            return;
        }
        m_payload = other.m_payload;
        m_kind = other.m_kind;
        other.m_kind = NULL_VALUE;
    }
    void takeTree(CDataValue& other);

    Payload m_payload;             // the member that m_kind names
    Container* m_holder = nullptr; // the container that this is a child of
    Extras* m_extras = nullptr;    // owned; file path and comments: most values have neither
    ENUM_VALUE_TYPE m_kind = NULL_VALUE;
    bool m_linked = false; // whether m_holder's value counts as the parent
    bool m_packed = false; // whether the children are those of a packed tree
};

Q_DECLARE_METATYPE(CDataValue)
Q_DECLARE_METATYPE(CDataValue*)

#endif
