// The "list" reply reader together with the store's append rule. Input:
// one control byte (bit 0: decimal comma system, bit 1: poll the same
// reply twice), two bytes for the pre-fill count, then the reply.
//
// Every reply is also replayed against a plain model of the append rule
// (validity, capacity, duplicate key without the hour, by scanning), and
// the store is checked afterwards: count within the capacity, the points
// the model added at the model's places, the pre-fill untouched, and the
// duplicate index agreeing with a linear scan on a few probes.
#include "storecheck.h"

#include "core/store.h"
#include "device/listreply.h"

#include <QByteArrayView>

#include <memory>
#include <vector>

using namespace fuzzstore;

namespace {

struct Model {
    int added = 0, invalid = 0, duplicates = 0, full = 0, lines = 0;
    std::vector<DataPoint> appended;
};

FUZZ_UNCOVERED Model replay(QByteArrayView reply, QChar separator, int32_t prefill) {
    Model m;
    parseListReply(reply, separator, [&](const DataPoint &p, bool valid) {
        ++m.lines;
        if (!valid || !dataPoint_isValid(p)) {
            ++m.invalid;
            return;
        }
        if (prefill + int32_t(m.appended.size()) >= MeasurementStore::capacity) {
            ++m.full;
            return;
        }
        const int32_t at = prefillIndexOf(p);
        bool duplicate = at >= 0 && at < prefill;
        for (const DataPoint &q : m.appended)
            duplicate = duplicate || sameKey(p, q);
        if (duplicate) {
            ++m.duplicates;
            return;
        }
        m.appended.push_back(p);
        ++m.added;
    });
    return m;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    static const auto store = std::make_unique<MeasurementStore>();
    static Prefiller prefiller;
    if (size < 3)
        return 0;
    const bool comma = data[0] & 1;
    const bool twice = data[0] & 2;
    const int32_t prefill = prefillCount(data[1], data[2], 0);
    const QByteArrayView reply(data + 3, qsizetype(size - 3));

    MeasurementStore &s = *store;
    prefiller.fill(s, prefill);
    s.decimalSeparator = comma ? QLatin1Char(',') : QLatin1Char('.');
    s.data_changed = false;

    const Model m = replay(reply, s.decimalSeparator, prefill);
    const ListReplyResult r = applyListReply(reply, s);
    if (r.added > 0)
        prefiller.touched();
    check(r.echoOk == reply.startsWith(QByteArrayView("list\r\n\r\n")));
    check(r.lines == m.lines && r.added == m.added && r.invalid == m.invalid &&
          r.duplicates == m.duplicates && r.full == m.full);
    check(s.dataPoint_count == prefill + r.added);
    check(s.data_changed == (r.added > 0));
    for (int i = 0; i < r.added; ++i)
        check(samePoint(s.dataPoints[size_t(prefill + i)], m.appended[size_t(i)]));
    if (prefill > 0) {
        const int32_t sample[] = {0, prefill / 2, prefill - 1};
        for (int32_t i : sample)
            check(samePoint(s.dataPoints[size_t(i)], prefiller.points()[i]));
    }

    // Probes: the first and last point added with another hour (stored
    // keys), the point after the pre-fill (stored only when the reply
    // added it) and one made of reply bytes.
    std::vector<DataPoint> probes;
    if (!m.appended.empty()) {
        for (DataPoint p : {m.appended.front(), m.appended.back()}) {
            p.hour = uint8_t((p.hour + 5) % 24);
            probes.push_back(p);
        }
    }
    if (prefill < MeasurementStore::capacity)
        probes.push_back(prefillPoint(prefill));
    if (reply.size() >= 6) {
        DataPoint p = prefillPoint(0);
        p.month = uint8_t(reply[0]) % 3;
        p.day = uint8_t(reply[1]) % 32;
        p.minute = uint8_t(reply[2]) % 61;
        p.second = uint8_t(reply[3]) % 61;
        probes.push_back(p);
    }
    checkStore(s, probes.data(), int(probes.size()));

    if (twice) {
        // Polling the same log again adds nothing.
        const ListReplyResult again = applyListReply(reply, s);
        check(again.added == 0 && s.dataPoint_count == prefill + r.added);
        check(again.duplicates + again.full == r.added + r.duplicates + r.full);
    }
    return 0;
}
