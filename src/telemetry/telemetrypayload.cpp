#include "telemetry/telemetrypayload.h"

#include "core/store.h"
#include "device/linkhealth.h"
#include "files/textformat.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cmath>

namespace {

void appendString(QByteArray &out, const QString &text) {
    out += '"';
    for (const QChar c : text) {
        const char16_t u = c.unicode();
        if (u == '"' || u == '\\') {
            out += '\\';
            out += char(u);
        } else if (u < 0x20) {
            out += "\\u00";
            out += "0123456789abcdef"[u >> 4];
            out += "0123456789abcdef"[u & 15];
        } else {
            out += QString(c).toUtf8();
        }
    }
    out += '"';
}

void appendNumber(QByteArray &out, float value, int decimals) {
    if (!std::isfinite(value)) {
        out += "null";
        return;
    }
    char text[textformat::maxFixedLength];
    out.append(text, textformat::formatFixed(value, decimals, '.', text));
}

void appendKey(QByteArray &out, const char *key) {
    out += out.size() > 1 ? ",\"" : "\"";
    out += key;
    out += "\":";
}

QByteArray stamp(const DataPoint &p) {
    char text[19];
    textformat::writeDate(p, text);
    text[10] = 'T';
    textformat::writeTime(p, text + 11);
    return QByteArray(text, 19);
}

void appendTable(QByteArray &out, const CalTable &table) {
    out += '[';
    const int count = std::clamp<int>(table.count, 0, CalTable::capacity);
    for (int i = 0; i < count; ++i) {
        out += i > 0 ? ",[" : "[";
        appendNumber(out, table.pairs[i].first, 5);
        out += ',';
        appendNumber(out, table.pairs[i].second, 0);
        out += ']';
    }
    out += ']';
}

bool readTable(const QJsonValue &value, CalTable &table) {
    if (!value.isArray())
        return true;
    const QJsonArray rows = value.toArray();
    if (rows.size() > CalTable::capacity)
        return true;
    CalTable t;
    for (const QJsonValue &row : rows) {
        const QJsonArray pair = row.toArray();
        if (pair.size() != 2 || !pair[0].isDouble() || !pair[1].isDouble())
            return true;
        t.pairs[t.count++] = {float(pair[0].toDouble()), float(pair[1].toDouble())};
    }
    table = t;
    return false;
}

} // namespace

QByteArray telemetry_readingJson(const QString &sensor, const DataPoint &p) {
    QByteArray out;
    out.reserve(200);
    out += '{';
    appendKey(out, "sensor");
    appendString(out, sensor);
    appendKey(out, "time");
    out += '"' + stamp(p) + '"';
    appendKey(out, "water_ppm");
    appendNumber(out, p.water, 0);
    appendKey(out, "temperature_c");
    appendNumber(out, p.temperature, 2);
    appendKey(out, "pressure_mbar");
    appendNumber(out, p.pressure, 2);
    appendKey(out, "soot_pct");
    appendNumber(out, p.soot, 2);
    appendKey(out, "stream");
    appendNumber(out, float(p.stream), 0);
    appendKey(out, "adc_ref");
    appendNumber(out, p.adc_ref, 0);
    appendKey(out, "adc_meas");
    appendNumber(out, p.adc_meas, 0);
    out += '}';
    return out;
}

bool telemetry_parseReading(QByteArrayView json, DataPoint &p) {
    const QJsonObject o = QJsonDocument::fromJson(json.toByteArray()).object();
    const QString time = o.value(QLatin1String("time")).toString();
    // yyyy-mm-ddThh:mm:ss
    if (time.size() != 19 || time[4] != QLatin1Char('-') || time[7] != QLatin1Char('-') ||
        time[10] != QLatin1Char('T') || time[13] != QLatin1Char(':') ||
        time[16] != QLatin1Char(':'))
        return true;
    bool ok[6];
    DataPoint r;
    r.year = int16_t(time.mid(0, 4).toInt(&ok[0]));
    r.month = uint8_t(time.mid(5, 2).toUInt(&ok[1]));
    r.day = uint8_t(time.mid(8, 2).toUInt(&ok[2]));
    r.hour = uint8_t(time.mid(11, 2).toUInt(&ok[3]));
    r.minute = uint8_t(time.mid(14, 2).toUInt(&ok[4]));
    r.second = uint8_t(time.mid(17, 2).toUInt(&ok[5]));
    if (!std::all_of(std::begin(ok), std::end(ok), [](bool b) { return b; }) ||
        !dataPoint_isValid(r))
        return true;
    const char *keys[] = {"water_ppm", "temperature_c", "pressure_mbar", "soot_pct",
                          "stream",    "adc_ref",       "adc_meas"};
    float values[7];
    for (int i = 0; i < 7; ++i) {
        const QJsonValue v = o.value(QLatin1String(keys[i]));
        if (!v.isDouble())
            return true;
        values[i] = float(v.toDouble());
    }
    r.water = values[0];
    r.temperature = values[1];
    r.pressure = values[2];
    r.soot = values[3];
    r.stream = textformat::streamNumber(values[4]);
    r.adc_ref = values[5];
    r.adc_meas = values[6];
    p = r;
    return false;
}

QByteArray telemetry_statusJson(bool online, const LinkHealth &health, int readings,
                                qint64 outbox) {
    QByteArray out = "{";
    appendKey(out, "state");
    out += online ? "\"online\"" : "\"offline\"";
    appendKey(out, "polls_with_readings");
    out += QByteArray::number(health.pollsWithReadings);
    appendKey(out, "polls_without_port");
    out += QByteArray::number(health.pollsWithoutPort);
    appendKey(out, "replies_without_echo");
    out += QByteArray::number(health.repliesWithoutEcho);
    appendKey(out, "bytes_received");
    out += QByteArray::number(health.bytesReceived);
    appendKey(out, "last_reading");
    if (health.lastReading.isValid())
        appendString(out, health.lastReading.toUTC().toString(Qt::ISODate));
    else
        out += "null";
    appendKey(out, "readings");
    out += QByteArray::number(readings);
    appendKey(out, "outbox");
    out += QByteArray::number(outbox);
    out += '}';
    return out;
}

QByteArray telemetry_offlineJson() {
    return QByteArrayLiteral("{\"state\":\"offline\"}");
}

QByteArray telemetry_metaJson(const QString &sensor, const MeasurementStore &store) {
    QByteArray out = "{";
    appendKey(out, "sensor");
    appendString(out, sensor);
    appendKey(out, "oil_name");
    appendString(out, store.oilName);
    appendKey(out, "alarm_threshold");
    if (store.alarmThreshold < 0)
        out += "null";
    else
        appendNumber(out, store.alarmThreshold, 0);
    appendKey(out, "alarm_delay");
    if (store.alarmDelay < 0)
        out += "null";
    else
        appendNumber(out, store.alarmDelay, 0);
    appendKey(out, "cal_source");
    appendTable(out, store.calSource);
    appendKey(out, "cal_table");
    appendTable(out, store.calTable);
    out += '}';
    return out;
}

bool telemetry_parseMeta(QByteArrayView json, MeasurementStore &store) {
    const QJsonObject o = QJsonDocument::fromJson(json.toByteArray()).object();
    const QJsonValue oil = o.value(QLatin1String("oil_name"));
    const QJsonValue alarm = o.value(QLatin1String("alarm_threshold"));
    const QJsonValue delay = o.value(QLatin1String("alarm_delay")); // may be missing
    CalTable source, table;
    if (!oil.isString() || !(alarm.isNull() || alarm.isDouble()) ||
        !(delay.isNull() || delay.isUndefined() || delay.isDouble()) ||
        readTable(o.value(QLatin1String("cal_source")), source) ||
        readTable(o.value(QLatin1String("cal_table")), table))
        return true;
    store.oilName = oil.toString();
    store.alarmThreshold = alarm.isNull() ? -1.0f : float(alarm.toDouble());
    store.alarmDelay = delay.isDouble() ? float(delay.toDouble()) : -1.0f;
    store.calSource = source;
    store.calTable = table;
    return false;
}
