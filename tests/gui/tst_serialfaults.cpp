// Polling the simulated sensor while the port or the sensor misbehaves: the
// store keeps its points, takes no reading the sensor did not send, and
// polling recovers once the fault goes.
#include "chart/ui/chartset.h"
#include "chart/ui/dataview.h"
#include "device/devicelink.h"
#include "device/listreply.h"
#include "gui/mainwindow.h"
#include "gui/widgetnotifier.h"
#include "panel/ui/controlpanel.h"
#include "sensorsim.h"
#include "support/readings.h"
#include "support/sessionfixture.h"

#include <QAction>
#include <QApplication>
#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>
#include <QSerialPort>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <deque>
#include <memory>
#include <string_view>

using namespace Qt::StringLiterals;

namespace {

constexpr int kWaitMs = 10000;
constexpr int kHeld = 20; // points in the store before the query starts

enum class Fault {
    Locked,        // another QSerialPort holds it (and its lock file)
    HeldElsewhere, // another process holds it open without a lock
    GarbageAndNul,
    NoEcho,
    LargeReply,
};

bool samePoint(const DataPoint &a, const DataPoint &b) {
    return a.year == b.year && a.month == b.month && a.day == b.day && a.hour == b.hour &&
           a.minute == b.minute && a.second == b.second && a.water == b.water &&
           a.temperature == b.temperature && a.pressure == b.pressure && a.soot == b.soot &&
           a.stream == b.stream && a.adc_meas == b.adc_meas && a.adc_ref == b.adc_ref;
}

// The store still begins with the points it held.
bool keeps(const MeasurementStore &store, const std::vector<DataPoint> &held) {
    return store.dataPoint_count >= int(held.size()) &&
           std::equal(held.begin(), held.end(), store.dataPoints.begin(), samePoint);
}

// After the held points the store holds the sensor's log, in its order, each
// reading exactly as the sensor logged it, and nothing else.
bool holdsLog(const MeasurementStore &store, int from, const std::deque<QByteArray> &log) {
    if (store.dataPoint_count != from + int(log.size()))
        return false;
    for (size_t i = 0; i < log.size(); ++i) {
        DataPoint p;
        if (!parseListLine(std::string_view(log[i].constData(), size_t(log[i].size())), p) ||
            !samePoint(p, store.dataPoints[size_t(from) + i]))
            return false;
    }
    return true;
}

// A session, or with `window` the main window over it, started in its own
// folder, every port number leading to `device`, polling every 100 ms.
struct Rig : SessionFixture {
    Rig(int logged, SimFaults faults, bool window = false)
        : sim(SimOptions{
              .readingIntervalMs = 0, .logSize = 400, .prefill = logged, .faults = faults}) {
        if (sim.open())
            qFatal("cannot open a pseudo-terminal");
        device = sim.portPath();
        session.port_selectDevice(device);
        session.query_setInterval(100);
        if (window) {
            main = std::make_unique<MainWindow>(session);
            main->startUp(dir.path());
        } else {
            start();
        }
    }
    const DeviceLink &link() const { return session.link(); }
    // Readings of long ago, so none is taken for a reading of the sensor.
    std::vector<DataPoint> hold(int n) {
        std::vector<DataPoint> points = secondsApart(n, 2001);
        if (store().merge(points.data(), n, MergeMode::Replace))
            qFatal("cannot fill the store");
        return points;
    }

    SensorSimulator sim;
    QString device;
    std::unique_ptr<MainWindow> main;
};

} // namespace

class TestSerialFaults : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void faults_data();
    void faults();
    void floodKeepsTheWindowUsable();
    void sensorPluggedInWhileTheWarningIsOpen();
    void fullStore_data();
    void fullStore();
};

// The port refused (one "Com port not available" box) or the whole log read
// while the fault lasts; nothing read without the echo. QSerialPort refuses a
// port another one holds (its lock file); a plain open elsewhere goes
// unnoticed, and both then read from the line.
void TestSerialFaults::faults_data() {
    QTest::addColumn<Fault>("fault");
    QTest::addColumn<bool>("warned");
    QTest::newRow("port locked by another open") << Fault::Locked << true;
    QTest::newRow("port open in another process: not refused") << Fault::HeldElsewhere << false;
    QTest::newRow("garbage and NUL bytes") << Fault::GarbageAndNul << false;
    QTest::newRow("no echo") << Fault::NoEcho << false;
    QTest::newRow("reply beyond the 8192-byte buffer") << Fault::LargeReply << false;
}

void TestSerialFaults::faults() {
    QFETCH(Fault, fault);
    QFETCH(bool, warned);
    const bool garbage = fault == Fault::GarbageAndNul;
    Rig r(fault == Fault::LargeReply ? 300 : 10,
          {.noEcho = fault == Fault::NoEcho, .garbage = garbage, .nulBytes = garbage});
    if (fault == Fault::LargeReply)
        QVERIFY(r.sim.replyTo("list").size() > 3 * 8192);
    const std::vector<DataPoint> held = r.hold(kHeld);
    const int logged = int(r.sim.logLines().size());

    QSerialPort holder;
    QProcess other;
    if (fault == Fault::Locked) {
        holder.setPortName(r.device);
        QVERIFY(holder.open(QIODevice::ReadWrite));
    } else if (fault == Fault::HeldElsewhere) {
        // The shell opens it, so it never becomes our controlling terminal.
        other.start(u"sh"_s, {u"-c"_s, u"exec sleep 60 <\"$0\""_s, r.device});
        QVERIFY(other.waitForStarted());
        const QString fd0 = u"/proc/%1/fd/0"_s.arg(other.processId());
        QTRY_COMPARE(QFileInfo(fd0).symLinkTarget(), r.device);
    }

    const DeviceLink &link = r.link();
    QSignalSpy polled(&r.session, &MonitorSession::pollFinished);
    bool keptAlong = true;
    connect(&r.session, &MonitorSession::pollFinished, this,
            [&] { keptAlong = keptAlong && keeps(r.store(), held); });
    r.session.query_start();
    // The first poll asks for the list only, the second is a whole tick.
    QTRY_VERIFY_WITH_TIMEOUT(polled.size() >= 2, kWaitMs);
    const bool refused = warned || fault == Fault::NoEcho;
    QCOMPARE(r.store().dataPoint_count - kHeld, refused ? 0 : logged);

    // The fault goes; the next polls bring what was missing and a new reading.
    if (fault == Fault::Locked) {
        holder.close();
    } else if (fault == Fault::HeldElsewhere) {
        other.kill();
        QVERIFY(other.waitForFinished());
    } else {
        r.sim.setFaults({});
    }
    r.sim.addReading();
    QTRY_COMPARE_WITH_TIMEOUT(r.store().dataPoint_count, kHeld + logged + 1, kWaitMs);
    r.session.query_stop();
    QTRY_VERIFY_WITH_TIMEOUT(!link.pollRunning(), kWaitMs);
    QVERIFY(keptAlong && keeps(r.store(), held));
    QVERIFY(holdsLog(r.store(), kHeld, r.sim.logLines()));
    QCOMPARE(r.notifier.shown.size(), warned ? 1 : 0);
}

void TestSerialFaults::floodKeepsTheWindowUsable() {
    Rig r(10, {.flood = true}, true);
    const std::vector<DataPoint> held = r.hold(kHeld);
    ControlPanel &panel = *r.main->controlPanel();
    const DeviceLink &link = r.link();
    QSignalSpy polled(&r.session, &MonitorSession::pollFinished);

    panel.Command1->click(); // the log enters the store while the sensor talks on

    QTRY_VERIFY_WITH_TIMEOUT(link.health().bytesReceived > 1024 * 1024, kWaitMs);
    QVERIFY(holdsLog(r.store(), kHeld, r.sim.logLines()));
    QVERIFY(polled.isEmpty() && link.exchangeRunning());

    // A chart window repaints when asked and a menu command's dialog opens
    // and closes.
    struct PaintCounter : QObject {
        int n = 0;
        bool eventFilter(QObject *, QEvent *e) override {
            n += e->type() == QEvent::Paint;
            return false;
        }
    } painted;
    DataView *chart = r.main->charts()->slot(0);
    chart->installEventFilter(&painted);
    chart->update();
    QTRY_VERIFY_WITH_TIMEOUT(painted.n > 0, kWaitMs);
    chart->removeEventFilter(&painted);
    bool aboutShown = false;
    QTimer::singleShot(100, this, [&] {
        if (QWidget *dialog = QApplication::activeModalWidget()) {
            aboutShown = true;
            dialog->close();
        }
    });
    r.main->q_about->trigger();
    QVERIFY(aboutShown);

    // The poll under way ends when the line falls quiet.
    panel.Command1->click();
    QCOMPARE(panel.Command1->text(), u"Start Query Timer"_s);
    QVERIFY(!link.queryRunning());
    r.sim.setFaults({});
    QVERIFY(polled.wait(kWaitMs));
    QVERIFY(keeps(r.store(), held));
    QVERIFY(holdsLog(r.store(), kHeld, r.sim.logLines()));
    QVERIFY(r.notifier.shown.isEmpty());
}

// A sensor plugged in while the program's own "Com port not available" box
// stays unanswered: its by-id link is missing at the first two polls and
// there from the third on, and the log is stored all the same.
void TestSerialFaults::sensorPluggedInWhileTheWarningIsOpen() {
    WidgetNotifier notifier;
    SessionFixture f(&notifier);
    MainWindow window(f.session);
    notifier.setParent(&window);
    SensorSimulator sim(SimOptions{.readingIntervalMs = 0, .prefill = 10, .faults = {}});
    QVERIFY(!sim.open());
    const QString byId = f.dir.filePath(u"usb-ORLUK_Sensor_0042-if00-port0"_s);
    RegistryKey &key = f.session.settingsKey();
    QVERIFY(!key.openOrCreate() && !key.setString(u"ComPort7"_s, byId));
    key.close();

    window.startUp(f.dir.path());
    window.controlPanel()->selectPort(7);
    QList<PollOutcome::Status> outcomes;
    connect(&f.session, &MonitorSession::pollFinished, this, [&](const PollOutcome &outcome) {
        outcomes << outcome.status;
        if (outcomes.size() == 2)
            QFile::link(sim.portPath(), byId);
    });
    f.session.query_setInterval(100);
    f.session.query_start();
    QTRY_VERIFY_WITH_TIMEOUT(outcomes.size() >= 3, kWaitMs);
    f.session.query_stop();
    QVERIFY(holdsLog(f.store(), 0, sim.logLines()));
    using S = PollOutcome::Status;
    QCOMPARE(outcomes.mid(0, 3), (QList<S>{S::PortMissing, S::PortMissing, S::Readings}));
    const QList<QMessageBox *> boxes = window.findChildren<QMessageBox *>();
    QCOMPARE(boxes.size(), 1);
    QVERIFY(boxes.first()->isVisible());
    QCOMPARE(boxes.first()->text(), u"Com port not available"_s);
    QCOMPARE(f.session.health().pollsWithoutPort, uint64_t(2));
}

void TestSerialFaults::fullStore_data() {
    QTest::addColumn<int>("held");
    QTest::newRow("filled to one short") << 130000 - 11;
    QTest::newRow("more readings than room") << 130000 - 4;
    QTest::newRow("full") << 130000;
}

// Polls at the store's capacity fill it up to the last entry and no further,
// and the panel says when it is full.
void TestSerialFaults::fullStore() {
    QFETCH(int, held);
    constexpr int logged = 10;
    constexpr int capacity = 130000;
    Rig r(logged, {}, true);
    const std::vector<DataPoint> before = r.hold(held);
    ControlPanel &panel = *r.main->controlPanel();
    QSignalSpy polled(&r.session, &MonitorSession::pollFinished);
    const auto lastPoll = [&] { return polled.last().first().value<PollOutcome>().list; };
    panel.Command1->click();
    QVERIFY(polled.wait(kWaitMs));
    const int count = std::min(capacity, held + logged);
    QCOMPARE(lastPoll().added, count - held);
    QCOMPARE(lastPoll().full, held + logged - count);
    QCOMPARE(r.store().dataPoint_count, count);
    QTRY_COMPARE(panel.Label1_data->text(), count == capacity
                                                ? u"DATA POINT MEMORY FULL!"_s
                                                : u"%1 data points in memory"_s.arg(count));

    // A new reading goes to the last entry or is dropped, without a message.
    r.sim.addReading();
    QTRY_VERIFY_WITH_TIMEOUT(lastPoll().lines == logged + 1, kWaitMs);
    panel.Command1->click();
    QTRY_VERIFY_WITH_TIMEOUT(!r.link().pollRunning(), kWaitMs);
    QCOMPARE(r.store().dataPoint_count, std::min(capacity, count + 1));
    QVERIFY(keeps(r.store(), before));
    QTRY_COMPARE(panel.Label1_data->text(), u"DATA POINT MEMORY FULL!"_s);
    QVERIFY(r.notifier.shown.isEmpty());
}

QTEST_MAIN(TestSerialFaults)
#include "tst_serialfaults.moc"
