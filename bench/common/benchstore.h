#pragma once

#include "core/store.h"

#include <random>

// Fills the first `count` entries of a store with readings 4 s apart and
// random values over each quantity's usual range: the worst case for the
// charts and a realistic spread of digits for the files.
inline void fillBenchStore(MeasurementStore &store, int32_t count, unsigned seed) {
    std::mt19937 rng(seed);
    std::uniform_real_distribution<float> water(0.0f, 2000.0f);
    std::uniform_real_distribution<float> pressure(900.0f, 1100.0f);
    std::uniform_real_distribution<float> temperature(20.0f, 90.0f);
    std::uniform_real_distribution<float> soot(0.0f, 5.0f);
    std::uniform_real_distribution<float> adc(20000.0f, 40000.0f);
    for (int32_t i = 0; i < count; ++i) {
        DataPoint &p = store.dataPoints[size_t(i)];
        const int s = i * 4;
        p.year = int16_t(2024);
        p.month = uint8_t(1 + (s / 2592000) % 12);
        p.day = uint8_t(1 + (s / 86400) % 28);
        p.hour = uint8_t((s / 3600) % 24);
        p.minute = uint8_t((s / 60) % 60);
        p.second = uint8_t(s % 60);
        p.water = water(rng);
        p.pressure = pressure(rng);
        p.temperature = temperature(rng);
        p.soot = soot(rng);
        p.adc_ref = adc(rng);
        p.adc_meas = adc(rng);
        p.stream = int16_t(1 + i % 6);
    }
    store.dataPoint_count = count;
    store.reindex();
    store.oilName = QStringLiteral("Bench oil");
    store.alarmThreshold = 500.0f;
}
