#include "telemetry/telemetrypublisher.h"

#include "telemetry/telemetrypayload.h"

#include "core/store.h"
#include "device/linkhealth.h"

TelemetryPublisher::TelemetryPublisher(QObject *parent) : QObject(parent) {
    connect(&m_client, &MqttClient::connected, this, &TelemetryPublisher::onConnected);
    connect(&m_client, &MqttClient::connectionProblem, this, &TelemetryPublisher::stateChanged);
}

TelemetryPublisher::~TelemetryPublisher() = default;

QString TelemetryPublisher::start(const TelemetryConfig &config) {
    m_config = config;
    m_readingTopic = config.topic(QStringLiteral("reading")).toUtf8();
    m_statusTopic = config.topic(QStringLiteral("status")).toUtf8();
    m_metaTopic = config.topic(QStringLiteral("meta")).toUtf8();
    MqttOptions options = mqttOptionsFor(config);
    options.persistDir = config.outboxDir;
    options.willTopic = m_statusTopic;
    options.willPayload = telemetry_offlineJson();
    return m_client.start(options);
}

void TelemetryPublisher::publishReading(const DataPoint &p) {
    if (m_client.publish(m_readingTopic, telemetry_readingJson(m_config.sensorId, p), 1, false))
        ++m_refused;
}

void TelemetryPublisher::publishStatus(const LinkHealth &health, int readings) {
    // Only the latest state matters: while the broker is away nothing is
    // queued, the next poll after the reconnection says it.
    m_lastStatus = telemetry_statusJson(true, health, readings, m_client.pending());
    if (m_client.isConnected())
        m_client.publish(m_statusTopic, m_lastStatus, 1, true);
}

void TelemetryPublisher::publishMeta(const MeasurementStore &store) {
    const QByteArray meta = telemetry_metaJson(m_config.sensorId, store);
    if (meta == m_lastMeta)
        return;
    m_lastMeta = meta;
    if (m_client.isConnected())
        m_client.publish(m_metaTopic, meta, 1, true);
}

void TelemetryPublisher::onConnected() {
    if (!m_lastMeta.isEmpty())
        m_client.publish(m_metaTopic, m_lastMeta, 1, true);
    if (m_lastStatus.isEmpty())
        m_lastStatus = telemetry_statusJson(true, LinkHealth(), 0, m_client.pending());
    m_client.publish(m_statusTopic, m_lastStatus, 1, true);
    emit stateChanged(QStringLiteral("connected"));
}

void TelemetryPublisher::stop(int timeoutMs) {
    if (m_client.isConnected())
        m_client.publish(m_statusTopic, telemetry_offlineJson(), 1, true);
    m_client.stop(timeoutMs);
}
