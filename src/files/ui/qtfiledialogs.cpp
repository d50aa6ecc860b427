#include "files/ui/qtfiledialogs.h"

#include "files/ui/datahandlingdialog.h"
#include "files/ui/importselectiondialog.h"

#include <QDir>
#include <QFileDialog>

QtFileDialogs::QtFileDialogs(QWidget *parent) : m_parent(parent) {}

QtFileDialogs::~QtFileDialogs() {
    delete m_dataHandling;
}

QString QtFileDialogs::fileDialog(Kind kind, const QString &filter, const QString &initialPath) {
    const QString start = startPath(initialPath);
    const QString qtFilters = qtFilter(filter);
    const QString chosen =
        kind == Kind::Open ? QFileDialog::getOpenFileName(m_parent, QString(), start, qtFilters)
                           : QFileDialog::getSaveFileName(m_parent, QString(), start, qtFilters);
    return QDir::toNativeSeparators(chosen);
}

QString QtFileDialogs::dialog_chooseDirectory(const QString &initialPath) {
    const QString chosen =
        QFileDialog::getExistingDirectory(m_parent, QString(), startPath(initialPath));
    if (chosen.isEmpty())
        return QString();
    // Folders are kept with a trailing separator.
    QString folder = QDir::toNativeSeparators(chosen);
    if (!folder.endsWith(QDir::separator()))
        folder += QDir::separator();
    return folder;
}

int16_t QtFileDialogs::dataHandling_choose() {
    if (!m_dataHandling)
        m_dataHandling = new DataHandlingDialog(m_parent);
    return m_dataHandling->choose();
}

QList<int> QtFileDialogs::dialog_selectImportFiles(const QList<LogFileEntry> &entries) {
    ImportSelectionDialog dialog(m_parent);
    return dialog.choose(entries);
}
