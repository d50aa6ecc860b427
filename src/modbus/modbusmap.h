#pragma once

#include "core/datapoint.h"
#include "device/linkhealth.h"

#include <QString>

#include <array>
#include <cstdint>
#include <optional>

// The read-only register map the Modbus server shows, zero-based as on the
// wire (the same for input and holding registers):
//   0 water ppm, 2 temperature °C, 4 pressure mBar, 6 soot %, 8 alarm
//   threshold ppm (float32 each, NaN before the first reading or while no
//   threshold is known), 10 stream, 11 alarm (1: newest water above a known
//   threshold), 12 link (0 no port, 1 replies, 2 no echoed reply in the
//   last 3 polls), 13 seconds since the last new reading (65535 before the
//   first, saturating), 14 readings counter (wraps at 65536), 15..20 the
//   newest reading's year, month, day, hour, minute, second (0 before it).
// Every change is one call, so a request never sees half of an update.
class ModbusMap {
public:
    static constexpr int size = 21;
    using Registers = std::array<uint16_t, size>;
    enum class WordOrder { HighFirst, LowFirst };

    explicit ModbusMap(WordOrder order = WordOrder::HighFirst);

    // A new reading arrived at monotonic time nowMs; `count` readings came
    // with it (the counter advances by all of them).
    void addReading(const DataPoint &newest, int count, int64_t nowMs);
    // The alarm threshold in ppm; negative: none known.
    void setThreshold(float ppm);
    void addPoll(PollOutcome::Status status);

    // The registers as they stand at monotonic time nowMs.
    Registers registers(int64_t nowMs) const;

private:
    void putFloat(int address, float value);

    WordOrder m_order;
    Registers m_regs{};
    std::optional<int64_t> m_lastReadingMs;
    std::optional<float> m_water;
    float m_threshold = -1.0f;
    int m_pollsWithoutEcho = 0;
};

constexpr uint16_t modbus_defaultPort = 1502;

// "HOST:PORT", "[v6]:PORT" or "HOST" (port 1502), HOST an IP address or
// "localhost". Returns an error text, empty when host and port were set.
QString modbus_parseEndpoint(const QString &text, QString &host, uint16_t &port);
