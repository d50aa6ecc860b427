#include "device/listreply.h"

#include "core/numbers.h"
#include "core/store.h"
#include "device/replytext.h"

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

// Stores the stamp field at [pos, pos + len) into `out`; false on failure.
template <typename T> bool stampField(std::string_view line, size_t pos, size_t len, T &out) {
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

    bool found = false;
    p.water = str_toSingle(valueAfterKey(line, "WATER", isListValueChar, found));
    p.pressure = str_toSingle(valueAfterKey(line, "PRESSURE", isListValueChar, found));
    p.temperature = str_toSingle(valueAfterKey(line, "TEMPERATURE", isListValueChar, found));
    p.soot = str_toSingle(valueAfterKey(line, "SOOT", isListValueChar, found));
    const std::string_view stream = valueAfterKey(line, "STREAM", isListValueChar, found);
    if (found) {
        // Unlike the other values, a stream that does not convert makes the
        // whole line invalid: a reading must never land in a wrong stream.
        const std::optional<int32_t> s = wholeNumber(stream, -32768, 32767);
        if (s)
            p.stream = int16_t(*s);
        else
            valid = false;
    }
    p.adc_ref = str_toSingle(valueAfterKey(line, "ADC REF", isListValueChar, found));
    p.adc_meas = str_toSingle(valueAfterKey(line, "ADC MEAS", isListValueChar, found));
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
