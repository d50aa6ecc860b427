// nakos-monitor: the desktop program.
#include "core/store.h"
#include "core/title.h"
#include "core/ui/mainwindow.h"
#include "core/ui/widgetnotifier.h"
#include "settings/settings.h"

#include <QApplication>
#include <QDir>

#include <memory>

int main(int argc, char **argv) {
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("nakos-monitor"));
    // No application display name: Qt would append it to every window
    // caption on X11, and the captions must read exactly as they are set.
    QApplication::setApplicationVersion(settings::versionText());

    auto store = std::make_unique<MeasurementStore>();
    DisplayFlags flags;
    std::unique_ptr<RegistryKey> settingsKey = openProgramKey();
    WidgetNotifier notifier;
    SystemClock clock;
    AppContext ctx{*store, flags, *settingsKey, notifier, clock};

    MainWindow window(ctx);
    notifier.setParent(&window);
    window.startUp(QDir::currentPath());
    window.show();
    return app.exec();
}
