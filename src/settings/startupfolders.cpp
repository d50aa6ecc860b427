#include "settings/startupfolders.h"

#include "settings/settings.h"

#include <QDir>

QString withTrailingSeparator(const QString &folder) {
    QString f = QDir::toNativeSeparators(folder);
    if (!f.endsWith(QDir::separator()))
        f += QDir::separator();
    return f;
}

void prepareFolders(MeasurementStore &store, const QString &currentDir, RegistryKey &key) {
    const QString data = QStringLiteral("data") + QDir::separator();
    store.path_base = withTrailingSeparator(currentDir);
    store.path_data = store.path_base + data;
    QDir().mkpath(store.path_data); // an existing folder is fine; errors are ignored
    store.path_autosave = settings::readAutosavePath(key);
    if (store.path_autosave.isEmpty()) {
        store.path_autosave = store.path_base + data;
        QDir().mkpath(store.path_autosave);
        store.path_autosave += QStringLiteral("autosave") + QDir::separator();
        QDir().mkpath(store.path_autosave);
        settings::writeAutosavePath(key, store.path_autosave);
    }
}
