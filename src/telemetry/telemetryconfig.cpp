#include "telemetry/telemetryconfig.h"

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

namespace {

const QRegularExpression &idPattern() {
    static const QRegularExpression pattern(QStringLiteral("^[A-Za-z0-9_-][A-Za-z0-9._-]{0,63}$"));
    return pattern;
}

} // namespace

QString TelemetryConfig::serverUri() const {
    return QStringLiteral("%1://%2:%3")
        .arg(tls ? QStringLiteral("ssl") : QStringLiteral("tcp"), host)
        .arg(port);
}

QString TelemetryConfig::topic(const QString &leaf) const {
    return prefix + QLatin1Char('/') + sensorId + QLatin1Char('/') + leaf;
}

bool telemetry_isValidId(const QString &id) {
    return idPattern().match(id).hasMatch();
}

QString telemetry_parseUrl(const QString &url, TelemetryConfig &config) {
    static const QRegularExpression pattern(
        QStringLiteral("^(mqtts?)://(?:([^@/:]+)@)?([A-Za-z0-9.-]+|\\[[0-9A-Fa-f:.]+\\])"
                       "(?::([0-9]{1,5}))?/?$"));
    const QRegularExpressionMatch m = pattern.match(url);
    if (!m.hasMatch())
        return QStringLiteral("'%1' is not an MQTT URL (mqtt://[user@]host[:port] or "
                              "mqtts://[user@]host[:port])")
            .arg(url);
    const bool tls = m.captured(1) == QLatin1String("mqtts");
    int port = tls ? 8883 : 1883;
    if (m.hasCaptured(4) && !m.captured(4).isEmpty()) {
        port = m.captured(4).toInt();
        if (port < 1 || port > 65535)
            return QStringLiteral("the port of '%1' is out of range").arg(url);
    }
    config.url = url;
    config.tls = tls;
    config.user = m.captured(2);
    config.host = m.captured(3);
    config.port = port;
    return QString();
}

QString telemetry_validate(TelemetryConfig &config) {
    if (const QString error = telemetry_parseUrl(config.url, config); !error.isEmpty())
        return error;
    if (!telemetry_isValidId(config.sensorId))
        return QStringLiteral("sensor id '%1' may hold only letters, digits, '.', '_' and '-'")
            .arg(config.sensorId);
    const QStringList words = config.prefix.split(QLatin1Char('/'));
    for (const QString &w : words) {
        if (!telemetry_isValidId(w))
            return QStringLiteral("topic prefix '%1' may hold only letters, digits, '.', '_', "
                                  "'-' and '/' between words")
                .arg(config.prefix);
    }
    config.password.clear();
    if (!config.passwordFile.isEmpty()) {
        QFile file(config.passwordFile);
        if (!file.open(QIODevice::ReadOnly))
            return QStringLiteral("cannot read the password file %1: %2")
                .arg(config.passwordFile, file.errorString());
        const QByteArray text = file.read(4096);
        config.password =
            QString::fromUtf8(text.left(text.indexOf('\n'))).remove(QLatin1Char('\r'));
        if (config.user.isEmpty())
            return QStringLiteral(
                "a password file needs a user name in the URL (mqtt://user@host)");
    }
    if (!config.caFile.isEmpty()) {
        if (!config.tls)
            return QStringLiteral("a CA file needs an mqtts:// URL");
        const QFileInfo ca(config.caFile);
        if (!ca.isFile() || !ca.isReadable())
            return QStringLiteral("cannot read the CA file %1").arg(config.caFile);
    }
    if (config.clientId.isEmpty())
        config.clientId = QStringLiteral("nakos-") + config.sensorId;
    return QString();
}

QString telemetry_defaultSensorId(const QString &hostName, const QString &portDevice) {
    QString port = portDevice;
    if (port.startsWith(QLatin1String("/dev/")))
        port = port.mid(5);
    port.remove(QLatin1Char('/'));
    QString id = hostName.section(QLatin1Char('.'), 0, 0);
    if (!port.isEmpty())
        id += QLatin1Char('-') + port;
    for (QChar &c : id) {
        const bool ok = (c >= QLatin1Char('a') && c <= QLatin1Char('z')) ||
                        (c >= QLatin1Char('A') && c <= QLatin1Char('Z')) ||
                        (c >= QLatin1Char('0') && c <= QLatin1Char('9')) || c == QLatin1Char('_') ||
                        c == QLatin1Char('-') || c == QLatin1Char('.');
        if (!ok)
            c = QLatin1Char('_');
    }
    if (id.isEmpty() || id.startsWith(QLatin1Char('.')))
        id.prepend(QLatin1String("sensor"));
    return id.left(64);
}
