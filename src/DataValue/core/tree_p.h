#ifndef DATAVALUE_CORE_TREE_P_H
#define DATAVALUE_CORE_TREE_P_H

#include "DataValue/core/members_p.h"
#include "DataValue/core/packed_p.h"
#include "DataValue/core/text_p.h"
#include "DataValue/datavalue.h"

#include <array>
#include <memory>
#include <new>
#include <utility>

/// What few values have.
struct WZRFRAMEWORK_NO_EXPORT CDataValue::Extras
{
    QString filePath;                      // where saveFile() writes to
    std::array<DataValueText, 3> comments; // by CommentPlace, with their "//" or "/*"; else empty

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

/// The children of an array, a map or one of their address twins, as values.
///
/// Arrays and maps that were parsed, copied or made from records have none at first: they are
/// *packed*, that is, they refer to a node of a PackedBlock, and so cost nothing to copy. The
/// first operation that hands out a child to be changed, or changes one, *unpacks* that one
/// container; containers among its children are packed still. Reading never unpacks.
///
/// A container is *in step* when its JSON mirror would be what its children's mirrors say; then
/// none is stored. Otherwise `mirror` holds what its text still is, as a value of kinds 0 to 7
/// that is in step throughout. Before the mirror of a child changes without synchronising, its
/// container stores its own. Containers further up need not: their mirrors follow from that
/// stored one, which stays.
struct WZRFRAMEWORK_NO_EXPORT CDataValue::Container
{
    union {
        CDataValue* owner;        // the value that holds these children
        Container* nextToRelease; // while a whole tree is being released
    };
    DataValueElements elements;
    DataValueMembers members;
    std::unique_ptr<CDataValue> mirror;

    /// Whether a synchronising walk has something to do here or below: a stored mirror or a
    /// child without its parent. Set upwards through ordinary containers; may stay set without
    /// need.
    bool outOfStep = false;
    /// Whether there may be something below that a packed tree cannot hold: an address, or a kind
    /// that is none. Set upwards, never wrongly clear.
    bool mayHoldAddress = false;

    /// A new container for `owner`, with room for the first `members` in the same memory.
    static Container* create(CDataValue& owner, std::size_t members);
    /// Without a size, as the memory is larger than the object; create() is the way to get it.
    static void operator delete(void* container) // NOLINT(misc-new-delete-overloads)
    {
        ::operator delete(container);
    }
    Container(const Container&) = delete;
    Container& operator=(const Container&) = delete;
    ~Container() = default;

private:
    explicit Container(CDataValue& value)
        : owner(&value)
    {
    }
    Container(CDataValue& value, std::size_t count)
        : owner(&value)
        , members(this + 1, count)
    {
    }
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

    /// The children, to be changed or handed out: a packed container is unpacked. Null when the
    /// value is no container.
    static Container* children(CDataValue& value)
    {
        if (value.m_packed)
            unpack(value);
        return unpacked(value);
    }
    /// The children of an unpacked container, null for every other value.
    static Container* unpacked(const CDataValue& value)
    {
        return isContainer(value.m_kind) && !value.m_packed ? value.m_payload.children : nullptr;
    }
    static PackedBlock* packedBlock(const CDataValue& value)
    {
        return value.m_packed ? value.m_payload.packed.block : nullptr;
    }
    /// The node that a packed container refers to, null for every other value.
    static const PackedNode* packedNode(const CDataValue& value)
    {
        return value.m_packed ? value.m_payload.packed.node : nullptr;
    }
    /// The value whose content is the text of `value`: its stored mirror, or itself.
    static const CDataValue& face(const CDataValue& value)
    {
        const bool mayHaveMirror = isOrdinary(value.m_kind) && !value.m_packed;
        const bool hasMirror = mayHaveMirror && value.m_payload.children->mirror;
        return hasMirror ? *value.m_payload.children->mirror : value;
    }
    /// The kind that the text shows: NULL_VALUE for addresses.
    static ENUM_VALUE_TYPE faceKind(const CDataValue& value)
    {
        return value.m_kind >= NULL_VALUE && value.m_kind <= MAP_VALUE ? value.m_kind : NULL_VALUE;
    }

    static int signedNumber(const CDataValue& value) { return value.m_payload.signedNumber; }
    static unsigned int unsignedNumber(const CDataValue& value)
    {
        return value.m_payload.unsignedNumber;
    }
    static double real(const CDataValue& value) { return value.m_payload.real; }
    static bool flag(const CDataValue& value) { return value.m_payload.flag; }
    /// A node of the same kind and content as an unpacked value: of a container the count, of a
    /// text the value's own bytes. An address has the kind that it shows.
    static PackedNode node(const CDataValue& value);
    /// The number of children of an ordinary container that its text shows, else 0.
    static std::uint32_t shownCount(const CDataValue& value)
    {
        const CDataValue& shown = face(value);
        if (shown.m_packed)
            return shown.m_payload.packed.node->count;
        return isOrdinary(shown.m_kind) ? count(*shown.m_payload.children) : 0;
    }
    static std::uint32_t count(const Container& container)
    {
        return static_cast<std::uint32_t>(container.elements.size() + container.members.size());
    }
    static const DataValueText& text(const CDataValue& value)
    {
        return *std::launder(reinterpret_cast<const DataValueText*>(value.m_payload.text));
    }
    static const Extras* extras(const CDataValue& value) { return value.m_extras; }
    static Extras& makeExtras(CDataValue& value);

    /// Gives a null value without content the kind with its default content.
    static void construct(CDataValue& value, ENUM_VALUE_TYPE kind)
    {
        constructFor(value, kind, kUsualMembers);
    }
    /// The same; a map gets room for `members` members.
    static void constructFor(CDataValue& value, ENUM_VALUE_TYPE kind, std::size_t members);
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
    /// Makes a null value the value of a node. A container takes a reference to the block.
    static void constructPacked(CDataValue& value, PackedBlock& block, const PackedNode& node);
    /// Makes a null value the root of what the builder has made; false when that is too large.
    static bool constructPacked(CDataValue& value, PackedBuilder& builder);
    /// Destroys the content; what is left is a null value at the same place in the tree.
    static void reset(CDataValue& value)
    {
        const ENUM_VALUE_TYPE kind = std::exchange(value.m_kind, NULL_VALUE);
        if (kind == STRING_VALUE)
            text(value).~DataValueText();
        else if (std::exchange(value.m_packed, false))
            value.m_payload.packed.block->dropReference();
        else if (isContainer(kind))
            release(value.m_payload.children);
    }
    static void release(Container* container);

    /// Fills `to`, a null value, with a copy.
    static void copy(CDataValue& to, const CDataValue& from, Copy what);
    /// Fills `to`, a null value, with a copy of a part of a packed tree.
    static void copyPart(CDataValue& to, PackedBlock& block, const PackedNode& node);
    /// The quick way to copy a whole packed tree; false when `from` is none.
    static bool share(CDataValue& to, const CDataValue& from)
    {
        if (!from.m_packed || from.m_extras)
            return false;
        PackedBlock* const block = from.m_payload.packed.block;
        if (from.m_payload.packed.node != block->root()) // may be too small a part
            return false;
        block->addReference();
        to.m_payload.packed = {block, block->root()};
        to.m_kind = from.m_kind;
        to.m_packed = true;
        return true;
    }
    /// Fills `to`, a null value, with the content of `from`, with the result of a whole copy.
    /// A child of a container is copied, everything else is left a null value.
    static void take(CDataValue& to, CDataValue& from);
    /// Moves a value with its place in the tree; `to` must be empty, `from` is left empty.
    static void relocate(CDataValue& to, CDataValue& from) noexcept
    {
        to.m_payload = from.m_payload; // a text's bytes may be moved as they are, too
        to.m_kind = std::exchange(from.m_kind, NULL_VALUE);
        to.m_packed = std::exchange(from.m_packed, false);
        if (Container* const container = unpacked(to))
            container->owner = &to;
        delete to.m_extras;
        to.m_extras = std::exchange(from.m_extras, nullptr);
        to.m_holder = std::exchange(from.m_holder, nullptr);
        to.m_linked = std::exchange(from.m_linked, false);
    }
    /// The content of `value`, to be stored in or below `target`. Where `value` holds `target` it
    /// is copied: a value cannot hold itself.
    static CDataValue moved(CDataValue& value, const CDataValue& target)
    {
        const Container* const container = unpacked(value);
        return container ? movedContainer(value, target) : CDataValue(std::move(value));
    }
    /// Whether `value` can go into `target` as it stands: moved() would change nothing.
    static bool isLoose(const CDataValue& value, const CDataValue& target)
    {
        return value.m_kind <= BOOLEAN_VALUE && !value.m_holder && !value.m_extras &&
               &value != &target;
    }
    /// Replaces the content of `target` by that of `fresh`, a value of no container.
    static void replaceContent(CDataValue& target, CDataValue&& fresh);
    /// Exchanges kinds and contents, comments included.
    static void exchangeContent(CDataValue& a, CDataValue& b);
    /// Whether `inner` lies anywhere below `outer`.
    static bool isBelow(const CDataValue& inner, const CDataValue& outer);

    /// Puts `fresh`, a value of no container, into a child slot of `container`.
    static void attach(Container& container, CDataValue& slot, CDataValue&& fresh)
    {
        reset(slot);
        relocate(slot, fresh);
        noteChild(container, place(container, slot));
    }
    /// The member slot for `key`, a new null one when there is none.
    static CDataValue& memberSlot(Container& container, std::string_view key)
    {
        return place(container, container.members.findOrAdd(key).value);
    }
    static CDataValue& memberSlot(Container& container, const DataValueText& key)
    {
        return place(container, container.members.findOrAdd(key).value);
    }
    /// Makes `slot`, which lies in `container`, a child of it.
    static CDataValue& place(Container& container, CDataValue& slot)
    {
        slot.m_holder = &container;
        slot.m_linked = isOrdinary(container.owner->m_kind);
        return slot;
    }
    /// Adds a null slot at the end, or before element `index`.
    static CDataValue& appendSlot(Container& container)
    {
        if (container.elements.size() == container.elements.capacity())
            makeRoom(container);
        return place(container, container.elements.emplace_back().value);
    }
    static CDataValue& insertSlot(Container& container, std::size_t index);

    /// To be called before the content or the mirror of `value` changes: a container around it that
    /// the synchronising walk that follows (if one does) will not reach keeps its mirror.
    static void beforeChange(CDataValue& value, bool synchronised)
    {
        if (value.m_holder)
            keepMirrorAround(value, synchronised);
    }
    static void storeMirror(Container& container);
    /// The children of the stored mirror, to be changed; null when none is stored.
    static Container* mirrored(const Container& container)
    {
        return container.mirror ? children(*container.mirror) : nullptr;
    }
    /// Brings `value` and all below it in step.
    static void synchronise(CDataValue& value);
    /// synchronise() for `start` and each parent of it.
    static void synchroniseUpwards(CDataValue& start);
    /// Tells the containers from `container` upwards what `child` brings with it.
    static void noteChild(Container& container, const CDataValue& child)
    {
        const Container* const below = unpacked(child);
        if (faceKind(child) != child.m_kind || (below && below->mayHoldAddress))
            markMayHoldAddress(&container);
        if (below && below->outOfStep && isOrdinary(child.m_kind))
            markOutOfStep(&container);
    }

    static bool holdsAddress(const CDataValue& value)
    {
        if (!isOrdinary(value.m_kind))
            return isAddressKind(value.m_kind);
        const Container* const container = unpacked(value);
        return container && container->mayHoldAddress && findsAddress(value);
    }
    /// Whether both texts describe the same content.
    static bool equal(const CDataValue& a, const CDataValue& b);
    /// The keys of an ordinary map, in byte order.
    static std::vector<std::string> keys(const CDataValue& map);
    /// The deep search below `node`: over the text (`faces`) or over the children themselves.
    static void find(std::string_view key, const CDataValue& node, bool faces,
                     std::list<CDataValue>& found);

private:
    static constexpr std::size_t kUsualMembers = 8;
    struct CopyStep;
    static CDataValue movedContainer(CDataValue& value, const CDataValue& target);
    static void makeRoom(Container& container);
    static void keepMirrorAround(CDataValue& value, bool synchronised);
    static void unpack(CDataValue& value);
    /// Makes `to` a packed copy; false when that cannot be.
    static bool copyPacked(CDataValue& to, const CDataValue& from, Copy what);
    static void takeComments(CDataValue& value, const PackedBlock& block, const PackedNode& node);
    static void copyOne(const CopyStep& step, std::vector<CopyStep>& pending);
    static void copyChildren(Container& to, const Container& from, Copy what,
                             std::vector<CopyStep>& pending);
    static bool findsAddress(const CDataValue& value);
    static void copyScalar(CDataValue& to, const CDataValue& from);
    static void markOutOfStep(Container* container);
    static void markMayHoldAddress(Container* container);
};

#endif
