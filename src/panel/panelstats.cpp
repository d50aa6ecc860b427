#include "panel/panelstats.h"

#include "core/store.h"
#include "core/timetext.h"
#include "files/textformat.h"

#include <algorithm>

namespace panel {

QString countText(int32_t count) {
    if (count >= MeasurementStore::capacity)
        return QStringLiteral("DATA POINT MEMORY FULL!");
    return QString::number(count) + (count == 1 ? QLatin1String(" data point in memory")
                                                : QLatin1String(" data points in memory"));
}

namespace {

QString stamp(const DataPoint &p) {
    return pad4(p.year) + QLatin1Char('-') + pad2(p.month) + QLatin1Char('-') + pad2(p.day) +
           QLatin1Char(' ') + pad2(p.hour) + QLatin1Char(':') + pad2(p.minute) + QLatin1Char(':') +
           pad2(p.second);
}

} // namespace

QString spanText(const MeasurementStore &store) {
    const int32_t count = store.dataPoint_count;
    if (count <= 0)
        return QString();
    const int32_t last = count < MeasurementStore::capacity ? count : MeasurementStore::capacity;
    return stamp(store.dataPoints[0]) + QLatin1String("  -  ") +
           stamp(store.dataPoints[size_t(last - 1)]);
}

QString alarmText(const MeasurementStore &store) {
    const int32_t count = std::min(store.dataPoint_count, MeasurementStore::capacity);
    if (count <= 0 || !(store.alarmThreshold >= 0.0f))
        return QString();
    const DataPoint &newest = store.dataPoints[size_t(count - 1)];
    if (!(newest.water > store.alarmThreshold))
        return QString();
    return QLatin1String("Water above alarm limit: ") +
           QString::fromLatin1(textformat::formatFixed(newest.water, 0, '.')) +
           QLatin1String(" ppm at ") + stamp(newest);
}

int16_t portFromIndex(int index) {
    return int16_t(index + 1);
}

QString portEntry(int number) {
    return QLatin1String("COM ") + QString::number(number);
}

} // namespace panel
