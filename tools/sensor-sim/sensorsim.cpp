#include "sensorsim.h"

#include "core/clock.h"

#include <QSocketNotifier>

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

namespace {

constexpr int kHangupPollMs = 10;
constexpr int kEndlessLineMs = 5;
constexpr int kUnplugDelayMs = 50;
constexpr qsizetype kMaxPendingOut = 64 * 1024;

void makeRaw(int fd) {
    termios t{};
    if (tcgetattr(fd, &t) != 0)
        return;
    cfmakeraw(&t);
    cfsetispeed(&t, B115200);
    cfsetospeed(&t, B115200);
    tcsetattr(fd, TCSANOW, &t);
}

} // namespace

SensorSimulator::SensorSimulator(const SimOptions &options, const Clock *clock, QObject *parent)
    : QObject(parent), m_options(options), m_clock(clock),
      m_generator(options.seed, options.stream), m_garbageRng(options.seed ^ 0x5a5a5a5au) {
    if (!m_clock) {
        m_ownClock = std::make_unique<SystemClock>();
        m_clock = m_ownClock.get();
    }
    // The prefilled log ends now, one reading interval (at least a second)
    // between readings.
    const int step = std::max(1, m_options.readingIntervalMs / 1000);
    const QDateTime now = m_clock->now();
    for (int i = m_options.prefill - 1; i >= 0; --i) {
        m_lastStamp = now.addSecs(-qint64(i) * step);
        m_log.push_back(readingLine(m_generator.next(m_lastStamp)));
    }
    while (int(m_log.size()) > m_options.logSize)
        m_log.pop_front();

    connect(&m_readingTimer, &QTimer::timeout, this, [this] {
        for (int i = 0; i < m_options.readingsPerTick; ++i)
            addReading();
    });
    m_hangupTimer.setInterval(kHangupPollMs);
    connect(&m_hangupTimer, &QTimer::timeout, this, &SensorSimulator::onHangupPoll);
    m_segmentTimer.setSingleShot(true);
    m_segmentTimer.setTimerType(Qt::PreciseTimer);
    connect(&m_segmentTimer, &QTimer::timeout, this, &SensorSimulator::sendNext);
    m_endlessTimer.setInterval(kEndlessLineMs);
    connect(&m_endlessTimer, &QTimer::timeout, this, &SensorSimulator::onEndlessTick);
}

SensorSimulator::~SensorSimulator() {
    close();
}

bool SensorSimulator::open(const QString &device) {
    close();
    if (device.isEmpty()) {
        m_fd = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK);
        char name[128];
        if (m_fd < 0 || grantpt(m_fd) != 0 || unlockpt(m_fd) != 0 ||
            ptsname_r(m_fd, name, sizeof name) != 0) {
            close();
            return true;
        }
        m_path = QString::fromLocal8Bit(name);
        m_isPty = true;
    } else {
        m_fd = ::open(device.toLocal8Bit().constData(), O_RDWR | O_NOCTTY | O_NONBLOCK);
        if (m_fd < 0)
            return true;
        m_path = device;
        m_isPty = false;
    }
    // On a pseudo-terminal this sets the client side: no echo, no line
    // editing, no CR/LF translation, as on a real sensor line.
    makeRaw(m_fd);
    m_readNotifier = new QSocketNotifier(m_fd, QSocketNotifier::Read, this);
    connect(m_readNotifier, &QSocketNotifier::activated, this, &SensorSimulator::onReadable);
    m_writeNotifier = new QSocketNotifier(m_fd, QSocketNotifier::Write, this);
    m_writeNotifier->setEnabled(false);
    connect(m_writeNotifier, &QSocketNotifier::activated, this, [this] {
        m_writeNotifier->setEnabled(false);
        flushOut();
    });
    if (m_options.readingIntervalMs > 0)
        m_readingTimer.start(m_options.readingIntervalMs);
    return false;
}

void SensorSimulator::close() {
    m_readingTimer.stop();
    m_hangupTimer.stop();
    m_segmentTimer.stop();
    m_endlessTimer.stop();
    delete m_readNotifier;
    m_readNotifier = nullptr;
    delete m_writeNotifier;
    m_writeNotifier = nullptr;
    if (m_fd >= 0)
        ::close(m_fd);
    m_fd = -1;
    m_path.clear();
    m_in.clear();
    m_out.clear();
    m_segments.clear();
}

void SensorSimulator::setFaults(const SimFaults &faults) {
    m_options.faults = faults;
    if (!faults.endless && !faults.flood)
        m_endlessTimer.stop();
}

void SensorSimulator::addReading() {
    QDateTime stamp = m_clock->now();
    stamp.setTime(QTime(stamp.time().hour(), stamp.time().minute(), stamp.time().second()));
    if (m_lastStamp.isValid() && stamp <= m_lastStamp)
        stamp = m_lastStamp.addSecs(1);
    m_lastStamp = stamp;
    m_log.push_back(readingLine(m_generator.next(stamp)));
    while (int(m_log.size()) > m_options.logSize)
        m_log.pop_front();
}

bool SensorSimulator::farEndClosed() const {
    if (m_fd < 0)
        return true;
    if (!m_isPty)
        return false;
    pollfd p{m_fd, POLLOUT, 0};
    return ::poll(&p, 1, 0) > 0 && (p.revents & POLLHUP);
}

void SensorSimulator::onReadable() {
    char buf[4096];
    for (;;) {
        const ssize_t n = ::read(m_fd, buf, sizeof buf);
        if (n > 0) {
            m_in.append(buf, n);
            continue;
        }
        if (n < 0 && errno == EIO) {
            // The client closed its side. The master then reads as always
            // ready, so watch for the next open on a slow timer instead.
            m_readNotifier->setEnabled(false);
            m_hangupTimer.start();
            dropOutput();
        }
        break;
    }
    for (;;) {
        const qsizetype end = [&] {
            for (qsizetype i = 0; i < m_in.size(); ++i) {
                if (m_in[i] == '\r' || m_in[i] == '\n')
                    return i;
            }
            return qsizetype(-1);
        }();
        if (end < 0)
            break;
        const QByteArray line = m_in.left(end).trimmed();
        m_in.remove(0, end + 1);
        if (!line.isEmpty())
            handleCommand(line);
    }
}

void SensorSimulator::onHangupPoll() {
    if (farEndClosed())
        return;
    m_hangupTimer.stop();
    m_readNotifier->setEnabled(true);
    onReadable();
}

void SensorSimulator::handleCommand(const QByteArray &command) {
    emit commandReceived(command);
    if (m_options.faults.silent)
        return;
    const SimFaults &f = m_options.faults;
    const QByteArray reply = replyTo(command);
    if (f.byteDelayMs > 0) {
        for (qsizetype i = 0; i < reply.size(); ++i)
            m_segments.push_back({Segment::Bytes, reply.mid(i, 1), i == 0 ? 0 : f.byteDelayMs});
    } else if (f.gapMs > 0 || f.closeMidReply) {
        // Break at a line end near the middle, so the first part is whole lines.
        qsizetype cut = reply.indexOf("\r\n", reply.size() / 2);
        cut = cut < 0 ? reply.size() / 2 : cut + 2;
        m_segments.push_back({Segment::Bytes, reply.left(cut), 0});
        // The cable goes a little after the last byte, as when it is pulled
        // by hand: what was on the line by then reaches the client.
        if (f.closeMidReply)
            m_segments.push_back({Segment::Unplug, {}, kUnplugDelayMs});
        else
            m_segments.push_back({Segment::Bytes, reply.mid(cut), f.gapMs});
    } else {
        m_segments.push_back({Segment::Bytes, reply, 0});
    }
    if ((f.endless || f.flood) && command.trimmed().toLower() == "list")
        m_segments.push_back({Segment::Endless, {}, 0});
    if (!m_segmentTimer.isActive())
        sendNext();
}

QByteArray SensorSimulator::replyTo(const QByteArray &command) {
    const QByteArray cmd = command.trimmed().toLower();
    QByteArray reply = m_options.faults.noEcho ? QByteArray() : command + "\r\n";
    if (cmd == "list") {
        reply += "\r\n" + listBody();
    } else if (cmd == "alarmlimit get") {
        reply += "ALARMVALUE " + QByteArray::number(double(m_options.alarmValue), 'f', 1) +
                 " ALARMDELAY " + QByteArray::number(m_options.alarmDelay) + "\r\n";
    } else if (cmd == "calibration get") {
        const auto rows = [](const QList<QPair<float, float>> &pairs) {
            QByteArray text;
            for (const auto &p : pairs)
                text += QByteArray::number(double(p.first), 'f', 5) + '\t' +
                        QByteArray::number(double(p.second), 'f', 0) + "\r\n";
            return text;
        };
        reply += "CAL SOURCE\r\n" + rows(m_options.calSource) + "CAL TABLE\r\n" +
                 rows(m_options.calTable);
    }
    return reply;
}

QByteArray SensorSimulator::listBody() {
    QByteArray body;
    int n = 0;
    for (const QByteArray &line : m_log) {
        QByteArray l = line;
        if (m_options.faults.nulBytes) {
            l.insert(19, '\0');
            l.insert(l.indexOf(" SOOT"), '\0');
        }
        body += l + "\r\n";
        if (m_options.faults.garbage && ++n % 3 == 0)
            body += garbageLine() + "\r\n";
    }
    return body;
}

QByteArray SensorSimulator::garbageLine() {
    std::uniform_int_distribution<int> byte(1, 255);
    QByteArray line;
    while (line.size() < 30) {
        const char c = char(byte(m_garbageRng));
        if (c != '\r' && c != '\n')
            line += c;
    }
    return line;
}

// Sends the queued reply segments, waiting each one's delay first.
void SensorSimulator::sendNext() {
    while (!m_segments.empty() && m_fd >= 0) {
        Segment &s = m_segments.front();
        if (s.delayMs > 0 && !m_segmentWaited) {
            m_segmentWaited = true;
            m_segmentTimer.start(s.delayMs);
            return;
        }
        m_segmentWaited = false;
        const Segment seg = std::move(s);
        m_segments.pop_front();
        switch (seg.kind) {
        case Segment::Bytes:
            m_out += seg.bytes;
            if (flushOut())
                return; // lost, and replySent() already told
            break;
        case Segment::Unplug:
            flushOut();
            close();
            emit unplugged();
            return;
        case Segment::Endless:
            m_endlessNext = 0;
            m_endlessTimer.start();
            return;
        }
        if (m_segments.empty())
            emit replySent();
    }
}

void SensorSimulator::onEndlessTick() {
    if (m_log.empty() || m_out.size() > kMaxPendingOut)
        return;
    // A flood keeps the line full, so a client sees far more than a real
    // port's 11 kB a second: its limits show within a test's time.
    do {
        m_out += m_log[m_endlessNext++ % m_log.size()] + "\r\n";
    } while (m_options.faults.flood && m_out.size() < kMaxPendingOut);
    flushOut();
}

bool SensorSimulator::flushOut() {
    if (farEndClosed()) {
        dropOutput();
        return true;
    }
    while (!m_out.isEmpty()) {
        const ssize_t n = ::write(m_fd, m_out.constData(), size_t(m_out.size()));
        if (n > 0) {
            m_out.remove(0, n);
            continue;
        }
        if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
            m_writeNotifier->setEnabled(true);
            return false;
        }
        dropOutput();
        return true;
    }
    return false;
}

// Nobody holds the port: what the sensor says now is lost, as on a real line.
void SensorSimulator::dropOutput() {
    const bool pending = !m_out.isEmpty() || !m_segments.empty() || m_endlessTimer.isActive();
    m_out.clear();
    m_segments.clear();
    m_segmentTimer.stop();
    m_segmentWaited = false;
    m_endlessTimer.stop();
    if (pending)
        emit replySent();
}
