#pragma once

#include "core/notifier.h"

#include <QList>
#include <QStringList>

// Answers every message box with OK and remembers what was shown.
class ScriptedNotifier : public Notifier {
public:
    Answer message(const QString &text, const QString &title, Buttons buttons, Icon icon) override {
        texts << text;
        titles << title;
        this->buttons << buttons;
        icons << icon;
        return Answer::Ok;
    }

    QStringList texts;
    QStringList titles;
    QList<Buttons> buttons;
    QList<Icon> icons;
};
