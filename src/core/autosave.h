#pragma once

#include <QObject>
#include <QString>
#include <QTimer>

#include <cstdint>
#include <functional>

class Clock;
class MeasurementStore;

// The autosave of the main window: a 10 s timer whose every sixth tick
// writes the whole store to the autosave file of the current measuring
// period. Each restart starts a new period with a file name stamped with the
// clock's local time, so one autosave file exists per period. The writing
// itself is a callback (the session's, which writes a copy of the store in
// the background), which keeps this class free of the file code; that
// routine clears the modified mark and refreshes the title once the file is
// written. fileName_current is never touched here.
class AutoSave : public QObject {
    Q_OBJECT
public:
    static constexpr int interval_ms = 10000;
    static constexpr int ticksPerSave = 6;

    // Writes the store to the named file, or starts doing so; returns true
    // when it failed (or could not start).
    using SaveFunction = std::function<bool(const QString &fileName)>;

    AutoSave(MeasurementStore &store, const Clock &clock, SaveFunction save,
             QObject *parent = nullptr);

    void autoSave_stop();
    void autoSave_restart();
    void autoSave_createFilename();

    // The work of one timer tick; public so tests can drive it directly.
    void tick();

    const QString &fileName() const { return m_fileName; }
    bool isRunning() const { return Timer_autoSave.isActive(); }
    const QTimer &timer() const { return Timer_autoSave; }

    // folder + "NAK_OS_autosave_YYYYMMDD_hhmmss.txt" for the given local time.
    static QString fileNameFor(const QString &folder, const QDateTime &time);

private:
    MeasurementStore &m_store;
    const Clock &m_clock;
    SaveFunction m_save;
    QTimer Timer_autoSave;
    QString m_fileName;
    int32_t m_ticks = 0;
};
