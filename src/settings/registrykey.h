#pragma once

#include <QString>

#include <cstdint>
#include <memory>

// One key of the persistent settings store, with the registry's value
// types: 1-byte binary flags, a DWORD and strings. On Windows it is the
// registry key itself; elsewhere a registry-format text file holds it.
// Every call that can fail returns true on failure, like the registry API.
class RegistryKey {
public:
    virtual ~RegistryKey() = default;

    virtual bool open() = 0;         // existing key only
    virtual bool openOrCreate() = 0; // creates the key when it is missing
    virtual void close() = 0;        // commits what was written

    // Reads a binary value into a one-byte buffer: fails unless the value
    // exists and is exactly one byte long.
    virtual bool queryByte(const QString &name, uint8_t &out) = 0;
    // Reads a string into a buffer of bufferChars characters including the
    // terminating zero: a longer string does not fit and fails.
    virtual bool queryString(const QString &name, int bufferChars, QString &out) = 0;
    virtual bool queryDword(const QString &name, uint32_t &out) = 0;

    virtual bool setByte(const QString &name, uint8_t value) = 0;
    virtual bool setDword(const QString &name, uint32_t value) = 0;
    virtual bool setString(const QString &name, const QString &value) = 0;

    // The key `name` below this one, in the same store (a section of its
    // own after this key's in the settings file).
    virtual std::unique_ptr<RegistryKey> subKey(const QString &name) const = 0;
};

// The key of this program version, "Software\Velmora-Systems\NAK_OS
// PC-Interface 1.43": on Windows under HKEY_LOCAL_MACHINE, falling back to
// HKEY_CURRENT_USER; elsewhere in the file settingsFilePath().
std::unique_ptr<RegistryKey> openProgramKey();

// NAKOS_SETTINGS_FILE when set, else <config folder>/Velmora-Systems/
// NAK_OS PC-Interface.reg.
QString settingsFilePath();
