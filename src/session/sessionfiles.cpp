// The session's File commands. They keep the program's long-standing quirks
// on purpose: Open takes the chosen name before the mode is chosen and
// leaves the autosave stopped when its file dialog is cancelled; Save clears
// the modified mark even when writing failed; load and save failures are not
// reported. The one failure the user is told about is a file whose records
// do not fit into memory; the store then stays exactly as it was, file name
// and mark included.
#include "session/monitorsession.h"

#include "core/notifier.h"
#include "files/csvexport.h"
#include "files/datafile.h"
#include "files/filedialogs.h"

#include <QCoreApplication>

void MonitorSession::exclusively(const std::function<void()> &work) {
    if (m_busy)
        return;
    m_busy = true;
    emit busyChanged(true);
    work();
    checkMetadata(); // files bring their own threshold, tables and oil name
    m_busy = false;
    emit busyChanged(false);
}

bool MonitorSession::readingMayStart() {
    if (saveChanges_prompt())
        return false;
    m_autoSave->autoSave_stop();
    return true;
}

QString MonitorSession::openStartPath() const {
    return m_store.fileName_current.isEmpty() ? FileDialogs::initialFolder
                                              : m_store.fileName_current;
}

void MonitorSession::reportTooMany(const QString &message) {
    m_seams.notifier.message(message, QString(), Notifier::Buttons::Ok,
                             Notifier::Icon::Exclamation);
}

void MonitorSession::file_new() {
    exclusively([this] {
        if (!readingMayStart())
            return;
        m_store.clear();
        oilName_set(QString());
        titleRefresh();
        display_data();
        m_autoSave->autoSave_restart();
    });
}

void MonitorSession::file_open() {
    exclusively([this] {
        if (!readingMayStart())
            return;
        openData();
        // Whatever happened after the prompt, the charts start unzoomed: each
        // chart draws once more, as the Open command has always done.
        QCoreApplication::processEvents();
        emit zoomResetRequested();
    });
}

void MonitorSession::openData() {
    const QString name = m_seams.dialogs.dialog_openDataFile(openStartPath());
    if (name.isEmpty())
        return; // the autosave stays stopped
    (void)openChosen(name, 0);
}

FileResult MonitorSession::openChosen(const QString &name, int16_t mode) {
    const QString previousName = m_store.fileName_current;
    const bool previousMark = m_store.data_changed;
    m_store.fileName_current = name;
    if (mode == 0)
        mode = m_seams.dialogs.dataHandling_choose();
    FileResult result;
    if (mode >= 1 && mode <= 3) {
        result = m_dataFile->dataFile_load(name, MergeMode(mode), true);
        if (result.code == FileResult::Code::TooManyRecords) {
            m_store.fileName_current = previousName;
            m_store.data_changed = previousMark;
            reportTooMany(result.message);
        } else {
            if (result.oilName)
                oilName_set(*result.oilName);
            if (!result.failed()) {
                titleRefresh();
                display_data(); // the loader's own rebuild; oilName_set asked for one more
            }
            // Other load failures go unreported; the mark follows the mode.
            m_store.data_changed = mode != 1;
        }
    }
    titleRefresh();
    m_autoSave->autoSave_restart();
    return result;
}

void MonitorSession::file_save() {
    exclusively([this] { saveCommand(); });
}

void MonitorSession::saveCommand() {
    QString name = m_store.fileName_current;
    if (name.isEmpty())
        name = m_seams.dialogs.dialog_saveDataFile(FileDialogs::initialFolder);
    saveUnder(name);
}

void MonitorSession::file_saveas() {
    exclusively([this] { saveUnder(m_seams.dialogs.dialog_saveDataFile(openStartPath())); });
}

void MonitorSession::saveUnder(const QString &fileName) {
    if (fileName.isEmpty())
        return;
    m_store.fileName_current = fileName;
    (void)m_dataFile->dataFile_save(fileName, true);
    // Cleared whatever the save returned, and nothing is shown on failure.
    m_store.data_changed = false;
    titleRefresh();
}

void MonitorSession::file_export() {
    exclusively([this] {
        const QString name = m_seams.dialogs.dialog_saveCsvFile(QString());
        if (!name.isEmpty() && !m_csv->csvFile_export(name, true).failed())
            titleRefresh();
    });
}

void MonitorSession::file_setAutosavePath() {
    exclusively([this] {
        const QString folder = m_seams.dialogs.dialog_chooseDirectory(m_store.path_autosave);
        if (folder.isEmpty())
            return;
        // The current autosave file keeps its name; the folder counts from the
        // next restart on.
        m_store.path_autosave = folder;
        settings::writeAutosavePath(*m_settingsKey, m_store.path_autosave);
    });
}
