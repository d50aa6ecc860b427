#pragma once

#include <cstddef>
#include <cstdlib>
#include <new>
#include <utility>

// An allocator for large tables whose all-zero bytes are their elements'
// empty value (the store's points, the duplicate index). It takes the memory
// zeroed from calloc() and leaves value-initialisation alone, so a table's
// pages, fresh from the system, cost nothing until something is written to
// them: a store holding a few readings takes a few pages, not the 4.7 MB of
// its whole capacity. Only for tables sized once: a vector that shrank and
// grows again within its old capacity would get the old bytes back.
template <typename T> struct ZeroAllocator {
    using value_type = T;

    ZeroAllocator() = default;
    template <typename U> ZeroAllocator(const ZeroAllocator<U> &) noexcept {}

    T *allocate(std::size_t n) {
        void *p = std::calloc(n, sizeof(T));
        if (!p)
            throw std::bad_alloc();
        return static_cast<T *>(p);
    }
    void deallocate(T *p, std::size_t) noexcept { std::free(p); }

    // Value-initialisation: calloc's zeros are that value already.
    template <typename U> void construct(U *) noexcept {}
    template <typename U, typename... Args> void construct(U *p, Args &&...args) {
        ::new (static_cast<void *>(p)) U(std::forward<Args>(args)...);
    }

    template <typename U> bool operator==(const ZeroAllocator<U> &) const noexcept { return true; }
};
