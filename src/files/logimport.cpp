#include "files/logimport.h"

#include "files/datafilescanner.h"
#include "files/loglines.h"
#include "files/progressticker.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

#include <algorithm>

namespace {

const QString importingCaption = QStringLiteral("Importing file...");

} // namespace

LogFileRef logFile_ref(const QString &path) {
    QFile file(path);
    return {path, file.open(QIODevice::ReadOnly) ? int64_t(file.size()) : 0};
}

const FileResult *LogImportRun::capacityFailure() const {
    if (!failures.isEmpty() && failures.constLast().code == FileResult::Code::TooManyRecords)
        return &failures.constLast();
    return nullptr;
}

namespace {

// "a", "b", "c", or for a long list its first three, the count left out and
// its last one.
QString nameList(const QStringList &paths) {
    QStringList names;
    for (const QString &path : paths)
        names << QLatin1Char('"') + QFileInfo(path).fileName() + QLatin1Char('"');
    if (names.size() > 5) {
        const QString last = names.constLast();
        const qsizetype left = names.size() - 4;
        names.resize(3);
        names << QStringLiteral("... (%1 more) ...").arg(left - 1) << last;
    }
    return names.join(QLatin1String(", "));
}

} // namespace

QString LogImportRun::capacityReport() const {
    const FileResult *full = capacityFailure();
    if (!full)
        return QString();
    if (imported.isEmpty())
        return full->message;
    const int tried = int(imported.size() + failures.size());
    const int total = int(tried + skipped.size());
    QString text = QStringLiteral("%1 of %2 files were imported: %3. ")
                       .arg(imported.size())
                       .arg(total)
                       .arg(nameList(imported));
    text += QStringLiteral("\"%1\" did not fit into the data point memory and was not imported.")
                .arg(QFileInfo(notFitted).fileName());
    if (!skipped.isEmpty()) {
        text += skipped.size() == 1
                    ? QStringLiteral(" The remaining file was skipped: %1.").arg(nameList(skipped))
                    : QStringLiteral(" The remaining %1 files were skipped: %2.")
                          .arg(skipped.size())
                          .arg(nameList(skipped));
    }
    return text;
}

LogImport::LogImport(MeasurementStore &store, FileProgress *progress)
    : m_store(store), m_progress(progress) {}

LogImport::~LogImport() = default;

FileResult LogImport::logFile_import(const QString &fileName, MergeMode mode, bool showProgress,
                                     int64_t fileSize, int32_t limit) {
    ProgressTicker ticker(showProgress ? m_progress : nullptr, importingCaption);
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return FileResult::openFailed(fileName);
    return importFrom(file, mode, fileSize, limit, fileName, ticker);
}

FileResult LogImport::logFile_import(QIODevice &device, MergeMode mode, bool showProgress,
                                     int64_t fileSize, int32_t limit, const QString &name) {
    ProgressTicker ticker(showProgress ? m_progress : nullptr, importingCaption);
    if (!device.isReadable())
        return FileResult::openFailed(name);
    return importFrom(device, mode, fileSize, limit, name, ticker);
}

FileResult LogImport::importFrom(QIODevice &device, MergeMode mode, int64_t fileSize, int32_t limit,
                                 const QString &name, ProgressTicker &ticker) {
    if (!m_loadBuffer) {
        m_loadBuffer = std::make_unique<DataPoint[]>(MeasurementStore::capacity);
        m_block = std::make_unique<char[]>(blockSize);
    }
    // The thinning keeps a file of the expected size within the limit; one
    // denser than estimated stops at it rather than filling memory past it.
    const int32_t room =
        limit > 0 ? std::min(limit, MeasurementStore::capacity) : MeasurementStore::capacity;
    LogLineReader reader(fileSize, limit);
    DataFileScanner scanner(m_loadBuffer.get(), room);
    scanner.setLineReader(&reader);
    scanner.reset(m_store.calSource, m_store.calTable);
    switch (scanner.scanDevice(device, m_block.get(), blockSize, ticker, fileSize)) {
    case DataFileScanner::DeviceEnd::ReadFailed:
        return FileResult::readFailed(name);
    case DataFileScanner::DeviceEnd::Overflow:
        return FileResult::importTooLarge(name, room);
    case DataFileScanner::DeviceEnd::Complete:
        break;
    }

    // A log rarely carries calibration lines; one without them keeps the
    // tables the store has.
    return scanner.mergeInto(m_store, mode, DataFileScanner::Tables::WhenSeen, name);
}

LogImportRun LogImport::logFiles_import(const QList<LogFileRef> &files, MergeMode mode,
                                        bool showProgress) {
    LogImportRun run;
    const bool markBefore = m_store.data_changed;
    QList<LogFileRef> order = files;
    int32_t limit = MeasurementStore::capacity;
    MergeMode fileMode = mode;
    if (mode != MergeMode::Replace) {
        limit = MeasurementStore::capacity - m_store.dataPoint_count;
        run.noRoom = limit <= minimumRoom;
        if (run.noRoom || (mode == MergeMode::InsertBefore && files.isEmpty()))
            return run;
        // Each file goes before what is there: the last file first keeps
        // the files in their order.
        if (mode == MergeMode::InsertBefore)
            std::reverse(order.begin(), order.end());
    }
    for (qsizetype i = 0; i < order.size(); ++i) {
        const LogFileRef &file = order[i];
        FileResult r = logFile_import(file.path, fileMode, showProgress, file.size, limit);
        if (mode == MergeMode::Replace)
            fileMode = MergeMode::Append;
        if (QCoreApplication::instance())
            QCoreApplication::processEvents();
        if (r.failed()) {
            const bool full = r.code == FileResult::Code::TooManyRecords;
            run.failures.append(std::move(r));
            if (full) {
                run.notFitted = file.path;
                for (qsizetype j = i + 1; j < order.size(); ++j)
                    run.skipped << order[j].path;
                break;
            }
            continue;
        }
        ++run.filesImported;
        run.imported << file.path;
        if (r.oilName)
            run.oilName = r.oilName;
    }
    const bool untouched = run.filesImported == 0 && run.capacityFailure();
    m_store.data_changed = untouched ? markBefore : mode != MergeMode::Replace;
    return run;
}
