#pragma once

#include <QList>
#include <QString>

#include <cstdint>

struct LogFileEntry;

// The file dialogs of the file commands and the "Data handling" choice, as
// one seam: the application shows real dialogs behind it, tests answer from
// a script. The named dialog operations fix the filter of each use; the
// implementation only has to show an open or save dialog for a filter.
//
// Filters are written as "description|pattern|" pairs (see the constants
// below); qtFilter() turns them into Qt's form. The initial path "C:\" is
// passed on as it is; the dialog maps it to the home folder where there is
// no drive C:.
class FileDialogs {
public:
    enum class Kind { Open, Save };

    virtual ~FileDialogs() = default;

    // The chosen full path, or "" when the user cancelled.
    virtual QString fileDialog(Kind kind, const QString &filter, const QString &initialPath) = 0;
    // The chosen folder with a trailing separator, or "".
    virtual QString dialog_chooseDirectory(const QString &initialPath) = 0;
    // Shows the "Data handling" dialog and waits for it: 1 replace, 2 insert
    // before, 3 append, 0 after Cancel.
    virtual int16_t dataHandling_choose() = 0;
    // Shows the log files of a folder ("Select import files") and waits until
    // it is closed: the rows chosen, in list order; empty when the user
    // closed it without choosing.
    virtual QList<int> dialog_selectImportFiles(const QList<LogFileEntry> &entries) = 0;

    QString dialog_openDataFile(const QString &initialPath);
    QString dialog_saveDataFile(const QString &initialPath);
    QString dialog_openLogFile(const QString &initialPath);
    QString dialog_saveCsvFile(const QString &initialPath);

    static const QString dataFilter;
    static const QString logFilter;
    static const QString csvFilter;
    // The initial path of the dialogs when no file is current.
    static const QString initialFolder;

    // "Text data files (*.txt)|*.txt|All files (*.*)|*.*|" becomes
    // "Text data files (*.txt);;All files (*.*)": Qt reads the patterns from
    // the parentheses, so a description without them gets its pattern added.
    static QString qtFilter(const QString &filter);
    // The folder or file a dialog opens at: "C:\" (or "C:") is the home
    // folder on systems without drive letters; anything else is kept.
    static QString startPath(const QString &initialPath);
};

// Dialogs for a program without windows: every dialog is cancelled.
class NoFileDialogs : public FileDialogs {
public:
    QString fileDialog(Kind, const QString &, const QString &) override { return {}; }
    QString dialog_chooseDirectory(const QString &) override { return {}; }
    int16_t dataHandling_choose() override { return 0; }
    QList<int> dialog_selectImportFiles(const QList<LogFileEntry> &) override { return {}; }
};
