#include "core/numbers.h"

#include <QLocale>

#include <charconv>
#include <cmath>

namespace {

bool isBlank(char c) {
    return c == ' ' || c == '\t';
}

std::string_view trimmed(std::string_view s) {
    while (!s.empty() && isBlank(s.front()))
        s.remove_prefix(1);
    while (!s.empty() && isBlank(s.back()))
        s.remove_suffix(1);
    return s;
}

} // namespace

std::optional<float> parseSingle(std::string_view text) {
    text = trimmed(text);
    if (text.empty() || text.size() > 64)
        return std::nullopt;
    char buf[65];
    size_t n = 0;
    size_t i = 0;
    bool negative = false;
    if (text[0] == '+' || text[0] == '-') {
        negative = text[0] == '-';
        i = 1;
    }
    bool digits = false;
    for (; i < text.size(); ++i) {
        char c = text[i];
        if (c == ',')
            c = '.';
        if (c >= '0' && c <= '9')
            digits = true;
        else if (c != '.' && c != 'e' && c != 'E' && c != '+' && c != '-')
            return std::nullopt; // no "inf", "nan", hex or junk
        buf[n++] = c;
    }
    if (!digits || buf[0] == '+' || buf[0] == '-')
        return std::nullopt;
    float value = 0.0f;
    const auto res = std::from_chars(buf, buf + n, value, std::chars_format::general);
    if (res.ec != std::errc() || res.ptr != buf + n || !std::isfinite(value))
        return std::nullopt;
    return negative ? -value : value;
}

float str_toSingle(QStringView text) {
    char buf[65];
    if (text.size() > 64)
        return 0.0f;
    size_t n = 0;
    for (QChar c : text) {
        if (c.unicode() > 0x7f)
            return 0.0f;
        buf[n++] = char(c.unicode());
    }
    return str_toSingle(std::string_view(buf, n));
}

std::optional<int32_t> parseInteger(std::string_view text, int32_t lo, int32_t hi) {
    text = trimmed(text);
    if (!text.empty() && text.front() == '+')
        text.remove_prefix(1);
    if (text.empty())
        return std::nullopt;
    int64_t value = 0;
    const auto res = std::from_chars(text.data(), text.data() + text.size(), value);
    if (res.ec != std::errc() || res.ptr != text.data() + text.size())
        return std::nullopt;
    if (value < lo || value > hi)
        return std::nullopt;
    return int32_t(value);
}

std::optional<int32_t> parseInteger(QStringView text, int32_t lo, int32_t hi) {
    char buf[32];
    if (text.size() > 31)
        return std::nullopt;
    size_t n = 0;
    for (QChar c : text) {
        if (c.unicode() > 0x7f)
            return std::nullopt;
        buf[n++] = char(c.unicode());
    }
    return parseInteger(std::string_view(buf, n), lo, hi);
}

int32_t leadingNumber(std::string_view text) {
    int64_t value = 0;
    for (char c : text) {
        if (c < '0' || c > '9')
            break;
        value = value * 10 + (c - '0');
        if (value > INT32_MAX)
            return INT32_MAX;
    }
    return int32_t(value);
}

QChar detectDecimalSeparator() {
    const float half = 5.0f / 2.0f;
    const QString text = QLocale::system().toString(double(half), 'f', 1);
    return text.contains(QLatin1Char(',')) ? QLatin1Char(',') : QLatin1Char('.');
}
