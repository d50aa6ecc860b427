#include "device/ui/formdebug.h"

#include <QPlainTextEdit>
#include <QTextCursor>
#include <QVBoxLayout>

Form_debug::Form_debug(QWidget *parent) : QWidget(parent, Qt::Window) {
    setWindowTitle(QStringLiteral("NAK_OS Debug"));
    Text1 = new QPlainTextEdit(this);
    Text1->setObjectName(QStringLiteral("Text1"));
    Text1->setPlainText(QString());
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(Text1);
    resize(480, 320);
}

void Form_debug::dout(const QString &text) {
    QTextCursor end(Text1->document());
    end.movePosition(QTextCursor::End);
    end.insertText(text);
    Text1->setTextCursor(end);
    if (Text1->isVisible())
        Text1->viewport()->repaint();
}
