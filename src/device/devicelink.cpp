#include "device/devicelink.h"

#include "core/notifier.h"
#include "core/store.h"
#include "device/metareply.h"

#include <algorithm>
#include <utility>

DeviceLink::DeviceLink(MeasurementStore &store, Notifier &notifier, QObject *parent)
    : QObject(parent), m_store(store), m_notifier(notifier) {
    Timer_queryTiming.setInterval(kQueryIntervalMs);
    connect(&Timer_queryTiming, &QTimer::timeout, this, &DeviceLink::onQueryTick);
    // Every exchange sets 200 ms before starting it; 1000 is never used.
    Timer_comTimeOut.setInterval(1000);
    Timer_comTimeOut.setSingleShot(true);
    Timer_comTimeOut.setTimerType(Qt::PreciseTimer);
    connect(&Timer_comTimeOut, &QTimer::timeout, this, &DeviceLink::finishExchange);
    setSerialIo(makeQtSerialIo());
}

DeviceLink::~DeviceLink() {
    Timer_queryTiming.stop();
    Timer_comTimeOut.stop();
    if (m_io)
        m_io->close();
}

void DeviceLink::setSerialIo(std::unique_ptr<SerialIo> io) {
    if (m_io)
        m_io->close();
    m_portIsOpen = false;
    m_io = std::move(io);
    connect(m_io.get(), &SerialIo::readyRead, this, &DeviceLink::onReadyRead);
    connect(m_io.get(), &SerialIo::lost, this, &DeviceLink::onPortLost);
}

void DeviceLink::setConfiguredPort(ConfiguredPort configured) {
    m_configured = std::move(configured);
}

void DeviceLink::com_init() {
    comPort = 1;
    comBaudRate = 115200;
    m_portIsOpen = false;
    m_noPortWarned = false;
}

void DeviceLink::com_openComPort() {
    m_portIsOpen = !m_io->open(portDevice(), comBaudRate);
}

void DeviceLink::com_closeComPort() {
    m_io->close();
    m_portIsOpen = false;
}

void DeviceLink::com_sendString(const QString &outputString) {
    for (const QChar c : outputString)
        m_io->write(c.unicode() < 256 ? char(c.unicode()) : '?');
}

void DeviceLink::com_queryString(const QString &queryString, QObject *context,
                                 std::function<void(const QString &)> replied) {
    QPointer<QObject> owner(context);
    enqueue(Exchange{queryString, Warn::EveryTime,
                     [owner, replied = std::move(replied)](const QByteArray &reply) {
                         if (owner)
                             replied(QString::fromLatin1(reply));
                     },
                     owner, true});
}

void DeviceLink::com_startQuery() {
    m_noPortWarned = false;
    // The timer starts first: the immediate poll may finish (and its
    // listeners may stop the query) before this returns.
    Timer_queryTiming.start(m_queryInterval);
    if (!m_pollRunning)
        startPoll(false);
}

void DeviceLink::com_stopQuery() {
    Timer_queryTiming.stop();
}

void DeviceLink::com_app_getList() {
    enqueueList(false);
}

void DeviceLink::com_app_getAlarm() {
    enqueue({QStringLiteral("alarmlimit get\r\n"),
             Warn::OncePerRun,
             [this](const QByteArray &reply) { applyAlarmReply(reply, m_store); },
             {},
             false});
}

void DeviceLink::com_app_getCalibration() {
    enqueue({QStringLiteral("calibration get\r\n"),
             Warn::OncePerRun,
             [this](const QByteArray &reply) { applyCalibrationReply(reply, m_store); },
             {},
             false});
}

void DeviceLink::enqueueList(bool endsPoll) {
    enqueue({QStringLiteral("list\r\n"),
             Warn::OncePerRun,
             [this, endsPoll](const QByteArray &) { listReplied(endsPoll); },
             {},
             false,
             true});
}

void DeviceLink::listReplied(bool endsPoll) {
    PollOutcome outcome;
    outcome.list = m_listResult;
    outcome.list.echoOk = m_list->finish();
    outcome.list.lines = m_list->lines();
    const bool answered = m_list->bytesSeen() > 0;
    m_list.reset();
    // An exchange whose port could not be opened ends with no reply at all;
    // an open port always brings at least the echo from a live sensor.
    if (!m_openFailed && outcome.list.added > 0) {
        outcome.status = PollOutcome::Status::Readings;
        ++m_health.pollsWithReadings;
    } else if (m_openFailed) {
        outcome.status = PollOutcome::Status::PortMissing;
        ++m_health.pollsWithoutPort;
    } else if (!outcome.list.echoOk && answered) {
        outcome.status = PollOutcome::Status::NoEcho;
        ++m_health.repliesWithoutEcho;
    }
    if (endsPoll)
        m_pollRunning = false;
    emit pollFinished(outcome);
}

void DeviceLink::storeListLine(const DataPoint &p, bool valid) {
    if (valid && m_whenFull && m_store.dataPoint_count >= MeasurementStore::capacity &&
        !m_store.isDuplicate(p)) {
        announceAppended();
        m_whenFull();
        m_unannounced = std::min(m_unannounced, m_store.dataPoint_count);
    }
    storeListPoint(m_store, m_listResult, p, valid);
}

void DeviceLink::announceAppended() {
    const int count = m_store.dataPoint_count;
    if (count <= m_unannounced)
        return;
    const int first = std::exchange(m_unannounced, count);
    m_health.lastReading = QDateTime::currentDateTime();
    emit readingsAppended(first, count - first);
}

void DeviceLink::onQueryTick() {
    // A tick that finds the previous poll still running is skipped, not
    // queued: a slow or endlessly talking sensor must not pile up polls
    // behind it, and the running poll brings the readings anyway.
    if (m_pollRunning)
        return;
    startPoll(true);
}

void DeviceLink::startPoll(bool withMetadata) {
    m_pollRunning = true;
    if (withMetadata) {
        com_app_getAlarm();
        com_app_getCalibration();
    }
    enqueueList(true);
}

void DeviceLink::enqueue(Exchange exchange) {
    m_queue.push_back(std::move(exchange));
    pump();
}

// Starts queued exchanges until one is collecting or the queue is empty.
// An exchange whose port cannot be opened completes at once with an empty
// reply, so a loop rather than recursion keeps the stack flat. The warning
// does not wait for anybody: polls go on while it is on screen.
void DeviceLink::pump() {
    if (m_pumping)
        return;
    m_pumping = true;
    while (!m_active && !m_queue.empty()) {
        m_current = std::move(m_queue.front());
        m_queue.pop_front();
        if (m_current.owned && !m_current.owner)
            continue; // its window was closed while it waited: never sent
        m_active = true;
        m_reply.clear();
        m_openFailed = false;
        if (m_current.list) {
            m_listResult = ListReplyResult();
            m_unannounced = m_store.dataPoint_count;
            m_list = std::make_unique<ListReplyReader>(
                m_store.decimalSeparator,
                [this](const DataPoint &p, bool valid) { storeListLine(p, valid); });
        }
        if (!m_portIsOpen)
            com_openComPort();
        if (!m_portIsOpen) {
            m_openFailed = true;
            reportNoPort(m_current.warn);
            const Exchange failed = std::exchange(m_current, Exchange());
            m_active = false;
            failed.done(QByteArray());
            continue;
        }
        com_sendString(m_current.command);
        Timer_comTimeOut.start(kSilenceMs);
    }
    m_pumping = false;
}

void DeviceLink::finishExchange() {
    if (!m_active)
        return;
    Timer_comTimeOut.stop();
    com_closeComPort();
    const Exchange done = std::exchange(m_current, Exchange());
    const QByteArray reply = std::exchange(m_reply, QByteArray());
    m_active = false;
    done.done(reply);
    pump();
}

void DeviceLink::onReadyRead() {
    const QByteArray bytes = m_io->readAll();
    if (!m_active || !Timer_comTimeOut.isActive() || bytes.isEmpty())
        return; // nothing is collecting: these bytes belong to no exchange
    m_health.bytesReceived += uint64_t(bytes.size());
    Timer_comTimeOut.start(kSilenceMs);
    if (m_list) {
        m_list->feed(bytes);
        announceAppended();
        return;
    }
    // Past the cap only the start of the reply is kept: a piece taken after
    // a dropped one would join two lines into one that the sensor never
    // sent, with the stamp of one reading and the values of another.
    const qsizetype room = kMaxReplyBytes - m_reply.size();
    if (room > 0)
        m_reply.append(bytes.constData(), std::min(room, bytes.size()));
}

void DeviceLink::onPortLost() {
    if (!m_active || !Timer_comTimeOut.isActive())
        return;
    // End the exchange with what arrived, on the next pass of the event
    // loop rather than from inside the port's error signal.
    Timer_comTimeOut.start(0);
}

void DeviceLink::reportNoPort(Warn warn) {
    if (warn == Warn::OncePerRun) {
        if (m_noPortWarned)
            return;
        m_noPortWarned = true;
    }
    m_notifier.notice(QStringLiteral("Com port not available"), Notifier::Icon::Exclamation);
}
