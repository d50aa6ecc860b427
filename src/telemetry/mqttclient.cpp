#include "telemetry/mqttclient.h"

#include <MQTTAsync.h>

#include <QFile>
#include <QMetaObject>
#include <QTimer>

#include <chrono>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <vector>

// What Paho's callbacks get as their context. A callback may still be
// running on a Paho thread while the client is destroyed, so the relay is
// never freed while the process runs (a few bytes per client); the client
// it points to is cleared under the lock when the client goes away. Being a
// member of MqttClient, its callbacks reach the client's private handlers.
struct MqttClient::Relay {
    std::mutex lock;
    MqttClient *client = nullptr;
    std::condition_variable stopped; // stop(): the disconnect has ended
    bool disconnectDone = false;

    // Runs f(client) in the client's thread; dropped when the client is gone
    // before the call is delivered.
    template <typename F> void post(F f) {
        const std::lock_guard<std::mutex> guard(lock);
        if (MqttClient *c = client)
            QMetaObject::invokeMethod(
                c, [c, f] { f(c); }, Qt::QueuedConnection);
    }

    static Relay *of(void *context) { return static_cast<Relay *>(context); }

    static void connectSucceeded(void *context, MQTTAsync_successData *) {
        of(context)->post([](MqttClient *c) { c->onConnected(); });
    }
    static void connectFailed(void *context, MQTTAsync_failureData *data) {
        const QString text = failureText(data);
        of(context)->post([text](MqttClient *c) { c->onProblem(text, true); });
    }
    static void reconnected(void *context, char *) {
        of(context)->post([](MqttClient *c) { c->onConnected(); });
    }
    static void connectionLost(void *context, char *cause) {
        QString text = QStringLiteral("connection to the broker lost");
        if (cause && *cause)
            text += QStringLiteral(": ") + QString::fromUtf8(cause);
        of(context)->post([text](MqttClient *c) { c->onProblem(text, false); });
    }
    static int messageArrived(void *context, char *topic, int topicLength,
                              MQTTAsync_message *message) {
        Relay *r = of(context);
        {
            const std::lock_guard<std::mutex> guard(r->lock);
            // A client on its way out does not take the message, so it is
            // not acknowledged and the broker sends it again next time.
            if (!r->client)
                return 0;
            const QByteArray t =
                topicLength > 0 ? QByteArray(topic, topicLength) : QByteArray(topic);
            const QByteArray payload(static_cast<const char *>(message->payload),
                                     message->payloadlen);
            MqttClient *c = r->client;
            QMetaObject::invokeMethod(
                c, [c, t, payload] { emit c->messageArrived(t, payload); }, Qt::QueuedConnection);
        }
        MQTTAsync_freeMessage(&message);
        MQTTAsync_free(topic);
        return 1;
    }
    static void subscribeSucceeded(void *context, MQTTAsync_successData *) {
        of(context)->post([](MqttClient *c) { emit c->subscribed(); });
    }
    static void deliveryComplete(void *context, MQTTAsync_token token) {
        of(context)->post([token](MqttClient *c) { emit c->delivered(token); });
    }
    static void disconnectEnded(void *context) {
        Relay *r = of(context);
        const std::lock_guard<std::mutex> guard(r->lock);
        r->disconnectDone = true;
        r->stopped.notify_all();
    }
    static void disconnectSucceeded(void *context, MQTTAsync_successData *) {
        disconnectEnded(context);
    }
    static void disconnectFailed(void *context, MQTTAsync_failureData *) {
        disconnectEnded(context);
    }

    static QString failureText(const MQTTAsync_failureData *data) {
        const QString refused = QStringLiteral("the broker refused the connection: ");
        switch (data ? data->code : 0) {
        case 1:
            return refused + QStringLiteral("unacceptable protocol version");
        case 2:
            return refused + QStringLiteral("client id rejected");
        case 3:
            return refused + QStringLiteral("server unavailable");
        case 4:
            return refused + QStringLiteral("bad user name or password");
        case 5:
            return refused + QStringLiteral("not authorised (check user name and password)");
        default:
            break;
        }
        QString text = QStringLiteral("cannot reach the broker");
        if (data && data->message && *data->message)
            text += QStringLiteral(": ") + QString::fromUtf8(data->message);
        return text;
    }
};

namespace {

std::mutex g_relaysLock;
std::vector<std::unique_ptr<MqttClient::Relay>> g_relays;

MqttClient::Relay *newRelay(MqttClient *client) {
    auto relay = std::make_unique<MqttClient::Relay>();
    relay->client = client;
    const std::lock_guard<std::mutex> guard(g_relaysLock);
    g_relays.push_back(std::move(relay));
    return g_relays.back().get();
}

} // namespace

MqttClient::MqttClient(QObject *parent) : QObject(parent) {}

MqttClient::~MqttClient() {
    stop(0);
}

QString MqttClient::start(const MqttOptions &options) {
    if (m_handle)
        return QStringLiteral("the client runs already");
    m_options = options;
    m_uri = options.serverUri.toUtf8();
    m_id = options.clientId.toUtf8();
    m_user = options.user.toUtf8();
    m_password = options.password.toUtf8();
    m_ca = QFile::encodeName(options.caFile);

    MQTTAsync_createOptions create = MQTTAsync_createOptions_initializer;
    create.sendWhileDisconnected = 1;
    create.allowDisconnectedSendAtAnyTime = 1;
    create.maxBufferedMessages = options.maxBuffered;
    MQTTAsync handle = nullptr;
    const int rc = MQTTAsync_createWithOptions(&handle, m_uri.constData(), m_id.constData(),
                                               MQTTCLIENT_PERSISTENCE_NONE, nullptr, &create);
    if (rc != MQTTASYNC_SUCCESS)
        return QStringLiteral("cannot create the MQTT client for %1 (%2)")
            .arg(options.serverUri, QString::fromUtf8(MQTTAsync_strerror(rc)));
    m_handle = handle;
    m_relay = newRelay(this);
    MQTTAsync_setCallbacks(handle, m_relay, &Relay::connectionLost, &Relay::messageArrived,
                           &Relay::deliveryComplete);
    MQTTAsync_setConnected(handle, m_relay, &Relay::reconnected);
    connectNow();
    return QString();
}

void MqttClient::connectNow() {
    if (!m_handle || m_connected)
        return;
    MQTTAsync_connectOptions opts = MQTTAsync_connectOptions_initializer;
    MQTTAsync_willOptions will = MQTTAsync_willOptions_initializer;
    MQTTAsync_SSLOptions ssl = MQTTAsync_SSLOptions_initializer;
    opts.keepAliveInterval = m_options.keepAliveSeconds;
    opts.cleansession = m_options.cleanSession ? 1 : 0;
    opts.maxInflight = 1000;
    opts.connectTimeout = 10;
    opts.automaticReconnect = 1;
    opts.minRetryInterval = 1;
    opts.maxRetryInterval = 8;
    opts.onSuccess = &Relay::connectSucceeded;
    opts.onFailure = &Relay::connectFailed;
    opts.context = m_relay;
    if (!m_user.isEmpty())
        opts.username = m_user.constData();
    if (!m_password.isEmpty())
        opts.password = m_password.constData();
    if (!m_options.willTopic.isEmpty()) {
        will.topicName = m_options.willTopic.constData();
        will.message = m_options.willPayload.constData();
        will.qos = 1;
        will.retained = 1;
        opts.will = &will;
    }
    if (m_uri.startsWith("ssl://")) {
        ssl.enableServerCertAuth = 1;
        ssl.verify = 1;
        if (!m_ca.isEmpty())
            ssl.trustStore = m_ca.constData();
        opts.ssl = &ssl;
    }
    m_connecting = true;
    const int rc = MQTTAsync_connect(m_handle, &opts);
    if (rc != MQTTASYNC_SUCCESS) {
        m_connecting = false;
        onProblem(
            QStringLiteral("cannot connect: %1").arg(QString::fromUtf8(MQTTAsync_strerror(rc))),
            true);
    }
}

void MqttClient::onConnected() {
    m_connecting = false;
    if (m_connected || !m_handle)
        return;
    m_connected = true;
    m_everConnected = true;
    m_retryMs = 1000;
    m_state = QStringLiteral("connected");
    for (const auto &[filter, qos] : std::as_const(m_subscriptions))
        subscribeNow(filter, qos);
    emit connected();
}

void MqttClient::onProblem(const QString &text, bool connectFailed) {
    if (!m_handle)
        return;
    m_connected = false;
    if (connectFailed)
        m_connecting = false;
    const bool changed = text != m_state;
    m_state = text;
    // Paho's automatic reconnect takes over once a connection was made;
    // before that, the first connection is tried again from here.
    if (connectFailed && !m_everConnected) {
        QTimer::singleShot(m_retryMs, this, [this] {
            if (!m_connected && !m_connecting)
                connectNow();
        });
        m_retryMs = std::min(m_retryMs * 2, 8000);
    }
    if (changed)
        emit connectionProblem(text);
}

bool MqttClient::publish(const QByteArray &topic, const QByteArray &payload, int qos, bool retained,
                         int *token) {
    if (!m_handle)
        return true;
    MQTTAsync_message message = MQTTAsync_message_initializer;
    message.payload = const_cast<char *>(payload.constData());
    message.payloadlen = int(payload.size());
    message.qos = qos;
    message.retained = retained ? 1 : 0;
    MQTTAsync_responseOptions ro = MQTTAsync_responseOptions_initializer;
    if (MQTTAsync_sendMessage(m_handle, topic.constData(), &message, &ro) != MQTTASYNC_SUCCESS)
        return true;
    if (token)
        *token = ro.token;
    return false;
}

void MqttClient::subscribe(const QByteArray &filter, int qos) {
    m_subscriptions.append({filter, qos});
    if (m_handle && m_connected)
        subscribeNow(filter, qos);
}

void MqttClient::subscribeNow(const QByteArray &filter, int qos) {
    MQTTAsync_responseOptions ro = MQTTAsync_responseOptions_initializer;
    ro.onSuccess = &Relay::subscribeSucceeded;
    ro.context = m_relay;
    MQTTAsync_subscribe(m_handle, filter.constData(), qos, &ro);
}

qint64 MqttClient::pending() const {
    if (!m_handle)
        return 0;
    MQTTAsync_token *tokens = nullptr;
    if (MQTTAsync_getPendingTokens(m_handle, &tokens) != MQTTASYNC_SUCCESS || !tokens)
        return 0;
    qint64 n = 0;
    while (tokens[n] != -1)
        ++n;
    MQTTAsync_free(tokens);
    return n;
}

void MqttClient::stop(int timeoutMs) {
    if (!m_handle)
        return;
    MQTTAsync handle = m_handle;
    m_handle = nullptr;
    {
        const std::lock_guard<std::mutex> guard(m_relay->lock);
        m_relay->client = nullptr;
        m_relay->disconnectDone = false;
    }
    if (MQTTAsync_isConnected(handle)) {
        MQTTAsync_disconnectOptions opts = MQTTAsync_disconnectOptions_initializer;
        opts.timeout = timeoutMs;
        opts.onSuccess = &Relay::disconnectSucceeded;
        opts.onFailure = &Relay::disconnectFailed;
        opts.context = m_relay;
        if (MQTTAsync_disconnect(handle, &opts) == MQTTASYNC_SUCCESS) {
            std::unique_lock<std::mutex> guard(m_relay->lock);
            m_relay->stopped.wait_for(guard, std::chrono::milliseconds(timeoutMs + 1000),
                                      [this] { return m_relay->disconnectDone; });
        }
    }
    MQTTAsync_destroy(&handle);
    m_connected = false;
}

MqttOptions mqttOptionsFor(const TelemetryConfig &config) {
    MqttOptions options;
    options.serverUri = config.serverUri();
    options.clientId = config.clientId;
    options.user = config.user;
    options.password = config.password;
    options.caFile = config.caFile;
    return options;
}
