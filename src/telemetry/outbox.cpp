#include "telemetry/outbox.h"

#include <QDir>
#include <QLockFile>

#include <algorithm>
#include <cstdio>
#include <unistd.h>
#include <utility>

namespace {

constexpr qint64 kReadAhead = 64 * 1024;
// The acknowledged start of a journal that never empties is dropped once it
// is this large.
constexpr qint64 kCompactAt = 8 * 1024 * 1024;
constexpr int kSentWidth = 20;

void syncFile(QFile &f) {
    if (f.isOpen())
        ::fdatasync(f.handle());
}

} // namespace

TelemetryOutbox::TelemetryOutbox() = default;

TelemetryOutbox::~TelemetryOutbox() {
    close();
}

QString TelemetryOutbox::open(const QString &dir, const QString &clientId) {
    close();
    if (!QDir().mkpath(dir))
        return QStringLiteral("cannot make the outbox folder %1").arg(dir);
    const QDir d(dir);
    auto lock = std::make_unique<QLockFile>(d.filePath(clientId + QStringLiteral(".lock")));
    lock->setStaleLockTime(0); // only a lock of a process that is gone is stale
    if (!lock->tryLock(0))
        return QStringLiteral("the outbox %1 is in use by another process")
            .arg(d.filePath(clientId + QStringLiteral(".journal")));
    m_journal.setFileName(d.filePath(clientId + QStringLiteral(".journal")));
    m_sent.setFileName(d.filePath(clientId + QStringLiteral(".sent")));
    if (!m_journal.open(QIODevice::ReadWrite | QIODevice::Unbuffered) ||
        !m_sent.open(QIODevice::ReadWrite | QIODevice::Unbuffered)) {
        const QString error =
            QStringLiteral("cannot open the outbox %1: %2")
                .arg(m_journal.fileName(),
                     m_journal.isOpen() ? m_sent.errorString() : m_journal.errorString());
        m_journal.close();
        m_sent.close();
        return error;
    }
    m_lock = std::move(lock);

    // A line cut short by a crash is dropped: everything up to the last
    // line end stays.
    m_end = m_journal.size();
    qint64 keep = m_end;
    while (keep > 0) {
        const qint64 from = std::max<qint64>(0, keep - 4096);
        m_journal.seek(from);
        const QByteArray tail = m_journal.read(keep - from);
        const qsizetype nl = tail.lastIndexOf('\n');
        if (nl >= 0) {
            keep = from + nl + 1;
            break;
        }
        keep = from;
    }
    if (keep != m_end) {
        m_journal.resize(keep);
        m_end = keep;
    }

    // The acknowledged start: a number that does not fall on a line's start
    // of this journal is not believed, and everything goes out again.
    bool ok = false;
    m_sentAt = m_sent.readAll().trimmed().toLongLong(&ok);
    if (!ok || m_sentAt < 0 || m_sentAt > m_end)
        m_sentAt = 0;
    if (m_sentAt > 0) {
        m_journal.seek(m_sentAt - 1);
        if (m_journal.read(1) != "\n")
            m_sentAt = 0;
    }
    m_waiting = 0;
    m_journal.seek(m_sentAt);
    while (!m_journal.atEnd()) {
        const QByteArray chunk = m_journal.read(1024 * 1024);
        if (chunk.isEmpty())
            break;
        m_waiting += chunk.count('\n');
    }
    m_readAt = m_sentAt;
    m_ahead.clear();
    m_aheadAt = 0;
    m_nextEnd = -1;
    m_flight.clear();
    m_sent.resize(kSentWidth + 1); // the number is always written this wide
    if (m_sentAt == m_end && m_end > 0) {
        m_journal.resize(0);
        m_end = m_sentAt = m_readAt = 0;
    }
    writeSent();
    return QString();
}

void TelemetryOutbox::close() {
    if (!m_journal.isOpen())
        return;
    writeSent();
    syncFile(m_journal);
    syncFile(m_sent);
    m_journal.close();
    m_sent.close();
    m_lock.reset();
    m_flight.clear();
    m_ahead.clear();
    m_end = m_sentAt = m_readAt = m_waiting = 0;
}

bool TelemetryOutbox::append(const QByteArray &message) {
    if (!m_journal.isOpen() || message.contains('\n'))
        return true;
    QByteArray line = message;
    line += '\n';
    if (!m_journal.seek(m_end) || m_journal.write(line) != line.size()) {
        m_journal.resize(m_end); // no half line stays behind
        return true;
    }
    m_end += line.size();
    ++m_waiting;
    return false;
}

void TelemetryOutbox::sync() {
    syncFile(m_journal);
}

bool TelemetryOutbox::readAhead() {
    if (m_aheadAt > 0) {
        m_ahead.remove(0, m_aheadAt);
        m_aheadAt = 0;
    }
    const qint64 from = m_readAt + m_ahead.size();
    if (from >= m_end || !m_journal.seek(from))
        return false;
    const QByteArray more = m_journal.read(std::min(kReadAhead, m_end - from));
    m_ahead += more;
    return !more.isEmpty();
}

bool TelemetryOutbox::next(QByteArray &message) {
    if (!m_journal.isOpen() || int(m_flight.size()) >= m_window || m_readAt >= m_end)
        return false;
    qsizetype nl;
    while ((nl = m_ahead.indexOf('\n', m_aheadAt)) < 0)
        if (!readAhead())
            return false;
    message = m_ahead.mid(m_aheadAt, nl - m_aheadAt);
    m_nextEnd = m_readAt + (nl + 1 - m_aheadAt);
    return true;
}

void TelemetryOutbox::take(int token) {
    if (m_nextEnd < 0)
        return;
    m_aheadAt += qsizetype(m_nextEnd - m_readAt);
    m_readAt = std::exchange(m_nextEnd, -1);
    m_flight.push_back({m_readAt, token, false});
}

void TelemetryOutbox::acknowledge(int token) {
    const auto it = std::find_if(m_flight.begin(), m_flight.end(),
                                 [token](const Flight &f) { return f.token == token && !f.acked; });
    if (it == m_flight.end())
        return;
    it->acked = true;
    const qint64 before = m_sentAt;
    while (!m_flight.empty() && m_flight.front().acked) {
        m_sentAt = m_flight.front().end;
        m_flight.pop_front();
        --m_waiting;
    }
    if (m_sentAt == before)
        return;
    if (m_sentAt == m_end) {
        // All of it delivered: the journal starts again empty.
        m_journal.resize(0);
        m_end = m_sentAt = m_readAt = 0;
        m_ahead.clear();
        m_aheadAt = 0;
    } else if (m_sentAt >= kCompactAt) {
        compact();
    }
    writeSent();
}

void TelemetryOutbox::rewind() {
    m_flight.clear();
    m_readAt = m_sentAt;
    m_ahead.clear();
    m_aheadAt = 0;
    m_nextEnd = -1;
}

void TelemetryOutbox::writeSent() {
    if (!m_sent.isOpen())
        return;
    char text[kSentWidth + 2];
    std::snprintf(text, sizeof text, "%0*lld\n", kSentWidth, static_cast<long long>(m_sentAt));
    m_sent.seek(0);
    m_sent.write(text, kSentWidth + 1);
}

// Drops the acknowledged start: the waiting part goes to a new journal that
// replaces the old one. The .sent number becomes 0 first, so a crash in
// between only sends the old start again.
void TelemetryOutbox::compact() {
    const qint64 cut = m_sentAt;
    if (!rewriteFrom(cut))
        return;
    for (Flight &f : m_flight)
        f.end -= cut;
    m_end -= cut;
    m_readAt -= cut;
    m_sentAt = 0;
    m_nextEnd = -1;
}

bool TelemetryOutbox::rewriteFrom(qint64 at) {
    const QString name = m_journal.fileName();
    QFile fresh(name + QStringLiteral(".new"));
    if (!fresh.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    m_journal.seek(at);
    while (!m_journal.atEnd()) {
        const QByteArray chunk = m_journal.read(1024 * 1024);
        if (chunk.isEmpty() || fresh.write(chunk) != chunk.size()) {
            fresh.remove();
            return false;
        }
    }
    fresh.flush();
    syncFile(fresh);
    fresh.close();
    const qint64 sentAt = std::exchange(m_sentAt, 0);
    writeSent();
    syncFile(m_sent);
    if (std::rename(QFile::encodeName(fresh.fileName()).constData(),
                    QFile::encodeName(name).constData()) != 0) {
        m_sentAt = sentAt;
        writeSent();
        fresh.remove();
        return false;
    }
    m_journal.close();
    m_journal.setFileName(name);
    return m_journal.open(QIODevice::ReadWrite | QIODevice::Unbuffered);
}
