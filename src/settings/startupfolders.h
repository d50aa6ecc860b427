#pragma once

#include "core/store.h"
#include "settings/registrykey.h"

// The folder step of start-up: the working folder, its data folder and the
// autosave folder, each kept with a trailing separator. The data folder is
// created (an existing one is fine); the autosave folder comes from the
// settings, and when none is stored the default <working folder>/data/
// autosave/ is created and written back to the settings.
void prepareFolders(MeasurementStore &store, const QString &currentDir, RegistryKey &key);

// The folder with one trailing native separator.
QString withTrailingSeparator(const QString &folder);
