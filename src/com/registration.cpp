#include "com/registration.h"

#include <olectl.h>

#include <cwchar>
#include <string>
#include <vector>

#include "com/automation_types.h"
#include "com/dispatch.h"
#include "com/module.h"
#include "com/public_classes.h"

namespace ostrel::com {

namespace {

// The automation marshaller: older identifiers are marshalled like the newest.
constexpr const wchar_t* kAutomationProxyStub = L"{00020424-0000-0000-C000-000000000046}";
constexpr const wchar_t* kProgIdPrefix = L"Ostrel.";

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
    wchar_t text[40] = {};
    StringFromGUID2(guid, text, 40);
    return text;
}

// Hexadecimal, as the type library keys spell versions.
std::wstring typeLibVersion(const TLIBATTR& attr) {
    wchar_t text[16] = {};
    std::swprintf(text, 16, L"%x.%x", attr.wMajorVerNum, attr.wMinorVerNum);
    return text;
}

std::wstring decimalVersion(const TLIBATTR& attr) {
    return std::to_wstring(attr.wMajorVerNum) + L"." + std::to_wstring(attr.wMinorVerNum);
}

// The view the other build of the component registers in.
constexpr REGSAM kOtherView = sizeof(void*) == 8 ? KEY_WOW64_32KEY : KEY_WOW64_64KEY;

HRESULT fromStatus(LSTATUS status) {
    return status == ERROR_SUCCESS ? S_OK : HRESULT_FROM_WIN32(static_cast<DWORD>(status));
}

struct Value {
    const wchar_t* name;  // nullptr: the default value
    std::wstring data;
};

// One key that registration writes under HKEY_CLASSES_ROOT.
struct OwnedKey {
    std::wstring path;
    std::vector<Value> values;
    // The whole tree is ours: unregistration deletes it.
    bool root = false;
    // In the part of the registry both views see (the ProgIDs): deleted only
    // when no view still registers the classes.
    bool shared = false;
};

struct LoadedLibrary {
    ComPtr<ITypeLib> lib;
    TLIBATTR attr{};
};

// The Interface keys the type library's registration writes, one for each
// automation interface it describes: removing them is ours.
void addLibraryInterfaces(ITypeLib& lib, std::vector<OwnedKey>& keys) {
    for (UINT index = 0, count = lib.GetTypeInfoCount(); index < count; ++index) {
        ComPtr<ITypeInfo> info;
        TYPEATTR* attr = nullptr;
        if (FAILED(lib.GetTypeInfo(index, info.put())) || FAILED(info->GetTypeAttr(&attr))) {
            continue;
        }
        const bool automation = attr->typekind == TKIND_DISPATCH ||
                                (attr->typekind == TKIND_INTERFACE &&
                                 (attr->wTypeFlags & (TYPEFLAG_FDUAL | TYPEFLAG_FOLEAUTOMATION)));
        if (automation) keys.push_back({L"Interface\\" + guidText(attr->guid), {}, true});
        info->ReleaseTypeAttr(attr);
    }
}

// Every key registration writes besides the type library's own, parents
// before their sub-keys.
std::vector<OwnedKey> ownedKeys(const std::wstring& path, const LoadedLibrary& loaded) {
    const TLIBATTR& attr = loaded.attr;
    const std::wstring libId = guidText(attr.guid);
    std::vector<OwnedKey> keys;
    addLibraryInterfaces(*loaded.lib.get(), keys);
    for (const PublicClass& publicClass : publicClasses()) {
        const std::wstring progId = kProgIdPrefix + std::wstring(publicClass.name);
        const std::wstring clsid = guidText(publicClass.clsid);
        const std::wstring clsidKey = L"CLSID\\" + clsid;
        keys.push_back({progId, {{nullptr, progId}}, true, true});
        keys.push_back({progId + L"\\Clsid", {{nullptr, clsid}}, false, true});
        keys.push_back({clsidKey, {{nullptr, progId}}, true});
        keys.push_back(
            {clsidKey + L"\\InprocServer32", {{nullptr, path}, {L"ThreadingModel", L"Apartment"}}});
        keys.push_back({clsidKey + L"\\ProgID", {{nullptr, progId}}});
        keys.push_back({clsidKey + L"\\VERSION", {{nullptr, decimalVersion(attr)}}});
        keys.push_back({clsidKey + L"\\TypeLib", {{nullptr, libId}}});
        keys.push_back({clsidKey + L"\\Programmable", {}});
        for (const IID& older : publicClass.olderIids) {
            const std::wstring key = L"Interface\\" + guidText(older);
            keys.push_back({key, {{nullptr, publicClass.interfaceName}}, true});
            keys.push_back({key + L"\\ProxyStubClsid", {{nullptr, kAutomationProxyStub}}});
            keys.push_back({key + L"\\ProxyStubClsid32", {{nullptr, kAutomationProxyStub}}});
            keys.push_back(
                {key + L"\\TypeLib", {{nullptr, libId}, {L"Version", typeLibVersion(attr)}}});
            keys.push_back({key + L"\\Forward", {{nullptr, guidText(publicClass.iid)}}});
        }
    }
    return keys;
}

HRESULT writeKey(const OwnedKey& owned) {
    RegKey key;
    LSTATUS status = RegCreateKeyExW(HKEY_CLASSES_ROOT, owned.path.c_str(), 0, nullptr, 0,
                                     KEY_SET_VALUE, nullptr, key.put(), nullptr);
    for (const Value& value : owned.values) {
        if (status != ERROR_SUCCESS) break;
        const auto bytes = static_cast<DWORD>((value.data.size() + 1) * sizeof(wchar_t));
        status = RegSetValueExW(key.get(), value.name, 0, REG_SZ,
                                reinterpret_cast<const BYTE*>(value.data.c_str()), bytes);
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
    for (const PublicClass& publicClass : publicClasses()) {
        if (keyExists(L"CLSID\\" + guidText(publicClass.clsid) + L"\\InprocServer32", kOtherView)) {
            return true;
        }
    }
    return false;
}

HRESULT unregister(const LoadedLibrary& loaded) {
    const TLIBATTR& attr = loaded.attr;
    const std::vector<OwnedKey> keys = ownedKeys({}, loaded);
    Outcome outcome;
    for (const OwnedKey& key : keys) {
        if (key.root && !key.shared) outcome.deleteTree(key.path);
    }
    const bool last = !otherViewRegisters();
    // The system's unregistration clears the Interface keys of the library in
    // every view it wrote them to: only the last one out may call it.
    if (last && keyExists(typeLibPlatformKey(attr))) {
        outcome.note(UnRegisterTypeLib(attr.guid, attr.wMajorVerNum, attr.wMinorVerNum, attr.lcid,
                                       attr.syskind));
    }
    removeTypeLibKeys(attr, outcome);
    for (const OwnedKey& key : keys) {
        if (key.root && key.shared && last) outcome.deleteTree(key.path);
    }
    return outcome.result();
}

HRESULT registerAll(const LoadedLibrary& loaded, const std::wstring& path) {
    if (FAILED(RegisterTypeLib(loaded.lib.get(), const_cast<OLECHAR*>(path.c_str()), nullptr))) {
        return SELFREG_E_TYPELIB;
    }
    for (const OwnedKey& key : ownedKeys(path, loaded)) {
        if (FAILED(writeKey(key))) return SELFREG_E_CLASS;
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
