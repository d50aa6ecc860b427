#pragma once

#include <cstdint>

// One reading of the sensor. Date and time are kept as separate small
// integers, exactly as the sensor and the files carry them; every consumer
// (charts, files, duplicate test) works on these six fields.
struct DataPoint {
    int16_t year = 0;
    uint8_t month = 0;
    uint8_t day = 0;
    uint8_t hour = 0;
    uint8_t minute = 0;
    uint8_t second = 0;
    float water = 0.0f;       // ppm, always; per cent is a display choice
    float temperature = 0.0f; // degrees Celsius
    float pressure = 0.0f;    // mBar
    float soot = 0.0f;        // per cent
    int16_t stream = 0;       // oil stream number, 0 when the sensor gave none
    float adc_meas = 0.0f;
    float adc_ref = 0.0f;
};

// The validity test a reading from the sensor must pass before it may enter
// the store. There is deliberately no check of the day against the month.
inline bool dataPoint_isValid(const DataPoint &p) {
    return p.year >= 2000 && p.month >= 1 && p.month <= 12 && p.day >= 1 && p.day <= 31 &&
           p.hour <= 23 && p.minute <= 59 && p.second <= 59;
}
