// The session's import commands: a sensor log ("Import"), a chain of daily
// logs ("Import chain") and a folder of logs ("Import directory"). All three
// end in the one import loop of the log reader. Like Open they stop the
// autosave while they read and leave it stopped when the user cancels the
// file or folder choice; they never change fileName_current, except that the
// folder import names the combined data after the folder's first log.
#include "session/monitorsession.h"

#include "core/notifier.h"
#include "files/filedialogs.h"
#include "files/logchain.h"
#include "files/logfolder.h"
#include "files/logimport.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

void MonitorSession::file_import() {
    exclusively([this] {
        if (!readingMayStart())
            return;
        const QString name = m_seams.dialogs.dialog_openLogFile(openStartPath());
        if (name.isEmpty())
            return; // the autosave stays stopped, as for Open
        (void)importChosen(name, 0);
    });
}

FileResult MonitorSession::importChosen(const QString &name, int16_t mode) {
    const LogFileRef file = logFile_ref(name);
    if (mode == 0)
        mode = m_seams.dialogs.dataHandling_choose();
    FileResult result;
    if (mode >= 1 && mode <= 3) {
        const LogImportRun run = importLogs({file}, MergeMode(mode));
        if (!run.failures.isEmpty())
            result = run.failures.first();
    }
    importDone();
    return result;
}

void MonitorSession::file_importChain() {
    exclusively([this] {
        if (!readingMayStart())
            return;
        const QString name = m_seams.dialogs.dialog_openLogFile(openStartPath());
        if (name.isEmpty())
            return;
        if (!logchain::isStartName(QFileInfo(name).fileName())) {
            m_seams.notifier.message(logchain::invalidStartText, logchain::invalidStartTitle,
                                     Notifier::Buttons::Ok, Notifier::Icon::Critical);
            // Nothing was read; the measuring period goes on.
            m_autoSave->autoSave_restart();
            return;
        }
        const int16_t mode = m_seams.dialogs.dataHandling_choose();
        if (mode < 1 || mode > 3)
            return;
        importLogs(logchain::collect(name), MergeMode(mode));
        importDone();
    });
}

void MonitorSession::file_importDir() {
    exclusively([this] {
        if (!readingMayStart())
            return;
        const QString start = m_store.fileName_current.isEmpty()
                                  ? QStringLiteral("C:")
                                  : QFileInfo(m_store.fileName_current).absolutePath();
        const QString folder = m_seams.dialogs.dialog_chooseDirectory(start);
        if (folder.isEmpty())
            return;
        importFolder(folder);
    });
}

void MonitorSession::importFolder(const QString &folder) {
    const QList<LogFileEntry> entries = logfolder::list(folder);
    const QString combined = logfolder::combinedFileName(folder, entries);
    if (!combined.isEmpty())
        m_store.fileName_current = combined; // where a later Save puts the combined data
    const QList<int> rows = m_seams.dialogs.dialog_selectImportFiles(entries);
    const int16_t mode = m_seams.dialogs.dataHandling_choose();
    if (mode < 1 || mode > 3)
        return;
    importLogs(logfolder::files(folder, entries, rows), MergeMode(mode));
    importDone();
}

LogImportRun MonitorSession::importLogs(const QList<LogFileRef> &files, MergeMode mode) {
    LogImportRun run = m_logImport->logFiles_import(files, mode, true);
    if (run.oilName)
        oilName_set(*run.oilName);
    if (const QString report = run.capacityReport(); !report.isEmpty())
        reportTooMany(report);
    if (run.filesImported > 0)
        display_data();
    return run;
}

void MonitorSession::importDone() {
    titleRefresh();
    m_autoSave->autoSave_restart();
    QCoreApplication::processEvents();
    emit zoomResetRequested();
}
