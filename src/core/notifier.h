#pragma once

#include <QString>

// The one way the program shows a message box. The application uses a
// QMessageBox behind it; tests answer it from a script, so no headless run
// ever blocks on a box.
class Notifier {
public:
    enum class Icon { None, Information, Question, Exclamation, Critical };
    enum class Buttons { Ok, YesNoCancel, YesNo, OkCancel };
    enum class Answer { Ok, Yes, No, Cancel };

    virtual ~Notifier() = default;

    // A null title (QString()) means the application's default title; an
    // empty but non-null one (QLatin1String("")) shows no title at all.
    virtual Answer message(const QString &text, const QString &title, Buttons buttons,
                           Icon icon) = 0;

    // A message with an OK button that nobody has to answer for the work to
    // go on: the caller continues at once (an unattended station keeps
    // polling while the box is on screen). Without a window of its own it is
    // an ordinary message.
    virtual void notice(const QString &text, Icon icon) {
        message(text, QString(), Buttons::Ok, icon);
    }
};
