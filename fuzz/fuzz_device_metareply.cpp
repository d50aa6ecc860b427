// The "alarmlimit get" and "calibration get" reply readers. Input: one byte
// that splits the rest into two calibration replies read one after the
// other (as two polls would), two bytes for the table counts held before
// (0 .. 11, as a data file or an earlier poll may leave them), then the
// bytes; the alarm reader gets all of them as one reply.
//
// Checked: the counts never leave the tables (at most 10 pairs once a
// reply with a heading replaced them), a reply without a heading changes
// neither table, the values are finite numbers, and the alarm threshold
// only changes when a line carried both keys.
#include "core/store.h"
#include "device/metareply.h"

#include <QByteArrayView>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace {

void check(bool ok) {
    if (!ok)
        std::abort();
}

bool sameTable(const CalTable &a, const CalTable &b) {
    if (a.count != b.count)
        return false;
    for (int i = 0; i < CalTable::capacity; ++i) {
        if (std::memcmp(&a.pairs[i], &b.pairs[i], sizeof(CalPair)) != 0)
            return false;
    }
    return true;
}

void checkTable(const CalTable &t, int maxCount) {
    check(t.count >= 0 && t.count <= maxCount);
    for (int i = 0; i < t.count; ++i)
        check(std::isfinite(t.pairs[i].first) && std::isfinite(t.pairs[i].second));
}

void calibration(MeasurementStore &s, QByteArrayView reply) {
    const CalTable source = s.calSource;
    const CalTable table = s.calTable;
    if (applyCalibrationReply(reply, s)) {
        checkTable(s.calSource, 10);
        checkTable(s.calTable, 10);
    } else {
        check(sameTable(s.calSource, source) && sameTable(s.calTable, table));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    static const auto store = std::make_unique<MeasurementStore>();
    if (size < 3)
        return 0;
    MeasurementStore &s = *store;
    for (CalTable *t : {&s.calSource, &s.calTable}) {
        for (int i = 0; i < CalTable::capacity; ++i)
            t->pairs[i] = CalPair{float(i), float(-i)};
    }
    s.calSource.count = int16_t(data[1] % (CalTable::capacity + 1));
    s.calTable.count = int16_t(data[2] % (CalTable::capacity + 1));
    s.alarmThreshold = -1.0f;

    const QByteArrayView bytes(data + 3, qsizetype(size - 3));
    const qsizetype split = bytes.size() * data[0] / 256;
    calibration(s, bytes.first(split));
    calibration(s, bytes.sliced(split));
    checkTable(s.calSource, CalTable::capacity);
    checkTable(s.calTable, CalTable::capacity);

    if (applyAlarmReply(bytes, s))
        check(std::isfinite(s.alarmThreshold));
    else
        check(s.alarmThreshold == -1.0f);
    return 0;
}
