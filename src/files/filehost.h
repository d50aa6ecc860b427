#pragma once

#include <QString>

class MeasurementStore;

// What the file routines call back into the program: the title bar, the
// rebuild of the display from the store, and the control panel's oil name.
// The main window implements it; tests record the calls.
class FileHost {
public:
    virtual ~FileHost() = default;
    virtual void titleRefresh() = 0;
    virtual void display_data() = 0;
    // Shows the name and stores it as the store's oilName.
    virtual void oilName_set(const QString &name) = 0;
};

// The shared progress window as the file routines see it: a caption and a
// bar running from 0 to 100.
class FileProgress {
public:
    virtual ~FileProgress() = default;
    // Caption set, bar at 0, placed at a fifth of the screen, shown.
    virtual void progress_begin(const QString &caption) = 0;
    virtual void progress_setValue(int percent) = 0;
    virtual void progress_end() = 0;
};

// A host without windows (the command-line tool): the oil name goes straight
// into the store, as the control panel would put it there.
class StoreOnlyHost : public FileHost {
public:
    explicit StoreOnlyHost(MeasurementStore &store) : m_store(store) {}
    void titleRefresh() override {}
    void display_data() override {}
    void oilName_set(const QString &name) override;

private:
    MeasurementStore &m_store;
};
