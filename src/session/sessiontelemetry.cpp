// The session's fleet telemetry: one publisher fed by the session's own
// signals, for the program (started from the Station settings) and the
// recorder (started from its command line) alike.
#include "session/monitorsession.h"

#include "device/devicelink.h"
#include "telemetry/telemetryconfig.h"
#include "telemetry/telemetrypublisher.h"

#include <QDir>
#include <QSysInfo>

QString MonitorSession::telemetry_start(TelemetryConfig config) {
    telemetry_stop();
    if (config.sensorId.isEmpty())
        config.sensorId =
            telemetry_defaultSensorId(QSysInfo::machineHostName(), m_link->portDevice());
    // Readings wait here while the broker is away, also across a restart.
    if (config.outboxDir.isEmpty())
        config.outboxDir = QDir(m_store.path_data).filePath(QStringLiteral("nakos-outbox"));
    if (QString error = telemetry_validate(config); !error.isEmpty()) {
        m_telemetryState = error;
        emit telemetryStateChanged(m_telemetryState);
        return error;
    }
    auto publisher = std::make_unique<TelemetryPublisher>();
    connect(publisher.get(), &TelemetryPublisher::stateChanged, this, [this](const QString &text) {
        m_telemetryState = text;
        emit telemetryStateChanged(text);
    });
    if (QString error = publisher->start(config); !error.isEmpty()) {
        m_telemetryState = error;
        emit telemetryStateChanged(m_telemetryState);
        return error;
    }
    TelemetryPublisher *p = publisher.get();
    connect(this, &MonitorSession::readingsAppended, p, [this, p](int first, int count) {
        for (int i = first; i < first + count; ++i)
            p->publishReading(m_store.dataPoints[size_t(i)]);
    });
    connect(this, &MonitorSession::metadataChanged, p, [this, p] { p->publishMeta(m_store); });
    connect(this, &MonitorSession::pollFinished, p,
            [this, p] { p->publishStatus(health(), m_store.dataPoint_count); });
    p->publishMeta(m_store);
    m_telemetry = std::move(publisher);
    return QString();
}

QString MonitorSession::telemetry_applyStation() {
    if (!m_station.telemetryOn) {
        telemetry_stop();
        return QString();
    }
    TelemetryConfig config;
    config.url = m_station.mqttUrl;
    config.sensorId = m_station.sensorId;
    if (!m_station.mqttPrefix.isEmpty())
        config.prefix = m_station.mqttPrefix;
    config.caFile = m_station.mqttCaFile;
    config.passwordFile = m_station.mqttPasswordFile;
    if (const QString error = telemetry_parseUrl(config.url, config); !error.isEmpty()) {
        m_telemetryState = error;
        emit telemetryStateChanged(m_telemetryState);
        return error;
    }
    return telemetry_start(config);
}

void MonitorSession::telemetry_stop(int timeoutMs) {
    if (!m_telemetry)
        return;
    m_telemetry->stop(timeoutMs);
    m_telemetry.reset();
    m_telemetryState = QStringLiteral("off");
    emit telemetryStateChanged(m_telemetryState);
}
