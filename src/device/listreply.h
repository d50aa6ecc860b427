#pragma once

#include "core/datapoint.h"

#include <QByteArrayView>
#include <QChar>

#include <functional>
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

// Walks a whole "list" reply: the echo check (a reply that does not start
// with the echoed command and an empty line is ignored as a whole), LF
// removal, the decimal separator made the system's own, the split at CR
// (text after the last CR is dropped), then parseListLine on every line of
// 21 characters or more. `sink` gets each such line's point and validity.
// Returns false when the echo check failed.
using ListLineSink = std::function<void(const DataPoint &p, bool valid)>;
bool parseListReply(QByteArrayView reply, QChar decimalSeparator, const ListLineSink &sink,
                    int *lineCount = nullptr);

// parseListReply with every valid line handed to the store's append rule
// (capacity, then the duplicate test on year, month, day, minute and second).
ListReplyResult applyListReply(QByteArrayView reply, MeasurementStore &store);

// How many valid lines of a "list" reply the store does not hold yet (a
// line listed twice in the reply counts twice): at most the room applying
// the reply would take.
int countNewReadings(QByteArrayView reply, const MeasurementStore &store);
