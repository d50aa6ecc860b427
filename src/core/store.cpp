#include "core/store.h"

#include <algorithm>
#include <type_traits>

// The store's points come zeroed from ZeroAllocator, unconstructed: a
// DataPoint must be a plain aggregate whose all-zero bytes are its default.
static_assert(std::is_aggregate_v<DataPoint> && std::is_trivially_copyable_v<DataPoint> &&
              std::is_trivially_destructible_v<DataPoint>);

MeasurementStore::MeasurementStore() : dataPoints(capacity), m_index(capacity) {}

AppendResult MeasurementStore::append(const DataPoint &p) {
    if (!dataPoint_isValid(p))
        return AppendResult::Invalid;
    if (dataPoint_count >= capacity)
        return AppendResult::Full;
    if (isDuplicate(p))
        return AppendResult::Duplicate;
    dataPoints[size_t(dataPoint_count)] = p;
    ++dataPoint_count;
    data_changed = true;
    m_index.insert(p);
    return AppendResult::Added;
}

void MeasurementStore::clear() {
    dataPoint_count = 0;
    fileName_current.clear();
    data_changed = false;
    alarmThreshold = -1.0f;
    alarmDelay = -1.0f;
    m_index.clear();
    m_archived.reset();
}

void MeasurementStore::setFullStampDuplicates(bool on) {
    m_index.setRule(on ? DuplicateIndex::Rule::FullStamp : DuplicateIndex::Rule::HourIgnored);
    m_archived.reset();
    reindex();
}

void MeasurementStore::rollOver() {
    if (!m_archived)
        m_archived = std::make_unique<DuplicateIndex>(capacity, m_index.rule());
    std::swap(*m_archived, m_index);
    m_index.clear();
    dataPoint_count = 0;
    data_changed = false;
}

bool MeasurementStore::merge(const DataPoint *points, int32_t n, MergeMode mode) {
    if (n < 0)
        return true;
    const int32_t base = mode == MergeMode::Replace ? 0 : dataPoint_count;
    if (int64_t(base) + n > capacity)
        return true;
    DataPoint *dst = dataPoints.data();
    switch (mode) {
    case MergeMode::Replace:
        std::copy_n(points, n, dst);
        dataPoint_count = n;
        m_index.rebuild(dst, dataPoint_count);
        m_archived.reset();
        return false;
    case MergeMode::InsertBefore:
        if (n == 0)
            return false;
        // Move from the last record down so nothing is overwritten unmoved.
        std::copy_backward(dst, dst + dataPoint_count, dst + dataPoint_count + n);
        std::copy_n(points, n, dst);
        dataPoint_count += n;
        break;
    case MergeMode::Append:
        std::copy_n(points, n, dst + dataPoint_count);
        dataPoint_count += n;
        break;
    }
    // The merged records may be duplicates of each other: the index is a
    // set of keys, so inserting them all keeps it exact.
    for (int32_t i = 0; i < n; ++i)
        m_index.insert(points[i]);
    return false;
}

void MeasurementStore::reindex() {
    m_index.rebuild(dataPoints.data(), dataPoint_count);
}
