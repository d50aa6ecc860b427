#include "device/listreply.h"

#include "core/numbers.h"
#include "core/store.h"
#include "device/replytext.h"

#include <array>
#include <bit>
#include <cmath>
#include <optional>
#include <type_traits>

namespace {

// The sensor's whole-number conversion: a plain integer, or a number with
// decimals rounded to the nearest whole (halves to even); anything else, or
// a result outside [lo, hi], fails.
std::optional<int32_t> wholeNumber(std::string_view text, int32_t lo, int32_t hi) {
    if (auto v = parseInteger(text, lo, hi))
        return v;
    const std::optional<float> f = parseSingle(text);
    if (!f)
        return std::nullopt;
    const double rounded = std::nearbyint(double(*f));
    if (rounded < lo || rounded > hi)
        return std::nullopt;
    return int32_t(rounded);
}

bool isListValueChar(char c) {
    return c == '.' || c == ',' || c == '-' || c == ' ' || isDigit(c);
}

enum Key { Water, Pressure, Temperature, Soot, Stream, AdcRef, AdcMeas, KeyCount };
constexpr std::string_view kKeys[KeyCount] = {"WATER",  "PRESSURE", "TEMPERATURE", "SOOT",
                                              "STREAM", "ADC REF",  "ADC MEAS"};

// The first occurrence of every key, found in one pass over the line rather
// than one search per key; npos for a key that is absent.
void findKeys(std::string_view line, size_t (&at)[KeyCount]) {
    static constexpr std::array<uint8_t, 256> startsKey = [] {
        std::array<uint8_t, 256> t{};
        for (int k = 0; k < KeyCount; ++k)
            t[uint8_t(kKeys[k][0])] |= uint8_t(1u << k);
        return t;
    }();
    for (size_t &a : at)
        a = std::string_view::npos;
    unsigned missing = (1u << KeyCount) - 1;
    for (size_t i = 0; i < line.size() && missing != 0; ++i) {
        unsigned candidates = startsKey[uint8_t(line[i])] & missing;
        while (candidates != 0) {
            const int k = std::countr_zero(candidates);
            candidates &= candidates - 1;
            if (line.substr(i).starts_with(kKeys[k])) {
                at[k] = i;
                missing &= ~(1u << k);
            }
        }
    }
}

// The value text after the key found at `at` (empty when the key is absent).
std::string_view valueText(std::string_view line, Key key, size_t at) {
    if (at == std::string_view::npos)
        return {};
    const size_t start = at + kKeys[key].size();
    size_t end = start;
    while (end < line.size() && isListValueChar(line[end]))
        ++end;
    return line.substr(start, end - start);
}

// Stores the stamp field at [pos, pos + len) into `out`; false on failure.
template <typename T> bool stampField(std::string_view line, size_t pos, size_t len, T &out) {
    // Plain digits, the usual case, need no general conversion (and fit
    // the field: at most 4 digits for the year, 2 for the others).
    int32_t digits = 0;
    size_t i = pos;
    for (; i < pos + len && isDigit(line[i]); ++i)
        digits = digits * 10 + (line[i] - '0');
    if (i == pos + len) {
        out = T(digits);
        return true;
    }
    constexpr int32_t lo = std::is_signed_v<T> ? -32768 : 0;
    constexpr int32_t hi = std::is_signed_v<T> ? 32767 : 255;
    const std::optional<int32_t> v = wholeNumber(line.substr(pos, len), lo, hi);
    if (!v)
        return false;
    out = T(*v);
    return true;
}

} // namespace

bool parseListLine(std::string_view line, DataPoint &p) {
    p = DataPoint();
    if (line.size() < 21)
        return false;
    // Columns 1-4, 6-7, 9-10, 12-13, 15-16 and 18-19 of "2024-03-05 14:22:10".
    bool valid = stampField(line, 0, 4, p.year) && stampField(line, 5, 2, p.month) &&
                 stampField(line, 8, 2, p.day) && stampField(line, 11, 2, p.hour) &&
                 stampField(line, 14, 2, p.minute) && stampField(line, 17, 2, p.second) &&
                 dataPoint_isValid(p);

    size_t at[KeyCount];
    findKeys(line, at);
    p.water = str_toSingle(valueText(line, Water, at[Water]));
    p.pressure = str_toSingle(valueText(line, Pressure, at[Pressure]));
    p.temperature = str_toSingle(valueText(line, Temperature, at[Temperature]));
    p.soot = str_toSingle(valueText(line, Soot, at[Soot]));
    if (at[Stream] != std::string_view::npos) {
        // Unlike the other values, a stream that does not convert makes the
        // whole line invalid: a reading must never land in a wrong stream.
        const std::optional<int32_t> s =
            wholeNumber(valueText(line, Stream, at[Stream]), -32768, 32767);
        if (s)
            p.stream = int16_t(*s);
        else
            valid = false;
    }
    p.adc_ref = str_toSingle(valueText(line, AdcRef, at[AdcRef]));
    p.adc_meas = str_toSingle(valueText(line, AdcMeas, at[AdcMeas]));
    return valid;
}

bool parseListReply(QByteArrayView reply, QChar decimalSeparator, const ListLineSink &sink,
                    int *lineCount) {
    if (lineCount)
        *lineCount = 0;
    if (!reply.startsWith(QByteArrayView("list\r\n\r\n")))
        return false;
    const bool pointLocale = decimalSeparator == QLatin1Char('.');
    ReplyLines lines(reply, pointLocale ? ',' : '.', pointLocale ? '.' : ',');
    std::string_view line;
    DataPoint p;
    while (lines.next(line)) {
        if (line.size() < 21)
            continue; // the echoed command and the empty line after it
        if (lineCount)
            ++*lineCount;
        const bool valid = parseListLine(line, p);
        sink(p, valid);
    }
    return true;
}

ListReplyResult applyListReply(QByteArrayView reply, MeasurementStore &store) {
    ListReplyResult result;
    result.echoOk = parseListReply(
        reply, store.decimalSeparator,
        [&](const DataPoint &p, bool valid) {
            if (!valid) {
                ++result.invalid;
                return;
            }
            switch (store.append(p)) {
            case AppendResult::Added:
                ++result.added;
                break;
            case AppendResult::Duplicate:
                ++result.duplicates;
                break;
            case AppendResult::Full:
                ++result.full;
                break;
            case AppendResult::Invalid:
                ++result.invalid;
                break;
            }
        },
        &result.lines);
    return result;
}
