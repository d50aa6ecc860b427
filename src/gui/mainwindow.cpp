#include "gui/mainwindow.h"

#include "chart/ui/chartset.h"
#include "device/ui/toolbox.h"
#include "gui/aboutdialog.h"
#include "gui/appicon.h"
#include "panel/ui/controlpanel.h"
#include "print/ui/printcommand.h"
#include "session/monitorsession.h"
#include "settings/ui/settingsdialog.h"
#include "settings/ui/stationsettingsdialog.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QGuiApplication>
#include <QMdiArea>
#include <QMenuBar>
#include <QScreen>

namespace {

ChartVisibility chartVisibility(const DisplayFlags &flags) {
    return {flags.displayWater, flags.displayPressure, flags.displayTemperature, flags.displaySoot};
}

} // namespace

MainWindow::MainWindow(MonitorSession &session, QWidget *parent)
    : QMainWindow(parent), m_session(session) {
    setObjectName(QStringLiteral("MainWindow"));
    m_mdi = new QMdiArea(this);
    m_mdi->setObjectName(QStringLiteral("MDIForm"));
    setCentralWidget(m_mdi);
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
    m_panel->resize(ControlPanel::startWidth, ControlPanel::startHeight);
    m_panel->move(0, 0);
    m_panel->show();
    m_charts = new ChartSet(m_session, m_mdi, this);
    m_charts->setPanelWindow(m_panel);
    m_charts->createCharts(m_panel->geometry());
    m_charts->showCharts(chartVisibility(m_session.flags()));

    m_session.startUp_finish();
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
    if (dialog.exec() == QDialog::Accepted)
        m_session.settings_setStation(dialog.settings());
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
    if (m_terminated)
        return;
    m_terminated = true;
    if (m_charts)
        m_charts->releaseCharts();
    delete m_panel;
    m_panel = nullptr;
    // Nothing is saved; the windows go and the event loop ends without
    // running the events still queued.
    m_mdi->closeAllSubWindows();
    QCoreApplication::exit(0);
}

void MainWindow::closeEvent(QCloseEvent *event) {
    programTerminate();
    event->accept();
}
