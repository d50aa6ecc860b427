#pragma once

#include "files/logfolder.h"

#include <QDialog>
#include <QList>

class QLabel;
class QPushButton;
class QTreeWidget;

// "Select import files": the log files of a folder, one row each with its
// name and the time span of its records, of which the user picks one or
// more for the directory import. The confirm button is enabled only while
// at least one row is selected; closing the window or Escape chooses
// nothing.
class ImportSelectionDialog : public QDialog {
    Q_OBJECT
public:
    explicit ImportSelectionDialog(QWidget *parent = nullptr);

    void setEntries(const QList<LogFileEntry> &entries);
    // The selected rows in list order.
    QList<int> selectedRows() const;
    // Shows the entries modally; the rows chosen, or none.
    QList<int> choose(const QList<LogFileEntry> &entries);

    void confirmButton_enable();
    void confirmButton_disable();

private:
    void selectionChanged();

    QLabel *Label1;
    QTreeWidget *ListView1;
    QPushButton *OKButton;
};
