// Peak memory of the message list to text and back. Replaces the allocation functions of the C
// library by ones that count, hence a program of its own.

#include "records/recordpeers.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>

#include <errno.h>
#include <malloc.h>

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);
}

namespace {

// The program has one thread.
std::size_t g_used = 0;
std::size_t g_peak = 0;

void* counted(void* block)
{
    if (block)
        g_used += malloc_usable_size(block);
    g_peak = std::max(g_peak, g_used);
    return block;
}

void uncounted(void* block)
{
    if (block)
        g_used -= malloc_usable_size(block);
}

} // namespace

extern "C" {
void* malloc(std::size_t size)
{
    return counted(__libc_malloc(size));
}
void* calloc(std::size_t count, std::size_t size)
{
    return counted(__libc_calloc(count, size));
}
void* realloc(void* block, std::size_t size)
{
    // A block that moves exists twice for a moment, which is the allocator's, not the caller's.
    uncounted(block);
    return counted(__libc_realloc(block, size));
}
void* memalign(std::size_t alignment, std::size_t size)
{
    return counted(__libc_memalign(alignment, size));
}
void* aligned_alloc(std::size_t alignment, std::size_t size)
{
    return counted(__libc_memalign(alignment, size));
}
int posix_memalign(void** block, std::size_t alignment, std::size_t size)
{
    *block = counted(__libc_memalign(alignment, size));
    return *block ? 0 : ENOMEM;
}
void free(void* block)
{
    uncounted(block);
    __libc_free(block);
}
}

namespace {

using namespace recordpeers;

constexpr double mebibyte = 1024.0 * 1024.0;

/// Everything counts from `start` on: what goes in, what comes out, and what it takes between.
template<typename Way>
void measure(const char* name, int count)
{
    const std::size_t start = g_used;
    BLSmsGetListCnf list = makeMessages(count);
    const std::size_t records = g_used - start;

    g_peak = g_used;
    auto text = Way::write(list);
    const std::size_t writing = g_peak - start;
    const std::size_t textSize = g_used - start - records;
    const std::size_t utf8 = plainText(text).size();

    list = BLSmsGetListCnf();
    g_peak = g_used;
    list = Way::read(text);
    const std::size_t reading = g_peak - start;

    const double most = static_cast<double>(std::max(writing, reading));
    std::printf("| %s | %.1f | %.1f | %.1f | %.1f | %.1f | %.2f | %.2f |\n", name,
                static_cast<double>(records) / mebibyte, static_cast<double>(textSize) / mebibyte,
                static_cast<double>(utf8) / mebibyte, static_cast<double>(writing) / mebibyte,
                static_cast<double>(reading) / mebibyte,
                most / static_cast<double>(records + textSize),
                most / static_cast<double>(records + utf8));
}

} // namespace

int main(int argc, char** argv)
{
    const int count = argc > 1 ? std::atoi(argv[1]) : 100000;
    std::printf("| %d messages, MiB | records | text | text as UTF-8 | peak of writing | peak of "
                "reading | most / (records + text) | most / (records + UTF-8) |\n"
                "|---|---|---|---|---|---|---|---|\n",
                count);
    measure<Own>("wzrframework", count);
    measure<Nlohmann>("nlohmann/json", count);
    measure<QtJson>("QJsonDocument", count);
    measure<JsonCpp>("JsonCpp", count);
    measure<RapidJson>("RapidJSON", count);
    return 0;
}
