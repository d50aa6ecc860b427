#pragma once

#include <QDialog>

// The About box: the program title and its version text.
class AboutDialog : public QDialog {
    Q_OBJECT
public:
    explicit AboutDialog(QWidget *parent = nullptr);
};
