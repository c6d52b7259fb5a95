#include <windows.h>

#include <string>

#include "platform/adapters.h"
#include "runtime/text.h"

namespace ostrel::platform {

namespace {

std::string fromWide(const wchar_t* text, size_t length) {
    return fromUtf16(std::u16string_view(reinterpret_cast<const char16_t*>(text), length));
}

// The file this code lies in: the DLL inside a host, the program for the tool.
std::string moduleFile() {
    HMODULE module = nullptr;
    if (!GetModuleHandleExW(
            GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
            reinterpret_cast<LPCWSTR>(&moduleFile), &module)) {
        return std::string();
    }
    std::wstring buffer(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length =
            GetModuleFileNameW(module, buffer.data(), static_cast<DWORD>(buffer.size()));
        if (length == 0) return std::string();
        if (length < buffer.size()) return fromWide(buffer.data(), length);
        buffer.resize(buffer.size() * 2);
    }
}

class Win32Environment final : public EnvironmentPort {
  public:
    std::optional<std::string> variable(std::string_view name) override {
        const std::u16string wideName = toUtf16(name);
        const auto* key = reinterpret_cast<const wchar_t*>(wideName.c_str());
        std::wstring value(256, L'\0');
        for (;;) {
            SetLastError(ERROR_SUCCESS);
            const DWORD length =
                GetEnvironmentVariableW(key, value.data(), static_cast<DWORD>(value.size()));
            if (length == 0) {
                if (GetLastError() == ERROR_ENVVAR_NOT_FOUND) return std::nullopt;
                return std::string();
            }
            if (length < value.size()) return fromWide(value.data(), length);
            value.resize(length);
        }
    }

    // The component's file can't move while it is loaded: looked up once.
    std::string componentFolder() override {
        static const std::string folder = [] {
            const std::string file = moduleFile();
            const size_t cut = file.find_last_of("\\/");
            return cut == std::string::npos ? std::string() : file.substr(0, cut);
        }();
        return folder;
    }
};

}  // namespace

EnvironmentPort& systemEnvironment() {
    static Win32Environment environment;
    return environment;
}

}  // namespace ostrel::platform
