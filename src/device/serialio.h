#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>

#include <cstdint>
#include <memory>

// The one place that knows the serial port. The device link talks to this
// small interface only, so the link's exchange logic runs unchanged over a
// real port, a pseudo-terminal or a test double.
class SerialIo : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;

    // Opens the device at the given speed with the link's fixed line
    // settings; true when it failed (missing, in use, not a port). Whatever
    // arrived while the port was closed is discarded.
    [[nodiscard]] virtual bool open(const QString &device, int32_t baudRate) = 0;
    // Closes the port; unread input is lost with it. Harmless when closed.
    virtual void close() = 0;
    virtual void write(char byte) = 0;
    virtual QByteArray readAll() = 0;

signals:
    void readyRead();
    // The device went away or the line failed while open (USB unplugged,
    // the far end of a pseudo-terminal closed).
    void lost();
};

// SerialIo over QSerialPort: 8 data bits, no parity, 1 stop bit, no flow
// control, DTR and RTS held low, an 8192-byte receive buffer.
std::unique_ptr<SerialIo> makeQtSerialIo();
