// Time to merge one "list" reply of 1000 readings into a store that already
// holds 129000 points: the reply reader with the store's duplicate index,
// beside the same reader with the linear duplicate scan the index replaces
// (every stored point compared for every line, hour left out of the key).
// Prints milliseconds; run it from a Release build. Goal: <= 1 ms per reply.
#include "core/store.h"
#include "device/listreply.h"

#include <QByteArray>
#include <QDate>
#include <QElapsedTimer>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

namespace {

constexpr int kStored = 129000;
constexpr int kLines = 1000;

// Point i: one reading a second through the first hour of day i / 3600, so
// all keys (year, month, day, minute, second) differ.
DataPoint pointAt(int i) {
    const QDate d = QDate(2020, 1, 1).addDays(i / 3600);
    DataPoint p;
    p.year = int16_t(d.year());
    p.month = uint8_t(d.month());
    p.day = uint8_t(d.day());
    p.hour = uint8_t(6);
    p.minute = uint8_t(i / 60 % 60);
    p.second = uint8_t(i % 60);
    p.water = float(100 + i % 50);
    return p;
}

QByteArray replyFor(int first, int count) {
    QByteArray r = "list\r\n\r\n";
    char line[160];
    for (int i = first; i < first + count; ++i) {
        const DataPoint p = pointAt(i);
        const int n =
            std::snprintf(line, sizeof line,
                          "%04d-%02d-%02d %02d:%02d:%02d WATER %.1f PRESSURE 1813 "
                          "TEMPERATURE 45.2 SOOT 0.123 STREAM 1 ADC REF 2345 ADC MEAS "
                          "2100\r\n",
                          p.year, p.month, p.day, p.hour, p.minute, p.second, double(p.water));
        r.append(line, n);
    }
    return r;
}

// The reader with the duplicate test done the documented slow way.
int mergeWithLinearScan(const QByteArray &reply, MeasurementStore &store) {
    int added = 0;
    parseListReply(reply, store.decimalSeparator, [&](const DataPoint &p, bool valid) {
        if (!valid || store.dataPoint_count >= MeasurementStore::capacity)
            return;
        bool duplicate = false;
        for (int32_t i = 0; i < store.dataPoint_count; ++i) {
            const DataPoint &s = store.dataPoints[size_t(i)];
            if (s.year == p.year && s.month == p.month && s.day == p.day && s.minute == p.minute &&
                s.second == p.second)
                duplicate = true; // no early exit, like the scan the index replaced
        }
        if (duplicate)
            return;
        store.dataPoints[size_t(store.dataPoint_count++)] = p;
        store.data_changed = true;
        ++added;
    });
    return added;
}

struct Figures {
    double best = 0;
    double median = 0;
};

template <typename Run, typename Reset> Figures measure(int runs, Reset reset, Run run) {
    std::vector<double> ms;
    for (int r = 0; r < runs; ++r) {
        reset();
        QElapsedTimer t;
        t.start();
        run();
        ms.push_back(double(t.nsecsElapsed()) / 1e6);
    }
    std::sort(ms.begin(), ms.end());
    return {ms.front(), ms[ms.size() / 2]};
}

} // namespace

int main() {
    std::vector<DataPoint> base(kStored);
    for (int i = 0; i < kStored; ++i)
        base[size_t(i)] = pointAt(i);
    const QByteArray fresh = replyFor(kStored, kLines);
    const QByteArray known = replyFor(kStored - kLines, kLines);

    auto store = std::make_unique<MeasurementStore>();
    const auto reset = [&] { (void)store->merge(base.data(), kStored, MergeMode::Replace); };
    int added = 0;

    const Figures indexNew =
        measure(50, reset, [&] { added = applyListReply(fresh, *store).added; });
    if (added != kLines)
        std::fprintf(stderr, "unexpected: %d of %d new lines added\n", added, kLines);
    const Figures indexKnown =
        measure(50, reset, [&] { added = applyListReply(known, *store).added; });
    if (added != 0)
        std::fprintf(stderr, "unexpected: %d known lines added\n", added);
    const Figures linearNew =
        measure(5, reset, [&] { added = mergeWithLinearScan(fresh, *store); });
    const Figures linearKnown =
        measure(5, reset, [&] { added = mergeWithLinearScan(known, *store); });

    std::printf("merge of a %d-line \"list\" reply into a store of %d points (ms)\n", kLines,
                kStored);
    std::printf("  %-34s best %8.3f  median %8.3f\n", "duplicate index, all lines new",
                indexNew.best, indexNew.median);
    std::printf("  %-34s best %8.3f  median %8.3f\n", "duplicate index, all lines stored",
                indexKnown.best, indexKnown.median);
    std::printf("  %-34s best %8.3f  median %8.3f\n", "linear scan, all lines new", linearNew.best,
                linearNew.median);
    std::printf("  %-34s best %8.3f  median %8.3f\n", "linear scan, all lines stored",
                linearKnown.best, linearKnown.median);
    std::printf("goal: <= 1 ms with the index (%s)\n",
                indexNew.median <= 1.0 && indexKnown.median <= 1.0 ? "met" : "NOT met");
    return 0;
}
