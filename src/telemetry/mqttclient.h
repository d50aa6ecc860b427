#pragma once

#include "telemetry/telemetryconfig.h"

#include <QByteArray>
#include <QObject>
#include <QString>

#include <memory>

// How an MqttClient reaches its broker.
struct MqttOptions {
    QString serverUri; // tcp://host:port or ssl://host:port
    QString clientId;
    QString user;
    QString password;
    QString caFile; // ssl: the certificate authorities to trust (PEM)
    bool cleanSession = false;
    int maxBuffered = 1000; // messages held in memory while the broker is away
    int keepAliveSeconds = 20;
    QByteArray willTopic; // empty: no last will
    QByteArray willPayload;
};

// The connection a telemetry configuration names: broker, client id, user,
// password and certificate authorities; the rest as the caller needs it.
MqttOptions mqttOptionsFor(const TelemetryConfig &config);

// One MQTT connection over Eclipse Paho's asynchronous client. Paho runs
// its own threads and calls back on them; every callback is handed to the
// thread this object lives in as a queued call, so the signals arrive in
// the Qt event loop and nothing here ever waits for the network (stop()
// at the end of a program excepted).
//
// Connecting goes on in the background: a first connection that fails is
// tried again (1 s, doubling to 8 s); a connection lost later is restored
// by Paho's automatic reconnect. Messages published meanwhile wait in
// memory (up to maxBuffered); QoS 1 messages in flight when a connection is
// lost are sent again on the next one (a persistent session). What must
// survive the process is kept by the caller (TelemetryOutbox).
class MqttClient : public QObject {
    Q_OBJECT
public:
    explicit MqttClient(QObject *parent = nullptr);
    ~MqttClient() override;

    // Creates the client and starts connecting. Returns an error text, empty on success.
    QString start(const MqttOptions &options);

    // Queues a message; it goes out as soon as the broker is reachable.
    // True (failed) when it was refused: not started, or too many waiting.
    // `token` gets what delivered() will name it by (QoS 1).
    bool publish(const QByteArray &topic, const QByteArray &payload, int qos, bool retained,
                 int *token = nullptr);

    // Subscribes now and after every new connection.
    void subscribe(const QByteArray &filter, int qos);

    bool isConnected() const { return m_connected; }
    // Messages published and not yet acknowledged by the broker.
    qint64 pending() const;
    // "connecting", "connected", or what went wrong last.
    QString stateText() const { return m_state; }

    // Disconnects, giving messages in flight up to timeoutMs to be
    // acknowledged, and waits for that; what is still queued is dropped.
    void stop(int timeoutMs);

    struct Relay;

signals:
    void connected();
    // The broker confirmed a subscription.
    void subscribed();
    // The broker refused the connection, could not be reached, or the
    // connection was lost; the text says which.
    void connectionProblem(const QString &text);
    void messageArrived(const QByteArray &topic, const QByteArray &payload);
    // The broker acknowledged the QoS 1 message publish() named `token`.
    void delivered(int token);

private:
    void connectNow();
    void subscribeNow(const QByteArray &filter, int qos);
    void onConnected();
    void onProblem(const QString &text, bool connectFailed);

    MqttOptions m_options;
    void *m_handle = nullptr;
    Relay *m_relay = nullptr; // kept to the end of the process, see mqttclient.cpp
    QByteArray m_uri, m_id, m_user, m_password, m_ca;
    QList<QPair<QByteArray, int>> m_subscriptions;
    bool m_connected = false;
    bool m_everConnected = false;
    bool m_connecting = false;
    int m_retryMs = 1000;
    QString m_state = QStringLiteral("connecting");
};
