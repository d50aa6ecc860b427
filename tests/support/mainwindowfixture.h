#pragma once

#include "core/ui/mainwindow.h"
#include "settings/filekey.h"
#include "support/scripteddialogs.h"
#include "support/scriptednotifier.h"

#include <QTemporaryDir>

#include <memory>

// One main window over its own store, working folder, settings file,
// scripted message boxes, file dialogs and clock. start() runs start-up, so
// a test can prepare the store or the settings file before it.
struct MainWindowFixture {
    MainWindowFixture()
        : key(dir.filePath(QStringLiteral("settings.reg")),
              QLatin1String("HKEY_LOCAL_MACHINE\\") + settings::keyPath()),
          ctx{*store, flags, key, notifier, clock, &dialogs}, window(ctx) {}
    void start() { window.startUp(dir.path()); }

    QTemporaryDir dir;
    std::unique_ptr<MeasurementStore> store = std::make_unique<MeasurementStore>();
    DisplayFlags flags;
    FileRegistryKey key;
    ScriptedNotifier notifier;
    FixedClock clock;
    ScriptedDialogs dialogs;
    AppContext ctx;
    MainWindow window;
};
