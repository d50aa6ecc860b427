#pragma once

#include <QChar>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

// Number parsing shared by the sensor protocol and the file readers. Every
// number is read after its decimal separator is normalised, so "12,5" and
// "12.5" both read as 12.5 whatever the locale; a text that does not convert
// yields 0. Parsing itself is locale-independent and allocation-free.

// Parses a 32-bit float from text with "," or "." as decimal separator.
// Leading and trailing blanks are allowed; anything else that is not part
// of the number makes the result 0. Every reader of sensor replies and files
// uses this one: short plain decimals ("123.4", "-0,125", ".5") take a quick
// exact path, everything else the full conversion of parseSingle().
inline float str_toSingle(std::string_view text);
float str_toSingle(QStringView text);

// The quick path of str_toSingle(), for readers that scan their own fields:
// reads the short plain decimal at the start of [begin, end), a sign, digits
// and at most one "," or "." ("123.4", "-0,125", ".5", "5."), up to the
// first character that cannot continue it, and returns where it stops; null
// when no digit is there or the number has more than seven significant
// digits, ten decimals or nineteen digits. When it stops at `end`,
// str_toSingle() of [begin, end) is the same float, bit for bit.
inline const char *readPlainDecimal(const char *begin, const char *end, float &value);

// Strict parse of the whole text (blanks around it allowed): nothing on
// failure. This is the full conversion; str_toSingle() gives the same float
// bit for bit, with failures read as 0.
std::optional<float> parseSingle(std::string_view text);

// Whole-number parse (optional sign, digits, blanks around) into the range
// [lo, hi]; nothing when the text is not such a number or out of range.
std::optional<int32_t> parseInteger(std::string_view text, int32_t lo, int32_t hi);
std::optional<int32_t> parseInteger(QStringView text, int32_t lo, int32_t hi);

// The leading digits of the text as a number, 0 when there are none: the
// plain numeric conversion used for date and time fields of data files.
int32_t leadingNumber(std::string_view text);

// The system's decimal separator: 2.5 (computed as 5 / 2) formatted with
// one decimal in the system locale; "," when the result holds one.
QChar detectDecimalSeparator();

inline const char *readPlainDecimal(const char *begin, const char *end, float &value) {
    // Seven significant digits as a whole number (below 2^24) and a power of
    // ten up to 1e10 (5^10 < 2^24) are both exact floats, so one IEEE
    // division rounds exactly as the full conversion does.
    static constexpr float powersOfTen[] = {1e0f, 1e1f, 1e2f, 1e3f, 1e4f, 1e5f,
                                            1e6f, 1e7f, 1e8f, 1e9f, 1e10f};
    const auto digit = [](char c) { return uint32_t(uint8_t(c)) - uint32_t('0'); };
    const char *p = begin;
    const bool negative = p != end && *p == '-';
    if (p != end && (*p == '-' || *p == '+'))
        ++p;
    uint64_t mantissa = 0;
    const char *digits = p;
    for (; p != end && digit(*p) < 10; ++p)
        mantissa = mantissa * 10 + digit(*p);
    std::ptrdiff_t count = p - digits;
    std::ptrdiff_t decimals = 0;
    if (p != end && (*p == '.' || *p == ',')) {
        const char *fraction = ++p;
        for (; p != end && digit(*p) < 10; ++p)
            mantissa = mantissa * 10 + digit(*p);
        decimals = p - fraction;
        count += decimals;
    }
    // At most 19 digits keep the whole number exact in 64 bits (and the
    // number within the 64 characters the full conversion takes).
    if (count == 0 || count > 19 || mantissa >= 10000000 || decimals > 10)
        return nullptr;
    const float whole = float(int32_t(mantissa));
    const float v = decimals > 0 ? whole / powersOfTen[decimals] : whole;
    value = negative ? -v : v;
    return p;
}

inline float str_toSingle(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t'))
        text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t'))
        text.remove_suffix(1);
    float value = 0.0f;
    const char *end = text.data() + text.size();
    if (!text.empty() && readPlainDecimal(text.data(), end, value) == end)
        return value;
    return parseSingle(text).value_or(0.0f);
}
