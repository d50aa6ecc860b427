// The sensor log import must take any bytes without writing outside its
// buffers, and must read the same records however the bytes are split into
// blocks (lines handed over where they lie against lines collected first).
#include "files/datafilescanner.h"
#include "files/logimport.h"
#include "files/loglines.h"

#include "core/store.h"

#include <QBuffer>

#include <cstdlib>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    static MeasurementStore store;
    static LogImport import(store);

    QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    // A small limit and an understated size reach the limit failure too.
    const int32_t limit = size > 0 ? int32_t(data[0]) * 16 : 0;
    (void)import.logFile_import(buffer, MergeMode::Replace, false, int64_t(size / 2), limit);

    constexpr int capacity = 4096;
    static std::vector<DataPoint> whole(capacity), split(capacity);
    LogLineReader ra(int64_t(size), 64), rb(int64_t(size), 64);
    DataFileScanner a(whole.data(), capacity), b(split.data(), capacity);
    a.setLineReader(&ra);
    b.setLineReader(&rb);
    const CalTable empty;
    a.reset(empty, empty);
    b.reset(empty, empty);
    a.scan(bytes.constData(), bytes.size());
    for (qsizetype i = 0; i < bytes.size(); ++i)
        b.scan(bytes.constData() + i, 1);
    if (a.count() != b.count() || a.overflowed() != b.overflowed() || ra.step() != rb.step())
        std::abort();
    for (int i = 0; i < a.count(); ++i) {
        const DataPoint &x = whole[size_t(i)];
        const DataPoint &y = split[size_t(i)];
        if (x.year != y.year || x.month != y.month || x.day != y.day || x.hour != y.hour ||
            x.minute != y.minute || x.second != y.second || !(x.water == y.water) ||
            !(x.pressure == y.pressure) || !(x.temperature == y.temperature) ||
            !(x.soot == y.soot) || !(x.adc_ref == y.adc_ref) || !(x.adc_meas == y.adc_meas) ||
            x.stream != y.stream)
            std::abort();
    }
    return 0;
}
