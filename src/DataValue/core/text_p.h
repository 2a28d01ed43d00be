#ifndef DATAVALUE_CORE_TEXT_P_H
#define DATAVALUE_CORE_TEXT_P_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <string_view>
#include <utility>

/// An unchangeable byte string of 16 bytes: up to 15 bytes lie in it, longer ones in a block on
/// the heap that copies share. Always followed by a zero byte.
///
/// Copies may be used and destroyed by different threads: the count of a block is atomic.
class DataValueText
{
public:
    static constexpr std::size_t kInline = 15;

    DataValueText() noexcept { setInlineSize(0); }
    explicit DataValueText(std::string_view bytes)
    {
        if (bytes.size() > kInline) {
            std::memcpy(allocate(bytes.size()), bytes.data(), bytes.size());
            return;
        }
        setInlineSize(bytes.size());
        copyShort(m_bytes, bytes.data(), bytes.size());
    }
    DataValueText(const DataValueText& other) noexcept
    {
        std::memcpy(m_bytes, other.m_bytes, sizeof m_bytes);
        if (!isInline())
            block()->count.fetch_add(1, std::memory_order_relaxed);
    }
    DataValueText(DataValueText&& other) noexcept
    {
        std::memcpy(m_bytes, other.m_bytes, sizeof m_bytes);
        other.setInlineSize(0);
    }
    DataValueText& operator=(DataValueText other) noexcept
    {
        std::swap(m_bytes, other.m_bytes);
        return *this;
    }
    ~DataValueText()
    {
        if (!isInline() && block()->count.fetch_sub(1, std::memory_order_acq_rel) == 1)
            ::operator delete(block());
    }

    std::string_view view() const
    {
        return isInline() ? std::string_view(m_bytes, kInline - tail())
                          : std::string_view(block()->bytes(), block()->size);
    }
    const char* c_str() const { return isInline() ? m_bytes : block()->bytes(); }

private:
    struct Block
    {
        std::atomic<std::uint32_t> count;
        std::size_t size;
        char* bytes() { return reinterpret_cast<char*>(this + 1); }
    };
    static constexpr unsigned char kOnHeap = 0xFF;

    // The last byte is the number of free inline bytes, so that it ends a full inline text.
    unsigned char tail() const { return static_cast<unsigned char>(m_bytes[kInline]); }
    bool isInline() const { return tail() != kOnHeap; }
    void setInlineSize(std::size_t size)
    {
        m_bytes[size] = 0;
        m_bytes[kInline] = static_cast<char>(kInline - size);
    }
    Block* block() const
    {
        Block* result;
        std::memcpy(&result, m_bytes, sizeof(void*));
        return result;
    }
    /// Copies less than 16 bytes, without the call that std::memcpy() of an unknown size is.
    static void copyShort(char* to, const char* from, std::size_t size)
    {
        if (size >= 8) {
            copyEnds<8>(to, from, size);
        } else if (size >= 4) {
            copyEnds<4>(to, from, size);
        } else {
            for (std::size_t i = 0; i < size; ++i)
                to[i] = from[i];
        }
    }
    template<std::size_t Half>
    static void copyEnds(char* to, const char* from, std::size_t size)
    {
        char first[Half];
        char last[Half];
        std::memcpy(first, from, Half);
        std::memcpy(last, from + size - Half, Half);
        std::memcpy(to, first, Half);
        std::memcpy(to + size - Half, last, Half);
    }
    /// Makes room on the heap for `size` bytes and their end; returns where they go.
    char* allocate(std::size_t size)
    {
        auto* const block = static_cast<Block*>(::operator new(sizeof(Block) + size + 1));
        new (&block->count) std::atomic<std::uint32_t>(1);
        block->size = size;
        block->bytes()[size] = 0;
        std::memcpy(m_bytes, &block, sizeof(void*));
        m_bytes[kInline] = static_cast<char>(kOnHeap);
        return block->bytes();
    }

    alignas(void*) char m_bytes[kInline + 1];
};

#endif
