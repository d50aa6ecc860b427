// nakos-tool collect: the fleet's readings read back from the MQTT broker
// into one native data file per sensor, OUTDIR/<sensor>.txt, which File >
// Open reads as any other. It subscribes to <prefix>/+/reading and
// <prefix>/+/meta with QoS 1 in a persistent session (a fixed client id,
// cleansession off), so what the broker queued while it was away comes when
// it is back.
#include "command.h"
#include "stopsignals.h"

#include "core/numbers.h"
#include "core/store.h"
#include "files/datafile.h"
#include "telemetry/mqttclient.h"
#include "telemetry/telemetryconfig.h"
#include "telemetry/telemetrypayload.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSaveFile>
#include <QTimer>

#include <cstdio>
#include <map>
#include <memory>

namespace {

// One sensor's readings: a store as the program keeps it, and the newest
// time stamp in it. A reading not newer than that is a repeat (the
// publishers send in time order) and dropped.
struct Sensor {
    std::unique_ptr<MeasurementStore> store = std::make_unique<MeasurementStore>();
    QString path;
    DataPoint newest;
    bool hasNewest = false;
    bool changed = false;
};

bool isNewer(const DataPoint &a, const DataPoint &b) {
    const auto key = [](const DataPoint &p) {
        return std::tuple(p.year, p.month, p.day, p.hour, p.minute, p.second);
    };
    return key(a) > key(b);
}

class Collector : public QObject {
public:
    Collector(const QString &outDir, const QString &prefix) : m_dir(outDir), m_prefix(prefix) {}

    void onMessage(const QByteArray &topic, const QByteArray &payload) {
        // <prefix>/<sensor>/reading or /meta
        const QString t = QString::fromUtf8(topic);
        if (!t.startsWith(m_prefix + QLatin1Char('/')))
            return;
        const QStringList rest = t.mid(m_prefix.size() + 1).split(QLatin1Char('/'));
        if (rest.size() != 2 || !telemetry_isValidId(rest[0]))
            return;
        Sensor &s = sensor(rest[0]);
        if (rest[1] == QLatin1String("meta")) {
            if (!telemetry_parseMeta(payload, *s.store))
                s.changed = true;
            return;
        }
        DataPoint p;
        if (telemetry_parseReading(payload, p) || (s.hasNewest && !isNewer(p, s.newest)))
            return;
        if (s.store->dataPoint_count >= MeasurementStore::capacity)
            rollOver(s);
        if (s.store->append(p) == AppendResult::Added) {
            s.newest = p;
            s.hasNewest = true;
            s.changed = true;
        }
    }

    // Writes every file whose readings changed; true when one failed.
    bool saveAll() {
        bool failed = false;
        for (auto &[id, s] : m_sensors) {
            if (s.changed && save(s, s.path))
                failed = true;
        }
        return failed;
    }

private:
    Sensor &sensor(const QString &id) {
        auto found = m_sensors.find(id);
        if (found != m_sensors.end())
            return found->second;
        Sensor &s = m_sensors[id];
        s.path = QDir(m_dir).filePath(id + QStringLiteral(".txt"));
        // A collector started again goes on with the file it left.
        if (QFile::exists(s.path)) {
            DataFile file(*s.store);
            const FileResult loaded = file.dataFile_load(s.path, MergeMode::Replace, false);
            if (loaded.failed())
                toolFail(QStringLiteral("collect: %1").arg(loaded.message));
            if (s.store->dataPoint_count > 0) {
                s.newest = s.store->dataPoints[size_t(s.store->dataPoint_count - 1)];
                s.hasNewest = true;
            }
        }
        return s;
    }

    bool save(Sensor &s, const QString &path) {
        QSaveFile file(path);
        if (!file.open(QIODevice::WriteOnly))
            return toolFail(QStringLiteral("collect: cannot write %1").arg(path)) != 0;
        DataFile writer(*s.store);
        const FileResult saved = writer.dataFile_save(file, false, path);
        if (saved.failed() || !file.commit())
            return toolFail(QStringLiteral("collect: cannot write %1").arg(path)) != 0;
        s.changed = false;
        return false;
    }

    // A full memory goes to <sensor>_<first stamp>.txt; the sensor's file
    // starts again empty, with the same metadata.
    void rollOver(Sensor &s) {
        const DataPoint &first = s.store->dataPoints[0];
        const QString stamp =
            QString::asprintf("%04d%02d%02d_%02d%02d%02d", first.year, first.month, first.day,
                              first.hour, first.minute, first.second);
        const QString id = QFileInfo(s.path).completeBaseName();
        save(s, QDir(m_dir).filePath(id + QLatin1Char('_') + stamp + QStringLiteral(".txt")));
        const float threshold = s.store->alarmThreshold;
        s.store->clear();
        s.store->alarmThreshold = threshold;
        s.changed = true;
    }

    QString m_dir;
    QString m_prefix;
    std::map<QString, Sensor> m_sensors;
};

int runCollect(const QStringList &args) {
    TelemetryConfig config;
    QString outDir;
    int saveSeconds = 60;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString &a = args[i];
        const bool takesValue =
            a == QLatin1String("--mqtt") || a == QLatin1String("--mqtt-prefix") ||
            a == QLatin1String("--mqtt-ca") || a == QLatin1String("--mqtt-password-file") ||
            a == QLatin1String("--client-id") || a == QLatin1String("--save-every");
        if (!takesValue) {
            if (a.startsWith(QLatin1String("--")) || !outDir.isEmpty())
                return toolUsage(
                    a.startsWith(QLatin1String("--"))
                        ? QStringLiteral("collect: unknown option '%1'").arg(a)
                        : QStringLiteral("collect: expected --mqtt URL and one OUTDIR"),
                    "collect");
            outDir = a;
            continue;
        }
        if (i + 1 >= args.size())
            return toolUsage(QStringLiteral("collect: %1 needs a value").arg(a), "collect");
        const QString v = args[++i];
        if (a == QLatin1String("--mqtt"))
            config.url = v;
        else if (a == QLatin1String("--mqtt-prefix"))
            config.prefix = v;
        else if (a == QLatin1String("--mqtt-ca"))
            config.caFile = v;
        else if (a == QLatin1String("--mqtt-password-file"))
            config.passwordFile = v;
        else if (a == QLatin1String("--client-id"))
            config.clientId = v;
        else if (const std::optional<int32_t> n = parseInteger(QStringView(v), 1, 86400))
            saveSeconds = *n;
        else
            return toolUsage(
                QStringLiteral("collect: --save-every must be a positive whole number"), "collect");
    }
    if (config.url.isEmpty() || outDir.isEmpty())
        return toolUsage(QStringLiteral("collect: expected --mqtt URL and one OUTDIR"), "collect");
    config.sensorId = QStringLiteral("collect");
    if (config.clientId.isEmpty())
        config.clientId = QStringLiteral("nakos-collect-") +
                          QString(config.prefix).replace(QLatin1Char('/'), QLatin1Char('-'));
    if (const QString error = telemetry_validate(config); !error.isEmpty())
        return toolUsage(QStringLiteral("collect: ") + error, "collect");
    if (!QDir().mkpath(outDir))
        return toolFail(QStringLiteral("collect: cannot make %1").arg(outDir));

    Collector collector(outDir, config.prefix);
    MqttClient client;
    QObject::connect(&client, &MqttClient::messageArrived, &collector, &Collector::onMessage);
    const auto say = [&](const QString &text) {
        std::fprintf(stderr, "nakos-tool: collect %s: %s\n", qPrintable(config.url),
                     qPrintable(text));
    };
    QObject::connect(&client, &MqttClient::connected, [&] { say(QStringLiteral("connected")); });
    QObject::connect(&client, &MqttClient::connectionProblem, say);
    QObject::connect(&client, &MqttClient::subscribed, [&] { say(QStringLiteral("subscribed")); });
    client.subscribe((config.prefix + QStringLiteral("/+/reading")).toUtf8(), 1);
    client.subscribe((config.prefix + QStringLiteral("/+/meta")).toUtf8(), 1);
    MqttOptions options = mqttOptionsFor(config);
    options.cleanSession = false;
    if (const QString error = client.start(options); !error.isEmpty())
        return toolFail(QStringLiteral("collect: ") + error);

    QTimer saver;
    QObject::connect(&saver, &QTimer::timeout, &collector, [&] { collector.saveAll(); });
    saver.start(saveSeconds * 1000);
    const StopSignals stopSignals;
    QCoreApplication::exec();
    client.stop(2000);
    // Messages that arrived before the stop are still queued for this thread.
    QCoreApplication::sendPostedEvents();
    return collector.saveAll() ? 1 : 0;
}

const ToolCommand
    collectCommand("collect",
                   "--mqtt URL [--mqtt-prefix P] [--mqtt-ca FILE] [--mqtt-password-file FILE] "
                   "[--client-id ID] [--save-every SECONDS] OUTDIR",
                   runCollect);

} // namespace
