#pragma once

#include "core/clock.h"
#include "core/notifier.h"
#include "core/store.h"
#include "files/filecommands.h"
#include "settings/settings.h"

#include <QMainWindow>

#include <memory>

class AutoSave;
class CsvExport;
class DataFile;
class DeviceLink;
class FileDialogs;
class ProgressWindow;
class ChartSet;
class QAction;
class QMdiArea;
class QMenu;
class SettingsDialog;

// What the application hands the main window: the one measurement store,
// the display flags beside it, the settings key and the seams for message
// boxes and the clock. Tests build their own.
struct AppContext {
    MeasurementStore &store;
    DisplayFlags &flags;
    RegistryKey &settingsKey;
    Notifier &notifier;
    Clock &clock;
    // The file dialogs; null means the standard ones (tests script their own).
    FileDialogs *fileDialogs = nullptr;
};

// The multiple-document frame of the program. It runs the start-up
// sequence that creates the other windows and prepares folders, settings
// and the store; routes the menu commands to the parts that carry them
// out; keeps the title bar in step with the current file and the modified
// mark; and ends the process. The work of each command lives in the
// subsystem libraries; this class only wires them together.
class MainWindow : public QMainWindow, public FileCommandHost {
    Q_OBJECT
public:
    explicit MainWindow(AppContext &ctx, QWidget *parent = nullptr);
    ~MainWindow() override;

    // Runs the start-up sequence with currentDir as the working folder.
    void startUp(const QString &currentDir);

    // Caption from the current file name and the modified mark.
    void titleRefresh() override;
    // Asks whether changed data should be saved first (Yes runs Save).
    // Returns true when the operator cancelled.
    bool saveChanges_prompt() override;
    // Rebuilds every chart from the store.
    void display_data() override;
    // Chart synchronisation: copies one chart's zoom or cursor to the others
    // (called by the chart windows); the stream filter (control panel).
    void dataView_syncZoom_x(int16_t objectIndex, float x1_factor, float x2_factor,
                             bool disableZoom);
    void dataView_syncInfoPos(int16_t objectIndex, int16_t dataIndex);
    void dataView_selectStream(int16_t newStream);
    // Sets the oil name and asks for a display refresh.
    void oilName_set(const QString &newName) override;

    // Autosave: stop keeps the file name; restart starts a new period with a
    // new time-stamped file name and the tick counter at 0.
    void autoSave_stop() override;
    void autoSave_restart() override;
    void autoSave_createFilename();
    // Resets the zoom of every chart window (after Open).
    void charts_disableZoom() override;
    // Writes Version and AutosavePath after "Set autosave path".
    void settings_writeAutosavePath() override;
    // Ends the program at once; nothing is saved.
    void programTerminate();
    bool isTerminated() const { return m_terminated; }

    // Menu commands.
    void file_new_command();
    void file_save_command();
    void settings_generalSettings_command();
    void q_about_command();

    AppContext &context() { return m_ctx; }
    QMdiArea *mdiArea() const { return m_mdi; }
    SettingsDialog *settingsDialog() const { return m_settingsDialog; }
    AutoSave &autoSave() const { return *m_autoSave; }
    FileCommands &fileCommands() const { return *m_fileCommands; }
    // The serial link to the sensor, created by startUp().
    DeviceLink *deviceLink() const { return m_deviceLink; }
    // The chart windows (slots 0 .. 5) and their timers; null before start-up.
    ChartSet *charts() const { return m_charts; }

    // Menu items, named after their code names.
    QAction *file_new = nullptr;
    QAction *file_open = nullptr;
    QAction *file_save = nullptr;
    QAction *file_saveas = nullptr;
    QAction *file_import = nullptr;
    QAction *file_importDir = nullptr;
    QAction *file_export = nullptr;
    QAction *file_setAutosavePath = nullptr;
    QAction *file_print = nullptr;
    QAction *file_exit = nullptr;
    QAction *tools_toolbox = nullptr;
    QAction *settings_generalSettings = nullptr;
    QAction *q_about = nullptr;

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void createMenus();
    void createFileCommands(); // in mainwindowfiles.cpp
    void placeWindow();
    void createDeviceLink();

    AppContext &m_ctx;
    QMdiArea *m_mdi = nullptr;
    SettingsDialog *m_settingsDialog = nullptr;
    DeviceLink *m_deviceLink = nullptr;
    ChartSet *m_charts = nullptr;
    bool m_terminated = false;

    // The data files and the autosave.
    std::unique_ptr<FileDialogs> m_ownFileDialogs;
    ProgressWindow *m_progressWindow = nullptr;
    std::unique_ptr<DataFile> m_dataFile;
    std::unique_ptr<CsvExport> m_csvExport;
    std::unique_ptr<FileCommands> m_fileCommands;
    AutoSave *m_autoSave = nullptr;
};
