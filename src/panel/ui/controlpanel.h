#pragma once

#include <QMdiSubWindow>
#include <QTimer>

#include <array>
#include <cstdint>

class MonitorSession;
class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;

// The control panel (`main_control`): the operator's window for the serial
// port, starting and stopping the periodic query, the oil name, and the
// store's statistics (point count or "DATA POINT MEMORY FULL!", first and
// last time stamp, refreshed every 500 ms). The oil stream selector and the
// logo are kept hidden but fully wired: choosing a stream goes to the
// session, which filters the charts. Every choice is a session command; the
// panel changes neither the store nor the link itself.
class ControlPanel : public QMdiSubWindow {
    Q_OBJECT
public:
    // 4770 x 5100 twips at 15 twips a pixel.
    static constexpr int startWidth = 318;
    static constexpr int startHeight = 340;

    explicit ControlPanel(MonitorSession &session, QWidget *parent = nullptr);
    ~ControlPanel() override;

    bool dataview_getState_active() const { return m_active; }
    void data_statistics_update();
    // The text box's content, trimmed, becomes the store's oil name.
    void oilName_update();
    // Shows the name (the session's oilName_set calls this through its
    // signal); a changed text is stored trimmed by the box's change handler.
    void oilName_show(const QString &name);
    // The port choice: comPort = selected entry + 1 (0 with none selected).
    void Combo1_Validate();
    // Selects the entry "COM n" and applies it, as a user choosing it and
    // leaving the list would.
    void selectPort(int n);

    QGroupBox *Frame1 = nullptr;
    QComboBox *Combo1 = nullptr;
    QPushButton *Command1 = nullptr;
    QLabel *Label1 = nullptr;
    QLineEdit *Text_oilName = nullptr;
    QLabel *Label1_data = nullptr;
    QLabel *Label2_data = nullptr;
    // Beneath the counts, in red, while the newest reading's water is above
    // the alarm threshold; hidden otherwise.
    QLabel *Label_alarm = nullptr;
    QGroupBox *Frame2 = nullptr;
    std::array<QRadioButton *, 6> Option_oilStream{};
    QRadioButton *Option_oilStream_any = nullptr;
    QLabel *Picture_logo = nullptr;
    QTimer Timer1;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void Command1_Click();
    void selectStream(int16_t stream);
    void updatePortTips();

    MonitorSession &m_session;
    QMetaObject::Connection m_stateConnection;
    bool m_active = false;
};
