#pragma once

#include "files/fileresult.h"

#include "core/datapoint.h"
#include "core/store.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <memory>
#include <optional>

class FileProgress;
class ProgressTicker;
class QIODevice;

// One log file to import and its size in bytes, found when the file was
// chosen (0 when it could not be opened then).
struct LogFileRef {
    QString path;
    int64_t size = 0;
};

// Opens the file, takes its size and closes it again.
LogFileRef logFile_ref(const QString &path);

// What a run over several log files did.
struct LogImportRun {
    // Files read and merged, of those tried.
    int filesImported = 0;
    // The oil name of the last file that carried one (already in the store),
    // for the control panel's text box.
    std::optional<QString> oilName;
    // Failures in file order. Files that cannot be opened or read are
    // passed over; a file whose records do not fit ends the run, so a
    // TooManyRecords failure is always the last.
    QList<FileResult> failures;
    // Insert or append with 100 or fewer free points: nothing was tried.
    bool noRoom = false;
    // The files merged, in the order they were read (an insert reads the
    // last file first), and those never tried because a file before them
    // did not fit.
    QStringList imported;
    QString notFitted; // the file whose records did not fit
    QStringList skipped;

    // The failure the operator is told about: records that did not fit.
    const FileResult *capacityFailure() const;
    // What the operator is told when records did not fit (empty: nothing
    // to tell). The failure's own message when no file entered memory;
    // after a run of several files of which some entered, which ones did,
    // the one that did not fit and that the rest were skipped.
    QString capacityReport() const;
};

// The import of the sensor's log files. logFile_import reads one file (see
// LogLineReader for the formats and the thinning) into a load buffer of its
// own and merges it into the store by one of the three modes, as the native
// load does: the store is touched only in that final merge, so a file that
// cannot be opened or read, or that gives more records than the limit or
// the memory allow, leaves the store, its metadata and its mark as they
// were. logFiles_import is the one loop over a list of files that the
// Import, Import chain and Import directory commands and nakos-tool share.
class LogImport {
public:
    explicit LogImport(MeasurementStore &store, FileProgress *progress = nullptr);
    ~LogImport();

    // Imports one log file and merges its records by mode. fileSize feeds
    // the record estimate and the progress bar; limit is the greatest
    // number of records the file may give after thinning (0: only the
    // memory's capacity). Takes over the metadata lines the file has (oil
    // name, alarm threshold, and a calibration table only when the file has
    // a line for it) and clears data_changed; the result names the oil name
    // taken over. Title and display are the caller's.
    FileResult logFile_import(const QString &fileName, MergeMode mode, bool showProgress,
                              int64_t fileSize, int32_t limit);
    FileResult logFile_import(QIODevice &device, MergeMode mode, bool showProgress,
                              int64_t fileSize, int32_t limit, const QString &name = {});

    // Imports the files as the import commands do. Replace: the first file
    // replaces the store, the others are appended, each with the limit of
    // 130000; then data_changed is cleared. Insert before: the files from
    // the last to the first, each inserted before the store's contents so
    // they end up in order; append: the files in order; both only when the
    // free room (computed once, before the first file) is at least 101,
    // with that room as each file's limit, and then data_changed is set.
    // Pending events run after each file. A run that ends at its first file
    // because the records do not fit leaves the mark as it was.
    LogImportRun logFiles_import(const QList<LogFileRef> &files, MergeMode mode, bool showProgress);

    static constexpr int blockSize = 32768;
    // Insert and append need more free points than this.
    static constexpr int32_t minimumRoom = 100;

private:
    FileResult importFrom(QIODevice &device, MergeMode mode, int64_t fileSize, int32_t limit,
                          const QString &name, ProgressTicker &ticker);

    MeasurementStore &m_store;
    FileProgress *m_progress;
    std::unique_ptr<DataPoint[]> m_loadBuffer;
    std::unique_ptr<char[]> m_block;
};
