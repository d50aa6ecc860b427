#pragma once

// The store the golden files tests/data/files/small.txt and small.csv were
// written by hand for, and file helpers.

#include "core/store.h"

#include <QFile>

inline void fillSmallStore(MeasurementStore &store) {
    store.alarmThreshold = 850.0f;
    store.oilName = QStringLiteral("Turbine oil T46");
    store.calSource.count = 2;
    store.calSource.pairs[0] = {0.125f, 150.0f};
    store.calSource.pairs[1] = {0.25f, 300.0f};
    store.calTable.count = 1;
    store.calTable.pairs[0] = {1.5f, 2000.0f};
    // year, month, day, hour, minute, second, water, temperature, pressure,
    // soot, stream, adc_meas, adc_ref
    const DataPoint points[] = {
        {2024, 3, 7, 9, 5, 0, 123, 45.1f, 1013.25f, 0.35f, 2, 28790, 31245},
        {2024, 3, 7, 9, 5, 4, 1234.6f, -5.125f, 999.999f, 0, 0, 2.5f, 0.5f},
        {999, 12, 31, 23, 59, 59, 0.4f, -0.004f, 0.004f, 100, 6, 1e6f, 65535},
    };
    (void)store.merge(points, 3, MergeMode::Replace);
    store.data_changed = true;
}

inline QByteArray fileBytes(const QString &path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

inline QString testData(const char *name) {
    return QStringLiteral(NAKOS_TEST_DATA "/files/") + QLatin1String(name);
}
