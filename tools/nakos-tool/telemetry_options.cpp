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
    if (m_config.sensorId.isEmpty())
        m_config.sensorId =
            telemetry_defaultSensorId(QSysInfo::machineHostName(), session.link().portDevice());
    m_config.outboxDir = QFileInfo(output).absoluteDir().filePath(QStringLiteral("nakos-outbox"));
    if (const QString error = telemetry_validate(m_config); !error.isEmpty())
        return QStringLiteral("record: ") + error;
    m_publisher = std::make_unique<TelemetryPublisher>();
    QObject::connect(m_publisher.get(), &TelemetryPublisher::stateChanged,
                     [url = m_config.url](const QString &text) {
                         std::fprintf(stderr, "nakos-tool: telemetry %s: %s\n", qPrintable(url),
                                      qPrintable(text));
                     });
    if (const QString error = m_publisher->start(m_config); !error.isEmpty())
        return error;
    TelemetryPublisher *publisher = m_publisher.get();
    const MonitorSession *s = &session;
    QObject::connect(&session, &MonitorSession::readingsAppended, publisher,
                     [publisher, s](int first, int count) {
                         for (int i = first; i < first + count; ++i)
                             publisher->publishReading(s->store().dataPoints[size_t(i)]);
                     });
    QObject::connect(&session, &MonitorSession::metadataChanged, publisher,
                     [publisher, s] { publisher->publishMeta(s->store()); });
    QObject::connect(&session, &MonitorSession::pollFinished, publisher, [publisher, s] {
        publisher->publishStatus(s->health(), s->store().dataPoint_count);
    });
    publisher->publishMeta(session.store());
    return QString();
}

void RecordTelemetry::finish() {
    if (m_publisher)
        m_publisher->stop(3000);
}
