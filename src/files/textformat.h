#pragma once

#include "core/datapoint.h"

#include <QByteArray>

#include <cmath>
#include <cstdint>
#include <cstring>

// Number and time stamp text for the file writers and the reader, on plain
// bytes and without allocation, so the per-field work of a 130000-line file
// stays a few dozen nanoseconds. The results equal the slower general
// helpers of core (pad4/pad2) for every input; numbers are read with
// str_toSingle(), which has its own quick path.
namespace textformat {

// Longest text formatFixed() writes (a float's largest value with five
// decimals needs 46).
constexpr int maxFixedLength = 64;

// The value rounded half away from zero to `decimals` places (0 to 5), with
// `point` as decimal separator and no sign on a result of zero: the "0",
// "0.00" and "0.00000" patterns of the files. Returns the length written.
int formatFixed(float value, int decimals, char point, char *out);
QByteArray formatFixed(float value, int decimals, char point);

// formatFixed() with the decimals known at compile time, inline for the
// per-line loops of the writers.
template <int Decimals> int formatFixed(float value, char point, char *out);

// A stream number read as a number: rounded to the nearest whole number
// (halves to even) and held within the 16-bit range.
inline int16_t streamNumber(float v) {
    const float r = std::nearbyint(v);
    if (r <= -32768.0f)
        return -32768;
    if (r >= 32767.0f)
        return 32767;
    return int16_t(r);
}

namespace detail {
extern const char digitPairs[201];
constexpr uint32_t powersOfTen[] = {1, 10, 100, 1000, 10000, 100000};
int formatFixedSlow(float value, int decimals, char point, char *out);
void negativeYear(int year, char *out);

// Writes exactly `count` digits of v ending before `end` (leading zeros).
template <typename U> inline void digitsBackward(U v, char *end, int count) {
    while (count >= 2) {
        end -= 2;
        const unsigned pair = unsigned(v % 100);
        end[0] = digitPairs[2 * pair];
        end[1] = digitPairs[2 * pair + 1];
        v /= 100;
        count -= 2;
    }
    if (count == 1)
        end[-1] = char('0' + v % 10);
}

template <typename U> inline int digitCount(U v) {
    int n = 1;
    while (v >= 10000) {
        v /= 10000;
        n += 4;
    }
    return n + (v >= 10) + (v >= 100) + (v >= 1000);
}

// Sign, whole part, point and `decimals` digits of the rounded magnitude u.
template <int Decimals, typename U>
inline int writeScaled(U u, bool negative, char point, char *out) {
    constexpr U scale = U(powersOfTen[Decimals]);
    char *o = out;
    if (negative)
        *o++ = '-';
    const U whole = u / scale;
    const int n = digitCount(whole);
    digitsBackward(whole, o + n, n);
    o += n;
    if constexpr (Decimals > 0) {
        *o++ = point;
        digitsBackward(U(u % scale), o + Decimals, Decimals);
        o += Decimals;
    }
    return int(o - out);
}
} // namespace detail

template <int Decimals> inline int formatFixed(float value, char point, char *out) {
    static_assert(Decimals >= 0 && Decimals <= 5);
    constexpr uint32_t scale = detail::powersOfTen[Decimals];
    // A float times a power of ten up to 1e5 is exact in a double, so the
    // rounding decides on the true value, as the pattern formatter did;
    // beyond 2^53 (and for inf and nan) the slow path takes over.
    const double scaled = double(value) * scale;
    const double magnitude = scaled < 0 ? -scaled : scaled;
    if (!(magnitude < 9007199254740992.0))
        return detail::formatFixedSlow(value, Decimals, point, out);
    // Half away from zero. Adding 0.5 is exact: the scaled value has at most
    // 36 significant bits, so the sum never rounds, and no value just below
    // one half comes within a double's reach of it.
    const uint64_t u = uint64_t(magnitude + 0.5);
    const bool negative = scaled < 0 && u != 0;
    // 32-bit arithmetic for the values the files hold; it is cheaper.
    if (u <= UINT32_MAX)
        return detail::writeScaled<Decimals>(uint32_t(u), negative, point, out);
    return detail::writeScaled<Decimals>(u, negative, point, out);
}

// "yyyy-mm-dd" (10 bytes), the year padded as pad4 pads it.
inline void writeDate(const DataPoint &p, char *out) {
    using detail::digitPairs;
    if (p.year >= 0) {
        const unsigned y = unsigned(p.year) % 10000;
        std::memcpy(out, digitPairs + 2 * (y / 100), 2);
        std::memcpy(out + 2, digitPairs + 2 * (y % 100), 2);
    } else {
        detail::negativeYear(p.year, out);
    }
    out[4] = '-';
    std::memcpy(out + 5, digitPairs + 2 * (p.month % 100u), 2);
    out[7] = '-';
    std::memcpy(out + 8, digitPairs + 2 * (p.day % 100u), 2);
}

// "hh:mm:ss" (8 bytes).
inline void writeTime(const DataPoint &p, char *out) {
    using detail::digitPairs;
    std::memcpy(out, digitPairs + 2 * (p.hour % 100u), 2);
    out[2] = ':';
    std::memcpy(out + 3, digitPairs + 2 * (p.minute % 100u), 2);
    out[5] = ':';
    std::memcpy(out + 6, digitPairs + 2 * (p.second % 100u), 2);
}

} // namespace textformat
