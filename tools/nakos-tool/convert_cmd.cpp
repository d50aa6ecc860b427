// nakos-tool convert: native data files in, one native or CSV file out.
#include "command.h"
#include "terminalprogress.h"

#include "files/csvexport.h"
#include "files/datafile.h"

#include "core/store.h"

namespace {

int convert(const QStringList &args) {
    bool insert = false;
    QStringList files;
    for (const QString &arg : args) {
        if (arg == QLatin1String("--insert")) {
            insert = true;
        } else if (arg == QLatin1String("--log") || arg == QLatin1String("--chain")) {
            return toolFail(QStringLiteral("convert: %1 needs the sensor log import, which this "
                                           "build does not have yet")
                                .arg(arg));
        } else if (arg.startsWith(QLatin1String("--"))) {
            return toolUsage(QStringLiteral("convert: unknown option '%1'").arg(arg), "convert");
        } else {
            files << arg;
        }
    }
    if (files.size() < 2)
        return toolUsage(QStringLiteral("convert: needs at least one INPUT and an OUTPUT"),
                         "convert");
    const QString output = files.takeLast();

    MeasurementStore store;
    // Large files take a while: a progress line when someone watches.
    const std::unique_ptr<TerminalProgress> progress = TerminalProgress::onStandardError();
    const bool showProgress = progress != nullptr;
    DataFile dataFile(store, progress.get());
    // The first input replaces the empty store; the others go after it, or
    // before it with --insert, as the Open command's modes do.
    MergeMode mode = MergeMode::Replace;
    for (const QString &input : std::as_const(files)) {
        const FileResult r = dataFile.dataFile_load(input, mode, showProgress);
        if (r.failed())
            return toolFail(QStringLiteral("convert: ") + r.message);
        mode = insert ? MergeMode::InsertBefore : MergeMode::Append;
    }

    FileResult written;
    if (output.endsWith(QLatin1String(".csv"), Qt::CaseInsensitive)) {
        CsvExport csv(store, progress.get());
        written = csv.csvFile_export(output, showProgress);
    } else {
        written = dataFile.dataFile_save(output, showProgress);
    }
    if (written.failed())
        return toolFail(QStringLiteral("convert: ") + written.message);
    return 0;
}

const ToolCommand command("convert", "[--log | --chain] [--insert] INPUT... OUTPUT", convert);

} // namespace
