#include "device/listreply.h"

#include "core/numbers.h"
#include "core/store.h"
#include "device/replytext.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <optional>
#include <type_traits>
#include <utility>

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

namespace {

constexpr QByteArrayView kEcho("list\r\n\r\n");

} // namespace

ListReplyReader::ListReplyReader(QChar decimalSeparator, ListLineSink sink)
    : m_sink(std::move(sink)) {
    const bool pointLocale = decimalSeparator == QLatin1Char('.');
    m_from = pointLocale ? ',' : '.';
    m_to = pointLocale ? '.' : ',';
}

void ListReplyReader::feed(QByteArrayView bytes) {
    m_seen += bytes.size();
    if (m_echo == Echo::Open) {
        const qsizetype wanted = std::min(kEcho.size() - m_head.size(), bytes.size());
        m_head.append(bytes.first(wanted));
        bytes = bytes.sliced(wanted);
        if (!kEcho.startsWith(m_head)) {
            m_echo = Echo::Failed;
        } else if (m_head.size() == kEcho.size()) {
            m_echo = Echo::Ok;
            take(m_head);
        }
        if (m_echo != Echo::Open)
            m_head = QByteArray();
    }
    if (m_echo == Echo::Ok)
        take(bytes);
}

bool ListReplyReader::finish() {
    if (m_echo == Echo::Open)
        m_echo = Echo::Failed; // shorter than the echo
    m_head = QByteArray();
    m_line.clear();
    m_line.shrink_to_fit();
    return m_echo == Echo::Ok;
}

// The bytes up to each CR join the unfinished line, LFs removed, letters
// upper-cased and the separator replaced; the CR ends the line.
void ListReplyReader::take(QByteArrayView bytes) {
    const char *p = bytes.data();
    const char *const end = p + bytes.size();
    while (p < end) {
        const void *found = std::memchr(p, '\r', size_t(end - p));
        const char *const stop = found ? static_cast<const char *>(found) : end;
        for (; p < stop && qsizetype(m_line.size()) < kMaxLineBytes; ++p) {
            const char c = *p;
            if (c == '\n')
                continue;
            const char upper = static_cast<unsigned char>(c - 'a') < 26 ? char(c - ('a' - 'A')) : c;
            m_line.push_back(upper == m_from ? m_to : upper);
        }
        if (!found)
            return;
        endLine();
        p = stop + 1;
    }
}

void ListReplyReader::endLine() {
    std::string_view line(m_line);
    while (!line.empty() && line.front() == ' ')
        line.remove_prefix(1);
    while (!line.empty() && line.back() == ' ')
        line.remove_suffix(1);
    if (line.size() >= 21) {
        ++m_lines;
        DataPoint p;
        const bool valid = parseListLine(line, p);
        m_sink(p, valid);
    }
    m_line.clear();
}

bool parseListReply(QByteArrayView reply, QChar decimalSeparator, const ListLineSink &sink,
                    int *lineCount) {
    ListReplyReader reader(decimalSeparator, sink);
    reader.feed(reply);
    const bool echoOk = reader.finish();
    if (lineCount)
        *lineCount = reader.lines();
    return echoOk;
}

void storeListPoint(MeasurementStore &store, ListReplyResult &result, const DataPoint &p,
                    bool valid) {
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
}

ListLineSink listStoreSink(MeasurementStore &store, ListReplyResult &result) {
    return [&store, &result](const DataPoint &p, bool valid) {
        storeListPoint(store, result, p, valid);
    };
}

ListReplyResult applyListReply(QByteArrayView reply, MeasurementStore &store) {
    ListReplyResult result;
    result.echoOk =
        parseListReply(reply, store.decimalSeparator, listStoreSink(store, result), &result.lines);
    return result;
}
