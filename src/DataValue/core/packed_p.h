#ifndef DATAVALUE_CORE_PACKED_P_H
#define DATAVALUE_CORE_PACKED_P_H

#include "DataValue/core/text_p.h"
#include "DataValue/datavalue.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

/// Where a comment of a JSON text stands, in the order of JsonCpp's placements.
enum class CommentPlace : std::uint8_t { Before, SameLine, After };
constexpr CommentPlace kCommentPlaces[] = {CommentPlace::Before, CommentPlace::SameLine,
                                           CommentPlace::After};

/// A comment of a value of a packed tree, with its "//" or "/*".
struct PackedComment
{
    std::uint32_t node; // the value's, counted from the root
    CommentPlace place;
    DataValueText text;
};

/// One value of a packed tree. Nodes stand in the order of the text: a container is followed by
/// its children, a member by its value; members are in byte order of their keys, each only once.
///
/// A packed tree holds the kinds 0 to 7 only.
struct PackedNode
{
    union {
        std::uint64_t nothing;
        int signedNumber;
        unsigned int unsignedNumber;
        double real;
        bool flag;
        const char* text;    // `size` bytes and a zero byte
        std::uint32_t count; // of the elements or members of a container
    };
    std::uint32_t size; // of a text: its bytes; of a container: its nodes, this one included
    std::uint8_t kind;

    ENUM_VALUE_TYPE type() const { return static_cast<ENUM_VALUE_TYPE>(kind); }
    bool isContainer() const { return kind == ARRAY_VALUE || kind == MAP_VALUE; }
    std::string_view view() const { return {text, size}; }
    /// The first node behind this value and what is in it.
    const PackedNode* behind() const { return this + (isContainer() ? size : 1); }
};
static_assert(sizeof(PackedNode) == 16, "two nodes of a map in half a cache line");

/// The value of the member of that name of a map, or null. Looks through all of them.
const PackedNode* findMember(const PackedNode& map, std::string_view key);

/// What a packed tree lies in: its nodes, the bytes of its texts, and the comments of what is below
/// its root. It never changes, and is freed with the last reference to it. Values in different
/// threads may share one.
class PackedBlock
{
public:
    PackedBlock(const PackedBlock&) = delete;
    PackedBlock& operator=(const PackedBlock&) = delete;

    const PackedNode* root() const { return reinterpret_cast<const PackedNode*>(this + 1); }
    /// The bytes of all texts and keys.
    std::size_t textBytes() const { return m_textBytes; }
    bool hasComments() const { return !m_comments.empty(); }
    /// The comments of the nodes from `first` up to, not including, `end`, in their order.
    struct Comments
    {
        const PackedComment* first;
        const PackedComment* last;
        const PackedComment* begin() const { return first; }
        const PackedComment* end() const { return last; }
    };
    Comments comments(const PackedNode* first, const PackedNode* end) const;
    void addReference() { m_references.fetch_add(1, std::memory_order_relaxed); }
    void dropReference()
    {
        if (m_references.fetch_sub(1, std::memory_order_acq_rel) == 1)
            destroy();
    }

private:
    friend class PackedBuilder;
    struct Texts;

    PackedBlock(Texts* texts, std::size_t textBytes, std::vector<PackedComment>&& comments)
        : m_texts(texts)
        , m_textBytes(textBytes)
        , m_comments(std::move(comments))
    {
    }
    ~PackedBlock() = default;
    void destroy();

    std::atomic<std::uint32_t> m_references{1};
    Texts* m_texts;
    std::size_t m_textBytes;
    std::vector<PackedComment> m_comments; // by node, then place
};

/// Makes a packed tree from front to back.
///
///     PackedBuilder builder;
///     builder.begin(MAP_VALUE);
///     builder.addText("nIndex");
///     builder.addInt(3);
///     builder.end(1);
///     PackedBlock* block = builder.finish();
///
/// The members of a map must come in the byte order of their keys.
class PackedBuilder
{
public:
    PackedBuilder() = default;
    PackedBuilder(const PackedBuilder&) = delete;
    PackedBuilder& operator=(const PackedBuilder&) = delete;
    ~PackedBuilder();

    void addNull() { add(NULL_VALUE).nothing = 0; }
    void addInt(int number) { add(INT_VALUE).signedNumber = number; }
    void addUInt(unsigned int number) { add(UINT_VALUE).unsignedNumber = number; }
    void addReal(double number) { add(REAL_VALUE).real = number; }
    void addBool(bool flag) { add(BOOLEAN_VALUE).flag = flag; }
    /// A copy of the bytes.
    void addText(std::string_view bytes) { addLastingText(copyText(bytes), bytes.size()); }
    /// Bytes that are followed by a zero byte and live as long as the block, such as literals and
    /// what textRoom() gave.
    void addLastingText(const char* bytes, std::size_t size);
    /// A scalar that is no text.
    void addLeaf(const PackedNode& leaf) { add(leaf.type()) = leaf; }
    /// A value of another packed tree, with all that is in it. Its own comments stay behind.
    void addCopy(const PackedBlock& block, const PackedNode& node);
    /// Gives the value that is added or begun next a comment; none when the text is empty. The
    /// places of one value come in their order.
    void addComment(CommentPlace place, std::string_view text);

    /// Begins a container.
    void begin(ENUM_VALUE_TYPE kind)
    {
        add(kind).nothing = m_open; // until it ends, a container knows the one around it
        m_open = m_count - 1;
    }
    /// Ends the container that was begun last and is not ended; `count`: of its children.
    void end(std::size_t count)
    {
        PackedNode& container = m_nodes[m_open];
        const std::size_t ended = m_open;
        m_open = static_cast<std::size_t>(container.nothing);
        container.nothing = 0;
        container.count = static_cast<std::uint32_t>(count);
        container.size = static_cast<std::uint32_t>(m_count - ended);
    }

    /// Room for a text of at most `size` bytes and its zero byte, which lives as long as the block.
    char* textRoom(std::size_t size);
    /// Gives back the end of the room of the latest textRoom(), from `end` on.
    void trimText(char* end) { m_room = end; }

    std::size_t textBytes() const { return m_textBytes; }
    /// The value that was begun first.
    const PackedNode& root() const { return *m_nodes; }
    /// The container that end() ends next.
    const PackedNode& open() const { return m_nodes[m_open]; }
    /// Keeps the texts of `other`, so that its nodes may be added as lasting ones.
    void takeTexts(PackedBuilder& other);
    void reserve(std::size_t nodes)
    {
        if (nodes > m_capacity)
            grow(nodes);
    }

    /// The block, with one reference, which is the caller's; null when the tree is larger than a
    /// block can be. The builder is used up.
    PackedBlock* finish();

private:
    PackedNode& add(ENUM_VALUE_TYPE kind)
    {
        if (m_count == m_capacity)
            grow(m_capacity * 2);
        PackedNode& node = m_nodes[m_count++];
        node.size = 1;
        node.kind = static_cast<std::uint8_t>(kind);
        return node;
    }
    const char* copyText(std::string_view bytes);
    void grow(std::size_t capacity);
    void addTexts(std::size_t size);

    void* m_memory = nullptr; // room for the block, then the nodes
    PackedNode* m_nodes = nullptr;
    std::size_t m_count = 0;
    std::size_t m_capacity = 0;
    std::size_t m_textBytes = 0;
    std::size_t m_open = 0; // the container that was begun last and is not ended
    std::vector<PackedComment> m_comments;
    PackedBlock::Texts* m_texts = nullptr; // the newest first
    char* m_room = nullptr;                // of the newest
    char* m_roomEnd = nullptr;
    bool m_isTooLarge = false;
};

#endif
