#pragma once

#include "core/datapoint.h"

#include <QByteArrayView>
#include <QChar>

#include <QByteArray>

#include <functional>
#include <string>
#include <string_view>

class MeasurementStore;

// What one "list" reply did to the store; the link hands it on with its
// display refresh signal and the recorder prints it.
struct ListReplyResult {
    bool echoOk = false; // the reply began with "list" CR LF CR LF
    int lines = 0;       // lines of 21 characters or more
    int added = 0;
    int invalid = 0;
    int duplicates = 0;
    int full = 0; // valid lines that found the store full
};

// Reads one reading line of the "list" reply: upper case, blanks trimmed,
// at least 21 characters. The stamp sits in fixed columns (the separators
// between its fields are not looked at); the values follow their keys in
// any order, a missing key reads as 0, a garbled value as 0. Returns false
// when the line is invalid: a stamp field or STREAM that does not convert,
// or a stamp outside the ranges of dataPoint_isValid.
bool parseListLine(std::string_view line, DataPoint &p);

// What every reader of "list" replies gets: each line of 21 characters or
// more, as parseListLine read it, with its validity.
using ListLineSink = std::function<void(const DataPoint &p, bool valid)>;

// Reads a "list" reply as it arrives, in pieces of any size, so a reply of
// any length takes no more memory than its longest line. The echo check
// comes first: the reply must begin with the echoed command and an empty
// line ("list" CR LF CR LF); it is decided as soon as the reply has that
// many bytes (or differs from it earlier), and a reply that fails it is
// ignored as a whole. Then every LF is removed, the decimal separator made
// the system's own and the text split at CR; each line, upper-cased and
// with its blanks trimmed, goes to parseListLine and the sink as soon as
// its CR arrives when it has 21 characters or more (the echoed command and
// the empty line after it are shorter). Only the line not yet ended is
// held; finish() drops it, as a reply's text after its last CR is never
// read. A line is read by its first kMaxLineBytes characters (an honest
// one has about 110); the rest of a longer one is dropped.
class ListReplyReader {
public:
    static constexpr qsizetype kMaxLineBytes = 16 * 1024;

    ListReplyReader(QChar decimalSeparator, ListLineSink sink);

    void feed(QByteArrayView bytes);
    // The reply is over; true when its echo check passed.
    bool finish();

    bool echoOk() const { return m_echo == Echo::Ok; }
    // Lines of 21 characters or more handed to the sink so far.
    int lines() const { return m_lines; }
    // Bytes of the reply seen so far, and bytes held (the unfinished line,
    // or the start of the reply while the echo is still open).
    qsizetype bytesSeen() const { return m_seen; }
    qsizetype bufferedBytes() const { return m_head.size() + qsizetype(m_line.size()); }

private:
    enum class Echo { Open, Ok, Failed };
    void take(QByteArrayView bytes);
    void endLine();

    ListLineSink m_sink;
    char m_from;
    char m_to;
    Echo m_echo = Echo::Open;
    QByteArray m_head; // the reply's first bytes while the echo is open
    std::string m_line;
    int m_lines = 0;
    qsizetype m_seen = 0;
};

// A whole "list" reply through ListReplyReader. Returns false when the echo
// check failed.
bool parseListReply(QByteArrayView reply, QChar decimalSeparator, const ListLineSink &sink,
                    int *lineCount = nullptr);

// A sink that hands every valid line to the store's append rule (capacity,
// then the duplicate test on year, month, day, minute and second) and
// counts what became of each line in `result`.
ListLineSink listStoreSink(MeasurementStore &store, ListReplyResult &result);
// What that sink does with one line.
void storeListPoint(MeasurementStore &store, ListReplyResult &result, const DataPoint &p,
                    bool valid);

// parseListReply into the store through listStoreSink.
ListReplyResult applyListReply(QByteArrayView reply, MeasurementStore &store);
