#pragma once

#include <QList>
#include <QMainWindow>

#include <memory>

class ChartSet;
class ControlPanel;
class ModbusServer;
class MonitorSession;
class QAction;
class QMdiArea;
class QMdiSubWindow;
class QMenu;
class SettingsDialog;
struct StationSettings;

// The multiple-document frame of the program: it runs the start-up that
// creates the windows around the session's engine, carries the menus, shows
// the title the session announces, and ends the process. The work of every
// command is the session's (or a window's); this class only wires them.
class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    explicit MainWindow(MonitorSession &session, QWidget *parent = nullptr);
    ~MainWindow() override;

    // Runs the start-up sequence with currentDir as the working folder.
    void startUp(const QString &currentDir);
    // Ends the process at once with status 0, from anywhere (also from
    // inside a drawing or a file routine): no further event runs, nothing
    // is saved, no window is taken down.
    [[noreturn]] void programTerminate();

    MonitorSession &session() { return m_session; }
    QMdiArea *mdiArea() const { return m_mdi; }
    // The chart windows (slots 0 .. 5) and their timers, and the control
    // panel; null before start-up.
    ChartSet *charts() const { return m_charts; }
    ControlPanel *controlPanel() const { return m_panel; }
    // The readings' Modbus server: "off", where it listens, or what went wrong.
    const QString &modbusState() const { return m_modbusState; }

    // Menu items, named after their code names.
    QAction *file_new = nullptr;
    QAction *file_open = nullptr;
    QAction *file_save = nullptr;
    QAction *file_saveas = nullptr;
    QAction *file_import = nullptr;
    QAction *file_importDir = nullptr;
    QAction *file_importChain = nullptr;
    QAction *file_export = nullptr;
    QAction *file_setAutosavePath = nullptr;
    QAction *file_print = nullptr;
    QAction *file_exit = nullptr;
    QAction *tools_toolbox = nullptr;
    QAction *settings_generalSettings = nullptr;
    QAction *settings_stationSettings = nullptr;
    QAction *q_about = nullptr;
    QAction *window_controlPanel = nullptr;
    QAction *window_tile = nullptr;
    QAction *window_cascade = nullptr;

protected:
    void closeEvent(QCloseEvent *event) override;
    // One file or folder dropped on the window goes to the session's file
    // commands (Open, Import, Import directory by its kind); refused while
    // a file command runs.
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    void createMenus();
    void connectSession();
    void placeWindow();
    // While a file command runs, no other one can start.
    void setFileCommandsEnabled(bool enabled);
    void settings_generalSettings_command();
    void settings_stationSettings_command();
    // Station settings applied (OK, Apply): stored, then the Modbus server
    // started, moved or stopped as they say.
    void applyStation(const StationSettings &station);
    void modbus_apply();
    void q_about_command();
    void tools_toolbox_command();
    // The Window menu's chart entries, made afresh each time it opens.
    void window_listCharts();
    // Shows a window again (closed, minimised) and makes it the active one.
    void bringBack(QMdiSubWindow *window);

    MonitorSession &m_session;
    QMdiArea *m_mdi = nullptr;
    SettingsDialog *m_settingsDialog = nullptr;
    ChartSet *m_charts = nullptr;
    ControlPanel *m_panel = nullptr;
    QMenu *m_windowMenu = nullptr;
    QAction *m_chartsEnd = nullptr; // the separator after the chart entries
    QList<QAction *> m_chartEntries;
    std::unique_ptr<ModbusServer> m_modbus;
    QString m_modbusState;
};
