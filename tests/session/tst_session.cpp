// The session's command flows, headless with scripted dialogs and message
// boxes. They keep the program's quirks: Save clears the mark even when
// writing failed; only a file too big for memory is reported.
#include "core/autosave.h"
#include "device/devicelink.h"
#include "files/datafile.h"
#include "files/golden.h"
#include "simlogs.h"
#include "support/readings.h"
#include "support/sessionfixture.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QString title(const QString &name, bool changed) {
    return u"ORLUK Water Monitor   ["_s + name + (changed ? u"] *"_s : u"]"_s);
}

DataPoint reading(int second) {
    return DataPoint{
        .year = 2024, .month = 3, .day = 5, .hour = 14, .minute = 22, .second = uint8_t(second)};
}

// `held` points, the small file's first, saved as /data/run1.txt.
void holdSavedPoints(MeasurementStore &store, int held) {
    fillSmallStore(store);
    store.dataPoint_count = held;
    store.reindex();
    store.data_changed = false;
    store.fileName_current = u"/data/run1.txt"_s;
}

// Daily logs (three of 24 readings unless told) from 5 March 2024 on, in
// dir/logs/.
QString writeLogs(const QTemporaryDir &dir, int days = 3, int intervalSeconds = 3600) {
    SimLogOptions logs;
    logs.folder = dir.filePath(u"logs"_s);
    QDir().mkpath(logs.folder);
    logs.start = QDate(2024, 3, 5);
    logs.days = days;
    logs.intervalSeconds = intervalSeconds;
    QString error;
    return writeSimLogs(logs, &error).size() == days ? logs.folder + u'/' : QString();
}

} // namespace

class TestSession : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void startUp();
    void newCommand_data();
    void newCommand();
    void reads_data();
    void reads();
    void saveSaveAsAndExport();
    void chainThatDoesNotFit();
    void autosave();
    void oneFileCommandAtATime();
    void commandLineFiles_data();
    void commandLineFiles();
};

void TestSession::startUp() {
    SessionFixture f;
    f.store().dataPoint_count = 3; // start-up empties whatever was there
    f.store().oilName = u"old"_s;
    f.store().display_update_pending = true;
    QSignalSpy redraws(&f.session, &MonitorSession::displayRequested);
    f.start();

    QCOMPARE(f.title, u"ORLUK Water Monitor   [<NEW FILE>]"_s);
    QCOMPARE(f.store().dataPoint_count, 0);
    QVERIFY(f.store().oilName.isEmpty());
    QCOMPARE(f.store().alarmThreshold, -1.0f);
    QVERIFY(QDir(f.dir.filePath(u"data/autosave"_s)).exists());
    QVERIFY(f.session.autoSave().isRunning());
    QVERIFY(f.notifier.shown.isEmpty());

    DisplayFlags stored;
    stored.displayWater = false;
    bool percent = true;
    QVERIFY(!settings::readRegistry(f.session.settingsKey(), stored, percent));
    QVERIFY(stored.displayWater && !stored.displaySoot && stored.printWater && !percent);

    // The duplicate rule of the Station key holds from the next start on.
    QVERIFY(!f.store().fullStampDuplicates());
    StationSettings station;
    station.compareHour = true;
    f.session.settings_setStation(station);
    QVERIFY(f.store().fullStampDuplicates());
    {
        SessionFixture again;
        QFile::copy(f.dir.filePath(u"settings.reg"_s), again.dir.filePath(u"settings.reg"_s));
        again.start();
        QVERIFY(again.store().fullStampDuplicates());
        QVERIFY(again.session.stationSettings().compareHour);
    }

    QVERIFY(f.session.Timer_monitorChanges.isActive());
    QCOMPARE(f.session.Timer_monitorChanges.interval(), 500);
    f.session.monitorTick();
    QCOMPARE(redraws.size(), 0);
    f.session.oilName_set(u" SAE 40 "_s);
    f.session.oilName_set(u"SAE 40"_s);
    f.session.monitorTick();
    f.session.monitorTick();
    QCOMPARE(redraws.size(), 1);
    // A new alarm threshold alone (as a poll's alarm reply brings it) is a
    // metadata change, told once.
    QSignalSpy metadata(&f.session, &MonitorSession::metadataChanged);
    f.store().alarmThreshold = 500.0f;
    f.session.oilName_update(u"SAE 40"_s);
    f.session.oilName_update(u"SAE 40"_s);
    QCOMPARE(metadata.size(), 1);

    const DeviceLink &link = f.session.link();
    QVERIFY(!link.queryRunning());
    QVERIFY(!f.session.settingsKey().openOrCreate());
    QVERIFY(!f.session.settingsKey().setString(u"ComPort2"_s, u"/dev/ttyNAKOS9"_s));
    f.session.settingsKey().close();
    f.session.port_select(2);
    QCOMPARE(link.portDevice(), u"/dev/ttyNAKOS9"_s);
}

void TestSession::newCommand_data() {
    QTest::addColumn<Notifier::Answer>("answer");
    QTest::addColumn<bool>("changed");
    QTest::addColumn<bool>("cleared");
    QTest::newRow("Cancel") << Notifier::Answer::Cancel << true << false;
    QTest::newRow("No") << Notifier::Answer::No << true << true;
    QTest::newRow("Yes, the save fails") << Notifier::Answer::Yes << true << true;
    QTest::newRow("unchanged: no question") << Notifier::Answer::Cancel << false << true;
}

void TestSession::newCommand() {
    QFETCH(Notifier::Answer, answer);
    QFETCH(bool, changed);
    QFETCH(bool, cleared);
    SessionFixture f;
    f.start();
    MeasurementStore &store = f.store();
    store.append(reading(1));
    store.append(reading(2));
    store.fileName_current = f.dir.filePath(u"no/folder/run1.txt"_s);
    store.alarmThreshold = 500.0f;
    store.oilName = u"SAE 40"_s;
    store.display_update_pending = false;
    store.data_changed = changed;
    f.session.titleRefresh();
    const QString before = f.title;
    f.clock.time = f.clock.time.addSecs(5);
    QSignalSpy shown(&f.session, &MonitorSession::oilNameShown);
    f.notifier.answers = {answer};
    f.session.file_new();

    QCOMPARE(f.notifier.shown.size(), changed ? 1 : 0);
    if (changed) {
        const ScriptedNotifier::Shown &box = f.notifier.shown.first();
        QCOMPARE(box.text, u"Data in memory has changed, do you want to save it now?"_s);
        QVERIFY(box.title.isEmpty() && !box.title.isNull()); // an empty title, not the default
        QCOMPARE(box.buttons, Notifier::Buttons::YesNoCancel);
        QCOMPARE(box.icon, Notifier::Icon::Question);
    }
    if (!cleared) {
        QCOMPARE(store.dataPoint_count, 2);
        QCOMPARE(store.alarmThreshold, 500.0f);
        QCOMPARE(store.oilName, u"SAE 40"_s);
        QCOMPARE(f.title, before);
        QVERIFY(f.session.autoSave().fileName().endsWith(u"142210.txt"_s));
        return;
    }
    QCOMPARE(store.dataPoint_count, 0);
    QVERIFY(!store.data_changed);
    QVERIFY(store.fileName_current.isEmpty());
    QCOMPARE(store.alarmThreshold, -1.0f);
    QVERIFY(store.oilName.isEmpty());
    QCOMPARE(shown.size(), 1);
    QVERIFY(store.display_update_pending);
    QCOMPARE(f.title, u"ORLUK Water Monitor   [<NEW FILE>]"_s);
    QVERIFY(f.session.autoSave().fileName().endsWith(u"142215.txt"_s)); // a new period
    QCOMPARE(store.append(reading(1)), AppendResult::Added);            // the stamps are free
}

// Open, the imports and a drop on the window read through the same flows.
// Names are in the test folder ("small.txt": the test file, "" cancels the
// file or folder dialog); `held` points were saved as /data/run1.txt before.
// Open takes the chosen name before the mode and keeps it whatever the read
// does, unless the file does not fit; the imports keep the current name,
// except that a folder names the combined data after its first log.
void TestSession::reads_data() {
    QTest::addColumn<QString>("command"); // open, import, chain, folder or drop
    QTest::addColumn<QString>("choice");
    QTest::addColumn<int>("mode"); // the "Data handling" answer, 0: cancelled
    QTest::addColumn<int>("held");
    QTest::addColumn<int>("count");
    QTest::addColumn<QString>("named"); // the current name afterwards
    QTest::addColumn<bool>("changed");
    QTest::addColumn<QString>("message");
    QTest::addColumn<QString>("oil"); // the oil name sent to the panel
    const QString open = u"open"_s, imp = u"import"_s, chain = u"chain"_s, drop = u"drop"_s;
    const QString small = u"small.txt"_s, run1 = u"/data/run1.txt"_s, log = u"logs/NAKOS435.log"_s;
    const QString combined = u"logs/NAKOS435.log_combined.txt"_s, oil = u"Turbine oil T46"_s;
    const QString none;
    const int full = 130000 - 2, room100 = 130000 - 100;
    QTest::newRow("open: dialog cancelled")
        << open << none << 1 << 3 << 3 << run1 << false << none << none;
    QTest::newRow("open: data handling cancelled")
        << open << small << 0 << 3 << 3 << small << false << none << none;
    QTest::newRow("open: replace") << open << small << 1 << 3 << 3 << small << false << none << oil;
    QTest::newRow("open: insert before")
        << open << small << 2 << 3 << 6 << small << true << none << oil;
    QTest::newRow("open: append") << open << small << 3 << 3 << 6 << small << true << none << oil;
    QTest::newRow("open: missing file") << open << u"logs/missing.txt"_s << 2 << 3 << 3
                                        << u"logs/missing.txt"_s << true << none << none;
    QTest::newRow("open: too many records")
        << open << small << 3 << full << full << run1 << false
        << u"The 3 data points of \""_s + testData("small.txt") +
               u"\" and the 129998 in memory exceed the limit of 130000 data points. "
               "Nothing was loaded."_s
        << none;
    QTest::newRow("import: replace") << imp << log << 1 << 3 << 24 << run1 << false << none << none;
    QTest::newRow("import: append with room 100")
        << imp << log << 3 << room100 << room100 << run1 << false << none << none;
    QTest::newRow("import: cancelled")
        << imp << none << 1 << 3 << 3 << run1 << false << none << none;
    QTest::newRow("chain: insert before")
        << chain << log << 2 << 3 << 75 << run1 << true << none << none;
    QTest::newRow("chain: not a start name") << chain << u"logs/run.log"_s << 1 << 3 << 3 << run1
                                             << false << u"Invalid chain start filename"_s << none;
    QTest::newRow("folder: two chosen, append")
        << u"folder"_s << u"logs/"_s << 3 << 3 << 51 << combined << true << none << none;
    QTest::newRow("drop: data file, append")
        << drop << small << 3 << 3 << 6 << small << true << none << oil;
    QTest::newRow("drop: log, replace")
        << drop << u"logs/NAKOS436.LOG"_s << 1 << 3 << 24 << run1 << false << none << none;
    QTest::newRow("drop: folder, append two")
        << drop << u"logs"_s << 3 << 3 << 51 << combined << true << none << none;
    QTest::newRow("drop: data handling cancelled")
        << drop << small << 0 << 3 << 3 << small << false << none << none;
}

void TestSession::reads() {
    QFETCH(QString, command);
    QFETCH(QString, choice);
    QFETCH(int, mode);
    QFETCH(int, held);
    QFETCH(QString, named);
    QFETCH(bool, changed);
    QFETCH(QString, message);
    QFETCH(QString, oil);
    SessionFixture f;
    f.start();
    const QString logs = writeLogs(f.dir);
    QVERIFY(!logs.isEmpty());
    if (choice.endsWith(u".LOG"_s)) // a log is known by its name in any case
        QVERIFY(QFile::rename(logs + u"NAKOS436.log"_s, logs + u"NAKOS436.LOG"_s));
    holdSavedPoints(f.store(), held);
    QSignalSpy zoomResets(&f.session, &MonitorSession::zoomResetRequested);
    QSignalSpy oilNames(&f.session, &MonitorSession::oilNameShown);
    const auto path = [&](const QString &name) {
        if (name == u"small.txt"_s)
            return testData("small.txt");
        return name.isEmpty() || name.startsWith(u'/') ? name : f.dir.filePath(name);
    };
    f.dialogs.modeAnswers << int16_t(mode);
    f.dialogs.selectionAnswer = {0, 2};
    f.dialogs.fileAnswers << path(choice);
    f.dialogs.folderAnswer = path(choice);
    if (command == u"open"_s)
        f.session.file_open();
    else if (command == u"import"_s)
        f.session.file_import();
    else if (command == u"chain"_s)
        f.session.file_importChain();
    else if (command == u"folder"_s)
        f.session.file_importDir();
    else
        f.session.file_dropped(path(choice));

    QTEST(f.store().dataPoint_count, "count");
    QCOMPARE(f.store().fileName_current, path(named));
    QCOMPARE(f.store().data_changed, changed);
    // Open always resets the zoom; the others when they got to reading.
    const bool tried = command == u"open"_s || (!choice.isEmpty() && message.isEmpty());
    QCOMPARE(zoomResets.size(), tried ? 1 : 0);
    if (tried && !choice.isEmpty())
        QCOMPARE(f.title, title(path(named), changed));
    QCOMPARE(f.session.autoSave().isRunning(), !choice.isEmpty());
    QCOMPARE(oilNames.size(), oil.isEmpty() ? 0 : 1);
    if (!oil.isEmpty())
        QCOMPARE(oilNames[0][0].toString(), oil);
    QCOMPARE(f.notifier.shown.size(), message.isEmpty() ? 0 : 1);
    if (!message.isEmpty()) {
        const bool error = command == u"chain"_s;
        QCOMPARE(f.notifier.shown[0].text, message);
        QCOMPARE(f.notifier.shown[0].title, error ? u"Error"_s : QString());
        QCOMPARE(f.notifier.shown[0].icon,
                 error ? Notifier::Icon::Critical : Notifier::Icon::Exclamation);
    }
    if (named.endsWith(u"_combined.txt"_s))
        QCOMPARE(f.dialogs.selectionCalls.value(0).size(), 3);
    if (command == u"chain"_s && mode == 2) // inserted day by day before what was there
        QVERIFY(f.store().dataPoints[0].day == 5 && f.store().dataPoints[71].day == 7);
    if (command == u"folder"_s)
        QCOMPARE(f.dialogs.folderCalls, QStringList{u"/data"_s});
    if (command != u"drop"_s && command != u"folder"_s) {
        QCOMPARE(f.dialogs.calls[0].filter,
                 command == u"open"_s ? u"Text data files (*.txt)|*.txt|All files (*.*)|*.*|"_s
                                      : u"Log files (*.log)|*.log|All files (*.*)|*.*|"_s);
        QCOMPARE(f.dialogs.calls[0].initialPath, u"/data/run1.txt"_s);
    }
    if (command != u"drop"_s)
        return;
    // No file or folder dialog; changed data is offered for saving first,
    // and Cancel ends the drop there.
    QVERIFY(f.dialogs.calls.isEmpty() && f.dialogs.folderCalls.isEmpty());
    QCOMPARE(f.dialogs.modeCalls, 1);
    f.store().data_changed = true;
    f.notifier.answers = {Notifier::Answer::Cancel};
    f.session.file_dropped(path(choice));
    QCOMPARE(f.notifier.shown.size(), 1);
    QCOMPARE(f.dialogs.modeCalls, 1);
}

void TestSession::saveSaveAsAndExport() {
    SessionFixture f;
    f.start();
    MeasurementStore &store = f.store();
    fillSmallStore(store);
    const QString name = f.dir.filePath(u"saved.txt"_s), other = f.dir.filePath(u"new.txt"_s);
    const QString csv = f.dir.filePath(u"out.csv"_s);
    f.dialogs.fileAnswers << QString() << name << other << QString() << csv;
    f.session.file_save(); // no name yet: asks, and is cancelled
    QVERIFY(store.data_changed);
    f.notifier.answers = {Notifier::Answer::Cancel}; // the prompt stops Open before its dialog
    f.session.file_open();
    QCOMPARE(f.dialogs.calls.size(), 1);
    f.session.file_save();
    QCOMPARE(fileBytes(name), fileBytes(testData("small.txt")));
    QCOMPARE(f.title, title(name, false));
    f.session.file_save(); // with a name Save does not ask
    f.session.file_saveas();
    QCOMPARE(store.fileName_current, other);
    QVERIFY(QFile::exists(other));
    QCOMPARE(f.dialogs.calls.size(), 3);
    QCOMPARE(f.dialogs.calls[2].initialPath, name);

    store.data_changed = true; // the export clears it but keeps the data file's name
    f.session.file_export();   // cancelled
    QVERIFY(store.data_changed);
    f.session.file_export();
    QCOMPARE(fileBytes(csv), fileBytes(testData("small.csv")));
    QCOMPARE(f.title, title(other, false));
    QCOMPARE(f.dialogs.calls[4].filter, u"CSV files (*.csv)|*.csv|All files (*.*)|*.*|"_s);

    // A failed write clears the mark all the same and is not reported.
    store.fileName_current = f.dir.filePath(u"no/folder/x.txt"_s);
    store.data_changed = true;
    f.session.file_save();
    QVERIFY(!store.data_changed);
    QCOMPARE(f.notifier.shown.size(), 1); // the prompt that stopped Open above

    store.fileName_current.clear(); // the prompt's Yes asks for a name, then New goes on
    store.data_changed = true;
    f.notifier.answers = {Notifier::Answer::Yes};
    const QString viaPrompt = f.dir.filePath(u"prompt.txt"_s);
    f.dialogs.fileAnswers << viaPrompt;
    f.session.file_new();
    QCOMPARE(f.dialogs.calls.last().initialPath, u"C:\\"_s);
    QCOMPARE(fileBytes(viaPrompt), fileBytes(testData("small.txt")));
    QCOMPARE(store.dataPoint_count, 0);
}

// Four days of 48 readings appended with room for 101: the first two enter,
// the third does not fit, the fourth is never tried, and the message says so.
void TestSession::chainThatDoesNotFit() {
    SessionFixture f;
    f.start();
    const QString logs = writeLogs(f.dir, 4, 1800);
    QVERIFY(!logs.isEmpty());
    holdSavedPoints(f.store(), 130000 - 101);
    f.dialogs.modeAnswers << int16_t(3);
    f.dialogs.fileAnswers << logs + u"NAKOS435.log"_s;
    f.session.file_importChain();
    QCOMPARE(f.store().dataPoint_count, 130000 - 101 + 96);
    QCOMPARE(f.notifier.shown.size(), 1);
    QCOMPARE(f.notifier.shown[0].text,
             u"2 of 4 files were imported: \"NAKOS435.log\", \"NAKOS436.log\". \"NAKOS437.log\" "
             "did not fit into the data point memory and was not imported. The remaining "
             "file was skipped: \"NAKOS438.log\"."_s);
    QVERIFY(f.store().data_changed);
}

// Saved on the sixth tick, in the background, the mark cleared unless
// readings came in meanwhile.
void TestSession::autosave() {
    SessionFixture f;
    f.start();
    AutoSave &autoSave = f.session.autoSave();
    const QString name = autoSave.fileName();
    QCOMPARE(name, f.store().path_autosave + u"NAK_OS_autosave_20240305_142210.txt"_s);
    QSignalSpy written(&f.session, &MonitorSession::autoSaveFinished);
    const auto minute = [&] {
        for (int i = 0; i < 6; ++i)
            autoSave.tick();
    };
    minute();
    QVERIFY(!f.session.autoSaveRunning() && !QFile::exists(name)); // an empty store is never saved
    fillSmallStore(f.store());
    minute();
    f.store().append(reading(1)); // arrives while the file is written
    QVERIFY(written.wait());
    QCOMPARE(fileBytes(name), fileBytes(testData("small.txt")));
    QVERIFY(f.store().data_changed);
    minute();
    QVERIFY(written.wait());
    QCOMPARE(f.title, title(u"<NEW FILE>"_s, false));
    const QByteArray line1 = "2024-03-05\t14:22:01\t0\t0.00\t0.00\t0.00\t0\t0\t0\r\n";
    QCOMPARE(fileBytes(name), fileBytes(testData("small.txt")) + line1);

    // A folder that cannot be written (root writes all the same) leaves the
    // last minute's file whole.
    const QByteArray old = fileBytes(name);
    const QFile::Permissions rw = QFile(f.store().path_autosave).permissions();
    QFile(f.store().path_autosave).setPermissions(QFileDevice::ReadOwner | QFileDevice::ExeOwner);
    f.store().append(reading(2));
    minute();
    QVERIFY(written.wait());
    QFile(f.store().path_autosave).setPermissions(rw);
    const bool kept = fileBytes(name) == old;
    QCOMPARE(kept, f.store().data_changed);
    if (!kept)
        QVERIFY(fileBytes(name) == old + "2024-03-05\t14:22:02\t0\t0.00\t0.00\t0.00\t0\t0\t0\r\n");
    QCOMPARE(QDir(f.store().path_autosave).entryList(QDir::Files).size(), 1);

    const QString folder = f.dir.filePath(u"usb/"_s);
    f.dialogs.folderAnswer = folder;
    f.session.file_setAutosavePath();
    QCOMPARE(f.store().path_autosave, folder);
    QCOMPARE(autoSave.fileName(), name); // the new folder counts from the next period
    QCOMPARE(settings::readAutosavePath(f.session.settingsKey()), folder);
}

// While Open waits in the "Data handling" dialog, other file commands are
// ignored.
void TestSession::oneFileCommandAtATime() {
    SessionFixture f;
    f.start();
    fillSmallStore(f.store());
    f.store().data_changed = false;
    QSignalSpy busy(&f.session, &MonitorSession::busyChanged);
    f.dialogs.fileAnswers << testData("small.txt") << f.dir.filePath(u"other.txt"_s);
    f.dialogs.modeAnswers << int16_t(3) << int16_t(3);
    int attempts = 0;
    f.dialogs.whileChoosing = [&] {
        QVERIFY(f.session.busy());
        if (attempts++ > 0)
            return;
        f.session.file_open();
        f.session.file_new();
        f.session.file_saveas();
        f.session.file_export();
        f.session.file_dropped(testData("small.txt"));
        QVERIFY(f.session.openFiles({testData("small.txt")}).isEmpty());
    };
    f.session.file_open();
    QCOMPARE(attempts, 1);
    QCOMPARE(f.dialogs.calls.size(), 1);
    QCOMPARE(f.store().dataPoint_count, 6);
    QVERIFY(!f.session.busy());
    QCOMPARE(busy.size(), 2);
    QCOMPARE(busy[0][0].toBool(), true);
    QCOMPARE(busy[1][0].toBool(), false);
}

// The files named on the command line, without a dialog: the first replaces
// the 10 points held, the others are appended; the title names the last data
// file.
void TestSession::commandLineFiles_data() {
    QTest::addColumn<QStringList>("files"); // in the test folder; "small.txt": the test file
    QTest::addColumn<int>("count");
    QTest::addColumn<QString>("named");
    QTest::addColumn<bool>("changed");
    QTest::addColumn<int>("messages"); // told through the notifier
    QTest::addColumn<int>("unread");   // lines for standard error
    const QString small = u"small.txt"_s;
    const int big = 130000 - 2;
    QTest::newRow("data file, then a log")
        << QStringList{small, u"logs/NAKOS435.log"_s} << 27 << small << true << 0 << 0;
    QTest::newRow("log, then a data file")
        << QStringList{u"logs/NAKOS435.log"_s, small} << 27 << small << true << 0 << 0;
    QTest::newRow("a missing file first")
        << QStringList{u"missing.txt"_s, small} << 13 << small << true << 0 << 1;
    QTest::newRow("the second does not fit")
        << QStringList{u"big.txt"_s, small} << big << u"big.txt"_s << false << 1 << 0;
}

void TestSession::commandLineFiles() {
    QFETCH(QStringList, files);
    QFETCH(QString, named);
    SessionFixture f;
    f.start();
    QVERIFY(!writeLogs(f.dir).isEmpty());
    const auto path = [&](const QString &name) {
        return name == u"small.txt"_s ? testData("small.txt") : f.dir.filePath(name);
    };
    if (files.first() == u"big.txt"_s) {
        const std::vector<DataPoint> big = secondsApart(130000 - 2, 2024);
        QVERIFY(!f.store().merge(big.data(), 130000 - 2, MergeMode::Replace));
        QVERIFY(!DataFile(f.store()).dataFile_save(path(u"big.txt"_s), false).failed());
    }
    holdSavedPoints(f.store(), 10);
    QStringList given;
    for (const QString &name : files)
        given << path(name);
    const QStringList unread = f.session.openFiles(given);

    QTEST(f.store().dataPoint_count, "count");
    QCOMPARE(f.title, title(path(named), f.store().data_changed));
    QTEST(f.store().data_changed, "changed");
    QTEST(int(f.notifier.shown.size()), "messages");
    QTEST(int(unread.size()), "unread");
    if (!unread.isEmpty())
        QCOMPARE(unread.first(), u"Cannot open \""_s + path(u"missing.txt"_s) + u"\"."_s);
    QVERIFY(f.dialogs.calls.isEmpty());
    QCOMPARE(f.dialogs.modeCalls, 0);
    QVERIFY(f.session.autoSave().isRunning());
    QVERIFY(!f.session.busy());
}

QTEST_GUILESS_MAIN(TestSession)
#include "tst_session.moc"
