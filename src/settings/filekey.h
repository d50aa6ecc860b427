#pragma once

#include "settings/registryfile.h"
#include "settings/registrykey.h"

// A registry key kept in a registry-format text file. The file is read on
// open and written back on close when something was set; a missing file,
// or one the program cannot use, behaves as a missing key.
//
// A file that is there but cannot be used (not registry text, larger than
// maxFileSize, not readable) is never overwritten as it stands: the first
// write renames it to damagedCopyPath() and then writes a fresh file. An
// empty file holds nothing worth keeping and is simply replaced. A folder
// or any other non-file in the file's place is left alone: the key can then
// be neither opened nor created, and settings last for the run only.
class FileRegistryKey : public RegistryKey {
public:
    // fullKey is the section name, e.g. "HKEY_LOCAL_MACHINE\Software\...".
    FileRegistryKey(QString filePath, QString fullKey);

    // A settings file is a few hundred bytes; a larger one is not ours and
    // is not read beyond this many bytes.
    static constexpr qint64 maxFileSize = 1024 * 1024;

    // Where an unusable settings file is kept before a write replaces it;
    // an older copy there is replaced.
    static QString damagedCopyPath(const QString &filePath);

    bool open() override;
    bool openOrCreate() override;
    void close() override;

    bool queryByte(const QString &name, uint8_t &out) override;
    bool queryString(const QString &name, int bufferChars, QString &out) override;
    bool queryDword(const QString &name, uint32_t &out) override;

    bool setByte(const QString &name, uint8_t value) override;
    bool setDword(const QString &name, uint32_t value) override;
    bool setString(const QString &name, const QString &value) override;

    std::unique_ptr<RegistryKey> subKey(const QString &name) const override;

private:
    enum class FileState { Missing, Parsed, Damaged, NotAFile };

    FileState load();
    void write();
    RegistryFile::Section *section() { return m_open ? m_file.section(m_key) : nullptr; }

    QString m_path;
    QString m_key;
    RegistryFile m_file;
    FileState m_state = FileState::Missing;
    bool m_open = false;
    bool m_dirty = false;
};
