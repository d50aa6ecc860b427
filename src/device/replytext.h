#pragma once

#include <QByteArrayView>

#include <string>
#include <string_view>

// Line handling shared by the readers of the sensor's replies. A reply is
// the raw byte text of one exchange; every byte stands for one character.
// The readers remove every LF, split at CR and drop whatever follows the
// last CR (an unfinished line is never read), upper-case each line and trim
// the blanks at both ends.
class ReplyLines {
public:
    // Prepares the text once: LFs removed, ASCII letters upper-cased and,
    // when `from` is not 0, every `from` byte replaced by `to`.
    explicit ReplyLines(QByteArrayView reply, char from = 0, char to = 0);

    // The next complete line, CR removed and blanks trimmed; false when no
    // CR is left.
    bool next(std::string_view &line);

private:
    std::string m_text;
    size_t m_pos = 0;
};

// The value text that follows the first occurrence of `key` in `line`: the
// longest run of characters that `inClass` accepts, starting right after
// the key (so it holds the blank after the key). `found` tells whether the
// key occurs at all.
template <typename CharClass>
std::string_view valueAfterKey(std::string_view line, std::string_view key, CharClass inClass,
                               bool &found) {
    const size_t at = line.find(key);
    found = at != std::string_view::npos;
    if (!found)
        return {};
    const size_t start = at + key.size();
    size_t end = start;
    while (end < line.size() && inClass(line[end]))
        ++end;
    return line.substr(start, end - start);
}

inline bool isDigit(char c) {
    return c >= '0' && c <= '9';
}
