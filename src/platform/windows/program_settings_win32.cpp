// The older settings store: the current user's tree that the language run
// time keeps for program settings,
// HKEY_CURRENT_USER\Software\VB and VBA Program Settings\<application>\<section>,
// one string value per key.
#include <windows.h>

#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "platform/adapters.h"
#include "runtime/automation_error.h"
#include "runtime/text.h"

namespace ostrel::platform {

namespace {

struct KeyCloser {
    void operator()(HKEY key) const noexcept { RegCloseKey(key); }
};
using UniqueHkey = std::unique_ptr<std::remove_pointer_t<HKEY>, KeyCloser>;

std::wstring wide(std::string_view utf8) {
    const std::u16string text = toUtf16(utf8);
    return std::wstring(text.begin(), text.end());
}

std::wstring keyPath(std::string_view application, std::string_view section) {
    return L"Software\\VB and VBA Program Settings\\" + wide(application) + L"\\" + wide(section);
}

class RegistryProgramSettings final : public ProgramSettingsPort {
  public:
    std::string get(std::string_view application, std::string_view section, std::string_view key,
                    std::string_view defaultValue) override {
        HKEY opened = nullptr;
        if (RegOpenKeyExW(HKEY_CURRENT_USER, keyPath(application, section).c_str(), 0,
                          KEY_QUERY_VALUE, &opened) != ERROR_SUCCESS) {
            return std::string(defaultValue);
        }
        const UniqueHkey handle(opened);
        const std::wstring name = wide(key);
        DWORD type = 0;
        DWORD size = 0;
        if (RegQueryValueExW(opened, name.c_str(), nullptr, &type, nullptr, &size) !=
                ERROR_SUCCESS ||
            (type != REG_SZ && type != REG_EXPAND_SZ)) {
            return std::string(defaultValue);
        }
        std::vector<wchar_t> data(size / sizeof(wchar_t) + 1, L'\0');
        DWORD bytes = static_cast<DWORD>(data.size() * sizeof(wchar_t));
        if (RegQueryValueExW(opened, name.c_str(), nullptr, &type,
                             reinterpret_cast<BYTE*>(data.data()), &bytes) != ERROR_SUCCESS) {
            return std::string(defaultValue);
        }
        const std::u16string text(data.begin(), data.end());
        return fromUtf16(std::u16string_view(text.c_str()));  // up to its NUL
    }

    void save(std::string_view application, std::string_view section, std::string_view key,
              std::string_view value) override {
        if (application.empty() || section.empty() || key.empty()) raise(kErrInvalidCall);
        HKEY created = nullptr;
        if (RegCreateKeyExW(HKEY_CURRENT_USER, keyPath(application, section).c_str(), 0, nullptr, 0,
                            KEY_SET_VALUE, nullptr, &created, nullptr) != ERROR_SUCCESS) {
            raise(kErrInvalidCall);
        }
        const UniqueHkey handle(created);
        const std::wstring data = wide(value);
        const auto bytes = static_cast<DWORD>((data.size() + 1) * sizeof(wchar_t));
        if (RegSetValueExW(created, wide(key).c_str(), 0, REG_SZ,
                           reinterpret_cast<const BYTE*>(data.c_str()), bytes) != ERROR_SUCCESS) {
            raise(kErrInvalidCall);
        }
    }
};

}  // namespace

ProgramSettingsPort& systemProgramSettings() {
    static RegistryProgramSettings settings;
    return settings;
}

}  // namespace ostrel::platform
