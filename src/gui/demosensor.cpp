#include "gui/demosensor.h"

#include "device/devicelink.h"
#include "session/monitorsession.h"
#include "settings/settings.h"

#ifdef NAKOS_HAVE_SENSORSIM
#include "sensorsim.h"
#endif

QString startDemoSensor(MonitorSession &session, QObject *owner, QString &error) {
#ifdef NAKOS_HAVE_SENSORSIM
    SimOptions options;
    options.prefill = 100; // a first poll brings a chart's worth at once
    auto *sim = new SensorSimulator(options, nullptr, owner);
    if (sim->open()) {
        delete sim;
        error = QStringLiteral("cannot open a pseudo-terminal for the demo sensor");
        return QString();
    }
    const QString device = sim->portPath();
    RegistryKey *key = &session.settingsKey();
    session.link().setConfiguredPort(
        [device, key](int n) { return n == 1 ? device : settings::comPortDevice(*key, n); });
    return device;
#else
    (void)session;
    (void)owner;
    error = QStringLiteral("the demo sensor needs pseudo-terminals, which this system lacks");
    return QString();
#endif
}
