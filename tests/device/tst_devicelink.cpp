// The device link against the simulated sensor on a real pseudo-terminal.
#include "core/clock.h"
#include "core/store.h"
#include "device/devicelink.h"
#include "sensorsim.h"
#include "support/scriptednotifier.h"

#include <QSerialPort>
#include <QSignalSpy>
#include <QTest>

#include <memory>

namespace {

// Enough for a few exchanges of 200 ms silence each on a loaded machine.
constexpr int kWaitMs = 5000;

struct Rig {
    explicit Rig(SimOptions options = {}) : sim(withDefaults(options)) {
        if (sim.open())
            qFatal("cannot open a pseudo-terminal");
        device = sim.portPath();
        link.setConfiguredPort([this](int) { return device; });
        link.com_init();
    }

    static SimOptions withDefaults(SimOptions o) {
        o.readingIntervalMs = 0; // the tests add readings themselves
        return o;
    }

    std::unique_ptr<MeasurementStore> store = std::make_unique<MeasurementStore>();
    ScriptedNotifier notifier;
    SensorSimulator sim;
    QString device;
    DeviceLink link{*store, notifier};
};

SimOptions prefilled(int n, SimFaults faults = {}) {
    SimOptions o;
    o.prefill = n;
    o.faults = faults;
    return o;
}

} // namespace

class TestDeviceLink : public QObject {
    Q_OBJECT

private slots:
    void listPollAddsTheLoggedReadings();
    void secondPollAddsOnlyNewReadings();
    void tickQueriesAlarmCalibrationThenList();
    void replyWithGap_data();
    void replyWithGap();
    void slowBytesArriveWhole();
    void faultyReplies_data();
    void faultyReplies();
    void nulBytesKeptInQueryString();
    void silentDeviceGivesEmptyReply();
    void missingPortWarnsOncePerRun();
    void portInUseIsNotAvailable();
    void unplugMidReplyEndsCleanly();
    void endlessTalkerKeepsExchangeAliveAndSkipsTicks();
};

void TestDeviceLink::listPollAddsTheLoggedReadings() {
    Rig rig(prefilled(5));
    QSignalSpy polled(&rig.link, &DeviceLink::listPolled);
    rig.link.com_app_getList();
    QVERIFY(rig.link.portIsOpen());
    QVERIFY(polled.wait(kWaitMs));
    QVERIFY(!rig.link.portIsOpen());
    QCOMPARE(rig.store->dataPoint_count, 5);
    QVERIFY(rig.store->data_changed);
    const auto result = polled.first().first().value<ListReplyResult>();
    QVERIFY(result.echoOk);
    QCOMPARE(result.added, 5);
    // The last stored point is the last logged line, field by field.
    const DataPoint &p = rig.store->dataPoints[4];
    const QByteArray line = rig.sim.logLines().back();
    QCOMPARE(QStringLiteral("%1-%2-%3 %4:%5:%6")
                 .arg(p.year)
                 .arg(p.month, 2, 10, QLatin1Char('0'))
                 .arg(p.day, 2, 10, QLatin1Char('0'))
                 .arg(p.hour, 2, 10, QLatin1Char('0'))
                 .arg(p.minute, 2, 10, QLatin1Char('0'))
                 .arg(p.second, 2, 10, QLatin1Char('0')),
             QString::fromLatin1(line.left(19)));
    QVERIFY(line.contains(" WATER " + QByteArray::number(double(p.water), 'f', 1) + ' '));
    QCOMPARE(p.stream, int16_t(1));
    QCOMPARE(rig.notifier.shown.size(), 0);
}

void TestDeviceLink::secondPollAddsOnlyNewReadings() {
    Rig rig(prefilled(3));
    QSignalSpy polled(&rig.link, &DeviceLink::listPolled);
    rig.link.com_app_getList();
    QVERIFY(polled.wait(kWaitMs));
    rig.sim.addReading();
    rig.sim.addReading();
    rig.link.com_app_getList();
    QVERIFY(polled.wait(kWaitMs));
    const auto second = polled.last().first().value<ListReplyResult>();
    QCOMPARE(second.added, 2);
    QCOMPARE(second.duplicates, 3);
    QCOMPARE(rig.store->dataPoint_count, 5);
}

void TestDeviceLink::tickQueriesAlarmCalibrationThenList() {
    SimOptions o = prefilled(2);
    o.alarmValue = 350.5f;
    Rig rig(o);
    QSignalSpy commands(&rig.sim, &SensorSimulator::commandReceived);
    QSignalSpy polled(&rig.link, &DeviceLink::listPolled);
    rig.link.setQueryInterval(300);
    rig.link.com_startQuery();
    QVERIFY(rig.link.queryRunning());
    QTRY_COMPARE_WITH_TIMEOUT(polled.size(), 2, 2 * kWaitMs);
    rig.link.com_stopQuery();
    QStringList sent;
    for (const QList<QVariant> &c : commands)
        sent << QString::fromLatin1(c.first().toByteArray());
    QCOMPARE(sent, QStringList({QStringLiteral("list"), QStringLiteral("alarmlimit get"),
                                QStringLiteral("calibration get"), QStringLiteral("list")}));
    QCOMPARE(rig.store->alarmThreshold, 350.5f);
    QCOMPARE(rig.store->calSource.count, int16_t(3));
    QCOMPARE(rig.store->calSource.pairs[2].second, 600.0f);
    QCOMPARE(rig.store->calTable.count, int16_t(2));
    QCOMPARE(rig.store->calTable.pairs[0].first, 0.1f);
    QCOMPARE(rig.store->dataPoint_count, 2);
}

void TestDeviceLink::replyWithGap_data() {
    QTest::addColumn<int>("gapMs");
    QTest::addColumn<bool>("whole");
    QTest::newRow("100 ms gap inside the reply") << 100 << true;
    QTest::newRow("250 ms gap ends the reply") << 250 << false;
}

void TestDeviceLink::replyWithGap() {
    QFETCH(int, gapMs);
    QFETCH(bool, whole);
    SimFaults gap;
    gap.gapMs = gapMs;
    Rig rig(prefilled(10, gap));
    QSignalSpy polled(&rig.link, &DeviceLink::listPolled);
    QSignalSpy sent(&rig.sim, &SensorSimulator::replySent);
    rig.link.com_app_getList();
    QVERIFY(polled.wait(kWaitMs));
    const int first = rig.store->dataPoint_count;
    if (whole) {
        QCOMPARE(first, 10);
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

void TestDeviceLink::slowBytesArriveWhole() {
    SimFaults slow;
    slow.byteDelayMs = 3;
    Rig rig(prefilled(2, slow));
    QSignalSpy polled(&rig.link, &DeviceLink::listPolled);
    rig.link.com_app_getList();
    QVERIFY(polled.wait(4 * kWaitMs));
    QCOMPARE(rig.store->dataPoint_count, 2);
}

void TestDeviceLink::faultyReplies_data() {
    QTest::addColumn<SimFaults>("faults");
    QTest::addColumn<bool>("echoOk");
    QTest::addColumn<int>("added");
    SimFaults f;
    f.noEcho = true;
    QTest::newRow("no echo: reply ignored") << f << false << 0;
    f = {};
    f.garbage = true;
    QTest::newRow("garbage lines dropped, readings kept") << f << true << 6;
    f = {};
    f.nulBytes = true;
    QTest::newRow("NUL bytes inside lines") << f << true << 6;
}

void TestDeviceLink::faultyReplies() {
    QFETCH(SimFaults, faults);
    QFETCH(bool, echoOk);
    QFETCH(int, added);
    Rig rig(prefilled(6, faults));
    QSignalSpy polled(&rig.link, &DeviceLink::listPolled);
    rig.link.com_app_getList();
    QVERIFY(polled.wait(kWaitMs));
    const auto result = polled.first().first().value<ListReplyResult>();
    QCOMPARE(result.echoOk, echoOk);
    QCOMPARE(result.added, added);
    QCOMPARE(rig.store->dataPoint_count, added);
}

void TestDeviceLink::nulBytesKeptInQueryString() {
    SimFaults nul;
    nul.nulBytes = true;
    Rig rig(prefilled(1, nul));
    QSignalSpy replied(&rig.link, &DeviceLink::queryStringReplied);
    rig.link.com_queryString(QStringLiteral("list\r\n"));
    QVERIFY(replied.wait(kWaitMs));
    const QString reply = replied.first().first().toString();
    QCOMPARE(reply, QString::fromLatin1(rig.sim.replyTo("list")));
    QCOMPARE(reply.count(QChar(0)), 2);
}

void TestDeviceLink::silentDeviceGivesEmptyReply() {
    SimFaults silent;
    silent.silent = true;
    Rig rig(prefilled(1, silent));
    QSignalSpy replied(&rig.link, &DeviceLink::queryStringReplied);
    QSignalSpy commands(&rig.sim, &SensorSimulator::commandReceived);
    rig.link.com_queryString(QStringLiteral("hello\r\n"));
    QVERIFY(replied.wait(kWaitMs));
    QCOMPARE(replied.first().first().toString(), QString());
    QCOMPARE(commands.size(), 1);
    QCOMPARE(commands.first().first().toByteArray(), QByteArray("hello"));
    QVERIFY(!rig.link.portIsOpen());
    QCOMPARE(rig.notifier.shown.size(), 0);
}

void TestDeviceLink::missingPortWarnsOncePerRun() {
    Rig rig(prefilled(1));
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
    QCOMPARE(box.icon, Notifier::Icon::Exclamation);
    QCOMPARE(box.buttons, Notifier::Buttons::Ok);
    QVERIFY(rig.link.noPortWarned());

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

void TestDeviceLink::portInUseIsNotAvailable() {
    Rig rig(prefilled(2));
    QSignalSpy polled(&rig.link, &DeviceLink::listPolled);
    {
        QSerialPort other;
        other.setPortName(rig.device);
        QVERIFY(other.open(QIODevice::ReadWrite));
        rig.link.com_app_getList();
        QCOMPARE(polled.size(), 1);
        QCOMPARE(rig.notifier.shown.size(), 1);
        QCOMPARE(rig.store->dataPoint_count, 0);
    }
    rig.link.com_app_getList();
    QVERIFY(polled.wait(kWaitMs));
    QCOMPARE(rig.store->dataPoint_count, 2);
}

void TestDeviceLink::unplugMidReplyEndsCleanly() {
    SimFaults unplug;
    unplug.closeMidReply = true;
    Rig rig(prefilled(10, unplug));
    QSignalSpy polled(&rig.link, &DeviceLink::listPolled);
    QSignalSpy gone(&rig.sim, &SensorSimulator::unplugged);
    rig.link.com_app_getList();
    QVERIFY(polled.wait(kWaitMs));
    QCOMPARE(gone.size(), 1);
    QVERIFY(!rig.link.portIsOpen());
    QVERIFY(!rig.link.exchangeRunning());
    // The whole lines that arrived before the unplug are kept.
    QVERIFY(rig.store->dataPoint_count > 0 && rig.store->dataPoint_count < 10);
    QCOMPARE(rig.notifier.shown.size(), 0);
}

void TestDeviceLink::endlessTalkerKeepsExchangeAliveAndSkipsTicks() {
    SimFaults endless;
    endless.endless = true;
    Rig rig(prefilled(4, endless));
    QSignalSpy polled(&rig.link, &DeviceLink::listPolled);
    QSignalSpy commands(&rig.sim, &SensorSimulator::commandReceived);
    int otherTimerTicks = 0;
    QTimer other;
    connect(&other, &QTimer::timeout, this, [&] { ++otherTimerTicks; });
    other.start(10);
    rig.link.setQueryInterval(100);
    rig.link.com_startQuery();
    // While the sensor talks, the exchange stays open, other timers keep
    // running and the query ticks find the poll busy and are skipped.
    QVERIFY(!polled.wait(800));
    QVERIFY(rig.link.exchangeRunning());
    QVERIFY(rig.link.portIsOpen());
    QVERIFY(otherTimerTicks > 10);
    QCOMPARE(commands.size(), 1);
    QVERIFY(rig.link.pollRunning());
    // Skipped ticks leave nothing behind: once the poll ends and the query
    // is stopped, no further exchange follows.
    connect(&rig.link, &DeviceLink::listPolled, &rig.link, &DeviceLink::com_stopQuery);
    rig.sim.setFaults({});
    QVERIFY(polled.wait(kWaitMs));
    QVERIFY(!commands.wait(400));
    QCOMPARE(commands.size(), 1);
    const auto result = polled.first().first().value<ListReplyResult>();
    QVERIFY(result.echoOk);
    QCOMPARE(result.added, 4);
    QVERIFY(result.duplicates > 0);
}

QTEST_GUILESS_MAIN(TestDeviceLink)
#include "tst_devicelink.moc"
