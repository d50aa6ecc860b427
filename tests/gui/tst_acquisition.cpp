// A reading's road from the demo's in-process sensor, started on the control
// panel, to the store, charts, title and statistics; the Toolbox's exchange.
#include "chart/ui/chartset.h"
#include "chart/ui/dataview.h"
#include "device/devicelink.h"
#include "device/ui/toolbox.h"
#include "gui/demosensor.h"
#include "gui/mainwindow.h"
#include "panel/ui/controlpanel.h"
#include "sensorsim.h"
#include "support/sessionfixture.h"

#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

constexpr int kWaitMs = 10000;

struct Rig : SessionFixture {
    Rig() {
        QString error;
        device = startDemoSensor(session, &window, error);
        window.startUp(dir.path());
        sim = window.findChild<SensorSimulator *>();
        session.query_setInterval(600);
    }
    MainWindow window{session};
    QString device;
    SensorSimulator *sim = nullptr;
    ControlPanel &panel() { return *window.controlPanel(); }
};

} // namespace

class TestAcquisition : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void panelAtStart();
    void queryFromButtonToCharts();
    void toolboxWaitsForThePoll();
};

void TestAcquisition::panelAtStart() {
    Rig r;
    ControlPanel &panel = r.panel();
    QCOMPARE(panel.windowTitle(), u"Control Panel"_s);
    QCOMPARE(panel.size(), QSize(318, 340));
    QCOMPARE(panel.Combo1->count(), 19);
    QCOMPARE(panel.Combo1->itemText(18), u"COM 19"_s);
    QCOMPARE(panel.Command1->text(), u"Start Query Timer"_s);
    QCOMPARE(panel.Label1_data->text(), u"0 data points in memory"_s);
    QVERIFY(panel.Label2_data->text().isEmpty());
    QVERIFY(panel.Frame2->isHidden() && panel.Option_oilStream_any->isChecked());
    QVERIFY(panel.Picture_logo->isHidden());
    QCOMPARE(panel.Combo1->itemData(0, Qt::ToolTipRole).toString(), r.device);
    for (int i = 0; i < 4; ++i)
        QVERIFY(!r.window.charts()->slot(i)->geometry().intersects(panel.geometry()));

    // The port choice (COM 7 at index 6) counts when the list is left.
    panel.Combo1->setCurrentIndex(6);
    panel.Combo1_Validate();
    QCOMPARE(r.session.link().comPort, int16_t(7));
    panel.Combo1->setCurrentIndex(-1);
    panel.Combo1_Validate();
    QCOMPARE(r.session.link().comPort, int16_t(0));

    // The oil name: kept trimmed while typed, shown when set from a file.
    panel.Text_oilName->setText(u"  SAE 40 "_s);
    QCOMPARE(r.store().oilName, u"SAE 40"_s);
    r.session.oilName_set(u"Gear oil"_s);
    QCOMPARE(panel.Text_oilName->text(), u"Gear oil"_s);
}

void TestAcquisition::queryFromButtonToCharts() {
    Rig r;
    QVERIFY(r.sim);
    ControlPanel &panel = r.panel();
    QSignalSpy polled(&r.session, &MonitorSession::pollFinished);
    panel.Command1->click();
    QCOMPARE(panel.Command1->text(), u"Stop Query Timer"_s);
    QTRY_VERIFY_WITH_TIMEOUT(polled.size() >= 3, kWaitMs);
    QVERIFY(r.notifier.shown.isEmpty());

    const MeasurementStore &store = r.store();
    QVERIFY(store.dataPoint_count >= 100);
    QCOMPARE(store.alarmThreshold, 500.0f);
    QCOMPARE(store.calSource.count, int16_t(3));
    for (int q = 0; q < 4; ++q)
        QCOMPARE(r.window.charts()->chart(ChartQuantity(q))->model().point_count,
                 store.dataPoint_count);
    QVERIFY(r.title.endsWith(u" *"_s));
    panel.data_statistics_update();
    const auto stamp = [&](int i) {
        const DataPoint &p = store.dataPoints[size_t(i)];
        return QString::asprintf("%04d-%02d-%02d %02d:%02d:%02d", p.year, p.month, p.day, p.hour,
                                 p.minute, p.second);
    };
    QCOMPARE(panel.Label1_data->text(), u"%1 data points in memory"_s.arg(store.dataPoint_count));
    QCOMPARE(panel.Label2_data->text(), stamp(0) + u"  -  "_s + stamp(store.dataPoint_count - 1));

    // The second click leaves no tick to start another poll; the one under
    // way still completes.
    panel.Command1->click();
    QCOMPARE(panel.Command1->text(), u"Start Query Timer"_s);
    QVERIFY(!r.session.queryRunning() && !r.session.link().Timer_queryTiming.isActive());
    QTRY_VERIFY_WITH_TIMEOUT(!r.session.link().pollRunning(), kWaitMs);
}

void TestAcquisition::toolboxWaitsForThePoll() {
    Rig r;
    QVERIFY(r.sim);
    QList<QByteArray> commands;
    connect(r.sim, &SensorSimulator::commandReceived, this,
            [&](const QByteArray &c) { commands << c.trimmed(); });
    Toolbox toolbox(r.session);
    toolbox.show();
    QVERIFY(QTest::qWaitForWindowActive(&toolbox));
    r.session.query_start(); // the immediate "list" is under way
    // A second Toolbox, closed before its turn, sends nothing and gets nothing.
    auto abandoned = std::make_unique<Toolbox>(r.session);
    abandoned->Text_command->setText(u"calibration get"_s);
    abandoned->send();
    toolbox.Text_command->setText(u"alarmlimit get"_s);
    QTest::keyClick(toolbox.Text_command, Qt::Key_Return); // sends once, like the button
    abandoned.reset();
    r.session.query_stop();
    QTRY_VERIFY_WITH_TIMEOUT(!toolbox.Text_replies->toPlainText().isEmpty(), kWaitMs);
    QTRY_VERIFY_WITH_TIMEOUT(!r.session.link().exchangeRunning(), kWaitMs);
    QCOMPARE(commands, (QList<QByteArray>{"list", "alarmlimit get"}));
    const QString shown = toolbox.Text_replies->toPlainText();
    QVERIFY(shown.startsWith(u"> alarmlimit get\nalarmlimit get<CR><LF>\n"_s));
    QVERIFY(shown.contains(u"ALARMVALUE"_s));
    QVERIFY(!shown.contains(u"calibration"_s));
}

QTEST_MAIN(TestAcquisition)
#include "tst_acquisition.moc"
