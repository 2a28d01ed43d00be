#ifndef TESTS_SUPPORT_MEMORYUSE_H
#define TESTS_SUPPORT_MEMORYUSE_H

#include <QtGlobal>

#include <malloc.h>
#include <memory>

/// How many bytes this process has allocated and not freed, of all threads that use the main arena.
/// What the system counts for the process says less: freed memory is given back late.
inline qint64 memoryInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return static_cast<qint64>(info.uordblks + info.hblkhd);
}

/// False where another allocator stands in, as that of a sanitizer.
inline bool canCountMemory()
{
    const qint64 before = memoryInUse();
    const auto block = std::make_unique<char[]>(1 << 20);
    return memoryInUse() - before >= (1 << 20);
}

#endif
