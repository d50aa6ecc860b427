// The main window's part in the data files: the File menu commands, the
// save prompt's Save, and the autosave from start-up on.
#include "core/autosave.h"
#include "core/ui/mainwindow.h"
#include "settings/filekey.h"
#include "support/scripteddialogs.h"
#include "support/scriptednotifier.h"

#include <QAction>
#include <QFile>
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

struct Fixture {
    explicit Fixture(const QString &dir)
        : key(dir + QStringLiteral("/settings.reg"),
              QLatin1String("HKEY_LOCAL_MACHINE\\") + settings::keyPath()),
          ctx{*store, flags, key, notifier, clock, &dialogs}, window(ctx) {
        window.startUp(dir);
    }
    std::unique_ptr<MeasurementStore> store = std::make_unique<MeasurementStore>();
    DisplayFlags flags;
    FileRegistryKey key;
    ScriptedNotifier notifier;
    FixedClock clock;
    ScriptedDialogs dialogs;
    AppContext ctx;
    MainWindow window;
};

const QString smallFile = QStringLiteral(NAKOS_TEST_DATA "/files/small.txt");

} // namespace

class TestMainWindowFiles : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void startUpStartsTheAutosave();
    void fileItemsAreOn();
    void autosaveClearsTheTitleMark();
    void openThroughTheMenu();
    void openCancelledLeavesTheAutosaveStopped();
    void savePromptYesRunsSave();
    void setAutosavePathWritesTheSettings();
};

void TestMainWindowFiles::startUpStartsTheAutosave() {
    QTemporaryDir dir;
    Fixture f(dir.path());
    QVERIFY(f.window.autoSave().isRunning());
    QCOMPARE(f.window.autoSave().fileName(),
             f.store->path_autosave + QStringLiteral("NAK_OS_autosave_20240305_142210.txt"));
    QVERIFY(f.store->path_autosave.startsWith(dir.path()));
}

void TestMainWindowFiles::fileItemsAreOn() {
    QTemporaryDir dir;
    Fixture f(dir.path());
    for (QAction *a : {f.window.file_open, f.window.file_save, f.window.file_saveas,
                       f.window.file_export, f.window.file_setAutosavePath})
        QVERIFY2(a->isEnabled(), qPrintable(a->objectName()));
}

void TestMainWindowFiles::autosaveClearsTheTitleMark() {
    QTemporaryDir dir;
    Fixture f(dir.path());
    f.store->append(reading(1));
    f.window.titleRefresh();
    QCOMPARE(f.window.windowTitle(), QStringLiteral("ORLUK Water Monitor   [<NEW FILE>] *"));
    for (int i = 0; i < AutoSave::ticksPerSave; ++i)
        f.window.autoSave().tick();
    QCOMPARE(f.window.windowTitle(), QStringLiteral("ORLUK Water Monitor   [<NEW FILE>]"));
    QVERIFY(QFile::exists(f.window.autoSave().fileName()));
    QVERIFY(f.store->fileName_current.isEmpty());
}

void TestMainWindowFiles::openThroughTheMenu() {
    QTemporaryDir dir;
    Fixture f(dir.path());
    const QString before = f.window.autoSave().fileName();
    f.clock.time = f.clock.time.addSecs(65);
    f.dialogs.fileAnswers << smallFile;
    f.dialogs.modeAnswers << 1;
    f.window.file_open->trigger();
    QCOMPARE(f.store->dataPoint_count, 3);
    QCOMPARE(f.store->oilName, QStringLiteral("Turbine oil T46"));
    QCOMPARE(f.window.windowTitle(),
             QStringLiteral("ORLUK Water Monitor   [") + smallFile + QLatin1Char(']'));
    // A new autosave period starts after loading.
    QVERIFY(f.window.autoSave().isRunning());
    QVERIFY(f.window.autoSave().fileName() != before);
    QVERIFY(f.notifier.shown.isEmpty());
}

void TestMainWindowFiles::openCancelledLeavesTheAutosaveStopped() {
    QTemporaryDir dir;
    Fixture f(dir.path());
    f.window.file_open->trigger();
    QCOMPARE(f.dialogs.calls.size(), 1);
    QVERIFY(!f.window.autoSave().isRunning());
}

void TestMainWindowFiles::savePromptYesRunsSave() {
    QTemporaryDir dir;
    Fixture f(dir.path());
    f.store->append(reading(1));
    const QString saved = dir.filePath(QStringLiteral("saved.txt"));
    f.notifier.answers = {Notifier::Answer::Yes};
    f.dialogs.fileAnswers << saved;
    f.clock.time = f.clock.time.addSecs(1);
    f.window.file_new->trigger();
    // Save ran with its dialog (no file name yet), then New went on.
    QCOMPARE(f.dialogs.calls.size(), 1);
    QCOMPARE(f.dialogs.calls[0].initialPath, QStringLiteral("C:\\"));
    QVERIFY(QFile(saved).size() > 0);
    QCOMPARE(f.store->dataPoint_count, 0);
    QVERIFY(f.store->fileName_current.isEmpty());
    QVERIFY(f.window.autoSave().isRunning());
    QVERIFY(f.window.autoSave().fileName().endsWith(QStringLiteral("_142211.txt")));
}

void TestMainWindowFiles::setAutosavePathWritesTheSettings() {
    QTemporaryDir dir;
    Fixture f(dir.path());
    const QString name = f.window.autoSave().fileName();
    const QString folder = dir.filePath(QStringLiteral("usb")) + QLatin1Char('/');
    f.dialogs.folderAnswer = folder;
    f.window.file_setAutosavePath->trigger();
    QCOMPARE(f.store->path_autosave, folder);
    QCOMPARE(settings::readAutosavePath(f.key), folder);
    // The current period keeps its file; the next one uses the new folder.
    QCOMPARE(f.window.autoSave().fileName(), name);
    f.window.autoSave_restart();
    QVERIFY(f.window.autoSave().fileName().startsWith(folder));
}

QTEST_MAIN(TestMainWindowFiles)
#include "test_mainwindow_files.moc"
