#pragma once

#include "telemetry/mqttclient.h"
#include "telemetry/outbox.h"
#include "telemetry/telemetryconfig.h"

#include "core/datapoint.h"

#include <QObject>
#include <QTimer>

class MeasurementStore;
struct LinkHealth;

// Publishes a station's readings, its link's health and its metadata to the
// fleet's broker (see telemetryconfig.h for the topics' place):
// - <prefix>/<sensor>/reading: one message per reading that entered the
//   store, QoS 1, not retained, in the order they entered it; each waits in
//   the outbox (on disk) until the broker has acknowledged it, also across a
//   restart, and a window of them is with the client at a time;
// - <prefix>/<sensor>/status: retained, {"state":"online",...} after every
//   poll while connected; the last will (retained) says {"state":"offline"};
// - <prefix>/<sensor>/meta: retained, whenever the metadata changed and
//   after every new connection.
// Nothing here waits for the network: a poll is never slowed by the broker.
class TelemetryPublisher : public QObject {
    Q_OBJECT
public:
    explicit TelemetryPublisher(QObject *parent = nullptr);
    ~TelemetryPublisher() override;

    // Starts with a configuration that telemetry_validate() accepted and an
    // outbox folder. Returns an error text, empty on success.
    QString start(const TelemetryConfig &config);

    void publishReading(const DataPoint &p);
    void publishStatus(const LinkHealth &health, int readings);
    void publishMeta(const MeasurementStore &store);

    // At the end of a program: the offline status, then up to timeoutMs for
    // what is in flight. Readings not acknowledged stay in the outbox.
    void stop(int timeoutMs);

    const TelemetryConfig &config() const { return m_config; }
    const MqttClient &client() const { return m_client; }
    const TelemetryOutbox &outbox() const { return m_outbox; }
    // Readings the outbox could not keep (the disk full); they are lost for
    // the fleet.
    qint64 refused() const { return m_refused; }

signals:
    // "connected", or what went wrong; once per change.
    void stateChanged(const QString &text);

private:
    void onConnected();
    void flush();
    void pump();
    void checkStuck();

    TelemetryConfig m_config;
    MqttClient m_client;
    TelemetryOutbox m_outbox;
    QTimer m_flushTimer;
    QTimer m_stuckTimer;
    bool m_stuckOnce = false; // the last check found the window stuck
    QByteArray m_readingTopic, m_statusTopic, m_metaTopic;
    QByteArray m_lastMeta;
    QByteArray m_lastStatus;
    qint64 m_refused = 0;
};
