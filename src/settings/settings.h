#pragma once

#include "settings/registrykey.h"

#include <QString>

// The display and print choices of the operator, held beside the
// measurement store while the program runs (water in per cent lives in the
// store itself as waterDisplayPercent). The defaults are those of a first
// run.
struct DisplayFlags {
    bool displayWater = true;
    bool displayTemperature = true;
    bool displayPressure = true;
    bool displaySoot = false;
    bool printWater = true;
    bool printTemperature = false;
    bool printPressure = false;
};

// Settings of a recording station, beyond the documented ones: kept in a
// key of their own below the program's key ("Station"), so the documented
// key stays as it is.
struct StationSettings {
    // The duplicate test compares the hour too (MeasurementStore::
    // setFullStampDuplicates); off is the documented rule.
    bool compareHour = false;
    // Telemetry to the fleet's MQTT broker (the Station settings dialog's
    // "Telemetry" page; the same fields as nakos-tool record's options).
    bool telemetryOn = false;
    QString mqttUrl;          // mqtt://[user@]host[:port] or mqtts://...
    QString sensorId;         // empty: host name and port
    QString mqttPrefix;       // empty: "nakos"
    QString mqttCaFile;       // mqtts: the authorities' PEM file
    QString mqttPasswordFile; // the password never stands in the settings
    // The Modbus TCP server of the readings (the dialog's "Modbus" page; the
    // same fields as nakos-tool record's options, high word first).
    bool modbusOn = false;
    QString modbusAddress = QStringLiteral("0.0.0.0"); // an IP address; 0.0.0.0: all
    uint16_t modbusPort = 1502;
    uint8_t modbusUnit = 1;
};

namespace settings {

constexpr int programVersion = 143;

// 143 -> "1.43": the hundreds, a point, the remainder as two digits.
QString versionText(int version = programVersion);

// "Software\Velmora-Systems\NAK_OS PC-Interface 1.43"
QString keyPath();

// Reads the eight flags in their fixed order (any byte above 0 is on).
// Returns true (failed) when the key cannot be opened; nothing changes then.
[[nodiscard]] bool readRegistry(RegistryKey &key, DisplayFlags &flags, bool &waterDisplayPercent);

// Opens or creates the key and writes the eight flags as 1-byte values;
// a key that can be neither opened nor created is skipped silently.
void writeRegistry(RegistryKey &key, const DisplayFlags &flags, bool waterDisplayPercent);

// The autosave folder, or "" when it is missing, empty or longer than the
// 254 characters the program's buffer holds.
QString readAutosavePath(RegistryKey &key);

// Writes Version (143) and then AutosavePath.
void writeAutosavePath(RegistryKey &key, const QString &path);

// The device path set for port number n (value "ComPort<n>"), or "".
QString comPortDevice(RegistryKey &key, int n);

// The station key's name below the program's key.
QString stationKeyName();

// Reads the station settings from the "Station" key below `programKey`;
// true (failed) when that key is missing, and `station` keeps the defaults.
[[nodiscard]] bool readStation(RegistryKey &programKey, StationSettings &station);

// Writes them as 1-byte values (CompareHour). Only when the program's key
// is there: the station key always follows it in the settings file.
void writeStation(RegistryKey &programKey, const StationSettings &station);

} // namespace settings
