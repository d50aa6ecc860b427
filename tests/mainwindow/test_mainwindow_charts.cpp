// The main window's charts: created at start-up as the display settings
// say, then rebuilt by the change monitor, the stream filter and New.
#include "chart/ui/chartset.h"
#include "chart/ui/dataview.h"
#include "core/ui/mainwindow.h"
#include "support/mainwindowfixture.h"

#include <QAction>
#include <QMdiArea>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

class TestMainWindowCharts : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void chartsFromStartUpToNew_data() {
        QTest::addColumn<bool>("storedSoot");
        QTest::newRow("first run: soot hidden") << false;
        QTest::newRow("soot stored on: shown") << true;
    }

    void chartsFromStartUpToNew() {
        QFETCH(bool, storedSoot);
        MainWindowFixture f;
        if (storedSoot) {
            DisplayFlags stored;
            stored.displaySoot = true;
            settings::writeRegistry(f.key, stored, false);
        }
        f.start();
        MainWindow &window = f.window;
        MeasurementStore *store = f.store.get();
        ScriptedNotifier &notifier = f.notifier;
        window.show();
        auto chart = [&](ChartQuantity q) { return window.charts()->chart(q); };
        QCOMPARE((QList<bool>{chart(ChartQuantity::Water)->isVisible(),
                              chart(ChartQuantity::Pressure)->isVisible(),
                              chart(ChartQuantity::Temperature)->isVisible(),
                              chart(ChartQuantity::Soot)->isVisible()}),
                 (QList<bool>{true, true, true, storedSoot}));
        QVERIFY(window.charts()->Timer1.isActive());

        // 30 readings, alternately of streams 1 and 2: the change monitor
        // redraws when asked; the stream filter and New go through the window.
        DataPoint p{.year = 2024, .month = 3, .day = 5};
        for (int i = 0; i < 30; ++i) {
            p.second = uint8_t(i);
            p.stream = int16_t(1 + i % 2);
            store->append(p);
        }
        store->display_update_pending = true;
        QTRY_COMPARE(chart(ChartQuantity::Water)->model().point_count, 30);
        QVERIFY(!store->display_update_pending);
        window.dataView_selectStream(2);
        QCOMPARE(chart(ChartQuantity::Water)->model().point_count, 15);
        notifier.answers = {Notifier::Answer::No};
        window.file_new->trigger();
        QCOMPARE(chart(ChartQuantity::Soot)->model().point_count, 0);
    }
};

QTEST_MAIN(TestMainWindowCharts)
#include "test_mainwindow_charts.moc"
