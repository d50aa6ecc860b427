#pragma once

#include "core/datapoint.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

class MeasurementStore;
struct LinkHealth;

// The JSON texts of the telemetry topics, written by hand so the keys keep
// their documented order; numbers carry the decimals of the native data
// file (water, the ADC values and the stream whole, pressure, temperature
// and soot with two, calibration inputs with five) and never an exponent.

// <prefix>/<sensor>/reading: {"sensor":..,"time":"yyyy-mm-ddThh:mm:ss",
// "water_ppm":..,"temperature_c":..,"pressure_mbar":..,"soot_pct":..,
// "stream":..,"adc_ref":..,"adc_meas":..}; the time is the sensor's own
// stamp, without a zone.
QByteArray telemetry_readingJson(const QString &sensor, const DataPoint &p);

// Reads a reading message back into p; true (failed) when it is not one.
bool telemetry_parseReading(QByteArrayView json, DataPoint &p);

// <prefix>/<sensor>/status: {"state":"online"|"offline", then the link's
// counters, the readings in memory and the messages waiting in the outbox}.
QByteArray telemetry_statusJson(bool online, const LinkHealth &health, int readings, qint64 outbox);
// The last will: {"state":"offline"}.
QByteArray telemetry_offlineJson();

// <prefix>/<sensor>/meta: {"sensor":..,"oil_name":..,"alarm_threshold":..
// (null when none),"cal_source":[[input,value],..],"cal_table":[..]}.
QByteArray telemetry_metaJson(const QString &sensor, const MeasurementStore &store);

// Takes a meta message's oil name, alarm threshold and calibration tables
// into the store; true (failed) when it is not one (the store is then left
// as it was).
bool telemetry_parseMeta(QByteArrayView json, MeasurementStore &store);
