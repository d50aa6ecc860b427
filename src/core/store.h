#pragma once

#include "core/datapoint.h"
#include "core/duplicateindex.h"

#include <QChar>
#include <QString>

#include <cstdint>
#include <memory>
#include <vector>

struct CalPair {
    float first = 0.0f;  // written with five decimals
    float second = 0.0f; // a whole-number value
};

// A calibration table as the sensor and the data files carry it: room for
// 11 pairs; every writer keeps `count` within 0 .. 11.
struct CalTable {
    static constexpr int capacity = 11;
    CalPair pairs[capacity];
    int16_t count = 0;
};

enum class AppendResult { Added, Invalid, Full, Duplicate };

enum class MergeMode : int16_t { Replace = 1, InsertBefore = 2, Append = 3 };

// The measurement store: the one table of readings the whole program works
// on, with the metadata that travels with it in data files and a few
// process-wide display values. There is one per process, created by the
// application and handed to every component by reference; tests make their
// own. Fields keep their documented names and are read and written directly.
//
// Writers that change the points in bulk go through merge() (or clear()), so
// the duplicate index always matches entries 0 .. dataPoint_count-1. Code
// that writes dataPoints[] by hand must call reindex() afterwards.
class MeasurementStore {
public:
    static constexpr int32_t capacity = 130000;

    MeasurementStore();
    MeasurementStore(const MeasurementStore &) = delete;
    MeasurementStore &operator=(const MeasurementStore &) = delete;

    // The append rule for single readings from the sensor: the validity
    // test, the capacity, the duplicate test (hour not compared), then all
    // fields at index dataPoint_count, the count and data_changed.
    AppendResult append(const DataPoint &p);

    // True when a stored point has the same year, month, day, minute and
    // second as p (the hour is deliberately not compared), or with the
    // full-stamp rule the same stamp; after a rollover, also a point of the
    // readings it archived.
    bool isDuplicate(const DataPoint &p) const {
        return m_index.contains(p) || (m_archived && m_archived->contains(p));
    }

    // The duplicate rule. Off (the default) is the documented key without
    // the hour; on compares the hour too, so a sensor logging every minute
    // keeps more than the first hour of each day. Switching rebuilds the
    // index from the stored points and forgets archived stamps.
    void setFullStampDuplicates(bool on);
    bool fullStampDuplicates() const { return m_index.rule() == DuplicateIndex::Rule::FullStamp; }

    // For a recorder that has just written the points to an archive file:
    // the count goes to 0 and data_changed to false, the metadata and the
    // file name stay, and the archived stamps stay in the duplicate test
    // until the next rollover, clear() or replace, so a sensor that lists
    // them again does not bring them back.
    void rollOver();

    // "New" and start-up: count 0, no file name, not changed, no alarm
    // threshold nor delay. Points and calibration tables are left as they are; the
    // oil name is the caller's business (it goes through the control panel).
    void clear();

    // Merges n whole records into the store: replace, insert before the
    // existing points (moved up from the top down) or append after them.
    // Returns true (failed) and changes nothing when the result would not
    // fit into the capacity. dataPoint_count follows; data_changed and
    // fileName_current are left to the caller.
    [[nodiscard]] bool merge(const DataPoint *points, int32_t n, MergeMode mode);

    // Rebuilds the duplicate index after dataPoints[] was written directly.
    void reindex();

    // Always capacity entries; pages never written take no memory.
    std::vector<DataPoint, ZeroAllocator<DataPoint>> dataPoints;
    int32_t dataPoint_count = 0;
    bool data_changed = false;
    QString fileName_current;
    QString oilName;
    float alarmThreshold = -1.0f;
    // The sensor's alarm delay as its last alarm reply gave it (-1: none).
    // Only the fleet's meta message carries it; no file, print or chart does.
    float alarmDelay = -1.0f;
    CalTable calSource;
    CalTable calTable;
    int16_t stream_selected = 0;
    bool waterDisplayPercent = false;
    bool display_update_pending = false;
    QChar decimalSeparator = QLatin1Char('.');
    QString path_base;
    QString path_data;
    QString path_autosave;

private:
    DuplicateIndex m_index;
    // The stamps of the last rollover's archive; made at the first one.
    std::unique_ptr<DuplicateIndex> m_archived;
};
