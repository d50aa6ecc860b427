#include "device/portnames.h"

#include <QDir>
#include <QFileInfo>
#include <QSerialPortInfo>

#include <algorithm>

QStringList comPort_devices(int count, const ConfiguredPort &configured) {
    QStringList devices;
#ifdef Q_OS_WIN
    Q_UNUSED(configured);
    for (int n = 1; n <= count; ++n)
        devices << QStringLiteral("COM%1").arg(n);
#else
    // The system's list is asked once: it takes a while on some machines.
    QStringList locations;
    const QList<QSerialPortInfo> ports = QSerialPortInfo::availablePorts();
    for (const QSerialPortInfo &info : ports)
        locations << info.systemLocation();
    std::sort(locations.begin(), locations.end());
    for (int n = 1; n <= count; ++n) {
        const QString path = configured ? configured(n) : QString();
        devices << (!path.isEmpty() ? path : n <= locations.size() ? locations[n - 1] : QString());
    }
#endif
    return devices;
}

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
    return comPort_devices(comPort, {}).value(comPort - 1);
#endif
}

QString portNames_byId(const QString &device, const QString &folder) {
    if (device.isEmpty())
        return {};
    const QString target = QFileInfo(device).canonicalFilePath();
    if (target.isEmpty())
        return {};
    const QFileInfoList entries = QDir(folder).entryInfoList(
        QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
    for (const QFileInfo &entry : entries) {
        if (entry.isSymLink() && entry.canonicalFilePath() == target)
            return entry.filePath();
    }
    return {};
}
