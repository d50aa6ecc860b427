#pragma once

#include <QtGlobal>

// What every benchmark does first: the offscreen platform unless another
// is asked for (before the application object exists), and the number of
// runs, BENCH_RUNS or the benchmark's own default.
inline void benchUseOffscreen() {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
}

inline int benchRuns(int byDefault) {
    const int asked = qEnvironmentVariableIntValue("BENCH_RUNS");
    return asked > 0 ? asked : byDefault;
}
