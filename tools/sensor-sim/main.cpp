// nakos-sensor-sim: a simulated oil sensor on a pseudo-terminal. Prints the
// device path to open, then answers until interrupted. With --write-logs it
// writes the sensor's daily log files instead and exits.
#include "sensorsim.h"
#include "simlogs.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <algorithm>
#include <cstdio>

int main(int argc, char **argv) {
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Simulated oil sensor; prints the device to open and answers "
                       "\"list\", \"alarmlimit get\" and \"calibration get\"."));
    parser.addHelpOption();
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
    const QCommandLineOption closeMid(QStringLiteral("close-mid-reply"),
                                      QStringLiteral("Close the port half way through a reply "
                                                     "and exit."));
    const QCommandLineOption writeLogs(
        QStringLiteral("write-logs"),
        QStringLiteral("Write daily log files into DIR (named as the sensor names them, a "
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
    parser.addOptions({device,   interval,  logSize, prefill, seed,  stream,   alarm,
                       noEcho,   garbage,   nul,     gap,     slow,  silent,   endless,
                       closeMid, writeLogs, days,    format,  start, badChecks});
    parser.process(app);

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
    options.readingIntervalMs = parser.value(interval).toInt();
    options.logSize = std::max(1, parser.value(logSize).toInt());
    options.prefill = parser.value(prefill).toInt();
    options.seed = parser.value(seed).toUInt();
    options.stream = parser.value(stream).toInt();
    options.alarmValue = parser.value(alarm).toFloat();
    options.faults.noEcho = parser.isSet(noEcho);
    options.faults.garbage = parser.isSet(garbage);
    options.faults.nulBytes = parser.isSet(nul);
    options.faults.gapMs = parser.value(gap).toInt();
    options.faults.byteDelayMs = parser.value(slow).toInt();
    options.faults.silent = parser.isSet(silent);
    options.faults.endless = parser.isSet(endless);
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
