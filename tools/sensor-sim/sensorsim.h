#pragma once

#include "simreadings.h"

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QPair>
#include <QString>
#include <QTimer>

#include <cstdint>
#include <deque>
#include <memory>

class Clock;
class QSocketNotifier;

// Misbehaviour on request, for tests and service training.
struct SimFaults {
    bool noEcho = false;        // the command line is not echoed
    bool garbage = false;       // a line of random bytes after every third reading
    bool nulBytes = false;      // NUL bytes inside every reading line
    int gapMs = 0;              // a pause this long in the middle of every reply
    int byteDelayMs = 0;        // every byte sent on its own, this far apart
    bool silent = false;        // commands are read but never answered
    bool endless = false;       // after the "list" reply, readings keep coming
    bool flood = false;         // as endless, but as fast as the line takes them
    bool closeMidReply = false; // the port goes away half way through a reply
};

struct SimOptions {
    int readingIntervalMs = 1000; // a new reading this often; 0 = only on request
    int readingsPerTick = 1;      // readings logged at each tick (load tests)
    int logSize = 100;            // readings kept; "list" returns all of them
    int prefill = 0;              // readings already logged when the simulator starts
    uint32_t seed = 1;
    int stream = 1;
    float alarmValue = 500.0f;
    int alarmDelay = 10;
    QList<QPair<float, float>> calSource = {{0.125f, 150}, {0.25f, 300}, {0.5f, 600}};
    QList<QPair<float, float>> calTable = {{0.1f, 100}, {0.2f, 210}};
    SimFaults faults;
};

// A simulated oil sensor on a pseudo-terminal (or a given serial device).
// It logs a reading on a schedule, keeps the most recent ones, and answers
// "list" (echo, an empty line, one line per logged reading), "alarmlimit
// get" and "calibration get", each line ended by CR LF; other commands are
// only echoed. Like a real device on a real port, whatever it sends while
// nobody holds the port open is lost. Event driven, so it can run inside
// the program (the demo) or in a process of its own (nakos-sensor-sim).
class SensorSimulator : public QObject {
    Q_OBJECT
public:
    // `clock` stamps the readings; the system clock when null.
    explicit SensorSimulator(const SimOptions &options, const Clock *clock = nullptr,
                             QObject *parent = nullptr);
    ~SensorSimulator() override;

    // Opens a new pseudo-terminal, or the given device; true when it failed.
    bool open(const QString &device = QString());
    void close();
    bool isOpen() const { return m_fd >= 0; }
    // The device a client opens: the pseudo-terminal's path.
    QString portPath() const { return m_path; }

    void setFaults(const SimFaults &faults);
    const SimOptions &options() const { return m_options; }

    // Logs one reading stamped now (at least a second after the last one).
    void addReading();
    const std::deque<QByteArray> &logLines() const { return m_log; }
    // The reply to a command as its bytes, faults included, without pacing.
    QByteArray replyTo(const QByteArray &command);

signals:
    void commandReceived(const QByteArray &command);
    // A reply is over: written in full, or lost because the client closed
    // the port before it was.
    void replySent();
    void unplugged();

private:
    struct Segment {
        enum Kind { Bytes, Unplug, Endless } kind = Bytes;
        QByteArray bytes;
        int delayMs = 0;
    };

    void onReadable();
    void onHangupPoll();
    void handleCommand(const QByteArray &command);
    void sendNext();
    // Both return true when the output was dropped.
    bool flushOut();
    void dropOutput();
    bool farEndClosed() const;
    void onEndlessTick();
    QByteArray listBody();
    QByteArray garbageLine();

    SimOptions m_options;
    std::unique_ptr<Clock> m_ownClock;
    const Clock *m_clock;
    ReadingGenerator m_generator;
    std::mt19937 m_garbageRng;
    std::deque<QByteArray> m_log;
    QDateTime m_lastStamp;

    int m_fd = -1;
    bool m_isPty = false;
    QString m_path;
    QSocketNotifier *m_readNotifier = nullptr;
    QSocketNotifier *m_writeNotifier = nullptr;
    QTimer m_readingTimer;
    QTimer m_hangupTimer;
    QTimer m_segmentTimer;
    QTimer m_endlessTimer;
    QByteArray m_in;
    QByteArray m_out;
    std::deque<Segment> m_segments;
    bool m_segmentWaited = false;
    size_t m_endlessNext = 0;
};
