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
#include "telemetry/telemetrypublisher.h"

#include <QSaveFile>
#include <QThreadPool>

namespace {

// The autosave's worker: the snapshot into a temporary file that replaces
// the autosave file only when complete. True when it failed.
bool writeAutoSaveFile(const QString &fileName, const DataFileSnapshot &snapshot) {
    QSaveFile file(fileName);
    if (!file.open(QIODevice::WriteOnly))
        return true;
    if (DataFile::dataFile_saveSnapshot(file, snapshot, fileName).failed())
        return true; // the temporary file goes; last minute's file stays whole
    return !file.commit();
}

} // namespace

MonitorSession::MonitorSession(SessionSeams seams, MeasurementStore &store,
                               std::unique_ptr<RegistryKey> settingsKey, QObject *parent)
    : QObject(parent), m_seams(seams), m_store(store), m_settingsKey(std::move(settingsKey)),
      m_dataFile(std::make_unique<DataFile>(m_store, seams.progress)),
      m_csv(std::make_unique<CsvExport>(m_store, seams.progress)),
      m_logImport(std::make_unique<LogImport>(m_store, seams.progress)),
      m_autoSavePool(std::make_unique<QThreadPool>()),
      m_autoSaveSnapshot(std::make_shared<DataFileSnapshot>()) {
    m_autoSavePool->setMaxThreadCount(1);
    m_autoSave = new AutoSave(
        m_store, seams.clock, [this](const QString &name) { return autoSave_write(name); }, this);

    m_link = new DeviceLink(m_store, seams.notifier, this);
    m_link->setConfiguredPort([this](int n) { return configuredDevice(n); });
    connect(m_link, &DeviceLink::readingsAppended, this, &MonitorSession::readingsAppended);
    // Every reading list the link fetches ends in a redraw of the charts;
    // the title shows the mark that new readings set.
    connect(m_link, &DeviceLink::pollFinished, this, [this](const PollOutcome &outcome) {
        display_data();
        titleRefresh();
        checkMetadata();
        emit pollFinished(outcome);
    });

    Timer_monitorChanges.setInterval(monitorInterval_ms);
    connect(&Timer_monitorChanges, &QTimer::timeout, this, &MonitorSession::monitorTick);
}

MonitorSession::~MonitorSession() {
    // A write under way completes: the autosave file is never left half
    // replaced, and the worker never outlives the session it reports to.
    m_autoSavePool->waitForDone();
}

void MonitorSession::settings_load() {
    if (settings::readRegistry(*m_settingsKey, m_flags, m_store.waterDisplayPercent)) {
        // First run of this version: store the defaults.
        m_flags = DisplayFlags();
        m_store.waterDisplayPercent = false;
        settings::writeRegistry(*m_settingsKey, m_flags, m_store.waterDisplayPercent);
    }
    m_station = StationSettings();
    (void)settings::readStation(*m_settingsKey, m_station); // missing: the defaults
    m_store.setFullStampDuplicates(m_station.compareHour);
}

void MonitorSession::settings_setStation(const StationSettings &station) {
    const StationSettings before = std::exchange(m_station, station);
    if (m_store.fullStampDuplicates() != station.compareHour)
        m_store.setFullStampDuplicates(station.compareHour);
    settings::writeStation(*m_settingsKey, m_station);
    if (before.telemetryOn != station.telemetryOn || before.mqttUrl != station.mqttUrl ||
        before.sensorId != station.sensorId || before.mqttPrefix != station.mqttPrefix ||
        before.mqttCaFile != station.mqttCaFile ||
        before.mqttPasswordFile != station.mqttPasswordFile)
        (void)telemetry_applyStation();
}

void MonitorSession::startUp_engine(const QString &currentDir) {
    m_store.decimalSeparator = detectDecimalSeparator();
    m_link->com_init();
    prepareFolders(m_store, currentDir, *m_settingsKey);
    m_store.stream_selected = 0;
}

void MonitorSession::startUp_finish() {
    m_store.clear();
    m_store.oilName.clear();
    m_store.display_update_pending = false;
    m_metadata = metadataOf(m_store);
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
    return mainWindowTitle(m_store);
}

void MonitorSession::titleRefresh() {
    emit titleChanged(title());
}

void MonitorSession::display_data() {
    emit displayRequested();
}

void MonitorSession::display_requestRedraw() {
    m_store.display_update_pending = true;
}

void MonitorSession::monitorTick() {
    if (!m_store.display_update_pending)
        return;
    m_store.display_update_pending = false;
    display_data();
}

void MonitorSession::oilName_set(const QString &newName) {
    m_store.oilName = newName;
    emit oilNameShown(newName);
    // A request, not a rebuild: New, Open and Import rebuild at once and then
    // once more at the monitor's next tick, as they always have.
    display_requestRedraw();
    checkMetadata();
}

void MonitorSession::oilName_update(const QString &text) {
    m_store.oilName = text.trimmed();
    checkMetadata();
}

void MonitorSession::oilName_leave(const QString &text) {
    oilName_update(text);
    display_requestRedraw(); // the charts' heading shows the name
}

void MonitorSession::query_start() {
    m_link->com_startQuery();
    emit queryStateChanged(true);
}

void MonitorSession::query_stop() {
    m_link->com_stopQuery();
    emit queryStateChanged(false);
}

bool MonitorSession::queryRunning() const {
    return m_link->queryRunning();
}

void MonitorSession::query_setInterval(int ms) {
    m_link->setQueryInterval(ms);
}

void MonitorSession::port_select(int n) {
    m_link->comPort = int16_t(n);
}

void MonitorSession::port_selectDevice(const QString &device) {
    m_devicePort = device;
}

void MonitorSession::port_mapDevice(int n, const QString &device) {
    m_mappedPorts.insert(n, device);
}

QString MonitorSession::configuredDevice(int n) const {
    if (!m_devicePort.isEmpty())
        return m_devicePort;
    if (const auto it = m_mappedPorts.constFind(n); it != m_mappedPorts.cend())
        return *it;
    return settings::comPortDevice(*m_settingsKey, n);
}

void MonitorSession::device_query(const QString &command, QObject *context,
                                  std::function<void(const QString &)> replied) {
    m_link->com_queryString(command + QLatin1String("\r\n"), context, std::move(replied));
}

void MonitorSession::dataView_selectStream(int16_t newStream) {
    m_store.stream_selected = newStream;
    emit zoomResetRequested();
    display_data();
}

const LinkHealth &MonitorSession::health() const {
    return m_link->health();
}

FileResult MonitorSession::recording_finish(const QString &fileName) {
    query_stop();
    m_autoSave->autoSave_stop();
    return m_dataFile->dataFile_save(fileName, false);
}

bool MonitorSession::Metadata::operator==(const Metadata &o) const {
    auto sameTable = [](const CalTable &a, const CalTable &b) {
        if (a.count != b.count)
            return false;
        for (int i = 0; i < a.count && i < CalTable::capacity; ++i) {
            if (a.pairs[i].first != b.pairs[i].first || a.pairs[i].second != b.pairs[i].second)
                return false;
        }
        return true;
    };
    return oilName == o.oilName && alarmThreshold == o.alarmThreshold &&
           alarmDelay == o.alarmDelay && sameTable(calSource, o.calSource) &&
           sameTable(calTable, o.calTable);
}

MonitorSession::Metadata MonitorSession::metadataOf(const MeasurementStore &store) {
    return {store.oilName, store.alarmThreshold, store.alarmDelay, store.calSource, store.calTable};
}

void MonitorSession::checkMetadata() {
    Metadata now = metadataOf(m_store);
    if (now == m_metadata)
        return;
    m_metadata = std::move(now);
    emit metadataChanged();
}

bool MonitorSession::saveChanges_prompt() {
    if (!m_store.data_changed)
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
    if (m_autoSaveRunning)
        return true; // a slow disk: the next minute tries again
    // About 5 MB copied in a few milliseconds; the formatting and the disk
    // take the worker tens of milliseconds and more.
    m_autoSaveSnapshot->take(m_store);
    m_autoSaveRunning = true;
    m_autoSavePool->start([this, fileName, snapshot = m_autoSaveSnapshot] {
        const bool failed = writeAutoSaveFile(fileName, *snapshot);
        QMetaObject::invokeMethod(
            this, [this, failed] { autoSave_finished(failed); }, Qt::QueuedConnection);
    });
    return false;
}

void MonitorSession::autoSave_finished(bool failed) {
    m_autoSaveRunning = false;
    if (!failed) {
        // Readings that came in meanwhile, or a file read, are not in the
        // autosave file: their mark stays.
        if (m_autoSaveSnapshot->sameAs(m_store))
            m_store.data_changed = false;
        titleRefresh();
    }
    // The copy is not kept between autosaves: a station with a full memory
    // would otherwise hold its readings twice, 4.7 MB, for the minute's
    // few milliseconds of copying saved.
    std::vector<DataPoint>().swap(m_autoSaveSnapshot->points);
    emit autoSaveFinished(failed);
}
