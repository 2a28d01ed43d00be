#include "DataValue/json/jsonfastreader_p.h"

#include "DataValue/core/tree_p.h"
#include "DataValue/json/jsontext_p.h"
#include "text/utf8_p.h"

// The reader scans strings 16 bytes at a time where it may.
#ifdef __SSE2__
#define RAPIDJSON_SSE2
#endif
#include <rapidjson/reader.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>

namespace {

using Tree = DataValueTree;

/// Far below the depth that JsonCpp's reader refuses, so that it alone draws that line.
constexpr std::size_t kDepth = 500;

/// The reader loads aligned blocks of 16 bytes, so it may look this far behind the text.
constexpr std::size_t kPadding = 16;

/// The texts of a value stay where they were read. They are copied out of a text that is longer
/// than kFewBytes and has more than kPart times their bytes: it would be kept in memory for little.
constexpr std::size_t kPart = 8;
constexpr std::size_t kFewBytes = 4096;

/// RapidJSON writes to what its allocator gives without a look.
class ThrowingAllocator
{
public:
    static constexpr bool kNeedFree = true;
    void* Malloc(std::size_t size) { return size ? orThrow(std::malloc(size)) : nullptr; }
    void* Realloc(void* memory, std::size_t, std::size_t size)
    {
        if (size)
            return orThrow(std::realloc(memory, size));
        Free(memory);
        return nullptr;
    }
    static void Free(void* memory) { std::free(memory); }

private:
    static void* orThrow(void* memory)
    {
        if (!memory)
            throw std::bad_alloc();
        return memory;
    }
};

using TextReader =
    rapidjson::GenericReader<rapidjson::UTF8<>, rapidjson::UTF8<>, ThrowingAllocator>;

/// Receives the reader's events and hands them to a builder.
class Events : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, Events>
{
public:
    explicit Events(PackedBuilder& builder)
        : m_builder(builder)
    {
    }

    /// Whether the members of all maps came in order, each key only once.
    bool isInOrder() const { return m_isInOrder; }

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
        m_builder.addLastingText(text, size);
        return true;
    }
    bool StartObject() { return start(MAP_VALUE); }
    bool StartArray() { return start(ARRAY_VALUE); }
    bool EndObject(rapidjson::SizeType count)
    {
        const PackedNode* key = &m_builder.open() + 1;
        for (rapidjson::SizeType left = count; left > 1 && m_isInOrder; --left) {
            const PackedNode* const next = (key + 1)->behind();
            m_isInOrder = key->view() < next->view();
            key = next;
        }
        return EndArray(count);
    }
    bool EndArray(rapidjson::SizeType count)
    {
        m_builder.end(count);
        --m_depth;
        return true;
    }

private:
    bool start(ENUM_VALUE_TYPE kind)
    {
        m_builder.begin(kind);
        return ++m_depth <= kDepth;
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

    PackedBuilder& m_builder;
    std::size_t m_depth = 0;
    bool m_isInOrder = true;
};

/// Adds a value with the members of its maps in order, of several with one key the last. The bytes
/// of the texts are not copied. Recurses; nothing nests deeper than kDepth here.
void addInOrder(PackedBuilder& builder, const PackedNode& node)
{
    if (node.kind == STRING_VALUE) {
        builder.addLastingText(node.text, node.size);
        return;
    }
    if (!node.isContainer()) {
        builder.addLeaf(node);
        return;
    }
    builder.begin(node.type());
    std::size_t count = 0;
    if (node.kind == ARRAY_VALUE) {
        for (const PackedNode* child = &node + 1; child != node.behind(); child = child->behind())
            addInOrder(builder, *child);
        count = node.count;
    } else {
        std::vector<const PackedNode*> keys;
        keys.reserve(node.count);
        for (const PackedNode* key = &node + 1; key != node.behind(); key = (key + 1)->behind())
            keys.push_back(key);
        std::stable_sort(keys.begin(), keys.end(), [](const PackedNode* a, const PackedNode* b) {
            return a->view() < b->view();
        });
        for (auto key = keys.begin(); key != keys.end(); ++key) {
            if (key + 1 != keys.end() && key[0]->view() == key[1]->view())
                continue;
            builder.addLastingText((*key)->text, (*key)->size);
            addInOrder(builder, (*key)[1]);
            ++count;
        }
    }
    builder.end(count);
}

/// Reads `text`, which is the builder's, ends with a zero byte and has the padding behind it.
bool readInPlace(PackedBuilder& builder, char* text, std::size_t size, CDataValue& value)
{
    constexpr unsigned kFlags = rapidjson::kParseInsituFlag |
                                rapidjson::kParseNumbersAsStringsFlag |
                                rapidjson::kParseIterativeFlag;
    rapidjson::InsituStringStream stream(text);
    TextReader reader;
    Events events(builder);
    if (!reader.Parse<kFlags>(stream, events))
        return false;
    PackedBuilder inOrder;
    if (!events.isInOrder()) {
        addInOrder(inOrder, builder.root());
        inOrder.takeTexts(builder);
    }
    PackedBuilder& result = events.isInOrder() ? builder : inOrder;
    const bool isLoose = size > kPart * result.textBytes() + kFewBytes;
    CDataValue read;
    if (!Tree::constructPacked(read, result))
        return false;
    if (isLoose && Tree::packedNode(read)) { // mostly blanks, numbers or escapes
        PackedBuilder compact;
        compact.addCopy(*Tree::packedBlock(read), *Tree::packedNode(read));
        CDataValue copy;
        if (!Tree::constructPacked(copy, compact))
            return false;
        read = std::move(copy);
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
