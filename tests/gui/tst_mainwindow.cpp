// The main window over its session: menus, charts, drops and Exit.
#include "chart/ui/chartset.h"
#include "chart/ui/dataview.h"
#include "gui/mainwindow.h"
#include "panel/ui/controlpanel.h"
#include "settings/ui/stationsettingsdialog.h"
#include "support/readings.h"
#include "support/sessionfixture.h"

#include <QAction>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QDirIterator>
#include <QDropEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QProcess>
#include <QPushButton>
#include <QSpinBox>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <cstdio>

using namespace Qt::StringLiterals;

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
    void drops_data();
    void drops();
    void windowMenuBringsWindowsBack();
    void exitFromInsideADrawing();
    void modbusPageStartsTheServer();
};

void TestMainWindow::menus() {
    MainWindowFixture f;
    f.start();
    QCOMPARE(f.window.windowTitle(), u"ORLUK Water Monitor   [<NEW FILE>]"_s);
    // Captions in order, "|" for a separator, with the items' code names.
    QStringList got;
    for (QAction *top : f.window.menuBar()->actions()) {
        QString line = top->menu()->objectName() + u':' + top->text() + u'=';
        for (QAction *a : top->menu()->actions())
            line += a->isSeparator() ? u"|"_s : a->text() + u'(' + a->objectName() + u") "_s;
        got << line.trimmed();
    }
    const QStringList expected{
        u"file:File=New(file_new) |Open(file_open) |Save(file_save) Save As(file_saveas) "
        "|Import(file_import) Import directory(file_importDir) Import chain(file_importChain) "
        "|Export(file_export) |Set autosave path(file_setAutosavePath) |Print(file_print) "
        "|Exit(file_exit)"_s,
        u"tools:Tools=Toolbox(tools_toolbox)"_s,
        u"settings:Settings=General settings(settings_generalSettings) Station "
        "settings(settings_stationSettings)"_s,
        u"q:?=About(q_about)"_s,
        u"window:Window=Control Panel(window_controlPanel) |Tile(window_tile) "
        "Cascade(window_cascade)"_s};
    QCOMPARE(got, expected);
    // The desktop's usual keys, as the platform binds them (no Quit key on
    // Windows, Ctrl+Q elsewhere); the Toolbox and About have none.
    const QList<QPair<QAction *, QKeySequence::StandardKey>> keys{
        {f.window.file_new, QKeySequence::New},
        {f.window.file_open, QKeySequence::Open},
        {f.window.file_save, QKeySequence::Save},
        {f.window.file_print, QKeySequence::Print},
        {f.window.file_exit, QKeySequence::Quit},
        {f.window.settings_generalSettings, QKeySequence::Preferences}};
    for (const auto &[action, key] : keys)
        QCOMPARE(action->shortcuts(), QKeySequence::keyBindings(key));
    QCOMPARE(f.window.file_new->shortcut(), QKeySequence(u"Ctrl+N"_s));
    // Save As where the platform binds no key (plain X11, Windows): Ctrl+Shift+S.
    const QList<QKeySequence> saveAs = QKeySequence::keyBindings(QKeySequence::SaveAs);
    QCOMPARE(f.window.file_saveas->shortcuts(),
             saveAs.isEmpty() ? QList{QKeySequence(u"Ctrl+Shift+S"_s)} : saveAs);
    QVERIFY(f.window.tools_toolbox->shortcuts().isEmpty() &&
            f.window.q_about->shortcut().isEmpty() && f.window.file_import->shortcut().isEmpty());

    // While Open waits for its "Data handling" answer, only Exit stays on.
    QList<bool> enabledWhileBusy;
    f.dialogs.fileAnswers << f.dir.filePath(u"x.txt"_s);
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

    // 30 readings of streams 1 and 2 in turn.
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

void TestMainWindow::windowMenuBringsWindowsBack() {
    MainWindowFixture f;
    f.start();
    f.window.show();
    auto *menu = f.window.findChild<QMenu *>(u"window"_s);
    QVERIFY(menu);
    ControlPanel *panel = f.window.controlPanel();
    QMdiSubWindow *water = f.window.charts()->chart(ChartQuantity::Water);
    panel->close();
    water->close();
    QVERIFY(!panel->isVisible() && !water->isVisible());

    // The charts the settings show, by title, between the panel and Tile.
    emit menu->aboutToShow();
    QStringList captions;
    for (QAction *a : menu->actions())
        captions << (a->isSeparator() ? u"|"_s : a->text());
    QCOMPARE(captions, (QStringList{u"Control Panel"_s, u"Water [ppm]"_s, u"Pressure [mBar]"_s,
                                    u"Temperature [°C]"_s, u"|"_s, u"Tile"_s, u"Cascade"_s}));
    menu->actions().at(1)->trigger();
    QVERIFY(water->isVisible());
    f.window.window_controlPanel->trigger();
    QVERIFY(panel->isVisible());
    QCOMPARE(f.window.mdiArea()->activeSubWindow(), panel);
    QCOMPARE(f.window.controlPanel(), panel);
}

// Exit from inside a drawing of a full store (which lets events run every
// 1000 points) ends the process there with status 0, stdio flushed and
// nothing saved. The test runs itself as the child that does it.
void TestMainWindow::exitFromInsideADrawing() {
    if (qEnvironmentVariableIsSet("NAKOS_EXIT_CHILD")) {
        MainWindowFixture f;
        f.start();
        const std::vector<DataPoint> points = secondsApart(130000, 2024);
        QVERIFY(!f.store().merge(points.data(), 130000, MergeMode::Replace));
        std::printf("drawing\n"); // left in the buffer of a pipe
        QTimer::singleShot(0, f.window.file_exit, &QAction::trigger);
        f.session.display_data();
        QFAIL("the drawing ended and the process still runs");
    }
    QTemporaryDir dir;
    QProcess child;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(u"NAKOS_EXIT_CHILD"_s, u"1"_s);
    env.insert(u"TMPDIR"_s, dir.path()); // the child's folders go with ours
    child.setProcessEnvironment(env);
    child.start(QCoreApplication::applicationFilePath(), {u"exitFromInsideADrawing"_s});
    QVERIFY(child.waitForFinished(120000));
    const QByteArray out = child.readAllStandardOutput();
    QVERIFY2(child.exitStatus() == QProcess::NormalExit && child.exitCode() == 0, out.constData());
    QVERIFY(out.contains("drawing\n") && !out.contains("FAIL"));
    QVERIFY(!QDirIterator(dir.path(), {u"*.txt"_s}, QDir::Files, QDirIterator::Subdirectories)
                 .hasNext());
}

// A drag is taken only with one local file or folder and while no file
// command runs; the drop goes to the session, which asks how to merge.
void TestMainWindow::drops_data() {
    QTest::addColumn<QStringList>("urls");
    QTest::addColumn<bool>("busy");
    QTest::addColumn<bool>("taken");
    const QString log = u"NAKOS435.log"_s;
    QTest::newRow("a log") << QStringList{log} << false << true;
    QTest::newRow("a log while Open waits") << QStringList{log} << true << false;
    QTest::newRow("two files") << QStringList{log, log} << false << false;
    QTest::newRow("not a local file")
        << QStringList{u"https://example.org/NAKOS435.log"_s} << false << false;
}

void TestMainWindow::drops() {
    QFETCH(QStringList, urls);
    QFETCH(bool, busy);
    QFETCH(bool, taken);
    MainWindowFixture f;
    f.start();
    QList<QUrl> list;
    for (const QString &u : urls)
        list << (u.contains(QLatin1Char(':')) ? QUrl(u) : QUrl::fromLocalFile(f.dir.filePath(u)));
    QMimeData mime;
    mime.setUrls(list);
    bool entered = false, dropped = false;
    const auto drag = [&] {
        QDragEnterEvent enter(QPoint(50, 50), Qt::CopyAction, &mime, Qt::LeftButton, {});
        QCoreApplication::sendEvent(&f.window, &enter);
        entered = enter.isAccepted();
        QDropEvent drop(QPointF(50, 50), Qt::CopyAction, &mime, Qt::LeftButton, {});
        QCoreApplication::sendEvent(&f.window, &drop);
        dropped = drop.isAccepted();
    };
    if (busy) {
        f.dialogs.fileAnswers << f.dir.filePath(u"x.txt"_s);
        f.dialogs.whileChoosing = [&] {
            f.dialogs.whileChoosing = nullptr;
            drag();
        };
        f.window.file_open->trigger();
        QCoreApplication::processEvents();
        QCOMPARE(f.dialogs.modeCalls, 1); // Open's own question only
    } else {
        drag();
        if (taken)
            QTRY_COMPARE(f.dialogs.modeCalls, 1);
    }
    QCOMPARE((QList<bool>{entered, dropped}), (QList<bool>{taken, taken}));
    QCOMPARE(int(f.dialogs.calls.size()), busy ? 1 : 0); // never the file dialog
}

QTEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"

// The Station settings' Modbus page: OK starts the server and stores the
// choice, the next start-up listens again, Apply with the box cleared stops it.
void TestMainWindow::modbusPageStartsTheServer() {
    QTcpServer probe; // a free port
    QVERIFY(probe.listen(QHostAddress::LocalHost));
    const int port = probe.serverPort();
    probe.close();
    const auto edit = [](MainWindow &window,
                         const std::function<void(StationSettingsDialog &)> &f) {
        QTimer::singleShot(0, &window, [f] {
            f(*qobject_cast<StationSettingsDialog *>(QApplication::activeModalWidget()));
        });
        window.settings_stationSettings->trigger();
    };
    const QString listening = u"listening on 127.0.0.1 port %1, unit id 1"_s.arg(port);
    MainWindowFixture f, again;
    f.start();
    QCOMPARE(f.window.modbusState(), u"off"_s);
    edit(f.window, [port](StationSettingsDialog &d) {
        d.Check_modbus->setChecked(true);
        d.Text_modbusAddress->setText(u"127.0.0.1"_s);
        d.Spin_modbusPort->setValue(port);
        d.accept();
    });
    QCOMPARE(f.window.modbusState(), listening);
    QVERIFY(QFile::copy(f.dir.filePath(u"settings.reg"_s), again.dir.filePath(u"settings.reg"_s)));
    edit(f.window, [](StationSettingsDialog &d) {
        d.Check_modbus->setChecked(false);
        d.buttons->button(QDialogButtonBox::Apply)->click();
        QCOMPARE(d.Label_modbusState->text(), u"off"_s);
        d.reject();
    });
    again.start();
    QCOMPARE(again.window.modbusState(), listening);
}
