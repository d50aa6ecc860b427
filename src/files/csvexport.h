#pragma once

#include "files/fileresult.h"

#include <QByteArray>
#include <QString>

#include <cstdint>

class FileProgress;
class MeasurementStore;
class QIODevice;
class ProgressTicker;

// The CSV export for spreadsheets with the decimal comma: every field in
// double quotes, ";" between fields, the calibration tables as rows, its own
// column order and no stream column. Nothing reads this format back. A
// successful export counts as saving: it clears data_changed (the caller
// refreshes the title), without touching fileName_current.
//
// A busy flag keeps a second export, started from events that run during
// the first one's progress updates, from running: it returns the result of
// the last finished export at once.
class CsvExport {
public:
    explicit CsvExport(MeasurementStore &store, FileProgress *progress = nullptr);

    FileResult csvFile_export(const QString &fileName, bool showProgress);
    FileResult csvFile_export(QIODevice &device, bool showProgress, const QString &name = {});

    // Data lines of store indices first .. end-1, fields joined by
    // separator; the same result rules as dataFile_writeLines.
    [[nodiscard]] bool csvFile_writeLines(QIODevice *device, int32_t first, int32_t end,
                                          const QByteArray &separator);

    bool isBusy() const { return m_busy; }

private:
    template <typename Open> FileResult guarded(bool showProgress, Open open);
    FileResult exportTo(QIODevice &device, const QString &name, ProgressTicker &ticker);
    bool writeLines(QIODevice &device, int32_t first, int32_t end, const QByteArray &separator,
                    ProgressTicker &ticker);

    MeasurementStore &m_store;
    FileProgress *m_progress;
    bool m_busy = false;
    FileResult m_last;
};
