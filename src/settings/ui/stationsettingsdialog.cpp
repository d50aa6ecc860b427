#include "settings/ui/stationsettingsdialog.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
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
    return station;
}

int StationSettingsDialog::addPage(QWidget *page, const QString &title) {
    return pages->addTab(page, title);
}
