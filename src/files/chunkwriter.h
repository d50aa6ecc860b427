#pragma once

#include <QIODevice>

#include <cstring>
#include <vector>

// Collects formatted lines and hands them to the device in large writes,
// checking each write's byte count. Once a write came up short every later
// call is ignored and failed() stays true, so a writer can format on and
// test once at the end of a batch.
class ChunkWriter {
public:
    ChunkWriter(QIODevice &device, size_t capacity) : m_device(device), m_buffer(capacity) {}

    // Room for at least n more bytes, flushing first when needed.
    char *reserve(size_t n) {
        if (m_used + n > m_buffer.size())
            flush();
        if (n > m_buffer.size())
            m_buffer.resize(n);
        return m_buffer.data() + m_used;
    }
    void commit(size_t n) { m_used += n; }
    void append(const char *data, size_t n) {
        std::memcpy(reserve(n), data, n);
        commit(n);
    }

    // Writes what is collected; returns true when the write was short.
    bool flush() {
        if (m_used > 0 && !m_failed) {
            const qint64 written = m_device.write(m_buffer.data(), qint64(m_used));
            m_failed = written != qint64(m_used);
        }
        m_used = 0;
        return m_failed;
    }
    bool failed() const { return m_failed; }

private:
    QIODevice &m_device;
    std::vector<char> m_buffer;
    size_t m_used = 0;
    bool m_failed = false;
};
