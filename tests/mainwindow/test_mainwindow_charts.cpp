// The main window's charts: created at start-up as the display settings
// say, rebuilt by the change monitor and by New, and the stream filter.
#include "chart/ui/chartset.h"
#include "chart/ui/dataview.h"
#include "core/ui/mainwindow.h"
#include "settings/filekey.h"
#include "support/scriptednotifier.h"

#include <QAction>
#include <QMdiArea>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

namespace {

struct Fixture {
    explicit Fixture(const QString &dir, bool storedSoot = false)
        : key(dir + QStringLiteral("/settings.reg"),
              QLatin1String("HKEY_LOCAL_MACHINE\\") + settings::keyPath()),
          ctx{*store, flags, key, notifier, clock}, window(ctx) {
        if (storedSoot) {
            DisplayFlags stored;
            stored.displaySoot = true;
            settings::writeRegistry(key, stored, false);
        }
        window.startUp(dir);
    }
    void addReadings(int n) {
        for (int i = 0; i < n; ++i) {
            DataPoint p;
            p.year = 2024;
            p.month = 3;
            p.day = 5;
            p.hour = 14;
            p.minute = uint8_t(i / 60);
            p.second = uint8_t(i % 60);
            p.water = float(100 + i);
            p.stream = int16_t(1 + i % 2);
            store->append(p);
        }
    }
    DataView *chart(ChartQuantity q) const { return window.charts()->chart(q); }

    std::unique_ptr<MeasurementStore> store = std::make_unique<MeasurementStore>();
    DisplayFlags flags;
    FileRegistryKey key;
    ScriptedNotifier notifier;
    FixedClock clock;
    AppContext ctx;
    MainWindow window;
};

} // namespace

class TestMainWindowCharts : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void startUpCreatesTheCharts_data();
    void startUpCreatesTheCharts();
    void changeMonitorAndNewRedraw();
    void streamFilter();
};

void TestMainWindowCharts::startUpCreatesTheCharts_data() {
    QTest::addColumn<bool>("storedSoot");
    QTest::newRow("first run: soot hidden") << false;
    QTest::newRow("soot stored on: shown") << true;
}

void TestMainWindowCharts::startUpCreatesTheCharts() {
    QFETCH(bool, storedSoot);
    QTemporaryDir dir;
    Fixture f(dir.path(), storedSoot);
    f.window.show();
    ChartSet *charts = f.window.charts();
    QVERIFY(charts);
    QCOMPARE(charts->chartCount(), 4);
    QCOMPARE(f.window.mdiArea()->subWindowList().size(), 4);
    QCOMPARE(f.chart(ChartQuantity::Water)->windowTitle(), QStringLiteral("Water [ppm]"));
    QCOMPARE(f.chart(ChartQuantity::Soot)->windowTitle(), QStringLiteral("Soot [%]"));
    QVERIFY(f.chart(ChartQuantity::Water)->isVisible());
    QVERIFY(f.chart(ChartQuantity::Pressure)->isVisible());
    QVERIFY(f.chart(ChartQuantity::Temperature)->isVisible());
    QCOMPARE(f.chart(ChartQuantity::Soot)->isVisible(), storedSoot);
    QVERIFY(charts->Timer_monitorChanges.isActive());
    QVERIFY(charts->Timer1.isActive());
}

void TestMainWindowCharts::changeMonitorAndNewRedraw() {
    QTemporaryDir dir;
    Fixture f(dir.path());
    f.addReadings(30);
    f.store->display_update_pending = true;
    QTRY_COMPARE(f.chart(ChartQuantity::Water)->model().point_count, 30);
    QVERIFY(!f.store->display_update_pending);

    f.notifier.answers = {Notifier::Answer::No};
    f.window.file_new->trigger();
    QCOMPARE(f.chart(ChartQuantity::Water)->model().point_count, 0);
    QCOMPARE(f.chart(ChartQuantity::Soot)->model().point_count, 0);
}

void TestMainWindowCharts::streamFilter() {
    QTemporaryDir dir;
    Fixture f(dir.path());
    f.addReadings(10);
    f.window.display_data();
    float a = 0.2f, b = 0.6f;
    f.chart(ChartQuantity::Pressure)->setZoom_x(a, b);
    f.window.dataView_selectStream(2);
    QCOMPARE(f.store->stream_selected, 2);
    QCOMPARE(f.chart(ChartQuantity::Water)->model().point_count, 5);
    QVERIFY(!f.chart(ChartQuantity::Pressure)->model().zoomActive);
}

QTEST_MAIN(TestMainWindowCharts)
#include "test_mainwindow_charts.moc"
