// The library heap and the base class that puts objects on it.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxconfig.h"

#include <cstddef>
#include <new>

/// Takes `size` bytes from the library heap, aligned for every fundamental type; null when there are none
/// left. A size of 0 gives a distinct pointer.
///
/// Threads: any. Memory may be given back on another thread and by another module than took it.
QX_API void* qx_malloc(std::size_t size);

/// As qx_malloc, aligned for `alignment` (a power of two). Given back by the aligned qx_delete only.
QX_API void* qx_malloc(std::size_t size, std::align_val_t alignment);

/// Gives memory of qx_malloc or qx_realloc back; null is ignored.
QX_API void qx_free(void* memory);

/// Changes the size of memory of qx_malloc and keeps its content up to the smaller size. Null `memory` is an
/// ordinary qx_malloc. Returns null, and leaves `memory` as it was, when there is none left.
QX_API void* qx_realloc(void* memory, std::size_t size);

/// As qx_malloc, but reports "Bad Alloc:%s" and throws std::bad_alloc instead of returning null.
QX_API void* qx_new(std::size_t size);

/// As qx_new; `tag`, a text that lives as long as the program, names the allocation for
/// qxMemoryControl::getTagCount.
QX_API void* qx_new(std::size_t size, const char* tag);

/// As qx_new for an `alignment` (a power of two) beyond that of the fundamental types.
QX_API void* qx_new(std::size_t size, std::align_val_t alignment);
QX_API void* qx_new(std::size_t size, std::align_val_t alignment, const char* tag);

/// Gives memory of qx_new back; null is ignored.
QX_API void qx_delete(void* memory);

/// Gives memory of the aligned forms back; null is ignored.
QX_API void qx_delete(void* memory, std::align_val_t alignment);

/// Reports "Bad Alloc:%s" with the location made of `file` and `line`, then throws std::bad_alloc. Uses no
/// heap. For templates and inline code as well.
[[noreturn]] QX_API void qxThrowBadAlloc(const char* file, int line);

/// The channel for reports of the memory system itself. It works when there is no memory left.
class QX_API qxMemoryControl
{
public:
    /// Writes `format`, whose single "%s" stands for `text`, as one line to standard error; a line is cut at
    /// 1,023 bytes. Reports that are not `forced` are dropped while reports are switched off.
    ///
    /// Threads: any.
    static void memprintf(bool forced, const char* format, const char* text);

    /// Switches reports that are not forced on (the start) or off.
    static void enableReports(bool on);

    /// How many allocations named the text of `tag` so far. The first 256 tags are counted, and only while
    /// the library is built without NDEBUG; else the answer is 0.
    ///
    /// Threads: any.
    static std::size_t getTagCount(const char* tag);
};

/// Routes the allocation of derived classes through the library heap, so that an object made in one module
/// can be deleted in another. Of several bases only this one may define class-level allocation.
///
/// In `new (text) Class` a text is the tag of the allocation; room of plain characters to build in is given
/// as a `void*`.
class QX_API qxSharedMemory
{
public:
    static void* operator new(std::size_t size) { return qx_new(size); }
    static void* operator new(std::size_t size, const char* tag) { return qx_new(size, tag); }
    static void* operator new(std::size_t, void* place) noexcept { return place; }
    static void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return qx_malloc(size); }
    static void* operator new(std::size_t size, std::align_val_t alignment)
    {
        return qx_new(size, alignment);
    }
    static void* operator new(std::size_t size, std::align_val_t alignment, const char* tag)
    {
        return qx_new(size, alignment, tag);
    }
    static void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept
    {
        return qx_malloc(size, alignment);
    }
    static void* operator new[](std::size_t size) { return qx_new(size); }
    static void* operator new[](std::size_t size, const char* tag) { return qx_new(size, tag); }
    static void* operator new[](std::size_t, void* place) noexcept { return place; }
    static void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return qx_malloc(size); }
    static void* operator new[](std::size_t size, std::align_val_t alignment)
    {
        return qx_new(size, alignment);
    }
    static void* operator new[](std::size_t size, std::align_val_t alignment, const char* tag)
    {
        return qx_new(size, alignment, tag);
    }
    static void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept
    {
        return qx_malloc(size, alignment);
    }

    static void operator delete(void* memory) { qx_delete(memory); }
    static void operator delete(void* memory, const char*) { qx_delete(memory); }
    static void operator delete(void*, void*) noexcept {}
    static void operator delete(void* memory, const std::nothrow_t&) noexcept { qx_free(memory); }
    static void operator delete(void* memory, std::align_val_t alignment) { qx_delete(memory, alignment); }
    static void operator delete(void* memory, std::align_val_t alignment, const char*)
    {
        qx_delete(memory, alignment);
    }
    static void operator delete(void* memory, std::align_val_t alignment, const std::nothrow_t&) noexcept
    {
        qx_delete(memory, alignment);
    }
    static void operator delete[](void* memory) { qx_delete(memory); }
    static void operator delete[](void* memory, const char*) { qx_delete(memory); }
    static void operator delete[](void*, void*) noexcept {}
    static void operator delete[](void* memory, const std::nothrow_t&) noexcept { qx_free(memory); }
    static void operator delete[](void* memory, std::align_val_t alignment) { qx_delete(memory, alignment); }
    static void operator delete[](void* memory, std::align_val_t alignment, const char*)
    {
        qx_delete(memory, alignment);
    }
    static void operator delete[](void* memory, std::align_val_t alignment, const std::nothrow_t&) noexcept
    {
        qx_delete(memory, alignment);
    }
};
