#pragma once

#include "modbus/modbusserver.h"

#include <QStringList>

#include <memory>

class MonitorSession;

// The recorder's Modbus options (--modbus HOST:PORT [--modbus-unit N]
// [--modbus-word-order high-first|low-first]): a server fed by the session.
class RecordModbus {
public:
    RecordModbus();
    ~RecordModbus();

    // Takes the Modbus options out of args. Returns an error text for the
    // usage line, empty when the options were fine (or absent).
    QString takeOptions(QStringList &args);

    // With --modbus: feeds the server from the session's readings, metadata
    // and polls and starts it. A port that cannot be bound is reported on
    // standard error; the recording goes on without the server.
    void attach(MonitorSession &session);

private:
    QString m_host;
    uint16_t m_port = modbus_defaultPort;
    int m_unit = 1;
    ModbusMap::WordOrder m_order = ModbusMap::WordOrder::HighFirst;
    std::unique_ptr<ModbusServer> m_server;
    bool m_enabled = false;
};
