#include "gui/widgetnotifier.h"

#include "core/title.h"

#include <QMessageBox>

namespace {

QMessageBox::Icon boxIcon(Notifier::Icon icon) {
    switch (icon) {
    case Notifier::Icon::Information:
        return QMessageBox::Information;
    case Notifier::Icon::Question:
        return QMessageBox::Question;
    case Notifier::Icon::Exclamation:
        return QMessageBox::Warning;
    case Notifier::Icon::Critical:
        return QMessageBox::Critical;
    case Notifier::Icon::None:
        break;
    }
    return QMessageBox::NoIcon;
}

} // namespace

void WidgetNotifier::notice(const QString &text, Icon icon) {
    // Shown without a modal loop of its own: the caller's work (a poll, an
    // exchange queue) goes on, and the box closes itself when answered.
    auto *box = new QMessageBox(boxIcon(icon), QLatin1String(kProgramTitle), text, QMessageBox::Ok,
                                m_parent);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setModal(false);
    box->show();
}

Notifier::Answer WidgetNotifier::message(const QString &text, const QString &title, Buttons buttons,
                                         Icon icon) {
    QMessageBox box(m_parent);
    box.setText(text);
    box.setWindowTitle(title.isNull() ? QLatin1String(kProgramTitle) : title);
    box.setIcon(boxIcon(icon));
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
