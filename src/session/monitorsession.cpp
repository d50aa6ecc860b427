#include "session/monitorsession.h"

#include "core/notifier.h"
#include "core/numbers.h"
#include "core/title.h"
#include "device/devicelink.h"
#include "files/csvexport.h"
#include "files/datafile.h"
#include "files/logimport.h"
#include "settings/registrykey.h"
#include "settings/startupfolders.h"

#include <QSaveFile>

MonitorSession::MonitorSession(SessionSeams seams, std::unique_ptr<RegistryKey> settingsKey,
                               QObject *parent)
    : QObject(parent), m_seams(seams), m_store(std::make_unique<MeasurementStore>()),
      m_settingsKey(std::move(settingsKey)),
      m_dataFile(std::make_unique<DataFile>(*m_store, seams.progress)),
      m_csv(std::make_unique<CsvExport>(*m_store, seams.progress)),
      m_logImport(std::make_unique<LogImport>(*m_store, seams.progress)) {
    m_autoSave = new AutoSave(
        *m_store, seams.clock, [this](const QString &name) { return autoSave_write(name); }, this);

    m_link = new DeviceLink(*m_store, seams.notifier, this);
    RegistryKey *key = m_settingsKey.get();
    m_link->setConfiguredPort([key](int n) { return settings::comPortDevice(*key, n); });
    // Every reading list the link fetches ends in a redraw of the charts;
    // the title shows the mark that new readings set.
    connect(m_link, &DeviceLink::listPolled, this, [this] {
        display_data();
        titleRefresh();
    });

    Timer_monitorChanges.setInterval(monitorInterval_ms);
    connect(&Timer_monitorChanges, &QTimer::timeout, this, &MonitorSession::monitorTick);
}

MonitorSession::~MonitorSession() = default;

void MonitorSession::settings_load() {
    if (settings::readRegistry(*m_settingsKey, m_flags, m_store->waterDisplayPercent)) {
        // First run of this version: store the defaults.
        m_flags = DisplayFlags();
        m_store->waterDisplayPercent = false;
        settings::writeRegistry(*m_settingsKey, m_flags, m_store->waterDisplayPercent);
    }
}

void MonitorSession::startUp_engine(const QString &currentDir) {
    m_store->decimalSeparator = detectDecimalSeparator();
    m_link->com_init();
    prepareFolders(*m_store, currentDir, *m_settingsKey);
    m_store->stream_selected = 0;
}

void MonitorSession::startUp_finish() {
    m_store->clear();
    m_store->oilName.clear();
    m_store->display_update_pending = false;
    titleRefresh();
    m_autoSave->autoSave_restart();
    Timer_monitorChanges.start();
}

void MonitorSession::startUp(const QString &currentDir) {
    settings_load();
    startUp_engine(currentDir);
    startUp_finish();
}

QString MonitorSession::title() const {
    return mainWindowTitle(*m_store);
}

void MonitorSession::titleRefresh() {
    emit titleChanged(title());
}

void MonitorSession::display_data() {
    emit displayRequested();
}

void MonitorSession::monitorTick() {
    if (!m_store->display_update_pending)
        return;
    m_store->display_update_pending = false;
    display_data();
}

void MonitorSession::oilName_set(const QString &newName) {
    m_store->oilName = newName;
    emit oilNameShown(newName);
    m_store->display_update_pending = true;
}

void MonitorSession::oilName_update(const QString &text) {
    m_store->oilName = text.trimmed();
}

bool MonitorSession::saveChanges_prompt() {
    if (!m_store->data_changed)
        return false;
    const Notifier::Answer answer = m_seams.notifier.message(
        QStringLiteral("Data in memory has changed, do you want to save it now?"),
        QLatin1String(""), Notifier::Buttons::YesNoCancel, Notifier::Icon::Question);
    switch (answer) {
    case Notifier::Answer::Yes:
        saveCommand(); // whatever the save did, the command goes on
        return false;
    case Notifier::Answer::No:
        return false;
    default:
        return true;
    }
}

bool MonitorSession::autoSave_write(const QString &fileName) {
    QSaveFile file(fileName);
    if (!file.open(QIODevice::WriteOnly))
        return true;
    const bool wasChanged = m_store->data_changed;
    if (m_dataFile->dataFile_save(file, false, fileName).failed())
        return true; // the temporary file goes; last minute's file stays whole
    if (!file.commit()) {
        m_store->data_changed = wasChanged;
        return true;
    }
    titleRefresh();
    return false;
}
