#pragma once

#include <QDialog>

class MonitorSession;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;

// The service console ("Toolbox"): a command line sent to the sensor as one
// exchange of its own (the command and CR LF), and the raw replies, newest
// first, with CR and LF made visible. The exchange queues behind a poll
// that is running, so it never interleaves with the periodic query; a port
// that cannot be opened is reported every time. Each reply is shown under
// the command that caused it; a command still waiting when the window
// closes is never sent.
class Toolbox : public QDialog {
    Q_OBJECT
public:
    explicit Toolbox(MonitorSession &session, QWidget *parent = nullptr);

    void send();
    // The reply as shown: CR as "<CR>", LF as "<LF>" and a line break, NUL
    // as "<NUL>"; other bytes as they are.
    static QString visibleReply(const QString &reply);

    QLineEdit *Text_command = nullptr;
    QPushButton *Command_send = nullptr;
    QPushButton *Command_clear = nullptr;
    QPlainTextEdit *Text_replies = nullptr;

private:
    void showReply(const QString &command, const QString &reply);

    MonitorSession &m_session;
};
