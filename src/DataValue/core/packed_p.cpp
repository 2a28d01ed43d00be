#include "DataValue/core/packed_p.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

/// A piece of memory for texts.
struct PackedBlock::Texts
{
    Texts* next;
    char* bytes() { return reinterpret_cast<char*>(this + 1); }

    static void freeAll(Texts* texts)
    {
        while (texts) {
            Texts* const next = texts->next;
            std::free(texts);
            texts = next;
        }
    }
};

namespace {

constexpr std::size_t kFirstNodes = 32;
constexpr std::size_t kFirstTexts = 224;
constexpr std::size_t kLargestTexts = 65536;
constexpr std::size_t kLimit = std::numeric_limits<std::uint32_t>::max();

void* orThrow(void* memory)
{
    if (!memory)
        throw std::bad_alloc();
    return memory;
}

} // namespace

static_assert(sizeof(PackedBlock) % alignof(PackedNode) == 0, "nodes follow the block");

const PackedNode* findMember(const PackedNode& map, std::string_view key)
{
    constexpr std::uint32_t kFew = 16;
    const PackedNode* const members = &map + 1;
    if (map.count > kFew && map.size == 2 * map.count + 1) { // scalars and empty containers only
        std::uint32_t low = 0;
        for (std::uint32_t count = map.count; count != 0;) {
            const std::uint32_t half = count / 2;
            const bool right = members[2 * std::size_t(low + half)].view() < key;
            low += right ? half + 1 : 0;
            count = right ? count - half - 1 : half;
        }
        const PackedNode* const found = members + 2 * std::size_t(low);
        return low != map.count && found->view() == key ? found + 1 : nullptr;
    }
    const PackedNode* member = members;
    for (std::uint32_t i = 0; i < map.count; ++i, member = (member + 1)->behind()) {
        if (member->view() == key)
            return member + 1;
    }
    return nullptr;
}

PackedBlock::Comments PackedBlock::comments(const PackedNode* first, const PackedNode* end) const
{
    const auto at = [this](const PackedNode* node) {
        const auto isBefore = [](const PackedComment& comment, std::ptrdiff_t index) {
            return comment.node < index;
        };
        return m_comments.data() +
               (std::lower_bound(m_comments.begin(), m_comments.end(), node - root(), isBefore) -
                m_comments.begin());
    };
    return {at(first), at(end)};
}

void PackedBlock::destroy()
{
    Texts::freeAll(m_texts);
    this->~PackedBlock();
    std::free(this);
}

PackedBuilder::~PackedBuilder()
{
    PackedBlock::Texts::freeAll(m_texts);
    std::free(m_memory);
}

void PackedBuilder::grow(std::size_t capacity)
{
    capacity = std::max(capacity, kFirstNodes);
    m_memory = orThrow(std::realloc(m_memory, sizeof(PackedBlock) + capacity * sizeof(PackedNode)));
    m_nodes = reinterpret_cast<PackedNode*>(static_cast<char*>(m_memory) + sizeof(PackedBlock));
    m_capacity = capacity;
}

void PackedBuilder::addTexts(std::size_t size)
{
    auto* const texts =
        static_cast<PackedBlock::Texts*>(orThrow(std::malloc(sizeof(PackedBlock::Texts) + size)));
    texts->next = m_texts;
    m_texts = texts;
    m_room = texts->bytes();
    m_roomEnd = m_room + size;
}

char* PackedBuilder::textRoom(std::size_t size)
{
    if (size >= static_cast<std::size_t>(m_roomEnd - m_room)) {
        const std::size_t usual =
            m_texts ? std::min(kLargestTexts, m_count * sizeof(PackedNode)) : kFirstTexts;
        addTexts(std::max(usual, size + 1));
    }
    char* const result = m_room;
    m_room += size + 1;
    return result;
}

const char* PackedBuilder::copyText(std::string_view bytes)
{
    char* const to = textRoom(bytes.size());
    if (!bytes.empty())
        std::memcpy(to, bytes.data(), bytes.size());
    to[bytes.size()] = '\0';
    return to;
}

void PackedBuilder::addLastingText(const char* bytes, std::size_t size)
{
    PackedNode& node = add(STRING_VALUE);
    node.text = bytes;
    node.size = static_cast<std::uint32_t>(size);
    m_textBytes += size;
    m_isTooLarge = m_isTooLarge || size >= kLimit;
}

void PackedBuilder::addCopy(const PackedBlock& block, const PackedNode& node)
{
    const std::size_t count = static_cast<std::size_t>(node.behind() - &node);
    if (m_capacity - m_count < count)
        grow(std::max(m_count + count, m_capacity * 2));
    if (block.hasComments()) {
        const std::ptrdiff_t moved = static_cast<std::ptrdiff_t>(m_count) - (&node - block.root());
        for (const PackedComment& comment : block.comments(&node + 1, node.behind())) {
            m_comments.push_back(comment);
            m_comments.back().node = static_cast<std::uint32_t>(comment.node + moved);
        }
    }
    PackedNode* const to = m_nodes + m_count;
    std::memcpy(static_cast<void*>(to), &node, count * sizeof(PackedNode));
    m_count += count;
    for (std::size_t i = 0; i < count; ++i) {
        if (to[i].kind == STRING_VALUE) {
            to[i].text = copyText(to[i].view());
            m_textBytes += to[i].size;
        }
    }
}

void PackedBuilder::addComment(CommentPlace place, std::string_view text)
{
    if (!text.empty())
        m_comments.push_back({static_cast<std::uint32_t>(m_count), place, DataValueText(text)});
}

void PackedBuilder::takeTexts(PackedBuilder& other)
{
    m_texts = std::exchange(other.m_texts, nullptr);
}

PackedBlock* PackedBuilder::finish()
{
    if (m_isTooLarge || m_count >= kLimit)
        return nullptr;
    if (m_capacity - m_count > m_count / 4) {
        // To give memory back may fail, and then the larger one stays.
        void* const exact =
            std::realloc(m_memory, sizeof(PackedBlock) + m_count * sizeof(PackedNode));
        m_memory = exact ? exact : m_memory;
    }
    auto* const block = new (std::exchange(m_memory, nullptr))
        PackedBlock(m_texts, m_textBytes, std::move(m_comments));
    m_texts = nullptr;
    return block;
}
