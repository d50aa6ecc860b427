#pragma once

#include <QByteArrayView>

class MeasurementStore;

// Readers of the two metadata replies every poll fetches before the reading
// list. Both prepare the reply alike: LFs removed, every "," made ".", split
// at CR with the text after the last CR dropped, upper case, blanks trimmed,
// empty lines skipped. Neither looks for the echo of its command: the echo
// line never matches. Neither sets data_changed nor refreshes the display.

// "alarmlimit get": a line holding both ALARMVALUE and ALARMDELAY sets
// store.alarmThreshold to the ALARMVALUE number; when several lines do, the
// last one wins. The line's ALARMDELAY number goes to store.alarmDelay,
// which only the fleet's meta message uses. Returns true when the threshold
// was set.
bool applyAlarmReply(QByteArrayView reply, MeasurementStore &store);

// "calibration get": a line with "SOURCE" starts the source table, one with
// "TABLE" the table section; the first such heading of a reply empties both
// tables, so a reply with a heading replaces both completely and a reply
// without one leaves both alone. Other lines without "CAL" are data rows of
// TAB-separated fields that give one pair each to the current section (rows
// before any heading are ignored), at most 10 pairs per table. Returns true
// when the reply held a heading.
bool applyCalibrationReply(QByteArrayView reply, MeasurementStore &store);
