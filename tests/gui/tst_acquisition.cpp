// The road of a reading through the program: the control panel starts the
// query on the demo's in-process sensor, the readings reach the store, the
// charts, the title and the statistics, and stopping halts polling. The
// Toolbox's exchange waits for a poll that is running, and each Toolbox
// gets the replies to its own commands.
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
    QCOMPARE(panel.windowTitle(), QStringLiteral("Control Panel"));
    QCOMPARE(panel.size(), QSize(318, 340));
    QCOMPARE(panel.Combo1->count(), 19);
    QCOMPARE(panel.Combo1->itemText(18), QStringLiteral("COM 19"));
    QCOMPARE(panel.Command1->text(), QStringLiteral("Start Query Timer"));
    QCOMPARE(panel.Label1_data->text(), QStringLiteral("0 data points in memory"));
    QVERIFY(panel.Label2_data->text().isEmpty());
    QVERIFY(panel.Frame2->isHidden() && panel.Option_oilStream_any->isChecked());
    QVERIFY(panel.Picture_logo->isHidden());
    QCOMPARE(panel.Combo1->itemData(0, Qt::ToolTipRole).toString(), r.device);
    // No chart covers the panel at start.
    for (int i = 0; i < 4; ++i)
        QVERIFY(!r.window.charts()->slot(i)->geometry().intersects(panel.geometry()));

    // The port choice counts when the list is left.
    panel.Combo1->setCurrentIndex(6);
    panel.Combo1_Validate();
    QCOMPARE(r.session.link().comPort, int16_t(7));
    panel.Combo1->setCurrentIndex(-1);
    panel.Combo1_Validate();
    QCOMPARE(r.session.link().comPort, int16_t(0));

    // The oil name: kept trimmed while typed, shown when set from a file.
    panel.Text_oilName->setText(QStringLiteral("  SAE 40 "));
    QCOMPARE(r.store().oilName, QStringLiteral("SAE 40"));
    r.session.oilName_set(QStringLiteral("Gear oil"));
    QCOMPARE(panel.Text_oilName->text(), QStringLiteral("Gear oil"));
}

void TestAcquisition::queryFromButtonToCharts() {
    Rig r;
    QVERIFY(r.sim);
    ControlPanel &panel = r.panel();
    QSignalSpy polled(&r.session, &MonitorSession::pollFinished);
    panel.Command1->click();
    QCOMPARE(panel.Command1->text(), QStringLiteral("Stop Query Timer"));
    QTRY_VERIFY_WITH_TIMEOUT(polled.size() >= 3, kWaitMs);
    QVERIFY(r.notifier.shown.isEmpty());

    // Store, charts, title and statistics tell the same story.
    const MeasurementStore &store = r.store();
    QVERIFY(store.dataPoint_count >= 100);
    QCOMPARE(store.alarmThreshold, 500.0f);
    QCOMPARE(store.calSource.count, int16_t(3));
    for (int q = 0; q < 4; ++q)
        QCOMPARE(r.window.charts()->chart(ChartQuantity(q))->model().point_count,
                 store.dataPoint_count);
    QVERIFY(r.title.endsWith(QStringLiteral(" *")));
    panel.data_statistics_update();
    const auto stamp = [&](int i) {
        const DataPoint &p = store.dataPoints[size_t(i)];
        return QString::asprintf("%04d-%02d-%02d %02d:%02d:%02d", p.year, p.month, p.day, p.hour,
                                 p.minute, p.second);
    };
    QCOMPARE(panel.Label1_data->text(),
             QStringLiteral("%1 data points in memory").arg(store.dataPoint_count));
    QCOMPARE(panel.Label2_data->text(),
             stamp(0) + QStringLiteral("  -  ") + stamp(store.dataPoint_count - 1));

    // The second click stops polling: no tick is left to start another poll,
    // and the one under way still completes.
    panel.Command1->click();
    QCOMPARE(panel.Command1->text(), QStringLiteral("Start Query Timer"));
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
    // A second Toolbox asks too, and is closed before its turn comes: its
    // command is never sent, and no reply lands in the wrong window.
    auto abandoned = std::make_unique<Toolbox>(r.session);
    abandoned->Text_command->setText(QStringLiteral("calibration get"));
    abandoned->send();
    toolbox.Text_command->setText(QStringLiteral("alarmlimit get"));
    QTest::keyClick(toolbox.Text_command, Qt::Key_Return); // sends once, like the button
    abandoned.reset();
    r.session.query_stop();
    QTRY_VERIFY_WITH_TIMEOUT(!toolbox.Text_replies->toPlainText().isEmpty(), kWaitMs);
    QTRY_VERIFY_WITH_TIMEOUT(!r.session.link().exchangeRunning(), kWaitMs);
    QCOMPARE(commands, (QList<QByteArray>{"list", "alarmlimit get"}));
    const QString shown = toolbox.Text_replies->toPlainText();
    QVERIFY(shown.startsWith(QStringLiteral("> alarmlimit get\nalarmlimit get<CR><LF>\n")));
    QVERIFY(shown.contains(QStringLiteral("ALARMVALUE")));
    QVERIFY(!shown.contains(QStringLiteral("calibration")));
}

QTEST_MAIN(TestAcquisition)
#include "tst_acquisition.moc"
