#include "gui/mainwindow.h"

#include "chart/ui/chartset.h"
#include "chart/ui/dataview.h"
#include "device/ui/toolbox.h"
#include "gui/aboutdialog.h"
#include "gui/appicon.h"
#include "modbus/modbusserver.h"
#include "panel/ui/controlpanel.h"
#include "print/ui/printcommand.h"
#include "session/monitorsession.h"
#include "settings/ui/settingsdialog.h"
#include "settings/ui/stationsettingsdialog.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QGuiApplication>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QPointer>
#include <QScreen>

#include <cstdio>
#include <cstdlib>

namespace {

ChartVisibility chartVisibility(const DisplayFlags &flags) {
    return {flags.displayWater, flags.displayPressure, flags.displayTemperature, flags.displaySoot};
}

// The one local file or folder a drag carries; empty for anything else
// (text, several files, remote addresses).
QString droppedPath(const QMimeData *mime) {
    if (!mime || !mime->hasUrls())
        return {};
    const QList<QUrl> urls = mime->urls();
    if (urls.size() != 1 || !urls.first().isLocalFile())
        return {};
    return urls.first().toLocalFile();
}

} // namespace

MainWindow::MainWindow(MonitorSession &session, QWidget *parent)
    : QMainWindow(parent), m_session(session) {
    setObjectName(QStringLiteral("MainWindow"));
    m_mdi = new QMdiArea(this);
    m_mdi->setObjectName(QStringLiteral("MDIForm"));
    setCentralWidget(m_mdi);
    setAcceptDrops(true);
    createMenus();
    connectSession();
}

MainWindow::~MainWindow() = default;

void MainWindow::createMenus() {
    auto item = [this](QMenu *menu, QAction *&slot, const char *name, const char *caption) {
        slot = menu->addAction(QLatin1String(caption));
        slot->setObjectName(QLatin1String(name));
        return slot;
    };
    QMenu *file = menuBar()->addMenu(QStringLiteral("File"));
    file->setObjectName(QStringLiteral("file"));
    item(file, file_new, "file_new", "New");
    file->addSeparator();
    item(file, file_open, "file_open", "Open");
    file->addSeparator();
    item(file, file_save, "file_save", "Save");
    item(file, file_saveas, "file_saveas", "Save As");
    file->addSeparator();
    item(file, file_import, "file_import", "Import");
    item(file, file_importDir, "file_importDir", "Import directory");
    item(file, file_importChain, "file_importChain", "Import chain");
    file->addSeparator();
    item(file, file_export, "file_export", "Export");
    file->addSeparator();
    item(file, file_setAutosavePath, "file_setAutosavePath", "Set autosave path");
    file->addSeparator();
    item(file, file_print, "file_print", "Print");
    file->addSeparator();
    item(file, file_exit, "file_exit", "Exit");

    QMenu *tools = menuBar()->addMenu(QStringLiteral("Tools"));
    tools->setObjectName(QStringLiteral("tools"));
    item(tools, tools_toolbox, "tools_toolbox", "Toolbox");

    QMenu *settingsMenu = menuBar()->addMenu(QStringLiteral("Settings"));
    settingsMenu->setObjectName(QStringLiteral("settings"));
    item(settingsMenu, settings_generalSettings, "settings_generalSettings", "General settings");
    item(settingsMenu, settings_stationSettings, "settings_stationSettings", "Station settings");

    QMenu *q = menuBar()->addMenu(QStringLiteral("?"));
    q->setObjectName(QStringLiteral("q"));
    item(q, q_about, "q_about", "About");

    // The desktop's usual keys; the captions stay as they are. The Toolbox
    // has no usual key, and sends commands to the sensor: it gets none.
    file_new->setShortcuts(QKeySequence::New);
    file_open->setShortcuts(QKeySequence::Open);
    file_save->setShortcuts(QKeySequence::Save);
    file_saveas->setShortcuts(QKeySequence::SaveAs);
    if (file_saveas->shortcuts().isEmpty()) // plain X11 and Windows bind none; the rest agree
        file_saveas->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S));
    file_print->setShortcuts(QKeySequence::Print);
    file_exit->setShortcuts(QKeySequence::Quit);
    settings_generalSettings->setShortcuts(QKeySequence::Preferences);
    // After "?", so the menus before it keep their places: the windows,
    // the control panel first, so a closed one can always be brought back.
    m_windowMenu = menuBar()->addMenu(QStringLiteral("Window"));
    m_windowMenu->setObjectName(QStringLiteral("window"));
    item(m_windowMenu, window_controlPanel, "window_controlPanel", "Control Panel");
    m_chartsEnd = m_windowMenu->addSeparator();
    item(m_windowMenu, window_tile, "window_tile", "Tile");
    item(m_windowMenu, window_cascade, "window_cascade", "Cascade");
    connect(m_windowMenu, &QMenu::aboutToShow, this, &MainWindow::window_listCharts);
    connect(window_controlPanel, &QAction::triggered, this, [this] { bringBack(m_panel); });
    connect(window_tile, &QAction::triggered, m_mdi, &QMdiArea::tileSubWindows);
    connect(window_cascade, &QAction::triggered, m_mdi, &QMdiArea::cascadeSubWindows);

    MonitorSession *s = &m_session;
    connect(file_new, &QAction::triggered, s, &MonitorSession::file_new);
    connect(file_open, &QAction::triggered, s, &MonitorSession::file_open);
    connect(file_save, &QAction::triggered, s, &MonitorSession::file_save);
    connect(file_saveas, &QAction::triggered, s, &MonitorSession::file_saveas);
    connect(file_import, &QAction::triggered, s, &MonitorSession::file_import);
    connect(file_importDir, &QAction::triggered, s, &MonitorSession::file_importDir);
    connect(file_importChain, &QAction::triggered, s, &MonitorSession::file_importChain);
    connect(file_export, &QAction::triggered, s, &MonitorSession::file_export);
    connect(file_setAutosavePath, &QAction::triggered, s, &MonitorSession::file_setAutosavePath);
    connect(file_exit, &QAction::triggered, this, &MainWindow::programTerminate);
    connect(settings_generalSettings, &QAction::triggered, this,
            &MainWindow::settings_generalSettings_command);
    connect(settings_stationSettings, &QAction::triggered, this,
            &MainWindow::settings_stationSettings_command);
    connect(q_about, &QAction::triggered, this, &MainWindow::q_about_command);
    connect(tools_toolbox, &QAction::triggered, this, &MainWindow::tools_toolbox_command);
    connect(file_print, &QAction::triggered, this, [this] {
        if (m_charts)
            PrintCommand(this).file_print(*m_charts, m_session.flags());
    });
}

// One entry per chart window the display settings show, by its title,
// between the control panel's entry and Tile.
void MainWindow::window_listCharts() {
    qDeleteAll(m_chartEntries);
    m_chartEntries.clear();
    if (!m_charts)
        return;
    const ChartVisibility shown = chartVisibility(m_session.flags());
    const bool wanted[chart_quantityCount] = {shown.water, shown.pressure, shown.temperature,
                                              shown.soot};
    for (int i = 0; i < chart_quantityCount; ++i) {
        QMdiSubWindow *view = m_charts->chart(ChartQuantity(i));
        if (!view || !wanted[i])
            continue;
        auto *entry = new QAction(view->windowTitle(), m_windowMenu);
        connect(entry, &QAction::triggered, this,
                [this, view = QPointer<QMdiSubWindow>(view)] { bringBack(view); });
        m_windowMenu->insertAction(m_chartsEnd, entry);
        m_chartEntries << entry;
    }
}

void MainWindow::bringBack(QMdiSubWindow *window) {
    if (!window)
        return;
    window->showNormal();
    m_mdi->setActiveSubWindow(window);
}

void MainWindow::connectSession() {
    connect(&m_session, &MonitorSession::titleChanged, this, &QWidget::setWindowTitle);
    connect(&m_session, &MonitorSession::busyChanged, this,
            [this](bool busy) { setFileCommandsEnabled(!busy); });
}

void MainWindow::setFileCommandsEnabled(bool enabled) {
    for (QAction *a : {file_new, file_open, file_save, file_saveas, file_import, file_importDir,
                       file_importChain, file_export, file_setAutosavePath})
        a->setEnabled(enabled);
}

void MainWindow::startUp(const QString &currentDir) {
    // Every window of the program, the chart windows included, shows our icon.
    QApplication::setWindowIcon(appIcon());
    setWindowIcon(QApplication::windowIcon());

    // Settings first: the stored choices, or the defaults of a first run.
    m_session.settings_load();
    m_settingsDialog = new SettingsDialog(m_session.settingsKey(), m_session.flags(),
                                          m_session.waterDisplayPercent(), this);
    QCoreApplication::processEvents();

    placeWindow();
    m_session.startUp_engine(currentDir);

    // The control panel at the top left, the four charts beside it, shown as
    // the display settings say. The charts take half the frame's inner
    // size, so the frame is on screen, maximised, before they are made.
    show();
    QCoreApplication::processEvents();
    m_panel = new ControlPanel(m_session);
    m_mdi->addSubWindow(m_panel);
    // Closing the panel only hides it; the Window menu brings it back.
    m_panel->setAttribute(Qt::WA_DeleteOnClose, false);
    m_panel->resize(ControlPanel::startWidth, ControlPanel::startHeight);
    m_panel->move(0, 0);
    m_panel->show();
    m_charts = new ChartSet(m_session, m_mdi, this);
    m_charts->setPanelWindow(m_panel);
    m_charts->createCharts(m_panel->geometry());
    m_charts->showCharts(chartVisibility(m_session.flags()));

    m_session.startUp_finish();
    // A station that publishes to the fleet's broker does so from the start.
    (void)m_session.telemetry_applyStation();

    // The readings' Modbus server, fed by the session, listening as the
    // Station settings say.
    m_modbus = std::make_unique<ModbusServer>();
    ModbusServer *modbus = m_modbus.get();
    const MeasurementStore &store = m_session.store();
    connect(&m_session, &MonitorSession::readingsAppended, modbus,
            [modbus, &store](int first, int count) {
                modbus->addReadings(store.dataPoints[size_t(first + count - 1)], count);
            });
    connect(&m_session, &MonitorSession::metadataChanged, modbus,
            [modbus, &store] { modbus->setThreshold(store.alarmThreshold); });
    connect(&m_session, &MonitorSession::pollFinished, modbus, &ModbusServer::addPoll);
    modbus->setThreshold(store.alarmThreshold);
    modbus_apply();
}

void MainWindow::modbus_apply() {
    const StationSettings &station = m_session.stationSettings();
    if (!m_modbus)
        return;
    if (!station.modbusOn) {
        m_modbus->stop();
        m_modbusState = QStringLiteral("off");
        return;
    }
    const QString address =
        station.modbusAddress.isEmpty() ? QStringLiteral("0.0.0.0") : station.modbusAddress;
    const QString listening = QStringLiteral("listening on %1 port %2, unit id %3")
                                  .arg(address)
                                  .arg(station.modbusPort)
                                  .arg(station.modbusUnit);
    // Other settings applied: its clients keep their connections.
    if (m_modbus->listening() && m_modbusState == listening)
        return;
    m_modbusState = m_modbus->start(address, station.modbusPort, station.modbusUnit);
    if (m_modbusState.isEmpty())
        m_modbusState = listening;
}

void MainWindow::applyStation(const StationSettings &station) {
    m_session.settings_setStation(station);
    modbus_apply();
}

void MainWindow::placeWindow() {
    move(0, 0);
    if (QScreen *screen = QGuiApplication::primaryScreen()) {
        const QSize s = screen->availableGeometry().size();
        resize(int(s.width() / 1.1), int(s.height() / 1.1));
    }
    setWindowState(windowState() | Qt::WindowMaximized);
}

void MainWindow::settings_generalSettings_command() {
    m_settingsDialog->exec();
    if (m_charts)
        m_charts->applyVisibility(chartVisibility(m_session.flags()));
}

void MainWindow::settings_stationSettings_command() {
    StationSettingsDialog dialog(this);
    dialog.setSettings(m_session.stationSettings());
    dialog.setTelemetryState(m_session.telemetryState());
    dialog.setModbusState(m_modbusState);
    connect(&m_session, &MonitorSession::telemetryStateChanged, &dialog,
            &StationSettingsDialog::setTelemetryState);
    connect(&dialog, &StationSettingsDialog::applied, this,
            [this, &dialog](const StationSettings &station) {
                applyStation(station);
                dialog.setModbusState(m_modbusState);
            });
    if (dialog.exec() == QDialog::Accepted)
        applyStation(dialog.settings());
}

void MainWindow::q_about_command() {
    AboutDialog about(this);
    about.exec();
}

void MainWindow::tools_toolbox_command() {
    Toolbox toolbox(m_session, this);
    toolbox.exec();
}

void MainWindow::programTerminate() {
    // The process ends here, from wherever Exit came: a chart's drawing or
    // a file routine may be on the stack below, letting events run, and
    // must never resume over windows deleted under it. No further event
    // runs and nothing is saved; the system closes the port and files.
    std::fflush(nullptr);
    std::_Exit(0);
}

void MainWindow::closeEvent(QCloseEvent *) {
    programTerminate();
}

void MainWindow::dragEnterEvent(QDragEnterEvent *event) {
    if (!m_session.busy() && !droppedPath(event->mimeData()).isEmpty())
        event->acceptProposedAction();
}

void MainWindow::dragMoveEvent(QDragMoveEvent *event) {
    if (!m_session.busy() && !droppedPath(event->mimeData()).isEmpty())
        event->acceptProposedAction();
    else
        event->ignore();
}

void MainWindow::dropEvent(QDropEvent *event) {
    const QString path = droppedPath(event->mimeData());
    if (m_session.busy() || path.isEmpty())
        return;
    event->acceptProposedAction();
    // The command runs after the drop has ended, so the dragging program is
    // not held while the dialogs wait.
    QMetaObject::invokeMethod(
        &m_session, [s = &m_session, path] { s->file_dropped(path); }, Qt::QueuedConnection);
}
