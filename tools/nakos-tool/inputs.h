#pragma once

#include <QString>
#include <QStringList>

class FileProgress;
class MeasurementStore;

// What the inputs of convert, info and plot are: native data files, sensor
// log files (--log), or one chain start file whose following daily logs
// are found by name (--chain).
enum class InputKind { DataFile, LogFile, Chain };

// Reads the inputs into the (empty) store as the program's commands would:
// the first replaces the store, each further one is appended after it, or
// inserted before it with `insert`. Log files go one by one through the
// program's import loop, each with its own size and the store's free room
// as limit, as the Import command does; a chain goes through it in one run,
// as Import chain does. Returns the failure as one line, empty on success.
// A log file that finds 100 or fewer free points fails here, where the
// program would pass over it silently: the output would be incomplete.
// With a progress window every file shows its progress there.
QString loadInputs(MeasurementStore &store, const QStringList &inputs, InputKind kind, bool insert,
                   FileProgress *progress = nullptr);
