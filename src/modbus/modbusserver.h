#pragma once

#include "modbus/modbusmap.h"

#include <QElapsedTimer>
#include <QObject>
#include <QString>

#include <memory>

class MapTcpServer;

// The readings for alarm systems and PLCs: a Modbus TCP server (Qt's
// QModbusTcpServer does the framing) that answers reads of input registers
// (function 4) and holding registers (function 3) from the register map
// (modbusmap.h), on the UI thread, without ever waiting for a client.
// Writes and every other function get exception 1 (illegal function),
// addresses past the map exception 2, a count outside 1..125 exception 3.
// Only requests for its unit id are answered. A client that sends anything
// but Modbus TCP frames is cut off, and beyond maxClients connections new
// ones are closed at once, so neither garbage nor a crowd costs a poll time.
//
// The feed (addReadings, setThreshold, addPoll) works whether it listens or
// not: the map is current the moment it starts.
class ModbusServer : public QObject {
    Q_OBJECT
public:
    static constexpr int maxClients = 128;

    explicit ModbusServer(ModbusMap::WordOrder order = ModbusMap::WordOrder::HighFirst,
                          QObject *parent = nullptr);
    ~ModbusServer() override;

    // Listens on host (an IP address, "localhost", or "0.0.0.0" for all) and
    // port for unit id `unit` (0..255), stopping first. Returns an error
    // text, empty when it listens.
    QString start(const QString &host, uint16_t port, int unit);
    void stop();
    bool listening() const { return m_server != nullptr; }

    // The newest of `count` readings that just entered the store.
    void addReadings(const DataPoint &newest, int count);
    // The alarm threshold in ppm; negative: none known.
    void setThreshold(float ppm);
    void addPoll(const PollOutcome &outcome);

    const ModbusMap &map() const { return m_map; }
    // Milliseconds on the clock the map's reading age is counted with.
    int64_t now() const { return m_clock.elapsed(); }

private:
    ModbusMap m_map;
    QElapsedTimer m_clock;
    std::unique_ptr<MapTcpServer> m_server;
};
