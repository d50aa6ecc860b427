#include "inputs.h"

#include "files/datafile.h"
#include "files/logchain.h"
#include "files/logimport.h"

#include "core/store.h"

#include <QFileInfo>

namespace {

QString runFailure(const LogImportRun &run, const QString &input) {
    if (run.noRoom)
        return QStringLiteral("no room left in memory for \"%1\" (100 or fewer free data points)")
            .arg(input);
    return run.failures.isEmpty() ? QString() : run.failures.constFirst().message;
}

} // namespace

QString loadInputs(MeasurementStore &store, const QStringList &inputs, InputKind kind, bool insert,
                   FileProgress *progress) {
    const bool show = progress != nullptr;
    const MergeMode further = insert ? MergeMode::InsertBefore : MergeMode::Append;
    if (kind == InputKind::DataFile) {
        DataFile dataFile(store, progress);
        MergeMode mode = MergeMode::Replace;
        for (const QString &input : inputs) {
            const FileResult r = dataFile.dataFile_load(input, mode, show);
            if (r.failed())
                return r.message;
            mode = further;
        }
        return QString();
    }

    LogImport import(store, progress);
    if (kind == InputKind::Chain) {
        if (inputs.size() != 1)
            return QStringLiteral("--chain takes one chain start file");
        const QString &start = inputs.constFirst();
        if (!logchain::isStartName(QFileInfo(start).fileName()))
            return logchain::invalidStartText + QStringLiteral(": \"%1\"").arg(start);
        const QList<LogFileRef> chain = logchain::collect(start);
        if (chain.isEmpty())
            return FileResult::openFailed(start).message;
        return runFailure(import.logFiles_import(
                              chain, insert ? MergeMode::InsertBefore : MergeMode::Replace, show),
                          start);
    }
    MergeMode mode = MergeMode::Replace;
    for (const QString &input : inputs) {
        const QString failure =
            runFailure(import.logFiles_import({logFile_ref(input)}, mode, show), input);
        if (!failure.isEmpty())
            return failure;
        mode = further;
    }
    return QString();
}
