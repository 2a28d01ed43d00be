#include "DataValue/jsonfastreader_p.h"

#include "DataValue/datavalue_p.h"

// The reader scans strings 16 bytes at a time where it may.
#ifdef __SSE2__
#define RAPIDJSON_SSE2
#endif
#include <rapidjson/reader.h>

#include <charconv>
#include <limits>

namespace {

using Tree = DataValueTree;

/// Far below the depth that JsonCpp's reader refuses, so that it alone draws that line.
constexpr std::size_t kDepth = 500;

/// Room to begin with, enough for most messages.
constexpr std::size_t kExpected = 32;

/// The reader loads aligned blocks of 16 bytes, so it may look this far behind the text.
constexpr std::size_t kPadding = 16;

/// The number rule: before each digit, a value that has reached a tenth of the range makes the
/// whole number a double. So an integer is one only between these.
constexpr std::int64_t kLowest = -2147483639;
constexpr std::int64_t kHighest = 4294967289;

/// Receives the reader's events and builds values. Finished values wait on one stack until their
/// container ends; then its size is known and it is built at once.
class Builder : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, Builder>
{
public:
    Builder()
    {
        m_items.reserve(kExpected);
        m_isMap.reserve(kExpected);
    }

    bool Null()
    {
        next();
        return true;
    }
    bool Bool(bool flag)
    {
        Tree::constructBool(next(), flag);
        return true;
    }
    bool String(const char* text, rapidjson::SizeType size, bool)
    {
        Tree::constructText(next(), std::string_view(text, size));
        return true;
    }
    bool RawNumber(const char* text, rapidjson::SizeType size, bool)
    {
        return number(std::string_view(text, size), next());
    }
    bool Key(const char* text, rapidjson::SizeType size, bool)
    {
        m_items.emplace_back(std::string_view(text, size));
        return true;
    }
    bool StartObject() { return start(true); }
    bool StartArray() { return start(false); }

    bool EndObject(rapidjson::SizeType count)
    {
        CDataValue map(MAP_VALUE);
        Tree::Container& container = *Tree::children(map);
        container.members.reserve(count);
        for (auto item = m_items.end() - count; item != m_items.end(); ++item) {
            CDataValue& slot = container.members.findOrAdd(std::move(item->key)).value;
            if (!slot.isNull()) // the key came before, and relocating would leak what it holds
                return false;
            Tree::relocate(slot, item->value);
            Tree::place(container, slot);
        }
        return container.members.size() == count && end(map, count);
    }

    bool EndArray(rapidjson::SizeType count)
    {
        CDataValue array(ARRAY_VALUE);
        Tree::Container& container = *Tree::children(array);
        container.elements.reserve(count);
        for (auto item = m_items.end() - count; item != m_items.end(); ++item) {
            CDataValue& slot = container.elements.emplace_back().value;
            Tree::relocate(slot, item->value);
            Tree::place(container, slot);
        }
        return end(array, count);
    }

    CDataValue& root() { return m_items.front().value; }

private:
    struct Item
    {
        Item() = default;
        explicit Item(std::string_view name)
            : key(name)
        {
        }
        Item(Item&& other) noexcept
            : key(std::move(other.key))
        {
            Tree::relocate(value, other.value);
        }
        Item(const Item&) = delete;
        Item& operator=(const Item&) = delete;
        Item& operator=(Item&&) = delete;
        ~Item() = default;

        DataValueText key;
        CDataValue value;
    };

    /// Where the next value goes: behind its key, or to a place of its own.
    CDataValue& next()
    {
        if (m_isMap.empty() || !m_isMap.back())
            m_items.emplace_back();
        return m_items.back().value;
    }

    bool start(bool isMap)
    {
        next();
        m_isMap.push_back(isMap);
        return m_isMap.size() <= kDepth;
    }

    bool end(CDataValue& container, std::size_t count)
    {
        for (; count != 0; --count)
            m_items.pop_back();
        m_isMap.pop_back();
        Tree::relocate(m_items.back().value, container);
        return true;
    }

    static bool number(std::string_view text, CDataValue& value)
    {
        const char* const end = text.data() + text.size();
        if (text.find_first_of(".eE+") == std::string_view::npos && text.size() <= 11) {
            std::int64_t integer = 0;
            std::from_chars(text.data(), end, integer);
            if (integer >= kLowest && integer <= kHighest) {
                if (integer > std::numeric_limits<int>::max())
                    Tree::constructUInt(value, static_cast<unsigned int>(integer));
                else
                    Tree::constructInt(value, static_cast<int>(integer));
                return true;
            }
        }
        double real = 0;
        if (std::from_chars(text.data(), end, real).ec != std::errc())
            return false;
        Tree::constructReal(value, real);
        return true;
    }

    std::vector<Item> m_items;
    std::vector<char> m_isMap; // for each open container
};

} // namespace

bool JsonFastReader::read(std::string utf8, CDataValue& value)
{
    constexpr unsigned kFlags = rapidjson::kParseInsituFlag |
                                rapidjson::kParseNumbersAsStringsFlag |
                                rapidjson::kParseIterativeFlag;
    utf8.append(kPadding, '\0');
    rapidjson::InsituStringStream stream(utf8.data());
    rapidjson::Reader reader;
    Builder builder;
    if (!reader.Parse<kFlags>(stream, builder))
        return false;
    value = std::move(builder.root());
    return true;
}
