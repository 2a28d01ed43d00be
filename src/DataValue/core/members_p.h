#ifndef DATAVALUE_CORE_MEMBERS_P_H
#define DATAVALUE_CORE_MEMBERS_P_H

#include "DataValue/core/text_p.h"
#include "DataValue/datavalue.h"

#include <utility>
#include <vector>

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
    /// Begins in memory that the caller provides, roomFor(count) bytes which outlive this: a small
    /// map then needs no other.
    DataValueMembers(void* room, std::size_t count);
    static std::size_t roomFor(std::size_t count);
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

private:
    /// One place of the index: the member, and the first bytes of its key, which mostly decide.
    struct Slot
    {
        std::uint64_t prefix;
        Member* member;
    };
    /// A piece of the index. Its slots lie on the heap, or in memory that belongs to others.
    class Page
    {
    public:
        Page() = default;
        Page(Slot* room, std::size_t capacity)
            : m_slots(room)
            , m_capacity(capacity)
            , m_isBorrowed(true)
        {
        }
        /// A copy of these.
        Page(const Slot* first, const Slot* last);
        Page(Page&& other) noexcept { swap(other); }
        Page& operator=(Page&& other) noexcept
        {
            swap(other);
            return *this;
        }
        ~Page()
        {
            if (!m_isBorrowed)
                delete[] m_slots;
        }

        std::size_t size() const { return m_size; }
        bool empty() const { return m_size == 0; }
        const Slot* begin() const { return m_slots; }
        const Slot* end() const { return m_slots + m_size; }
        const Slot& back() const { return m_slots[m_size - 1]; }
        const Slot& operator[](std::size_t at) const { return m_slots[at]; }
        /// Makes room for one more slot, which insert() needs.
        void makeRoom();
        void insert(std::size_t at, const Slot& slot);
        void remove(std::size_t at);
        /// Drops what stands behind the first `size`.
        void shrink(std::size_t size) { m_size = size; }

    private:
        void reserve(std::size_t capacity);
        void swap(Page& other) noexcept
        {
            std::swap(m_slots, other.m_slots);
            std::swap(m_size, other.m_size);
            std::swap(m_capacity, other.m_capacity);
            std::swap(m_isBorrowed, other.m_isBorrowed);
        }

        Slot* m_slots = nullptr;
        std::size_t m_size = 0;
        std::size_t m_capacity = 0;
        bool m_isBorrowed = false;
    };
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
        Iterator() = default;
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
        const Page* m_page = nullptr;
        std::size_t m_at = 0;
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
    Block* m_borrowed = nullptr; // the first block, where the caller provided it
    Block* m_blocks = nullptr;   // the newest, which may have room, first
    FreeRoom* m_free = nullptr;  // room of removed members
    std::size_t m_size = 0;
};

#endif
