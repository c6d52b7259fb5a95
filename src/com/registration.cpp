#include "com/registration.h"

#include <olectl.h>

#include <cwchar>
#include <string>
#include <vector>

#include "com/automation_types.h"
#include "com/dispatch.h"
#include "com/interface_ids.h"
#include "com/module.h"
#include "com/registration_table.h"

namespace ostrel::com {

namespace {

namespace table = registration;

constexpr table::Bitness kBitness = sizeof(void*) == 8 ? table::Bitness::x64 : table::Bitness::x86;

class RegKey {
  public:
    RegKey() = default;
    RegKey(const RegKey&) = delete;
    RegKey& operator=(const RegKey&) = delete;
    ~RegKey() {
        if (key_) RegCloseKey(key_);
    }
    HKEY* put() { return &key_; }
    HKEY get() const { return key_; }

  private:
    HKEY key_ = nullptr;
};

std::wstring guidText(REFGUID guid) {
    return table::guidText(fromIid(guid));
}

// Hexadecimal, as the type library keys spell versions.
std::wstring typeLibVersion(const TLIBATTR& attr) {
    wchar_t text[16] = {};
    std::swprintf(text, 16, L"%x.%x", attr.wMajorVerNum, attr.wMinorVerNum);
    return text;
}

// The view the other build of the component registers in.
constexpr REGSAM kOtherView = sizeof(void*) == 8 ? KEY_WOW64_32KEY : KEY_WOW64_64KEY;

HRESULT fromStatus(LSTATUS status) {
    return status == ERROR_SUCCESS ? S_OK : HRESULT_FROM_WIN32(static_cast<DWORD>(status));
}

struct LoadedLibrary {
    ComPtr<ITypeLib> lib;
    TLIBATTR attr{};
};

// Every key of the table for this build at path; the type library's
// registration writes those of table::Writer::typeLibrary.
std::vector<table::Key> ownedKeys(const std::wstring& path) {
    const std::size_t slash = path.find_last_of(L'\\');
    return table::keys(path, slash == std::wstring::npos ? std::wstring() : path.substr(0, slash),
                       kBitness);
}

HRESULT writeKey(const table::Key& owned) {
    RegKey key;
    LSTATUS status = RegCreateKeyExW(HKEY_CLASSES_ROOT, owned.path.c_str(), 0, nullptr, 0,
                                     KEY_SET_VALUE, nullptr, key.put(), nullptr);
    for (const table::Value& value : owned.values) {
        if (status != ERROR_SUCCESS) break;
        const auto bytes = static_cast<DWORD>((value.data.size() + 1) * sizeof(wchar_t));
        status = RegSetValueExW(key.get(), value.name.empty() ? nullptr : value.name.c_str(), 0,
                                REG_SZ, reinterpret_cast<const BYTE*>(value.data.c_str()), bytes);
    }
    return fromStatus(status);
}

bool keyExists(const std::wstring& path, REGSAM view = 0) {
    RegKey key;
    return RegOpenKeyExW(HKEY_CLASSES_ROOT, path.c_str(), 0, KEY_READ | view, key.put()) ==
           ERROR_SUCCESS;
}

bool hasSubKeys(const std::wstring& path, std::initializer_list<const wchar_t*> ignored = {}) {
    RegKey key;
    if (RegOpenKeyExW(HKEY_CLASSES_ROOT, path.c_str(), 0, KEY_READ, key.put()) != ERROR_SUCCESS) {
        return false;
    }
    for (DWORD index = 0;; ++index) {
        wchar_t name[256];
        DWORD length = 256;
        if (RegEnumKeyExW(key.get(), index, name, &length, nullptr, nullptr, nullptr, nullptr) !=
            ERROR_SUCCESS) {
            return false;
        }
        bool skip = false;
        for (const wchar_t* other : ignored) skip = skip || _wcsicmp(name, other) == 0;
        if (!skip) return true;
    }
}

// Unregistration goes on past a failure and reports the first; a key that
// is gone already is no failure.
class Outcome {
  public:
    void note(HRESULT hr) {
        if (SUCCEEDED(first_) && FAILED(hr) && hr != HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND)) {
            first_ = hr;
        }
    }
    void deleteTree(const std::wstring& path) {
        note(fromStatus(RegDeleteTreeW(HKEY_CLASSES_ROOT, path.c_str())));
    }
    HRESULT result() const { return first_; }

  private:
    HRESULT first_ = S_OK;
};

HRESULT loadLibrary(LoadedLibrary& loaded) {
    HRESULT hr = componentTypeLib(loaded.lib.put());
    if (FAILED(hr)) return hr;
    TLIBATTR* attr = nullptr;
    hr = loaded.lib->GetLibAttr(&attr);
    if (FAILED(hr)) return hr;
    loaded.attr = *attr;
    loaded.lib->ReleaseTLibAttr(attr);
    return S_OK;
}

std::wstring typeLibLocaleKey(const TLIBATTR& attr) {
    wchar_t lcid[16] = {};
    std::swprintf(lcid, 16, L"%lx", static_cast<unsigned long>(attr.lcid));
    return L"TypeLib\\" + guidText(attr.guid) + L"\\" + typeLibVersion(attr) + L"\\" + lcid;
}

std::wstring typeLibPlatformKey(const TLIBATTR& attr) {
    return typeLibLocaleKey(attr) + (attr.syskind == SYS_WIN64 ? L"\\win64" : L"\\win32");
}

// What the system's type library unregistration may leave: our platform's
// entry, and the version and library keys once nothing else is under them.
void removeTypeLibKeys(const TLIBATTR& attr, Outcome& outcome) {
    const std::wstring library = L"TypeLib\\" + guidText(attr.guid);
    const std::wstring version = library + L"\\" + typeLibVersion(attr);
    const std::wstring locale = typeLibLocaleKey(attr);
    outcome.deleteTree(typeLibPlatformKey(attr));
    if (!hasSubKeys(locale)) outcome.deleteTree(locale);
    if (!hasSubKeys(version, {L"FLAGS", L"HELPDIR"})) outcome.deleteTree(version);
    if (!hasSubKeys(library)) outcome.deleteTree(library);
}

// Whether the build of the other bitness is registered too (its class keys
// lie in the other view).
bool otherViewRegisters() {
    for (const table::Class& publicClass : table::classes()) {
        if (keyExists(L"CLSID\\" + table::guidText(publicClass.clsid) + L"\\InprocServer32",
                      kOtherView)) {
            return true;
        }
    }
    return false;
}

HRESULT unregister(const LoadedLibrary& loaded) {
    const TLIBATTR& attr = loaded.attr;
    const std::vector<table::Key> keys = ownedKeys({});
    Outcome outcome;
    // Ours in this view: the class keys, the Interface keys, older ones included.
    for (const table::Key& key : keys) {
        if (key.tree && key.writer != table::Writer::serverShared) outcome.deleteTree(key.path);
    }
    const bool last = !otherViewRegisters();
    // The system's unregistration clears the Interface keys of the library in
    // every view it wrote them to: only the last one out may call it.
    if (last && keyExists(typeLibPlatformKey(attr))) {
        outcome.note(UnRegisterTypeLib(attr.guid, attr.wMajorVerNum, attr.wMinorVerNum, attr.lcid,
                                       attr.syskind));
    }
    removeTypeLibKeys(attr, outcome);
    for (const table::Key& key : keys) {
        if (key.tree && key.writer == table::Writer::serverShared && last) {
            outcome.deleteTree(key.path);
        }
    }
    return outcome.result();
}

HRESULT registerAll(const LoadedLibrary& loaded, const std::wstring& path) {
    if (FAILED(RegisterTypeLib(loaded.lib.get(), const_cast<OLECHAR*>(path.c_str()), nullptr))) {
        return SELFREG_E_TYPELIB;
    }
    for (const table::Key& key : ownedKeys(path)) {
        if (key.writer != table::Writer::typeLibrary && FAILED(writeKey(key)))
            return SELFREG_E_CLASS;
    }
    return S_OK;
}

// Half a registration is worse than none.
void rollBack(const LoadedLibrary& loaded) noexcept {
    try {
        unregister(loaded);
    } catch (...) {
    }
}

}  // namespace

HRESULT registerServer() noexcept {
    LoadedLibrary loaded;
    try {
        const std::wstring path = modulePath();
        if (path.empty()) return SELFREG_E_CLASS;
        if (FAILED(loadLibrary(loaded))) return SELFREG_E_TYPELIB;
        const HRESULT hr = registerAll(loaded, path);
        if (FAILED(hr)) rollBack(loaded);
        return hr;
    } catch (...) {
        if (loaded.lib) rollBack(loaded);
        return E_OUTOFMEMORY;
    }
}

HRESULT unregisterServer() noexcept {
    try {
        LoadedLibrary loaded;
        if (FAILED(loadLibrary(loaded))) return SELFREG_E_TYPELIB;
        return FAILED(unregister(loaded)) ? SELFREG_E_CLASS : S_OK;
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

}  // namespace ostrel::com
