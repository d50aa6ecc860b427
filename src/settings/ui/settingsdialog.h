#pragma once

#include "settings/settings.h"

#include <QDialog>

class QCheckBox;
class QRadioButton;
class QPushButton;

// The "Settings" dialog: which quantities are shown and printed, and water
// in ppm or per cent. Created once at start-up, right after the stored
// choices were loaded (or the defaults of a first run stored), and
// afterwards only shown and hidden. OK takes the controls into the flags
// and writes them; closing the dialog any other way changes nothing.
class SettingsDialog : public QDialog {
    Q_OBJECT
public:
    SettingsDialog(RegistryKey &key, DisplayFlags &flags, bool &waterDisplayPercent,
                   QWidget *parent = nullptr);

    void flagsToControls();
    void controlsToFlags();

    QCheckBox *Check_displayWater;
    QCheckBox *Check_displayTemperature;
    QCheckBox *Check_displayPressure;
    QCheckBox *Check_displaySoot;
    QRadioButton *Option_displayWater_ppm;
    QRadioButton *Option_displayWater_percent;
    QCheckBox *Check_printWater;
    QCheckBox *Check_printTemperature;
    QCheckBox *Check_printPressure;
    QPushButton *Command_OK;

private:
    void setControls(const DisplayFlags &flags, bool waterPercent);
    void onOk();

    RegistryKey &m_key;
    DisplayFlags &m_flags;
    bool &m_waterPercent;
};
