#include "device/ui/toolbox.h"

#include "session/monitorsession.h"

#include <QHBoxLayout>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

Toolbox::Toolbox(MonitorSession &session, QWidget *parent) : QDialog(parent), m_session(session) {
    setObjectName(QStringLiteral("Toolbox"));
    setWindowTitle(QStringLiteral("Toolbox"));
    Text_command = new QLineEdit;
    Text_command->setObjectName(QStringLiteral("Text_command"));
    Command_send = new QPushButton(QStringLiteral("Send"));
    Command_send->setObjectName(QStringLiteral("Command_send"));
    Command_send->setDefault(true);
    Command_clear = new QPushButton(QStringLiteral("Clear"));
    Command_clear->setObjectName(QStringLiteral("Command_clear"));
    Text_replies = new QPlainTextEdit;
    Text_replies->setObjectName(QStringLiteral("Text_replies"));
    Text_replies->setReadOnly(true);
    Text_replies->setFont(QFont(QStringLiteral("monospace")));

    auto *line = new QHBoxLayout;
    line->addWidget(Text_command, 1);
    line->addWidget(Command_send);
    line->addWidget(Command_clear);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(line);
    layout->addWidget(Text_replies, 1);
    resize(560, 400);

    connect(Command_send, &QPushButton::clicked, this, &Toolbox::send);
    // Return in the command line presses the default button: one send.
    connect(Command_clear, &QPushButton::clicked, Text_replies, &QPlainTextEdit::clear);
}

void Toolbox::send() {
    const QString command = Text_command->text();
    if (command.isEmpty())
        return;
    m_session.device_query(command, this,
                           [this, command](const QString &reply) { showReply(command, reply); });
    // Kept for sending again; typing replaces it.
    Text_command->selectAll();
}

void Toolbox::showReply(const QString &command, const QString &reply) {
    const QString block = QLatin1String("> ") + command + QLatin1Char('\n') +
                          (reply.isEmpty() ? QStringLiteral("(no reply)") : visibleReply(reply));
    // Newest first.
    const QString old = Text_replies->toPlainText();
    Text_replies->setPlainText(old.isEmpty() ? block : block + QLatin1String("\n\n") + old);
}

QString Toolbox::visibleReply(const QString &reply) {
    QString shown;
    shown.reserve(reply.size() + reply.size() / 8);
    for (const QChar c : reply) {
        if (c == QLatin1Char('\r'))
            shown += QLatin1String("<CR>");
        else if (c == QLatin1Char('\n'))
            shown += QLatin1String("<LF>\n");
        else if (c.unicode() == 0)
            shown += QLatin1String("<NUL>");
        else
            shown += c;
    }
    return shown;
}
