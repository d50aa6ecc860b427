#pragma once

#include "device/linkhealth.h"
#include "device/listreply.h"
#include "device/portnames.h"
#include "device/serialio.h"

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QTimer>

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>

#include <QPointer>

class MeasurementStore;
class Notifier;

// The device link: owns the serial port and the two timers and runs every
// exchange with the sensor. An exchange opens the port, writes the command
// one character at a time, collects the reply until the line has been
// silent for 200 ms and closes the port again, so other programs can use
// the port between polls. Exchanges are asynchronous (readyRead plus a
// single-shot silence timer) and run one after another from a queue, so
// they never share the port; the user interface keeps running meanwhile.
//
// While querying runs, every tick of Timer_queryTiming is one poll: the
// alarm limit, the calibration tables and the reading list, in that order.
// The alarm and calibration replies are applied to the store when they are
// complete; the readings of the list enter it line by line as they arrive,
// and readingsAppended() names the new points each time. After every
// reading list pollFinished() tells the owner how it went (the owner then
// refreshes its display).
//
// The link is driven by its owner, the session: nothing else starts or
// stops the query or chooses the port.
class DeviceLink : public QObject {
    Q_OBJECT
public:
    static constexpr int kSilenceMs = 200;
    static constexpr int kQueryIntervalMs = 4000;
    // The reading list is read line by line as it arrives: each complete
    // line enters the store at once and only the unfinished one is held, so
    // a reply of any length, even a talker that never stops, takes a few
    // kilobytes. The other exchanges (alarm limit, calibration, the service
    // tools) keep their reply whole, which would grow without end on such a
    // talker: beyond this many bytes their output is still consumed but no
    // longer kept, and the reply is the first kMaxReplyBytes it sent. Their
    // honest replies are a few hundred bytes; 1 MiB is some 90 s of talk at
    // 115200 baud.
    static constexpr qsizetype kMaxReplyBytes = 1024 * 1024;

    DeviceLink(MeasurementStore &store, Notifier &notifier, QObject *parent = nullptr);
    ~DeviceLink() override;

    // Replaces the serial port adapter (QSerialPort by default).
    void setSerialIo(std::unique_ptr<SerialIo> io);
    // The device path configured for a port number (the settings value
    // ComPort<n>, or the demo's simulator); empty falls back to the system's
    // port list.
    void setConfiguredPort(ConfiguredPort configured);
    // The poll period com_startQuery uses; 4000 ms unless a recorder asks
    // for another.
    void setQueryInterval(int ms) { m_queryInterval = ms; }
    // Called when a reading of a "list" reply finds the store full; the
    // owner may make room there (a recorder's rollover), and the reading is
    // then offered to the store once more, so nothing of the reply that fills
    // the store is lost. The points stored so far have been announced
    // through readingsAppended() before the call.
    void setWhenFull(std::function<void()> hook) { m_whenFull = std::move(hook); }

    // Start-up: port number 1, 115200 baud, port closed, warning armed.
    void com_init();
    // Opens the port behind comPort; a failure only leaves portIsOpen false.
    void com_openComPort();
    void com_closeComPort();
    // Writes the text one character (one byte) at a time, adding nothing.
    void com_sendString(const QString &outputString);
    // One exchange for the service tools; its reply, the echo and all line
    // breaks included, goes to `replied`. The exchange belongs to `context`:
    // when that is gone before the exchange starts, nothing is sent, and a
    // reply that arrives after it is gone is dropped. Shows "Com port not
    // available" on every failed open.
    void com_queryString(const QString &queryString, QObject *context,
                         std::function<void(const QString &reply)> replied);

    // Arms the warning again, starts the poll timer and runs one reading
    // list at once (unless a poll is still running, which stands in for it).
    void com_startQuery();
    // Stops the poll timer; a poll already running completes.
    void com_stopQuery();

    // The three exchanges of a poll, each also usable on its own. On a port
    // that cannot be opened they warn once per query run and go on with an
    // empty reply.
    void com_app_getList();
    void com_app_getAlarm();
    void com_app_getCalibration();

    bool portIsOpen() const { return m_portIsOpen; }
    bool pollRunning() const { return m_pollRunning; }
    bool exchangeRunning() const { return m_active; }
    // The bytes held of the reply being collected: the reply so far for the
    // alarm, calibration and service exchanges, the unfinished line for the
    // reading list.
    qsizetype bufferedBytes() const {
        return m_reply.size() + (m_list ? m_list->bufferedBytes() : 0);
    }
    bool queryRunning() const { return Timer_queryTiming.isActive(); }
    // The device the next exchange will open, and the one behind any port
    // number.
    QString portDevice() const { return deviceFor(comPort); }
    QString deviceFor(int port) const { return comPort_device(port, m_configured); }
    QStringList devicesUpTo(int count) const { return comPort_devices(count, m_configured); }
    const LinkHealth &health() const { return m_health; }

    // Written by the session (the operator's port choice); read at every open.
    int16_t comPort = 1;
    int32_t comBaudRate = 115200;

    QTimer Timer_queryTiming;
    QTimer Timer_comTimeOut;

signals:
    // Points [first, first + count) of the store entered it just now.
    void readingsAppended(int first, int count);
    // After every reading list, also when the port could not be opened: the
    // owner redraws its charts from the store.
    void pollFinished(const PollOutcome &outcome);

private:
    enum class Warn { EveryTime, OncePerRun };
    struct Exchange {
        QString command;
        Warn warn = Warn::OncePerRun;
        std::function<void(const QByteArray &reply)> done;
        // Service exchanges only: the window that asked. Gone before the
        // exchange starts: the command is not sent.
        QPointer<QObject> owner;
        bool owned = false;
        // The reading list: read as it arrives, `done` gets no bytes.
        bool list = false;
    };

    void enqueue(Exchange exchange);
    void pump();
    void finishExchange();
    void onReadyRead();
    void onPortLost();
    void reportNoPort(Warn warn);
    void onQueryTick();
    void startPoll(bool withMetadata);
    void enqueueList(bool endsPoll);
    void listReplied(bool endsPoll);
    void storeListLine(const DataPoint &p, bool valid);
    void announceAppended();

    MeasurementStore &m_store;
    Notifier &m_notifier;
    std::unique_ptr<SerialIo> m_io;
    ConfiguredPort m_configured;
    int m_queryInterval = kQueryIntervalMs;
    std::function<void()> m_whenFull;
    int m_unannounced = 0; // first store index readingsAppended() has not named yet

    LinkHealth m_health;
    bool m_portIsOpen = false;
    bool m_noPortWarned = false;
    bool m_pollRunning = false;
    bool m_openFailed = false; // the current exchange found no port

    std::deque<Exchange> m_queue;
    Exchange m_current;
    bool m_active = false;
    bool m_pumping = false;
    QByteArray m_reply;
    // While a reading list is collected: its reader and what it did so far.
    std::unique_ptr<ListReplyReader> m_list;
    ListReplyResult m_listResult;
};
