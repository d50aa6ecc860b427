#pragma once
// Helpers of the fuzz targets that write into the measurement store: a
// known pre-fill, and checks of the store against the plain rules (count
// within the capacity, the duplicate index against a linear scan).

#include "core/store.h"

#include <cstdint>
#include <cstdlib>
#include <vector>

// The checks themselves are left out of the coverage feedback: the fuzzer
// should chase paths of the program, not of its checker (and the scans
// run much faster uninstrumented).
#define FUZZ_UNCOVERED __attribute__((no_sanitize("coverage")))

namespace fuzzstore {

// abort() rather than assert(): the check must hold in release builds too.
FUZZ_UNCOVERED inline void check(bool ok) {
    if (!ok)
        std::abort();
}

FUZZ_UNCOVERED inline bool sameKey(const DataPoint &a, const DataPoint &b) {
    return a.year == b.year && a.month == b.month && a.day == b.day && a.minute == b.minute &&
           a.second == b.second;
}

// Field by field: the padding bytes of a copy are not data.
FUZZ_UNCOVERED inline bool samePoint(const DataPoint &a, const DataPoint &b) {
    return sameKey(a, b) && a.hour == b.hour && a.water == b.water &&
           a.temperature == b.temperature && a.pressure == b.pressure && a.soot == b.soot &&
           a.stream == b.stream && a.adc_meas == b.adc_meas && a.adc_ref == b.adc_ref;
}

// The store's plain invariants, and its duplicate index against the scan
// the duplicate test was first written as, for each probe. The scan costs
// the whole store, so keep the probes few; it is spelt out in one loop
// because the compiler does not inline helpers into uninstrumented code.
FUZZ_UNCOVERED inline void checkStore(const MeasurementStore &store, const DataPoint *probes,
                                      int probeCount) {
    check(store.dataPoint_count >= 0 && store.dataPoint_count <= MeasurementStore::capacity);
    check(store.dataPoints.size() == size_t(MeasurementStore::capacity));
    constexpr int maxProbes = 8;
    check(probeCount <= maxProbes);
    bool found[maxProbes] = {};
    const DataPoint *const points = store.dataPoints.data();
    for (int32_t i = 0; i < store.dataPoint_count; ++i) {
        const DataPoint &a = points[i];
        for (int j = 0; j < probeCount; ++j) {
            const DataPoint &b = probes[j];
            found[j] |= a.second == b.second && a.minute == b.minute && a.day == b.day &&
                        a.month == b.month && a.year == b.year;
        }
    }
    for (int j = 0; j < probeCount; ++j)
        check(store.isDuplicate(probes[j]) == found[j]);
}

// Point i of the pre-fill: distinct keys in 2024 (day 1..28 of January and
// February), with an hour that varies on its own so that only the key, not
// the whole stamp, tells a duplicate.
FUZZ_UNCOVERED inline DataPoint prefillPoint(int32_t i) {
    DataPoint p;
    p.year = 2024;
    p.month = uint8_t(1 + i / (28 * 3600));
    p.day = uint8_t(1 + i / 3600 % 28);
    p.hour = uint8_t(i * 7 % 24);
    p.minute = uint8_t(i / 60 % 60);
    p.second = uint8_t(i % 60);
    p.water = float(i);
    p.stream = int16_t(i % 7);
    return p;
}

// The pre-fill index whose key p has, or -1.
FUZZ_UNCOVERED inline int32_t prefillIndexOf(const DataPoint &p) {
    if (p.year != 2024 || p.month < 1 || p.month > 2 || p.day < 1 || p.day > 28 || p.minute > 59 ||
        p.second > 59)
        return -1;
    const int32_t i = (p.month - 1) * 28 * 3600 + (p.day - 1) * 3600 + p.minute * 60 + p.second;
    return i < MeasurementStore::capacity ? i : -1;
}

// A pre-fill count from two input bytes: mostly a thousand points or less,
// one input in sixteen within 255 points of the capacity (refilling that
// many costs milliseconds).
FUZZ_UNCOVERED inline int32_t prefillCount(uint8_t a, uint8_t b, int32_t minimum) {
    if (a >= 0xf0)
        return MeasurementStore::capacity - b;
    const int32_t n = ((a << 8) | b) % 1024;
    return n < minimum ? minimum : n;
}

// Puts exactly pre-fill points 0 .. n-1 into the store. Refilling a store
// of 130000 points costs milliseconds, so a store that still holds an
// untouched pre-fill is only topped up; the result is the same store, so an
// input still reproduces on its own.
class Prefiller {
public:
    FUZZ_UNCOVERED Prefiller() {
        m_points.reserve(size_t(MeasurementStore::capacity));
        for (int32_t i = 0; i < MeasurementStore::capacity; ++i)
            m_points.push_back(prefillPoint(i));
    }

    void fill(MeasurementStore &store, int32_t n) {
        if (m_untouched >= 0 && n >= m_untouched) {
            check(!store.merge(m_points.data() + m_untouched, n - m_untouched, MergeMode::Append));
        } else {
            check(!store.merge(m_points.data(), n, MergeMode::Replace));
        }
        m_untouched = n;
        check(store.dataPoint_count == n);
    }

    // The caller changed the points: the next fill starts afresh.
    void touched() { m_untouched = -1; }

    const DataPoint *points() const { return m_points.data(); }

private:
    std::vector<DataPoint> m_points;
    int32_t m_untouched = -1;
};

} // namespace fuzzstore
