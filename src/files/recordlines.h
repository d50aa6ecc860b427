#pragma once

#include "core/store.h"
#include "files/chunkwriter.h"
#include "files/progressticker.h"

#include <algorithm>

// The line loop shared by the native and the CSV writers: one text line
// per point first .. end-1 of `points`, collected into large writes, with
// the progress moved every 1024 lines (the clock is read only that often).
// formatLine(point, out) writes one record's line at out and returns the
// position after it; maxLine bounds that length. `ticker` is a
// ProgressTicker, or anything with its update(done, total). Returns true
// (failed) when a write came up short; an empty range writes nothing and
// succeeds.
template <typename Ticker, typename FormatLine>
bool writePointLines(QIODevice &device, const DataPoint *points, int32_t first, int32_t end,
                     size_t maxLine, Ticker &ticker, FormatLine formatLine) {
    constexpr int32_t linesPerUpdate = 1024;
    if (first >= end)
        return false;
    ChunkWriter out(device, std::max<size_t>(1 << 16, 2 * maxLine));
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

// writePointLines over store records first .. end-1; true (failed) also for
// a range outside the store.
template <typename FormatLine>
bool writeRecordLines(QIODevice &device, const MeasurementStore &store, int32_t first, int32_t end,
                      size_t maxLine, ProgressTicker &ticker, FormatLine formatLine) {
    if (first >= end)
        return false;
    if (first < 0 || end > MeasurementStore::capacity)
        return true;
    return writePointLines(device, store.dataPoints.data(), first, end, maxLine, ticker,
                           formatLine);
}
