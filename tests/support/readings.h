#pragma once

#include "core/datapoint.h"

#include <vector>

// n readings a second apart from 1 January of `year` on (a full store's
// 130000 take two days), every field set, the water running through 0..499.
inline std::vector<DataPoint> secondsApart(int n, int year) {
    std::vector<DataPoint> points(static_cast<size_t>(n));
    for (int i = 0; i < n; ++i)
        points[size_t(i)] = DataPoint{.year = int16_t(year),
                                      .month = 1,
                                      .day = uint8_t(1 + i / 86400),
                                      .hour = uint8_t(i / 3600 % 24),
                                      .minute = uint8_t(i / 60 % 60),
                                      .second = uint8_t(i % 60),
                                      .water = float(i % 500),
                                      .temperature = 40.0f,
                                      .pressure = 1013.0f,
                                      .soot = 0.1f,
                                      .stream = 1,
                                      .adc_meas = 2100.0f,
                                      .adc_ref = 2345.0f};
    return points;
}
