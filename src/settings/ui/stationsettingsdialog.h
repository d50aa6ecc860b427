#pragma once

#include "settings/settings.h"

#include <QDialog>

class QCheckBox;
class QDialogButtonBox;
class QLabel;
class QLineEdit;
class QSpinBox;
class QTabWidget;

// The "Station settings" dialog: the settings of an unattended recording
// station, beyond the documented ones. Its pages sit in a tab widget, the
// "Duplicates" page first, then "Telemetry" (the fleet's MQTT broker, with
// the connection's state as the caller reports it) and "Modbus" (the
// readings' Modbus TCP server, with its state); further pages are added
// with addPage(). The dialog only shows and returns the settings: the caller
// applies and stores them when exec() was accepted (OK) or on applied()
// (Apply); Cancel changes nothing more.
class StationSettingsDialog : public QDialog {
    Q_OBJECT
public:
    explicit StationSettingsDialog(QWidget *parent = nullptr);

    void setSettings(const StationSettings &station);
    StationSettings settings() const;

    // Appends a page behind the existing ones; returns its tab index.
    int addPage(QWidget *page, const QString &title);
    // "off", "connected", or what went wrong.
    void setTelemetryState(const QString &state);
    // "off", where it listens, or what went wrong.
    void setModbusState(const QString &state);

    QTabWidget *pages;
    QCheckBox *Check_compareHour;
    QCheckBox *Check_telemetry;
    QLineEdit *Text_mqttUrl;
    QLineEdit *Text_sensorId;
    QLineEdit *Text_mqttPrefix;
    QLineEdit *Text_mqttCaFile;
    QLineEdit *Text_mqttPasswordFile;
    QLabel *Label_telemetryState;
    QCheckBox *Check_modbus;
    QLineEdit *Text_modbusAddress;
    QSpinBox *Spin_modbusPort;
    QSpinBox *Spin_modbusUnit;
    QLabel *Label_modbusState;
    QDialogButtonBox *buttons;

signals:
    void applied(const StationSettings &station);

private:
    void addTelemetryPage();
    void addModbusPage();
};
