#include "DataValue/core/members_p.h"

#include <QtEndian>

#include <algorithm>
#include <cstring>
#include <new>

struct DataValueMembers::Block
{
    Block* next;
    std::size_t used;
    std::size_t capacity;
    Member* members() { return reinterpret_cast<Member*>(this + 1); }
};

struct DataValueMembers::FreeRoom
{
    FreeRoom* next;
};

namespace {

constexpr std::size_t kFirstBlock = 8;
constexpr std::size_t kLargestBlock = 64;
constexpr std::size_t kFirstPage = 16;

} // namespace

DataValueMembers::Page::Page(const Slot* first, const Slot* last)
{
    reserve(kPageSize);
    m_size = static_cast<std::size_t>(last - first);
    std::copy(first, last, m_slots);
}

void DataValueMembers::Page::makeRoom()
{
    if (m_size == m_capacity)
        reserve(std::clamp(m_size * 2, kFirstPage, kPageSize));
}

void DataValueMembers::Page::insert(std::size_t at, const Slot& slot)
{
    if (at != m_size)
        std::copy_backward(m_slots + at, m_slots + m_size, m_slots + m_size + 1);
    m_slots[at] = slot;
    ++m_size;
}

void DataValueMembers::Page::remove(std::size_t at)
{
    std::copy(m_slots + at + 1, m_slots + m_size, m_slots + at);
    --m_size;
}

void DataValueMembers::Page::reserve(std::size_t capacity)
{
    if (capacity <= m_capacity)
        return;
    auto* const slots = new Slot[capacity];
    std::copy(m_slots, m_slots + m_size, slots);
    if (!m_isBorrowed)
        delete[] m_slots;
    m_slots = slots;
    m_capacity = capacity;
    m_isBorrowed = false;
}

std::size_t DataValueMembers::roomFor(std::size_t count)
{
    const std::size_t slots = std::min(count, kPageSize);
    return sizeof(Block) + count * sizeof(Member) + slots * sizeof(Slot);
}

DataValueMembers::DataValueMembers(void* room, std::size_t count)
{
    m_borrowed = new (room) Block{nullptr, 0, count};
    m_blocks = m_borrowed;
    void* const slots = m_borrowed->members() + count;
    m_onlyPage = Page(static_cast<Slot*>(slots), std::min(count, kPageSize));
}

DataValueMembers::Key::Key(std::string_view bytes)
    : prefix(0)
    , text(bytes)
{
    const std::size_t size = bytes.size();
    if (size >= 8) {
        prefix = qFromBigEndian<quint64>(bytes.data());
    } else if (size >= 4) { // the first four bytes, and the last four, which overlap them
        const quint64 first = qFromBigEndian<quint32>(bytes.data());
        const quint64 last = qFromBigEndian<quint32>(bytes.data() + size - 4);
        prefix = (first << 32) | (last << (64 - 8 * size) & 0xFFFFFFFF);
    } else {
        for (std::size_t i = 0; i < size; ++i)
            prefix |= quint64(static_cast<unsigned char>(bytes[i])) << (56 - 8 * i);
    }
}

bool DataValueMembers::isBefore(const Slot& slot, const Key& key)
{
    return slot.prefix != key.prefix ? slot.prefix < key.prefix
                                     : slot.member->key.view() < key.text;
}

DataValueMembers::Place DataValueMembers::lowerBound(const Key& key) const
{
    const Page* const first = firstPage();
    const Page* page = endPage() - 1;
    if (page->empty())
        return {0, 0};
    const auto pageIndex = [first](const Page* at) { return static_cast<std::size_t>(at - first); };
    if (isBefore(page->back(), key)) // keys often come in order
        return {pageIndex(page), page->size()};
    if (first != page) {
        const auto endsBefore = [](const Page& candidate, const Key& wanted) {
            return isBefore(candidate.back(), wanted);
        };
        page = std::lower_bound(first, page, key, endsBefore);
    }
    const Slot* low = page->begin();
    for (std::size_t count = page->size(); count != 0;) {
        const std::size_t half = count / 2;
        const bool right = isBefore(low[half], key);
        low += right ? half + 1 : 0;
        count = right ? count - half - 1 : half;
    }
    return {pageIndex(page), static_cast<std::size_t>(low - page->begin())};
}

bool DataValueMembers::isAt(const Place& place, const Key& key) const
{
    const Page& page = firstPage()[place.page];
    return place.at < page.size() && page[place.at].prefix == key.prefix &&
           page[place.at].member->key.view() == key.text;
}

DataValueMembers::Member* DataValueMembers::find(std::string_view text) const
{
    const Key key(text);
    const Place place = lowerBound(key);
    return isAt(place, key) ? firstPage()[place.page][place.at].member : nullptr;
}

DataValueMembers::Member& DataValueMembers::findOrAdd(std::string_view text)
{
    const Key key(text);
    const Place place = lowerBound(key);
    return isAt(place, key) ? *page(place.page)[place.at].member
                            : insert(place, key.prefix, DataValueText(text));
}

DataValueMembers::Member& DataValueMembers::findOrAdd(DataValueText text)
{
    const Key key(text.view());
    const Place place = lowerBound(key);
    return isAt(place, key) ? *page(place.page)[place.at].member
                            : insert(place, key.prefix, std::move(text));
}

DataValueMembers::Member& DataValueMembers::append(DataValueText text)
{
    const std::uint64_t prefix = Key(text.view()).prefix;
    const Page* const last = endPage() - 1;
    return insert({static_cast<std::size_t>(last - firstPage()), last->size()}, prefix,
                  std::move(text));
}

DataValueMembers::Member& DataValueMembers::insert(Place place, std::uint64_t prefix,
                                                   DataValueText&& key)
{
    if (page(place.page).size() == kPageSize)
        splitPage(place);
    Page& target = page(place.page);
    target.makeRoom();
    Member* const member = new (allocate()) Member{std::move(key), CDataValue()};
    target.insert(place.at, Slot{prefix, member});
    ++m_size;
    return *member;
}

void DataValueMembers::splitPage(Place& place)
{
    if (m_pages.empty())
        m_pages.push_back(std::move(m_onlyPage));
    // Behind the last member of all, the full page stays full: keys that come in order fill it.
    Page& full = m_pages[place.page];
    const bool atEnd = place.at == kPageSize && place.page + 1 == m_pages.size();
    const std::size_t kept = atEnd ? kPageSize - 1 : kPageSize / 2;
    Page upper(full.begin() + kept, full.end());
    full.shrink(kept);
    m_pages.insert(m_pages.begin() + static_cast<std::ptrdiff_t>(place.page) + 1, std::move(upper));
    if (place.at > kept) {
        ++place.page;
        place.at -= kept;
    }
}

bool DataValueMembers::remove(std::string_view text)
{
    const Key key(text);
    const Place place = lowerBound(key);
    if (!isAt(place, key))
        return false;
    Page& source = page(place.page);
    Member* const member = source[place.at].member;
    source.remove(place.at);
    if (source.empty() && !m_pages.empty())
        m_pages.erase(m_pages.begin() + static_cast<std::ptrdiff_t>(place.page));
    --m_size;
    member->~Member();
    m_free = new (static_cast<void*>(member)) FreeRoom{m_free};
    return true;
}

void DataValueMembers::clear()
{
    for (Member& member : *this)
        member.~Member();
    m_onlyPage.shrink(0);
    std::vector<Page>().swap(m_pages); // gives its memory back, too
    m_free = nullptr;
    m_size = 0;
    while (m_blocks != m_borrowed)
        ::operator delete(std::exchange(m_blocks, m_blocks->next));
    if (m_borrowed)
        m_borrowed->used = 0;
}

DataValueMembers::Member* DataValueMembers::allocate()
{
    if (m_free) {
        FreeRoom* const room = std::exchange(m_free, m_free->next);
        return reinterpret_cast<Member*>(room);
    }
    if (!m_blocks || m_blocks->used == m_blocks->capacity) {
        const std::size_t next = m_blocks ? m_blocks->capacity * 2 : kFirstBlock;
        addBlock(std::clamp(next, kFirstBlock, kLargestBlock));
    }
    return m_blocks->members() + m_blocks->used++;
}

void DataValueMembers::addBlock(std::size_t capacity)
{
    auto* const block =
        static_cast<Block*>(::operator new(sizeof(Block) + capacity * sizeof(Member)));
    block->next = m_blocks;
    block->used = 0;
    block->capacity = capacity;
    m_blocks = block;
}
