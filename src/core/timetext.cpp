#include "core/timetext.h"

#include <cstdio>
#include <cstring>

namespace {

// "prefix + decimal text, keep the last `width` characters" on bytes.
void padTo(int value, const char *prefix, int width, char *out) {
    char text[32];
    const int n = std::snprintf(text, sizeof text, "%s%d", prefix, value);
    std::memcpy(out, text + (n - width), size_t(width));
}

} // namespace

void pad4(int value, char out[4]) {
    padTo(value, "000", 4, out);
}
void pad2(int value, char out[2]) {
    padTo(value, "0", 2, out);
}

QString pad4(int value) {
    char out[4];
    pad4(value, out);
    return QString::fromLatin1(out, 4);
}

QString pad2(int value) {
    char out[2];
    pad2(value, out);
    return QString::fromLatin1(out, 2);
}

QString dateText(const DataPoint &p) {
    return pad4(p.year) + QLatin1Char('-') + pad2(p.month) + QLatin1Char('-') + pad2(p.day);
}

QString timeText(const DataPoint &p) {
    return pad2(p.hour) + QLatin1Char(':') + pad2(p.minute) + QLatin1Char(':') + pad2(p.second);
}

QString stampText(const DataPoint &p) {
    return dateText(p) + QLatin1Char(' ') + timeText(p);
}
