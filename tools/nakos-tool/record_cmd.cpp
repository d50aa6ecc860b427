// nakos-tool record: the periodic query without a window. It runs exactly
// the program's query (one immediate "list" poll, then every interval the
// alarm limit, the calibration tables and "list"), autosaves as the program
// does, and writes the store to OUTPUT when it stops: after N "list" polls,
// or on Ctrl-C / SIGTERM.
//
// For unattended stations: --full-stamp compares the hour in the duplicate
// test, --rollover archives a full store and goes on, and SIGUSR1 (and the
// end of the run) prints a status line of the link on standard error.
#include "command.h"
#include "modbus_options.h"

#include "core/clock.h"
#include "core/notifier.h"
#include "core/numbers.h"
#include "core/timetext.h"
#include "device/devicelink.h"
#include "files/filedialogs.h"
#include "session/monitorsession.h"
#include "settings/registrykey.h"
#include "stopsignals.h"
#include "telemetry_options.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QRegularExpression>

#include <cstdio>
#include <functional>
#include <memory>
#include <optional>

namespace {

struct RecordArgs {
    QString port;
    int polls = 0; // 0: until interrupted
    int intervalMs = DeviceLink::kQueryIntervalMs;
    QString output;

    // Station options.
    bool fullStamp = false; // the hour counts in the duplicate test
    bool rollover = false;  // a full store goes to an archive file
};

// Parses the fixed command line; on failure returns nothing and sets error.
std::optional<RecordArgs> parseArgs(const QStringList &args, QString &error) {
    RecordArgs r;
    QStringList rest;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString &a = args[i];
        // Station options: flags without a value.
        if (a == QLatin1String("--full-stamp") || a == QLatin1String("--rollover")) {
            (a == QLatin1String("--full-stamp") ? r.fullStamp : r.rollover) = true;
            continue;
        }
        const bool takesValue = a == QLatin1String("--port") || a == QLatin1String("--polls") ||
                                a == QLatin1String("--interval");
        if (!takesValue) {
            if (a.startsWith(QLatin1String("--"))) {
                error = QStringLiteral("record: unknown option '%1'").arg(a);
                return std::nullopt;
            }
            rest << a;
            continue;
        }
        if (i + 1 >= args.size()) {
            error = QStringLiteral("record: %1 needs a value").arg(a);
            return std::nullopt;
        }
        const QString value = args[++i];
        if (a == QLatin1String("--port")) {
            r.port = value;
            continue;
        }
        const std::optional<int32_t> n = parseInteger(QStringView(value), 1, 1 << 30);
        if (!n) {
            error = QStringLiteral("record: %1 must be a positive whole number").arg(a);
            return std::nullopt;
        }
        (a == QLatin1String("--polls") ? r.polls : r.intervalMs) = *n;
    }
    if (r.port.isEmpty() || rest.size() != 1) {
        error = QStringLiteral("record: expected --port DEVICE and one OUTPUT");
        return std::nullopt;
    }
    r.output = rest.first();
    return r;
}

// "3" or "COM3": a port number, mapped to a device as the program does.
std::optional<int> portNumber(const QString &port) {
    static const QRegularExpression number(QStringLiteral("^(?:COM)?([0-9]{1,4})$"),
                                           QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch m = number.match(port);
    if (!m.hasMatch())
        return std::nullopt;
    const int n = m.captured(1).toInt();
    return n >= 1 ? std::optional<int>(n) : std::nullopt;
}

// Message boxes become lines on standard error; nobody is there to answer.
class StderrNotifier : public Notifier {
public:
    Answer message(const QString &text, const QString &, Buttons, Icon) override {
        std::fprintf(stderr, "nakos-tool: %s\n", qPrintable(text));
        return Answer::Ok;
    }
};

// The station's status line: what the link did since the start, when the
// last new reading came and how full the store is.
void printStatus(const MonitorSession &session) {
    const LinkHealth &h = session.health();
    QString last = QStringLiteral("none");
    if (h.lastReading.isValid()) {
        last =
            h.lastReading.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")) +
            QStringLiteral(" (%1 s ago)").arg(h.lastReading.secsTo(QDateTime::currentDateTime()));
    }
    std::fprintf(stderr,
                 "nakos-tool record: polls with readings %llu, polls without port %llu, replies "
                 "without echo %llu, bytes received %llu, last new reading %s, points in store "
                 "%d\n",
                 static_cast<unsigned long long>(h.pollsWithReadings),
                 static_cast<unsigned long long>(h.pollsWithoutPort),
                 static_cast<unsigned long long>(h.repliesWithoutEcho),
                 static_cast<unsigned long long>(h.bytesReceived), qPrintable(last),
                 int(session.store().dataPoint_count));
}

int runRecord(const QStringList &commandLine) {
    QStringList args = commandLine;
    RecordTelemetry telemetry;
    RecordModbus modbus;
    QString error = telemetry.takeOptions(args);
    if (error.isEmpty())
        error = modbus.takeOptions(args);
    const std::optional<RecordArgs> a = error.isEmpty() ? parseArgs(args, error) : std::nullopt;
    if (!a)
        return toolUsage(error, "record");

    // The program's engine without its windows: no dialogs, messages on
    // standard error, the settings as the program keeps them.
    StderrNotifier notifier;
    SystemClock clock;
    NoFileDialogs dialogs;
    MeasurementStore store;
    MonitorSession session({notifier, clock, dialogs}, store, openProgramKey());
    // As early as can be: a SIGUSR1 before it would end the process.
    const StopSignals stopSignals([&session] { printStatus(session); });
    session.startUp_engine(QDir::currentPath());
    if (const std::optional<int> n = portNumber(a->port))
        session.port_select(*n);
    else
        session.port_selectDevice(a->port);
    session.query_setInterval(a->intervalMs);
    if (const QString failed = telemetry.attach(session, a->output); !failed.isEmpty())
        return toolFail(failed);
    modbus.attach(session);

    // Station options.
    store.setFullStampDuplicates(a->fullStamp);
    if (a->rollover) {
        session.recording_setRollover(a->output);
        QObject::connect(&session, &MonitorSession::rolledOver, &session,
                         [](const QString &file, int points, const QString &error) {
                             if (error.isEmpty())
                                 std::fprintf(stderr,
                                              "nakos-tool record: %d readings archived in %s\n",
                                              points, qPrintable(QDir::toNativeSeparators(file)));
                             else
                                 std::fprintf(stderr, "nakos-tool: %s\n", qPrintable(error));
                         });
    }

    int polls = 0;
    QObject::connect(&session, &MonitorSession::pollFinished, &session, [&] {
        if (a->polls > 0 && ++polls >= a->polls) {
            session.query_stop();
            QCoreApplication::exit(0);
        }
    });

    session.startUp_finish();
    session.query_start();
    // The immediate poll may already have ended the run (a missing port).
    if (a->polls == 0 || polls < a->polls)
        QCoreApplication::exec();

    printStatus(session);
    telemetry.finish();
    const FileResult saved = session.recording_finish(a->output);
    if (saved.failed())
        return toolFail(saved.message);
    return 0;
}

const ToolCommand recordCommand(
    "record",
    "--port DEVICE [--polls N] [--interval MS] [--full-stamp] [--rollover] [--mqtt URL "
    "[--sensor-id ID] [--mqtt-prefix P] [--mqtt-ca FILE] [--mqtt-password-file FILE]] [--modbus "
    "HOST[:PORT] [--modbus-unit N] "
    "[--modbus-word-order high-first|low-first]] OUTPUT",
    runRecord,
    "  --full-stamp  compare the hour too in the duplicate test. Without it a reading\n"
    "                at the same minute and second of the same day as a stored one is\n"
    "                dropped, so a sensor logging every minute keeps only the first\n"
    "                hour of each day.\n"
    "  --rollover    when the memory is full (130000 readings), write it beside\n"
    "                OUTPUT as <OUTPUT name>_<first>_<last>.txt (time stamps as\n"
    "                yyyymmddThhmmss), empty it and go on. Without it, readings\n"
    "                beyond 130000 are dropped.\n"
    "  --mqtt URL    also publish every reading to an MQTT broker, mqtt://[user@]host[:port]\n"
    "                or mqtts://... (TLS); --sensor-id, --mqtt-prefix, --mqtt-ca and\n"
    "                --mqtt-password-file (the password is never on the command line).\n"
    "  --modbus HOST[:PORT]  serve the newest reading as Modbus TCP registers on HOST\n"
    "                (an IP address; 0.0.0.0 for all) and PORT (1502 unless given;\n"
    "                below 1024 needs privileges); --modbus-unit N answers unit id N\n"
    "                (1 unless given), --modbus-word-order low-first puts the low word\n"
    "                of each float first. A port that cannot be bound is reported and\n"
    "                the recording goes on. The register map is in the manual page.\n"
    "  SIGUSR1 prints a status line on standard error, as the end of the run does.\n");

} // namespace
