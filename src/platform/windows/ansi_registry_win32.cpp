// The A-form registry calls, handed through as they are: the access mask
// exactly as the caller gives it (no view flag added), the buffer in the
// ANSI code page both ways.
#include <windows.h>

#include "platform/adapters.h"
#include "platform/windows/ansi_win32.h"

namespace ostrel::platform {

namespace {

HKEY handleOf(int64_t key) {
    return reinterpret_cast<HKEY>(static_cast<intptr_t>(key));
}

class Win32AnsiRegistry final : public AnsiRegistryPort {
  public:
    int32_t openKeyEx(int32_t hive, std::string_view subKey, uint32_t access,
                      int64_t& key) override {
        // A predefined key is its number sign-extended, as the system defines it.
        const HKEY root = handleOf(static_cast<int64_t>(hive));
        const std::string name = platform::toAnsi(subKey);
        HKEY opened = nullptr;
        const LONG status = RegOpenKeyExA(root, name.c_str(), 0, access, &opened);
        if (status == ERROR_SUCCESS) key = static_cast<int64_t>(reinterpret_cast<intptr_t>(opened));
        return static_cast<int32_t>(status);
    }

    int32_t queryValueEx(int64_t key, std::string_view valueName, uint32_t& type,
                         std::string& buffer, uint32_t& size) override {
        const std::string name = platform::toAnsi(valueName);
        DWORD valueType = 0;
        DWORD valueSize = size;
        // The call never writes beyond what the caller says the buffer holds.
        if (valueSize > buffer.size()) valueSize = static_cast<DWORD>(buffer.size());
        const LONG status = RegQueryValueExA(handleOf(key), name.c_str(), nullptr, &valueType,
                                             reinterpret_cast<BYTE*>(buffer.data()), &valueSize);
        type = valueType;
        size = valueSize;
        return static_cast<int32_t>(status);
    }

    int32_t closeKey(int64_t key) override {
        return static_cast<int32_t>(RegCloseKey(handleOf(key)));
    }

    std::string fromAnsi(std::string_view bytes) override { return platform::fromAnsi(bytes); }
};

}  // namespace

AnsiRegistryPort& systemAnsiRegistry() {
    static Win32AnsiRegistry registry;
    return registry;
}

}  // namespace ostrel::platform
