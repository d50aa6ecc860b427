// nakos-tool convert: native data files or sensor logs in, one native or
// CSV file out.
#include "command.h"
#include "inputs.h"
#include "terminalprogress.h"

#include "files/csvexport.h"
#include "files/datafile.h"

#include "core/store.h"

namespace {

int convert(const QStringList &args) {
    bool insert = false;
    InputKind kind = InputKind::DataFile;
    QStringList files;
    for (const QString &arg : args) {
        if (arg == QLatin1String("--insert")) {
            insert = true;
        } else if (arg == QLatin1String("--log") || arg == QLatin1String("--chain")) {
            const InputKind k =
                arg == QLatin1String("--log") ? InputKind::LogFile : InputKind::Chain;
            if (kind != InputKind::DataFile && kind != k)
                return toolFail(QStringLiteral("convert: --log and --chain exclude each other"));
            kind = k;
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
    const QString failure = loadInputs(store, files, kind, insert, progress.get());
    if (!failure.isEmpty())
        return toolFail(QStringLiteral("convert: ") + failure);

    DataFile dataFile(store, progress.get());
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
