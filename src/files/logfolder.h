#pragma once

#include "files/logimport.h"

#include <QList>
#include <QString>

// One log file of a folder as the import selection lists it.
struct LogFileEntry {
    QString name;        // without the folder
    QString description; // the time span of its records
};

// The pieces of the Import directory command: the sensor's log files of a
// folder with the time span each covers, the name the combined data is
// saved under, and the chosen files with their sizes for the import loop.
// The time span comes from the first and the last record of a file, read
// with the import's own line reader; of a file over 16384 bytes only the
// beginning up to the first record and the last 8192 bytes are read, so a
// folder of a few thousand daily logs lists in well under a second.
namespace logfolder {

inline constexpr int maxFiles = 2501;
inline constexpr int64_t wholeFileLimit = 16384;
inline constexpr int tailBytes = 8192;

inline const QString noInformation = QStringLiteral("No information available");

// The files of the folder whose names start with "NAKOS", in name order,
// at most maxFiles, each with its description.
QList<LogFileEntry> list(const QString &folder);

// "2024-03-05   00:00:00     to     2024-03-05   23:59:00": the first and
// the last record's date and time; noInformation for a file without a
// readable record (or one that cannot be opened).
QString describe(const QString &path);

// folder + the first listed name + "_combined.txt": where a later Save
// puts the combined data. Empty for an empty list.
QString combinedFileName(const QString &folder, const QList<LogFileEntry> &entries);

// The entries at rows (as the selection dialog returns them, in list
// order), each with its path and its size taken now.
QList<LogFileRef> files(const QString &folder, const QList<LogFileEntry> &entries,
                        const QList<int> &rows);

} // namespace logfolder
