#pragma once

#include "files/datafilescanner.h"

#include <cstdint>

// The line formats of the sensor's log files. The first line that is neither
// a metadata (":") nor a comment ("#") line decides the format of the whole
// file: a blank in front is the keyword list, "A" and "B" are the fixed-
// column records; anything else leaves the file without records.
enum class LogFormat : uint8_t { Unknown, Keyword, FixedA, FixedB };

// Reads the data lines of one sensor log for the DataFileScanner, which
// handles the line splitting and the metadata lines. It decides the format
// from the first data line, numbers the data lines (comment lines do not
// count) and keeps only those whose number is a multiple of the thinning
// step, so that a file far larger than the room left in memory still fits.
//
// Fixed columns ("A" lines are 65 characters, "B" lines 68, without the
// line end): record type, date and time, water, pressure, temperature,
// soot, reference and measurement ADC, the stream ("B" only; "A" records
// belong to stream 1) and a two-digit check number, the running byte sum
// modulo 256 of everything before it, taken modulo 100. A line of another
// length, of another record type or with a wrong check number is skipped.
//
// The keyword list leaves a few things open; this reader settles them so:
// - Date and time are six runs of digits: "-" between year, month and day,
//   ":" between hour, minute and second, blanks allowed around both. A
//   blank ends a run, so the day ends at the blank before the hour and the
//   second at the first character that is not a digit.
// - Then keyword and number pairs; a keyword is a run of letters, a number
//   a run of digits, "-", "," and ".", with blanks allowed between them.
//   Keywords are compared without regard to case. WATER, PRESSURE,
//   TEMPERATURE, SOOT, ADCREF and ADCMEAS fill their fields; STREAM fills
//   the stream, as in the sensor's own reading lines; any other keyword is
//   read with its number and ignored.
// - A record needs the complete date and time; a keyword missing from the
//   line leaves its field 0 (the stream 0: none reported). A keyword
//   without a number, or any character outside the class expected at that
//   point, rejects the line. A "#" ends the line like its end.
// - Date and time are taken as they stand (no range check), as the native
//   reader takes them.
class LogLineReader : public DataLineReader {
public:
    // For an import: the thinning step follows from the file size and the
    // limit once the first data line has shown the format (limit 0: every
    // line is kept).
    LogLineReader(int64_t fileSize, int32_t limit);
    // For a file whose format is already known, keeping every line.
    explicit LogLineReader(LogFormat format);

    bool readLine(const char *line, const char *end, DataPoint &point) override;

    LogFormat format() const { return m_format; }
    int16_t step() const { return m_step; }

    // The format a first data line starting with `c` stands for.
    static LogFormat formatOf(char c);
    // Estimated bytes per record: 114, 67 and 70 (0 for an unknown format).
    static int bytesPerRecord(LogFormat format);
    // fileSize / bytesPerRecord, rounded to the nearest whole number with
    // halves to even.
    static int64_t recordEstimate(LogFormat format, int64_t fileSize);
    // estimate / limit + 1, rounded the same way and held to 16 bits; 1 for
    // a limit of 0 or below.
    static int16_t thinningStep(int64_t estimate, int32_t limit);

    static bool readFixed(const char *line, const char *end, LogFormat format, DataPoint &point);
    static bool readKeywords(const char *line, const char *end, DataPoint &point);

private:
    int64_t m_fileSize = 0;
    int32_t m_limit = 0;
    bool m_decided = false;
    LogFormat m_format = LogFormat::Unknown;
    int16_t m_step = 1;
    int64_t m_dataLines = 0;
};
