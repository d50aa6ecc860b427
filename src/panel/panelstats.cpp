#include "panel/panelstats.h"

#include "core/store.h"
#include "core/timetext.h"
#include "device/linkhealth.h"
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

QString portTip(const QString &device, const QString &stableName) {
    if (device.isEmpty())
        return QStringLiteral("no such port");
    if (stableName.isEmpty() || stableName == device)
        return device;
    return stableName + QLatin1String(" (") + device + QLatin1Char(')');
}

QString healthText(const LinkHealth &health, const QDateTime &now) {
    QString age = QStringLiteral("no reading yet");
    if (health.lastReading.isValid()) {
        const qint64 s = std::max<qint64>(0, health.lastReading.secsTo(now));
        age = QLatin1String("last reading ") +
              (s < 120    ? QString::number(s) + QLatin1String(" s")
               : s < 7200 ? QString::number(s / 60) + QLatin1String(" min")
                          : QString::number(s / 3600) + QLatin1String(" h")) +
              QLatin1String(" ago");
    }
    return QStringLiteral("polls with readings: %1\npolls without port: %2\n"
                          "replies without echo: %3\nbytes received: %4\n")
               .arg(health.pollsWithReadings)
               .arg(health.pollsWithoutPort)
               .arg(health.repliesWithoutEcho)
               .arg(health.bytesReceived) +
           age;
}

} // namespace panel
