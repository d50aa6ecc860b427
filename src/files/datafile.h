#pragma once

#include "files/fileresult.h"

#include "core/datapoint.h"
#include "core/store.h"

#include <QString>

#include <cstdint>
#include <memory>
#include <vector>

class FileProgress;
class QIODevice;
class ProgressTicker;

// Everything a native data file holds, copied out of the store, so it can be
// written away from the store (the autosave writes it on a thread of its
// own while readings keep coming in).
struct DataFileSnapshot {
    std::vector<DataPoint> points;
    float alarmThreshold = -1.0f;
    QString oilName;
    CalTable calSource;
    CalTable calTable;

    // Copies the store's points and metadata.
    void take(const MeasurementStore &store);
    // True when the store still holds exactly what was taken, so a file
    // written from the copy stands for the store.
    bool sameAs(const MeasurementStore &store) const;
};

// The native data file: its writer (dataFile_save, dataFile_writeLines) and
// its reader (dataFile_load). The reader scans the file into a load buffer
// of its own, allocated on first use and kept, so the store is touched only
// in the final merge: a file that cannot be opened, cannot be read to its
// end, or holds more records than fit leaves the store, its metadata and
// its mark exactly as they were.
//
// Each routine exists over a file name and over an open QIODevice (tests
// use a failing device to reach the short-write paths).
class DataFile {
public:
    explicit DataFile(MeasurementStore &store, FileProgress *progress = nullptr);
    ~DataFile();

    // Writes the whole store. On success clears data_changed; the title and
    // fileName_current are the caller's business.
    FileResult dataFile_save(const QString &fileName, bool showProgress);
    FileResult dataFile_save(QIODevice &device, bool showProgress, const QString &name = {});

    // Writes a snapshot: the same bytes dataFile_save writes for the store
    // it was taken from. Touches no store and lets no events run, so it may
    // run on any thread; the caller owns the device.
    static FileResult dataFile_saveSnapshot(QIODevice &device, const DataFileSnapshot &snapshot,
                                            const QString &name = {});

    // Writes the data lines of store indices first .. end-1; true (failed)
    // for a device that is null or not writable, a range outside the store's
    // array, or a short write; false for an empty range.
    [[nodiscard]] bool dataFile_writeLines(QIODevice *device, int32_t first, int32_t end);

    // Reads the file and merges its records by mode; takes over its oil
    // name, alarm threshold and calibration tables and clears data_changed.
    // The result names the oil name when the file had one, so the caller can
    // show it; refreshing the title and the display is the caller's too.
    FileResult dataFile_load(const QString &fileName, MergeMode mode, bool showProgress);
    FileResult dataFile_load(QIODevice &device, MergeMode mode, bool showProgress,
                             const QString &name = {});

    static constexpr int blockSize = 32768;

private:
    FileResult saveTo(QIODevice &device, const QString &name, ProgressTicker &ticker);
    bool writeLines(QIODevice &device, int32_t first, int32_t end, ProgressTicker &ticker);
    FileResult loadFrom(QIODevice &device, MergeMode mode, const QString &name,
                        ProgressTicker &ticker);

    MeasurementStore &m_store;
    FileProgress *m_progress;
    std::unique_ptr<DataPoint[]> m_loadBuffer;
    std::unique_ptr<char[]> m_block;
};
