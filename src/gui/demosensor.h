#pragma once

#include <QString>

class MonitorSession;
class QObject;

// The demo: the simulated sensor runs inside the program on a new
// pseudo-terminal, and port number 1 leads to it for this run only (the
// settings are not touched; other numbers keep their usual devices).
// Returns the device path, or an empty string (with the reason in `error`)
// where it cannot run. The simulator lives as long as `owner`.
QString startDemoSensor(MonitorSession &session, QObject *owner, QString &error);
