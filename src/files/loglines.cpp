#include "files/loglines.h"

#include "files/textformat.h"

#include "core/numbers.h"

#include <string_view>

namespace {

inline bool isDigit(char c) {
    return uint8_t(c - '0') < 10;
}

inline bool isLetter(char c) {
    return uint8_t((c | 0x20) - 'a') < 26;
}

inline bool isNumberChar(char c) {
    return isDigit(c) || c == '-' || c == ',' || c == '.';
}

inline bool isBlank(char c) {
    return c == ' ' || c == '\t';
}

inline const char *skipBlanks(const char *p, const char *end) {
    while (p != end && isBlank(*p))
        ++p;
    return p;
}

// n / d rounded to the nearest whole number, halves to even (n >= 0, d > 0).
int64_t roundHalfEven(int64_t n, int64_t d) {
    const int64_t q = n / d;
    const int64_t twice = 2 * (n % d);
    return q + (twice > d || (twice == d && (q & 1)));
}

// The plain numeric conversion of a fixed column: blanks in front are
// skipped, then the leading digits count.
int32_t plainNumber(const char *p, int width) {
    int i = 0;
    while (i < width && isBlank(p[i]))
        ++i;
    return leadingNumber(std::string_view(p + i, size_t(width - i)));
}

// The store's number parse of a fixed column (blanks around are allowed).
float columnNumber(const char *p, int width) {
    return str_toSingle(std::string_view(p, size_t(width)));
}

bool keywordIs(const char *k, int64_t length, std::string_view upper) {
    if (length != int64_t(upper.size()))
        return false;
    for (size_t i = 0; i < upper.size(); ++i) {
        if ((k[i] & ~0x20) != upper[i])
            return false;
    }
    return true;
}

} // namespace

LogLineReader::LogLineReader(int64_t fileSize, int32_t limit)
    : m_fileSize(fileSize), m_limit(limit) {}

LogLineReader::LogLineReader(LogFormat format) : m_decided(true), m_format(format) {}

LogFormat LogLineReader::formatOf(char c) {
    switch (c) {
    case ' ':
        return LogFormat::Keyword;
    case 'A':
        return LogFormat::FixedA;
    case 'B':
        return LogFormat::FixedB;
    default:
        return LogFormat::Unknown;
    }
}

int LogLineReader::bytesPerRecord(LogFormat format) {
    switch (format) {
    case LogFormat::Keyword:
        return 114;
    case LogFormat::FixedA:
        return 67;
    case LogFormat::FixedB:
        return 70;
    case LogFormat::Unknown:
        break;
    }
    return 0;
}

int64_t LogLineReader::recordEstimate(LogFormat format, int64_t fileSize) {
    const int bytes = bytesPerRecord(format);
    return bytes > 0 && fileSize > 0 ? roundHalfEven(fileSize, bytes) : 0;
}

int16_t LogLineReader::thinningStep(int64_t estimate, int32_t limit) {
    if (limit <= 0)
        return 1;
    const int64_t step = roundHalfEven(estimate + limit, limit);
    return int16_t(step > INT16_MAX ? INT16_MAX : step);
}

bool LogLineReader::readLine(const char *line, const char *end, DataPoint &point) {
    if (*line == '#')
        return false; // a comment is no data line: not counted, never thinned
    if (!m_decided) {
        m_decided = true;
        m_format = formatOf(*line);
        m_step = thinningStep(recordEstimate(m_format, m_fileSize), m_limit);
    }
    if (++m_dataLines % m_step != 0)
        return false;
    switch (m_format) {
    case LogFormat::Keyword:
        return readKeywords(line, end, point);
    case LogFormat::FixedA:
    case LogFormat::FixedB:
        return readFixed(line, end, m_format, point);
    case LogFormat::Unknown:
        break;
    }
    return false;
}

bool LogLineReader::readFixed(const char *line, const char *end, LogFormat format,
                              DataPoint &point) {
    const bool b = format == LogFormat::FixedB;
    // Columns are counted from 1 in the layout; line[c - 1] is column c.
    const int checkColumn = b ? 67 : 64;
    if (end - line != checkColumn + 1 || line[0] != (b ? 'B' : 'A'))
        return false;
    uint8_t sum = 0;
    for (int i = 0; i < checkColumn - 1; ++i)
        sum = uint8_t(sum + uint8_t(line[i]));
    if (sum % 100 != plainNumber(line + checkColumn - 1, 2))
        return false;
    const auto column = [line](int c) { return line + c - 1; };
    point.year = int16_t(plainNumber(column(3), 4));
    point.month = uint8_t(plainNumber(column(8), 2));
    point.day = uint8_t(plainNumber(column(11), 2));
    point.hour = uint8_t(plainNumber(column(14), 2));
    point.minute = uint8_t(plainNumber(column(17), 2));
    point.second = uint8_t(plainNumber(column(20), 2));
    point.water = columnNumber(column(23), 7);
    point.pressure = columnNumber(column(31), 5);
    point.temperature = columnNumber(column(37), 6);
    point.soot = columnNumber(column(44), 7);
    point.adc_ref = columnNumber(column(52), 5);
    point.adc_meas = columnNumber(column(58), 5);
    point.stream = b ? int16_t(plainNumber(column(64), 2)) : int16_t(1);
    return true;
}

bool LogLineReader::readKeywords(const char *p, const char *end, DataPoint &point) {
    // The character in front of each date and time field (none before the
    // year, and only blanks between the day and the hour).
    static constexpr char separator[6] = {0, '-', '-', 0, ':', ':'};
    int64_t stamp[6];
    for (int f = 0; f < 6; ++f) {
        p = skipBlanks(p, end);
        if (separator[f]) {
            if (p == end || *p != separator[f])
                return false;
            p = skipBlanks(p + 1, end);
        }
        if (p == end || !isDigit(*p))
            return false;
        int64_t v = 0;
        while (p != end && isDigit(*p)) {
            v = v * 10 + (*p++ - '0');
            if (v > INT16_MAX)
                v = INT16_MAX; // held at the largest value, as the native reader does
        }
        stamp[f] = v;
    }
    DataPoint r;
    r.year = int16_t(stamp[0]);
    r.month = uint8_t(stamp[1] > 255 ? 255 : stamp[1]);
    r.day = uint8_t(stamp[2] > 255 ? 255 : stamp[2]);
    r.hour = uint8_t(stamp[3] > 255 ? 255 : stamp[3]);
    r.minute = uint8_t(stamp[4] > 255 ? 255 : stamp[4]);
    r.second = uint8_t(stamp[5] > 255 ? 255 : stamp[5]);
    for (;;) {
        p = skipBlanks(p, end);
        if (p == end || *p == '#')
            break;
        if (!isLetter(*p))
            return false;
        const char *keyword = p;
        while (p != end && isLetter(*p))
            ++p;
        const int64_t keywordLength = p - keyword;
        p = skipBlanks(p, end);
        if (p == end || !isNumberChar(*p))
            return false;
        const char *number = p;
        while (p != end && isNumberChar(*p))
            ++p;
        // Longer than 64 characters reads 0, as in the native reader.
        const float value = str_toSingle(std::string_view(number, size_t(p - number)));
        if (keywordIs(keyword, keywordLength, "WATER"))
            r.water = value;
        else if (keywordIs(keyword, keywordLength, "PRESSURE"))
            r.pressure = value;
        else if (keywordIs(keyword, keywordLength, "TEMPERATURE"))
            r.temperature = value;
        else if (keywordIs(keyword, keywordLength, "SOOT"))
            r.soot = value;
        else if (keywordIs(keyword, keywordLength, "ADCREF"))
            r.adc_ref = value;
        else if (keywordIs(keyword, keywordLength, "ADCMEAS"))
            r.adc_meas = value;
        else if (keywordIs(keyword, keywordLength, "STREAM"))
            r.stream = textformat::streamNumber(value);
    }
    point = r;
    return true;
}
