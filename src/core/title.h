#pragma once

#include "core/store.h"

#include <QString>

// The main window caption: "ORLUK Water Monitor   " and the current file in
// brackets, "[<NEW FILE>]" while there is none, and " *" while the data in
// memory has changed since it was last saved.
QString mainWindowTitle(const MeasurementStore &store);

inline const char *const kProgramTitle = "ORLUK Water Monitor";
