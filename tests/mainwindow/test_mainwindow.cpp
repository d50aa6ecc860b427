// The main window: start-up, menus, title, the save prompt and New, Exit.
#include "core/ui/mainwindow.h"
#include "device/devicelink.h"
#include "support/mainwindowfixture.h"

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

} // namespace

class TestMainWindow : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void startUpPreparesFoldersSettingsAndStore();
    void menus();
    void newAnsweredCancelChangesNothing();
    void newAnsweredNoOrYesClearsTheStore_data();
    void newAnsweredNoOrYesClearsTheStore();
    void exitDoesNotAsk();
};

void TestMainWindow::startUpPreparesFoldersSettingsAndStore() {
    MainWindowFixture f;
    MeasurementStore *store = f.store.get();
    store->dataPoint_count = 3; // start-up empties whatever was there
    store->oilName = QStringLiteral("old");
    store->display_update_pending = true;
    f.start();

    QCOMPARE(f.window.windowTitle(), QStringLiteral("ORLUK Water Monitor   [<NEW FILE>]"));
    QCOMPARE(store->dataPoint_count, 0);
    QVERIFY(store->oilName.isEmpty());
    QVERIFY(!store->display_update_pending);
    QCOMPARE(store->alarmThreshold, -1.0f);
    QVERIFY(QDir(f.dir.filePath(QStringLiteral("data/autosave"))).exists());
    QVERIFY(store->decimalSeparator == QLatin1Char('.') ||
            store->decimalSeparator == QLatin1Char(','));
    QVERIFY(f.notifier.shown.isEmpty());

    // Port numbers lead to devices through the settings value ComPort<n>.
    DeviceLink *link = f.window.deviceLink();
    QVERIFY(link && !link->queryRunning());
#ifndef Q_OS_WIN
    QVERIFY(!f.key.openOrCreate());
    QVERIFY(!f.key.setString(QStringLiteral("ComPort2"), QStringLiteral("/dev/ttyNAKOS9")));
    f.key.close();
    link->comPort = 2;
    QCOMPARE(link->portDevice(), QStringLiteral("/dev/ttyNAKOS9"));
#endif
}

void TestMainWindow::menus() {
    MainWindowFixture f;
    f.start();
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
                       "|Export(file_export) |Set autosave path(file_setAutosavePath) "
                       "|Print(file_print) |Exit(file_exit)"),
        QStringLiteral("tools:Tools=Toolbox(tools_toolbox)"),
        QStringLiteral("settings:Settings=General settings(settings_generalSettings)"),
        QStringLiteral("q:?=About(q_about)")};
    QCOMPARE(got, expected);
}

void TestMainWindow::newAnsweredCancelChangesNothing() {
    MainWindowFixture f;
    f.start();
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
    QTest::addColumn<bool>("changed");
    QTest::newRow("No") << Notifier::Answer::No << true;
    QTest::newRow("Yes") << Notifier::Answer::Yes << true;
    QTest::newRow("unchanged: no question") << Notifier::Answer::Cancel << false;
}

void TestMainWindow::newAnsweredNoOrYesClearsTheStore() {
    QFETCH(Notifier::Answer, answer);
    QFETCH(bool, changed);
    MainWindowFixture f;
    f.start();
    f.store->append(reading(1));
    f.store->append(reading(2));
    f.store->fileName_current = QStringLiteral("/x/run1.txt");
    f.store->alarmThreshold = 500.0f;
    f.store->oilName = QStringLiteral("SAE 40");
    f.store->display_update_pending = false;
    f.store->data_changed = changed;
    f.notifier.answers = {answer};
    f.window.file_new->trigger();

    QCOMPARE(f.notifier.shown.size(), changed ? 1 : 0);
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

void TestMainWindow::exitDoesNotAsk() {
    MainWindowFixture f;
    f.start();
    f.store->append(reading(1));
    QVERIFY(f.store->data_changed);
    f.window.file_exit->trigger();
    QVERIFY(f.window.isTerminated());
    QVERIFY(f.notifier.shown.isEmpty());
    QCOMPARE(f.store->dataPoint_count, 1); // nothing saved, nothing cleared
}

QTEST_MAIN(TestMainWindow)
#include "test_mainwindow.moc"
