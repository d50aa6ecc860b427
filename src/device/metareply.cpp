#include "device/metareply.h"

#include "core/numbers.h"
#include "core/store.h"
#include "device/replytext.h"

#include <string_view>

namespace {

bool isAlarmValueChar(char c) {
    return c == '.' || c == '-' || c == ' ' || isDigit(c);
}

constexpr int kPairsFromSensor = 10;
constexpr int kMaxFields = 10;

std::string_view withoutBlanks(std::string_view field, char *buf) {
    size_t n = 0;
    for (char c : field) {
        if (c != ' ')
            buf[n++] = c;
    }
    return std::string_view(buf, n);
}

// Splits a data row at TABs into at most 10 fields, blanks removed. The
// split stops at the first empty field or when no TAB is left; the text
// after the last TAB counts only when it is longer than one character, so a
// one-character last field is dropped. That quirk is kept on purpose: the
// same sensor must keep giving the same tables it always gave. Returns the
// number of fields stored.
int splitRow(std::string_view row, std::string_view *fields, std::string *storage) {
    int count = 0;
    size_t pos = 0;
    while (count < kMaxFields) {
        const size_t tab = row.find('\t', pos);
        std::string_view field;
        bool last = false;
        if (tab != std::string_view::npos) {
            field = row.substr(pos, tab - pos);
            pos = tab + 1;
        } else {
            last = true;
            if (pos + 1 < row.size())
                field = row.substr(pos);
        }
        storage[count].resize(field.size());
        field = withoutBlanks(field, storage[count].data());
        if (field.empty())
            break;
        fields[count++] = field;
        if (last)
            break;
    }
    return count;
}

// Adds a pair at the table's count; a count outside the table (the field is
// public and written by the file readers too) fails instead of writing out
// of bounds.
bool addPair(CalTable &table, std::string_view first, std::string_view second) {
    if (table.count < 0 || table.count >= CalTable::capacity)
        return true;
    table.pairs[table.count] = CalPair{str_toSingle(first), str_toSingle(second)};
    ++table.count;
    return false;
}

} // namespace

bool applyAlarmReply(QByteArrayView reply, MeasurementStore &store) {
    ReplyLines lines(reply, ',', '.');
    std::string_view line;
    bool set = false;
    while (lines.next(line)) {
        if (line.empty())
            continue;
        bool hasValue = false;
        bool hasDelay = false;
        const float value =
            str_toSingle(valueAfterKey(line, "ALARMVALUE", isAlarmValueChar, hasValue));
        const float delay =
            str_toSingle(valueAfterKey(line, "ALARMDELAY", isAlarmValueChar, hasDelay));
        if (hasValue && hasDelay) {
            store.alarmThreshold = value;
            store.alarmDelay = delay;
            set = true;
        }
    }
    return set;
}

bool applyCalibrationReply(QByteArrayView reply, MeasurementStore &store) {
    if (reply.isEmpty())
        return false;
    enum class Kind { None, Source, Table } kind = Kind::None;
    bool cleared = false;
    ReplyLines lines(reply, ',', '.');
    std::string_view line;
    std::string_view fields[kMaxFields];
    std::string storage[kMaxFields];
    while (lines.next(line)) {
        if (line.empty())
            continue;
        const bool source = line.find("SOURCE") != std::string_view::npos;
        if (source || line.find("TABLE") != std::string_view::npos) {
            if (!cleared) {
                store.calSource.count = 0;
                store.calTable.count = 0;
                cleared = true;
            }
            kind = source ? Kind::Source : Kind::Table;
            continue;
        }
        if (line.find("CAL") != std::string_view::npos)
            continue; // the echoed command and any other heading
        if (kind == Kind::None)
            continue;
        // One field already makes a pair: its second member reads as 0.
        const int fieldCount = splitRow(line, fields, storage) + 1;
        if (fieldCount < 2)
            continue;
        CalTable &table = kind == Kind::Source ? store.calSource : store.calTable;
        if (table.count >= kPairsFromSensor)
            continue;
        const std::string_view second = fieldCount > 2 ? fields[1] : std::string_view();
        if (addPair(table, fields[0], second)) {
            // A row that cannot be stored leaves no half-filled tables.
            store.calSource.count = 0;
            store.calTable.count = 0;
        }
    }
    return cleared;
}
