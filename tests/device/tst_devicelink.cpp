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

// The link on the simulated sensor's pseudo-terminal, `prefill` readings logged.
struct Rig {
    explicit Rig(int prefill, SimFaults faults = {})
        : sim(SimOptions{.readingIntervalMs = 0, .prefill = prefill, .faults = faults}) {
        if (sim.open())
            qFatal("cannot open a pseudo-terminal");
        device = sim.portPath();
        link.setConfiguredPort([this](int) { return device; });
        link.com_init();
    }
    bool poll(int ms = kWaitMs) {
        link.com_app_getList();
        return polled.wait(ms);
    }
    ListReplyResult lastPoll() const { return polled.last().first().value<PollOutcome>().list; }

    std::unique_ptr<MeasurementStore> store = std::make_unique<MeasurementStore>();
    ScriptedNotifier notifier;
    SensorSimulator sim;
    QString device;
    DeviceLink link{*store, notifier};
    QSignalSpy polled{&link, &DeviceLink::pollFinished};
};

} // namespace

class TestDeviceLink : public QObject {
    Q_OBJECT

private slots:
    void listPollsAddEachReadingOnce();
    void replyEnd_data();
    void replyEnd();
    void queryString_data();
    void queryString();
    void missingPortWarnsOncePerRun();
    void endlessTalkerKeepsExchangeAliveAndSkipsTicks();
};

void TestDeviceLink::listPollsAddEachReadingOnce() {
    Rig rig(3);
    rig.link.com_app_getList();
    QVERIFY(rig.link.portIsOpen());
    QVERIFY(rig.polled.wait(kWaitMs));
    QVERIFY(!rig.link.portIsOpen());
    QCOMPARE(rig.store->dataPoint_count, 3);
    QVERIFY(rig.store->data_changed);
    const QByteArray water = QByteArray::number(double(rig.store->dataPoints[2].water), 'f', 1);
    QVERIFY(rig.sim.logLines().back().contains(" WATER " + water + ' '));

    rig.sim.addReading();
    rig.sim.addReading();
    QVERIFY(rig.poll());
    QVERIFY(rig.lastPoll().echoOk);
    QCOMPARE(rig.lastPoll().added, 2);
    QCOMPARE(rig.lastPoll().duplicates, 3);
    QCOMPARE(rig.store->dataPoint_count, 5);
    QCOMPARE(rig.notifier.shown.size(), 0);
}

// How a reply ends: slow bytes and short pauses are waited for; a long pause
// or an unplugged device ends it, keeping the whole lines read so far.
void TestDeviceLink::replyEnd_data() {
    QTest::addColumn<SimFaults>("faults");
    QTest::addColumn<int>("logged");
    QTest::addColumn<bool>("whole");
    QTest::newRow("bytes 3 ms apart") << SimFaults{.byteDelayMs = 3} << 2 << true;
    QTest::newRow("100 ms gap inside the reply") << SimFaults{.gapMs = 100} << 10 << true;
    QTest::newRow("400 ms gap ends the reply") << SimFaults{.gapMs = 400} << 10 << false;
    QTest::newRow("unplugged mid-reply") << SimFaults{.closeMidReply = true} << 10 << false;
}

void TestDeviceLink::replyEnd() {
    QFETCH(SimFaults, faults);
    QFETCH(int, logged);
    QFETCH(bool, whole);
    Rig rig(logged, faults);
    QSignalSpy sent(&rig.sim, &SensorSimulator::replySent);
    QVERIFY(rig.poll(4 * kWaitMs));
    const int first = rig.store->dataPoint_count;
    if (whole)
        QCOMPARE(first, logged);
    else
        QVERIFY(first > 0 && first < logged);
    QVERIFY(!rig.link.portIsOpen() && !rig.link.exchangeRunning());
    QCOMPARE(rig.notifier.shown.size(), 0);
    if (whole || faults.closeMidReply)
        return;
    // The rest of the reply, sent after the port was closed, is lost and
    // does not spoil the next reply's echo check.
    QVERIFY(!sent.isEmpty() || sent.wait(kWaitMs));
    rig.sim.setFaults({});
    QVERIFY(rig.poll());
    QVERIFY(rig.lastPoll().echoOk);
    QCOMPARE(rig.store->dataPoint_count, logged);
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
    Rig rig(1, {.nulBytes = true, .silent = silent});
    QStringList replied;
    QSignalSpy commands(&rig.sim, &SensorSimulator::commandReceived);
    rig.link.com_queryString(command + QStringLiteral("\r\n"), this,
                             [&](const QString &reply) { replied << reply; });
    QTRY_COMPARE_WITH_TIMEOUT(replied.size(), 1, kWaitMs);
    const QString want = silent ? QString() : QString::fromLatin1(rig.sim.replyTo("list"));
    QCOMPARE(replied.first(), want);
    QCOMPARE(want.count(QChar(0)), silent ? 0 : 2);
    QCOMPARE(commands.size(), 1);
    QCOMPARE(commands.first().first().toByteArray(), command.toLatin1());
    QCOMPARE(rig.notifier.shown.size(), 0);
}

void TestDeviceLink::missingPortWarnsOncePerRun() {
    Rig rig(1);
    rig.device = QStringLiteral("/nonexistent/tty-nakos");
    rig.link.com_openComPort();
    QCOMPARE(rig.notifier.shown.size(), 0); // opening alone never complains

    rig.link.setQueryInterval(20);
    rig.link.com_startQuery();
    QTRY_VERIFY_WITH_TIMEOUT(rig.polled.size() >= 3, kWaitMs);
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
    QStringList replied;
    const auto keep = [&](const QString &reply) { replied << reply; };
    rig.link.com_queryString(QStringLiteral("a\r\n"), this, keep);
    rig.link.com_queryString(QStringLiteral("b\r\n"), this, keep);
    QCOMPARE(replied, QStringList({QString(), QString()}));
    QCOMPARE(rig.notifier.shown.size(), 4);
    QCOMPARE(rig.link.health().pollsWithoutPort, uint64_t(rig.polled.size()));
}

void TestDeviceLink::endlessTalkerKeepsExchangeAliveAndSkipsTicks() {
    Rig rig(4, {.flood = true});
    QSignalSpy commands(&rig.sim, &SensorSimulator::commandReceived);
    int otherTimerTicks = 0;
    QTimer other;
    connect(&other, &QTimer::timeout, this, [&] { ++otherTimerTicks; });
    other.start(10);
    rig.link.setQueryInterval(100);
    rig.link.com_startQuery();
    // While the sensor talks, the exchange stays open, other timers keep
    // running, the query ticks are skipped, and the reply is capped.
    QTRY_COMPARE_WITH_TIMEOUT(rig.link.replyBytes(), DeviceLink::kMaxReplyBytes, kWaitMs);
    QVERIFY(!rig.polled.wait(400));
    QCOMPARE(rig.link.replyBytes(), DeviceLink::kMaxReplyBytes);
    QVERIFY(rig.link.exchangeRunning() && rig.link.pollRunning());
    QVERIFY(otherTimerTicks > 10);
    QCOMPARE(commands.size(), 1);
    // Skipped ticks leave nothing behind: once the poll ends and the query
    // is stopped, no further exchange follows.
    connect(&rig.link, &DeviceLink::pollFinished, &rig.link, &DeviceLink::com_stopQuery);
    rig.sim.setFaults({});
    QVERIFY(rig.polled.wait(kWaitMs));
    QVERIFY(!commands.wait(400));
    QCOMPARE(commands.size(), 1);
    // What was kept is the beginning of what the sensor sent, every line whole.
    QByteArray sent = rig.sim.replyTo("list");
    for (size_t i = 0; sent.size() < DeviceLink::kMaxReplyBytes; ++i)
        sent += rig.sim.logLines()[i % 4] + "\r\n";
    sent.truncate(DeviceLink::kMaxReplyBytes);
    auto expected = std::make_unique<MeasurementStore>();
    const auto got = rig.polled.first().first().value<PollOutcome>().list;
    QCOMPARE(got.added, 4);
    QCOMPARE(got.invalid, 0);
    QCOMPARE(got.lines, applyListReply(sent, *expected).lines);
}

QTEST_GUILESS_MAIN(TestDeviceLink)
#include "tst_devicelink.moc"
