#include "DataValue/jsonfastreader_p.h"

#include "DataValue/datavalue_p.h"
#include "DataValue/jsontext_p.h"
#include "text/utf8_p.h"

// The reader scans strings 16 bytes at a time where it may.
#ifdef __SSE2__
#define RAPIDJSON_SSE2
#endif
#include <rapidjson/reader.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <limits>

namespace {

using Tree = DataValueTree;

/// Far below the depth that JsonCpp's reader refuses, so that it alone draws that line.
constexpr std::size_t kDepth = 500;

/// Room to begin with, enough for most messages.
constexpr std::size_t kExpectedDepth = 16;

/// The reader loads aligned blocks of 16 bytes, so it may look this far behind the text.
constexpr std::size_t kPadding = 16;

/// Nodes that are moved to put members in order may be so many times those of the tree. Maps
/// whose members are in order, as all of this library's are, cost nothing; deeply nested ones in
/// disorder would be moved once for every level.
constexpr std::size_t kMovesPerNode = 32;

/// The texts of a value stay where they were read. Where the whole is more than so many times their
/// bytes, and more than a few, they are copied out of it.
constexpr std::size_t kPart = 8;
constexpr std::size_t kFewBytes = 4096;

/// Receives the reader's events and hands them to a builder.
class Events : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, Events>
{
public:
    explicit Events(PackedBuilder& builder)
        : m_builder(builder)
    {
        m_open.reserve(kExpectedDepth);
    }

    bool Null()
    {
        m_builder.addNull();
        return true;
    }
    bool Bool(bool flag)
    {
        m_builder.addBool(flag);
        return true;
    }
    bool String(const char* text, rapidjson::SizeType size, bool)
    {
        m_builder.addLastingText(text, size);
        return true;
    }
    bool RawNumber(const char* text, rapidjson::SizeType size, bool)
    {
        return number(std::string_view(text, size));
    }
    bool Key(const char* text, rapidjson::SizeType size, bool)
    {
        Open& map = m_open.back();
        const std::string_view key(text, size);
        map.isInOrder = map.isInOrder && (!map.hasMembers || map.latestKey < key);
        map.hasMembers = true;
        map.latestKey = key;
        m_builder.addLastingText(text, size);
        return true;
    }
    bool StartObject() { return start(MAP_VALUE); }
    bool StartArray() { return start(ARRAY_VALUE); }
    bool EndObject(rapidjson::SizeType count)
    {
        const Open map = m_open.back();
        m_open.pop_back();
        m_builder.end(map.node, count);
        return map.isInOrder || sortMembers(map.node);
    }
    bool EndArray(rapidjson::SizeType count)
    {
        m_builder.end(m_open.back().node, count);
        m_open.pop_back();
        return true;
    }

private:
    struct Open
    {
        std::size_t node;
        std::string_view latestKey;
        bool hasMembers;
        bool isInOrder;
    };

    bool start(ENUM_VALUE_TYPE kind)
    {
        m_open.push_back({m_builder.begin(kind), {}, false, true});
        return m_open.size() <= kDepth;
    }

    bool number(std::string_view text)
    {
        const char* const end = text.data() + text.size();
        if (text.size() <= 11) {
            std::int64_t integer = 0;
            const auto read = std::from_chars(text.data(), end, integer);
            if (read.ptr == end && JsonText::isInteger(integer)) {
                if (integer > std::numeric_limits<int>::max())
                    m_builder.addUInt(static_cast<unsigned int>(integer));
                else
                    m_builder.addInt(static_cast<int>(integer));
                return true;
            }
        }
        double real = 0;
        if (std::from_chars(text.data(), end, real).ec != std::errc())
            return false;
        m_builder.addReal(real);
        return true;
    }

    /// False when a key occurs twice, or when too much would have to be moved.
    bool sortMembers(std::size_t map)
    {
        const PackedNode* const first = &m_builder.node(map);
        m_moves += first->size;
        if (m_moves > kMovesPerNode * m_builder.nodeCount())
            return false;
        std::vector<const PackedNode*> members; // their keys
        members.reserve(first->count);
        for (const PackedNode* key = first + 1; key != first->behind(); key = (key + 1)->behind())
            members.push_back(key);
        std::sort(members.begin(), members.end(),
                  [](const PackedNode* a, const PackedNode* b) { return a->view() < b->view(); });
        std::vector<PackedNode> sorted;
        sorted.reserve(first->size);
        for (std::size_t i = 0; i < members.size(); ++i) {
            if (i != 0 && members[i - 1]->view() == members[i]->view())
                return false;
            sorted.insert(sorted.end(), members[i], (members[i] + 1)->behind());
        }
        std::copy(sorted.begin(), sorted.end(), &m_builder.node(map) + 1);
        return true;
    }

    PackedBuilder& m_builder;
    std::vector<Open> m_open;
    std::size_t m_moves = 0;
};

/// Reads `text`, which is the builder's, ends with a zero byte and has the padding behind it.
bool readInPlace(PackedBuilder& builder, char* text, std::size_t size, CDataValue& value)
{
    constexpr unsigned kFlags = rapidjson::kParseInsituFlag |
                                rapidjson::kParseNumbersAsStringsFlag |
                                rapidjson::kParseIterativeFlag;
    rapidjson::InsituStringStream stream(text);
    rapidjson::Reader reader;
    Events events(builder);
    if (!reader.Parse<kFlags>(stream, events))
        return false;
    CDataValue read;
    if (size > kPart * builder.textBytes() + kFewBytes) { // mostly blanks, numbers or escapes
        PackedBuilder compact;
        compact.addCopy(builder.node(0));
        if (!Tree::constructPacked(read, compact))
            return false;
    } else if (!Tree::constructPacked(read, builder)) {
        return false;
    }
    value = std::move(read);
    return true;
}

} // namespace

bool JsonFastReader::read(std::string_view utf8, CDataValue& value)
{
    PackedBuilder builder;
    char* const text = builder.textRoom(utf8.size() + kPadding);
    if (!utf8.empty())
        std::memcpy(text, utf8.data(), utf8.size());
    std::memset(text + utf8.size(), 0, kPadding);
    return readInPlace(builder, text, utf8.size(), value);
}

bool JsonFastReader::read(const QString& utf16, CDataValue& value)
{
    PackedBuilder builder;
    char* const text = builder.textRoom(Utf8::room(utf16) + kPadding);
    char* const end = Utf8::write(utf16, text);
    std::memset(end, 0, kPadding);
    return readInPlace(builder, text, static_cast<std::size_t>(end - text), value);
}
