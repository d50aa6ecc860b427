#pragma once

#include "core/datapoint.h"
#include "core/zeroallocator.h"

#include <cstddef>
#include <cstdint>
#include <vector>

// Set of time stamp keys used by the store's duplicate test. By default
// the key is year, month, day, minute and second: the hour is not part of
// it, so two readings that differ only in the hour count as the same
// reading. A recording station may ask for the full stamp instead (the hour
// compared too); changing the rule empties the index, and the owner
// rebuilds it from its points.
//
// Open addressing with linear probing over a table sized once for the
// store's capacity, so inserting during measurement never allocates. A slot
// holds its key plus one; 0 is empty, so an empty table is zero pages.
class DuplicateIndex {
public:
    enum class Rule {
        HourIgnored, // the documented key: year, month, day, minute, second
        FullStamp,   // year, month, day, hour, minute, second
    };

    explicit DuplicateIndex(int capacity, Rule rule = Rule::HourIgnored);

    static uint64_t keyOf(const DataPoint &p) {
        return (uint64_t(uint16_t(p.year)) << 40) | (uint64_t(p.month) << 32) |
               (uint64_t(p.day) << 24) | (uint64_t(p.minute) << 8) | uint64_t(p.second);
    }
    static uint64_t fullKeyOf(const DataPoint &p) { return keyOf(p) | (uint64_t(p.hour) << 16); }
    uint64_t keyFor(const DataPoint &p) const {
        return m_rule == Rule::FullStamp ? fullKeyOf(p) : keyOf(p);
    }

    Rule rule() const { return m_rule; }
    // Takes the other key function; the index is then empty.
    void setRule(Rule rule);

    bool contains(const DataPoint &p) const;
    void insert(const DataPoint &p);
    void clear();
    // Rebuilds the index from points[0 .. count-1].
    void rebuild(const DataPoint *points, int count);

private:
    static constexpr uint64_t kEmpty = 0;
    size_t slotOf(uint64_t key) const;

    std::vector<uint64_t, ZeroAllocator<uint64_t>> m_slots;
    size_t m_mask = 0;
    size_t m_used = 0; // keys inserted since the last clear
    Rule m_rule = Rule::HourIgnored;
};
