// nakos-tool info: a summary of one data file, one "key: value" line each.
#include "command.h"

#include "files/datafile.h"

#include "core/store.h"
#include "core/timetext.h"

#include <charconv>
#include <cstdio>

namespace {

// The shortest text that reads back as the same float ("850", "12.5", "-1").
QString shortest(float value) {
    char buf[32];
    const auto r = std::to_chars(buf, buf + sizeof buf, value);
    return QString::fromLatin1(buf, r.ptr - buf);
}

int info(const QStringList &args) {
    QString input;
    for (const QString &arg : args) {
        if (arg == QLatin1String("--log"))
            return toolFail(QStringLiteral(
                "info: --log needs the sensor log import, which this build does not have yet"));
        if (arg.startsWith(QLatin1String("--")))
            return toolUsage(QStringLiteral("info: unknown option '%1'").arg(arg), "info");
        if (!input.isEmpty())
            return toolUsage(QStringLiteral("info: takes one INPUT"), "info");
        input = arg;
    }
    if (input.isEmpty())
        return toolUsage(QStringLiteral("info: needs an INPUT"), "info");

    MeasurementStore store;
    DataFile dataFile(store);
    const FileResult r = dataFile.dataFile_load(input, MergeMode::Replace, false);
    if (r.failed())
        return toolFail(QStringLiteral("info: ") + r.message);

    const int32_t n = store.dataPoint_count;
    const QString text =
        QStringLiteral("points: %1\nfirst: %2\nlast: %3\noilname: %4\nalarmthreshold: %5\n"
                       "calsource: %6\ncaltable: %7\n")
            .arg(n)
            .arg(n > 0 ? stampText(store.dataPoints[0]) : QString(),
                 n > 0 ? stampText(store.dataPoints[size_t(n - 1)]) : QString(), store.oilName,
                 shortest(store.alarmThreshold))
            .arg(store.calSource.count)
            .arg(store.calTable.count);
    std::fputs(text.toLocal8Bit().constData(), stdout);
    return 0;
}

const ToolCommand command("info", "[--log] INPUT", info);

} // namespace
