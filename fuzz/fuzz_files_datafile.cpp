// The native data file reader: the scanner and the merge into a store that
// already holds points, as Open does it. Input: one control byte (merge
// mode, and the load buffer's size, small so that its overflow is reached),
// two bytes for the pre-fill count (at least 1), then the file's bytes.
//
// Checked: the scanner reads the same records and metadata however the
// bytes are split into blocks (the whole-line fast path against the
// per-field machine); the reader keeps at most 10 calibration pairs; a
// refused merge changes nothing; an accepted one puts the file's records
// and the old points where the mode says; the store's count stays within
// the capacity and its duplicate index agrees with a linear scan.
#include "storecheck.h"

#include "files/datafilescanner.h"

#include "core/store.h"

#include <cmath>
#include <memory>
#include <vector>

using namespace fuzzstore;

namespace {

void checkSameScan(const DataFileScanner &a, const DataPoint *x, const DataFileScanner &b,
                   const DataPoint *y) {
    check(a.count() == b.count() && a.overflowed() == b.overflowed());
    for (int i = 0; i < a.count(); ++i)
        check(samePoint(x[i], y[i]));
    check(a.calSource.count == b.calSource.count && a.calTable.count == b.calTable.count);
    check(a.oilName == b.oilName);
    check(a.alarmThreshold.has_value() == b.alarmThreshold.has_value());
    check(!a.alarmThreshold || *a.alarmThreshold == *b.alarmThreshold);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    static const auto store = std::make_unique<MeasurementStore>();
    static Prefiller prefiller;
    static std::vector<DataPoint> whole(MeasurementStore::capacity),
        split(MeasurementStore::capacity);
    if (size < 3)
        return 0;
    const auto mode = MergeMode(1 + data[0] % 3);
    // 0 stands for the full size the program uses.
    const int32_t bufferSize = data[0] / 3 == 0 ? MeasurementStore::capacity : data[0] / 3;
    const int32_t prefill = prefillCount(data[1], data[2], 1);
    const char *bytes = reinterpret_cast<const char *>(data + 3);
    const int64_t length = int64_t(size - 3);

    DataFileScanner scanner(whole.data(), bufferSize);
    DataFileScanner bytewise(split.data(), bufferSize);
    const CalTable empty;
    scanner.reset(empty, empty);
    bytewise.reset(empty, empty);
    scanner.scan(bytes, length);
    for (int64_t i = 0; i < length; ++i)
        bytewise.scan(bytes + i, 1);
    checkSameScan(scanner, whole.data(), bytewise, split.data());
    check(!scanner.alarmThreshold || std::isfinite(*scanner.alarmThreshold));
    for (const CalTable *t : {&scanner.calSource, &scanner.calTable}) {
        check(t->count >= 0 && t->count <= DataFileScanner::maxPairsRead);
        for (int i = 0; i < t->count; ++i)
            check(std::isfinite(t->pairs[i].first) && std::isfinite(t->pairs[i].second));
    }
    if (scanner.overflowed())
        return 0; // the loader refuses such a file before touching the store

    MeasurementStore &s = *store;
    prefiller.fill(s, prefill);
    const int32_t n = scanner.count();
    const bool refused = s.merge(whole.data(), n, mode);
    const int32_t base = mode == MergeMode::Replace ? 0 : prefill;
    check(refused == (int64_t(base) + n > MeasurementStore::capacity));

    // Where the file's records and the old points must be now.
    int32_t fileAt = 0, oldAt = 0, oldCount = prefill;
    if (refused) {
        fileAt = -1;
    } else if (mode == MergeMode::Replace) {
        oldCount = 0;
    } else if (mode == MergeMode::InsertBefore) {
        oldAt = n;
    } else {
        fileAt = prefill;
    }
    check(s.dataPoint_count == (refused ? prefill : base + n));
    if (!refused && (n > 0 || mode == MergeMode::Replace))
        prefiller.touched();
    if (fileAt >= 0) {
        for (int32_t i = 0; i < n; ++i)
            check(samePoint(s.dataPoints[size_t(fileAt + i)], whole[size_t(i)]));
    }
    if (oldCount > 0) {
        const int32_t sample[] = {0, oldCount / 3, oldCount - 1};
        for (int32_t i : sample)
            check(samePoint(s.dataPoints[size_t(oldAt + i)], prefiller.points()[i]));
    }

    // Probes: the first and last old point and the first and last record
    // of the file, each with another hour.
    DataPoint probes[4] = {prefillPoint(0), prefillPoint(prefill - 1), prefillPoint(0),
                           prefillPoint(prefill - 1)};
    if (n > 0) {
        probes[2] = whole[0];
        probes[3] = whole[size_t(n - 1)];
    }
    for (DataPoint &p : probes)
        p.hour = uint8_t((p.hour + 1) % 24);
    checkStore(s, probes, 4);
    return 0;
}
