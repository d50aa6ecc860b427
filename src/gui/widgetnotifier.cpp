#include "gui/widgetnotifier.h"

#include "core/title.h"

#include <QMessageBox>

Notifier::Answer WidgetNotifier::message(const QString &text, const QString &title, Buttons buttons,
                                         Icon icon) {
    QMessageBox box(m_parent);
    box.setText(text);
    box.setWindowTitle(title.isNull() ? QLatin1String(kProgramTitle) : title);
    switch (icon) {
    case Icon::None:
        box.setIcon(QMessageBox::NoIcon);
        break;
    case Icon::Information:
        box.setIcon(QMessageBox::Information);
        break;
    case Icon::Question:
        box.setIcon(QMessageBox::Question);
        break;
    case Icon::Exclamation:
        box.setIcon(QMessageBox::Warning);
        break;
    case Icon::Critical:
        box.setIcon(QMessageBox::Critical);
        break;
    }
    switch (buttons) {
    case Buttons::Ok:
        box.setStandardButtons(QMessageBox::Ok);
        break;
    case Buttons::YesNoCancel:
        box.setStandardButtons(QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
        break;
    case Buttons::YesNo:
        box.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
        break;
    case Buttons::OkCancel:
        box.setStandardButtons(QMessageBox::Ok | QMessageBox::Cancel);
        break;
    }
    switch (box.exec()) {
    case QMessageBox::Yes:
        return Answer::Yes;
    case QMessageBox::No:
        return Answer::No;
    case QMessageBox::Cancel:
        return Answer::Cancel;
    default:
        // Closing a Yes/No/Cancel box with Escape or the window button cancels.
        return buttons == Buttons::Ok ? Answer::Ok : Answer::Cancel;
    }
}
