#include "core/title.h"

QString mainWindowTitle(const MeasurementStore &store) {
    QString title = QLatin1String(kProgramTitle) + QLatin1String("   ");
    if (store.fileName_current.isEmpty())
        title += QLatin1String("[<NEW FILE>]");
    else
        title += QLatin1Char('[') + store.fileName_current + QLatin1Char(']');
    if (store.data_changed)
        title += QLatin1String(" *");
    return title;
}
