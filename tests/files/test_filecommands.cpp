#include "fakes.h"

#include "files/csvexport.h"
#include "files/datafile.h"
#include "files/filecommands.h"
#include "files/filedialogs.h"

#include "core/notifier.h"
#include "support/scripteddialogs.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

namespace {

class ScriptedNotifier : public Notifier {
public:
    QStringList texts;
    Answer message(const QString &text, const QString &, Buttons, Icon) override {
        texts << text;
        return Answer::Ok;
    }
};

class CommandHost : public FileCommandHost {
public:
    explicit CommandHost(MeasurementStore &store) : m_store(store) {}
    bool cancelPrompt = false;
    QStringList events;
    void titleRefresh() override { events << QStringLiteral("title"); }
    void display_data() override { events << QStringLiteral("display"); }
    void oilName_set(const QString &name) override { m_store.oilName = name; }
    bool saveChanges_prompt() override {
        events << QStringLiteral("prompt");
        return cancelPrompt;
    }
    void autoSave_stop() override { events << QStringLiteral("stop"); }
    void autoSave_restart() override { events << QStringLiteral("restart"); }
    void charts_disableZoom() override { events << QStringLiteral("zoom"); }
    void settings_writeAutosavePath() override { events << QStringLiteral("settings"); }

private:
    MeasurementStore &m_store;
};

// The store, the routines and the commands wired as the main window wires
// them, over scripted dialogs, notifier and host.
struct Rig {
    MeasurementStore store;
    CommandHost host{store};
    ScriptedDialogs dialogs;
    ScriptedNotifier notifier;
    RecordingProgress progress;
    DataFile dataFile{store, host, &progress};
    CsvExport csv{store, host, &progress};
    FileCommands commands{store, host, dialogs, notifier, dataFile, csv};
};

const QString title = QStringLiteral("title");
const QString stop = QStringLiteral("stop");
const QString restart = QStringLiteral("restart");
const QString zoom = QStringLiteral("zoom");
const QString prompt = QStringLiteral("prompt");
const QString display = QStringLiteral("display");

} // namespace

class TestFileCommands : public QObject {
    Q_OBJECT
private slots:
    void openCancelledAtThePrompt();
    void openCancelledInTheFileDialog();
    void openCancelledInTheDataHandlingDialog();
    void openModesSetTheMark_data();
    void openModesSetTheMark();
    void openOfAMissingFileIsNotReported();
    void openOfTooManyRecordsIsReported();
    void saveWithoutAName();
    void saveClearsTheMarkEvenWhenWritingFails();
    void saveAsAlwaysAsks();
    void exportWritesCsvAndKeepsTheName();
    void setAutosavePath();
    void qtFilters_data();
    void qtFilters();
    void startPath();
};

void TestFileCommands::openCancelledAtThePrompt() {
    Rig rig;
    rig.host.cancelPrompt = true;
    rig.commands.file_open();
    QCOMPARE(rig.host.events, QStringList{prompt});
    QVERIFY(rig.dialogs.calls.isEmpty());
}

void TestFileCommands::openCancelledInTheFileDialog() {
    Rig rig;
    rig.commands.file_open();
    // The autosave stays stopped; the zoom is reset all the same.
    QCOMPARE(rig.host.events, (QStringList{prompt, stop, zoom}));
    QCOMPARE(rig.dialogs.calls.size(), 1);
    QCOMPARE(rig.dialogs.calls[0].kind, FileDialogs::Kind::Open);
    QCOMPARE(rig.dialogs.calls[0].filter,
             QStringLiteral("Text data files (*.txt)|*.txt|All files (*.*)|*.*|"));
    QCOMPARE(rig.dialogs.calls[0].initialPath, QStringLiteral("C:\\"));

    rig.store.fileName_current = QStringLiteral("/data/run1.txt");
    rig.commands.file_open();
    QCOMPARE(rig.dialogs.calls[1].initialPath, QStringLiteral("/data/run1.txt"));
    QCOMPARE(rig.dialogs.modeCalls, 0);
}

void TestFileCommands::openCancelledInTheDataHandlingDialog() {
    Rig rig;
    fillSmallStore(rig.store);
    rig.dialogs.fileAnswers << testData("small.txt");
    rig.dialogs.modeAnswers << 0;
    rig.commands.file_open();
    // The name is taken before the mode is chosen; nothing is read.
    QCOMPARE(rig.store.fileName_current, testData("small.txt"));
    QCOMPARE(rig.store.dataPoint_count, 3);
    QVERIFY(rig.store.data_changed);
    QCOMPARE(rig.host.events, (QStringList{prompt, stop, title, restart, zoom}));
    QVERIFY(rig.progress.captions.isEmpty());
}

void TestFileCommands::openModesSetTheMark_data() {
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("count");
    QTest::addColumn<bool>("changed");
    QTest::newRow("replace") << 1 << 3 << false;
    QTest::newRow("insert before") << 2 << 6 << true;
    QTest::newRow("append") << 3 << 6 << true;
}

void TestFileCommands::openModesSetTheMark() {
    QFETCH(int, mode);
    QFETCH(int, count);
    QFETCH(bool, changed);
    Rig rig;
    fillSmallStore(rig.store);
    rig.store.data_changed = false;
    rig.dialogs.fileAnswers << testData("small.txt");
    rig.dialogs.modeAnswers << int16_t(mode);
    rig.commands.file_open();
    QCOMPARE(rig.store.dataPoint_count, count);
    QCOMPARE(rig.store.data_changed, changed);
    QCOMPARE(rig.progress.captions, QStringList{QStringLiteral("Loading file...")});
    QCOMPARE(rig.host.events, (QStringList{prompt, stop, title, display, title, restart, zoom}));
}

void TestFileCommands::openOfAMissingFileIsNotReported() {
    Rig rig;
    fillSmallStore(rig.store);
    rig.store.data_changed = false;
    QTemporaryDir dir;
    const QString missing = dir.filePath(QStringLiteral("gone.txt"));
    rig.dialogs.fileAnswers << missing;
    rig.dialogs.modeAnswers << 2;
    rig.commands.file_open();
    QCOMPARE(rig.store.fileName_current, missing);
    QCOMPARE(rig.store.dataPoint_count, 3);
    QVERIFY(rig.store.data_changed); // the result of the load is not examined
    QVERIFY(rig.notifier.texts.isEmpty());
}

void TestFileCommands::openOfTooManyRecordsIsReported() {
    QTemporaryDir dir;
    const QString big = dir.filePath(QStringLiteral("big.txt"));
    {
        MeasurementStore full;
        StoreOnlyHost host(full);
        DataFile writer(full, host);
        full.dataPoint_count = MeasurementStore::capacity;
        QVERIFY(!writer.dataFile_save(big, false).failed());
    }
    Rig rig;
    fillSmallStore(rig.store);
    rig.store.fileName_current = QStringLiteral("/data/run1.txt");
    rig.dialogs.fileAnswers << big;
    rig.dialogs.modeAnswers << 3;
    rig.commands.file_open();
    QCOMPARE(rig.notifier.texts.size(), 1);
    QVERIFY(rig.notifier.texts[0].contains(big));
    QVERIFY(rig.notifier.texts[0].contains(QStringLiteral("130000")));
    QCOMPARE(rig.store.dataPoint_count, 3);
    QCOMPARE(rig.store.fileName_current, QStringLiteral("/data/run1.txt"));
    QVERIFY(rig.store.data_changed);
    QCOMPARE(rig.host.events, (QStringList{prompt, stop, title, restart, zoom}));
}

void TestFileCommands::saveWithoutAName() {
    Rig rig;
    fillSmallStore(rig.store);
    rig.commands.file_save();
    QCOMPARE(rig.dialogs.calls.size(), 1);
    QCOMPARE(rig.dialogs.calls[0].kind, FileDialogs::Kind::Save);
    QCOMPARE(rig.dialogs.calls[0].filter, FileDialogs::dataFilter);
    QCOMPARE(rig.dialogs.calls[0].initialPath, QStringLiteral("C:\\"));
    // Cancelled: nothing changes.
    QVERIFY(rig.store.data_changed);
    QVERIFY(rig.store.fileName_current.isEmpty());
    QVERIFY(rig.host.events.isEmpty());

    QTemporaryDir dir;
    const QString name = dir.filePath(QStringLiteral("saved.txt"));
    rig.dialogs.fileAnswers << name;
    rig.commands.file_save();
    QCOMPARE(rig.store.fileName_current, name);
    QCOMPARE(fileBytes(name), fileBytes(testData("small.txt")));
    QVERIFY(!rig.store.data_changed);
    QCOMPARE(rig.progress.captions, QStringList{QStringLiteral("Saving file...")});

    // With a current name there is no dialog.
    rig.store.data_changed = true;
    rig.commands.file_save();
    QCOMPARE(rig.dialogs.calls.size(), 2);
    QVERIFY(!rig.store.data_changed);
}

void TestFileCommands::saveClearsTheMarkEvenWhenWritingFails() {
    Rig rig;
    fillSmallStore(rig.store);
    QTemporaryDir dir;
    rig.store.fileName_current = dir.filePath(QStringLiteral("no/folder/x.txt"));
    rig.commands.file_save();
    QVERIFY(!rig.store.data_changed);
    QVERIFY(rig.notifier.texts.isEmpty());
    QCOMPARE(rig.host.events, QStringList{title});
}

void TestFileCommands::saveAsAlwaysAsks() {
    Rig rig;
    fillSmallStore(rig.store);
    QTemporaryDir dir;
    rig.store.fileName_current = dir.filePath(QStringLiteral("old.txt"));
    const QString name = dir.filePath(QStringLiteral("new.txt"));
    rig.dialogs.fileAnswers << name;
    rig.commands.file_saveas();
    QCOMPARE(rig.dialogs.calls[0].initialPath, dir.filePath(QStringLiteral("old.txt")));
    QCOMPARE(rig.store.fileName_current, name);
    QVERIFY(QFile::exists(name));
    QVERIFY(!QFile::exists(dir.filePath(QStringLiteral("old.txt"))));
}

void TestFileCommands::exportWritesCsvAndKeepsTheName() {
    Rig rig;
    fillSmallStore(rig.store);
    rig.store.fileName_current = QStringLiteral("/data/run1.txt");
    rig.commands.file_export();
    QCOMPARE(rig.dialogs.calls[0].kind, FileDialogs::Kind::Save);
    QCOMPARE(rig.dialogs.calls[0].filter,
             QStringLiteral("CSV files (*.csv)|*.csv|All files (*.*)|*.*|"));
    QCOMPARE(rig.dialogs.calls[0].initialPath, QString());
    QVERIFY(rig.store.data_changed);

    QTemporaryDir dir;
    const QString name = dir.filePath(QStringLiteral("out.csv"));
    rig.dialogs.fileAnswers << name;
    rig.commands.file_export();
    QCOMPARE(fileBytes(name), fileBytes(testData("small.csv")));
    QCOMPARE(rig.store.fileName_current, QStringLiteral("/data/run1.txt"));
    QVERIFY(!rig.store.data_changed); // the export itself counts as saving
}

void TestFileCommands::setAutosavePath() {
    Rig rig;
    rig.store.path_autosave = QStringLiteral("/work/data/autosave/");
    rig.commands.file_setAutosavePath();
    QCOMPARE(rig.dialogs.folderCalls, QStringList{QStringLiteral("/work/data/autosave/")});
    QCOMPARE(rig.store.path_autosave, QStringLiteral("/work/data/autosave/"));
    QVERIFY(rig.host.events.isEmpty());

    rig.dialogs.folderAnswer = QStringLiteral("/mnt/usb/");
    rig.commands.file_setAutosavePath();
    QCOMPARE(rig.store.path_autosave, QStringLiteral("/mnt/usb/"));
    QCOMPARE(rig.host.events, QStringList{QStringLiteral("settings")});
}

void TestFileCommands::qtFilters_data() {
    QTest::addColumn<QString>("filter");
    QTest::addColumn<QString>("qt");
    QTest::newRow("data") << FileDialogs::dataFilter
                          << QStringLiteral("Text data files (*.txt);;All files (*.*)");
    QTest::newRow("log") << FileDialogs::logFilter
                         << QStringLiteral("Log files (*.log);;All files (*.*)");
    QTest::newRow("csv") << FileDialogs::csvFilter
                         << QStringLiteral("CSV files (*.csv);;All files (*.*)");
    QTest::newRow("pattern not in the description")
        << QStringLiteral("Data|*.txt;*.dat|") << QStringLiteral("Data (*.txt *.dat)");
}

void TestFileCommands::qtFilters() {
    QFETCH(QString, filter);
    QFETCH(QString, qt);
    QCOMPARE(FileDialogs::qtFilter(filter), qt);
}

void TestFileCommands::startPath() {
#ifdef Q_OS_WIN
    QCOMPARE(FileDialogs::startPath(QStringLiteral("C:\\")), QStringLiteral("C:\\"));
#else
    QCOMPARE(FileDialogs::startPath(QStringLiteral("C:\\")), QDir::homePath());
#endif
    QCOMPARE(FileDialogs::startPath(QStringLiteral("/data/run1.txt")),
             QStringLiteral("/data/run1.txt"));
    QCOMPARE(FileDialogs::startPath(QString()), QString());
}

QTEST_GUILESS_MAIN(TestFileCommands)
#include "test_filecommands.moc"
