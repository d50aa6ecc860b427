#pragma once

#include "session/monitorsession.h"
#include "settings/filekey.h"
#include "support/scripteddialogs.h"
#include "support/scriptednotifier.h"

#include <QTemporaryDir>

#include <memory>

// One session over its own working folder, settings file, scripted message
// boxes (or the given notifier's) and file dialogs and a fixed clock; `title`
// follows what the session announces. start() runs start-up, so a test can
// prepare the settings file before it.
struct SessionFixture {
    explicit SessionFixture(Notifier *shownBy = nullptr)
        : session({shownBy ? *shownBy : notifier, clock, dialogs}, ownStore,
                  std::make_unique<FileRegistryKey>(dir.filePath(QStringLiteral("settings.reg")),
                                                    QLatin1String("HKEY_LOCAL_MACHINE\\") +
                                                        settings::keyPath())) {
        QObject::connect(&session, &MonitorSession::titleChanged,
                         [this](const QString &t) { title = t; });
    }
    void start() { session.startUp(dir.path()); }
    MeasurementStore &store() { return ownStore; }

    QTemporaryDir dir;
    MeasurementStore ownStore;
    ScriptedNotifier notifier;
    FixedClock clock;
    ScriptedDialogs dialogs;
    MonitorSession session;
    QString title;
};
