#include "telemetry/telemetrypublisher.h"

#include "telemetry/telemetrypayload.h"

#include "core/store.h"
#include "device/linkhealth.h"

#include <utility>

namespace {
// How often a window the client has lost track of is looked for.
constexpr int kStuckCheckMs = 15000;
} // namespace

TelemetryPublisher::TelemetryPublisher(QObject *parent) : QObject(parent) {
    connect(&m_client, &MqttClient::connected, this, &TelemetryPublisher::onConnected);
    connect(&m_client, &MqttClient::connectionProblem, this, &TelemetryPublisher::stateChanged);
    connect(&m_client, &MqttClient::delivered, this, [this](int token) {
        m_outbox.acknowledge(token);
        pump();
    });
    // Readings taken in one go (a poll's reply, a loop) reach the disk with
    // one write-through and go to the client together.
    m_flushTimer.setSingleShot(true);
    m_flushTimer.setInterval(0);
    connect(&m_flushTimer, &QTimer::timeout, this, &TelemetryPublisher::flush);
    m_stuckTimer.setInterval(kStuckCheckMs);
    connect(&m_stuckTimer, &QTimer::timeout, this, &TelemetryPublisher::checkStuck);
}

TelemetryPublisher::~TelemetryPublisher() = default;

QString TelemetryPublisher::start(const TelemetryConfig &config) {
    m_config = config;
    m_readingTopic = config.topic(QStringLiteral("reading")).toUtf8();
    m_statusTopic = config.topic(QStringLiteral("status")).toUtf8();
    m_metaTopic = config.topic(QStringLiteral("meta")).toUtf8();
    if (QString error = m_outbox.open(config.outboxDir, config.clientId); !error.isEmpty())
        return error;
    MqttOptions options = mqttOptionsFor(config);
    options.maxBuffered = m_outbox.window() + 100; // the window, status and meta
    options.willTopic = m_statusTopic;
    options.willPayload = telemetry_offlineJson();
    if (QString error = m_client.start(options); !error.isEmpty()) {
        m_outbox.close();
        return error;
    }
    m_stuckTimer.start();
    pump(); // what the outbox held from before
    return QString();
}

void TelemetryPublisher::publishReading(const DataPoint &p) {
    if (m_outbox.append(telemetry_readingJson(m_config.sensorId, p))) {
        ++m_refused;
        return;
    }
    m_flushTimer.start();
}

void TelemetryPublisher::flush() {
    m_outbox.sync();
    pump();
}

// Keeps the client's window full, in the outbox's order.
void TelemetryPublisher::pump() {
    QByteArray message;
    int token = 0;
    while (m_outbox.next(message)) {
        if (m_client.publish(m_readingTopic, message, 1, false, &token))
            return; // the client takes no more now; a delivery or a connection resumes
        m_outbox.take(token);
    }
}

// Messages handed to the client that it no longer holds and never confirmed
// (seen twice in a row, so no confirmation is still on its way) go out
// again rather than block the window for good.
void TelemetryPublisher::checkStuck() {
    const bool stuck = m_client.isConnected() && m_outbox.inFlight() > 0 && m_client.pending() == 0;
    if (!std::exchange(m_stuckOnce, stuck) || !stuck)
        return;
    m_stuckOnce = false;
    m_outbox.rewind();
    pump();
}

void TelemetryPublisher::publishStatus(const LinkHealth &health, int readings) {
    // Only the latest state matters: while the broker is away nothing is
    // queued, the next poll after the reconnection says it.
    m_lastStatus = telemetry_statusJson(true, health, readings, m_outbox.waiting());
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
        m_lastStatus = telemetry_statusJson(true, LinkHealth(), 0, m_outbox.waiting());
    m_client.publish(m_statusTopic, m_lastStatus, 1, true);
    pump();
    emit stateChanged(QStringLiteral("connected"));
}

void TelemetryPublisher::stop(int timeoutMs) {
    if (m_client.isConnected())
        m_client.publish(m_statusTopic, telemetry_offlineJson(), 1, true);
    m_flushTimer.stop();
    m_stuckTimer.stop();
    flush();
    m_client.stop(timeoutMs);
    m_outbox.close();
}
