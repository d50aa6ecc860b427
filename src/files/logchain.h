#pragma once

#include "files/logimport.h"

#include <QChar>
#include <QList>
#include <QString>

// The sensor's daily log files and the chain they form. The sensor names
// each day's log "NAKOS", then the year, month and day as one base-36 digit
// each ("0" to "9", then "A" to "Z"), then any further text such as the
// extension: NAKOS435.log is 5 March of year 4. The year digit counts the
// years from 2020, so its value has the calendar year's leap years.
//
// A chain is the run of consecutive daily files from a start file, found by
// name across month and year ends; the first missing day ends it, and it
// holds at most 100 files. The start name's year is read with the plain
// numeric conversion, as the sensor's program always has: only "0" to "9"
// give a year there, a letter reads as year 0.
namespace logchain {

inline constexpr int maxFiles = 100;

// The message of the Import chain command for a name that cannot start a
// chain, shown with the title below, the critical icon and an OK button.
inline const QString invalidStartText = QStringLiteral("Invalid chain start filename");
inline const QString invalidStartTitle = QStringLiteral("Error");

// The digit of a value 0..35; a null QChar for any other value.
QChar base36Digit(int value);
// The value of a digit "0".."9", "A".."Z"; -1 for any other character.
int base36Value(QChar digit);

// Days of the month; February has 29 when the year value is divisible by 4
// and either not by 100 or by 400. 0 for a month outside 1..12.
int monthLength(int month, int year);

// True when the file name (without folder) can start a chain: it begins
// with "NAKOS" and its month and day digits give a month 1..12 and a day
// 1..31. (A shorter name or other digits would send the walk through days
// that no month has, so they get the same message as a missing prefix.)
bool isStartName(const QString &fileName);

// The name of the day's file in the chain of startName: its first five
// characters, the three digits, the rest of startName from the ninth
// character on. Empty when a value has no base-36 digit.
QString dayFileName(const QString &startName, int year, int month, int day);

// The chain from the file at startPath, in date order, each file with its
// size; empty when the name cannot start a chain or the start file itself
// is missing. The paths keep the folder exactly as startPath spells it.
QList<LogFileRef> collect(const QString &startPath);

} // namespace logchain
