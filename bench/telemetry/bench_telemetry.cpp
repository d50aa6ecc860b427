// Telemetry figures against a real Mosquitto broker:
//   bench_telemetry latency [SECONDS]   end of a "list" reply to the
//       subscriber's receipt, with nakos-tool record on the simulated sensor
//   bench_telemetry backlog [READINGS]  readings held while the broker is
//       down (and the publisher restarted), then delivered
//   bench_telemetry fleet [SENSORS] [SECONDS]  SENSORS recorders at one
//       reading a second, one broker, one nakos-tool collect
#include "core/store.h"
#include "device/linkhealth.h"
#include "files/datafile.h"
#include "sensorsim.h"
#include "support/testbroker.h"
#include "telemetry/mqttclient.h"
#include "telemetry/telemetrypublisher.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <numeric>
#include <set>
#include <vector>

namespace {

const QString kTool = QStringLiteral(NAKOS_BINARY_DIR "/tools/nakos-tool/nakos-tool");

double percentile(std::vector<double> v, double q) {
    if (v.empty())
        return 0;
    std::sort(v.begin(), v.end());
    return v[std::min(v.size() - 1, size_t(q * double(v.size() - 1) + 0.5))];
}

// A field in kB of /proc/PID/status (VmRSS:) or smaps_rollup (Pss:).
qint64 procKb(qint64 pid, const char *file, const QByteArray &field) {
    QFile f(QStringLiteral("/proc/%1/%2").arg(pid).arg(QLatin1String(file)));
    if (!f.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : f.readAll().split('\n'))
        if (line.startsWith(field))
            return line.mid(field.size()).trimmed().split(' ').first().toLongLong();
    return 0;
}

qint64 rssKb(qint64 pid) {
    return procKb(pid, "status", "VmRSS:");
}

// The process's share of its pages: what it costs beside others that map
// the same libraries.
qint64 pssKb(qint64 pid) {
    return procKb(pid, "smaps_rollup", "Pss:");
}

QPair<qint64, qint64> diskUse(const QString &dir) {
    qint64 bytes = 0, files = 0;
    QDirIterator it(dir, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        it.next();
        bytes += it.fileInfo().size();
        ++files;
    }
    return {bytes, files};
}

QByteArray timeOf(const QByteArray &payload) {
    const int at = payload.indexOf("\"time\":\"");
    return at < 0 ? QByteArray() : payload.mid(at + 8, 19);
}

QByteArray sensorOf(const QByteArray &topic) {
    return topic.split('/').value(1);
}

struct Subscriber {
    Subscriber(int port, const QByteArray &filter) {
        MqttOptions o;
        o.serverUri = QStringLiteral("tcp://127.0.0.1:%1").arg(port);
        o.clientId = QStringLiteral("bench-subscriber");
        o.cleanSession = true;
        bool subscribed = false;
        QObject::connect(&client, &MqttClient::subscribed, [&] { subscribed = true; });
        client.subscribe(filter, 1);
        client.start(o);
        (void)QTest::qWaitFor([&] { return subscribed; }, 20000);
        QObject::disconnect(&client, &MqttClient::subscribed, nullptr, nullptr);
    }
    MqttClient client;
};

QStringList recordArgs(const QString &port, const QString &url, const QString &id, int intervalMs) {
    return {QStringLiteral("record"),
            QStringLiteral("--port"),
            port,
            QStringLiteral("--interval"),
            QString::number(intervalMs),
            QStringLiteral("--mqtt"),
            url,
            QStringLiteral("--sensor-id"),
            id,
            QStringLiteral("out.txt")};
}

int latency(int seconds) {
    TestBroker broker;
    if (broker.start())
        return 1;
    QElapsedTimer clock;
    clock.start();
    Subscriber sub(broker.port(), "nakos/+/reading");
    std::vector<qint64> listEnds;
    std::vector<double> latencies;
    std::set<QByteArray> seen;
    QObject::connect(&sub.client, &MqttClient::messageArrived,
                     [&](const QByteArray &, const QByteArray &p) {
                         const qint64 now = clock.elapsed();
                         if (!seen.insert(timeOf(p)).second || listEnds.empty())
                             return;
                         latencies.push_back(double(now - listEnds.back()));
                     });
    SensorSimulator sim(SimOptions{.readingIntervalMs = 1000, .faults = {}});
    if (sim.open())
        return 1;
    bool listing = false;
    QObject::connect(&sim, &SensorSimulator::commandReceived,
                     [&](const QByteArray &c) { listing = c == "list"; });
    QObject::connect(&sim, &SensorSimulator::replySent, [&] {
        if (listing)
            listEnds.push_back(clock.elapsed());
    });
    QTemporaryDir dir;
    QProcess rec;
    rec.setWorkingDirectory(dir.path());
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("NAKOS_SETTINGS_FILE"), dir.filePath(QStringLiteral("s.reg")));
    rec.setProcessEnvironment(env);
    rec.start(kTool, recordArgs(sim.portPath(), broker.url(), QStringLiteral("ship1"), 1000));
    QTest::qWait(seconds * 1000);
    rec.terminate();
    rec.waitForFinished(10000);
    // The first list brings the readings logged before the start; later
    // ones one new reading each.
    if (!latencies.empty())
        latencies.erase(latencies.begin());
    std::printf("latency: %zu readings over %d s, end of the sensor's \"list\" reply to the "
                "subscriber's receipt: median %.0f ms, p99 %.0f ms, max %.0f ms\n",
                latencies.size(), seconds, percentile(latencies, 0.5), percentile(latencies, 0.99),
                percentile(latencies, 1.0));
    return 0;
}

int backlog(int readings) {
    TestBroker broker;
    QTemporaryDir dir;
    TelemetryConfig config;
    config.url = broker.url();
    config.sensorId = QStringLiteral("ship1");
    config.outboxDir = dir.filePath(QStringLiteral("outbox"));
    telemetry_validate(config);
    const qint64 rss0 = rssKb(QCoreApplication::applicationPid());
    auto publisher = std::make_unique<TelemetryPublisher>();
    publisher->start(config);
    QElapsedTimer t;
    t.start();
    DataPoint p{2026, 1, 1, 0, 0, 0, 150.0f, 45.2f, 1013.0f, 0.12f, 1, 2100.0f, 2345.0f};
    QDateTime stamp(QDate(2026, 1, 1), QTime(0, 0));
    for (int i = 0; i < readings; ++i) {
        p.year = int16_t(stamp.date().year());
        p.month = uint8_t(stamp.date().month());
        p.day = uint8_t(stamp.date().day());
        p.hour = uint8_t(stamp.time().hour());
        p.minute = uint8_t(stamp.time().minute());
        p.second = uint8_t(stamp.time().second());
        publisher->publishReading(p);
        stamp = stamp.addSecs(4);
    }
    const qint64 enqueueMs = t.elapsed();
    const qint64 rss1 = rssKb(QCoreApplication::applicationPid());
    const auto [bytes, files] = diskUse(config.outboxDir);
    std::printf("backlog: %d readings published while the broker is down: %lld ms (%.1f us "
                "each, on the caller's thread), refused %lld\n",
                readings, enqueueMs, 1000.0 * double(enqueueMs) / readings, publisher->refused());
    std::printf("backlog: outbox on disk %.1f MB in %lld files; publisher memory +%.1f MB\n",
                double(bytes) / 1e6, files, double(rss1 - rss0) / 1024);
    // The recorder restarted meanwhile: the outbox read back.
    publisher.reset();
    t.restart();
    publisher = std::make_unique<TelemetryPublisher>();
    publisher->start(config);
    std::printf("backlog: a restarted publisher read the outbox back in %lld ms; memory +%.1f MB\n",
                t.elapsed(), double(rssKb(QCoreApplication::applicationPid()) - rss0) / 1024);

    if (broker.start())
        return 1;
    Subscriber sub(broker.port(), "nakos/+/reading");
    std::set<QByteArray> seen;
    qint64 received = 0;
    bool ordered = true;
    QByteArray last;
    QObject::connect(&sub.client, &MqttClient::messageArrived,
                     [&](const QByteArray &, const QByteArray &payload) {
                         const QByteArray time = timeOf(payload);
                         ++received;
                         if (seen.insert(time).second) {
                             ordered = ordered && time > last;
                             last = time;
                         }
                     });
    QElapsedTimer drain;
    drain.start();
    qint64 connectedAt = -1;
    QObject::connect(publisher.get(), &TelemetryPublisher::stateChanged, [&](const QString &s) {
        if (s == QLatin1String("connected"))
            connectedAt = drain.elapsed();
    });
    (void)QTest::qWaitFor([&] { return qsizetype(seen.size()) >= readings; }, 300000);
    const qint64 drainMs = drain.elapsed();
    std::printf("backlog: broker back: %zu of %d delivered (%lld messages, %s), %lld ms after the "
                "broker started, %lld ms after the publisher reconnected (%.0f readings/s)\n",
                seen.size(), readings, received, ordered ? "in order" : "NOT in order", drainMs,
                drainMs - connectedAt,
                1000.0 * double(seen.size()) / double(drainMs - connectedAt));
    (void)QTest::qWaitFor([&] { return publisher->outbox().waiting() == 0; }, 10000);
    std::printf("backlog: all acknowledged %lld ms after the broker started; %lld waiting, "
                "outbox on disk %lld bytes\n",
                drain.elapsed(), publisher->outbox().waiting(), diskUse(config.outboxDir).first);
    publisher->stop(2000);
    return 0;
}

int fleet(int sensors, int seconds) {
    TestBroker broker(QStringLiteral("max_queued_messages 1000000\nmax_inflight_messages 1000\n"));
    if (broker.start())
        return 1;
    Subscriber sub(broker.port(), "nakos/+/reading");
    std::set<QByteArray> seen;
    std::vector<double> endToEnd;
    QObject::connect(&sub.client, &MqttClient::messageArrived,
                     [&](const QByteArray &topic, const QByteArray &payload) {
                         const QByteArray time = timeOf(payload);
                         if (!seen.insert(sensorOf(topic) + ' ' + time).second)
                             return;
                         const QDateTime stamp = QDateTime::fromString(
                             QString::fromLatin1(time), QStringLiteral("yyyy-MM-ddTHH:mm:ss"));
                         endToEnd.push_back(double(stamp.msecsTo(QDateTime::currentDateTime())));
                     });
    QTemporaryDir dir;
    QProcess collect;
    collect.setWorkingDirectory(dir.path());
    collect.start(kTool,
                  {QStringLiteral("collect"), QStringLiteral("--mqtt"), broker.url(),
                   QStringLiteral("--save-every"), QStringLiteral("10"), QStringLiteral("fleet")});
    std::vector<std::unique_ptr<SensorSimulator>> sims;
    std::vector<std::unique_ptr<QProcess>> recs;
    std::vector<std::unique_ptr<QTemporaryDir>> dirs;
    for (int i = 0; i < sensors; ++i) {
        sims.push_back(std::make_unique<SensorSimulator>(
            SimOptions{.readingIntervalMs = 1000, .seed = uint32_t(i + 1), .faults = {}}));
        if (sims.back()->open())
            return 1;
        dirs.push_back(std::make_unique<QTemporaryDir>());
        auto rec = std::make_unique<QProcess>();
        rec->setWorkingDirectory(dirs.back()->path());
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("NAKOS_SETTINGS_FILE"),
                   dirs.back()->filePath(QStringLiteral("s.reg")));
        rec->setProcessEnvironment(env);
        rec->start(kTool, recordArgs(sims.back()->portPath(), broker.url(),
                                     QStringLiteral("s%1").arg(i), 1000));
        recs.push_back(std::move(rec));
    }
    QElapsedTimer t;
    t.start();
    QTest::qWait(seconds * 1000);
    std::vector<double> rss, pss;
    for (auto &r : recs) {
        rss.push_back(double(rssKb(r->processId())) / 1024);
        pss.push_back(double(pssKb(r->processId())) / 1024);
    }
    const qint64 collectRss = rssKb(collect.processId());
    for (auto &r : recs)
        r->terminate();
    for (auto &r : recs)
        r->waitForFinished(20000);
    const double runSeconds = double(t.elapsed()) / 1000;
    // What the recorders took, against what arrived.
    qint64 taken = 0;
    std::set<QByteArray> recorded;
    for (int i = 0; i < sensors; ++i) {
        QFile f(dirs[size_t(i)]->filePath(QStringLiteral("out.txt")));
        f.open(QIODevice::ReadOnly);
        for (const QByteArray &line : f.readAll().split('\n')) {
            const QByteArrayList fields = line.split('\t');
            if (fields.size() == 9 && fields[0].size() == 10 && fields[0][4] == '-') {
                recorded.insert("s" + QByteArray::number(i) + ' ' + fields[0] + 'T' + fields[1]);
                ++taken;
            }
        }
    }
    (void)QTest::qWaitFor(
        [&] { return std::includes(seen.begin(), seen.end(), recorded.begin(), recorded.end()); },
        30000);
    collect.terminate();
    collect.waitForFinished(30000);
    qint64 collected = 0;
    QDirIterator it(dir.filePath(QStringLiteral("fleet")), {QStringLiteral("*.txt")}, QDir::Files);
    while (it.hasNext()) {
        auto store = std::make_unique<MeasurementStore>();
        DataFile file(*store);
        if (!file.dataFile_load(it.next(), MergeMode::Replace, false).failed())
            collected += store->dataPoint_count;
    }
    qint64 lost = 0;
    for (const QByteArray &r : recorded)
        lost += seen.count(r) ? 0 : 1;
    std::printf("fleet: %d sensors, %.0f s, one reading a second each: recorders took %lld, the "
                "subscriber got %zu distinct, lost %lld; collect's files hold %lld\n",
                sensors, runSeconds, taken, seen.size(), lost, collected);
    std::printf("fleet: delivered %.1f readings/s; end to end (the sensor's stamp, whole "
                "seconds, to the subscriber): median %.0f ms, p99 %.0f ms\n",
                double(seen.size()) / runSeconds, percentile(endToEnd, 0.5),
                percentile(endToEnd, 0.99));
    const auto mean = [](const std::vector<double> &v) {
        return v.empty() ? 0 : std::accumulate(v.begin(), v.end(), 0.0) / double(v.size());
    };
    std::printf("fleet: recorder memory: RSS mean %.1f MB, max %.1f MB (shared libraries "
                "counted whole); PSS mean %.1f MB, max %.1f MB; collect RSS %.1f MB\n",
                mean(rss), percentile(rss, 1.0), mean(pss), percentile(pss, 1.0),
                double(collectRss) / 1024);
    return 0;
}

} // namespace

int main(int argc, char **argv) {
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments().mid(1);
    const QString mode = args.value(0);
    if (mode == QLatin1String("latency"))
        return latency(args.value(1, QStringLiteral("60")).toInt());
    if (mode == QLatin1String("backlog"))
        return backlog(args.value(1, QStringLiteral("21600")).toInt());
    if (mode == QLatin1String("fleet"))
        return fleet(args.value(1, QStringLiteral("100")).toInt(),
                     args.value(2, QStringLiteral("300")).toInt());
    std::fprintf(stderr, "usage: bench_telemetry latency [SECONDS] | backlog [READINGS] | "
                         "fleet [SENSORS] [SECONDS]\n");
    return 2;
}
