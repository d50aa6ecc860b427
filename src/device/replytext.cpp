#include "device/replytext.h"

ReplyLines::ReplyLines(QByteArrayView reply, char from, char to) {
    m_text.reserve(size_t(reply.size()));
    for (char c : reply) {
        if (c == '\n')
            continue;
        if (from != 0 && c == from)
            c = to;
        else if (c >= 'a' && c <= 'z')
            c = char(c - 'a' + 'A');
        m_text.push_back(c);
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
