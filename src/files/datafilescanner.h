#pragma once

#include "files/fileresult.h"

#include "core/datapoint.h"
#include "core/store.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <optional>

class ProgressTicker;
class QIODevice;

// The data lines of a text format other than the native one (the sensor's
// logs). The scanner hands over every non-empty line that is not a metadata
// line, whole and without its line end; the reader fills `point` and returns
// true when the line gave a record.
class DataLineReader {
public:
    virtual ~DataLineReader() = default;
    virtual bool readLine(const char *line, const char *end, DataPoint &point) = 0;
};

// Turns the bytes of a native data file, or of any text file whose data
// lines a DataLineReader reads, into records and metadata, block by block,
// without building a list of lines: a line ends at CR or LF, empty lines
// produce nothing, and a last line without an ending is dropped.
//
// A line starting with ":" is collected and tested for the metadata keys.
// A native data line shaped exactly as the writer makes it, lying whole
// inside the block, is parsed in one go; any other native line runs through
// the per-field state machine as its bytes arrive, so a line split across
// two blocks is never copied. With a line reader set, a line lying inside
// the block is handed over where it lies and only one split across blocks
// is collected first. A record is committed at its line's end; when the
// buffer is full the next record stops the scan (overflowed()). Nothing here
// touches the store: records go to the caller's buffer, metadata is staged
// here until applyMetadata().
class DataFileScanner {
public:
    DataFileScanner(DataPoint *buffer, int32_t capacity);

    // Data lines other than ":" lines go to `reader` instead of the native
    // parser; null restores the native one. Set before the first scan().
    void setLineReader(DataLineReader *reader) { m_reader = reader; }

    // Starts a file. The calibration tables begin as copies of the given
    // ones with their counts set to 0, as a load resets them.
    void reset(const CalTable &calSource, const CalTable &calTable);

    // Scans the next bytes; returns false once the buffer overflowed, after
    // which further calls do nothing.
    bool scan(const char *data, int64_t size);

    enum class DeviceEnd { Complete, ReadFailed, Overflow };
    // Reads the device to its end in blocks of blockSize bytes through
    // scan(), moving the bar by the bytes read of `total` after each block.
    DeviceEnd scanDevice(QIODevice &device, char *block, int blockSize, ProgressTicker &ticker,
                         int64_t total);

    int32_t count() const { return m_count; }
    bool overflowed() const { return m_overflow; }

    // Metadata seen in the file: the last oil name and threshold line win;
    // calibration lines add pairs to what earlier lines of the file gave.
    std::optional<QString> oilName;
    std::optional<float> alarmThreshold;
    CalTable calSource;
    CalTable calTable;
    bool calSourceSeen = false;
    bool calTableSeen = false;

    enum class Tables { Always, WhenSeen };
    // Hands the staged metadata to the store: threshold and oil name when
    // the file had them, the calibration tables always (a native load
    // starts them empty) or only those the file had a line for. Returns the
    // oil name taken over, for the caller to show.
    std::optional<QString> applyMetadata(MeasurementStore &store, Tables tables) const;
    // The end of every read: the records merged into the store by mode,
    // then the metadata taken over and the mark cleared; the result carries
    // the oil name. A merge that would not fit fails and changes nothing.
    FileResult mergeInto(MeasurementStore &store, MergeMode mode, Tables tables,
                         const QString &name) const;

    // The reader keeps at most this many pairs per table, although the
    // tables and the writer hold 11.
    static constexpr int16_t maxPairsRead = 10;
    // Bytes kept of one metadata line or of one line for the line reader;
    // the rest of a longer one is ignored.
    static constexpr int maxMetaLine = 1 << 20;

private:
    enum class Mode : uint8_t { LineStart, Meta, Line, Data, Skip };

    void lineEnd();
    void commit(const DataPoint &point);
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

    DataLineReader *m_reader = nullptr;
    Mode m_mode = Mode::LineStart;
    QByteArray m_meta; // a metadata line, or a reader's line split across blocks

    // State of the data line being parsed: state 0..5 are the date and time
    // fields, 6..12 the numbers, 13 is after the stream field.
    int m_state = 0;
    int64_t m_integer = 0;
    char m_field[64];
    int m_fieldLength = 0; // counts to 65 at most: longer reads as 0
    bool m_complete = false;
    DataPoint m_point;
};
