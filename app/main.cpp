// nakos-monitor: the desktop program.
#include "core/clock.h"
#include "files/ui/progresswindow.h"
#include "files/ui/qtfiledialogs.h"
#include "gui/mainwindow.h"
#include "gui/widgetnotifier.h"
#include "session/monitorsession.h"
#include "settings/registrykey.h"
#include "settings/settings.h"

#include <QApplication>
#include <QDir>

int main(int argc, char **argv) {
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("nakos-monitor"));
    // No application display name: Qt would append it to every window
    // caption on X11, and the captions must read exactly as they are set.
    QApplication::setApplicationVersion(settings::versionText());

    WidgetNotifier notifier;
    SystemClock clock;
    QtFileDialogs dialogs;
    auto *progress = new ProgressWindow; // the main window takes it below
    MonitorSession session({notifier, clock, dialogs, progress}, openProgramKey());
    MainWindow window(session);
    progress->setParent(&window, Qt::Tool);
    notifier.setParent(&window);
    dialogs.setParent(&window);
    window.startUp(QDir::currentPath());
    window.show();
    return app.exec();
}
