#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

// A text file in the Windows registry export format ("Windows Registry
// Editor Version 5.00", [key] sections, "name"=hex:.., dword:.., "string"),
// so settings keep their registry value types off Windows and can be
// exchanged with a Windows installation. Only the three value types the
// program uses are understood; other lines of a section are kept verbatim.
class RegistryFile {
public:
    enum class Type { Binary, Dword, String, Other };

    struct Value {
        QString name;
        Type type = Type::Other;
        QByteArray binary;
        quint32 dword = 0;
        QString string;
        QString rawLine; // the whole line, for values of other types
    };

    struct Section {
        QString key;
        QList<Value> values;
    };

    // Parses the text (UTF-8, or UTF-16 with a byte order mark). Returns
    // true (failed) when it is not a registry file, or not clean text in
    // those encodings; the object is then empty.
    bool parse(const QByteArray &bytes);
    QByteArray serialize() const;

    const QList<Section> &sections() const { return m_sections; }
    Section *section(const QString &key);
    Section &addSection(const QString &key);

    static const Value *find(const Section &s, const QString &name);
    static Value &findOrAdd(Section &s, const QString &name);

private:
    QList<Section> m_sections;
};
