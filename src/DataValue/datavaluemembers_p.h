#ifndef DATAVALUE_DATAVALUEMEMBERS_P_H
#define DATAVALUE_DATAVALUEMEMBERS_P_H

#include "DataValue/datavalue.h"
#include "DataValue/datavaluetext_p.h"

/// The members of a map, in byte order of their keys.
///
/// A member stays where it is until it is removed. Members lie in blocks that grow with the map;
/// an index of pointers keeps their order, in pages of bounded size, so that adding a member
/// anywhere costs little more in a map of a million than in one of ten.
class DataValueMembers
{
public:
    struct Member
    {
        DataValueText key;
        CDataValue value;
    };

    DataValueMembers() = default;
    DataValueMembers(const DataValueMembers&) = delete;
    DataValueMembers& operator=(const DataValueMembers&) = delete;
    ~DataValueMembers() { clear(); }

    std::size_t size() const { return m_size; }
    bool empty() const { return m_size == 0; }

    /// The member of that name, or null.
    Member* find(std::string_view key) const;
    /// The member of that name, a new one with a null value where there was none.
    Member& findOrAdd(std::string_view key);
    /// The same for a key that may be shared with another map.
    Member& findOrAdd(DataValueText key);
    /// Adds a member whose key comes behind all others.
    Member& append(DataValueText key);
    /// Removes the member of that name; false when there is none.
    bool remove(std::string_view key);
    void clear();
    /// Makes room at once for that many members.
    void reserve(std::size_t count);

private:
    /// One place of the index: the member, and the first bytes of its key, which mostly decide.
    struct Slot
    {
        std::uint64_t prefix;
        Member* member;
    };
    using Page = std::vector<Slot>;
    struct Key
    {
        explicit Key(std::string_view bytes);
        std::uint64_t prefix; // big-endian, filled up with zero bytes
        std::string_view text;
    };

public:
    class Iterator
    {
    public:
        Member& operator*() const { return *(*m_page)[m_at].member; }
        Member* operator->() const { return (*m_page)[m_at].member; }
        Iterator& operator++()
        {
            if (++m_at == m_page->size()) {
                ++m_page;
                m_at = 0;
            }
            return *this;
        }
        bool operator==(const Iterator& other) const
        {
            return m_page == other.m_page && m_at == other.m_at;
        }
        bool operator!=(const Iterator& other) const { return !(*this == other); }

    private:
        friend class DataValueMembers;
        Iterator(const Page* page, std::size_t at)
            : m_page(page)
            , m_at(at)
        {
        }
        const Page* m_page;
        std::size_t m_at;
    };

    Iterator begin() const { return Iterator(m_size ? firstPage() : endPage(), 0); }
    Iterator end() const { return Iterator(endPage(), 0); }

private:
    struct Block;
    struct FreeRoom;
    struct Place
    {
        std::size_t page;
        std::size_t at;
    };

    static constexpr std::size_t kPageSize = 128;

    // As long as one page is enough it lies in the object itself; pages are never empty.
    const Page* firstPage() const { return m_pages.empty() ? &m_onlyPage : m_pages.data(); }
    const Page* endPage() const
    {
        return m_pages.empty() ? &m_onlyPage + 1 : m_pages.data() + m_pages.size();
    }
    Page& page(std::size_t index) { return m_pages.empty() ? m_onlyPage : m_pages[index]; }

    /// Where `key` stands or would stand.
    Place lowerBound(const Key& key) const;
    bool isAt(const Place& place, const Key& key) const;
    static bool isBefore(const Slot& slot, const Key& key);
    Member& insert(Place place, std::uint64_t prefix, DataValueText&& key);
    void splitPage(Place& place);
    Member* allocate();
    void addBlock(std::size_t capacity);

    Page m_onlyPage;
    std::vector<Page> m_pages;
    Block* m_blocks = nullptr;  // the newest, which may have room, first
    FreeRoom* m_free = nullptr; // room of removed members
    std::size_t m_size = 0;
};

#endif
