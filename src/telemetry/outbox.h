#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

#include <deque>
#include <memory>

class QLockFile;

// Where a station's reading messages wait until the broker has acknowledged
// them: a journal on disk, so nothing is lost while the broker is away nor
// across a restart or a kill of the process.
//
// In the folder, per client id:
//   <id>.journal  one message per line, in the order they were taken
//   <id>.sent     how many bytes at the journal's start the broker has
//                 acknowledged (a decimal number)
//   <id>.lock     held while a process has the outbox open
// Messages go to the client a window at a time (take(), in journal order),
// and each is acknowledged by the token the client gave it (acknowledge()).
// The acknowledged start is forgotten: the journal is emptied whenever all
// of it was acknowledged, and rewritten from its first waiting message when
// that start grows large. A crash costs at most a repeat of messages already
// delivered (the .sent number is written as acknowledgements come in) and a
// line being written, never a message that was taken before it.
class TelemetryOutbox {
public:
    TelemetryOutbox();
    ~TelemetryOutbox();

    // Opens (making the folder and the files as needed) and counts what
    // waits. Returns an error text, empty on success.
    QString open(const QString &dir, const QString &clientId);
    void close();
    bool isOpen() const { return m_journal.isOpen(); }

    // Adds a message (one line: it must not contain '\n'). True (failed)
    // when the journal could not be written; the message is then lost.
    bool append(const QByteArray &message);
    // Writes what append() wrote through to the disk.
    void sync();

    // The next message not yet handed out, if any, and the window has room.
    bool next(QByteArray &message);
    // Hands out the message next() gave: the client sends it as `token`.
    void take(int token);
    // The broker acknowledged the message sent as `token`.
    void acknowledge(int token);
    // The client lost what was handed out (a new client, after a restart of
    // the connection): all of it goes out again.
    void rewind();

    // Messages appended and not yet acknowledged.
    qint64 waiting() const { return m_waiting; }
    // Messages handed out and not yet acknowledged.
    int inFlight() const { return int(m_flight.size()); }
    int window() const { return m_window; }
    void setWindow(int messages) { m_window = messages; }
    // Bytes of the journal on disk.
    qint64 journalBytes() const { return m_end; }

private:
    struct Flight {
        qint64 end; // journal offset just after the message's line
        int token;
        bool acked;
    };
    bool readAhead();
    bool rewriteFrom(qint64 at);
    void writeSent();
    void compact();

    QFile m_journal;
    QFile m_sent;
    std::unique_ptr<QLockFile> m_lock;
    qint64 m_end = 0;     // journal size
    qint64 m_sentAt = 0;  // all before it acknowledged
    qint64 m_readAt = 0;  // all before it handed out
    qint64 m_waiting = 0; // lines from m_sentAt to m_end
    QByteArray m_ahead;   // journal bytes read ahead: m_ahead[m_aheadAt] is at m_readAt
    qsizetype m_aheadAt = 0;
    qint64 m_nextEnd = -1; // the end of the message next() gave
    std::deque<Flight> m_flight;
    int m_window = 500;
};
