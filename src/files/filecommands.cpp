#include "files/filecommands.h"

#include "files/csvexport.h"
#include "files/datafile.h"
#include "files/filedialogs.h"

#include "core/notifier.h"
#include "core/store.h"

#include <QCoreApplication>

FileCommands::FileCommands(MeasurementStore &store, FileCommandHost &host, FileDialogs &dialogs,
                           Notifier &notifier, DataFile &dataFile, CsvExport &csv)
    : m_store(store), m_host(host), m_dialogs(dialogs), m_notifier(notifier), m_dataFile(dataFile),
      m_csv(csv) {}

QString FileCommands::openStartPath() const {
    return m_store.fileName_current.isEmpty() ? FileDialogs::initialFolder
                                              : m_store.fileName_current;
}

void FileCommands::file_open() {
    if (m_host.saveChanges_prompt())
        return;
    openData();
    // Whatever happened after the prompt, the charts start unzoomed.
    if (QCoreApplication::instance())
        QCoreApplication::processEvents();
    m_host.charts_disableZoom();
}

void FileCommands::openData() {
    m_host.autoSave_stop();
    const QString name = m_dialogs.dialog_openDataFile(openStartPath());
    if (name.isEmpty())
        return; // the autosave stays stopped
    const QString previousName = m_store.fileName_current;
    const bool previousMark = m_store.data_changed;
    m_store.fileName_current = name;
    const int16_t mode = m_dialogs.dataHandling_choose();
    if (mode >= 1 && mode <= 3) {
        const FileResult result = m_dataFile.dataFile_load(name, MergeMode(mode), true);
        if (result.code == FileResult::Code::TooManyRecords) {
            m_store.fileName_current = previousName;
            m_store.data_changed = previousMark;
            m_notifier.message(result.message, QString(), Notifier::Buttons::Ok,
                               Notifier::Icon::Exclamation);
        } else {
            if (result.oilName)
                m_host.oilName_set(*result.oilName);
            if (!result.failed()) {
                m_host.titleRefresh();
                m_host.display_data();
            }
            // Other load failures go unreported; the mark follows the mode.
            m_store.data_changed = mode != 1;
        }
    }
    m_host.titleRefresh();
    m_host.autoSave_restart();
}

void FileCommands::file_save() {
    QString name = m_store.fileName_current;
    if (name.isEmpty())
        name = m_dialogs.dialog_saveDataFile(FileDialogs::initialFolder);
    saveUnder(name);
}

void FileCommands::file_saveas() {
    saveUnder(m_dialogs.dialog_saveDataFile(openStartPath()));
}

void FileCommands::saveUnder(const QString &fileName) {
    if (fileName.isEmpty())
        return;
    m_store.fileName_current = fileName;
    (void)m_dataFile.dataFile_save(fileName, true);
    // Cleared whatever the save returned, and nothing is shown on failure.
    m_store.data_changed = false;
    m_host.titleRefresh();
}

void FileCommands::file_export() {
    const QString name = m_dialogs.dialog_saveCsvFile(QString());
    if (!name.isEmpty())
        if (!m_csv.csvFile_export(name, true).failed())
            m_host.titleRefresh();
}

void FileCommands::file_setAutosavePath() {
    const QString folder = m_dialogs.dialog_chooseDirectory(m_store.path_autosave);
    if (folder.isEmpty())
        return;
    // The current autosave file keeps its name; the folder counts from the
    // next restart on.
    m_store.path_autosave = folder;
    m_host.settings_writeAutosavePath();
}
