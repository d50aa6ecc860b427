#pragma once

#include "core/datapoint.h"

#include <QString>

// Time stamp texts as every window and file shows them: the year has "000"
// put in front and its last four characters kept, the other fields "0" and
// their last two characters kept (so year 999 reads 0999, month 3 reads 03).

QString pad4(int value);
QString pad2(int value);

// "2024-03-05"
QString dateText(const DataPoint &p);
// "14:22:10"
QString timeText(const DataPoint &p);
// "2024-03-05 14:22:10"
QString stampText(const DataPoint &p);

// Writes the padded digits of value into out (2 or 4 characters), without
// allocation; for the hot loops of the file writers.
void pad4(int value, char out[4]);
void pad2(int value, char out[2]);
