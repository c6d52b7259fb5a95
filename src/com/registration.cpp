#include "com/registration.h"

#include <olectl.h>

#include <cwchar>
#include <string>

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

// Creates the key (and its parents) under HKEY_CLASSES_ROOT and sets one
// string value; a null name is the default value.
HRESULT setText(const std::wstring& path, const wchar_t* name, const std::wstring& value) {
    RegKey key;
    LSTATUS status = RegCreateKeyExW(HKEY_CLASSES_ROOT, path.c_str(), 0, nullptr, 0, KEY_SET_VALUE,
                                     nullptr, key.put(), nullptr);
    if (status != ERROR_SUCCESS) return HRESULT_FROM_WIN32(static_cast<DWORD>(status));
    const auto bytes = static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t));
    status = RegSetValueExW(key.get(), name, 0, REG_SZ,
                            reinterpret_cast<const BYTE*>(value.c_str()), bytes);
    return status == ERROR_SUCCESS ? S_OK : HRESULT_FROM_WIN32(static_cast<DWORD>(status));
}

HRESULT createKey(const std::wstring& path) {
    RegKey key;
    const LSTATUS status = RegCreateKeyExW(HKEY_CLASSES_ROOT, path.c_str(), 0, nullptr, 0,
                                           KEY_SET_VALUE, nullptr, key.put(), nullptr);
    return status == ERROR_SUCCESS ? S_OK : HRESULT_FROM_WIN32(static_cast<DWORD>(status));
}

void deleteTree(const std::wstring& path) {
    RegDeleteTreeW(HKEY_CLASSES_ROOT, path.c_str());
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

struct LoadedLibrary {
    ComPtr<ITypeLib> lib;
    TLIBATTR attr{};
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

HRESULT registerOlderInterface(const PublicClass& publicClass, REFIID older, const TLIBATTR& attr) {
    const std::wstring key = L"Interface\\" + guidText(older);
    HRESULT hr = setText(key, nullptr, publicClass.interfaceName);
    if (SUCCEEDED(hr)) hr = setText(key + L"\\ProxyStubClsid", nullptr, kAutomationProxyStub);
    if (SUCCEEDED(hr)) hr = setText(key + L"\\ProxyStubClsid32", nullptr, kAutomationProxyStub);
    if (SUCCEEDED(hr)) hr = setText(key + L"\\TypeLib", nullptr, guidText(attr.guid));
    if (SUCCEEDED(hr)) hr = setText(key + L"\\TypeLib", L"Version", typeLibVersion(attr));
    if (SUCCEEDED(hr)) hr = setText(key + L"\\Forward", nullptr, guidText(publicClass.iid));
    return hr;
}

HRESULT registerClass(const PublicClass& publicClass, const std::wstring& path,
                      const TLIBATTR& attr) {
    const std::wstring progId = kProgIdPrefix + std::wstring(publicClass.name);
    const std::wstring clsidKey = L"CLSID\\" + guidText(publicClass.clsid);
    HRESULT hr = setText(progId, nullptr, progId);
    if (SUCCEEDED(hr)) hr = setText(progId + L"\\Clsid", nullptr, guidText(publicClass.clsid));
    if (SUCCEEDED(hr)) hr = setText(clsidKey, nullptr, progId);
    if (SUCCEEDED(hr)) hr = setText(clsidKey + L"\\InprocServer32", nullptr, path);
    if (SUCCEEDED(hr))
        hr = setText(clsidKey + L"\\InprocServer32", L"ThreadingModel", L"Apartment");
    if (SUCCEEDED(hr)) hr = setText(clsidKey + L"\\ProgID", nullptr, progId);
    if (SUCCEEDED(hr)) hr = setText(clsidKey + L"\\VERSION", nullptr, decimalVersion(attr));
    if (SUCCEEDED(hr)) hr = setText(clsidKey + L"\\TypeLib", nullptr, guidText(attr.guid));
    if (SUCCEEDED(hr)) hr = createKey(clsidKey + L"\\Programmable");
    for (const IID& older : publicClass.olderIids) {
        if (SUCCEEDED(hr)) hr = registerOlderInterface(publicClass, older, attr);
    }
    return hr;
}

// What the system's type library unregistration may leave: our platform's
// entry, and the version and library keys once nothing else is under them.
void removeTypeLibKeys(const TLIBATTR& attr) {
    const std::wstring library = L"TypeLib\\" + guidText(attr.guid);
    const std::wstring version = library + L"\\" + typeLibVersion(attr);
    wchar_t lcid[16] = {};
    std::swprintf(lcid, 16, L"%lx", static_cast<unsigned long>(attr.lcid));
    const std::wstring locale = version + L"\\" + lcid;
    deleteTree(locale + (attr.syskind == SYS_WIN64 ? L"\\win64" : L"\\win32"));
    if (!hasSubKeys(locale)) deleteTree(locale);
    if (!hasSubKeys(version, {L"FLAGS", L"HELPDIR"})) deleteTree(version);
    if (!hasSubKeys(library)) deleteTree(library);
}

}  // namespace

HRESULT registerServer() noexcept {
    try {
        const std::wstring path = modulePath();
        if (path.empty()) return SELFREG_E_CLASS;
        LoadedLibrary loaded;
        HRESULT hr = loadLibrary(loaded);
        if (SUCCEEDED(hr))
            hr = RegisterTypeLib(loaded.lib.get(), const_cast<OLECHAR*>(path.c_str()), nullptr);
        if (FAILED(hr)) return SELFREG_E_TYPELIB;
        for (const PublicClass& publicClass : publicClasses()) {
            hr = registerClass(publicClass, path, loaded.attr);
            if (FAILED(hr)) return SELFREG_E_CLASS;
        }
        return S_OK;
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

HRESULT unregisterServer() noexcept {
    try {
        LoadedLibrary loaded;
        if (FAILED(loadLibrary(loaded))) return SELFREG_E_TYPELIB;
        const TLIBATTR& attr = loaded.attr;
        UnRegisterTypeLib(attr.guid, attr.wMajorVerNum, attr.wMinorVerNum, attr.lcid, attr.syskind);
        removeTypeLibKeys(attr);
        for (const PublicClass& publicClass : publicClasses()) {
            deleteTree(kProgIdPrefix + std::wstring(publicClass.name));
            deleteTree(L"CLSID\\" + guidText(publicClass.clsid));
            deleteTree(L"Interface\\" + guidText(publicClass.iid));
            for (const IID& older : publicClass.olderIids) {
                deleteTree(L"Interface\\" + guidText(older));
            }
        }
        return S_OK;
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

}  // namespace ostrel::com
