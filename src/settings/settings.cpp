#include "settings/settings.h"

#include "settings/filekey.h"

#include <QDir>
#include <QStandardPaths>

namespace settings {

namespace {

// Flag value names in the order they are read and written.
const char *const kFlagNames[8] = {"DisplayWater",  "DisplayTemperature", "DisplayPressure",
                                   "DisplaySoot",   "PrintWater",         "PrintTemperature",
                                   "PrintPressure", "WaterDisplayPercent"};

// The registry query buffer of the autosave path: 254 characters and the
// terminating zero.
constexpr int kPathBuffer = 255;

} // namespace

QString versionText(int version) {
    return QString::number(version / 100) + QLatin1Char('.') +
           QString::number(version % 100).rightJustified(2, QLatin1Char('0'));
}

QString keyPath() {
    return QLatin1String("Software\\Velmora-Systems\\NAK_OS PC-Interface ") + versionText();
}

bool readRegistry(RegistryKey &key, DisplayFlags &flags, bool &waterDisplayPercent) {
    if (key.open())
        return true;
    bool *const targets[8] = {&flags.displayWater,    &flags.displayTemperature,
                              &flags.displayPressure, &flags.displaySoot,
                              &flags.printWater,      &flags.printTemperature,
                              &flags.printPressure,   &waterDisplayPercent};
    for (int i = 0; i < 8; ++i) {
        uint8_t byte = 0;
        if (!key.queryByte(QLatin1String(kFlagNames[i]), byte))
            *targets[i] = byte > 0;
    }
    key.close();
    return false;
}

void writeRegistry(RegistryKey &key, const DisplayFlags &flags, bool waterDisplayPercent) {
    if (key.openOrCreate())
        return;
    const bool values[8] = {flags.displayWater,  flags.displayTemperature, flags.displayPressure,
                            flags.displaySoot,   flags.printWater,         flags.printTemperature,
                            flags.printPressure, waterDisplayPercent};
    for (int i = 0; i < 8; ++i)
        key.setByte(QLatin1String(kFlagNames[i]), values[i] ? 1 : 0);
    key.close();
}

QString readAutosavePath(RegistryKey &key) {
    if (key.open())
        return QString();
    QString path;
    if (key.queryString(QStringLiteral("AutosavePath"), kPathBuffer, path) || path.isEmpty())
        path.clear();
    key.close();
    return path;
}

void writeAutosavePath(RegistryKey &key, const QString &path) {
    if (key.openOrCreate())
        return;
    key.setDword(QStringLiteral("Version"), uint32_t(programVersion));
    key.setString(QStringLiteral("AutosavePath"), path);
    key.close();
}

QString comPortDevice(RegistryKey &key, int n) {
    if (key.open())
        return QString();
    QString device;
    if (key.queryString(QStringLiteral("ComPort") + QString::number(n), 1024, device))
        device.clear();
    key.close();
    return device;
}

QString stationKeyName() {
    return QStringLiteral("Station");
}

bool readStation(RegistryKey &programKey, StationSettings &station) {
    const std::unique_ptr<RegistryKey> key = programKey.subKey(stationKeyName());
    if (key->open())
        return true;
    uint8_t b = 0;
    if (!key->queryByte(QStringLiteral("CompareHour"), b))
        station.compareHour = b > 0;
    if (!key->queryByte(QStringLiteral("Telemetry"), b))
        station.telemetryOn = b > 0;
    const std::pair<const char *, QString *> texts[] = {
        {"MqttUrl", &station.mqttUrl},
        {"SensorId", &station.sensorId},
        {"MqttPrefix", &station.mqttPrefix},
        {"MqttCaFile", &station.mqttCaFile},
        {"MqttPasswordFile", &station.mqttPasswordFile}};
    for (const auto &[name, field] : texts) {
        QString value;
        if (!key->queryString(QLatin1String(name), 1024, value))
            *field = value;
    }
    if (!key->queryByte(QStringLiteral("Modbus"), b))
        station.modbusOn = b > 0;
    if (QString value; !key->queryString(QStringLiteral("ModbusAddress"), 1024, value))
        station.modbusAddress = value;
    if (uint32_t n = 0; !key->queryDword(QStringLiteral("ModbusPort"), n) && n >= 1 && n <= 65535)
        station.modbusPort = uint16_t(n);
    if (uint32_t n = 0; !key->queryDword(QStringLiteral("ModbusUnit"), n) && n <= 255)
        station.modbusUnit = uint8_t(n);
    key->close();
    return false;
}

void writeStation(RegistryKey &programKey, const StationSettings &station) {
    if (programKey.open())
        return;
    programKey.close();
    const std::unique_ptr<RegistryKey> key = programKey.subKey(stationKeyName());
    if (key->openOrCreate())
        return;
    key->setByte(QStringLiteral("CompareHour"), station.compareHour ? 1 : 0);
    key->setByte(QStringLiteral("Telemetry"), station.telemetryOn ? 1 : 0);
    key->setString(QStringLiteral("MqttUrl"), station.mqttUrl);
    key->setString(QStringLiteral("SensorId"), station.sensorId);
    key->setString(QStringLiteral("MqttPrefix"), station.mqttPrefix);
    key->setString(QStringLiteral("MqttCaFile"), station.mqttCaFile);
    key->setString(QStringLiteral("MqttPasswordFile"), station.mqttPasswordFile);
    key->setByte(QStringLiteral("Modbus"), station.modbusOn ? 1 : 0);
    key->setString(QStringLiteral("ModbusAddress"), station.modbusAddress);
    key->setDword(QStringLiteral("ModbusPort"), station.modbusPort);
    key->setDword(QStringLiteral("ModbusUnit"), station.modbusUnit);
    key->close();
}

} // namespace settings

QString settingsFilePath() {
    const QString env = qEnvironmentVariable("NAKOS_SETTINGS_FILE");
    if (!env.isEmpty())
        return env;
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QLatin1String("/Velmora-Systems/NAK_OS PC-Interface.reg");
}

#ifndef Q_OS_WIN
std::unique_ptr<RegistryKey> openProgramKey() {
    return std::make_unique<FileRegistryKey>(
        settingsFilePath(), QLatin1String("HKEY_LOCAL_MACHINE\\") + settings::keyPath());
}
#endif
