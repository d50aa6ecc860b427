// nakos-sensor-sim: a simulated oil sensor on a pseudo-terminal. Prints the
// device path to open, then answers until interrupted.
#include "sensorsim.h"

#include <QCommandLineParser>
#include <QCoreApplication>

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
    const QCommandLineOption flood(QStringLiteral("flood"),
                                   QStringLiteral("As --endless, as fast as the port takes it."));
    const QCommandLineOption closeMid(QStringLiteral("close-mid-reply"),
                                      QStringLiteral("Close the port half way through a reply "
                                                     "and exit."));
    parser.addOptions({device, interval, logSize, prefill, seed, stream, alarm, noEcho, garbage,
                       nul, gap, slow, silent, endless, flood, closeMid});
    parser.process(app);

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
