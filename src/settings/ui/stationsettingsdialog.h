#pragma once

#include "settings/settings.h"

#include <QDialog>

class QCheckBox;
class QDialogButtonBox;
class QTabWidget;

// The "Station settings" dialog: the settings of an unattended recording
// station, beyond the documented ones. Its pages sit in a tab widget, the
// "Duplicates" page first; further pages (telemetry) are added with
// addPage(). The dialog only shows and returns the settings: the caller
// applies and stores them when exec() was accepted (OK); Cancel changes
// nothing.
class StationSettingsDialog : public QDialog {
    Q_OBJECT
public:
    explicit StationSettingsDialog(QWidget *parent = nullptr);

    void setSettings(const StationSettings &station);
    StationSettings settings() const;

    // Appends a page behind the existing ones; returns its tab index.
    int addPage(QWidget *page, const QString &title);

    QTabWidget *pages;
    QCheckBox *Check_compareHour;
    QDialogButtonBox *buttons;
};
