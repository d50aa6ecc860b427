#pragma once

#include <QString>

// Where and how a station's readings go to the fleet's MQTT broker: what
// `nakos-tool record --mqtt` and a settings page fill in. The URL is
// mqtt://[user@]host[:port] (port 1883 by default) or mqtts://... (TLS,
// port 8883 by default); the password only ever comes from a file.
struct TelemetryConfig {
    QString url;      // as given
    bool tls = false; // mqtts
    QString host;
    int port = 0;
    QString user;         // empty: none
    QString passwordFile; // empty: no password
    QString password;     // read from passwordFile by telemetry_validate()
    QString caFile;       // PEM file of the certificate authorities (mqtts)
    QString sensorId;     // empty: telemetry_defaultSensorId()
    QString prefix = QStringLiteral("nakos");
    QString outboxDir; // folder of the outbox (one subfolder per client)
    QString clientId;  // empty: "nakos-" + sensor id

    // "tcp://host:port" or "ssl://host:port", as the client library wants it.
    QString serverUri() const;
    // "<prefix>/<sensor>/<leaf>".
    QString topic(const QString &leaf) const;
};

// Fills url, tls, host, port and user from `url`. Returns an error text
// (empty when the URL was taken).
QString telemetry_parseUrl(const QString &url, TelemetryConfig &config);

// Checks the whole configuration and completes it: the URL, the sensor id
// and prefix (letters, digits, '.', '_' and '-'; the prefix may have '/'
// between such words), the password file (read; its first line is the
// password), the CA file (mqtts only, must be readable); fills in the client
// id. Returns an error text, empty when the configuration can be used.
QString telemetry_validate(TelemetryConfig &config);

// A sensor id nobody else in the fleet has: the host name, '-', the port's
// device name without "/dev/" and its slashes ("ship1-ttyUSB0"), other
// characters than the allowed ones made '_'.
QString telemetry_defaultSensorId(const QString &hostName, const QString &portDevice);

// True when `id` may be a sensor id (and so a topic level and a file name).
bool telemetry_isValidId(const QString &id);
