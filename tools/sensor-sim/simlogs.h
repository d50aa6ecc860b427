#pragma once

#include "simreadings.h"

#include <QByteArray>
#include <QDate>
#include <QString>
#include <QStringList>

#include <cstdint>

// The line formats the sensor writes its daily logs in.
enum class SimLogFormat { A, B, Keyword };

struct SimLogOptions {
    QString folder;
    QDate start; // the first day
    int days = 1;
    SimLogFormat format = SimLogFormat::A;
    int intervalSeconds = 60; // between two readings of a day, from midnight on
    int badChecks = 0;        // records with a wrong check number, spread over all days
    uint32_t seed = 1;
    int stream = 1; // written in "B" lines
};

// The sensor's daily logs as it writes them, for tests and for trying the
// import: one file per day named "NAKOS" + the years since 2020, the month
// and the day as base-36 digits + ".log" (NAKOS435.log is 5 March 2024),
// CR LF line ends, readings from midnight to the day's end at the interval.
// "A" lines: record type, date and time, water, pressure, temperature,
// soot, reference and measurement ADC in fixed columns, then the check
// number (the running byte sum modulo 256 of the line before it, modulo
// 100); "B" lines have the stream before the check number; keyword lines
// start with a blank and name each value (" 2024-03-05 00:01:00 WATER
// 150.3 PRESSURE ..."), 112 characters like the other formats' fixed size.
QString simLogName(QDate day);
// One line without its line end; spoilCheck writes a wrong check number.
QByteArray simLogLine(const SimReading &r, SimLogFormat format, int stream, bool spoilCheck);

// Writes the logs. Returns the paths written, in date order; on failure
// `error` says why and nothing more is written.
QStringList writeSimLogs(const SimLogOptions &options, QString *error);
