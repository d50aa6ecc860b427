#include "telemetry_options.h"

#include "core/store.h"
#include "device/devicelink.h"
#include "session/monitorsession.h"
#include "telemetry/telemetrypublisher.h"

#include <QDir>
#include <QFileInfo>
#include <QSysInfo>

#include <cstdio>

RecordTelemetry::RecordTelemetry() = default;
RecordTelemetry::~RecordTelemetry() = default;

QString RecordTelemetry::takeOptions(QStringList &args) {
    const QStringList names = {QStringLiteral("--mqtt"), QStringLiteral("--sensor-id"),
                               QStringLiteral("--mqtt-prefix"), QStringLiteral("--mqtt-ca"),
                               QStringLiteral("--mqtt-password-file")};
    QString *fields[] = {&m_config.url, &m_config.sensorId, &m_config.prefix, &m_config.caFile,
                         &m_config.passwordFile};
    bool given[5] = {};
    for (qsizetype i = 0; i < args.size();) {
        const qsizetype n = names.indexOf(args[i]);
        if (n < 0) {
            ++i;
            continue;
        }
        if (i + 1 >= args.size())
            return QStringLiteral("record: %1 needs a value").arg(names[n]);
        *fields[n] = args[i + 1];
        given[n] = true;
        args.remove(i, 2);
    }
    m_enabled = given[0];
    for (int n = 1; n < 5; ++n) {
        if (given[n] && !m_enabled)
            return QStringLiteral("record: %1 needs --mqtt").arg(names[n]);
    }
    if (m_enabled) {
        TelemetryConfig check = m_config;
        if (check.sensorId.isEmpty())
            check.sensorId = QStringLiteral("x");
        if (const QString error = telemetry_parseUrl(check.url, check); !error.isEmpty())
            return QStringLiteral("record: ") + error;
    }
    return QString();
}

QString RecordTelemetry::attach(MonitorSession &session, const QString &output) {
    if (!m_enabled)
        return QString();
    m_session = &session;
    m_config.outboxDir = QFileInfo(output).absoluteDir().filePath(QStringLiteral("nakos-outbox"));
    if (const QString error = session.telemetry_start(m_config); !error.isEmpty())
        return QStringLiteral("record: ") + error;
    // The connection's news come later, from the client's own threads.
    QObject::connect(&session, &MonitorSession::telemetryStateChanged,
                     [url = m_config.url](const QString &text) {
                         std::fprintf(stderr, "nakos-tool: telemetry %s: %s\n", qPrintable(url),
                                      qPrintable(text));
                     });
    return QString();
}

void RecordTelemetry::finish() {
    if (m_session)
        m_session->telemetry_stop(3000);
}
