// The device link against the simulated sensor on a real pseudo-terminal.
#include "core/clock.h"
#include "core/store.h"
#include "device/devicelink.h"
#include "sensorsim.h"
#include "support/scriptednotifier.h"

#include <QSignalSpy>
#include <QTest>

#include <memory>

namespace {

// Enough for a few exchanges of 200 ms silence each on a loaded machine.
constexpr int kWaitMs = 5000;

// The link on the simulated sensor's pseudo-terminal, with `prefill` readings
// logged; the tests add further readings themselves.
struct Rig {
    explicit Rig(int prefill, SimFaults faults = {}) : sim(options(prefill, faults)) {
        if (sim.open())
            qFatal("cannot open a pseudo-terminal");
        device = sim.portPath();
        link.setConfiguredPort([this](int) { return device; });
        link.com_init();
    }

    static SimOptions options(int prefill, SimFaults faults) {
        SimOptions o;
        o.readingIntervalMs = 0;
        o.prefill = prefill;
        o.faults = faults;
        return o;
    }

    std::unique_ptr<MeasurementStore> store = std::make_unique<MeasurementStore>();
    ScriptedNotifier notifier;
    SensorSimulator sim;
    QString device;
    DeviceLink link{*store, notifier};
};

} // namespace

class TestDeviceLink : public QObject {
    Q_OBJECT

private slots:
    void listPollsAddEachReadingOnce();
    void replyPacing_data();
    void replyPacing();
    void queryString_data();
    void queryString();
    void missingPortWarnsOncePerRun();
    void unplugMidReplyEndsCleanly();
    void endlessTalkerKeepsExchangeAliveAndSkipsTicks();
};

void TestDeviceLink::listPollsAddEachReadingOnce() {
    Rig rig(3);
    QSignalSpy polled(&rig.link, &DeviceLink::listPolled);
    rig.link.com_app_getList();
    QVERIFY(rig.link.portIsOpen());
    QVERIFY(polled.wait(kWaitMs));
    QVERIFY(!rig.link.portIsOpen());
    QCOMPARE(rig.store->dataPoint_count, 3);
    QVERIFY(rig.store->data_changed);
    // The last stored point is the last logged line.
    const DataPoint &p = rig.store->dataPoints[2];
    QVERIFY(rig.sim.logLines().back().contains(" WATER " +
                                               QByteArray::number(double(p.water), 'f', 1) + ' '));

    rig.sim.addReading();
    rig.sim.addReading();
    rig.link.com_app_getList();
    QVERIFY(polled.wait(kWaitMs));
    const auto second = polled.last().first().value<ListReplyResult>();
    QVERIFY(second.echoOk);
    QCOMPARE(second.added, 2);
    QCOMPARE(second.duplicates, 3);
    QCOMPARE(rig.store->dataPoint_count, 5);
    QCOMPARE(rig.notifier.shown.size(), 0);
}

void TestDeviceLink::replyPacing_data() {
    QTest::addColumn<int>("gapMs");
    QTest::addColumn<int>("byteDelayMs");
    QTest::addColumn<bool>("whole");
    QTest::newRow("bytes 3 ms apart") << 0 << 3 << true;
    QTest::newRow("100 ms gap inside the reply") << 100 << 0 << true;
    QTest::newRow("400 ms gap ends the reply") << 400 << 0 << false;
}

void TestDeviceLink::replyPacing() {
    QFETCH(int, gapMs);
    QFETCH(int, byteDelayMs);
    QFETCH(bool, whole);
    SimFaults pacing;
    pacing.gapMs = gapMs;
    pacing.byteDelayMs = byteDelayMs;
    Rig rig(byteDelayMs ? 2 : 10, pacing);
    QSignalSpy polled(&rig.link, &DeviceLink::listPolled);
    QSignalSpy sent(&rig.sim, &SensorSimulator::replySent);
    rig.link.com_app_getList();
    QVERIFY(polled.wait(4 * kWaitMs));
    const int first = rig.store->dataPoint_count;
    if (whole) {
        QCOMPARE(first, byteDelayMs ? 2 : 10);
        return;
    }
    QVERIFY(first > 0 && first < 10);
    // The rest of the reply, sent after the port was closed, is lost and
    // does not spoil the next reply's echo check.
    QVERIFY(!sent.isEmpty() || sent.wait(kWaitMs));
    rig.sim.setFaults({});
    rig.link.com_app_getList();
    QVERIFY(polled.wait(kWaitMs));
    QVERIFY(polled.last().first().value<ListReplyResult>().echoOk);
    QCOMPARE(rig.store->dataPoint_count, 10);
}

void TestDeviceLink::queryString_data() {
    QTest::addColumn<QString>("command");
    QTest::addColumn<bool>("silent");
    QTest::newRow("NUL bytes kept in the reply") << QStringLiteral("list") << false;
    QTest::newRow("silent device: empty reply") << QStringLiteral("hello") << true;
}

void TestDeviceLink::queryString() {
    QFETCH(QString, command);
    QFETCH(bool, silent);
    SimFaults faults;
    faults.nulBytes = true;
    faults.silent = silent;
    Rig rig(1, faults);
    QSignalSpy replied(&rig.link, &DeviceLink::queryStringReplied);
    QSignalSpy commands(&rig.sim, &SensorSimulator::commandReceived);
    rig.link.com_queryString(command + QStringLiteral("\r\n"));
    QVERIFY(replied.wait(kWaitMs));
    const QString want = silent ? QString() : QString::fromLatin1(rig.sim.replyTo("list"));
    QCOMPARE(replied.first().first().toString(), want);
    QCOMPARE(want.count(QChar(0)), silent ? 0 : 2);
    QCOMPARE(commands.size(), 1);
    QCOMPARE(commands.first().first().toByteArray(), command.toLatin1());
    QCOMPARE(rig.notifier.shown.size(), 0);
}

void TestDeviceLink::missingPortWarnsOncePerRun() {
    Rig rig(1);
    rig.device = QStringLiteral("/nonexistent/tty-nakos");
    rig.link.com_openComPort();
    QVERIFY(!rig.link.portIsOpen());
    QCOMPARE(rig.notifier.shown.size(), 0); // opening alone never complains

    QSignalSpy polled(&rig.link, &DeviceLink::listPolled);
    rig.link.setQueryInterval(20);
    rig.link.com_startQuery();
    QTRY_VERIFY_WITH_TIMEOUT(polled.size() >= 3, kWaitMs);
    QCOMPARE(rig.notifier.shown.size(), 1);
    const ScriptedNotifier::Shown &box = rig.notifier.shown.first();
    QCOMPARE(box.text, QStringLiteral("Com port not available"));
    QVERIFY(box.title.isNull()); // the application's default title
    QVERIFY(box.icon == Notifier::Icon::Exclamation && box.buttons == Notifier::Buttons::Ok);

    rig.link.com_stopQuery();
    rig.link.com_startQuery();
    rig.link.com_stopQuery();
    QCOMPARE(rig.notifier.shown.size(), 2);

    // The service tools' exchange warns on every failure.
    QSignalSpy replied(&rig.link, &DeviceLink::queryStringReplied);
    rig.link.com_queryString(QStringLiteral("a\r\n"));
    rig.link.com_queryString(QStringLiteral("b\r\n"));
    QCOMPARE(replied.size(), 2);
    QCOMPARE(replied.first().first().toString(), QString());
    QCOMPARE(rig.notifier.shown.size(), 4);
}

void TestDeviceLink::unplugMidReplyEndsCleanly() {
    SimFaults unplug;
    unplug.closeMidReply = true;
    Rig rig(10, unplug);
    QSignalSpy polled(&rig.link, &DeviceLink::listPolled);
    QSignalSpy gone(&rig.sim, &SensorSimulator::unplugged);
    rig.link.com_app_getList();
    QVERIFY(polled.wait(kWaitMs));
    QCOMPARE(gone.size(), 1);
    QVERIFY(!rig.link.portIsOpen() && !rig.link.exchangeRunning());
    // The whole lines that arrived before the unplug are kept.
    QVERIFY(rig.store->dataPoint_count > 0 && rig.store->dataPoint_count < 10);
    QCOMPARE(rig.notifier.shown.size(), 0);
}

void TestDeviceLink::endlessTalkerKeepsExchangeAliveAndSkipsTicks() {
    SimFaults flood;
    flood.flood = true;
    Rig rig(4, flood);
    QSignalSpy polled(&rig.link, &DeviceLink::listPolled);
    QSignalSpy commands(&rig.sim, &SensorSimulator::commandReceived);
    int otherTimerTicks = 0;
    QTimer other;
    connect(&other, &QTimer::timeout, this, [&] { ++otherTimerTicks; });
    other.start(10);
    rig.link.setQueryInterval(100);
    rig.link.com_startQuery();
    // While the sensor talks, the exchange stays open, other timers keep
    // running, the query ticks find the poll busy and are skipped, and no
    // more of the reply is kept than the cap.
    QTRY_COMPARE_WITH_TIMEOUT(rig.link.replyBytes(), DeviceLink::kMaxReplyBytes, kWaitMs);
    QVERIFY(!polled.wait(400));
    QCOMPARE(rig.link.replyBytes(), DeviceLink::kMaxReplyBytes);
    QVERIFY(rig.link.exchangeRunning() && rig.link.pollRunning());
    QVERIFY(otherTimerTicks > 10);
    QCOMPARE(commands.size(), 1);
    // Skipped ticks leave nothing behind: once the poll ends and the query
    // is stopped, no further exchange follows.
    connect(&rig.link, &DeviceLink::listPolled, &rig.link, &DeviceLink::com_stopQuery);
    rig.sim.setFaults({});
    QVERIFY(polled.wait(kWaitMs));
    QVERIFY(!commands.wait(400));
    QCOMPARE(commands.size(), 1);
    // What was kept is the beginning of what the sensor sent, so every line
    // read from it is one the sensor sent whole.
    QByteArray sent = rig.sim.replyTo("list");
    for (size_t i = 0; sent.size() < DeviceLink::kMaxReplyBytes; ++i)
        sent += rig.sim.logLines()[i % 4] + "\r\n";
    sent.truncate(DeviceLink::kMaxReplyBytes);
    auto expected = std::make_unique<MeasurementStore>();
    const ListReplyResult want = applyListReply(sent, *expected);
    const auto got = polled.first().first().value<ListReplyResult>();
    QCOMPARE(got.added, 4);
    QCOMPARE(got.invalid, 0);
    QCOMPARE(got.lines, want.lines);
}

QTEST_GUILESS_MAIN(TestDeviceLink)
#include "tst_devicelink.moc"
