#pragma once

#include "core/store.h"
#include "files/chunkwriter.h"
#include "files/progressticker.h"

#include <algorithm>

// The line loop shared by the native and the CSV writers: one text line
// per store record first .. end-1, collected into large writes, with the
// progress bar moved every 1024 lines (the clock is read only that often).
// formatLine(point, out) writes one record's line at out and returns the
// position after it; maxLine bounds that length. Returns true (failed) for
// a range outside the store or when a write came up short; an empty range
// writes nothing and succeeds.
template <typename FormatLine>
bool writeRecordLines(QIODevice &device, const MeasurementStore &store, int32_t first, int32_t end,
                      size_t maxLine, ProgressTicker &ticker, FormatLine formatLine) {
    constexpr int32_t linesPerUpdate = 1024;
    if (first >= end)
        return false;
    if (first < 0 || end > MeasurementStore::capacity)
        return true;
    ChunkWriter out(device, std::max<size_t>(1 << 16, 2 * maxLine));
    const DataPoint *points = store.dataPoints.data();
    const int32_t total = end - first;
    for (int32_t i = first; i < end; ++i) {
        char *const start = out.reserve(maxLine);
        out.commit(size_t(formatLine(points[i], start) - start));
        const int32_t done = i - first + 1;
        if (done % linesPerUpdate == 0) {
            if (out.failed())
                return true;
            ticker.update(done, total);
        }
    }
    const bool failed = out.flush();
    ticker.update(total, total);
    return failed;
}
