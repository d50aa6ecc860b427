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

// The stable name of a serial device: the entry of `folder` (the system's
// /dev/serial/by-id, named after the adapter's maker, model and serial
// number) that links to the same device as `device`, as a full path; empty
// when there is none (no such folder, a device not plugged in, a built-in
// port). A by-id name works wherever a port is named, so it keeps leading
// to the sensor when the system numbers its adapters differently.
QString portNames_byId(const QString &device,
                       const QString &folder = QStringLiteral("/dev/serial/by-id"));
