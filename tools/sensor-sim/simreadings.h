#pragma once

#include <QByteArray>
#include <QDateTime>

#include <cstdint>
#include <random>

// One reading as the simulated sensor logs it.
struct SimReading {
    QDateTime stamp;
    float water = 0.0f;       // ppm
    float pressure = 0.0f;    // mBar
    float temperature = 0.0f; // degrees Celsius
    float soot = 0.0f;        // per cent
    int stream = 1;
    float adcRef = 0.0f;
    float adcMeas = 0.0f;
};

// Makes plausible readings: water drifting around 150 ppm with noise and a
// rare spike, temperature following a slow daily-like swing, pressure with
// noise, soot creeping up. Seeded, so a test sees the same series each run.
class ReadingGenerator {
public:
    explicit ReadingGenerator(uint32_t seed, int stream = 1);
    SimReading next(const QDateTime &stamp);

private:
    float noise(float sigma);

    std::mt19937 m_rng;
    std::normal_distribution<float> m_normal{0.0f, 1.0f};
    std::uniform_real_distribution<float> m_uniform{0.0f, 1.0f};
    float m_water = 150.0f;
    float m_soot = 0.12f;
    int m_stream;
};

// The reading as one line of the sensor's log, without line end:
// "2024-03-05 14:22:10 WATER 123.4 PRESSURE 1013 TEMPERATURE 45.2 SOOT 0.12
// STREAM 1 ADC REF 2345 ADC MEAS 2100".
QByteArray readingLine(const SimReading &r);
