// The Win32 registry behind the registry port, in the 32-bit view for both
// builds.
#include <windows.h>

#include <algorithm>
#include <array>
#include <memory>
#include <type_traits>
#include <vector>

#include "platform/adapters.h"
#include "runtime/text.h"

namespace ostrel::platform {

namespace {

struct KeyCloser {
    void operator()(HKEY key) const noexcept { RegCloseKey(key); }
};
using UniqueHkey = std::unique_ptr<std::remove_pointer_t<HKEY>, KeyCloser>;

// The wrapper numbers hives as the low bits of the predefined handles.
HKEY hiveHandle(int32_t hive) {
    switch (hive) {
        case kHiveClassesRoot:
            return HKEY_CLASSES_ROOT;
        case kHiveCurrentUser:
            return HKEY_CURRENT_USER;
        case kHiveLocalMachine:
            return HKEY_LOCAL_MACHINE;
        case kHiveUsers:
            return HKEY_USERS;
        case kHiveCurrentConfig:
            return HKEY_CURRENT_CONFIG;
        default:
            return nullptr;
    }
}

const wchar_t* wide(const std::u16string& text) {
    return reinterpret_cast<const wchar_t*>(text.c_str());
}

class Win32Key final : public RegistryKey {
  public:
    explicit Win32Key(UniqueHkey key) : key_(std::move(key)) {}

    std::optional<std::string> stringValue(std::string_view name) const override {
        DWORD type = 0;
        std::vector<BYTE> data;
        if (!query(name, type, data) || (type != REG_SZ && type != REG_EXPAND_SZ)) {
            return std::nullopt;
        }
        std::u16string text(data.size() / sizeof(char16_t), u'\0');
        std::copy_n(data.data(), text.size() * sizeof(char16_t),
                    reinterpret_cast<BYTE*>(text.data()));
        // The stored text may or may not carry its terminating NUL.
        const std::size_t nul = text.find(u'\0');
        if (nul != std::u16string::npos) text.resize(nul);
        return fromUtf16(text);
    }

    std::optional<std::vector<std::string>> multiStringValue(std::string_view name) const override {
        DWORD type = 0;
        std::vector<BYTE> data;
        if (!query(name, type, data) || type != REG_MULTI_SZ) return std::nullopt;
        std::u16string text(data.size() / sizeof(char16_t), u'\0');
        std::copy_n(data.data(), text.size() * sizeof(char16_t),
                    reinterpret_cast<BYTE*>(text.data()));
        // Entries end in a NUL each, the list in one more; either may be missing.
        while (!text.empty() && text.back() == u'\0') text.pop_back();
        std::vector<std::string> entries;
        if (text.empty()) return entries;
        std::u16string_view rest = text;
        for (;;) {
            const std::size_t nul = rest.find(u'\0');
            entries.push_back(fromUtf16(rest.substr(0, nul)));
            if (nul == std::u16string_view::npos) return entries;
            rest.remove_prefix(nul + 1);
        }
    }

    std::optional<int32_t> dwordValue(std::string_view name) const override {
        DWORD type = 0;
        std::vector<BYTE> data;
        if (!query(name, type, data) || type != REG_DWORD || data.size() != sizeof(DWORD)) {
            return std::nullopt;
        }
        DWORD number = 0;
        std::copy_n(data.data(), sizeof number, reinterpret_cast<BYTE*>(&number));
        return static_cast<int32_t>(number);
    }

    std::optional<std::string> subKeyName(uint32_t index) const override {
        // Key names are at most 255 characters.
        std::array<wchar_t, 256> buffer{};
        DWORD length = static_cast<DWORD>(buffer.size());
        const LONG status = RegEnumKeyExW(key_.get(), index, buffer.data(), &length, nullptr,
                                          nullptr, nullptr, nullptr);
        if (status != ERROR_SUCCESS) return std::nullopt;
        return fromUtf16(
            std::u16string_view(reinterpret_cast<const char16_t*>(buffer.data()), length));
    }

  private:
    bool query(std::string_view name, DWORD& type, std::vector<BYTE>& data) const {
        const std::u16string wideName = toUtf16(name);
        data.resize(256);
        for (;;) {
            DWORD size = static_cast<DWORD>(data.size());
            const LONG status =
                RegQueryValueExW(key_.get(), wide(wideName), nullptr, &type, data.data(), &size);
            if (status == ERROR_MORE_DATA) {
                data.resize(size);
                continue;
            }
            if (status != ERROR_SUCCESS) return false;
            data.resize(size);
            return true;
        }
    }

    UniqueHkey key_;
};

class Win32Registry final : public RegistryPort {
  public:
    std::unique_ptr<RegistryKey> open(int32_t hive, std::string_view path, int32_t access,
                                      int32_t& errorCode) override {
        const HKEY root = hiveHandle(hive);
        if (root == nullptr) {
            errorCode = ERROR_INVALID_HANDLE;
            return nullptr;
        }
        const std::u16string widePath = toUtf16(path);
        HKEY opened = nullptr;
        // The family's installers are 32-bit and write the 32-bit view: the
        // 64-bit build reads there too (a 32-bit process is there already).
        const REGSAM sam = static_cast<REGSAM>(access) | KEY_WOW64_32KEY;
        const LONG status = RegOpenKeyExW(root, wide(widePath), 0, sam, &opened);
        errorCode = static_cast<int32_t>(status);
        if (status != ERROR_SUCCESS) return nullptr;
        return std::make_unique<Win32Key>(UniqueHkey(opened));
    }
};

}  // namespace

RegistryPort& systemRegistry() {
    static Win32Registry registry;
    return registry;
}

}  // namespace ostrel::platform
