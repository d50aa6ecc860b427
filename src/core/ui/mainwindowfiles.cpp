// The main window's part in the data files: the file commands behind the
// File menu, the shared progress window and the autosave.
#include "core/ui/mainwindow.h"

#include "chart/ui/chartset.h"
#include "chart/ui/dataview.h"
#include "core/autosave.h"
#include "files/csvexport.h"
#include "files/datafile.h"
#include "files/ui/progresswindow.h"
#include "files/ui/qtfiledialogs.h"

#include <QAction>

void MainWindow::createFileCommands() {
    MeasurementStore &store = m_ctx.store;
    FileDialogs *dialogs = m_ctx.fileDialogs;
    if (!dialogs) {
        m_ownFileDialogs = std::make_unique<QtFileDialogs>(this);
        dialogs = m_ownFileDialogs.get();
    }
    m_progressWindow = new ProgressWindow(this);
    m_dataFile = std::make_unique<DataFile>(store, m_progressWindow);
    m_csvExport = std::make_unique<CsvExport>(store, m_progressWindow);
    m_fileCommands = std::make_unique<FileCommands>(store, *this, *dialogs, m_ctx.notifier,
                                                    *m_dataFile, *m_csvExport);
    // The autosave writes without the progress window.
    m_autoSave = new AutoSave(
        store, m_ctx.clock,
        [this](const QString &fileName) {
            if (m_dataFile->dataFile_save(fileName, false).failed())
                return true;
            titleRefresh();
            return false;
        },
        this);

    FileCommands *commands = m_fileCommands.get();
    connect(file_open, &QAction::triggered, this, [commands] { commands->file_open(); });
    connect(file_save, &QAction::triggered, this, &MainWindow::file_save_command);
    connect(file_saveas, &QAction::triggered, this, [commands] { commands->file_saveas(); });
    connect(file_export, &QAction::triggered, this, [commands] { commands->file_export(); });
    connect(file_setAutosavePath, &QAction::triggered, this,
            [commands] { commands->file_setAutosavePath(); });
}

void MainWindow::file_save_command() {
    m_fileCommands->file_save();
}

void MainWindow::autoSave_stop() {
    m_autoSave->autoSave_stop();
}

void MainWindow::autoSave_restart() {
    m_autoSave->autoSave_restart();
}

void MainWindow::autoSave_createFilename() {
    m_autoSave->autoSave_createFilename();
}

void MainWindow::charts_disableZoom() {
    if (!m_charts)
        return;
    for (int i = 0; i < ChartSet::slotCount; ++i) {
        if (DataView *view = m_charts->slot(i))
            view->dataView_disableZoom();
    }
}

void MainWindow::settings_writeAutosavePath() {
    settings::writeAutosavePath(m_ctx.settingsKey, m_ctx.store.path_autosave);
}
