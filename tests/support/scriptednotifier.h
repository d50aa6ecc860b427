#pragma once

#include "core/clock.h"
#include "core/notifier.h"

#include <QList>
#include <QString>

// A Notifier for tests: answers from a script (Ok when it runs out) and
// records every message it was asked to show.
class ScriptedNotifier : public Notifier {
public:
    struct Shown {
        QString text;
        QString title;
        Buttons buttons;
        Icon icon;
    };

    Answer message(const QString &text, const QString &title, Buttons buttons, Icon icon) override {
        shown.append({text, title, buttons, icon});
        return answers.isEmpty() ? Answer::Ok : answers.takeFirst();
    }

    QList<Answer> answers;
    QList<Shown> shown;
};

class FixedClock : public Clock {
public:
    QDateTime now() const override { return time; }
    QDateTime time = QDateTime(QDate(2024, 3, 5), QTime(14, 22, 10));
};
