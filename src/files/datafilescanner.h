#pragma once

#include "core/datapoint.h"
#include "core/store.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <optional>

// Turns the bytes of a native data file into records and metadata, block by
// block, without building a list of lines: a line ends at CR or LF, empty
// lines produce nothing, and a last line without an ending is dropped.
//
// A line starting with ":" is collected and tested for the metadata keys;
// any other line runs through the per-field state machine of a data line as
// its bytes arrive, so a line split across two blocks needs no copy. A
// record is committed at its line's end; when the buffer is full the next
// record stops the scan (overflowed()). Nothing here touches the store:
// records go to the caller's buffer and metadata is staged in this object.
class DataFileScanner {
public:
    DataFileScanner(DataPoint *buffer, int32_t capacity);

    // Starts a file. The calibration tables begin as copies of the given
    // ones with their counts set to 0, as a load resets them.
    void reset(const CalTable &calSource, const CalTable &calTable);

    // Scans the next bytes; returns false once the buffer overflowed, after
    // which further calls do nothing.
    bool scan(const char *data, int64_t size);

    int32_t count() const { return m_count; }
    bool overflowed() const { return m_overflow; }

    // Metadata seen in the file (the last line of each key wins).
    std::optional<QString> oilName;
    std::optional<float> alarmThreshold;
    CalTable calSource;
    CalTable calTable;

    // The reader keeps at most this many pairs per table, although the
    // tables and the writer hold 11.
    static constexpr int16_t maxPairsRead = 10;
    // Bytes kept of one metadata line; the rest of a longer one is ignored.
    static constexpr int maxMetaLine = 1 << 20;

private:
    enum class Mode : uint8_t { LineStart, Meta, Data, Skip };

    void lineEnd();
    const char *scanData(const char *p, const char *end);
    const char *collectNumber(const char *p, const char *end);
    float collectedNumber() const;
    void endDateTimeField();
    void storeNumber(float value);
    void metaLine();
    void readPairs(QByteArrayView value, CalTable &table);

    DataPoint *m_buffer;
    int32_t m_capacity;
    int32_t m_count = 0;
    bool m_overflow = false;

    Mode m_mode = Mode::LineStart;
    QByteArray m_meta;

    // State of the data line being parsed: state 0..5 are the date and time
    // fields, 6..12 the numbers, 13 is after the stream field.
    int m_state = 0;
    int64_t m_integer = 0;
    char m_field[64];
    int m_fieldLength = 0; // counts to 65 at most: longer reads as 0
    bool m_complete = false;
    DataPoint m_point;
};
