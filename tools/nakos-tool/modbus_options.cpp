#include "modbus_options.h"

#include "core/numbers.h"
#include "session/monitorsession.h"

#include <cstdio>

RecordModbus::RecordModbus() = default;
RecordModbus::~RecordModbus() = default;

QString RecordModbus::takeOptions(QStringList &args) {
    const QStringList names = {QStringLiteral("--modbus"), QStringLiteral("--modbus-unit"),
                               QStringLiteral("--modbus-word-order")};
    QString values[3];
    bool given[3] = {};
    for (qsizetype i = 0; i < args.size();) {
        const qsizetype n = names.indexOf(args[i]);
        if (n < 0) {
            ++i;
            continue;
        }
        if (i + 1 >= args.size())
            return QStringLiteral("record: %1 needs a value").arg(names[n]);
        values[n] = args[i + 1];
        given[n] = true;
        args.remove(i, 2);
    }
    m_enabled = given[0];
    if ((given[1] || given[2]) && !m_enabled)
        return QStringLiteral("record: %1 needs --modbus").arg(names[given[1] ? 1 : 2]);
    if (!m_enabled)
        return QString();
    if (const QString error = modbus_parseEndpoint(values[0], m_host, m_port); !error.isEmpty())
        return QStringLiteral("record: --modbus ") + error;
    if (given[1]) {
        const std::optional<int32_t> unit = parseInteger(QStringView(values[1]), 0, 255);
        if (!unit)
            return QStringLiteral("record: --modbus-unit must be a whole number from 0 to 255");
        m_unit = *unit;
    }
    if (given[2]) {
        if (values[2] != QLatin1String("high-first") && values[2] != QLatin1String("low-first"))
            return QStringLiteral("record: --modbus-word-order must be high-first or low-first");
        if (values[2] == QLatin1String("low-first"))
            m_order = ModbusMap::WordOrder::LowFirst;
    }
    return QString();
}

void RecordModbus::attach(MonitorSession &session) {
    if (!m_enabled)
        return;
    m_server = std::make_unique<ModbusServer>(m_order);
    ModbusServer *server = m_server.get();
    const MeasurementStore &store = session.store();
    // The server's feed: the newest reading, the alarm threshold, each poll.
    QObject::connect(&session, &MonitorSession::readingsAppended, server,
                     [server, &store](int first, int count) {
                         server->addReadings(store.dataPoints[size_t(first + count - 1)], count);
                     });
    QObject::connect(&session, &MonitorSession::metadataChanged, server,
                     [server, &store] { server->setThreshold(store.alarmThreshold); });
    QObject::connect(&session, &MonitorSession::pollFinished, server, &ModbusServer::addPoll);
    server->setThreshold(store.alarmThreshold);
    if (const QString error = server->start(m_host, m_port, m_unit); !error.isEmpty())
        std::fprintf(stderr, "nakos-tool: %s; recording goes on without it\n", qPrintable(error));
}
