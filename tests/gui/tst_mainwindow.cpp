// The main window over its session: start-up with the charts as the display
// settings say, the menus with their code names, the display rebuilds the
// session asks for, the file commands switched off while one runs, and Exit.
#include "chart/ui/chartset.h"
#include "chart/ui/dataview.h"
#include "gui/mainwindow.h"
#include "support/sessionfixture.h"

#include <QAction>
#include <QMenu>
#include <QMenuBar>
#include <QTest>

struct MainWindowFixture : SessionFixture {
    MainWindow window{session};
    void start() { window.startUp(dir.path()); }
};

class TestMainWindow : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void menus();
    void chartsFromStartUpToNew_data();
    void chartsFromStartUpToNew();
    void exitDoesNotAsk();
};

void TestMainWindow::menus() {
    MainWindowFixture f;
    f.start();
    QCOMPARE(f.window.windowTitle(), QStringLiteral("ORLUK Water Monitor   [<NEW FILE>]"));
    // Captions in order, "|" for a separator, with the items' code names.
    QStringList got;
    for (QAction *top : f.window.menuBar()->actions()) {
        QString line =
            top->menu()->objectName() + QLatin1Char(':') + top->text() + QLatin1Char('=');
        for (QAction *a : top->menu()->actions())
            line += a->isSeparator()
                        ? QStringLiteral("|")
                        : a->text() + QLatin1Char('(') + a->objectName() + QStringLiteral(") ");
        got << line.trimmed();
    }
    const QStringList expected{
        QStringLiteral("file:File=New(file_new) |Open(file_open) |Save(file_save) Save "
                       "As(file_saveas) |Import(file_import) Import directory(file_importDir) "
                       "Import chain(file_importChain) "
                       "|Export(file_export) |Set autosave path(file_setAutosavePath) "
                       "|Print(file_print) |Exit(file_exit)"),
        QStringLiteral("tools:Tools=Toolbox(tools_toolbox)"),
        QStringLiteral("settings:Settings=General settings(settings_generalSettings) Station "
                       "settings(settings_stationSettings)"),
        QStringLiteral("q:?=About(q_about)")};
    QCOMPARE(got, expected);

    // While Open waits for its "Data handling" answer, the file commands are
    // off; Exit stays on.
    QList<bool> enabledWhileBusy;
    f.dialogs.fileAnswers << f.dir.filePath(QStringLiteral("x.txt"));
    f.dialogs.whileChoosing = [&] {
        enabledWhileBusy = {f.window.file_new->isEnabled(), f.window.file_save->isEnabled(),
                            f.window.file_export->isEnabled(), f.window.file_exit->isEnabled()};
    };
    f.window.file_open->trigger();
    QCOMPARE(enabledWhileBusy, (QList<bool>{false, false, false, true}));
    QVERIFY(f.window.file_open->isEnabled());
}

void TestMainWindow::chartsFromStartUpToNew_data() {
    QTest::addColumn<bool>("storedSoot");
    QTest::newRow("first run: soot hidden") << false;
    QTest::newRow("soot stored on: shown") << true;
}

void TestMainWindow::chartsFromStartUpToNew() {
    QFETCH(bool, storedSoot);
    MainWindowFixture f;
    if (storedSoot) {
        DisplayFlags stored;
        stored.displaySoot = true;
        settings::writeRegistry(f.session.settingsKey(), stored, false);
    }
    f.start();
    MainWindow &window = f.window;
    MeasurementStore &store = f.store();
    window.show();
    auto chart = [&](ChartQuantity q) { return window.charts()->chart(q); };
    QCOMPARE((QList<bool>{chart(ChartQuantity::Water)->isVisible(),
                          chart(ChartQuantity::Pressure)->isVisible(),
                          chart(ChartQuantity::Temperature)->isVisible(),
                          chart(ChartQuantity::Soot)->isVisible()}),
             (QList<bool>{true, true, true, storedSoot}));
    QVERIFY(window.charts()->Timer1.isActive());

    // 30 readings, alternately of streams 1 and 2: the change monitor
    // redraws when asked; the stream filter and New rebuild the charts.
    DataPoint p{.year = 2024, .month = 3, .day = 5};
    for (int i = 0; i < 30; ++i) {
        p.second = uint8_t(i);
        p.stream = int16_t(1 + i % 2);
        store.append(p);
    }
    f.session.display_requestRedraw();
    QTRY_COMPARE(chart(ChartQuantity::Water)->model().point_count, 30);
    QVERIFY(!store.display_update_pending);
    f.session.dataView_selectStream(2);
    QCOMPARE(chart(ChartQuantity::Water)->model().point_count, 15);
    f.notifier.answers = {Notifier::Answer::No};
    window.file_new->trigger();
    QCOMPARE(chart(ChartQuantity::Soot)->model().point_count, 0);
}

void TestMainWindow::exitDoesNotAsk() {
    MainWindowFixture f;
    f.start();
    f.store().append(DataPoint{.year = 2024, .month = 3, .day = 5});
    QVERIFY(f.store().data_changed);
    f.window.file_exit->trigger();
    QVERIFY(f.window.isTerminated());
    QVERIFY(f.notifier.shown.isEmpty());
    QCOMPARE(f.store().dataPoint_count, 1); // nothing saved, nothing cleared
}

QTEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
