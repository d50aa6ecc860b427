#include "settings/registryfile.h"

#include <QStringConverter>

namespace {

const char kHeader[] = "Windows Registry Editor Version 5.00";

// The file's text after its byte order mark. Fails on bytes that are not
// clean UTF-8 or UTF-16 (a stray Latin-1 byte, a lone surrogate, a cut-off
// sequence): such text would not be written back as it was read, so the
// file counts as damaged rather than being altered behind the user's back.
bool decode(const QByteArray &bytes, QString &text) {
    QStringConverter::Encoding encoding = QStringConverter::Utf8;
    qsizetype bom = 0;
    if (bytes.startsWith("\xFF\xFE")) {
        encoding = QStringConverter::Utf16LE;
        bom = 2;
    } else if (bytes.startsWith("\xFE\xFF")) {
        encoding = QStringConverter::Utf16BE;
        bom = 2;
    } else if (bytes.startsWith("\xEF\xBB\xBF")) {
        bom = 3;
    }
    QStringDecoder decoder(encoding, QStringConverter::Flag::Stateless);
    text = decoder(QByteArrayView(bytes).sliced(bom));
    return decoder.hasError() || !text.isValidUtf16();
}

// A quoted registry string: backslash escapes backslash and quote.
bool unquote(QStringView text, QString &out, qsizetype &end) {
    if (text.isEmpty() || text.front() != QLatin1Char('"'))
        return false;
    out.clear();
    for (qsizetype i = 1; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c == QLatin1Char('\\')) {
            if (++i >= text.size())
                return false;
            out += text[i];
        } else if (c == QLatin1Char('"')) {
            end = i + 1;
            return true;
        } else {
            out += c;
        }
    }
    return false;
}

QString quote(const QString &s) {
    QString out;
    out.reserve(s.size() + 2);
    out += QLatin1Char('"');
    for (QChar c : s) {
        if (c == QLatin1Char('\\') || c == QLatin1Char('"'))
            out += QLatin1Char('\\');
        out += c;
    }
    out += QLatin1Char('"');
    return out;
}

bool parseHex(QStringView text, QByteArray &out) {
    out.clear();
    QString digits;
    for (QChar c : text) {
        if (c == QLatin1Char(',') || c.isSpace() || c == QLatin1Char('\\'))
            continue; // long values are folded with ",\" and indented lines
        digits += c;
    }
    if (digits.size() % 2 != 0)
        return false;
    for (qsizetype i = 0; i < digits.size(); i += 2) {
        bool ok = false;
        const uint byte = QStringView(digits).mid(i, 2).toUInt(&ok, 16);
        if (!ok)
            return false;
        out += char(byte);
    }
    return true;
}

} // namespace

bool RegistryFile::parse(const QByteArray &bytes) {
    m_sections.clear();
    QString text;
    if (decode(bytes, text))
        return true;
    // Join continuation lines ("hex:01,02,\" followed by an indented line).
    QStringList lines;
    for (const QString &raw : text.split(QLatin1Char('\n'))) {
        const QString line = raw.trimmed();
        if (!lines.isEmpty() && lines.last().endsWith(QLatin1Char('\\')) &&
            lines.last().contains(QLatin1String("=hex"))) {
            lines.last().chop(1);
            lines.last() += line;
            continue;
        }
        lines += line;
    }
    // A continuation mark on the last line continues into nothing.
    if (!lines.isEmpty() && lines.last().endsWith(QLatin1Char('\\')) &&
        lines.last().contains(QLatin1String("=hex")))
        lines.last().chop(1);
    if (lines.isEmpty() || lines.first() != QLatin1String(kHeader))
        return true;
    Section *current = nullptr;
    for (qsizetype n = 1; n < lines.size(); ++n) {
        const QString &line = lines[n];
        if (line.isEmpty() || line.startsWith(QLatin1Char(';')))
            continue;
        if (line.startsWith(QLatin1Char('['))) {
            if (!line.endsWith(QLatin1Char(']'))) {
                m_sections.clear();
                return true;
            }
            current = &addSection(line.mid(1, line.size() - 2));
            continue;
        }
        if (!current) {
            m_sections.clear();
            return true;
        }
        Value v;
        qsizetype end = 0;
        if (line.startsWith(QLatin1Char('@'))) {
            end = 1;
        } else if (!unquote(line, v.name, end)) {
            m_sections.clear();
            return true;
        }
        if (end >= line.size() || line[end] != QLatin1Char('=')) {
            m_sections.clear();
            return true;
        }
        const QStringView data = QStringView(line).mid(end + 1);
        bool ok = true;
        if (data.startsWith(QLatin1String("hex:"))) {
            v.type = Type::Binary;
            ok = parseHex(data.mid(4), v.binary);
        } else if (data.startsWith(QLatin1String("dword:"))) {
            v.type = Type::Dword;
            const QStringView hex = data.mid(6);
            v.dword = hex.size() == 8 ? hex.toUInt(&ok, 16) : 0;
            ok = ok && hex.size() == 8;
        } else if (data.startsWith(QLatin1Char('"'))) {
            v.type = Type::String;
            qsizetype send = 0;
            ok = unquote(data, v.string, send) && send == data.size();
        } else {
            v.type = Type::Other;
            // Kept on one line when written back, so no continuation mark.
            v.rawLine = line.trimmed();
            while (v.rawLine.endsWith(QLatin1Char('\\'))) {
                v.rawLine.chop(1);
                v.rawLine = v.rawLine.trimmed();
            }
        }
        if (!ok) {
            m_sections.clear();
            return true;
        }
        current->values += v;
    }
    return false;
}

QByteArray RegistryFile::serialize() const {
    QString out = QLatin1String(kHeader) + QLatin1String("\r\n");
    for (const Section &s : m_sections) {
        out += QLatin1String("\r\n[") + s.key + QLatin1String("]\r\n");
        for (const Value &v : s.values) {
            switch (v.type) {
            case Type::Binary: {
                QStringList hex;
                for (char b : v.binary)
                    hex += QString::asprintf("%02x", uint(uchar(b)));
                out += quote(v.name) + QLatin1String("=hex:") + hex.join(QLatin1Char(','));
                break;
            }
            case Type::Dword:
                out += quote(v.name) + QString::asprintf("=dword:%08x", v.dword);
                break;
            case Type::String:
                out += quote(v.name) + QLatin1Char('=') + quote(v.string);
                break;
            case Type::Other:
                out += v.rawLine;
                break;
            }
            out += QLatin1String("\r\n");
        }
    }
    return out.toUtf8();
}

RegistryFile::Section *RegistryFile::section(const QString &key) {
    for (Section &s : m_sections) {
        if (s.key.compare(key, Qt::CaseInsensitive) == 0)
            return &s;
    }
    return nullptr;
}

RegistryFile::Section &RegistryFile::addSection(const QString &key) {
    if (Section *s = section(key))
        return *s;
    m_sections.append(Section{key, {}});
    return m_sections.last();
}

const RegistryFile::Value *RegistryFile::find(const Section &s, const QString &name) {
    for (const Value &v : s.values) {
        if (v.name.compare(name, Qt::CaseInsensitive) == 0)
            return &v;
    }
    return nullptr;
}

RegistryFile::Value &RegistryFile::findOrAdd(Section &s, const QString &name) {
    for (Value &v : s.values) {
        if (v.name.compare(name, Qt::CaseInsensitive) == 0)
            return v;
    }
    s.values.append(Value{name, Type::Other, {}, 0, {}, {}});
    return s.values.last();
}
