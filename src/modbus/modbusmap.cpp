#include "modbus/modbusmap.h"

#include <QHostAddress>
#include <QRegularExpression>

#include <algorithm>
#include <bit>
#include <limits>

namespace {
constexpr int kStream = 10, kAlarm = 11, kLink = 12, kAge = 13, kCounter = 14, kStamp = 15;
constexpr int kThreshold = 8;
} // namespace

ModbusMap::ModbusMap(WordOrder order) : m_order(order) {
    for (int a = 0; a <= kThreshold; a += 2)
        putFloat(a, std::numeric_limits<float>::quiet_NaN());
}

void ModbusMap::putFloat(int address, float value) {
    const uint32_t bits = std::bit_cast<uint32_t>(value);
    const auto high = uint16_t(bits >> 16), low = uint16_t(bits & 0xffff);
    const bool highFirst = m_order == WordOrder::HighFirst;
    m_regs[size_t(address)] = highFirst ? high : low;
    m_regs[size_t(address) + 1] = highFirst ? low : high;
}

void ModbusMap::addReading(const DataPoint &p, int count, int64_t nowMs) {
    putFloat(0, p.water);
    putFloat(2, p.temperature);
    putFloat(4, p.pressure);
    putFloat(6, p.soot);
    m_regs[kStream] = uint16_t(p.stream);
    m_regs[kCounter] = uint16_t(m_regs[kCounter] + count);
    const int stamp[] = {p.year, p.month, p.day, p.hour, p.minute, p.second};
    for (int i = 0; i < 6; ++i)
        m_regs[size_t(kStamp + i)] = uint16_t(stamp[i]);
    m_water = p.water;
    m_lastReadingMs = nowMs;
    setThreshold(m_threshold);
}

void ModbusMap::setThreshold(float ppm) {
    m_threshold = ppm;
    const bool known = ppm >= 0.0f;
    putFloat(kThreshold, known ? ppm : std::numeric_limits<float>::quiet_NaN());
    m_regs[kAlarm] = known && m_water && *m_water > ppm ? 1 : 0;
}

void ModbusMap::addPoll(PollOutcome::Status status) {
    using S = PollOutcome::Status;
    if (status == S::PortMissing) {
        m_pollsWithoutEcho = 0;
        m_regs[kLink] = 0;
        return;
    }
    m_pollsWithoutEcho = status == S::NoEcho ? std::min(m_pollsWithoutEcho + 1, 3) : 0;
    m_regs[kLink] = m_pollsWithoutEcho >= 3 ? 2 : 1;
}

ModbusMap::Registers ModbusMap::registers(int64_t nowMs) const {
    Registers r = m_regs;
    r[kAge] = m_lastReadingMs
                  ? uint16_t(std::clamp<int64_t>((nowMs - *m_lastReadingMs) / 1000, 0, 65535))
                  : 65535;
    return r;
}

QString modbus_parseEndpoint(const QString &text, QString &host, uint16_t &port) {
    static const QRegularExpression form(
        QStringLiteral("^(?:\\[([0-9A-Fa-f:.]+)\\]|([^:\\[\\]\\s]+))(?::([0-9]{1,5}))?$"));
    const QRegularExpressionMatch m = form.match(text);
    const int n = m.hasMatch() && m.hasCaptured(3) ? m.captured(3).toInt() : modbus_defaultPort;
    const QString name = m.hasCaptured(1) ? m.captured(1) : m.captured(2);
    if (!m.hasMatch() || n < 1 || n > 65535 ||
        (QHostAddress(name).isNull() &&
         name.compare(QLatin1String("localhost"), Qt::CaseInsensitive)))
        return QStringLiteral("'%1' is not HOST:PORT (an IP address or localhost, a port from 1 "
                              "to 65535)")
            .arg(text);
    host = name;
    port = uint16_t(n);
    return QString();
}
