// The file commands for files and folders the user names without a file
// dialog: a drop on the window, and the files on the command line. They run
// the same flows as the menu commands from the point where the file dialog
// would have answered, so a dropped file reads exactly as a chosen one.
#include "session/monitorsession.h"

#include "files/fileresult.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace {

bool isLogName(const QString &path) {
    return QFileInfo(path).suffix().compare(QLatin1String("log"), Qt::CaseInsensitive) == 0;
}

// Full and with the system's separators, as the file dialogs answer.
QString chosenPath(const QString &path) {
    return QDir::toNativeSeparators(QFileInfo(path).absoluteFilePath());
}

} // namespace

void MonitorSession::file_openPath(const QString &fileName) {
    exclusively([this, fileName] {
        if (!readingMayStart())
            return;
        (void)openChosen(chosenPath(fileName), 0);
        QCoreApplication::processEvents();
        emit zoomResetRequested();
    });
}

void MonitorSession::file_importPath(const QString &fileName) {
    exclusively([this, fileName] {
        if (!readingMayStart())
            return;
        (void)importChosen(chosenPath(fileName), 0);
    });
}

void MonitorSession::file_importDirPath(const QString &folder) {
    exclusively([this, folder] {
        if (!readingMayStart())
            return;
        QString chosen = chosenPath(folder);
        if (!chosen.endsWith(QDir::separator()))
            chosen += QDir::separator(); // folders are kept with a trailing separator
        importFolder(chosen);
    });
}

void MonitorSession::file_dropped(const QString &path) {
    if (QFileInfo(path).isDir())
        file_importDirPath(path);
    else if (isLogName(path))
        file_importPath(path);
    else
        file_openPath(path);
}

QStringList MonitorSession::openFiles(const QStringList &fileNames) {
    QStringList unread;
    if (fileNames.isEmpty())
        return unread;
    exclusively([&] {
        auto mode = int16_t(MergeMode::Replace);
        for (const QString &given : fileNames) {
            const QString name = chosenPath(given);
            m_autoSave->autoSave_stop();
            const FileResult result =
                isLogName(name) ? importChosen(name, mode) : openChosen(name, mode);
            // Records that do not fit were told as the commands tell them.
            if (result.failed() && result.code != FileResult::Code::TooManyRecords)
                unread << result.message;
            mode = int16_t(MergeMode::Append);
        }
        QCoreApplication::processEvents();
        emit zoomResetRequested();
    });
    return unread;
}
