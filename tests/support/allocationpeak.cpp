#include "support/allocationpeak.h"

#include <atomic>
#include <cstddef>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || !defined(__GLIBC__)

AllocationPeak::AllocationPeak()
    : m_before(0)
{
}

qint64 AllocationPeak::bytes() const
{
    return 0;
}

qint64 AllocationPeak::bytesKept() const
{
    return 0;
}

bool AllocationPeak::canCount()
{
    return false;
}

AllocationFailure::AllocationFailure(int) {}

AllocationFailure::~AllocationFailure() = default;

bool AllocationFailure::hasHappened() const
{
    return false;
}

#else

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

std::atomic<qint64> g_used{0};
std::atomic<qint64> g_peak{0};
thread_local int t_left = -1; // allocations before the one that fails; negative: none fails
thread_local bool t_hasFailed = false;

bool isToFail()
{
    if (t_left < 0)
        return false;
    t_hasFailed = t_hasFailed || t_left == 0;
    return t_left-- == 0;
}

void add(qint64 bytes)
{
    const qint64 used = g_used.fetch_add(bytes) + bytes;
    qint64 peak = g_peak.load();
    while (used > peak && !g_peak.compare_exchange_weak(peak, used)) {
    }
}

void* counted(void* block)
{
    if (block)
        add(static_cast<qint64>(malloc_usable_size(block)));
    return block;
}

void uncounted(void* block)
{
    if (block)
        add(-static_cast<qint64>(malloc_usable_size(block)));
}

} // namespace

extern "C" {
void* malloc(std::size_t size)
{
    return isToFail() ? nullptr : counted(__libc_malloc(size));
}
void* calloc(std::size_t count, std::size_t size)
{
    return isToFail() ? nullptr : counted(__libc_calloc(count, size));
}
void* realloc(void* block, std::size_t size)
{
    if (isToFail())
        return nullptr;
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

AllocationPeak::AllocationPeak()
    : m_before(g_used.load())
{
    g_peak = m_before;
}

qint64 AllocationPeak::bytes() const
{
    return g_peak.load() - m_before;
}

qint64 AllocationPeak::bytesKept() const
{
    return g_used.load() - m_before;
}

bool AllocationPeak::canCount()
{
    return true;
}

AllocationFailure::AllocationFailure(int left)
{
    t_hasFailed = false;
    t_left = left;
}

AllocationFailure::~AllocationFailure()
{
    t_left = -1;
}

bool AllocationFailure::hasHappened() const
{
    return t_hasFailed;
}

#endif
