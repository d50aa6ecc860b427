#include "core/autosave.h"

#include "core/clock.h"
#include "core/store.h"
#include "core/timetext.h"

AutoSave::AutoSave(MeasurementStore &store, const Clock &clock, SaveFunction save, QObject *parent)
    : QObject(parent), m_store(store), m_clock(clock), m_save(std::move(save)),
      Timer_autoSave(this) {
    connect(&Timer_autoSave, &QTimer::timeout, this, &AutoSave::tick);
}

void AutoSave::autoSave_stop() {
    Timer_autoSave.stop();
}

void AutoSave::autoSave_restart() {
    Timer_autoSave.stop();
    autoSave_createFilename();
    m_ticks = 0;
    Timer_autoSave.setInterval(interval_ms);
    Timer_autoSave.start();
}

void AutoSave::autoSave_createFilename() {
    m_fileName = fileNameFor(m_store.path_autosave, m_clock.now());
}

void AutoSave::tick() {
    ++m_ticks;
    if (m_ticks < ticksPerSave)
        return;
    m_ticks = 0;
    // An empty store is never written, so no empty autosave files appear. A
    // failed save is simply tried again a minute later.
    if (m_store.dataPoint_count > 0 && !m_fileName.isEmpty() && m_save)
        m_save(m_fileName);
}

QString AutoSave::fileNameFor(const QString &folder, const QDateTime &time) {
    const QDate d = time.date();
    const QTime t = time.time();
    return folder + QLatin1String("NAK_OS_autosave_") + pad4(d.year()) + pad2(d.month()) +
           pad2(d.day()) + QLatin1Char('_') + pad2(t.hour()) + pad2(t.minute()) + pad2(t.second()) +
           QLatin1String(".txt");
}
