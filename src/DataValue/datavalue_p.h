#ifndef DATAVALUE_DATAVALUE_P_H
#define DATAVALUE_DATAVALUE_P_H

#include "DataValue/datavalue.h"
#include "DataValue/datavaluemembers_p.h"
#include "DataValue/datavaluetext_p.h"

#include <array>
#include <memory>
#include <new>
#include <utility>

/// Where a comment of a JSON text stands, in the order of JsonCpp's placements.
enum class CommentPlace { Before, SameLine, After };

/// What few values have.
struct CDataValue::Extras
{
    QString filePath;                    // where saveFile() writes to
    std::array<std::string, 3> comments; // by CommentPlace, with their "//" or "/*"; else empty

    bool hasComments() const;
};

/// One element of an array. Moving it moves the value as it is, its place in the tree included,
/// which is what a growing vector needs and what moving a CDataValue does not do.
struct DataValueElement
{
    CDataValue value;

    DataValueElement() = default;
    DataValueElement(DataValueElement&& other) noexcept;
    DataValueElement& operator=(DataValueElement&& other) noexcept;
};

/// The bytes of a key argument; a null pointer is the empty key.
inline std::string_view keyOf(const char* key)
{
    return key ? std::string_view(key) : std::string_view();
}

using DataValueElements = std::vector<DataValueElement>;

/// The children of an array, a map or one of their address twins.
///
/// A container is *in step* when its JSON mirror would be what its children's mirrors say; then
/// none is stored. Otherwise `mirror` holds what its text still is, as a value of kinds 0 to 7
/// that is in step throughout. Before the mirror of a child changes without synchronising, its
/// container stores its own. Containers further up need not: their mirrors follow from that
/// stored one, which stays.
struct CDataValue::Container
{
    union {
        CDataValue* owner = nullptr; // the value that holds these children
        Container* nextToRelease;    // while a whole tree is being released
    };
    DataValueElements elements;
    DataValueMembers members;
    std::unique_ptr<CDataValue> mirror;

    /// Whether a synchronising walk has something to do here or below: a stored mirror or a
    /// child without its parent. Set upwards through ordinary containers; may stay set in vain.
    bool outOfStep = false;
    /// Whether an address may be somewhere below. Set upwards, never wrongly clear.
    bool mayHoldAddress = false;
};

/// The tree behind the values: every change of content, and the rule of the mirrors.
///
/// All walks keep their own stack on the heap, so depth never exhausts the thread's.
struct DataValueTree
{
    using Container = CDataValue::Container;
    using Extras = CDataValue::Extras;

    /// What a copy takes.
    enum class Copy {
        Whole,  ///< the root's mirror as it stands, everything below in step
        InStep, ///< the children as they are, all mirrors in step
        Face    ///< what the mirror says, addresses as null
    };

    static bool isOrdinary(ENUM_VALUE_TYPE kind)
    {
        return kind == ARRAY_VALUE || kind == MAP_VALUE;
    }
    static bool isAddressKind(ENUM_VALUE_TYPE kind)
    {
        return kind >= ADDRESS_VALUE && kind <= ADDRESS_MAP_VALUE;
    }
    static bool isContainer(ENUM_VALUE_TYPE kind)
    {
        return isOrdinary(kind) || kind == ADDRESS_ARRAY_VALUE || kind == ADDRESS_MAP_VALUE;
    }

    /// The children, or null when the value is no container.
    static Container* children(const CDataValue& value)
    {
        return isContainer(value.m_kind) ? value.m_payload.children : nullptr;
    }
    /// The value whose content is the text of `value`: its stored mirror, or itself.
    static const CDataValue& face(const CDataValue& value)
    {
        if (!isOrdinary(value.m_kind) || !value.m_payload.children->mirror)
            return value;
        return *value.m_payload.children->mirror;
    }
    /// The kind that the text shows: NULL_VALUE for addresses.
    static ENUM_VALUE_TYPE faceKind(const CDataValue& value);

    static int signedNumber(const CDataValue& value) { return value.m_payload.signedNumber; }
    static unsigned int unsignedNumber(const CDataValue& value)
    {
        return value.m_payload.unsignedNumber;
    }
    static double real(const CDataValue& value) { return value.m_payload.real; }
    static bool flag(const CDataValue& value) { return value.m_payload.flag; }
    static const DataValueText& text(const CDataValue& value)
    {
        return *std::launder(reinterpret_cast<const DataValueText*>(value.m_payload.text));
    }
    static const Extras* extras(const CDataValue& value) { return value.m_extras; }
    static Extras& makeExtras(CDataValue& value);

    /// Gives a null value without content the kind with its default content.
    static void construct(CDataValue& value, ENUM_VALUE_TYPE kind);
    static void constructText(CDataValue& value, std::string_view text);
    static void constructText(CDataValue& value, const DataValueText& text);
    static void constructInt(CDataValue& value, int number)
    {
        value.m_payload.signedNumber = number;
        value.m_kind = INT_VALUE;
    }
    static void constructUInt(CDataValue& value, unsigned int number)
    {
        value.m_payload.unsignedNumber = number;
        value.m_kind = UINT_VALUE;
    }
    static void constructReal(CDataValue& value, double number)
    {
        value.m_payload.real = number;
        value.m_kind = REAL_VALUE;
    }
    static void constructBool(CDataValue& value, bool flag)
    {
        value.m_payload.flag = flag;
        value.m_kind = BOOLEAN_VALUE;
    }
    /// Destroys the content; what is left is a null value at the same place in the tree.
    static void reset(CDataValue& value)
    {
        const ENUM_VALUE_TYPE kind = std::exchange(value.m_kind, NULL_VALUE);
        if (kind == STRING_VALUE)
            text(value).~DataValueText();
        else if (isContainer(kind))
            release(value.m_payload.children);
    }
    static void release(Container* container);

    /// Fills `to`, a null value, with a copy.
    static void copy(CDataValue& to, const CDataValue& from, Copy what);
    /// Fills `to`, a null value, with the content of `from`, with the result of a whole copy.
    /// A child of a container is copied, everything else is left a null value.
    static void take(CDataValue& to, CDataValue& from);
    /// Moves a value with its place in the tree; `to` must be empty, `from` is left empty.
    static void relocate(CDataValue& to, CDataValue& from) noexcept
    {
        to.m_payload = from.m_payload; // a text's bytes may be moved as they are, too
        to.m_kind = std::exchange(from.m_kind, NULL_VALUE);
        if (isContainer(to.m_kind))             // which always has its children
            to.m_payload.children->owner = &to; // NOLINT(clang-analyzer-core.NullDereference)
        delete to.m_extras;
        to.m_extras = std::exchange(from.m_extras, nullptr);
        to.m_holder = std::exchange(from.m_holder, nullptr);
        to.m_linked = std::exchange(from.m_linked, false);
    }
    /// The content of `value`, to be stored in or below `target`. Where `value` holds `target` it
    /// is copied: a value cannot hold itself.
    static CDataValue moved(CDataValue& value, const CDataValue& target);
    /// Replaces the content of `target` by that of `fresh`, a value of no container.
    static void replaceContent(CDataValue& target, CDataValue&& fresh);
    /// Exchanges kinds and contents, comments included.
    static void exchangeContent(CDataValue& a, CDataValue& b) noexcept;
    /// Whether `inner` lies anywhere below `outer`.
    static bool isBelow(const CDataValue& inner, const CDataValue& outer);

    /// Puts `fresh`, a value of no container, into a child slot of `container`.
    static void attach(Container& container, CDataValue& slot, CDataValue&& fresh);
    /// The member slot for `key`, a new null one when there is none.
    static CDataValue& memberSlot(Container& container, std::string_view key);
    static CDataValue& memberSlot(Container& container, const DataValueText& key);
    /// Makes `slot`, which lies in `container`, a child of it.
    static CDataValue& place(Container& container, CDataValue& slot)
    {
        slot.m_holder = &container;
        slot.m_linked = isOrdinary(container.owner->m_kind);
        return slot;
    }
    /// Adds a null slot at the end, or before element `index`.
    static CDataValue& appendSlot(Container& container);
    static CDataValue& insertSlot(Container& container, std::size_t index);

    /// To be called before the mirror of `value` changes: what hangs above it, and will not be
    /// reached by the synchronising walk that follows (if one does), keeps its mirror.
    static void beforeChange(CDataValue& value, bool synchronised);
    static void storeMirror(Container& container);
    /// Brings `value` and all below it in step.
    static void synchronise(CDataValue& value);
    /// synchronise() for `start` and each parent of it.
    static void synchroniseUpwards(CDataValue& start);
    /// Tells the containers from `container` upwards what `child` brings with it.
    static void noteChild(Container& container, const CDataValue& child);

    /// The keys of a map of either family, in byte order.
    static std::vector<std::string> keys(const CDataValue& map);
    static bool holdsAddress(const CDataValue& value)
    {
        if (!isOrdinary(value.m_kind))
            return isAddressKind(value.m_kind);
        return value.m_payload.children->mayHoldAddress && findsAddress(value);
    }
    static bool equal(const CDataValue& a, const CDataValue& b);
    /// The deep search below `node`: over the text (`faces`) or over the children themselves.
    static void find(std::string_view key, const CDataValue& node, bool faces,
                     std::list<CDataValue>& found);

private:
    struct CopyStep;
    static void copyOne(const CopyStep& step, std::vector<CopyStep>& pending);
    static bool findsAddress(const CDataValue& value);
    static void copyScalar(CDataValue& to, const CDataValue& from);
    static void markOutOfStep(Container* container);
    static void markMayHoldAddress(Container* container);
};

#endif
