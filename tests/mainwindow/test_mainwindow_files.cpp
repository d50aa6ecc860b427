// The File menu's data file commands, the save prompt and the autosave,
// driven through the main window with scripted dialogs and message boxes.
// The commands keep the program's quirks: Open takes the chosen name before
// the mode is chosen and leaves the autosave stopped when its dialog is
// cancelled; Save clears the mark even when writing failed; only a file too
// big for memory is reported, and then nothing changes.
#include "core/autosave.h"
#include "core/ui/mainwindow.h"
#include "files/golden.h"
#include "support/mainwindowfixture.h"

#include <QAction>
#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

QString title(const QString &name, bool changed) {
    return u"ORLUK Water Monitor   ["_s + name + (changed ? u"] *"_s : u"]"_s);
}

} // namespace

class TestMainWindowFiles : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void autosave();
    void open_data();
    void open();
    void saveSaveAsAndExport();
};

// Started at start-up, saved on the sixth tick with the title's mark cleared,
// its folder set through the File menu and kept in the settings.
void TestMainWindowFiles::autosave() {
    MainWindowFixture f;
    f.start();
    const QTemporaryDir &dir = f.dir;
    QVERIFY(f.window.autoSave().isRunning());
    const QString name = f.window.autoSave().fileName();
    QCOMPARE(name, f.store->path_autosave + u"NAK_OS_autosave_20240305_142210.txt"_s);
    f.store->append(DataPoint{2024, 3, 5, 14, 22, 1});
    f.window.titleRefresh();
    for (int i = 0; i < AutoSave::ticksPerSave; ++i)
        f.window.autoSave().tick();
    QCOMPARE(f.window.windowTitle(), title(u"<NEW FILE>"_s, false));
    QVERIFY(QFile::exists(name));

    const QString folder = dir.filePath(u"usb/"_s);
    f.dialogs.folderAnswer = folder;
    f.window.file_setAutosavePath->trigger();
    QCOMPARE(f.store->path_autosave, folder);
    QCOMPARE(settings::readAutosavePath(f.key), folder);
}

void TestMainWindowFiles::open_data() {
    QTest::addColumn<QString>("file"); // empty: the file dialog is cancelled
    QTest::addColumn<int>("mode");     // 0: the data handling dialog is cancelled
    QTest::addColumn<int>("held");     // records in the store before
    QTest::addColumn<int>("count");
    QTest::addColumn<bool>("changed");
    QTest::addColumn<bool>("named");   // the chosen file became the current name
    QTest::addColumn<bool>("running"); // the autosave afterwards

    const QString small = testData("small.txt");
    const int full = MeasurementStore::capacity - 2;
    QTest::newRow("file dialog cancelled") << QString() << 1 << 3 << 3 << false << false << false;
    QTest::newRow("data handling cancelled") << small << 0 << 3 << 3 << false << true << true;
    QTest::newRow("replace") << small << 1 << 3 << 3 << false << true << true;
    QTest::newRow("insert before") << small << 2 << 3 << 6 << true << true << true;
    QTest::newRow("append") << small << 3 << 3 << 6 << true << true << true;
    QTest::newRow("missing file") << u"missing.txt"_s << 2 << 3 << 3 << true << true << true;
    QTest::newRow("too many records") << small << 3 << full << full << false << false << true;
}

void TestMainWindowFiles::open() {
    QFETCH(QString, file);
    QFETCH(int, mode);
    QFETCH(int, held);
    QFETCH(int, count);
    QFETCH(bool, changed);
    QFETCH(bool, named);
    QFETCH(bool, running);
    MainWindowFixture f;
    f.start();
    const bool tooMany = held > 3;
    if (!file.isEmpty() && QDir::isRelativePath(file))
        file = f.dir.filePath(file);
    fillSmallStore(*f.store);
    f.store->dataPoint_count = held;
    f.store->reindex();
    f.store->data_changed = false;
    f.store->fileName_current = u"/data/run1.txt"_s;
    f.window.titleRefresh();
    f.dialogs.fileAnswers << file;
    f.dialogs.modeAnswers << int16_t(mode);
    f.window.file_open->trigger();
    QCOMPARE(f.dialogs.calls[0].filter, u"Text data files (*.txt)|*.txt|All files (*.*)|*.*|"_s);
    QCOMPARE(f.dialogs.calls[0].initialPath, u"/data/run1.txt"_s);
    QCOMPARE(f.store->dataPoint_count, count);
    QCOMPARE(f.window.autoSave().isRunning(), running);
    QCOMPARE(f.notifier.shown.size(), tooMany ? 1 : 0);
    if (tooMany)
        QVERIFY(f.notifier.shown[0].text.contains(file));
    QCOMPARE(f.window.windowTitle(), title(named ? file : u"/data/run1.txt"_s, changed));
}

void TestMainWindowFiles::saveSaveAsAndExport() {
    MainWindowFixture f;
    f.start();
    const QTemporaryDir &dir = f.dir;
    fillSmallStore(*f.store);
    const QString name = dir.filePath(u"saved.txt"_s), other = dir.filePath(u"new.txt"_s);
    const QString csv = dir.filePath(u"out.csv"_s);
    f.dialogs.fileAnswers << QString() << name << other << QString() << csv;
    f.window.file_save->trigger(); // no name yet: asks, and is cancelled
    QVERIFY(f.store->data_changed);
    f.notifier.answers = {Notifier::Answer::Cancel}; // the prompt stops Open before its dialog
    f.window.file_open->trigger();
    QCOMPARE(f.dialogs.calls.size(), 1);
    f.window.file_save->trigger();
    QCOMPARE(fileBytes(name), fileBytes(testData("small.txt")));
    QCOMPARE(f.window.windowTitle(), title(name, false));
    f.window.file_save->trigger(); // with a name Save does not ask
    f.window.file_saveas->trigger();
    QCOMPARE(f.store->fileName_current, other);
    QVERIFY(QFile::exists(other));
    QCOMPARE(f.dialogs.calls.size(), 3);
    QCOMPARE(f.dialogs.calls[2].initialPath, name);

    // The export counts as saving but keeps the data file's name.
    f.store->data_changed = true;
    f.window.file_export->trigger(); // cancelled
    QVERIFY(f.store->data_changed);
    f.window.file_export->trigger();
    QCOMPARE(fileBytes(csv), fileBytes(testData("small.csv")));
    QCOMPARE(f.window.windowTitle(), title(other, false));
    QCOMPARE(f.dialogs.calls[4].filter, u"CSV files (*.csv)|*.csv|All files (*.*)|*.*|"_s);

    // A failed write clears the mark all the same and is not reported.
    f.store->fileName_current = dir.filePath(u"no/folder/x.txt"_s);
    f.store->data_changed = true;
    f.window.file_save->trigger();
    QVERIFY(!f.store->data_changed);
    QCOMPARE(f.notifier.shown.size(), 1);

    // The prompt's Yes saves (here asking for a name), then New goes on.
    f.store->fileName_current.clear();
    f.store->data_changed = true;
    f.notifier.answers = {Notifier::Answer::Yes};
    const QString viaPrompt = dir.filePath(u"prompt.txt"_s);
    f.dialogs.fileAnswers << viaPrompt;
    f.window.file_new->trigger();
    QCOMPARE(f.dialogs.calls.last().initialPath, u"C:\\"_s);
    QCOMPARE(fileBytes(viaPrompt), fileBytes(testData("small.txt")));
    QCOMPARE(f.store->dataPoint_count, 0);
    QVERIFY(f.store->fileName_current.isEmpty());
}

QTEST_MAIN(TestMainWindowFiles)
#include "test_mainwindow_files.moc"
