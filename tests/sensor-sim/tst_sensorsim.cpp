// The simulated sensor: its log, its replies (read back with the program's
// own reply readers) and its schedule.
#include "core/clock.h"
#include "core/store.h"
#include "device/listreply.h"
#include "device/metareply.h"
#include "sensorsim.h"

#include <QSignalSpy>
#include <QTest>

#include <memory>

namespace {

class FixedClock : public Clock {
public:
    QDateTime now() const override { return time; }
    QDateTime time{QDate(2024, 3, 5), QTime(14, 22, 10)};
};

SimOptions quiet(int prefill, int logSize = 100) {
    SimOptions o;
    o.readingIntervalMs = 0;
    o.prefill = prefill;
    o.logSize = logSize;
    return o;
}

} // namespace

class TestSensorSim : public QObject {
    Q_OBJECT

private slots:
    void logIsBoundedAndStampsAscend();
    void repliesReadBackByTheProgram();
    void repliesExactBytes_data();
    void repliesExactBytes();
    void faultsShapeTheListReply();
    void readingsArePlausible();
    void scheduleLogsReadings();
};

void TestSensorSim::logIsBoundedAndStampsAscend() {
    FixedClock clock;
    SensorSimulator sim(quiet(8, 5), &clock);
    QCOMPARE(sim.logLines().size(), size_t(5));
    QVERIFY(sim.logLines().back().startsWith("2024-03-05 14:22:10 WATER "));
    // The clock stands still: each new reading still gets its own second.
    sim.addReading();
    sim.addReading();
    QCOMPARE(sim.logLines().size(), size_t(5));
    QVERIFY(sim.logLines().back().startsWith("2024-03-05 14:22:12 "));
    QVERIFY(sim.logLines().front().startsWith("2024-03-05 14:22:08 "));
}

void TestSensorSim::repliesReadBackByTheProgram() {
    SimOptions o = quiet(12);
    o.alarmValue = 420.5f;
    o.calSource = {{0.125f, 150}, {0.25f, 300}};
    o.calTable = {{0.5f, 600}};
    SensorSimulator sim(o);
    auto store = std::make_unique<MeasurementStore>();
    const ListReplyResult r = applyListReply(sim.replyTo("list"), *store);
    QVERIFY(r.echoOk);
    QCOMPARE(r.added, 12);
    QCOMPARE(r.invalid, 0);
    QVERIFY(applyAlarmReply(sim.replyTo("alarmlimit get"), *store));
    QCOMPARE(store->alarmThreshold, 420.5f);
    QVERIFY(applyCalibrationReply(sim.replyTo("calibration get"), *store));
    QCOMPARE(store->calSource.count, int16_t(2));
    QCOMPARE(store->calSource.pairs[1].first, 0.25f);
    QCOMPARE(store->calSource.pairs[1].second, 300.0f);
    QCOMPARE(store->calTable.count, int16_t(1));
    QCOMPARE(store->calTable.pairs[0].second, 600.0f);
}

void TestSensorSim::repliesExactBytes_data() {
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<bool>("noEcho");
    QTest::addColumn<QByteArray>("reply");
    QTest::newRow("alarm limit") << QByteArray("alarmlimit get") << false
                                 << QByteArray("alarmlimit get\r\nALARMVALUE 500.0 "
                                               "ALARMDELAY 10\r\n");
    QTest::newRow("calibration")
        << QByteArray("calibration get") << false
        << QByteArray("calibration get\r\nCAL SOURCE\r\n0.12500\t150\r\n0.25000\t300\r\n"
                      "0.50000\t600\r\nCAL TABLE\r\n0.10000\t100\r\n0.20000\t210\r\n");
    QTest::newRow("other command: echo only")
        << QByteArray("serial get") << false << QByteArray("serial get\r\n");
    QTest::newRow("no echo") << QByteArray("alarmlimit get") << true
                             << QByteArray("ALARMVALUE 500.0 ALARMDELAY 10\r\n");
}

void TestSensorSim::repliesExactBytes() {
    QFETCH(QByteArray, command);
    QFETCH(bool, noEcho);
    QFETCH(QByteArray, reply);
    SimOptions o = quiet(0);
    o.faults.noEcho = noEcho;
    SensorSimulator sim(o);
    QCOMPARE(sim.replyTo(command), reply);
}

void TestSensorSim::faultsShapeTheListReply() {
    FixedClock clock;
    SimOptions o = quiet(6);
    SensorSimulator sim(o, &clock);
    const QByteArray plain = sim.replyTo("list");
    QVERIFY(plain.startsWith("list\r\n\r\n2024-03-05 14:22:05 WATER "));
    QCOMPARE(plain.count("\r\n"), 2 + 6);
    QVERIFY(plain.endsWith("\r\n"));

    SimFaults f;
    f.garbage = true;
    f.nulBytes = true;
    sim.setFaults(f);
    const QByteArray faulty = sim.replyTo("list");
    QCOMPARE(faulty.count("\r\n"), 2 + 6 + 2); // a garbage line after every third reading
    QCOMPARE(faulty.count('\0'), 2 * 6);
}

void TestSensorSim::readingsArePlausible() {
    ReadingGenerator gen(7);
    QDateTime t(QDate(2024, 3, 5), QTime(0, 0));
    double sum = 0;
    float maxWater = 0;
    const int n = 5000;
    for (int i = 0; i < n; ++i) {
        const SimReading r = gen.next(t.addSecs(i * 4));
        QVERIFY(r.water >= 0 && r.soot >= 0);
        QVERIFY(r.temperature > 35 && r.temperature < 55);
        QVERIFY(r.pressure > 1600 && r.pressure < 2000);
        sum += double(r.water);
        maxWater = std::max(maxWater, r.water);
    }
    QVERIFY(sum / n > 120 && sum / n < 190);
    QVERIFY(maxWater > 300); // the rare spikes happen
}

void TestSensorSim::scheduleLogsReadings() {
    SimOptions o = quiet(0);
    o.readingIntervalMs = 20;
    SensorSimulator sim(o);
    QVERIFY(!sim.open());
    QVERIFY(sim.portPath().startsWith(QStringLiteral("/dev/")));
    QTRY_VERIFY(sim.logLines().size() >= 3);
    sim.close();
    QVERIFY(!sim.isOpen());
}

QTEST_GUILESS_MAIN(TestSensorSim)
#include "tst_sensorsim.moc"
