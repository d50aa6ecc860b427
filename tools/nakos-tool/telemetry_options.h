#pragma once

#include "telemetry/telemetryconfig.h"

#include <QStringList>

class MonitorSession;

// The recorder's telemetry options (--mqtt URL [--sensor-id ID]
// [--mqtt-prefix P] [--mqtt-ca FILE] [--mqtt-password-file FILE]), handed to
// the session's telemetry.
class RecordTelemetry {
public:
    RecordTelemetry();
    ~RecordTelemetry();

    // Takes the telemetry options out of args. Returns an error text for the
    // usage line, empty when the options were fine (or absent).
    QString takeOptions(QStringList &args);

    // With --mqtt: completes the configuration (sensor id from the host and
    // the session's port, outbox beside OUTPUT), starts publishing and
    // connects the session's signals. Returns an error text, empty on success.
    QString attach(MonitorSession &session, const QString &output);

    // At exit: the offline status and a few seconds for what is in flight.
    void finish();

private:
    bool m_enabled = false;
    TelemetryConfig m_config;
    MonitorSession *m_session = nullptr;
};
