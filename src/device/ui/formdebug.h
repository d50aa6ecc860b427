#pragma once

#include <QWidget>

class QPlainTextEdit;

// The link's trace window ("NAK_OS Debug"): one text box that callers may
// append to while chasing a problem. Nothing traces into it by default, so
// serial traffic costs nothing when nobody looks.
class Form_debug : public QWidget {
    Q_OBJECT
public:
    explicit Form_debug(QWidget *parent = nullptr);

    // Appends the text as it is (no separator, no line break) and paints it
    // at once, without running the event loop.
    void dout(const QString &text);

    QPlainTextEdit *Text1;
};
