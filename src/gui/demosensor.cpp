#include "gui/demosensor.h"

#include "session/monitorsession.h"

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
    session.port_mapDevice(1, device);
    return device;
#else
    (void)session;
    (void)owner;
    error = QStringLiteral("the demo sensor needs pseudo-terminals, which this system lacks");
    return QString();
#endif
}
