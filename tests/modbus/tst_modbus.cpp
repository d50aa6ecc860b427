// The register map from known events, and nakos-tool record --modbus read
// by an independent client (pymodbus) while it records from the simulated
// sensor, compared with the recorder's output file.
#include "core/store.h"
#include "files/datafile.h"
#include "modbus/modbusmap.h"
#include "sensorsim.h"

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

using Regs = QList<int>;

class TestModbus : public QObject {
    Q_OBJECT

private slots:
    void map_data();
    void map();
    void recorderServesTheMap_data();
    void recorderServesTheMap();
};

void TestModbus::map_data() {
    QTest::addColumn<bool>("lowFirst");
    QTest::addColumn<QList<int>>("readings"); // counts of readings added, each with the same newest
    QTest::addColumn<float>("threshold");
    QTest::addColumn<QString>("polls"); // R readings, E nothing new, N no echo, P port missing
    QTest::addColumn<int>("ageMs");     // since the last reading
    QTest::addColumn<Regs>("expected");
    const Regs nan = {0x7fc0, 0, 0x7fc0, 0, 0x7fc0, 0, 0x7fc0, 0, 0x7fc0, 0};
    const Regs values = {0x4400, 0x2000, 0x422d, 0, 0x44e2, 0x4000, 0xbf00, 0};
    const Regs stamp = {2026, 11, 24, 13, 28, 10};
    QTest::newRow("before the first reading")
        << false << QList<int>() << -1.0f << QString() << 0
        << nan + Regs{0, 0, 0, 65535, 0} + Regs{0, 0, 0, 0, 0, 0};
    QTest::newRow("above the threshold") << false << QList<int>{3} << 500.0f << "R" << 2500
                                         << values + Regs{0x43fa, 0, 3, 1, 1, 2, 3} + stamp;
    QTest::newRow("low word first, no threshold")
        << true << QList<int>{1} << -1.0f << "RN" << 0
        << Regs{0x2000, 0x4400, 0, 0x422d, 0x4000, 0x44e2, 0, 0xbf00, 0, 0x7fc0, 3, 0, 1, 0, 1} +
               stamp;
    QTest::newRow("at the threshold, counter wraps, no echo thrice, age saturates")
        << false << QList<int>{65535, 2} << 512.5f << "ENNN" << 70'000'000
        << values + Regs{0x4400, 0x2000, 3, 0, 2, 65535, 1} + stamp;
    QTest::newRow("port missing") << false << QList<int>{1} << 500.0f << "NNNP" << 0
                                  << values + Regs{0x43fa, 0, 3, 1, 0, 0, 1} + stamp;
}

void TestModbus::map() {
    QFETCH(bool, lowFirst);
    QFETCH(QList<int>, readings);
    QFETCH(float, threshold);
    QFETCH(QString, polls);
    QFETCH(int, ageMs);
    QFETCH(Regs, expected);
    ModbusMap map(lowFirst ? ModbusMap::WordOrder::LowFirst : ModbusMap::WordOrder::HighFirst);
    DataPoint p{2026, 11, 24, 13, 28, 10, 512.5f, 43.25f, 1810.0f, -0.5f, 3, 0, 0};
    for (int count : readings)
        map.addReading(p, count, 1000);
    map.setThreshold(threshold);
    for (QChar c : polls) {
        using S = PollOutcome::Status;
        map.addPoll(c == u'R'   ? S::Readings
                    : c == u'E' ? S::NothingNew
                    : c == u'N' ? S::NoEcho
                                : S::PortMissing);
    }
    const ModbusMap::Registers regs = map.registers(1000 + ageMs);
    QCOMPARE(Regs(regs.begin(), regs.end()), expected);
}

namespace {

constexpr int kWaitMs = 20000;

// The client's answer: registers and exception codes.
QJsonObject readMap(uint16_t port, int unit, int counterBefore = -1) {
    QProcess client;
    QStringList args = {QStringLiteral(MODBUS_CLIENT), QString::number(port),
                        QString::number(unit)};
    if (counterBefore >= 0)
        args << QString::number(counterBefore);
    client.start(QStringLiteral("/usr/bin/python3"), args);
    QSignalSpy finished(&client, &QProcess::finished);
    if (!finished.wait(kWaitMs) || client.exitCode() != 0)
        qWarning() << client.readAllStandardError();
    return QJsonDocument::fromJson(client.readAllStandardOutput()).object();
}

uint16_t freePort() {
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost);
    return probe.serverPort();
}

float decode(const QJsonArray &regs, int at, bool lowFirst) {
    const uint32_t a = uint32_t(regs[at].toInt()), b = uint32_t(regs[at + 1].toInt());
    return std::bit_cast<float>(lowFirst ? b << 16 | a : a << 16 | b);
}

} // namespace

void TestModbus::recorderServesTheMap_data() {
    QTest::addColumn<bool>("lowFirst");
    QTest::addColumn<float>("alarmValue"); // the sensor's, ppm; its water is near 150
    QTest::addColumn<int>("alarm");
    QTest::addColumn<Regs>("threshold");
    QTest::newRow("high word first, alarm") << false << 1.0f << 1 << Regs{0x3f80, 0};
    QTest::newRow("low word first, no alarm") << true << 100000.0f << 0 << Regs{0x5000, 0x47c3};
}

void TestModbus::recorderServesTheMap() {
    QFETCH(bool, lowFirst);
    QFETCH(float, alarmValue);
    QFETCH(int, alarm);
    QFETCH(Regs, threshold);
    QTemporaryDir dir;
    SensorSimulator sim(
        SimOptions{.readingIntervalMs = 0, .prefill = 5, .alarmValue = alarmValue, .faults = {}});
    QVERIFY(!sim.open());
    QSignalSpy commands(&sim, &SensorSimulator::commandReceived);
    const uint16_t port = freePort();
    QProcess recorder;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("NAKOS_SETTINGS_FILE"), dir.filePath(QStringLiteral("s.reg")));
    recorder.setProcessEnvironment(env);
    recorder.setWorkingDirectory(dir.path());
    recorder.start(QStringLiteral(NAKOS_BINARY_DIR "/tools/nakos-tool/nakos-tool"),
                   {QStringLiteral("record"), QStringLiteral("--port"), sim.portPath(),
                    QStringLiteral("--interval"), QStringLiteral("300"), QStringLiteral("--modbus"),
                    QStringLiteral("127.0.0.1:%1").arg(port), QStringLiteral("--modbus-unit"),
                    QStringLiteral("7"), QStringLiteral("--modbus-word-order"),
                    lowFirst ? QStringLiteral("low-first") : QStringLiteral("high-first"),
                    QStringLiteral("out.txt")});
    // The threshold comes with the second poll's "alarmlimit get".
    QTRY_VERIFY_WITH_TIMEOUT(commands.size() >= 4, kWaitMs);

    const QJsonObject first = readMap(port, 7);
    QCOMPARE(first[u"input"].toArray()[14].toInt(), 5);
    // A new reading while a crowd, garbage and a client that never reads
    // its replies are connected: the polls go on and bring it.
    sim.addReading();
    const QJsonObject m = readMap(port, 7, 5);
    recorder.terminate();
    QSignalSpy finished(&recorder, &QProcess::finished);
    QVERIFY(recorder.state() == QProcess::NotRunning || finished.wait(kWaitMs));
    QCOMPARE(recorder.exitCode(), 0);

    const QJsonArray regs = m[u"input"].toArray();
    QCOMPARE(m[u"holding"].toArray(), regs);
    QCOMPARE(m[u"past"].toInt(), 2);
    QCOMPARE(m[u"tooMany"].toInt(), 3);
    QCOMPARE(m[u"write"].toInt(), 1);
    QCOMPARE(regs.size(), 21);
    QCOMPARE((Regs{regs[8].toInt(), regs[9].toInt()}), threshold);
    QCOMPARE(regs[11].toInt(), alarm);
    QCOMPARE(regs[12].toInt(), 1); // polling with replies
    QCOMPARE(regs[14].toInt(), 6);
    QVERIFY(regs[13].toInt() < 60);

    auto store = std::make_unique<MeasurementStore>();
    DataFile file(*store);
    QVERIFY(!file.dataFile_load(dir.filePath(QStringLiteral("out.txt")), MergeMode::Replace, false)
                 .failed());
    QCOMPARE(store->dataPoint_count, 6);
    const DataPoint &p = store->dataPoints[5];
    // The file keeps water in whole ppm, the others to two decimals.
    QVERIFY(qAbs(decode(regs, 0, lowFirst) - p.water) <= 0.5f);
    QVERIFY(qAbs(decode(regs, 2, lowFirst) - p.temperature) <= 0.005f);
    QVERIFY(qAbs(decode(regs, 4, lowFirst) - p.pressure) <= 0.005f);
    QVERIFY(qAbs(decode(regs, 6, lowFirst) - p.soot) <= 0.005f);
    QCOMPARE(regs[10].toInt(), p.stream);
    const Regs stamp = {p.year, p.month, p.day, p.hour, p.minute, p.second};
    for (int i = 0; i < 6; ++i)
        QCOMPARE(regs[15 + i].toInt(), stamp[i]);
}

QTEST_GUILESS_MAIN(TestModbus)
#include "tst_modbus.moc"
