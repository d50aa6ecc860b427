#pragma once

#include "settings/registryfile.h"
#include "settings/registrykey.h"

// A registry key kept in a registry-format text file. The file is read on
// open and written back on close when something was set; a missing,
// unreadable or corrupt file behaves as a missing key.
class FileRegistryKey : public RegistryKey {
public:
    // fullKey is the section name, e.g. "HKEY_LOCAL_MACHINE\Software\...".
    FileRegistryKey(QString filePath, QString fullKey);

    bool open() override;
    bool openOrCreate() override;
    void close() override;

    bool queryByte(const QString &name, uint8_t &out) override;
    bool queryString(const QString &name, int bufferChars, QString &out) override;
    bool queryDword(const QString &name, uint32_t &out) override;

    bool setByte(const QString &name, uint8_t value) override;
    bool setDword(const QString &name, uint32_t value) override;
    bool setString(const QString &name, const QString &value) override;

private:
    RegistryFile::Section *section() { return m_open ? m_file.section(m_key) : nullptr; }

    QString m_path;
    QString m_key;
    RegistryFile m_file;
    bool m_open = false;
    bool m_dirty = false;
};
