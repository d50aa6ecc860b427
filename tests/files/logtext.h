#pragma once

// Sensor log lines for the tests, built from the column layout on their own
// (not through the reader's code), with correct or spoiled check numbers.

#include <QByteArray>

#include <cstdio>

struct LogValues {
    float water = 150.5f;
    float pressure = 1800.0f;
    float temperature = 45.25f;
    float soot = 0.125f;
    float adcRef = 2345.0f;
    float adcMeas = 2100.0f;
    int stream = 2; // "B" lines only
};

// An "A" (65 characters) or "B" (68) line without its line end; stamp is
// "yyyy-mm-dd hh:mm:ss". checkOffset spoils the check number.
inline QByteArray fixedLine(char type, const char *stamp, const LogValues &v = {},
                            int checkOffset = 0) {
    char buf[128];
    int n = std::snprintf(buf, sizeof buf, "%c %.19s %7.1f %5.0f %6.2f %7.3f %5.0f %5.0f ", type,
                          stamp, double(v.water), double(v.pressure), double(v.temperature),
                          double(v.soot), double(v.adcRef), double(v.adcMeas));
    if (type == 'B')
        n += std::snprintf(buf + n, sizeof buf - size_t(n), "%2d ", v.stream);
    unsigned sum = 0;
    for (int i = 0; i < n; ++i)
        sum = (sum + uint8_t(buf[i])) % 256;
    std::snprintf(buf + n, sizeof buf - size_t(n), "%02u",
                  (sum % 100 + unsigned(checkOffset)) % 100);
    return QByteArray(buf);
}

// n "A" lines with CR LF, one a minute from midnight of the given day.
inline QByteArray fixedLines(int n, const char *date = "2024-03-05", int checkOffset = 0) {
    QByteArray text;
    for (int i = 0; i < n; ++i) {
        char stamp[32];
        std::snprintf(stamp, sizeof stamp, "%.10s %02d:%02d:00", date, (i / 60) % 24, i % 60);
        LogValues v;
        v.water = float(i);
        text += fixedLine('A', stamp, v, checkOffset) + "\r\n";
    }
    return text;
}
