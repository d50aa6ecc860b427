#include "simreadings.h"

#include <algorithm>
#include <cmath>
#include <numbers>

ReadingGenerator::ReadingGenerator(uint32_t seed, int stream) : m_rng(seed), m_stream(stream) {}

float ReadingGenerator::noise(float sigma) {
    return sigma * m_normal(m_rng);
}

SimReading ReadingGenerator::next(const QDateTime &stamp) {
    SimReading r;
    r.stamp = stamp;
    // Mean-reverting walk: water wanders but comes back towards 150 ppm.
    m_water = std::max(0.0f, m_water + 0.05f * (150.0f - m_water) + noise(3.0f));
    r.water = m_water;
    if (m_uniform(m_rng) < 0.01f)
        r.water *= 3.0f + 3.0f * m_uniform(m_rng); // a free-water slug passes
    const double hours = double(stamp.time().msecsSinceStartOfDay()) / 3.6e6;
    r.temperature =
        float(45.0 + 5.0 * std::sin(2.0 * std::numbers::pi * hours / 24.0)) + noise(0.2f);
    r.pressure = 1800.0f + noise(15.0f);
    m_soot = std::max(0.0f, m_soot + 0.00001f + noise(0.0005f));
    r.soot = m_soot;
    r.stream = m_stream;
    r.adcRef = 2345.0f + noise(3.0f);
    r.adcMeas = r.adcRef - 0.8f * r.water + noise(3.0f);
    return r;
}

QByteArray readingLine(const SimReading &r) {
    return r.stamp.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")).toLatin1() + " WATER " +
           QByteArray::number(double(r.water), 'f', 1) + " PRESSURE " +
           QByteArray::number(double(r.pressure), 'f', 0) + " TEMPERATURE " +
           QByteArray::number(double(r.temperature), 'f', 1) + " SOOT " +
           QByteArray::number(double(r.soot), 'f', 3) + " STREAM " + QByteArray::number(r.stream) +
           " ADC REF " + QByteArray::number(double(r.adcRef), 'f', 0) + " ADC MEAS " +
           QByteArray::number(double(r.adcMeas), 'f', 0);
}
