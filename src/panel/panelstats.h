#pragma once

#include <QDateTime>
#include <QString>

#include <cstdint>

class MeasurementStore;
struct LinkHealth;

// The control panel's statistics and port choice as plain functions, so
// they can be tested without a window.
namespace panel {

// "0 data points in memory", "1 data point in memory", ..., or
// "DATA POINT MEMORY FULL!" from the store's capacity on.
QString countText(int32_t count);

// "yyyy-mm-dd hh:mm:ss  -  yyyy-mm-dd hh:mm:ss" from the first and the
// last stored point; empty for an empty store.
QString spanText(const MeasurementStore &store);

// "Water above alarm limit: 612 ppm at 2026-11-23 15:02:13" while the newest
// stored reading's water is above the alarm threshold the sensor reported;
// empty when it is not, when the store is empty or when no threshold is
// known (below 0). Water in whole ppm, as the data file writes it.
QString alarmText(const MeasurementStore &store);

// The port number of a "COM n" list entry: index + 1, and 0 when no entry
// is selected (index -1).
int16_t portFromIndex(int index);

// The entries of the port list: "COM 1" .. "COM 19".
constexpr int portEntries = 19;
QString portEntry(int number);

// The tooltip of a port list entry: the device behind it, after its stable
// name when it has one ("/dev/serial/by-id/usb-... (/dev/ttyUSB0)"), or
// "no such port".
QString portTip(const QString &device, const QString &stableName);

// The link's health for the tooltip of the query button, one item a line:
// polls with readings, polls without port, replies without echo, bytes
// received, and the age of the last new reading at `now` ("last reading
// 12 s ago", in minutes from 2 minutes on, in hours from 2 hours on) or
// "no reading yet".
QString healthText(const LinkHealth &health, const QDateTime &now);

} // namespace panel
