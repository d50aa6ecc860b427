// The native data file reader must take any bytes without writing outside
// its buffers, and must read the same records however the bytes are split
// into blocks (the whole-line fast path against the per-field machine).
#include "files/datafile.h"
#include "files/datafilescanner.h"

#include "core/store.h"

#include <QBuffer>

#include <cstdlib>
#include <cstring>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    static MeasurementStore store;
    static DataFile file(store);

    QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    (void)file.dataFile_load(buffer, MergeMode::Append, false);
    if (store.dataPoint_count > MeasurementStore::capacity / 2)
        store.clear();

    constexpr int capacity = 4096;
    static std::vector<DataPoint> whole(capacity), split(capacity);
    DataFileScanner a(whole.data(), capacity), b(split.data(), capacity);
    const CalTable empty;
    a.reset(empty, empty);
    b.reset(empty, empty);
    a.scan(bytes.constData(), bytes.size());
    for (qsizetype i = 0; i < bytes.size(); ++i)
        b.scan(bytes.constData() + i, 1);
    if (a.count() != b.count() || a.overflowed() != b.overflowed() ||
        a.calSource.count != b.calSource.count || a.calTable.count != b.calTable.count)
        std::abort();
    for (int i = 0; i < a.count(); ++i) {
        // Compare field by field: padding bytes of the copies are not data.
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
