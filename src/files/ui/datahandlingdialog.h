#pragma once

#include <QDialog>

#include <cstdint>

class QLabel;
class QPushButton;
class QRadioButton;

// The "Data handling" dialog: how records read from a file enter the store
// (1 replace, 2 insert before, 3 append; 0 after Cancel). It is created once
// and kept, so the last choice stays selected for the next use; "Replace
// buffer content" is selected the first time.
class DataHandlingDialog : public QDialog {
    Q_OBJECT
public:
    explicit DataHandlingDialog(QWidget *parent = nullptr);

    // The result of the last OK or Cancel (0 until the first one).
    int16_t get_returnValue() const { return m_returnValue; }
    // Shows the dialog modally and returns its result.
    int16_t choose();

    void reject() override; // Cancel, Escape and the close button alike

private:
    void okClicked();

    QLabel *Label1;
    QRadioButton *Option1;
    QRadioButton *Option2;
    QRadioButton *Option3;
    QPushButton *OKButton;
    QPushButton *CancelButton;
    int16_t m_returnValue = 0;
};
