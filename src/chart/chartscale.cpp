#include "chart/chartscale.h"

#include "core/timetext.h"

#include <cmath>
#include <cstdio>
#include <cstring>

int chart_round(double v) {
    if (std::isnan(v))
        return 0;
    constexpr double limit = 1e9;
    if (v > limit)
        return static_cast<int>(limit);
    if (v < -limit)
        return -static_cast<int>(limit);
    // nearbyint follows the current rounding mode, which is to-nearest-even
    // unless someone changed it; the charts never do.
    return static_cast<int>(std::nearbyint(v));
}

float chart_stepCascade(float step) {
    if (!(step > 1.0f))
        return step;
    static constexpr float cascade[] = {1000, 500, 250, 100, 50, 25, 10, 5};
    for (float c : cascade) {
        if (step > c)
            step = static_cast<float>(std::nearbyint(double(step) / c + 0.5)) * c;
    }
    return static_cast<float>(std::nearbyint(double(step) + 0.5));
}

int chart_yLabelDecimals(float y1, float y2) {
    int decimals = 3;
    if (y1 <= -10.0f || y2 >= 10.0f)
        decimals = 2;
    if (y1 <= -100.0f || y2 >= 100.0f)
        decimals = 1;
    if (y1 <= -1000.0f || y2 >= 1000.0f)
        decimals = 0;
    return decimals;
}

QString chart_formatFixed(double v, int decimals) {
    // QString::number never uses the locale, so the separator is always ".".
    return QString::number(v, 'f', decimals);
}

QString chart_infoValueText(float v) {
    // The plain text of a single is its shortest form with seven significant
    // digits, switching to an exponent for very small and large numbers;
    // whether that form shows a decimal point decides the format.
    char plain[32];
    std::snprintf(plain, sizeof plain, "%.7G", double(v));
    const bool hasPoint = std::strchr(plain, '.') != nullptr || std::strchr(plain, ',') != nullptr;
    return chart_formatFixed(v, hasPoint ? 1 : 0);
}

QString chart_dateText(int year, int month, int day) {
    return pad4(year) + QLatin1Char('-') + pad2(month) + QLatin1Char('-') + pad2(day);
}

QString chart_timeText(int hour, int minute, int second) {
    return pad2(hour) + QLatin1Char(':') + pad2(minute) + QLatin1Char(':') + pad2(second);
}
