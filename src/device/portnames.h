#pragma once

#include <QString>
#include <QStringList>

#include <functional>

// Where a port number leads. `comPort` n names the n-th port: "COMn" on
// Windows. Elsewhere the device path stored for it (the settings value
// ComPort<n>, handed in as `configured`) when there is one, otherwise the
// n-th port the system lists, sorted by device path. An empty result means
// there is no such port.
using ConfiguredPort = std::function<QString(int comPort)>;
QString comPort_device(int comPort, const ConfiguredPort &configured);
// The devices of port numbers 1 .. count, asking the system's list once.
QStringList comPort_devices(int count, const ConfiguredPort &configured);
