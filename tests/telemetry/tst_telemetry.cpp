// Telemetry: the payloads, nakos-tool record --mqtt against the simulated
// sensor and a real Mosquitto broker (outage, restart, TLS, refusal), and
// nakos-tool collect reading the fleet back into data files.
#include "core/store.h"
#include "files/datafile.h"
#include "sensorsim.h"
#include "support/testbroker.h"
#include "telemetry/mqttclient.h"
#include "telemetry/telemetryconfig.h"
#include "telemetry/telemetrypayload.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <memory>
#include <set>

namespace {

constexpr int kWaitMs = 30000;

// nakos-tool with a settings file of its own, working in `dir`.
struct Tool {
    Tool(const QString &dir, const QStringList &args) {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("NAKOS_SETTINGS_FILE"), dir + QStringLiteral("/s.reg"));
        process.setProcessEnvironment(env);
        process.setWorkingDirectory(dir);
        process.start(QStringLiteral(NAKOS_BINARY_DIR "/tools/nakos-tool/nakos-tool"), args);
    }
    bool finish() {
        QSignalSpy finished(&process, &QProcess::finished);
        return process.state() == QProcess::NotRunning || finished.wait(kWaitMs);
    }
    QProcess process;
};

QStringList recordArgs(const SensorSimulator &sim, const QString &url, const QString &more) {
    return QStringList{QStringLiteral("record"),
                       QStringLiteral("--port"),
                       sim.portPath(),
                       QStringLiteral("--interval"),
                       QStringLiteral("300"),
                       QStringLiteral("--mqtt"),
                       url} +
           more.split(QLatin1Char(' '), Qt::SkipEmptyParts) +
           QStringList{QStringLiteral("out.txt")};
}

// A subscriber to everything under nakos/, confirmed before it returns.
struct Subscriber {
    explicit Subscriber(const TestBroker &broker, bool persistent = false) {
        QObject::connect(
            &client, &MqttClient::messageArrived,
            [this](const QByteArray &t, const QByteArray &p) { messages << qMakePair(t, p); });
        MqttOptions o;
        o.serverUri = QStringLiteral("tcp://127.0.0.1:%1").arg(broker.port());
        o.clientId = QStringLiteral("test-subscriber");
        o.cleanSession = !persistent;
        QSignalSpy subscribed(&client, &MqttClient::subscribed);
        client.start(o);
        client.subscribe("nakos/#", 1);
        ready = subscribed.wait(kWaitMs);
    }
    QList<QByteArray> payloads(const QByteArray &topic) const {
        QList<QByteArray> out;
        for (const auto &[t, p] : messages)
            if (t == topic)
                out << p;
        return out;
    }
    QByteArray last(const QByteArray &topic) const {
        const QList<QByteArray> all = payloads(topic);
        return all.isEmpty() ? QByteArray() : all.last();
    }
    // The time stamps of the readings, each once, in the order they first
    // came; `outOfOrder` is set when a new one came after a later one.
    QList<QByteArray> readingTimes(bool *outOfOrder = nullptr) const {
        static const QRegularExpression time(QStringLiteral("\"time\":\"([^\"]+)\""));
        QList<QByteArray> out;
        std::set<QByteArray> seen;
        for (const QByteArray &p : payloads("nakos/ship1/reading")) {
            const QByteArray t = time.match(QString::fromLatin1(p)).captured(1).toLatin1();
            if (seen.insert(t).second) {
                if (outOfOrder && !out.isEmpty() && t < out.last())
                    *outOfOrder = true;
                out << t;
            }
        }
        return out;
    }
    MqttClient client;
    QList<QPair<QByteArray, QByteArray>> messages;
    bool ready = false;
};

// The data lines of a native file, split into their fields.
QList<QByteArrayList> dataLines(const QString &path) {
    QFile f(path);
    f.open(QIODevice::ReadOnly);
    QList<QByteArrayList> out;
    for (const QByteArray &line : f.readAll().split('\n')) {
        const QByteArrayList fields = line.trimmed().split('\t');
        if (fields.size() == 9 && fields[0].size() == 10 && fields[0][4] == '-')
            out << fields;
    }
    return out;
}

QByteArray fileStamp(const QByteArrayList &fields) {
    return fields[0] + 'T' + fields[1];
}

bool run(const QString &dir, const QString &program, const QStringList &args) {
    QProcess p;
    p.setWorkingDirectory(dir);
    p.start(program, args);
    return !p.waitForFinished(kWaitMs) || p.exitCode() != 0;
}

} // namespace

class TestTelemetry : public QObject {
    Q_OBJECT

private slots:
    void payloads_data();
    void payloads();
    void urls_data();
    void urls();
    void publishesAsRecorded();
    void outageAndRestart();
    void connections_data();
    void connections();
    void collectsTheFleet();
};

void TestTelemetry::payloads_data() {
    QTest::addColumn<QByteArray>("kind");
    QTest::addColumn<QByteArray>("json");
    QTest::newRow("reading")
        << QByteArray("reading")
        << QByteArray("{\"sensor\":\"ship1\",\"time\":\"2026-11-23T15:02:13\",\"water_ppm\":123,"
                      "\"temperature_c\":45.20,\"pressure_mbar\":1013.00,\"soot_pct\":0.12,"
                      "\"stream\":1,\"adc_ref\":2345,\"adc_meas\":2100}");
    QTest::newRow("meta") << QByteArray("meta")
                          << QByteArray("{\"sensor\":\"ship1\",\"oil_name\":\"Shell \\\"T\\\"\","
                                        "\"alarm_threshold\":500,\"alarm_delay\":10,"
                                        "\"cal_source\":[[0.12500,150]],"
                                        "\"cal_table\":[]}");
    QTest::newRow("meta without threshold")
        << QByteArray("meta none")
        << QByteArray(
               "{\"sensor\":\"ship1\",\"oil_name\":\"Shell \\\"T\\\"\","
               "\"alarm_threshold\":null,\"alarm_delay\":null,\"cal_source\":[[0.12500,150]],"
               "\"cal_table\":[]}");
}

void TestTelemetry::payloads() {
    QFETCH(QByteArray, kind);
    QFETCH(QByteArray, json);
    if (kind == "reading") {
        const DataPoint p{2026,  11,      23,    15, 2,       13,     123.4f,
                          45.2f, 1013.0f, 0.12f, 1,  2100.0f, 2345.0f};
        QCOMPARE(telemetry_readingJson(QStringLiteral("ship1"), p), json);
        DataPoint back;
        QVERIFY(!telemetry_parseReading(json, back));
        QCOMPARE(telemetry_readingJson(QStringLiteral("ship1"), back), json);
        QVERIFY(telemetry_parseReading("{\"time\":\"2026-13-23T15:02:13\"}", back));
        return;
    }
    auto store = std::make_unique<MeasurementStore>();
    store->oilName = QStringLiteral("Shell \"T\"");
    store->alarmThreshold = kind == "meta" ? 500.0f : -1.0f;
    store->alarmDelay = kind == "meta" ? 10.0f : -1.0f;
    store->calSource.pairs[0] = {0.125f, 150.0f};
    store->calSource.count = 1;
    QCOMPARE(telemetry_metaJson(QStringLiteral("ship1"), *store), json);
    auto back = std::make_unique<MeasurementStore>();
    QVERIFY(!telemetry_parseMeta(json, *back));
    QCOMPARE(telemetry_metaJson(QStringLiteral("ship1"), *back), json);
}

void TestTelemetry::urls_data() {
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("server"); // empty: refused
    QTest::addColumn<QString>("user");
    QTest::newRow("plain") << "mqtt://broker.example"
                           << "tcp://broker.example:1883"
                           << "";
    QTest::newRow("user and port") << "mqtt://ship1@10.0.0.5:1884"
                                   << "tcp://10.0.0.5:1884"
                                   << "ship1";
    QTest::newRow("tls") << "mqtts://shore.example"
                         << "ssl://shore.example:8883"
                         << "";
    QTest::newRow("password in the URL") << "mqtt://u:pw@host"
                                         << ""
                                         << "";
    QTest::newRow("other scheme") << "http://host"
                                  << ""
                                  << "";
    QTest::newRow("port out of range") << "mqtt://host:70000"
                                       << ""
                                       << "";
}

void TestTelemetry::urls() {
    QFETCH(QString, url);
    QFETCH(QString, server);
    QFETCH(QString, user);
    TelemetryConfig c;
    const QString error = telemetry_parseUrl(url, c);
    QCOMPARE(error.isEmpty(), !server.isEmpty());
    if (server.isEmpty())
        return;
    QCOMPARE(c.serverUri(), server);
    QCOMPARE(c.user, user);
}

void TestTelemetry::publishesAsRecorded() {
    TestBroker broker;
    QVERIFY(!broker.start());
    Subscriber sub(broker);
    QVERIFY(sub.ready);
    SensorSimulator sim(SimOptions{.readingIntervalMs = 0, .prefill = 5, .faults = {}});
    QVERIFY(!sim.open());
    QTemporaryDir dir;
    Tool rec(dir.path(),
             recordArgs(sim, broker.url(), QStringLiteral("--sensor-id ship1 --polls 3")));
    QVERIFY(rec.finish());
    QCOMPARE(rec.process.exitCode(), 0);
    QTRY_COMPARE_WITH_TIMEOUT(sub.last("nakos/ship1/status"), QByteArray("{\"state\":\"offline\"}"),
                              kWaitMs);

    // Every reading of the recorder's file, field by field as the file has it.
    const QList<QByteArrayList> lines = dataLines(dir.filePath(QStringLiteral("out.txt")));
    const QList<QByteArray> readings = sub.payloads("nakos/ship1/reading");
    QCOMPARE(lines.size(), 5);
    QCOMPARE(readings.size(), 5);
    for (int i = 0; i < 5; ++i) {
        const QByteArrayList &f = lines[i];
        // File: date, time, water, pressure, temperature, soot, ref, meas, stream.
        QCOMPARE(readings[i], "{\"sensor\":\"ship1\",\"time\":\"" + fileStamp(f) +
                                  "\",\"water_ppm\":" + f[2] + ",\"temperature_c\":" + f[4] +
                                  ",\"pressure_mbar\":" + f[3] + ",\"soot_pct\":" + f[5] +
                                  ",\"stream\":" + f[8] + ",\"adc_ref\":" + f[6] +
                                  ",\"adc_meas\":" + f[7] + "}");
    }
    // The metadata the polls brought, retained; the link's counters after each poll.
    QCOMPARE(sub.last("nakos/ship1/meta"),
             "{\"sensor\":\"ship1\",\"oil_name\":\"\",\"alarm_threshold\":500,"
             "\"alarm_delay\":10,\"cal_source\":[[0.12500,150],[0.25000,300],[0.50000,600]],"
             "\"cal_table\":[[0.10000,100],[0.20000,210]]}");
    const QList<QByteArray> status = sub.payloads("nakos/ship1/status");
    QVERIFY2(status.size() >= 4, status.join('\n'));
    QVERIFY2(status[status.size() - 2].startsWith(
                 "{\"state\":\"online\",\"polls_with_readings\":1,\"polls_without_port\":0,"
                 "\"replies_without_echo\":0,"),
             status.join('\n'));
}

void TestTelemetry::outageAndRestart() {
    // The broker keeps the subscriber's session over its own restart.
    TestBroker broker(QString(), true);
    QVERIFY(!broker.start());
    auto sub = std::make_unique<Subscriber>(broker, true);
    QVERIFY(sub->ready);
    SensorSimulator sim(
        SimOptions{.readingIntervalMs = 250, .logSize = 1000, .prefill = 2, .faults = {}});
    QVERIFY(!sim.open());
    QElapsedTimer clock;
    clock.start();
    QList<qint64> lists; // when each "list" came
    QObject::connect(&sim, &SensorSimulator::commandReceived, [&](const QByteArray &c) {
        if (c == "list")
            lists << clock.elapsed();
    });
    QTemporaryDir dir;
    const QStringList args = recordArgs(sim, broker.url(), QStringLiteral("--sensor-id ship1"));
    auto rec = std::make_unique<Tool>(dir.path(), args);
    QTRY_VERIFY_WITH_TIMEOUT(sub->readingTimes().size() >= 3, kWaitMs);

    // The broker goes away; the recorder polls on and is killed outright.
    broker.stop();
    const qsizetype before = lists.size();
    QTRY_VERIFY_WITH_TIMEOUT(lists.size() >= before + 8, kWaitMs);
    for (qsizetype i = before + 1; i < lists.size(); ++i)
        QVERIFY2(lists[i] - lists[i - 1] < 1500, "a poll waited for the missing broker");
    rec->process.kill();
    QVERIFY(rec->finish());
    // Started again while the broker is still away, it polls a few times.
    rec = std::make_unique<Tool>(dir.path(), args);
    const qsizetype restarted = lists.size();
    QTRY_VERIFY_WITH_TIMEOUT(lists.size() >= restarted + 4, kWaitMs);
    QVERIFY(!broker.start());
    QTRY_VERIFY_WITH_TIMEOUT(lists.size() >= restarted + 8, kWaitMs);
    rec->process.terminate();
    QVERIFY(rec->finish());
    QCOMPARE(rec->process.exitCode(), 0);

    // Every reading the recorders took arrives at least once, in order.
    QList<QByteArray> expected;
    for (const QByteArrayList &f : dataLines(dir.filePath(QStringLiteral("out.txt"))))
        expected << fileStamp(f);
    QVERIFY(expected.size() >= 20);
    QTRY_COMPARE_WITH_TIMEOUT(sub->readingTimes(), expected, kWaitMs);
    bool outOfOrder = false;
    sub->readingTimes(&outOfOrder);
    QVERIFY(!outOfOrder);
}

void TestTelemetry::connections_data() {
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("said"); // on the recorder's standard error
    QTest::newRow("tls") << "tls"
                         << "connected";
    QTest::newRow("untrusted server") << "untrusted"
                                      << ": cannot reach the broker";
    QTest::newRow("wrong password") << "password"
                                    << ": the broker refused the connection: not authorised";
}

void TestTelemetry::connections() {
    QFETCH(QString, kind);
    QFETCH(QString, said);
    QTemporaryDir dir;
    const QString d = dir.path();
    // A certificate authority, and the broker's certificate signed by it.
    const QString openssl = QStringLiteral("openssl");
    const auto ca = [&](const QString &name) {
        return run(d, openssl,
                   {QStringLiteral("req"), QStringLiteral("-x509"), QStringLiteral("-newkey"),
                    QStringLiteral("ec"), QStringLiteral("-pkeyopt"),
                    QStringLiteral("ec_paramgen_curve:prime256v1"), QStringLiteral("-nodes"),
                    QStringLiteral("-keyout"), name + QStringLiteral(".key"),
                    QStringLiteral("-out"), name + QStringLiteral(".pem"), QStringLiteral("-days"),
                    QStringLiteral("2"), QStringLiteral("-subj"), QStringLiteral("/CN=") + name});
    };
    QVERIFY(!ca(QStringLiteral("ca")) && !ca(QStringLiteral("otherca")));
    QFile ext(dir.filePath(QStringLiteral("ext")));
    QVERIFY(ext.open(QIODevice::WriteOnly) && ext.write("subjectAltName=IP:127.0.0.1\n") > 0);
    ext.close();
    QVERIFY(!run(d, openssl,
                 {QStringLiteral("req"), QStringLiteral("-newkey"), QStringLiteral("ec"),
                  QStringLiteral("-pkeyopt"), QStringLiteral("ec_paramgen_curve:prime256v1"),
                  QStringLiteral("-nodes"), QStringLiteral("-keyout"), QStringLiteral("server.key"),
                  QStringLiteral("-out"), QStringLiteral("server.csr"), QStringLiteral("-subj"),
                  QStringLiteral("/CN=127.0.0.1")}));
    QVERIFY(
        !run(d, openssl,
             {QStringLiteral("x509"), QStringLiteral("-req"), QStringLiteral("-in"),
              QStringLiteral("server.csr"), QStringLiteral("-CA"), QStringLiteral("ca.pem"),
              QStringLiteral("-CAkey"), QStringLiteral("ca.key"), QStringLiteral("-CAcreateserial"),
              QStringLiteral("-out"), QStringLiteral("server.pem"), QStringLiteral("-days"),
              QStringLiteral("2"), QStringLiteral("-extfile"), QStringLiteral("ext")}));
    QVERIFY(!run(d, QStringLiteral("mosquitto_passwd"),
                 {QStringLiteral("-b"), QStringLiteral("-c"), QStringLiteral("passwd"),
                  QStringLiteral("ship1"), QStringLiteral("secret")}));
    QFile wrong(dir.filePath(QStringLiteral("pw")));
    QVERIFY(wrong.open(QIODevice::WriteOnly) && wrong.write("not the secret\n") > 0);
    wrong.close();

    for (const char *name : {"", "ca.pem", "server.pem", "server.key", "passwd"})
        TestBroker::allowBroker(dir.filePath(QLatin1String(name)));
    const int tlsPort = TestBroker::freePort();
    QString extra =
        QStringLiteral("listener %1 127.0.0.1\ncafile %2/ca.pem\ncertfile %2/server.pem\n"
                       "keyfile %2/server.key\n")
            .arg(tlsPort)
            .arg(d);
    if (kind == QLatin1String("password"))
        extra = QStringLiteral("allow_anonymous false\npassword_file %1/passwd\n").arg(d);
    TestBroker broker(extra);
    QVERIFY(!broker.start());
    std::unique_ptr<Subscriber> sub;
    if (kind != QLatin1String("password")) {
        sub = std::make_unique<Subscriber>(broker);
        QVERIFY(sub->ready);
    }
    SensorSimulator sim(SimOptions{.readingIntervalMs = 0, .prefill = 3, .faults = {}});
    QVERIFY(!sim.open());
    QString url = QStringLiteral("mqtts://127.0.0.1:%1").arg(tlsPort);
    QString more = QStringLiteral("--sensor-id ship1 --mqtt-ca %1/%2")
                       .arg(d, kind == QLatin1String("tls") ? QStringLiteral("ca.pem")
                                                            : QStringLiteral("otherca.pem"));
    if (kind == QLatin1String("password")) {
        url = QStringLiteral("mqtt://ship1@127.0.0.1:%1").arg(broker.port());
        more = QStringLiteral("--sensor-id ship1 --mqtt-password-file %1/pw").arg(d);
    }
    QSignalSpy commands(&sim, &SensorSimulator::commandReceived);
    Tool rec(d, recordArgs(sim, url, more));
    QByteArray err;
    QTRY_VERIFY_WITH_TIMEOUT((err += rec.process.readAllStandardError()).contains(said.toUtf8()),
                             kWaitMs);
    if (sub)
        QTRY_COMPARE_WITH_TIMEOUT(sub->readingTimes().size(), kind == QLatin1String("tls") ? 3 : 0,
                                  kWaitMs);
    // The polls go on whatever the broker says; the readings are recorded.
    QTRY_VERIFY_WITH_TIMEOUT(commands.size() >= 4, kWaitMs);
    rec.process.terminate();
    QVERIFY(rec.finish());
    QCOMPARE(rec.process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(rec.process.exitCode(), 0);
    QCOMPARE(dataLines(dir.filePath(QStringLiteral("out.txt"))).size(), 3);
}

void TestTelemetry::collectsTheFleet() {
    TestBroker broker;
    QVERIFY(!broker.start());
    QTemporaryDir dir;
    Tool collect(dir.path(),
                 {QStringLiteral("collect"), QStringLiteral("--mqtt"), broker.url(),
                  QStringLiteral("--save-every"), QStringLiteral("1"), QStringLiteral("fleet")});
    QByteArray said;
    QTRY_VERIFY_WITH_TIMEOUT(
        (said += collect.process.readAllStandardError()).count("subscribed") == 2, kWaitMs);

    // Two ships, each with its own recorder.
    SensorSimulator simA(SimOptions{.readingIntervalMs = 0, .prefill = 5, .seed = 1, .faults = {}});
    SensorSimulator simB(SimOptions{.readingIntervalMs = 0, .prefill = 8, .seed = 2, .faults = {}});
    QVERIFY(!simA.open() && !simB.open());
    QTemporaryDir shipA, shipB;
    Tool recA(shipA.path(),
              recordArgs(simA, broker.url(), QStringLiteral("--sensor-id a --polls 2")));
    Tool recB(shipB.path(),
              recordArgs(simB, broker.url(), QStringLiteral("--sensor-id b --polls 2")));
    QVERIFY(recA.finish() && recB.finish());
    QCOMPARE(recA.process.exitCode() + recB.process.exitCode(), 0);

    // Each ship's file, byte for byte, in OUTDIR/<sensor>.txt.
    const auto bytes = [](const QString &path) {
        QFile f(path);
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    };
    const QByteArray a = bytes(shipA.filePath(QStringLiteral("out.txt")));
    const QByteArray b = bytes(shipB.filePath(QStringLiteral("out.txt")));
    QCOMPARE(dataLines(shipA.filePath(QStringLiteral("out.txt"))).size(), 5);
    QTRY_COMPARE_WITH_TIMEOUT(bytes(dir.filePath(QStringLiteral("fleet/a.txt"))), a, kWaitMs);
    QTRY_COMPARE_WITH_TIMEOUT(bytes(dir.filePath(QStringLiteral("fleet/b.txt"))), b, kWaitMs);
    collect.process.terminate();
    QVERIFY(collect.finish());
    QCOMPARE(collect.process.exitCode(), 0);
    QCOMPARE(bytes(dir.filePath(QStringLiteral("fleet/a.txt"))), a);
}

QTEST_GUILESS_MAIN(TestTelemetry)
#include "tst_telemetry.moc"
