#include "settings/filekey.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

FileRegistryKey::FileRegistryKey(QString filePath, QString fullKey)
    : m_path(std::move(filePath)), m_key(std::move(fullKey)) {}

bool FileRegistryKey::open() {
    m_open = false;
    m_dirty = false;
    QFile f(m_path);
    if (!f.open(QIODevice::ReadOnly))
        return true;
    // A settings file is a few hundred bytes; anything huge is not ours.
    if (f.size() > 1024 * 1024 || m_file.parse(f.readAll()))
        return true;
    if (!m_file.section(m_key))
        return true;
    m_open = true;
    return false;
}

bool FileRegistryKey::openOrCreate() {
    if (!open())
        return false;
    // Keep the other keys of a readable file; start afresh otherwise.
    QFile f(m_path);
    if (!f.open(QIODevice::ReadOnly) || f.size() > 1024 * 1024 || m_file.parse(f.readAll()))
        m_file = RegistryFile();
    m_file.addSection(m_key);
    m_open = true;
    m_dirty = true;
    return false;
}

void FileRegistryKey::close() {
    if (m_open && m_dirty) {
        // Errors are not reported: the settings then live in memory only.
        QDir().mkpath(QFileInfo(m_path).absolutePath());
        QSaveFile out(m_path);
        if (out.open(QIODevice::WriteOnly)) {
            out.write(m_file.serialize());
            out.commit();
        }
    }
    m_open = false;
    m_dirty = false;
}

bool FileRegistryKey::queryByte(const QString &name, uint8_t &out) {
    RegistryFile::Section *s = section();
    const RegistryFile::Value *v = s ? RegistryFile::find(*s, name) : nullptr;
    if (!v || v->type != RegistryFile::Type::Binary || v->binary.size() != 1)
        return true;
    out = uint8_t(v->binary[0]);
    return false;
}

bool FileRegistryKey::queryString(const QString &name, int bufferChars, QString &out) {
    RegistryFile::Section *s = section();
    const RegistryFile::Value *v = s ? RegistryFile::find(*s, name) : nullptr;
    if (!v || v->type != RegistryFile::Type::String || v->string.size() + 1 > bufferChars)
        return true;
    out = v->string;
    return false;
}

bool FileRegistryKey::queryDword(const QString &name, uint32_t &out) {
    RegistryFile::Section *s = section();
    const RegistryFile::Value *v = s ? RegistryFile::find(*s, name) : nullptr;
    if (!v || v->type != RegistryFile::Type::Dword)
        return true;
    out = v->dword;
    return false;
}

bool FileRegistryKey::setByte(const QString &name, uint8_t value) {
    RegistryFile::Section *s = section();
    if (!s)
        return true;
    RegistryFile::Value &v = RegistryFile::findOrAdd(*s, name);
    v.type = RegistryFile::Type::Binary;
    v.binary = QByteArray(1, char(value));
    m_dirty = true;
    return false;
}

bool FileRegistryKey::setDword(const QString &name, uint32_t value) {
    RegistryFile::Section *s = section();
    if (!s)
        return true;
    RegistryFile::Value &v = RegistryFile::findOrAdd(*s, name);
    v.type = RegistryFile::Type::Dword;
    v.dword = value;
    m_dirty = true;
    return false;
}

bool FileRegistryKey::setString(const QString &name, const QString &value) {
    RegistryFile::Section *s = section();
    if (!s)
        return true;
    RegistryFile::Value &v = RegistryFile::findOrAdd(*s, name);
    v.type = RegistryFile::Type::String;
    v.string = value;
    m_dirty = true;
    return false;
}
