// nakos-tool info: a summary of one data or log file, one "key: value" line each.
#include "command.h"
#include "inputs.h"

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
    InputKind kind = InputKind::DataFile;
    for (const QString &arg : args) {
        if (arg == QLatin1String("--log")) {
            kind = InputKind::LogFile;
            continue;
        }
        if (arg.startsWith(QLatin1String("--")))
            return toolUsage(QStringLiteral("info: unknown option '%1'").arg(arg), "info");
        if (!input.isEmpty())
            return toolUsage(QStringLiteral("info: takes one INPUT"), "info");
        input = arg;
    }
    if (input.isEmpty())
        return toolUsage(QStringLiteral("info: needs an INPUT"), "info");

    MeasurementStore store;
    const QString failure = loadInputs(store, {input}, kind, false);
    if (!failure.isEmpty())
        return toolFail(QStringLiteral("info: ") + failure);

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
