// The settings key in the Windows registry. Only built on Windows.
#include "settings/registrykey.h"
#include "settings/settings.h"

#ifdef Q_OS_WIN
#include <windows.h>

#include <vector>

namespace {

// HKEY_LOCAL_MACHINE first; a user without administrator rights cannot
// open or create it there, so the same path under HKEY_CURRENT_USER is
// used instead, as registry virtualisation did for such programs.
class WinRegistryKey : public RegistryKey {
public:
    explicit WinRegistryKey(QString path = settings::keyPath()) : m_path(std::move(path)) {}
    bool open() override { return openIn(false); }
    bool openOrCreate() override { return openIn(true); }
    void close() override {
        if (m_key)
            RegCloseKey(m_key);
        m_key = nullptr;
    }
    ~WinRegistryKey() override { close(); }

    bool queryByte(const QString &name, uint8_t &out) override {
        BYTE b = 0;
        DWORD size = 1;
        if (!m_key || RegQueryValueExW(m_key, wname(name).data(), nullptr, nullptr, &b, &size) !=
                          ERROR_SUCCESS)
            return true;
        out = b;
        return false;
    }
    bool queryString(const QString &name, int bufferChars, QString &out) override {
        std::vector<wchar_t> buf(size_t(bufferChars) + 1, 0);
        DWORD size = DWORD(bufferChars * sizeof(wchar_t));
        DWORD type = 0;
        if (!m_key ||
            RegQueryValueExW(m_key, wname(name).data(), nullptr, &type,
                             reinterpret_cast<BYTE *>(buf.data()), &size) != ERROR_SUCCESS ||
            type != REG_SZ)
            return true;
        out = QString::fromWCharArray(buf.data());
        return false;
    }
    bool queryDword(const QString &name, uint32_t &out) override {
        DWORD v = 0;
        DWORD size = sizeof v;
        if (!m_key || RegQueryValueExW(m_key, wname(name).data(), nullptr, nullptr,
                                       reinterpret_cast<BYTE *>(&v), &size) != ERROR_SUCCESS)
            return true;
        out = v;
        return false;
    }
    bool setByte(const QString &name, uint8_t value) override {
        BYTE b = value;
        return !m_key ||
               RegSetValueExW(m_key, wname(name).data(), 0, REG_BINARY, &b, 1) != ERROR_SUCCESS;
    }
    bool setDword(const QString &name, uint32_t value) override {
        DWORD v = value;
        return !m_key || RegSetValueExW(m_key, wname(name).data(), 0, REG_DWORD,
                                        reinterpret_cast<BYTE *>(&v), sizeof v) != ERROR_SUCCESS;
    }
    bool setString(const QString &name, const QString &value) override {
        const std::wstring w = value.toStdWString();
        // The length counts the terminating zero.
        return !m_key || RegSetValueExW(m_key, wname(name).data(), 0, REG_SZ,
                                        reinterpret_cast<const BYTE *>(w.c_str()),
                                        DWORD((w.size() + 1) * sizeof(wchar_t))) != ERROR_SUCCESS;
    }

    std::unique_ptr<RegistryKey> subKey(const QString &name) const override {
        return std::make_unique<WinRegistryKey>(m_path + QLatin1Char('\\') + name);
    }

private:
    static std::wstring wname(const QString &s) { return s.toStdWString(); }

    bool openIn(bool create) {
        close();
        const std::wstring path = m_path.toStdWString();
        for (HKEY hive : {HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER}) {
            if (RegOpenKeyExW(hive, path.c_str(), 0, KEY_ALL_ACCESS, &m_key) == ERROR_SUCCESS)
                return false;
            if (create) {
                wchar_t cls[] = L"REG_DWORD";
                DWORD disposition = 0;
                if (RegCreateKeyExW(hive, path.c_str(), 0, cls, REG_OPTION_NON_VOLATILE,
                                    KEY_ALL_ACCESS, nullptr, &m_key, &disposition) == ERROR_SUCCESS)
                    return false;
            }
        }
        m_key = nullptr;
        return true;
    }

    QString m_path;
    HKEY m_key = nullptr;
};

} // namespace

std::unique_ptr<RegistryKey> openProgramKey() {
    return std::make_unique<WinRegistryKey>();
}
#endif
