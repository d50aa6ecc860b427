#include "modbus/modbusserver.h"

#include <QHostAddress>
#include <QModbusTcpServer>
#include <QTcpSocket>

#include <algorithm>

namespace {

// Follows the Modbus TCP frames a client sends, ahead of Qt's parser: a
// header with a protocol id other than 0 or a length outside 2..254 (a unit
// id and at most 253 bytes of request) means the client speaks something
// else, and it is cut off before Qt's parser sees its bytes.
class FrameGuard : public QObject {
public:
    explicit FrameGuard(QTcpSocket *socket) : QObject(socket), m_socket(socket) {
        connect(socket, &QTcpSocket::readyRead, this, &FrameGuard::check);
    }

private:
    void check() {
        if (m_cutOff) {
            m_socket->readAll();
            return;
        }
        // Qt's parser reads everything after this, so these are the new bytes.
        const QByteArray data = m_socket->peek(m_socket->bytesAvailable());
        qsizetype i = 0;
        while (i < data.size()) {
            if (m_skip > 0) {
                const qsizetype take = std::min<qsizetype>(m_skip, data.size() - i);
                m_skip -= int(take);
                i += take;
                continue;
            }
            const qsizetype take = std::min<qsizetype>(7 - m_header.size(), data.size() - i);
            m_header += data.mid(i, take);
            i += take;
            if (m_header.size() < 7)
                return;
            const auto word = [this](int at) {
                return (uint8_t(m_header[at]) << 8) | uint8_t(m_header[at + 1]);
            };
            const int length = word(4);
            if (word(2) != 0 || length < 2 || length > 254) {
                // Read away here, so Qt's parser after this finds nothing,
                // and closed once this signal is through.
                m_cutOff = true;
                m_socket->readAll();
                QMetaObject::invokeMethod(m_socket, &QTcpSocket::abort, Qt::QueuedConnection);
                return;
            }
            m_skip = length - 1; // the unit id is in the header
            m_header.clear();
        }
    }

    QTcpSocket *m_socket;
    QByteArray m_header;
    int m_skip = 0;
    bool m_cutOff = false;
};

class Gatekeeper : public QModbusTcpConnectionObserver {
public:
    bool acceptNewConnection(QTcpSocket *client) override {
        // The server's sockets, this one included; those that disconnected
        // go with the next turn of the event loop.
        if (client->parent() &&
            client->parent()->findChildren<QTcpSocket *>(Qt::FindDirectChildrenOnly).size() >
                ModbusServer::maxClients)
            return false;
        new FrameGuard(client); // connected before Qt's parser
        return true;
    }
};

} // namespace

class MapTcpServer : public QModbusTcpServer {
public:
    explicit MapTcpServer(const ModbusServer &owner) : m_owner(owner) {
        installConnectionObserver(new Gatekeeper);
    }

protected:
    QModbusResponse processRequest(const QModbusPdu &request) override {
        const QModbusPdu::FunctionCode fc = request.functionCode();
        if (fc != QModbusPdu::ReadHoldingRegisters && fc != QModbusPdu::ReadInputRegisters)
            return QModbusExceptionResponse(fc, QModbusExceptionResponse::IllegalFunction);
        quint16 address = 0, count = 0;
        if (request.dataSize() == 4)
            request.decodeData(&address, &count);
        if (count < 1 || count > 125)
            return QModbusExceptionResponse(fc, QModbusExceptionResponse::IllegalDataValue);
        if (int(address) + count > ModbusMap::size)
            return QModbusExceptionResponse(fc, QModbusExceptionResponse::IllegalDataAddress);
        const ModbusMap::Registers regs = m_owner.map().registers(m_owner.now());
        QByteArray data;
        data.reserve(1 + 2 * count);
        data.append(char(2 * count));
        for (int a = address; a < address + count; ++a) {
            data.append(char(regs[size_t(a)] >> 8));
            data.append(char(regs[size_t(a)] & 0xff));
        }
        return QModbusResponse(fc, data);
    }

private:
    const ModbusServer &m_owner;
};

ModbusServer::ModbusServer(ModbusMap::WordOrder order, QObject *parent)
    : QObject(parent), m_map(order) {
    m_clock.start();
}

ModbusServer::~ModbusServer() {
    stop();
}

QString ModbusServer::start(const QString &host, uint16_t port, int unit) {
    stop();
    const QHostAddress address = host.compare(QLatin1String("localhost"), Qt::CaseInsensitive)
                                     ? QHostAddress(host)
                                     : QHostAddress(QHostAddress::LocalHost);
    if (address.isNull())
        return QStringLiteral("Modbus: '%1' is not an IP address").arg(host);
    if (unit < 0 || unit > 255)
        return QStringLiteral("Modbus: unit id %1 is not 0..255").arg(unit);
    auto server = std::make_unique<MapTcpServer>(*this);
    // Qt reads the address and port as one URL: an IPv6 address in brackets.
    const bool v6 = address.protocol() == QAbstractSocket::IPv6Protocol;
    server->setConnectionParameter(QModbusDevice::NetworkAddressParameter,
                                   v6 ? u'[' + address.toString() + u']' : address.toString());
    server->setConnectionParameter(QModbusDevice::NetworkPortParameter, port);
    server->setServerAddress(unit);
    if (!server->connectDevice() || server->state() != QModbusDevice::ConnectedState)
        return QStringLiteral("Modbus: cannot listen on %1 port %2: %3")
            .arg(address.toString())
            .arg(port)
            .arg(server->errorString());
    m_server = std::move(server);
    return QString();
}

void ModbusServer::stop() {
    if (m_server)
        m_server->disconnectDevice();
    m_server.reset();
}

void ModbusServer::addReadings(const DataPoint &newest, int count) {
    m_map.addReading(newest, count, now());
}

void ModbusServer::setThreshold(float ppm) {
    m_map.setThreshold(ppm);
}

void ModbusServer::addPoll(const PollOutcome &outcome) {
    m_map.addPoll(outcome.status);
}
