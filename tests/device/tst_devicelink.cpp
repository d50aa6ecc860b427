// The device link against the simulated sensor on a real pseudo-terminal.
#include "core/clock.h"
#include "core/store.h"
#include "device/devicelink.h"
#include "sensorsim.h"
#include "support/scriptednotifier.h"

#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <memory>

namespace {

// Enough for a few exchanges of 200 ms silence each on a loaded machine.
constexpr int kWaitMs = 5000;

// The link on the simulated sensor's pseudo-terminal, `prefill` readings logged.
struct Rig {
    explicit Rig(int prefill, SimFaults faults = {}, int readingIntervalMs = 0)
        : sim(SimOptions{.readingIntervalMs = readingIntervalMs,
                         .logSize = std::max(100, prefill),
                         .prefill = prefill,
                         .faults = faults}) {
        if (sim.open())
            qFatal("cannot open a pseudo-terminal");
        device = sim.portPath();
        link.setConfiguredPort([this](int) { return device; });
        link.com_init();
    }
    bool poll(int ms = kWaitMs) {
        link.com_app_getList();
        return link.portIsOpen() && polled.wait(ms);
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

    // How a reply ends: slow bytes and short pauses are waited for; a long pause
    // or an unplugged device ends it, keeping the whole lines read so far. A
    // whole reply is followed by one more poll, which adds only the new readings.
    void replyEnd_data() {
        QTest::addColumn<SimFaults>("faults");
        QTest::addColumn<int>("logged");
        QTest::addColumn<bool>("whole");
        QTest::newRow("plain") << SimFaults{} << 3 << true;
        QTest::newRow("bytes 3 ms apart") << SimFaults{.byteDelayMs = 3} << 2 << true;
        QTest::newRow("100 ms gap inside the reply") << SimFaults{.gapMs = 100} << 10 << true;
        QTest::newRow("400 ms gap ends the reply") << SimFaults{.gapMs = 400} << 10 << false;
        QTest::newRow("unplugged mid-reply") << SimFaults{.closeMidReply = true} << 10 << false;
    }

    void replyEnd() {
        QFETCH(SimFaults, faults);
        QFETCH(int, logged);
        QFETCH(bool, whole);
        Rig rig(logged, faults);
        QSignalSpy sent(&rig.sim, &SensorSimulator::replySent);
        QVERIFY(rig.poll(4 * kWaitMs));
        const int first = rig.store->dataPoint_count;
        QVERIFY(!rig.link.portIsOpen() && !rig.link.exchangeRunning());
        QCOMPARE(rig.notifier.shown.size(), 0);
        if (whole) {
            QCOMPARE(first, logged);
            QVERIFY(rig.store->data_changed);
            const QByteArray water =
                QByteArray::number(double(rig.store->dataPoints[size_t(logged - 1)].water), 'f', 1);
            QVERIFY(rig.sim.logLines().back().contains(" WATER " + water + ' '));
            rig.sim.addReading();
            rig.sim.addReading();
            QVERIFY(rig.poll(4 * kWaitMs));
            QVERIFY(rig.lastPoll().echoOk);
            QCOMPARE(rig.lastPoll().added, 2);
            QCOMPARE(rig.lastPoll().duplicates, logged);
            QCOMPARE(rig.store->dataPoint_count, logged + 2);
            QCOMPARE(rig.notifier.shown.size(), 0);
            return;
        }
        QVERIFY(first > 0 && first < logged);
        if (faults.closeMidReply)
            return;
        // The rest of the reply, sent after the port was closed, is lost and
        // does not spoil the next reply's echo check.
        QVERIFY(!sent.isEmpty() || sent.wait(kWaitMs));
        rig.sim.setFaults({});
        QVERIFY(rig.poll());
        QVERIFY(rig.lastPoll().echoOk);
        QCOMPARE(rig.store->dataPoint_count, logged);
    }

    void queryString_data() {
        QTest::addColumn<QString>("command");
        QTest::addColumn<bool>("silent");
        QTest::newRow("NUL bytes kept in the reply") << QStringLiteral("list") << false;
        QTest::newRow("silent device: empty reply") << QStringLiteral("hello") << true;
    }

    void queryString() {
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

    void missingPortWarnsOncePerRun() {
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

    void endlessTalkerIsStoredAsItTalks() {
        // Some 4.4 MB of reading lines, then the same lines again without end.
        // An hour and a second between readings: the store's duplicate test
        // does not look at the hour.
        constexpr int logged = 40000;
        Rig rig(logged, {.flood = true}, 3601 * 1000);
        QSignalSpy commands(&rig.sim, &SensorSimulator::commandReceived);
        int otherTimerTicks = 0;
        QTimer other;
        connect(&other, &QTimer::timeout, this, [&] { ++otherTimerTicks; });
        other.start(10);
        // Each piece of new readings is named as it enters, right after the
        // previous one, while the link holds no more than an unfinished line.
        int next = 0;
        bool inOrder = true;
        qsizetype mostHeld = 0;
        connect(&rig.link, &DeviceLink::readingsAppended, this, [&](int first, int count) {
            inOrder = inOrder && first == next && count > 0;
            next = first + count;
            mostHeld = std::max(mostHeld, rig.link.bufferedBytes());
        });
        rig.link.setQueryInterval(100);
        rig.link.com_startQuery();
        QTRY_COMPARE_WITH_TIMEOUT(rig.store->dataPoint_count, logged, 60000);
        // Four more MiB of talk, all of it read and none of it kept.
        const uint64_t logBytes = rig.link.health().bytesReceived;
        QTRY_VERIFY_WITH_TIMEOUT(rig.link.health().bytesReceived > logBytes + 4 * 1024 * 1024,
                                 60000);
        QVERIFY(inOrder);
        QCOMPARE(next, logged);
        QVERIFY(mostHeld < 64 * 1024);
        // While the sensor talks, the exchange stays open, other timers keep
        // running and the query ticks are skipped.
        QVERIFY(rig.polled.isEmpty());
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
        QVERIFY(rig.link.bufferedBytes() == 0 && !rig.link.exchangeRunning());
        // Every line was read: the log once, then its repetitions as duplicates.
        const ListReplyResult got = rig.lastPoll();
        QVERIFY(got.echoOk);
        QCOMPARE(got.added, logged);
        QCOMPARE(got.invalid, 0);
        QCOMPARE(got.duplicates, got.lines - logged);
        QVERIFY(got.lines > logged + 10000);
        QCOMPARE(rig.link.health().pollsWithReadings, uint64_t(1));
    }
};

QTEST_GUILESS_MAIN(TestDeviceLink)
#include "tst_devicelink.moc"
