#pragma once

#include "core/autosave.h"
#include "core/store.h"
#include "device/linkhealth.h"
#include "files/fileresult.h"
#include "settings/settings.h"

#include <QHash>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <functional>
#include <memory>

class Clock;
class CsvExport;
class DataFile;
struct DataFileSnapshot;
class DeviceLink;
class FileDialogs;
class FileProgress;
struct FileResult;
class LogImport;
struct LogImportRun;
struct LogFileRef;
class Notifier;
class QThreadPool;
class RegistryKey;
class TelemetryPublisher;
struct TelemetryConfig;

// What a session asks the user through, and how it shows progress: message
// boxes, the local time, the file dialogs with the "Data handling" choice,
// and the progress window (null: none). The program passes its dialogs,
// tests and the command-line tool their own.
struct SessionSeams {
    Notifier &notifier;
    Clock &clock;
    FileDialogs &dialogs;
    FileProgress *progress = nullptr;
};

// The engine of one running program. It works on the process's measurement
// store (handed in by the application) and owns the display and print
// choices, the settings key, the device link, the file routines, the
// autosave and the change monitor. It is the one place that carries out
// what an operator or a script does: the File commands (New, Open, Save,
// Save As, Import, Import chain, Import directory, Export, Set autosave
// path, the save prompt) in their fixed order, and the query, the port, the
// poll interval, the oil stream, the oil name, the Toolbox's exchanges and
// the redraw request. Windows and tools read the store and the link's state
// through read-only views and never change either themselves.
//
// It asks the user only through the seams and tells everybody what happened
// through signals: the title, a display rebuild, the charts' zoom reset, the
// oil name shown in the control panel, whether a file command is running,
// new readings, changed metadata, the end of every poll and the query's
// state.
//
// File commands exclude each other: while one runs (a progress window lets
// events run, the "Data handling" dialog waits), a second one is ignored
// and busyChanged() lets the windows switch their menu entries off. Timers
// go on as usual meanwhile.
class MonitorSession : public QObject {
    Q_OBJECT
public:
    static constexpr int monitorInterval_ms = 500;

    MonitorSession(SessionSeams seams, MeasurementStore &store,
                   std::unique_ptr<RegistryKey> settingsKey, QObject *parent = nullptr);
    ~MonitorSession() override;

    // Start-up in three steps, so the windows can be made in between:
    // settings_load reads the stored choices (or stores the defaults of a
    // first run); startUp_engine finds the decimal separator, makes the
    // device link (com_init, ComPort<n> from the settings), prepares the
    // folders and selects all streams; startUp_finish empties the store,
    // refreshes the title, starts the autosave period and the change
    // monitor. startUp runs all three for a session without windows.
    void settings_load();
    void startUp_engine(const QString &currentDir);
    void startUp_finish();
    void startUp(const QString &currentDir);

    // The File menu's commands.
    void file_new();
    void file_open();
    void file_save();
    void file_saveas();
    void file_import();
    void file_importDir();
    void file_importChain();
    void file_export();
    void file_setAutosavePath();

    // The same commands for a file or folder already chosen, as a drop on
    // the window brings it: Open and Import without their file dialog,
    // Import directory with the selection of the folder's logs (no folder
    // dialog). The save prompt and the "Data handling" choice are asked as
    // usual; ignored while another file command runs. file_dropped picks
    // by kind: a folder, a ".log" file, any other file as a data file.
    void file_openPath(const QString &fileName);
    void file_importPath(const QString &fileName);
    void file_importDirPath(const QString &folder);
    void file_dropped(const QString &path);

    // The files named on the command line, read at the end of start-up
    // without any dialog: the first replaces the memory, each further one is
    // appended; data files as Open reads them, ".log" files as Import does.
    // A file that does not fit is told through the notifier as those
    // commands tell it; the lines returned name the files that could not be
    // read, for standard error. Ignored (nothing returned) while another
    // file command runs.
    QStringList openFiles(const QStringList &fileNames);

    // Asks whether changed data should be saved first (Yes runs Save);
    // true when the user cancelled.
    [[nodiscard]] bool saveChanges_prompt();

    // The periodic query: start arms the "Com port not available" warning,
    // starts the poll timer and polls at once; stop lets a running poll end.
    void query_start();
    void query_stop();
    bool queryRunning() const;
    // The poll period from the next start on (4000 ms unless changed).
    void query_setInterval(int ms);
    // The port the next exchange opens: "COM n" (0: no entry selected), or
    // a device path, which then stands for every port number.
    void port_select(int n);
    void port_selectDevice(const QString &device);
    // Ties port number n to a device ahead of the settings' ComPort<n> (the
    // demo's simulated sensor is COM 1).
    void port_mapDevice(int n, const QString &device);
    // One Toolbox exchange: the command as typed plus CR LF. The reply goes
    // to `replied` unless `context` is gone by then; a command whose context
    // goes before it was sent is dropped.
    void device_query(const QString &command, QObject *context,
                      std::function<void(const QString &reply)> replied);

    // The oil stream the charts show (0: all): the charts' zoom is reset
    // and they are rebuilt.
    void dataView_selectStream(int16_t newStream);

    void titleRefresh();
    // Rebuilds every chart from the store, now.
    void display_data();
    // Asks for one rebuild at the change monitor's next tick; requests made
    // within half a second are merged.
    void display_requestRedraw();
    // Sets the oil name as it stands, shows it in the control panel and
    // asks for a redraw (the charts show it).
    void oilName_set(const QString &newName);
    // The control panel's text box changed: the store keeps it trimmed.
    void oilName_update(const QString &text);
    // The operator left the text box: stored as above, then a redraw.
    void oilName_leave(const QString &text);

    // The change monitor's work, every 500 ms: a pending refresh request
    // becomes one display rebuild.
    void monitorTick();

    // For the recorder: stops the query and the autosave and writes the
    // store to `fileName` as a native data file, without dialogs.
    [[nodiscard]] FileResult recording_finish(const QString &fileName);

    // Rollover for unattended recording (off unless asked for; without it
    // the documented full rule drops what does not fit). When a new reading
    // of a list finds the store full, the store is first written as a native
    // data file beside `outputFile`, named by rolloverFileName(), and emptied
    // (MeasurementStore::rollOver); then the reading enters the empty store,
    // so none is dropped. An archive that
    // cannot be written leaves the store as it is. Empty: off again.
    void recording_setRollover(const QString &outputFile);
    // `<dir>/<OUTPUT without its extension>_<first>_<last>.txt`, the stamps
    // of the store's first and last point as yyyyMMddThhmmss; `_2`, `_3`...
    // before ".txt" when that file is already there.
    static QString rolloverFileName(const QString &outputFile, const MeasurementStore &store);
    // Writes the store as a rollover archive and empties it; true: failed
    // (nothing written, store unchanged). Also what the list hook runs.
    bool recording_rollOver();

    bool busy() const { return m_busy; }
    QString title() const;

    // Read-only views.
    const MeasurementStore &store() const { return m_store; }
    const DeviceLink &link() const { return *m_link; }
    const LinkHealth &health() const;
    // The autosave timer (tests run its minute by hand).
    AutoSave &autoSave() { return *m_autoSave; }
    // An autosave file is being written in the background.
    bool autoSaveRunning() const { return m_autoSaveRunning; }

    // What the General settings dialog edits.
    DisplayFlags &flags() { return m_flags; }
    RegistryKey &settingsKey() { return *m_settingsKey; }
    bool &waterDisplayPercent() { return m_store.waterDisplayPercent; }

    // The station settings, beyond the documented ones: settings_load reads
    // them from their own key and applies them to the store (the duplicate
    // rule); settings_setStation, the Station settings dialog's OK, applies
    // and stores them.
    const StationSettings &stationSettings() const { return m_station; }
    // Fleet telemetry: every reading that enters the store, the link's
    // health after every poll and the metadata whenever they change go to an
    // MQTT broker, without ever waiting for it. telemetry_start takes the
    // recorder's options (an empty sensor id becomes the host name and the
    // port's device) and returns an error text, empty when it runs;
    // telemetry_applyStation starts or stops it as the Station settings say
    // (outbox under the data folder). telemetry_stop publishes the offline
    // state and waits up to timeoutMs for what is in flight.
    QString telemetry_start(TelemetryConfig config);
    QString telemetry_applyStation();
    void telemetry_stop(int timeoutMs = 0);
    // "off", "connected", or what went wrong.
    const QString &telemetryState() const { return m_telemetryState; }
    void settings_setStation(const StationSettings &station);

    QTimer Timer_monitorChanges;

signals:
    void titleChanged(const QString &title);
    // display_data: every chart is rebuilt from the store.
    void displayRequested();
    // The charts go back to their full view (after reading files).
    void zoomResetRequested();
    // The oil name to show in the control panel's text box.
    void oilNameShown(const QString &name);
    void busyChanged(bool busy);

    // Points [first, first + count) of the store have just entered it from
    // the sensor; the range is valid during the call.
    void readingsAppended(int first, int count);
    // The alarm threshold, a calibration table or the oil name changed.
    void metadataChanged();
    // A poll's "list" exchange ended (also without a port).
    void pollFinished(const PollOutcome &outcome);
    void queryStateChanged(bool running);
    void telemetryStateChanged(const QString &state);
    // An autosave's write ended (after the mark and the title were
    // updated); failed: the last minute's file, if any, stays as it was.
    void autoSaveFinished(bool failed);
    // A rollover wrote `points` readings to `fileName`; `error` is empty, or
    // says why the archive could not be written (the store was kept).
    void rolledOver(const QString &fileName, int points, const QString &error);

private:
    // Runs one file command unless another one is running; the windows
    // switch the file commands off meanwhile.
    void exclusively(const std::function<void()> &work);
    // The save prompt, then the autosave stopped while data is read; false
    // when the user cancelled.
    bool readingMayStart();
    void openData();
    // Open and Import once the file is chosen; mode 0 asks the "Data
    // handling" dialog. The result is the load's (the import's first).
    FileResult openChosen(const QString &name, int16_t mode);
    FileResult importChosen(const QString &name, int16_t mode);
    // Import directory once the folder is chosen.
    void importFolder(const QString &folder);
    LogImportRun importLogs(const QList<LogFileRef> &files, MergeMode mode);
    void importDone();  // title, autosave period, zoom reset
    void saveCommand(); // Save, also from the prompt inside another command
    void saveUnder(const QString &fileName);
    QString openStartPath() const;
    // Shows a file that holds more records than fit; nothing was changed.
    void reportTooMany(const QString &message);
    // The autosave's write: a copy of the store is written on a thread of
    // its own to a temporary file beside the autosave file, renamed over it
    // only when every write succeeded, so the window never waits for the
    // disk. Skipped (true) while the previous one still writes.
    bool autoSave_write(const QString &fileName);
    // Back on this thread: the mark goes only when the store still holds
    // what was written.
    void autoSave_finished(bool failed);
    QString configuredDevice(int n) const;
    // Emits metadataChanged() when the metadata differ from the last look.
    void checkMetadata();

    struct Metadata {
        QString oilName;
        float alarmThreshold = -1.0f;
        float alarmDelay = -1.0f;
        CalTable calSource;
        CalTable calTable;
        bool operator==(const Metadata &other) const;
    };
    static Metadata metadataOf(const MeasurementStore &store);

    SessionSeams m_seams;
    MeasurementStore &m_store;
    DisplayFlags m_flags;
    StationSettings m_station;
    std::unique_ptr<TelemetryPublisher> m_telemetry;
    QString m_telemetryState = QStringLiteral("off");
    std::unique_ptr<RegistryKey> m_settingsKey;
    std::unique_ptr<DataFile> m_dataFile;
    std::unique_ptr<CsvExport> m_csv;
    std::unique_ptr<LogImport> m_logImport;
    AutoSave *m_autoSave = nullptr;
    DeviceLink *m_link = nullptr;
    bool m_busy = false;
    QHash<int, QString> m_mappedPorts;
    QString m_devicePort;
    Metadata m_metadata;
    std::unique_ptr<QThreadPool> m_autoSavePool;
    std::shared_ptr<DataFileSnapshot> m_autoSaveSnapshot;
    bool m_autoSaveRunning = false;
    QString m_rolloverOutput;
};
