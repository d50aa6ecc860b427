// The session's command flows, headless with scripted dialogs and message
// boxes: start-up, New with each answer of the save prompt, Open with each
// "Data handling" answer, Save, Save As, Export, the autosave and the one
// file command at a time. The flows keep the program's quirks: Open takes
// the chosen name before the mode is chosen and leaves the autosave stopped
// when its dialog is cancelled; Save clears the mark even when writing
// failed; only a file too big for memory is reported, and then nothing
// changes.
#include "core/autosave.h"
#include "device/devicelink.h"
#include "files/datafile.h"
#include "files/golden.h"
#include "simlogs.h"
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

// A store of `held` points, starting with the small file's, saved as
// /data/run1.txt.
void holdSavedPoints(MeasurementStore &store, int held) {
    fillSmallStore(store);
    store.dataPoint_count = held;
    store.reindex();
    store.data_changed = false;
    store.fileName_current = u"/data/run1.txt"_s;
}

// Three daily logs, 24 readings each, from 5 March 2024 on, in dir/logs/.
QString writeLogs(const QTemporaryDir &dir) {
    SimLogOptions logs;
    logs.folder = dir.filePath(u"logs"_s);
    QDir().mkpath(logs.folder);
    logs.start = QDate(2024, 3, 5);
    logs.days = 3;
    logs.intervalSeconds = 3600;
    QString error;
    return writeSimLogs(logs, &error).size() == 3 ? logs.folder + QLatin1Char('/') : QString();
}

} // namespace

class TestSession : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void startUp();
    void newCommand_data();
    void newCommand();
    void open_data();
    void open();
    void saveSaveAsAndExport();
    void imports_data();
    void imports();
    void chainThatDoesNotFit();
    void autosave();
    void oneFileCommandAtATime();
    void commandLineFiles_data();
    void commandLineFiles();
    void drops_data();
    void drops();
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

    // A first run stores the default choices.
    DisplayFlags stored;
    stored.displayWater = false;
    bool percent = true;
    QVERIFY(!settings::readRegistry(f.session.settingsKey(), stored, percent));
    QVERIFY(stored.displayWater && !stored.displaySoot && stored.printWater && !percent);

    // The station settings: the documented duplicate rule until the
    // Station key says otherwise; then it holds from the next start on.
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

    // The change monitor turns requests into one rebuild.
    QVERIFY(f.session.Timer_monitorChanges.isActive());
    QCOMPARE(f.session.Timer_monitorChanges.interval(), 500);
    f.session.monitorTick();
    QCOMPARE(redraws.size(), 0);
    f.session.oilName_set(u" SAE 40 "_s);
    f.session.oilName_set(u"SAE 40"_s);
    f.session.monitorTick();
    f.session.monitorTick();
    QCOMPARE(redraws.size(), 1);

    // Port numbers lead to devices through the settings value ComPort<n>.
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

void TestSession::open_data() {
    QTest::addColumn<QString>("file"); // empty: the file dialog is cancelled
    QTest::addColumn<int>("mode");     // 0: the data handling dialog is cancelled
    QTest::addColumn<int>("held");     // records in the store before
    QTest::addColumn<int>("count");
    QTest::addColumn<bool>("changed");
    QTest::addColumn<bool>("named");   // the chosen file became the current name
    QTest::addColumn<bool>("running"); // the autosave afterwards

    const QString small = testData("small.txt");
    const int full = 130000 - 2;
    QTest::newRow("file dialog cancelled") << QString() << 1 << 3 << 3 << false << false << false;
    QTest::newRow("data handling cancelled") << small << 0 << 3 << 3 << false << true << true;
    QTest::newRow("replace") << small << 1 << 3 << 3 << false << true << true;
    QTest::newRow("insert before") << small << 2 << 3 << 6 << true << true << true;
    QTest::newRow("append") << small << 3 << 3 << 6 << true << true << true;
    QTest::newRow("missing file") << u"missing.txt"_s << 2 << 3 << 3 << true << true << true;
    QTest::newRow("too many records") << small << 3 << full << full << false << false << true;
}

void TestSession::open() {
    QFETCH(QString, file);
    QFETCH(int, mode);
    QFETCH(int, held);
    QFETCH(int, count);
    QFETCH(bool, changed);
    QFETCH(bool, named);
    QFETCH(bool, running);
    SessionFixture f;
    f.start();
    const bool tooMany = held > 3;
    if (!file.isEmpty() && QDir::isRelativePath(file))
        file = f.dir.filePath(file);
    holdSavedPoints(f.store(), held);
    QSignalSpy zoomResets(&f.session, &MonitorSession::zoomResetRequested);
    QSignalSpy oilNames(&f.session, &MonitorSession::oilNameShown);
    f.dialogs.fileAnswers << file;
    f.dialogs.modeAnswers << int16_t(mode);
    f.session.file_open();
    QCOMPARE(f.dialogs.calls[0].filter, u"Text data files (*.txt)|*.txt|All files (*.*)|*.*|"_s);
    QCOMPARE(f.dialogs.calls[0].initialPath, u"/data/run1.txt"_s);
    QCOMPARE(f.store().dataPoint_count, count);
    QCOMPARE(f.session.autoSave().isRunning(), running);
    QCOMPARE(f.notifier.shown.size(), tooMany ? 1 : 0);
    if (tooMany)
        QVERIFY(f.notifier.shown[0].text.contains(file));
    const bool read = mode > 0 && QFile::exists(file) && !tooMany;
    QCOMPARE(oilNames.size(), read ? 1 : 0); // the file's oil name goes to the panel
    QCOMPARE(zoomResets.size(), 1);
    if (!file.isEmpty())
        QCOMPARE(f.title, title(named ? file : u"/data/run1.txt"_s, changed));
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

    // The export counts as saving but keeps the data file's name.
    store.data_changed = true;
    f.session.file_export(); // cancelled
    QVERIFY(store.data_changed);
    f.session.file_export();
    QCOMPARE(fileBytes(csv), fileBytes(testData("small.csv")));
    QCOMPARE(f.title, title(other, false));
    QCOMPARE(f.dialogs.calls[4].filter, u"CSV files (*.csv)|*.csv|All files (*.*)|*.*|"_s);

    // A failed write clears the mark all the same and is not reported: the
    // only box so far is the prompt that stopped Open above.
    store.fileName_current = f.dir.filePath(u"no/folder/x.txt"_s);
    store.data_changed = true;
    f.session.file_save();
    QVERIFY(!store.data_changed);
    QCOMPARE(f.notifier.shown.size(), 1);
    QCOMPARE(f.notifier.shown.last().text,
             u"Data in memory has changed, do you want to save it now?"_s);

    // The prompt's Yes saves (here asking for a name), then New goes on.
    store.fileName_current.clear();
    store.data_changed = true;
    f.notifier.answers = {Notifier::Answer::Yes};
    const QString viaPrompt = f.dir.filePath(u"prompt.txt"_s);
    f.dialogs.fileAnswers << viaPrompt;
    f.session.file_new();
    QCOMPARE(f.dialogs.calls.last().initialPath, u"C:\\"_s);
    QCOMPARE(fileBytes(viaPrompt), fileBytes(testData("small.txt")));
    QCOMPARE(store.dataPoint_count, 0);
}

void TestSession::imports_data() {
    QTest::addColumn<QString>("command"); // import, chain or folder
    QTest::addColumn<QString>("choice");  // the file or folder chosen, "" cancels
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("held");
    QTest::addColumn<int>("count");
    QTest::addColumn<QString>("message");

    // Three daily logs, 24 readings each, from 5 March 2024 on.
    const int room100 = 130000 - 100;
    QTest::newRow("import, replace")
        << u"import"_s << u"NAKOS435.log"_s << 1 << 3 << 24 << QString();
    QTest::newRow("import, append with room 100")
        << u"import"_s << u"NAKOS435.log"_s << 3 << room100 << room100 << QString();
    QTest::newRow("import, cancelled") << u"import"_s << QString() << 1 << 3 << 3 << QString();
    QTest::newRow("chain, insert before")
        << u"chain"_s << u"NAKOS435.log"_s << 2 << 3 << 75 << QString();
    QTest::newRow("chain, not a start name")
        << u"chain"_s << u"run.log"_s << 1 << 3 << 3 << u"Invalid chain start filename"_s;
    QTest::newRow("folder, two chosen, append")
        << u"folder"_s << u"."_s << 3 << 3 << 51 << QString();
}

// The imports read through the one log import loop; the mark follows the
// mode, the current name stays (the folder import names the combined data
// after the first log), the autosave starts a new period, the zoom resets.
void TestSession::imports() {
    QFETCH(QString, command);
    QFETCH(QString, choice);
    QFETCH(int, mode);
    QFETCH(int, held);
    QFETCH(int, count);
    QFETCH(QString, message);
    SessionFixture f;
    f.start();
    const QString folder = writeLogs(f.dir);
    QVERIFY(!folder.isEmpty());
    holdSavedPoints(f.store(), held);
    QSignalSpy zoomResets(&f.session, &MonitorSession::zoomResetRequested);
    f.dialogs.modeAnswers << int16_t(mode);
    if (command == u"folder"_s) {
        f.dialogs.folderAnswer = folder;
        f.dialogs.selectionAnswer = {0, 2};
        f.session.file_importDir();
        QCOMPARE(f.dialogs.selectionCalls.first().size(), 3);
        QCOMPARE(f.store().fileName_current, folder + u"NAKOS435.log_combined.txt"_s);
    } else {
        f.dialogs.fileAnswers << (choice.isEmpty() ? choice : folder + choice);
        if (command == u"chain"_s)
            f.session.file_importChain();
        else
            f.session.file_import();
        QCOMPARE(f.dialogs.calls[0].filter, u"Log files (*.log)|*.log|All files (*.*)|*.*|"_s);
        QCOMPARE(f.store().fileName_current, u"/data/run1.txt"_s);
    }
    QCOMPARE(f.store().dataPoint_count, count);
    QCOMPARE(f.notifier.shown.size(), message.isEmpty() ? 0 : 1);
    if (!message.isEmpty()) {
        QCOMPARE(f.notifier.shown[0].text, message);
        QCOMPARE(f.notifier.shown[0].title, u"Error"_s);
        QCOMPARE(f.notifier.shown[0].icon, Notifier::Icon::Critical);
    }
    const bool read = count != held;
    QCOMPARE(f.store().data_changed, read && mode != 1);
    QCOMPARE(f.session.autoSave().isRunning(), !choice.isEmpty());
    QCOMPARE(zoomResets.size(), !choice.isEmpty() && message.isEmpty() ? 1 : 0);
    if (mode == 2 && read) // inserted day by day before what was there, in date order
        QVERIFY(f.store().dataPoints[0].day == 5 && f.store().dataPoints[71].day == 7);
}

// Four days of 48 readings appended with room for 101: the first two enter,
// the third does not fit, the fourth is never tried, and the message says so.
void TestSession::chainThatDoesNotFit() {
    SessionFixture f;
    f.start();
    SimLogOptions logs;
    logs.folder = f.dir.filePath(u"logs"_s);
    QDir().mkpath(logs.folder);
    logs.start = QDate(2024, 3, 5);
    logs.days = 4;
    logs.intervalSeconds = 1800;
    QString error;
    QCOMPARE(writeSimLogs(logs, &error).size(), 4);
    holdSavedPoints(f.store(), 130000 - 101);
    f.dialogs.modeAnswers << int16_t(3);
    f.dialogs.fileAnswers << logs.folder + u"/NAKOS435.log"_s;
    f.session.file_importChain();
    QCOMPARE(f.store().dataPoint_count, 130000 - 101 + 96);
    QCOMPARE(f.notifier.shown.size(), 1);
    QCOMPARE(f.notifier.shown[0].text,
             u"2 of 4 files were imported: \"NAKOS435.log\", \"NAKOS436.log\". \"NAKOS437.log\" "
             "did not fit into the data point memory and was not imported. The remaining "
             "file was skipped: \"NAKOS438.log\"."_s);
    QVERIFY(f.store().data_changed);
}

// Saved on the sixth tick, in the background, with the title's mark cleared
// unless readings came in meanwhile; a folder that cannot be written leaves
// the last minute's file whole; the folder is set through the File menu and
// kept in the settings.
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

    // In a folder that cannot be written (root writes all the same) the file
    // holds either the last minute's data or the new, never a part.
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

// While Open waits in the "Data handling" dialog, the other file commands
// are ignored and the menus are told to switch them off.
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

// The files named on the command line: the first replaces the memory (here
// 10 points), the others are appended, data files as Open reads them, logs
// as Import does, without a dialog; the title names the last data file.
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
    if (files.first() == u"big.txt"_s) { // a reading a second from 1 January 2024 on
        MeasurementStore &s = f.store();
        s.dataPoint_count = 130000 - 2;
        for (int i = 0; i < s.dataPoint_count; ++i)
            s.dataPoints[size_t(i)] = DataPoint{.year = 2024,
                                                .month = 1,
                                                .day = uint8_t(1 + i / 86400),
                                                .hour = uint8_t(i / 3600 % 24),
                                                .minute = uint8_t(i / 60 % 60),
                                                .second = uint8_t(i % 60)};
        QVERIFY(!DataFile(s).dataFile_save(path(u"big.txt"_s), false).failed());
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

// A file or folder dropped on the window runs Open, Import or Import
// directory by its kind, with the save prompt and the "Data handling"
// choice but without the file or folder dialog.
void TestSession::drops_data() {
    QTest::addColumn<QString>("dropped"); // in the logs folder; "small.txt": the test file
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("count"); // 3 points held before
    QTest::addColumn<QString>("named");
    QTest::newRow("data file, append") << u"small.txt"_s << 3 << 6 << u"small.txt"_s;
    QTest::newRow("log, replace") << u"NAKOS436.LOG"_s << 1 << 24 << u"/data/run1.txt"_s;
    QTest::newRow("folder, append two") << u"."_s << 3 << 51 << u"logs/NAKOS435.log_combined.txt"_s;
    QTest::newRow("data handling cancelled") << u"small.txt"_s << 0 << 3 << u"small.txt"_s;
}

void TestSession::drops() {
    QFETCH(QString, dropped);
    QFETCH(int, mode);
    QFETCH(QString, named);
    SessionFixture f;
    f.start();
    const QString logs = writeLogs(f.dir);
    QVERIFY(QFile::rename(logs + u"NAKOS436.log"_s, logs + u"NAKOS436.LOG"_s));
    holdSavedPoints(f.store(), 3);
    f.dialogs.modeAnswers << int16_t(mode);
    f.dialogs.selectionAnswer = {0, 1};
    const auto path = [&](const QString &name) {
        if (name == u"small.txt"_s)
            return testData("small.txt");
        return name.startsWith(u'/') ? name : QDir::cleanPath(logs + name);
    };
    f.session.file_dropped(path(dropped));

    QTEST(f.store().dataPoint_count, "count");
    QCOMPARE(f.store().fileName_current,
             named.startsWith(u"logs/"_s) ? f.dir.filePath(named) : path(named));
    QVERIFY(f.dialogs.calls.isEmpty() && f.dialogs.folderCalls.isEmpty());
    QCOMPARE(f.dialogs.modeCalls, 1);
    QCOMPARE(f.dialogs.selectionCalls.size(), dropped == u"."_s ? 1 : 0);

    // Changed data is offered for saving first; Cancel ends the drop there.
    f.store().data_changed = true;
    f.notifier.answers = {Notifier::Answer::Cancel};
    f.session.file_dropped(path(dropped));
    QCOMPARE(f.notifier.shown.size(), 1);
    QCOMPARE(f.dialogs.modeCalls, 1);
}

QTEST_GUILESS_MAIN(TestSession)
#include "tst_session.moc"
