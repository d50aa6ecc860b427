#include "core/duplicateindex.h"

#include <algorithm>

DuplicateIndex::DuplicateIndex(int capacity, Rule rule) : m_rule(rule) {
    size_t size = 1024;
    // Keep the load factor at or below one half for short probe runs.
    while (size < size_t(capacity) * 2)
        size <<= 1;
    m_slots.resize(size);
    m_mask = size - 1;
}

size_t DuplicateIndex::slotOf(uint64_t key) const {
    // 64-bit mix (splitmix64 finaliser) so that neighbouring seconds spread.
    uint64_t h = key;
    h ^= h >> 30;
    h *= 0xbf58476d1ce4e5b9ULL;
    h ^= h >> 27;
    h *= 0x94d049bb133111ebULL;
    h ^= h >> 31;
    return size_t(h) & m_mask;
}

void DuplicateIndex::setRule(Rule rule) {
    m_rule = rule;
    clear();
}

bool DuplicateIndex::contains(const DataPoint &p) const {
    const uint64_t key = keyFor(p) + 1;
    for (size_t i = slotOf(key);; i = (i + 1) & m_mask) {
        if (m_slots[i] == key)
            return true;
        if (m_slots[i] == kEmpty)
            return false;
    }
}

void DuplicateIndex::insert(const DataPoint &p) {
    const uint64_t key = keyFor(p) + 1;
    for (size_t i = slotOf(key);; i = (i + 1) & m_mask) {
        if (m_slots[i] == key)
            return;
        if (m_slots[i] == kEmpty) {
            m_slots[i] = key;
            ++m_used;
            return;
        }
    }
}

void DuplicateIndex::clear() {
    if (m_used == 0)
        return;
    // A fresh table rather than a fill: its pages go back to the system.
    decltype(m_slots)(m_slots.size()).swap(m_slots);
    m_used = 0;
}

void DuplicateIndex::rebuild(const DataPoint *points, int count) {
    clear();
    for (int i = 0; i < count; ++i)
        insert(points[i]);
}
