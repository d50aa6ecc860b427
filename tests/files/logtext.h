#pragma once

// Sensor log lines for the tests, built from the column layout on their own
// (not through the reader's code), with correct or spoiled check numbers.

#include <QByteArray>
#include <QFile>

#include <cstdio>

struct LogValues {
    float water = 150.5f, pressure = 1800.0f;
};

// An "A" (65 characters) or "B" (68, stream 2) line without its line end;
// stamp is "yyyy-mm-dd hh:mm:ss". Temperature, soot and the ADC values read
// 45.25, 0.125, 2345 and 2100. checkOffset spoils the check number.
inline QByteArray fixedLine(char type, const char *stamp, LogValues v = {}, int checkOffset = 0) {
    char buf[128];
    const int n =
        std::snprintf(buf, sizeof buf, "%c %.19s %7.1f %5.0f  45.25   0.125  2345  2100 %s", type,
                      stamp, double(v.water), double(v.pressure), type == 'B' ? " 2 " : "");
    unsigned sum = 0;
    for (int i = 0; i < n; ++i)
        sum += uint8_t(buf[i]);
    std::snprintf(buf + n, sizeof buf - size_t(n), "%02u",
                  (sum % 256 % 100 + unsigned(checkOffset)) % 100);
    return QByteArray(buf);
}

// n "A" lines with CR LF, one a minute from midnight of the given day, the
// water value counting up from 0.
inline QByteArray fixedLines(int n, const char *date = "2024-03-05", int checkOffset = 0) {
    QByteArray text;
    for (int i = 0; i < n; ++i) {
        char stamp[32];
        std::snprintf(stamp, sizeof stamp, "%.10s %02d:%02d:00", date, (i / 60) % 24, i % 60);
        text += fixedLine('A', stamp, {.water = float(i)}, checkOffset) + "\r\n";
    }
    return text;
}

inline bool writeFile(const QString &path, const QByteArray &bytes) {
    QFile f(path);
    return f.open(QIODevice::WriteOnly) && f.write(bytes) == bytes.size();
}
