#include "device/replytext.h"

#include <cstring>

ReplyLines::ReplyLines(QByteArrayView reply, char from, char to) {
    m_text.resize(size_t(reply.size()));
    char *const begin = m_text.data();
    char *out = begin;
    // LFs go first, a run of bytes at a time (a reply has one per line).
    const char *p = reply.data();
    const char *const end = p + reply.size();
    while (p < end) {
        const void *found = std::memchr(p, '\n', size_t(end - p));
        const char *const stop = found ? static_cast<const char *>(found) : end;
        std::memcpy(out, p, size_t(stop - p));
        out += stop - p;
        // Past the LF only when there is one: a pointer beyond the end of
        // the reply is undefined even if never read.
        p = found ? stop + 1 : end;
    }
    m_text.resize(size_t(out - begin));
    // A branch-free pass the compiler can vectorise. With `from` 0 a NUL
    // byte maps to `to`, which is then 0 as well.
    for (char &c : m_text) {
        const char upper = static_cast<unsigned char>(c - 'a') < 26 ? char(c - ('a' - 'A')) : c;
        c = upper == from ? to : upper;
    }
}

bool ReplyLines::next(std::string_view &line) {
    const size_t cr = m_text.find('\r', m_pos);
    if (cr == std::string::npos)
        return false;
    std::string_view text(m_text.data() + m_pos, cr - m_pos);
    m_pos = cr + 1;
    while (!text.empty() && text.front() == ' ')
        text.remove_prefix(1);
    while (!text.empty() && text.back() == ' ')
        text.remove_suffix(1);
    line = text;
    return true;
}
