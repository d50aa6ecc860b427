#include "core/ui/mainwindow.h"

#include "chart/ui/chartset.h"

#include "core/numbers.h"
#include "core/title.h"
#include "core/ui/aboutdialog.h"
#include "core/ui/appicon.h"
#include "device/devicelink.h"
#include "files/csvexport.h"
#include "files/datafile.h"
#include "files/filedialogs.h"
#include "settings/startupfolders.h"
#include "settings/ui/settingsdialog.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QCoreApplication>
#include <QGuiApplication>
#include <QMdiArea>
#include <QMenuBar>
#include <QScreen>

namespace {

ChartVisibility chartVisibility(const DisplayFlags &flags) {
    return {flags.displayWater, flags.displayPressure, flags.displayTemperature, flags.displaySoot};
}

} // namespace

MainWindow::MainWindow(AppContext &ctx, QWidget *parent) : QMainWindow(parent), m_ctx(ctx) {
    setObjectName(QStringLiteral("MainWindow"));
    m_mdi = new QMdiArea(this);
    m_mdi->setObjectName(QStringLiteral("MDIForm"));
    setCentralWidget(m_mdi);
    createMenus();
    createFileCommands();
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

    QMenu *q = menuBar()->addMenu(QStringLiteral("?"));
    q->setObjectName(QStringLiteral("q"));
    item(q, q_about, "q_about", "About");

    // Commands whose work is not in the program yet stay visible but off.
    for (QAction *a : {file_import, file_importDir, file_print, tools_toolbox})
        a->setEnabled(false);

    connect(file_new, &QAction::triggered, this, &MainWindow::file_new_command);
    connect(file_exit, &QAction::triggered, this, &MainWindow::programTerminate);
    connect(settings_generalSettings, &QAction::triggered, this,
            &MainWindow::settings_generalSettings_command);
    connect(q_about, &QAction::triggered, this, &MainWindow::q_about_command);
}

void MainWindow::startUp(const QString &currentDir) {
    MeasurementStore &store = m_ctx.store;
    // Every window of the program, the chart windows included, shows our icon.
    QApplication::setWindowIcon(appIcon());
    setWindowIcon(QApplication::windowIcon());

    // Settings first: creating the dialog loads the stored choices or
    // stores the defaults.
    m_settingsDialog =
        new SettingsDialog(m_ctx.settingsKey, m_ctx.flags, store.waterDisplayPercent, this);
    m_settingsDialog->setWindowIcon(windowIcon());
    QCoreApplication::processEvents();

    placeWindow();
    store.decimalSeparator = detectDecimalSeparator();
    createDeviceLink();
    prepareFolders(store, currentDir, m_ctx.settingsKey);
    store.stream_selected = 0;

    // The four charts beside the control panel's area, shown as the display
    // settings say. They take half the frame's inner size, so the frame is
    // on screen, maximised, before they are made.
    show();
    QCoreApplication::processEvents();
    m_charts = new ChartSet(store, m_mdi, this);
    m_charts->createCharts();
    m_charts->showCharts(chartVisibility(m_ctx.flags));

    store.clear();
    store.oilName.clear();
    store.display_update_pending = false;

    titleRefresh();
    QCoreApplication::processEvents();
    autoSave_restart();
    m_charts->startChangeMonitor();
}

void MainWindow::createDeviceLink() {
    m_deviceLink = new DeviceLink(m_ctx.store, m_ctx.notifier, this);
    RegistryKey *key = &m_ctx.settingsKey;
    m_deviceLink->setConfiguredPort([key](int n) { return settings::comPortDevice(*key, n); });
    // Every reading list the link fetches ends in a redraw of the charts.
    connect(m_deviceLink, &DeviceLink::listPolled, this, &MainWindow::display_data);
    m_deviceLink->com_init();
}

void MainWindow::placeWindow() {
    move(0, 0);
    if (QScreen *screen = QGuiApplication::primaryScreen()) {
        const QSize s = screen->availableGeometry().size();
        resize(int(s.width() / 1.1), int(s.height() / 1.1));
    }
    setWindowState(windowState() | Qt::WindowMaximized);
}

void MainWindow::titleRefresh() {
    setWindowTitle(mainWindowTitle(m_ctx.store));
}

bool MainWindow::saveChanges_prompt() {
    if (!m_ctx.store.data_changed)
        return false;
    const Notifier::Answer answer = m_ctx.notifier.message(
        QStringLiteral("Data in memory has changed, do you want to save it now?"),
        QLatin1String(""), Notifier::Buttons::YesNoCancel, Notifier::Icon::Question);
    switch (answer) {
    case Notifier::Answer::Yes:
        file_save_command(); // whatever the save did, the command goes on
        return false;
    case Notifier::Answer::No:
        return false;
    default:
        return true;
    }
}

void MainWindow::file_new_command() {
    if (saveChanges_prompt())
        return;
    autoSave_stop();
    m_ctx.store.clear();
    oilName_set(QString());
    titleRefresh();
    display_data();
    autoSave_restart();
}

void MainWindow::display_data() {
    if (m_charts)
        m_charts->display_data();
}

void MainWindow::dataView_syncZoom_x(int16_t objectIndex, float x1_factor, float x2_factor,
                                     bool disableZoom) {
    if (m_charts)
        m_charts->dataView_syncZoom_x(objectIndex, x1_factor, x2_factor, disableZoom);
}

void MainWindow::dataView_syncInfoPos(int16_t objectIndex, int16_t dataIndex) {
    if (m_charts)
        m_charts->dataView_syncInfoPos(objectIndex, dataIndex);
}

void MainWindow::dataView_selectStream(int16_t newStream) {
    if (m_charts)
        m_charts->dataView_selectStream(newStream);
}

void MainWindow::oilName_set(const QString &newName) {
    m_ctx.store.oilName = newName;
    m_ctx.store.display_update_pending = true;
}

void MainWindow::settings_generalSettings_command() {
    m_settingsDialog->exec();
    if (m_charts)
        m_charts->applyVisibility(chartVisibility(m_ctx.flags));
}

void MainWindow::q_about_command() {
    AboutDialog about(this);
    about.setWindowIcon(windowIcon());
    about.exec();
}

void MainWindow::programTerminate() {
    if (m_terminated)
        return;
    m_terminated = true;
    if (m_charts)
        m_charts->releaseCharts();
    // Nothing is saved; the windows go and the event loop ends without
    // running the events still queued.
    m_mdi->closeAllSubWindows();
    QCoreApplication::exit(0);
}

void MainWindow::closeEvent(QCloseEvent *event) {
    programTerminate();
    event->accept();
}
