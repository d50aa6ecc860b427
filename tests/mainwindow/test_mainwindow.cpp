// The main window: start-up, menus, title, the save prompt and New, Exit.
#include "core/ui/mainwindow.h"
#include "settings/filekey.h"
#include "support/scriptednotifier.h"

#include <QAction>
#include <QDir>
#include <QFile>
#include <QMenu>
#include <QMenuBar>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

namespace {

DataPoint reading(int second) {
    DataPoint p;
    p.year = 2024;
    p.month = 3;
    p.day = 5;
    p.hour = 14;
    p.minute = 22;
    p.second = uint8_t(second);
    return p;
}

// One main window over its own store, settings file and scripted notifier.
struct Fixture {
    explicit Fixture(const QString &dir)
        : key(dir + QStringLiteral("/settings.reg"),
              QLatin1String("HKEY_LOCAL_MACHINE\\") + settings::keyPath()),
          ctx{*store, flags, key, notifier, clock}, window(ctx) {
        window.startUp(dir);
    }
    std::unique_ptr<MeasurementStore> store = std::make_unique<MeasurementStore>();
    DisplayFlags flags;
    FileRegistryKey key;
    ScriptedNotifier notifier;
    FixedClock clock;
    AppContext ctx;
    MainWindow window;
};

} // namespace

class TestMainWindow : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void startUpPreparesFoldersSettingsAndStore();
    void menus();
    void newAnsweredCancelChangesNothing();
    void newAnsweredNoOrYesClearsTheStore_data();
    void newAnsweredNoOrYesClearsTheStore();
    void newWithoutChangesDoesNotAsk();
    void exitDoesNotAsk();
};

void TestMainWindow::startUpPreparesFoldersSettingsAndStore() {
    QTemporaryDir dir;
    auto store = std::make_unique<MeasurementStore>();
    store->dataPoint_count = 3; // start-up empties whatever was there
    store->oilName = QStringLiteral("old");
    store->display_update_pending = true;
    DisplayFlags flags;
    FileRegistryKey key(dir.filePath(QStringLiteral("s.reg")),
                        QLatin1String("HKEY_LOCAL_MACHINE\\") + settings::keyPath());
    ScriptedNotifier notifier;
    FixedClock clock;
    AppContext ctx{*store, flags, key, notifier, clock};
    MainWindow window(ctx);
    window.startUp(dir.path());

    QCOMPARE(window.windowTitle(), QStringLiteral("ORLUK Water Monitor   [<NEW FILE>]"));
    QCOMPARE(store->dataPoint_count, 0);
    QVERIFY(store->oilName.isEmpty());
    QVERIFY(!store->display_update_pending);
    QCOMPARE(store->alarmThreshold, -1.0f);
    QVERIFY(QDir(dir.filePath(QStringLiteral("data/autosave"))).exists());
    QVERIFY(QFile::exists(dir.filePath(QStringLiteral("s.reg"))));
    QVERIFY(store->decimalSeparator == QLatin1Char('.') ||
            store->decimalSeparator == QLatin1Char(','));
    QVERIFY(!window.windowIcon().isNull());
    QVERIFY(notifier.shown.isEmpty());
}

void TestMainWindow::menus() {
    QTemporaryDir dir;
    Fixture f(dir.path());
    // Captions in order, "|" for a separator, with the items' code names.
    QStringList got;
    for (QAction *top : f.window.menuBar()->actions()) {
        QString line = top->menu()->objectName() + QLatin1Char(':') + top->text() + QLatin1Char('=');
        for (QAction *a : top->menu()->actions())
            line += a->isSeparator() ? QStringLiteral("|")
                                     : a->text() + QLatin1Char('(') + a->objectName() +
                                           QStringLiteral(") ");
        got << line.trimmed();
    }
    const QStringList expected{
        QStringLiteral("file:File=New(file_new) |Open(file_open) |Save(file_save) Save "
                       "As(file_saveas) |Import(file_import) Import directory(file_importDir) "
                       "|Export(file_export) |Set autosave path(file_setAutosavePath) "
                       "|Print(file_print) |Exit(file_exit)"),
        QStringLiteral("tools:Tools=Toolbox(tools_toolbox)"),
        QStringLiteral("settings:Settings=General settings(settings_generalSettings)"),
        QStringLiteral("q:?=About(q_about)")};
    QCOMPARE(got, expected);
}

void TestMainWindow::newAnsweredCancelChangesNothing() {
    QTemporaryDir dir;
    Fixture f(dir.path());
    f.store->append(reading(1));
    f.store->fileName_current = QStringLiteral("/x/run1.txt");
    f.store->alarmThreshold = 500.0f;
    f.store->oilName = QStringLiteral("SAE 40");
    f.window.titleRefresh();
    f.notifier.answers = {Notifier::Answer::Cancel};
    f.window.file_new->trigger();

    QCOMPARE(f.notifier.shown.size(), 1);
    const ScriptedNotifier::Shown &box = f.notifier.shown.first();
    QCOMPARE(box.text, QStringLiteral("Data in memory has changed, do you want to save it now?"));
    QVERIFY(box.title.isEmpty() && !box.title.isNull()); // an empty title, not the default
    QCOMPARE(box.buttons, Notifier::Buttons::YesNoCancel);
    QCOMPARE(box.icon, Notifier::Icon::Question);
    QCOMPARE(f.store->dataPoint_count, 1);
    QVERIFY(f.store->data_changed);
    QCOMPARE(f.store->alarmThreshold, 500.0f);
    QCOMPARE(f.store->oilName, QStringLiteral("SAE 40"));
    QCOMPARE(f.window.windowTitle(), QStringLiteral("ORLUK Water Monitor   [/x/run1.txt] *"));
}

void TestMainWindow::newAnsweredNoOrYesClearsTheStore_data() {
    QTest::addColumn<Notifier::Answer>("answer");
    QTest::newRow("No") << Notifier::Answer::No;
    QTest::newRow("Yes") << Notifier::Answer::Yes;
}

void TestMainWindow::newAnsweredNoOrYesClearsTheStore() {
    QFETCH(Notifier::Answer, answer);
    QTemporaryDir dir;
    Fixture f(dir.path());
    f.store->append(reading(1));
    f.store->append(reading(2));
    f.store->fileName_current = QStringLiteral("/x/run1.txt");
    f.store->alarmThreshold = 500.0f;
    f.store->oilName = QStringLiteral("SAE 40");
    f.store->display_update_pending = false;
    f.notifier.answers = {answer};
    f.window.file_new->trigger();

    QCOMPARE(f.store->dataPoint_count, 0);
    QVERIFY(!f.store->data_changed);
    QVERIFY(f.store->fileName_current.isEmpty());
    QCOMPARE(f.store->alarmThreshold, -1.0f);
    QVERIFY(f.store->oilName.isEmpty());
    QVERIFY(f.store->display_update_pending);
    QCOMPARE(f.window.windowTitle(), QStringLiteral("ORLUK Water Monitor   [<NEW FILE>]"));
    // The stamps are free again.
    QCOMPARE(f.store->append(reading(1)), AppendResult::Added);
}

void TestMainWindow::newWithoutChangesDoesNotAsk() {
    QTemporaryDir dir;
    Fixture f(dir.path());
    f.store->append(reading(1));
    f.store->data_changed = false;
    f.window.file_new->trigger();
    QVERIFY(f.notifier.shown.isEmpty());
    QCOMPARE(f.store->dataPoint_count, 0);
}

void TestMainWindow::exitDoesNotAsk() {
    QTemporaryDir dir;
    Fixture f(dir.path());
    f.store->append(reading(1));
    QVERIFY(f.store->data_changed);
    f.window.file_exit->trigger();
    QVERIFY(f.window.isTerminated());
    QVERIFY(f.notifier.shown.isEmpty());
    QCOMPARE(f.store->dataPoint_count, 1); // nothing saved, nothing cleared
}

QTEST_MAIN(TestMainWindow)
#include "test_mainwindow.moc"
