#pragma once

#include <QString>

class MeasurementStore;

#include <QString>

class CsvExport;
class DataFile;
class FileDialogs;
class MeasurementStore;
class Notifier;

// What the file commands need from the main window beyond the file
// routines' own callbacks.
class FileCommandHost {
public:
    virtual ~FileCommandHost() = default;
    virtual void titleRefresh() = 0;
    virtual void display_data() = 0;
    // Shows the name and stores it as the store's oilName.
    virtual void oilName_set(const QString &name) = 0;
    // The save prompt of the main window; true when the user cancelled.
    // Its "Yes" runs FileCommands::file_save().
    virtual bool saveChanges_prompt() = 0;
    virtual void autoSave_stop() = 0;
    virtual void autoSave_restart() = 0;
    // dataView_disableZoom on every chart window that exists.
    virtual void charts_disableZoom() = 0;
    // Writes Version and AutosavePath to the settings store.
    virtual void settings_writeAutosavePath() = 0;
};

// The handlers of the File menu items that read or write files: Open, Save,
// Save As, Export and Set autosave path. They keep the program's long-
// standing quirks on purpose: Open takes the chosen name before the mode is
// chosen and leaves the autosave stopped when its file dialog is cancelled;
// Save clears the modified mark even when writing failed; load and save
// failures are not reported. The one failure the operator is told about is
// a file whose records do not fit into memory; the store then stays exactly
// as it was, file name and mark included.
class FileCommands {
public:
    FileCommands(MeasurementStore &store, FileCommandHost &host, FileDialogs &dialogs,
                 Notifier &notifier, DataFile &dataFile, CsvExport &csv);

    void file_open();
    void file_save();
    void file_saveas();
    void file_export();
    void file_setAutosavePath();

private:
    void openData();
    void saveUnder(const QString &fileName);
    QString openStartPath() const;

    MeasurementStore &m_store;
    FileCommandHost &m_host;
    FileDialogs &m_dialogs;
    Notifier &m_notifier;
    DataFile &m_dataFile;
    CsvExport &m_csv;
};
