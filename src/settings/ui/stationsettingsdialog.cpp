#include "settings/ui/stationsettingsdialog.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QLabel>
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

    buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *top = new QVBoxLayout(this);
    top->addWidget(pages);
    top->addWidget(buttons);
}

void StationSettingsDialog::setSettings(const StationSettings &station) {
    Check_compareHour->setChecked(station.compareHour);
}

StationSettings StationSettingsDialog::settings() const {
    StationSettings station;
    station.compareHour = Check_compareHour->isChecked();
    return station;
}

int StationSettingsDialog::addPage(QWidget *page, const QString &title) {
    return pages->addTab(page, title);
}
