#include "files/datafilescanner.h"

#include "files/progressticker.h"
#include "files/textformat.h"

#include "core/numbers.h"

#include <QIODevice>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

constexpr char CR = '\r';
constexpr char LF = '\n';
constexpr char TAB = '\t';

bool isBlank(char c) {
    return c == ' ' || c == '\t';
}

QByteArrayView trimmedBlanks(QByteArrayView v) {
    while (!v.isEmpty() && isBlank(v.front()))
        v = v.sliced(1);
    while (!v.isEmpty() && isBlank(v.back()))
        v.chop(1);
    return v;
}

float toFloat(QByteArrayView v) {
    return str_toSingle(std::string_view(v.data(), size_t(v.size())));
}

// Date and time fields hold digits only; larger values than the field can
// take are clamped rather than wrapped.
template <typename T> T clampTo(int64_t v, int64_t hi) {
    return T(v > hi ? hi : v);
}

// Terminator of each date and time field.
constexpr char dateTimeEnd[6] = {'-', '-', TAB, ':', ':', TAB};

inline bool isDigit(char c) {
    return uint8_t(c - '0') < 10;
}

// The line end the fast line parser works up to: the first CR or LF within
// a short window, or null (a long line, or one running past the block).
inline const char *lineEndWithin(const char *p, const char *end) {
    constexpr int64_t window = 256;
    const char *limit = end - p > window ? p + window : end;
    const auto *cr = static_cast<const char *>(std::memchr(p, CR, size_t(limit - p)));
    if (cr)
        limit = cr;
    const auto *lf = static_cast<const char *>(std::memchr(p, LF, size_t(limit - p)));
    return lf ? lf : cr;
}

inline bool twoDigits(const char *p, uint8_t &out) {
    if (!isDigit(p[0]) || !isDigit(p[1]))
        return false;
    out = uint8_t((p[0] - '0') * 10 + (p[1] - '0'));
    return true;
}

inline bool isNumberChar(char c) {
    return isDigit(c) || c == '-' || c == ',' || c == '.';
}

// A number field ended by `terminator`, read as the per-field machine reads
// it: the characters of a number, then str_toSingle. The usual plain
// decimal is read in one pass ("+" is no character of a number here); no
// bounds checks beyond `eol`, as the line ends in CR or LF.
inline const char *lineNumber(const char *p, const char *eol, char terminator, float &value) {
    const char *start = p;
    p = readPlainDecimal(start, eol, value);
    if (p && *p == terminator && *start != '+')
        return p + 1;
    p = start;
    while (isNumberChar(*p))
        ++p;
    if (*p != terminator)
        return nullptr;
    value = str_toSingle(std::string_view(start, size_t(p - start)));
    return p + 1;
}

// The data line exactly as the writer makes it (four-digit year, two-digit
// date and time fields, plain numbers, nothing after the stream), parsed in
// one go. False for anything else: the state machine then reads the line.
inline bool parseWriterLine(const char *p, const char *eol, DataPoint &out) {
    if (eol - p < 20 + 14)
        return false;
    for (int i = 0; i < 4; ++i) {
        if (!isDigit(p[i]))
            return false;
    }
    if (p[4] != '-' || p[7] != '-' || p[10] != TAB || p[13] != ':' || p[16] != ':' || p[19] != TAB)
        return false;
    if (!twoDigits(p + 5, out.month) || !twoDigits(p + 8, out.day) ||
        !twoDigits(p + 11, out.hour) || !twoDigits(p + 14, out.minute) ||
        !twoDigits(p + 17, out.second))
        return false;
    out.year = int16_t((p[0] - '0') * 1000 + (p[1] - '0') * 100 + (p[2] - '0') * 10 + (p[3] - '0'));
    p += 20;
    float stream = 0.0f;
    if (!(p = lineNumber(p, eol, TAB, out.water)) || !(p = lineNumber(p, eol, TAB, out.pressure)) ||
        !(p = lineNumber(p, eol, TAB, out.temperature)) ||
        !(p = lineNumber(p, eol, TAB, out.soot)) || !(p = lineNumber(p, eol, TAB, out.adc_ref)) ||
        !(p = lineNumber(p, eol, TAB, out.adc_meas)) || !(p = lineNumber(p, eol, *eol, stream)))
        return false;
    out.stream = textformat::streamNumber(stream);
    return p == eol + 1;
}

} // namespace

DataFileScanner::DataFileScanner(DataPoint *buffer, int32_t capacity)
    : m_buffer(buffer), m_capacity(capacity) {}

void DataFileScanner::reset(const CalTable &source, const CalTable &table) {
    m_count = 0;
    m_overflow = false;
    m_mode = Mode::LineStart;
    m_meta.clear();
    oilName.reset();
    alarmThreshold.reset();
    calSourceSeen = false;
    calTableSeen = false;
    calSource = source;
    calSource.count = 0;
    calTable = table;
    calTable.count = 0;
}

bool DataFileScanner::scan(const char *data, int64_t size) {
    const char *p = data;
    const char *const end = data + size;
    while (p != end && !m_overflow) {
        switch (m_mode) {
        case Mode::LineStart: {
            const char c = *p;
            if (c == CR || c == LF) {
                ++p; // empty line
                break;
            }
            if (c == ':') {
                ++p;
                m_mode = Mode::Meta;
                m_meta.clear();
                m_meta.append(c);
                break;
            }
            if (m_reader) {
                if (const char *eol = lineEndWithin(p, end)) {
                    if (m_reader->readLine(p, eol, m_point))
                        commit(m_point);
                    p = eol + 1;
                } else {
                    m_mode = Mode::Line;
                    m_meta.clear();
                }
                break;
            }
            if (isDigit(c)) {
                const char *eol = lineEndWithin(p, end);
                if (eol && parseWriterLine(p, eol, m_point)) {
                    if (m_count >= m_capacity) {
                        m_overflow = true;
                        break;
                    }
                    m_buffer[m_count++] = m_point;
                    p = eol + 1;
                    break;
                }
            }
            m_mode = Mode::Data;
            m_state = 0;
            m_integer = 0;
            m_fieldLength = 0;
            m_complete = false;
            break;
        }
        case Mode::Data:
            p = scanData(p, end);
            break;
        case Mode::Skip:
        case Mode::Meta:
        case Mode::Line: {
            const char *start = p;
            while (p != end && *p != CR && *p != LF)
                ++p;
            if (m_mode != Mode::Skip) {
                const qsizetype room = maxMetaLine - m_meta.size();
                m_meta.append(start, std::min<qsizetype>(room, p - start));
            }
            if (p != end) {
                ++p;
                lineEnd();
            }
            break;
        }
        }
    }
    return !m_overflow;
}

// Runs the data line machine from p; returns where it stopped: at the end of
// the bytes, after the line's end, or where the line turned to skipping.
const char *DataFileScanner::scanData(const char *p, const char *const end) {
    while (p != end) {
        if (m_state < 6) {
            int64_t v = m_integer;
            while (p != end && isDigit(*p)) {
                v = std::min<int64_t>(v * 10 + (*p - '0'), INT32_MAX);
                ++p;
            }
            m_integer = v;
            if (p == end)
                return p;
            const char c = *p++;
            if (c == CR || c == LF) {
                lineEnd();
                return p;
            }
            // A "#" or any character but the field's end rejects the line.
            if (c != dateTimeEnd[m_state]) {
                m_mode = Mode::Skip;
                return p;
            }
            endDateTimeField();
        } else if (m_state <= 12) {
            p = collectNumber(p, end);
            if (p == end)
                return p;
            const float value = collectedNumber();
            const char c = *p++;
            if (c == TAB) {
                storeNumber(value);
                continue;
            }
            if (c == CR || c == LF) {
                // The line's end works as the CR appended to the line.
                storeNumber(value);
                lineEnd();
                return p;
            }
            m_mode = Mode::Skip; // "#" or a foreign character
            return p;
        } else {
            // After the stream field nothing counts any more, not even a "#".
            m_mode = Mode::Skip;
            return p;
        }
    }
    return p;
}

// The general number field loop: keeps the field's text (across blocks,
// too) and stops at the first character that cannot be part of it.
const char *DataFileScanner::collectNumber(const char *p, const char *const end) {
    int length = m_fieldLength;
    while (p != end) {
        const char c = *p;
        if (!isNumberChar(c))
            break;
        // Past 64 characters only the length counts: such a text reads as 0.
        if (length < 64)
            m_field[length] = c;
        length += length <= 64;
        ++p;
    }
    m_fieldLength = length;
    return p;
}

float DataFileScanner::collectedNumber() const {
    return m_fieldLength > 64 ? 0.0f
                              : str_toSingle(std::string_view(m_field, size_t(m_fieldLength)));
}

void DataFileScanner::endDateTimeField() {
    const int64_t v = m_integer;
    switch (m_state) {
    case 0:
        m_point.year = clampTo<int16_t>(v, INT16_MAX);
        break;
    case 1:
        m_point.month = clampTo<uint8_t>(v, 255);
        break;
    case 2:
        m_point.day = clampTo<uint8_t>(v, 255);
        break;
    case 3:
        m_point.hour = clampTo<uint8_t>(v, 255);
        break;
    case 4:
        m_point.minute = clampTo<uint8_t>(v, 255);
        break;
    case 5:
        m_point.second = clampTo<uint8_t>(v, 255);
        break;
    }
    m_integer = 0;
    ++m_state;
}

void DataFileScanner::storeNumber(float v) {
    m_fieldLength = 0;
    switch (m_state) {
    case 6:
        m_point.water = v;
        break;
    case 7:
        m_point.pressure = v;
        break;
    case 8:
        m_point.temperature = v;
        break;
    case 9:
        m_point.soot = v;
        break;
    case 10:
        m_point.adc_ref = v;
        break;
    case 11:
        m_point.adc_meas = v;
        break;
    case 12:
        m_point.stream = textformat::streamNumber(v);
        m_complete = true;
        break;
    }
    ++m_state;
}

void DataFileScanner::lineEnd() {
    if (m_mode == Mode::Meta) {
        metaLine();
    } else if (m_mode == Mode::Line) {
        if (m_reader->readLine(m_meta.constData(), m_meta.constData() + m_meta.size(), m_point))
            commit(m_point);
    } else if (m_complete) {
        // Counted once the stream field ended, whatever followed it ("#").
        commit(m_point);
    }
    m_complete = false;
    m_mode = Mode::LineStart;
}

void DataFileScanner::commit(const DataPoint &point) {
    if (m_count >= m_capacity)
        m_overflow = true;
    else
        m_buffer[m_count++] = point;
}

DataFileScanner::DeviceEnd DataFileScanner::scanDevice(QIODevice &device, char *block,
                                                       int blockSize, ProgressTicker &ticker,
                                                       int64_t total) {
    int64_t done = 0;
    for (;;) {
        const qint64 n = device.read(block, blockSize);
        if (n < 0)
            return DeviceEnd::ReadFailed;
        if (n == 0)
            return DeviceEnd::Complete;
        done += n;
        if (!scan(block, n))
            return DeviceEnd::Overflow;
        ticker.update(done, total);
    }
}

FileResult DataFileScanner::mergeInto(MeasurementStore &store, MergeMode mode, Tables tables,
                                      const QString &name) const {
    const int32_t before = store.dataPoint_count;
    if (store.merge(m_buffer, count(), mode))
        return FileResult::mergeTooLarge(name, count(), before, MeasurementStore::capacity);
    FileResult result = FileResult::ok();
    result.oilName = applyMetadata(store, tables);
    store.data_changed = false;
    return result;
}

std::optional<QString> DataFileScanner::applyMetadata(MeasurementStore &store,
                                                      Tables tables) const {
    if (alarmThreshold)
        store.alarmThreshold = *alarmThreshold;
    if (tables == Tables::Always || calSourceSeen)
        store.calSource = calSource;
    if (tables == Tables::Always || calTableSeen)
        store.calTable = calTable;
    if (oilName)
        store.oilName = *oilName;
    return oilName;
}

void DataFileScanner::metaLine() {
    const QByteArrayView line(m_meta);
    static constexpr QByteArrayView oilKey(":oilname=");
    static constexpr QByteArrayView thresholdKey(":alarmthreshold=");
    static constexpr QByteArrayView sourceKey(":calsource=");
    static constexpr QByteArrayView tableKey(":caltable=");
    if (line.startsWith(oilKey)) {
        oilName = QString::fromLatin1(trimmedBlanks(line.sliced(oilKey.size())));
    } else if (line.startsWith(thresholdKey)) {
        const QByteArrayView value = line.sliced(thresholdKey.size());
        if (!value.isEmpty())
            alarmThreshold = toFloat(trimmedBlanks(value));
    } else if (line.startsWith(sourceKey)) {
        calSourceSeen = true;
        readPairs(line.sliced(sourceKey.size()), calSource);
    } else if (line.startsWith(tableKey)) {
        calTableSeen = true;
        readPairs(line.sliced(tableKey.size()), calTable);
    }
    // Any other line starting with ":" is not a data line either.
}

void DataFileScanner::readPairs(QByteArrayView value, CalTable &table) {
    value = trimmedBlanks(value);
    bool second = false;
    while (!value.isEmpty() && table.count < maxPairsRead) {
        const qsizetype tab = value.indexOf(TAB);
        const QByteArrayView piece = tab < 0 ? value : value.first(tab);
        value = tab < 0 ? QByteArrayView() : value.sliced(tab + 1);
        if (piece.isEmpty())
            continue; // skipped without taking a turn
        const float v = toFloat(piece);
        CalPair &pair = table.pairs[table.count];
        if (!second) {
            pair.first = v;
        } else {
            pair.second = v;
            ++table.count;
        }
        second = !second;
    }
}
