#pragma once

#include "core/datapoint.h"

#include <cstddef>
#include <cstdint>
#include <vector>

// Set of time stamp keys used by the store's duplicate test. The key is
// year, month, day, minute and second: the hour is not part of it, so two
// readings that differ only in the hour count as the same reading.
//
// Open addressing with linear probing over a table sized once for the
// store's capacity, so inserting during measurement never allocates.
class DuplicateIndex {
public:
    explicit DuplicateIndex(int capacity);

    static uint64_t keyOf(const DataPoint &p) {
        return (uint64_t(uint16_t(p.year)) << 32) | (uint64_t(p.month) << 24) |
               (uint64_t(p.day) << 16) | (uint64_t(p.minute) << 8) | uint64_t(p.second);
    }

    bool contains(const DataPoint &p) const;
    void insert(const DataPoint &p);
    void clear();
    // Rebuilds the index from points[0 .. count-1].
    void rebuild(const DataPoint *points, int count);

private:
    static constexpr uint64_t kEmpty = ~uint64_t(0);
    size_t slotOf(uint64_t key) const;

    std::vector<uint64_t> m_slots;
    size_t m_mask = 0;
};
