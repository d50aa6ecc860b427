#include "device/portnames.h"

#include <QSerialPortInfo>

#include <algorithm>

QString comPort_device(int comPort, const ConfiguredPort &configured) {
#ifdef Q_OS_WIN
    Q_UNUSED(configured);
    return QStringLiteral("COM%1").arg(comPort);
#else
    if (configured) {
        const QString path = configured(comPort);
        if (!path.isEmpty())
            return path;
    }
    if (comPort < 1)
        return {};
    QStringList locations;
    const QList<QSerialPortInfo> ports = QSerialPortInfo::availablePorts();
    for (const QSerialPortInfo &info : ports)
        locations << info.systemLocation();
    std::sort(locations.begin(), locations.end());
    return comPort <= locations.size() ? locations[comPort - 1] : QString();
#endif
}
