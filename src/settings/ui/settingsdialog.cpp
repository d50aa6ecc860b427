#include "settings/ui/settingsdialog.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace {

template <typename T> T *named(T *w, const char *name) {
    w->setObjectName(QLatin1String(name));
    return w;
}

} // namespace

SettingsDialog::SettingsDialog(RegistryKey &key, DisplayFlags &flags, bool &waterDisplayPercent,
                               QWidget *parent)
    : QDialog(parent), m_key(key), m_flags(flags), m_waterPercent(waterDisplayPercent) {
    setWindowTitle(QStringLiteral("Settings"));
    setObjectName(QStringLiteral("Settings"));

    auto *display = named(new QGroupBox(QStringLiteral("Display")), "Frame_display");
    Check_displayWater = named(new QCheckBox(QStringLiteral("Water")), "Check_displayWater");
    Check_displayTemperature =
        named(new QCheckBox(QStringLiteral("Temperature")), "Check_displayTemperature");
    Check_displayPressure =
        named(new QCheckBox(QStringLiteral("Pressure")), "Check_displayPressure");
    Check_displaySoot = named(new QCheckBox(QStringLiteral("Soot")), "Check_displaySoot");
    Option_displayWater_ppm =
        named(new QRadioButton(QStringLiteral("PPM display")), "Option_displayWater_ppm");
    Option_displayWater_percent =
        named(new QRadioButton(QStringLiteral("% display")), "Option_displayWater_percent");
    auto *dl = new QVBoxLayout(display);
    for (QWidget *w :
         {static_cast<QWidget *>(Check_displayWater),
          static_cast<QWidget *>(Check_displayTemperature),
          static_cast<QWidget *>(Check_displayPressure), static_cast<QWidget *>(Check_displaySoot),
          static_cast<QWidget *>(Option_displayWater_ppm),
          static_cast<QWidget *>(Option_displayWater_percent)})
        dl->addWidget(w);

    auto *printing = named(new QGroupBox(QStringLiteral("Printing")), "Frame_printing");
    Check_printWater = named(new QCheckBox(QStringLiteral("Water")), "Check_printWater");
    Check_printTemperature =
        named(new QCheckBox(QStringLiteral("Temperature")), "Check_printTemperature");
    Check_printPressure = named(new QCheckBox(QStringLiteral("Pressure")), "Check_printPressure");
    auto *pl = new QVBoxLayout(printing);
    pl->addWidget(Check_printWater);
    pl->addWidget(Check_printTemperature);
    pl->addWidget(Check_printPressure);
    pl->addStretch();

    Command_OK = named(new QPushButton(QStringLiteral("OK")), "Command_OK");
    Command_OK->setDefault(true);

    auto *frames = new QHBoxLayout;
    frames->addWidget(display);
    frames->addWidget(printing);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(Command_OK);
    auto *top = new QVBoxLayout(this);
    top->addLayout(frames);
    top->addLayout(buttons);

    connect(Command_OK, &QPushButton::clicked, this, &SettingsDialog::onOk);
    flagsToControls();
    // The soot box always opens unchecked, whatever the stored flag says;
    // the flag keeps its value until the next OK.
    Check_displaySoot->setChecked(false);
}

void SettingsDialog::flagsToControls() {
    setControls(m_flags, m_waterPercent);
}

void SettingsDialog::setControls(const DisplayFlags &flags, bool waterPercent) {
    Check_displayWater->setChecked(flags.displayWater);
    Check_displayTemperature->setChecked(flags.displayTemperature);
    Check_displayPressure->setChecked(flags.displayPressure);
    Check_displaySoot->setChecked(flags.displaySoot);
    Check_printWater->setChecked(flags.printWater);
    Check_printTemperature->setChecked(flags.printTemperature);
    Check_printPressure->setChecked(flags.printPressure);
    Option_displayWater_percent->setChecked(waterPercent);
    Option_displayWater_ppm->setChecked(!waterPercent);
}

void SettingsDialog::controlsToFlags() {
    m_flags.displayWater = Check_displayWater->isChecked();
    m_flags.displayTemperature = Check_displayTemperature->isChecked();
    m_flags.displayPressure = Check_displayPressure->isChecked();
    m_flags.displaySoot = Check_displaySoot->isChecked();
    m_flags.printWater = Check_printWater->isChecked();
    m_flags.printTemperature = Check_printTemperature->isChecked();
    m_flags.printPressure = Check_printPressure->isChecked();
    m_waterPercent = Option_displayWater_percent->isChecked();
}

void SettingsDialog::onOk() {
    controlsToFlags();
    settings::writeRegistry(m_key, m_flags, m_waterPercent);
    accept();
}
