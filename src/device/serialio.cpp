#include "device/serialio.h"

#include <QCoreApplication>
#include <QSerialPort>

#include <cstdio>
#include <utility>

namespace {

class QtSerialIo final : public SerialIo {
public:
    QtSerialIo() {
        connect(&m_port, &QSerialPort::readyRead, this, &SerialIo::readyRead);
        connect(&m_port, &QSerialPort::errorOccurred, this, &QtSerialIo::onError);
    }

    bool open(const QString &device, int32_t baudRate) override {
        m_port.close();
        if (device.isEmpty()) {
            logOpenFailure(QStringLiteral("no device for this port number (no ComPort<n> setting, "
                                          "and the system lists fewer serial ports)"));
            return true;
        }
        m_port.setPortName(device);
        m_port.setBaudRate(baudRate);
        m_port.setDataBits(QSerialPort::Data8);
        m_port.setParity(QSerialPort::NoParity);
        m_port.setStopBits(QSerialPort::OneStop);
        m_port.setFlowControl(QSerialPort::NoFlowControl);
        m_port.setReadBufferSize(8192);
        if (!m_port.open(QIODevice::ReadWrite)) {
            logOpenFailure(QStringLiteral("cannot open %1: %2").arg(device, m_port.errorString()));
            return true;
        }
        // Lines a port cannot drive (a pseudo-terminal has neither) are not
        // a reason to refuse the exchange.
        m_port.setDataTerminalReady(false);
        m_port.setRequestToSend(false);
        m_port.clear(QSerialPort::Input);
        m_port.clearError();
        return false;
    }

    void close() override {
        m_pending.clear();
        if (m_port.isOpen())
            m_port.clear(QSerialPort::Input);
        m_port.close();
    }

    void write(char byte) override {
        if (m_port.isOpen())
            m_port.write(&byte, 1);
    }

    QByteArray readAll() override {
        if (!m_pending.isEmpty())
            return std::exchange(m_pending, QByteArray());
        return m_port.isOpen() ? m_port.readAll() : QByteArray();
    }

private:
    // The operator only sees "Com port not available"; the technician finds
    // the reason (permission denied, no such device, busy) on standard
    // error, one line per failed open, named after the program.
    static void logOpenFailure(const QString &reason) {
        std::fprintf(stderr, "%s: %s\n", qPrintable(QCoreApplication::applicationName()),
                     qPrintable(reason));
    }

    void onError(QSerialPort::SerialPortError error) {
        if (!m_port.isOpen())
            return;
        switch (error) {
        case QSerialPort::ResourceError:
        case QSerialPort::ReadError:
        case QSerialPort::WriteError:
            // Closed right here, in the port's own error signal (as Qt's
            // examples do): a hung-up line reports its error again on every
            // pass of the event loop until the port is closed, starving
            // other work. Bytes not yet taken are kept for readAll().
            m_pending += m_port.readAll();
            m_port.close();
            if (!m_pending.isEmpty())
                emit readyRead();
            emit lost();
            break;
        default:
            break;
        }
    }

    QSerialPort m_port;
    QByteArray m_pending;
};

} // namespace

std::unique_ptr<SerialIo> makeQtSerialIo() {
    return std::make_unique<QtSerialIo>();
}
