#include "settings/ui/stationsettingsdialog.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QVBoxLayout>

StationSettingsDialog::StationSettingsDialog(QWidget *parent) : QDialog(parent) {
    setWindowTitle(QStringLiteral("Station settings"));
    setObjectName(QStringLiteral("StationSettings"));

    pages = new QTabWidget;
    pages->setObjectName(QStringLiteral("Tab_pages"));

    auto *duplicates = new QWidget;
    duplicates->setObjectName(QStringLiteral("Page_duplicates"));
    Check_compareHour = new QCheckBox(QStringLiteral("Compare the hour in the duplicate test"));
    Check_compareHour->setObjectName(QStringLiteral("Check_compareHour"));
    auto *note = new QLabel(QStringLiteral(
        "Without it, a reading at the same minute and second of the same day as a stored one "
        "counts as a duplicate and is dropped: a sensor logging every minute keeps only the "
        "first hour of each day."));
    note->setWordWrap(true);
    auto *dl = new QVBoxLayout(duplicates);
    dl->addWidget(Check_compareHour);
    dl->addWidget(note);
    dl->addStretch();
    addPage(duplicates, QStringLiteral("Duplicates"));
    addTelemetryPage();
    addModbusPage();

    buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel |
                                   QDialogButtonBox::Apply);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(buttons->button(QDialogButtonBox::Apply), &QPushButton::clicked, this,
            [this] { emit applied(settings()); });

    setMinimumWidth(440); // room for a broker's address
    auto *top = new QVBoxLayout(this);
    top->addWidget(pages);
    top->addWidget(buttons);
}

void StationSettingsDialog::addTelemetryPage() {
    auto *page = new QWidget;
    page->setObjectName(QStringLiteral("Page_telemetry"));
    Check_telemetry = new QCheckBox(QStringLiteral("Publish readings to an MQTT broker"));
    Check_telemetry->setObjectName(QStringLiteral("Check_telemetry"));
    const auto field = [](const char *name, const char *placeholder) {
        auto *edit = new QLineEdit;
        edit->setObjectName(QLatin1String(name));
        edit->setPlaceholderText(QLatin1String(placeholder));
        return edit;
    };
    Text_mqttUrl = field("Text_mqttUrl", "mqtt://[user@]host[:port] or mqtts://...");
    Text_sensorId = field("Text_sensorId", "host name and port");
    Text_mqttPrefix = field("Text_mqttPrefix", "nakos");
    Text_mqttCaFile = field("Text_mqttCaFile", "mqtts: PEM file of the authorities");
    Text_mqttPasswordFile = field("Text_mqttPasswordFile", "first line: the user's password");
    Label_telemetryState = new QLabel;
    Label_telemetryState->setObjectName(QStringLiteral("Label_telemetryState"));
    Label_telemetryState->setWordWrap(true);
    setTelemetryState(QStringLiteral("off"));
    auto *form = new QFormLayout;
    form->addRow(QStringLiteral("Broker:"), Text_mqttUrl);
    form->addRow(QStringLiteral("Sensor id:"), Text_sensorId);
    form->addRow(QStringLiteral("Topic prefix:"), Text_mqttPrefix);
    form->addRow(QStringLiteral("CA file:"), Text_mqttCaFile);
    form->addRow(QStringLiteral("Password file:"), Text_mqttPasswordFile);
    form->addRow(QStringLiteral("Connection:"), Label_telemetryState);
    auto *tl = new QVBoxLayout(page);
    tl->addWidget(Check_telemetry);
    tl->addLayout(form);
    tl->addStretch();
    addPage(page, QStringLiteral("Telemetry"));
}

void StationSettingsDialog::addModbusPage() {
    auto *page = new QWidget;
    page->setObjectName(QStringLiteral("Page_modbus"));
    Check_modbus = new QCheckBox(QStringLiteral("Serve the readings over Modbus TCP"));
    Check_modbus->setObjectName(QStringLiteral("Check_modbus"));
    Text_modbusAddress = new QLineEdit;
    Text_modbusAddress->setObjectName(QStringLiteral("Text_modbusAddress"));
    Text_modbusAddress->setPlaceholderText(QStringLiteral("0.0.0.0: every interface"));
    const auto spin = [](const char *name, int lo, int hi) {
        auto *box = new QSpinBox;
        box->setObjectName(QLatin1String(name));
        box->setRange(lo, hi);
        return box;
    };
    Spin_modbusPort = spin("Spin_modbusPort", 1, 65535);
    Spin_modbusUnit = spin("Spin_modbusUnit", 0, 255);
    Label_modbusState = new QLabel;
    Label_modbusState->setObjectName(QStringLiteral("Label_modbusState"));
    Label_modbusState->setWordWrap(true);
    setModbusState(QStringLiteral("off"));
    auto *note = new QLabel(QStringLiteral(
        "Read-only input and holding registers from address 0: water, temperature, pressure, "
        "soot and the alarm threshold as floats (high word first), then stream, alarm, link, "
        "seconds since the last reading, readings counter and the reading's time. Ports below "
        "1024 need privileges."));
    note->setWordWrap(true);
    auto *form = new QFormLayout;
    form->addRow(QStringLiteral("Address:"), Text_modbusAddress);
    form->addRow(QStringLiteral("Port:"), Spin_modbusPort);
    form->addRow(QStringLiteral("Unit id:"), Spin_modbusUnit);
    form->addRow(QStringLiteral("Server:"), Label_modbusState);
    auto *ml = new QVBoxLayout(page);
    ml->addWidget(Check_modbus);
    ml->addLayout(form);
    ml->addWidget(note);
    ml->addStretch();
    addPage(page, QStringLiteral("Modbus"));
}

void StationSettingsDialog::setModbusState(const QString &state) {
    Label_modbusState->setText(state);
}

void StationSettingsDialog::setTelemetryState(const QString &state) {
    Label_telemetryState->setText(state);
}

void StationSettingsDialog::setSettings(const StationSettings &station) {
    Check_compareHour->setChecked(station.compareHour);
    Check_telemetry->setChecked(station.telemetryOn);
    Text_mqttUrl->setText(station.mqttUrl);
    Text_sensorId->setText(station.sensorId);
    Text_mqttPrefix->setText(station.mqttPrefix);
    Text_mqttCaFile->setText(station.mqttCaFile);
    Text_mqttPasswordFile->setText(station.mqttPasswordFile);
    Check_modbus->setChecked(station.modbusOn);
    Text_modbusAddress->setText(station.modbusAddress);
    Spin_modbusPort->setValue(station.modbusPort);
    Spin_modbusUnit->setValue(station.modbusUnit);
}

StationSettings StationSettingsDialog::settings() const {
    StationSettings station;
    station.compareHour = Check_compareHour->isChecked();
    station.telemetryOn = Check_telemetry->isChecked();
    station.mqttUrl = Text_mqttUrl->text().trimmed();
    station.sensorId = Text_sensorId->text().trimmed();
    station.mqttPrefix = Text_mqttPrefix->text().trimmed();
    station.mqttCaFile = Text_mqttCaFile->text().trimmed();
    station.mqttPasswordFile = Text_mqttPasswordFile->text().trimmed();
    station.modbusOn = Check_modbus->isChecked();
    station.modbusAddress = Text_modbusAddress->text().trimmed();
    station.modbusPort = uint16_t(Spin_modbusPort->value());
    station.modbusUnit = uint8_t(Spin_modbusUnit->value());
    return station;
}

int StationSettingsDialog::addPage(QWidget *page, const QString &title) {
    return pages->addTab(page, title);
}
