#include "settings/filekey.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

FileRegistryKey::FileRegistryKey(QString filePath, QString fullKey)
    : m_path(std::move(filePath)), m_key(std::move(fullKey)) {}

std::unique_ptr<RegistryKey> FileRegistryKey::subKey(const QString &name) const {
    return std::make_unique<FileRegistryKey>(m_path, m_key + QLatin1Char('\\') + name);
}

QString FileRegistryKey::damagedCopyPath(const QString &filePath) {
    return filePath + QLatin1String(".damaged");
}

FileRegistryKey::FileState FileRegistryKey::load() {
    m_file = RegistryFile();
    const QFileInfo info(m_path);
    if (!info.exists())
        return FileState::Missing;
    // Only a plain file is read: a device or a pipe could block or never end.
    if (!info.isFile())
        return FileState::NotAFile;
    if (info.size() > maxFileSize)
        return FileState::Damaged;
    QFile f(m_path);
    if (!f.open(QIODevice::ReadOnly))
        return FileState::Damaged;
    // Read in small pieces up to the limit: the size seen above may be
    // stale or 0 for a file the system makes up as it is read.
    QByteArray bytes;
    while (bytes.size() <= maxFileSize) {
        const QByteArray piece = f.read(4096);
        if (piece.isEmpty())
            break;
        bytes += piece;
    }
    if (f.error() != QFileDevice::NoError || bytes.size() > maxFileSize)
        return FileState::Damaged;
    if (bytes.isEmpty())
        return FileState::Missing;
    return m_file.parse(bytes) ? FileState::Damaged : FileState::Parsed;
}

bool FileRegistryKey::open() {
    m_open = false;
    m_dirty = false;
    m_state = load();
    if (m_state != FileState::Parsed || !m_file.section(m_key))
        return true;
    m_open = true;
    return false;
}

bool FileRegistryKey::openOrCreate() {
    if (!open())
        return false;
    if (m_state == FileState::NotAFile)
        return true;
    // A readable file keeps its other keys; anything else starts afresh
    // (load() left the file empty then).
    m_file.addSection(m_key);
    m_open = true;
    m_dirty = true;
    return false;
}

void FileRegistryKey::close() {
    if (m_open && m_dirty)
        write();
    m_open = false;
    m_dirty = false;
}

void FileRegistryKey::write() {
    // Errors are not reported: the settings then live in memory only.
    QDir().mkpath(QFileInfo(m_path).absolutePath());
    if (m_state == FileState::Damaged) {
        // The operator may want to look at what was there, so it is renamed
        // rather than overwritten (also cheap for a huge file). When that
        // fails the file stays as it is and nothing is written.
        const QString kept = damagedCopyPath(m_path);
        QFile::remove(kept);
        if (!QFile::rename(m_path, kept))
            return;
        m_state = FileState::Missing;
    }
    QSaveFile out(m_path);
    if (out.open(QIODevice::WriteOnly)) {
        out.write(m_file.serialize());
        if (out.commit())
            m_state = FileState::Parsed;
    }
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
