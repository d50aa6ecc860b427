// nakos-monitor: the desktop program.
#include "core/appoptions.h"
#include "core/clock.h"
#include "files/ui/progresswindow.h"
#include "files/ui/qtfiledialogs.h"
#include "gui/demosensor.h"
#include "gui/mainwindow.h"
#include "gui/widgetnotifier.h"
#include "panel/ui/controlpanel.h"
#include "session/monitorsession.h"
#include "settings/registrykey.h"
#include "settings/settings.h"

#include <QApplication>
#include <QDir>

#include <cstdio>

int main(int argc, char **argv) {
    // Read before QApplication exists: help, version and a bad command line
    // need no display, and must leave settings and folders alone.
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    const AppOptions options = parseAppOptions(arguments);
    switch (options.action) {
    case AppOptions::Action::Help:
        std::fputs(appOptionsHelp().toLocal8Bit().constData(), stdout);
        return 0;
    case AppOptions::Action::Version:
        std::printf("nakos-monitor %s\n", qPrintable(settings::versionText()));
        return 0;
    case AppOptions::Action::Fail:
        std::fprintf(stderr, "nakos-monitor: %s\n", qPrintable(options.error));
        if (options.usageHint)
            std::fputs("Try 'nakos-monitor --help' for more information.\n", stderr);
        return 2;
    case AppOptions::Action::Run:
        break;
    }

    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("nakos-monitor"));
    // No application display name: Qt would append it to every window
    // caption on X11, and the captions must read exactly as they are set.
    QApplication::setApplicationVersion(settings::versionText());
    // Ties the windows to the installed desktop entry (icon and name in the
    // task bar under Wayland).
    QApplication::setDesktopFileName(QStringLiteral("nakos-monitor"));

    WidgetNotifier notifier;
    SystemClock clock;
    QtFileDialogs dialogs;
    auto *progress = new ProgressWindow; // the main window takes it below
    MeasurementStore store;
    MonitorSession session({notifier, clock, dialogs, progress}, store, openProgramKey());
    MainWindow window(session);
    progress->setParent(&window, Qt::Tool);
    notifier.setParent(&window);
    dialogs.setParent(&window);
    if (options.queryInterval_ms > 0)
        session.query_setInterval(options.queryInterval_ms);
    if (options.demo) {
        QString error;
        if (startDemoSensor(session, &window, error).isEmpty())
            std::fprintf(stderr, "nakos-monitor: %s\n", qPrintable(error));
    }
    window.startUp(QDir::currentPath());
    window.show();
    // Files named on the command line, read as Open (or Import) would read
    // them, without dialogs; the query, when asked for, starts after them.
    for (const QString &line : session.openFiles(options.files))
        std::fprintf(stderr, "nakos-monitor: %s\n", qPrintable(line));
    // A recording station resumes on its own: the port chosen and the query
    // started as the operator's clicks would.
    if (options.port > 0)
        window.controlPanel()->selectPort(options.port);
    if (options.startQuery)
        session.query_start();
    return app.exec();
}
