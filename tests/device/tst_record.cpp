// nakos-tool record, run as a separate process against the simulated sensor
// in this process, its output read back with the native reader (and its
// Modbus server with pymodbus); and the session's rollover that the
// recorder's --rollover uses, at the boundary.
#include "core/store.h"
#include "files/datafile.h"
#include "sensorsim.h"
#include "support/sessionfixture.h"

#include <csignal>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTest>

#include <bit>
#include <memory>

namespace {

constexpr int kWaitMs = 20000;

// The tool started in `dir` with a settings file of its own; `args` are
// the words after "record", separated by blanks.
struct Run {
    Run(const QTemporaryDir &dir, const QString &args) {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("NAKOS_SETTINGS_FILE"), dir.filePath(QStringLiteral("s.reg")));
        process.setProcessEnvironment(env);
        process.setWorkingDirectory(dir.path());
        process.start(QStringLiteral(NAKOS_BINARY_DIR "/tools/nakos-tool/nakos-tool"),
                      QStringLiteral("record ").append(args).split(QLatin1Char(' ')));
    }
    bool finish() {
        QSignalSpy finished(&process, &QProcess::finished);
        return process.state() == QProcess::NotRunning || finished.wait(kWaitMs);
    }
    // The tool's own lines on standard error that start with `prefix`; Qt
    // may add platform notes.
    QList<QByteArray> toolLines(const QByteArray &prefix = "nakos-tool: ") {
        err += process.readAllStandardError();
        QList<QByteArray> lines = err.split('\n');
        lines.removeIf([&](const QByteArray &l) { return !l.startsWith(prefix); });
        return lines;
    }
    QList<QByteArray> statusLines() { return toolLines("nakos-tool record: polls"); }
    QProcess process;
    QByteArray err;
};

// modbus_client.py's registers and exception codes.
QJsonObject readModbus(const QStringList &args) {
    QProcess client;
    client.start(QStringLiteral("/usr/bin/python3"),
                 QStringList{QStringLiteral(MODBUS_CLIENT)} + args);
    if (!client.waitForStarted() || !QSignalSpy(&client, &QProcess::finished).wait(kWaitMs))
        return {};
    if (client.exitCode() != 0)
        qWarning().noquote() << client.readAllStandardError();
    return QJsonDocument::fromJson(client.readAllStandardOutput()).object();
}

} // namespace

class TestRecord : public QObject {
    Q_OBJECT

private slots:
    void recordsToTheOutput_data();
    void recordsToTheOutput();
    void badCommandLines_data();
    void badCommandLines();
    void rolloverAtTheBoundary_data();
    void rolloverAtTheBoundary();
    void servesModbus_data();
    void servesModbus();
};

void TestRecord::recordsToTheOutput_data() {
    QTest::addColumn<bool>("polls"); // three polls, or until SIGTERM
    QTest::newRow("three polls") << true;
    QTest::newRow("until SIGTERM") << false;
}

void TestRecord::recordsToTheOutput() {
    QFETCH(bool, polls);
    QTemporaryDir dir;
    SensorSimulator sim(SimOptions{.readingIntervalMs = 0, .prefill = 5, .faults = {}});
    QVERIFY(!sim.open());
    QSignalSpy commands(&sim, &SensorSimulator::commandReceived);
    Run run(dir, QStringLiteral("--port %1 --interval 300%2 out.txt")
                     .arg(sim.portPath(), polls ? QStringLiteral(" --polls 3") : QString()));
    // The status line, on SIGUSR1 while it runs and at the end.
    const QByteArray status = "nakos-tool record: polls with readings 1, polls without port 0, "
                              "replies without echo 0, bytes received ";
    if (!polls) {
        // The second command comes with the first tick, after the first
        // "list" poll has been applied.
        QTRY_VERIFY_WITH_TIMEOUT(commands.size() >= 2, kWaitMs);
        ::kill(pid_t(run.process.processId()), SIGUSR1);
        QTRY_COMPARE_WITH_TIMEOUT(run.statusLines().size(), 1, kWaitMs);
        QCOMPARE(run.process.state(), QProcess::Running);
        run.process.terminate();
    }
    QVERIFY(run.finish());
    QCOMPARE(run.process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(run.process.exitCode(), 0);
    QCOMPARE(run.toolLines(), QList<QByteArray>());
    const QList<QByteArray> statuses = run.statusLines();
    QCOMPARE(statuses.size(), polls ? 1 : 2);
    for (const QByteArray &line : statuses) {
        QVERIFY2(line.startsWith(status) && line.contains(" s ago), points in store 5"), line);
        QVERIFY2(!line.contains("bytes received 0,"), line);
    }
    // The program's autosave folder was prepared as at start-up.
    QVERIFY(QFileInfo(dir.filePath(QStringLiteral("data/autosave"))).isDir());

    auto store = std::make_unique<MeasurementStore>();
    DataFile file(*store);
    QVERIFY(!file.dataFile_load(dir.filePath(QStringLiteral("out.txt")), MergeMode::Replace, false)
                 .failed());
    QCOMPARE(store->dataPoint_count, 5);
    if (!polls)
        return;
    QByteArrayList sent;
    for (const QList<QVariant> &c : commands)
        sent << c.first().toByteArray();
    QCOMPARE(sent.join(','),
             "list,alarmlimit get,calibration get,list,alarmlimit get,calibration get,list");
    QCOMPARE(store->alarmThreshold, 500.0f);
    QCOMPARE(store->calSource.count, int16_t(3));
    QCOMPARE(store->calTable.count, int16_t(2));
}

void TestRecord::badCommandLines_data() {
    QTest::addColumn<QString>("args");
    QTest::addColumn<QByteArray>("error"); // the last line on standard error
    const auto row = [](const char *name, const char *args, const char *error) {
        QTest::newRow(name) << QString::fromLatin1(args) << QByteArray(error);
    };
    row("no port", "out.txt", "record: expected --port DEVICE and one OUTPUT");
    row("zero polls", "--port 1 --polls 0 out.txt",
        "record: --polls must be a positive whole number");
    row("modbus host name", "--port 1 --modbus plc.local:502 out.txt",
        "record: --modbus 'plc.local:502' is not HOST:PORT (an IP address or localhost, a port "
        "from 1 to 65535)");
    row("output cannot be created", "--port /nonexistent/tty --polls 1 /nonexistent/dir/out.txt",
        "");
}

void TestRecord::badCommandLines() {
    QFETCH(QString, args);
    QFETCH(QByteArray, error);
    QTemporaryDir dir;
    Run run(dir, args);
    QVERIFY(run.finish());
    QVERIFY(run.process.exitCode() != 0);
    // One line names the failure. A port that cannot be opened comes before
    // it: its device and the system's reason, then the warning, once.
    const QList<QByteArray> lines = run.toolLines();
    QCOMPARE(lines.size(), error.isEmpty() ? 3 : 1);
    if (!error.isEmpty()) {
        QCOMPARE(lines.last(), "nakos-tool: " + error);
        return;
    }
    const QByteArray opening = "nakos-tool: cannot open /nonexistent/tty: ";
    QVERIFY2(lines[0].startsWith(opening) && lines[0].size() > opening.size(), lines[0]);
    QCOMPARE(lines[1], "nakos-tool: Com port not available");
}

// 129990 points stored and a reply of 30 new readings: 10 fill the store.
// With the rollover the full store goes to an archive named after its first
// and last stamp and the other 20 enter the empty store; without it they
// find the store full.
void TestRecord::rolloverAtTheBoundary_data() {
    QTest::addColumn<bool>("rollover");
    QTest::addColumn<int>("count"); // points in store afterwards
    QTest::addColumn<int>("full");  // readings that found the store full
    QTest::newRow("documented full rule") << false << 130000 << 20;
    QTest::newRow("rollover") << true << 20 << 0;
}

void TestRecord::rolloverAtTheBoundary() {
    QFETCH(bool, rollover);
    QFETCH(int, count);
    QFETCH(int, full);
    SessionFixture f;
    f.start();
    MeasurementStore &store = f.store();
    // Distinct stamps from 2001-01-01 00:00:00 on, a second apart in the
    // hour 0: the last is 2001-02-09 00:06:29.
    for (int n = 0; n < 129990; ++n) {
        store.dataPoints[size_t(n)] = {
            2001, uint8_t(1 + n / (28 * 3600)), uint8_t(1 + (n / 3600) % 28),
            0,    uint8_t((n / 60) % 60),       uint8_t(n % 60)};
    }
    store.dataPoint_count = 129990;
    store.reindex();
    SensorSimulator sim(SimOptions{.readingIntervalMs = 0, .prefill = 30, .faults = {}});
    QVERIFY(!sim.open());
    f.session.port_selectDevice(sim.portPath());
    const QString output = f.dir.filePath(QStringLiteral("out.txt"));
    if (rollover)
        f.session.recording_setRollover(output);
    QSignalSpy rolled(&f.session, &MonitorSession::rolledOver);
    QSignalSpy appended(&f.session, &MonitorSession::readingsAppended);
    QSignalSpy polled(&f.session, &MonitorSession::pollFinished);
    f.session.query_start();
    QVERIFY(polled.wait(kWaitMs));
    f.session.query_stop();
    QCOMPARE(store.dataPoint_count, count);
    QCOMPARE(polled[0][0].value<PollOutcome>().list.full, full);
    // The reply is read as it streams in, so the readings may come in
    // several pieces: join the pieces that follow on from each other.
    QList<QPair<int, int>> ranges;
    for (const QList<QVariant> &a : appended) {
        const int first = a[0].toInt(), n = a[1].toInt();
        if (!ranges.isEmpty() && ranges.last().first + ranges.last().second == first)
            ranges.last().second += n;
        else
            ranges.append({first, n});
    }
    using Ranges = QList<QPair<int, int>>;
    const Ranges expected = rollover ? Ranges{{129990, 10}, {0, 20}} : Ranges{{129990, 10}};
    QCOMPARE(ranges, expected);
    QCOMPARE(rolled.size(), rollover ? 1 : 0);
    if (!rollover)
        return;
    // The tenth reading's stamp ends the archive's name.
    const QByteArray tenth = sim.logLines()[9];
    QString last = QString::fromLatin1(tenth.mid(0, 19));
    last.remove(QLatin1Char('-'))
        .remove(QLatin1Char(':'))
        .replace(QLatin1Char(' '), QLatin1Char('T'));
    const QString archive =
        f.dir.filePath(QStringLiteral("out_20010101T000000_") + last + QStringLiteral(".txt"));
    QCOMPARE(rolled[0], (QList<QVariant>{archive, 130000, QString()}));
    auto archived = std::make_unique<MeasurementStore>();
    DataFile file(*archived);
    QVERIFY(!file.dataFile_load(archive, MergeMode::Replace, false).failed());
    QCOMPARE(archived->dataPoint_count, 130000);
    QCOMPARE(archived->dataPoints[129989].day, uint8_t(9));
    QCOMPARE(MonitorSession::rolloverFileName(output, *archived),
             archive.chopped(4) + QStringLiteral("_2.txt"));
}

using Regs = QList<int>;

void TestRecord::servesModbus_data() {
    QTest::addColumn<QString>("order");
    QTest::addColumn<float>("alarmValue"); // the sensor's, ppm; its water is near 150
    QTest::addColumn<Regs>("thresholdAlarm");
    QTest::newRow("high word first, alarm") << "high-first" << 1.0f << Regs{0x3f80, 0, 1};
    QTest::newRow("low word first, no alarm")
        << "low-first" << 100000.0f << Regs{0x5000, 0x47c3, 0};
}

void TestRecord::servesModbus() {
    QFETCH(QString, order);
    QFETCH(float, alarmValue);
    QFETCH(Regs, thresholdAlarm);
    QTemporaryDir dir;
    SensorSimulator sim(
        {.readingIntervalMs = 0, .prefill = 5, .alarmValue = alarmValue, .faults = {}});
    QVERIFY(!sim.open());
    QSignalSpy commands(&sim, &SensorSimulator::commandReceived);
    QTcpServer probe; // a free port
    QVERIFY(probe.listen(QHostAddress::LocalHost));
    const QString port = QString::number(probe.serverPort());
    probe.close();
    Run run(dir, QStringLiteral("--interval 300 --modbus-unit 7 --port %1 --modbus 127.0.0.1:%2 "
                                "--modbus-word-order %3 out.txt")
                     .arg(sim.portPath(), port, order));
    // The threshold comes with the second poll.
    QTRY_VERIFY_WITH_TIMEOUT(commands.size() >= 4, kWaitMs);
    QCOMPARE(readModbus({port, QStringLiteral("7")})[u"input"].toArray()[14], 5);
    // A new reading while the crowd is connected: the polls go on and bring it.
    sim.addReading();
    const QJsonObject m = readModbus({port, QStringLiteral("7"), QStringLiteral("5")});
    run.process.terminate();
    QVERIFY(run.finish());
    QCOMPARE(run.toolLines(), QList<QByteArray>());

    const QJsonArray regs = m[u"input"].toArray();
    QCOMPARE(m[u"holding"].toArray(), regs);
    QCOMPARE((Regs{m[u"past"].toInt(), m[u"tooMany"].toInt(), m[u"write"].toInt()}),
             (Regs{2, 3, 1}));
    QCOMPARE((Regs{regs[8].toInt(), regs[9].toInt(), regs[11].toInt()}), thresholdAlarm);
    QCOMPARE((Regs{regs[12].toInt(), regs[14].toInt()}), (Regs{1, 6})); // replies, 6 readings
    QVERIFY(regs[13].toInt() < 60);
    auto store = std::make_unique<MeasurementStore>();
    QVERIFY(!DataFile(*store)
                 .dataFile_load(dir.filePath(QStringLiteral("out.txt")), MergeMode::Replace, false)
                 .failed());
    QCOMPARE(store->dataPoint_count, 6);
    const DataPoint &p = store->dataPoints[5];
    const float fileValues[] = {p.water, p.temperature, p.pressure, p.soot};
    for (int i = 0; i < 4; ++i) { // the file keeps water whole, the others to two decimals
        const uint32_t a = uint32_t(regs[2 * i].toInt()), b = uint32_t(regs[2 * i + 1].toInt());
        const float v = std::bit_cast<float>(order == u"low-first" ? b << 16 | a : a << 16 | b);
        QVERIFY2(qAbs(v - fileValues[i]) <= (i ? 0.005f : 0.5f), qPrintable(QString::number(i)));
    }
    QCOMPARE((Regs{regs[10].toInt(), regs[15].toInt(), regs[16].toInt(), regs[17].toInt(),
                   regs[18].toInt(), regs[19].toInt(), regs[20].toInt()}),
             (Regs{p.stream, p.year, p.month, p.day, p.hour, p.minute, p.second}));
}

QTEST_GUILESS_MAIN(TestRecord)
#include "tst_record.moc"
