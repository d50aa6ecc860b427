#include "files/ui/datahandlingdialog.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

DataHandlingDialog::DataHandlingDialog(QWidget *parent)
    : QDialog(parent), Label1(new QLabel(QStringLiteral("Action after reading the data"), this)),
      Option1(new QRadioButton(QStringLiteral("Replace buffer content"), this)),
      Option2(new QRadioButton(QStringLiteral("Insert before buffer"), this)),
      Option3(new QRadioButton(QStringLiteral("Append to buffer"), this)),
      OKButton(new QPushButton(QStringLiteral("OK"), this)),
      CancelButton(new QPushButton(QStringLiteral("Cancel"), this)) {
    setWindowTitle(QStringLiteral("Data handling"));
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    Label1->setObjectName(QStringLiteral("Label1"));
    Option1->setObjectName(QStringLiteral("Option1"));
    Option2->setObjectName(QStringLiteral("Option2"));
    Option3->setObjectName(QStringLiteral("Option3"));
    OKButton->setObjectName(QStringLiteral("OKButton"));
    CancelButton->setObjectName(QStringLiteral("CancelButton"));
    Option1->setChecked(true);
    OKButton->setDefault(true);

    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(OKButton);
    buttons->addWidget(CancelButton);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(Label1);
    layout->addWidget(Option1);
    layout->addWidget(Option2);
    layout->addWidget(Option3);
    layout->addLayout(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);

    connect(OKButton, &QPushButton::clicked, this, &DataHandlingDialog::okClicked);
    connect(CancelButton, &QPushButton::clicked, this, &DataHandlingDialog::reject);
}

int16_t DataHandlingDialog::choose() {
    exec();
    return m_returnValue;
}

void DataHandlingDialog::okClicked() {
    m_returnValue = Option1->isChecked()   ? 1
                    : Option2->isChecked() ? 2
                    : Option3->isChecked() ? 3
                                           : 0;
    accept();
}

void DataHandlingDialog::reject() {
    m_returnValue = 0;
    QDialog::reject();
}
