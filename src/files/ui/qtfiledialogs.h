#pragma once

#include "files/filedialogs.h"

#include <QPointer>

class DataHandlingDialog;
class QWidget;

// The file dialogs of the file commands as Qt's standard dialogs, and the
// "Data handling" dialog, created on first use and kept so its last choice
// stays selected.
class QtFileDialogs : public FileDialogs {
public:
    explicit QtFileDialogs(QWidget *parent = nullptr);
    ~QtFileDialogs() override;
    // The window the dialogs open over.
    void setParent(QWidget *parent) { m_parent = parent; }

    QString fileDialog(Kind kind, const QString &filter, const QString &initialPath) override;
    QString dialog_chooseDirectory(const QString &initialPath) override;
    int16_t dataHandling_choose() override;
    QList<int> dialog_selectImportFiles(const QList<LogFileEntry> &entries) override;

private:
    QWidget *m_parent;
    QPointer<DataHandlingDialog> m_dataHandling;
};
