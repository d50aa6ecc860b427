// nakos-sensor-sim: a simulated oil sensor on a pseudo-terminal. Prints the
// device path to open, then answers until interrupted. With --write-logs it
// writes the sensor's daily log files instead and exits.
#include "sensorsim.h"
#include "simlogs.h"

#include "core/numbers.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <optional>

namespace {

// A bad command line: one line on standard error, with a pointer to --help
// for a wrong option (not for a bad value); 2 is the status of it.
int usageError(const QString &message, bool hint) {
    std::fprintf(stderr, "nakos-sensor-sim: %s\n", qPrintable(message));
    if (hint)
        std::fputs("Try 'nakos-sensor-sim --help' for more information.\n", stderr);
    return 2;
}

} // namespace

int main(int argc, char **argv) {
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("nakos-sensor-sim"));
    QCoreApplication::setApplicationVersion(QStringLiteral(NAKOS_VERSION));
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Simulated oil sensor; prints the device to open and answers "
                       "\"list\", \"alarmlimit get\" and \"calibration get\"."));
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    const QCommandLineOption device(QStringLiteral("device"),
                                    QStringLiteral("Use this serial device instead of a "
                                                   "new pseudo-terminal."),
                                    QStringLiteral("path"));
    const QCommandLineOption interval(QStringLiteral("interval"),
                                      QStringLiteral("Log a reading every MS (default 1000)."),
                                      QStringLiteral("ms"), QStringLiteral("1000"));
    const QCommandLineOption logSize(QStringLiteral("log-size"),
                                     QStringLiteral("Readings kept in the log (default 100)."),
                                     QStringLiteral("n"), QStringLiteral("100"));
    const QCommandLineOption burst(QStringLiteral("burst"),
                                   QStringLiteral("Log N readings at every --interval tick, a "
                                                  "second apart in their stamps (default 1)."),
                                   QStringLiteral("n"), QStringLiteral("1"));
    const QCommandLineOption prefill(QStringLiteral("prefill"),
                                     QStringLiteral("Readings logged before the start."),
                                     QStringLiteral("n"), QStringLiteral("0"));
    const QCommandLineOption seed(QStringLiteral("seed"), QStringLiteral("Random seed."),
                                  QStringLiteral("n"), QStringLiteral("1"));
    const QCommandLineOption stream(QStringLiteral("stream"),
                                    QStringLiteral("Oil stream number (default 1)."),
                                    QStringLiteral("n"), QStringLiteral("1"));
    const QCommandLineOption alarm(QStringLiteral("alarm-value"),
                                   QStringLiteral("Alarm limit in ppm (default 500)."),
                                   QStringLiteral("ppm"), QStringLiteral("500"));
    const QCommandLineOption noEcho(QStringLiteral("no-echo"),
                                    QStringLiteral("Do not echo commands."));
    const QCommandLineOption garbage(QStringLiteral("garbage"),
                                     QStringLiteral("Random bytes among the readings."));
    const QCommandLineOption nul(QStringLiteral("nul"),
                                 QStringLiteral("NUL bytes inside reading lines."));
    const QCommandLineOption gap(QStringLiteral("gap"),
                                 QStringLiteral("A pause of MS in the middle of every reply."),
                                 QStringLiteral("ms"));
    const QCommandLineOption slow(
        QStringLiteral("slow"), QStringLiteral("Send reply bytes MS apart."), QStringLiteral("ms"));
    const QCommandLineOption silent(QStringLiteral("silent"), QStringLiteral("Never answer."));
    const QCommandLineOption endless(QStringLiteral("endless"),
                                     QStringLiteral("Keep sending readings after \"list\"."));
    const QCommandLineOption flood(QStringLiteral("flood"),
                                   QStringLiteral("As --endless, as fast as the port takes it."));
    const QCommandLineOption closeMid(QStringLiteral("close-mid-reply"),
                                      QStringLiteral("Close the port half way through a reply "
                                                     "and exit."));
    const QCommandLineOption writeLogs(
        QStringLiteral("write-logs"),
        QStringLiteral(
            "Write daily log files into DIR (made if missing; named as the sensor names them, a "
            "reading every --interval, 60000 ms unless given) and exit."),
        QStringLiteral("dir"));
    const QCommandLineOption days(QStringLiteral("days"),
                                  QStringLiteral("Days of logs to write (default 1)."),
                                  QStringLiteral("n"), QStringLiteral("1"));
    const QCommandLineOption format(QStringLiteral("format"),
                                    QStringLiteral("Log line format: A, B or keyword (default A)."),
                                    QStringLiteral("format"), QStringLiteral("A"));
    const QCommandLineOption start(QStringLiteral("start"),
                                   QStringLiteral("First day of the logs (default: the days "
                                                  "up to today)."),
                                   QStringLiteral("YYYY-MM-DD"));
    const QCommandLineOption badChecks(QStringLiteral("bad-checks"),
                                       QStringLiteral("Records with a wrong check number, "
                                                      "spread over all days (A and B)."),
                                       QStringLiteral("k"), QStringLiteral("0"));
    parser.addOptions({device,   interval,  burst, logSize, prefill, seed,     stream,  alarm,
                       noEcho,   garbage,   nul,   gap,     slow,    silent,   endless, flood,
                       closeMid, writeLogs, days,  format,  start,   badChecks});
    // parse(), not process(): process() ends a bad command line with
    // status 1, and this program's tools use 2 for it.
    if (!parser.parse(QCoreApplication::arguments()))
        return usageError(parser.errorText(), true);
    if (parser.isSet(help) || parser.isSet(QStringLiteral("help-all"))) {
        std::fputs(qPrintable(parser.helpText()), stdout);
        return 0;
    }
    if (parser.isSet(version)) {
        std::printf("nakos-sensor-sim %s\n", NAKOS_VERSION);
        return 0;
    }
    if (!parser.positionalArguments().isEmpty())
        return usageError(
            QStringLiteral("unexpected argument '%1'").arg(parser.positionalArguments().first()),
            true);

    if (parser.isSet(writeLogs)) {
        SimLogOptions logs;
        logs.folder = parser.value(writeLogs);
        logs.days = parser.value(days).toInt();
        const QString f = parser.value(format);
        if (f == QLatin1String("A") || f == QLatin1String("B") || f == QLatin1String("keyword")) {
            logs.format = f == QLatin1String("A")   ? SimLogFormat::A
                          : f == QLatin1String("B") ? SimLogFormat::B
                                                    : SimLogFormat::Keyword;
        } else {
            std::fputs("nakos-sensor-sim: --format takes A, B or keyword\n", stderr);
            return 2;
        }
        logs.start = parser.isSet(start) ? QDate::fromString(parser.value(start), Qt::ISODate)
                                         : QDate::currentDate().addDays(1 - std::max(1, logs.days));
        if (parser.isSet(interval))
            logs.intervalSeconds = parser.value(interval).toInt() / 1000;
        logs.badChecks = parser.value(badChecks).toInt();
        logs.seed = parser.value(seed).toUInt();
        logs.stream = parser.value(stream).toInt();
        QString error;
        const QStringList written = writeSimLogs(logs, &error);
        if (written.isEmpty()) {
            std::fprintf(stderr, "nakos-sensor-sim: %s\n", qPrintable(error));
            return error.startsWith(QLatin1String("cannot")) ? 1 : 2;
        }
        for (const QString &path : written)
            std::printf("%s\n", qPrintable(path));
        return 0;
    }

    SimOptions options;
    int32_t seedValue = 1;
    const struct {
        const QCommandLineOption &option;
        int32_t min;
        int32_t *value;
    } numbers[] = {
        {interval, 0, &options.readingIntervalMs},
        {logSize, 1, &options.logSize},
        {burst, 1, &options.readingsPerTick},
        {prefill, 0, &options.prefill},
        {seed, 0, &seedValue},
        {stream, 0, &options.stream},
        {gap, 0, &options.faults.gapMs},
        {slow, 0, &options.faults.byteDelayMs},
    };
    for (const auto &n : numbers) {
        if (!parser.isSet(n.option) && parser.value(n.option).isEmpty())
            continue; // an option without a default that was not given
        const std::optional<int32_t> v =
            parseInteger(QStringView(parser.value(n.option)), n.min, INT32_MAX);
        if (!v)
            return usageError(QStringLiteral("--%1 takes a whole number of %2 or more, not '%3'")
                                  .arg(n.option.names().constFirst())
                                  .arg(n.min)
                                  .arg(parser.value(n.option)),
                              false);
        *n.value = *v;
    }
    options.seed = uint32_t(seedValue);
    bool alarmOk = false;
    options.alarmValue = parser.value(alarm).toFloat(&alarmOk);
    if (!alarmOk)
        return usageError(
            QStringLiteral("--alarm-value takes a number, not '%1'").arg(parser.value(alarm)),
            false);
    options.faults.noEcho = parser.isSet(noEcho);
    options.faults.garbage = parser.isSet(garbage);
    options.faults.nulBytes = parser.isSet(nul);
    options.faults.silent = parser.isSet(silent);
    options.faults.endless = parser.isSet(endless);
    options.faults.flood = parser.isSet(flood);
    options.faults.closeMidReply = parser.isSet(closeMid);

    SensorSimulator sim(options);
    if (sim.open(parser.value(device))) {
        std::fprintf(stderr, "nakos-sensor-sim: cannot open %s\n",
                     parser.isSet(device) ? qPrintable(parser.value(device)) : "a pseudo-terminal");
        return 1;
    }
    QObject::connect(&sim, &SensorSimulator::unplugged, &app, [] {
        std::fputs("nakos-sensor-sim: port closed mid-reply\n", stderr);
        QCoreApplication::quit();
    });
    std::printf("%s\n", qPrintable(sim.portPath()));
    std::fflush(stdout);
    return app.exec();
}
