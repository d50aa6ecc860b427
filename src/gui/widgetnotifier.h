#pragma once

#include "core/notifier.h"

class QWidget;

// Shows the program's messages in QMessageBox dialogs over the main window.
class WidgetNotifier : public Notifier {
public:
    explicit WidgetNotifier(QWidget *parent = nullptr) : m_parent(parent) {}
    void setParent(QWidget *parent) { m_parent = parent; }

    Answer message(const QString &text, const QString &title, Buttons buttons, Icon icon) override;
    void notice(const QString &text, Icon icon) override;

private:
    QWidget *m_parent;
};
