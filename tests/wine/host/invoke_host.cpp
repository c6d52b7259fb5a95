// How IDispatch::Invoke reshapes what a late-binding host passes before the
// type library sees it, beyond what a script host sends (tests/wine/vbs):
// puts by reference, named arguments, omitted ones, the index of a bad
// argument; and the edges of the vtable a careful host meets: a null count
// to Next, E_POINTER leaving no stale error behind, an object as an index, a
// call through the standard marshaller from another apartment. The DLL must
// be registered. Exit code: number of failed checks.
#include <windows.h>

#include <atomic>
#include <string>
#include <thread>

#include <initguid.h>

#include "com/ostrel_h.h"
#include "host_support.h"

using host::check;
using host::controlError;
using host::create;
using host::idOf;
using host::invoke;
using host::Ptr;
using host::Var;

namespace {

// An object that counts how often its default member is asked for.
class Counting final : public IDispatch {
  public:
    int invoked = 0;
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** out) override {
        if (IsEqualIID(riid, IID_IUnknown) || IsEqualIID(riid, IID_IDispatch)) {
            *out = this;
            return S_OK;
        }
        *out = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
        *count = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT* result,
                                     EXCEPINFO*, UINT*) override {
        ++invoked;
        if (result) {
            V_VT(result) = VT_I4;
            V_I4(result) = 1;
        }
        return S_OK;
    }
    virtual ~Counting() = default;
};

void putsAndByReference() {
    Ptr<IDispatch> product;
    create(CLSID_wncSoftwareProduct, IID_IDispatch, product);
    if (!product.p) return check(false, "wncSoftwareProduct created for IDispatch");
    const DISPID label = idOf(product.p, L"Label");
    DISPID putId = DISPID_PROPERTYPUT;

    // A host variable by reference (a put by value: the VBScript hosts).
    Var value(L"by reference"), ref, read;
    ref.refTo(value.v);
    DISPPARAMS putRef = {&ref.v, &putId, 1, 1};
    DISPPARAMS none = {nullptr, nullptr, 0, 0};
    check(invoke(product.p, label, DISPATCH_PROPERTYPUT, putRef, nullptr) == S_OK &&
              invoke(product.p, label, DISPATCH_PROPERTYGET, none, &read.v) == S_OK &&
              V_VT(&read.v) == VT_BSTR && std::wstring(V_BSTR(&read.v)) == L"by reference",
          "a put of a host variable by reference");
    check(invoke(product.p, label, DISPATCH_PROPERTYPUT, none, nullptr) == DISP_E_PARAMNOTFOUND,
          "a put without its value: not found");

    UINT count = 9;
    Ptr<ITypeInfo> info, none2;
    check(product->GetTypeInfoCount(&count) == S_OK && count == 1 &&
              product->GetTypeInfo(0, LOCALE_USER_DEFAULT, info.put()) == S_OK && info.p &&
              product->GetTypeInfo(1, LOCALE_USER_DEFAULT, none2.put()) == DISP_E_BADINDEX,
          "GetTypeInfo: one, and DISP_E_BADINDEX past it");
}

void namedOmittedAndBadArguments() {
    Ptr<IDispatch> products;
    create(CLSID_wncSoftwareProducts, IID_IDispatch, products);
    if (!products.p) return check(false, "wncSoftwareProducts created for IDispatch");
    LPOLESTR names[] = {const_cast<LPOLESTR>(L"Add"), const_cast<LPOLESTR>(L"sKey"),
                        const_cast<LPOLESTR>(L"ProductName")};
    DISPID ids[3] = {};
    check(products->GetIDsOfNames(IID_NULL, names, 3, LOCALE_USER_DEFAULT, ids) == S_OK,
          "the names of Add and its parameters");
    const DISPID add = ids[0];

    // Named, in the other order, one a host variable by reference.
    Var name(L"x"), key(L"k"), ref, result;
    ref.refTo(name.v);
    VARIANT named[2] = {key.v, ref.v};  // rgvarg[k] goes with rgdispidNamedArgs[k]
    DISPID namedIds[2] = {ids[1], ids[2]};
    DISPPARAMS byName = {named, namedIds, 2, 2};
    check(invoke(products.p, add, DISPATCH_METHOD, byName, &result.v) == S_OK &&
              V_VT(&result.v) == VT_DISPATCH,
          "Add(sKey:=\"k\", ProductName:=variable) by name");

    // Omitted and missing.
    DISPPARAMS none = {nullptr, nullptr, 0, 0};
    Var omitted;
    V_VT(&omitted.v) = VT_ERROR;
    V_ERROR(&omitted.v) = DISP_E_PARAMNOTFOUND;
    VARIANT keyOmitted[2] = {omitted.v, name.v};
    DISPPARAMS withOmittedKey = {keyOmitted, nullptr, 2, 0};
    VariantClear(&result.v);
    check(invoke(products.p, add, DISPATCH_METHOD, withOmittedKey, &result.v) == S_OK,
          "an optional argument passed as omitted");
    check(invoke(products.p, add, DISPATCH_METHOD, none, nullptr) == DISP_E_BADPARAMCOUNT,
          "a required argument left out: wrong number of arguments");
    DISPPARAMS nameOmitted = {&omitted.v, nullptr, 1, 0};
    check(invoke(products.p, add, DISPATCH_METHOD, nameOmitted, nullptr) == DISP_E_PARAMNOTFOUND,
          "a required argument passed as omitted: not found");

    // The index of a bad argument is the host's own.
    Var bad;
    V_VT(&bad.v) = VT_ARRAY | VT_I4;
    V_ARRAY(&bad.v) = SafeArrayCreateVector(VT_I4, 0, 1);
    VARIANT positional[2] = {bad.v, name.v};  // Add("x", <array>)
    DISPPARAMS badKey = {positional, nullptr, 2, 0};
    UINT argErr = 99;
    check(
        invoke(products.p, add, DISPATCH_METHOD, badKey, nullptr, &argErr) == DISP_E_TYPEMISMATCH &&
            argErr == 0,
        "a mismatch in the second positional argument: puArgErr 0");
    VARIANT namedBad[2] = {name.v, bad.v};
    DISPID namedBadIds[2] = {ids[2], ids[1]};  // ProductName:="x", sKey:=<array>
    DISPPARAMS badNamed = {namedBad, namedBadIds, 2, 2};
    argErr = 99;
    check(invoke(products.p, add, DISPATCH_METHOD, badNamed, nullptr, &argErr) ==
                  DISP_E_TYPEMISMATCH &&
              argErr == 1,
          "a mismatch in a named argument: puArgErr is its place");
}

void vtableEdges() {
    Ptr<_wncSoftwareProducts> products;
    create(CLSID_wncSoftwareProducts, IID__wncSoftwareProducts, products);
    if (!products.p) return check(false, "wncSoftwareProducts created");

    // An object as an index: a type mismatch, without asking its default member.
    Counting counting;
    Var index;
    V_VT(&index.v) = VT_DISPATCH;
    V_DISPATCH(&index.v) = &counting;
    Ptr<_wncSoftwareProduct> none;
    check(products->get_Item(&index.v, none.put()) == controlError(13) && counting.invoked == 0,
          "an object as an index: 13, its default member never asked");
    V_VT(&index.v) = VT_EMPTY;

    // E_POINTER leaves no earlier error behind.
    Ptr<IErrorInfo> info;
    check(products->get_Count(nullptr) == E_POINTER && GetErrorInfo(0, info.put()) == S_FALSE,
          "E_POINTER after a failure: no stale error object");

    BSTR name = SysAllocString(L"x");
    Ptr<_wncSoftwareProduct> added;
    products->Add(&name, nullptr, added.put());
    SysFreeString(name);
    Ptr<IUnknown> unknown;
    Ptr<IEnumVARIANT> walk;
    products->get_NewEnum(unknown.put());
    if (unknown.p) unknown->QueryInterface(IID_IEnumVARIANT, walk.putVoid());
    Var item;
    check(walk.p && walk->Next(1, &item.v, nullptr) == S_OK && V_VT(&item.v) == VT_DISPATCH &&
              V_DISPATCH(&item.v) != nullptr,
          "Next of one element with a null count");
}

#ifdef _WIN64
constexpr const wchar_t* kPlatform = L"win64";
#else
constexpr const wchar_t* kPlatform = L"win32";
#endif
constexpr const wchar_t* kTypeLibVersion = L"TypeLib\\{3E2EAAB4-65B9-49E3-917A-E1D592331BAB}\\e.f";

// Wine's proxy looks for the type library under locale 0 only, where Windows
// falls back from 0 to the registered 409: for the time of the test the
// same file stands under 0 as well (the registration itself is left as it is).
class NeutralLocaleTypeLib {
  public:
    NeutralLocaleTypeLib() {
        const std::wstring registered = std::wstring(kTypeLibVersion) + L"\\409\\" + kPlatform;
        wchar_t path[MAX_PATH] = {};
        LONG size = sizeof path;
        if (RegQueryValueW(HKEY_CLASSES_ROOT, registered.c_str(), path, &size) != ERROR_SUCCESS) {
            return;
        }
        const std::wstring neutral = std::wstring(kTypeLibVersion) + L"\\0\\" + kPlatform;
        made_ = RegSetValueW(HKEY_CLASSES_ROOT, neutral.c_str(), REG_SZ, path,
                             static_cast<DWORD>(wcslen(path) * sizeof(wchar_t))) == ERROR_SUCCESS;
    }
    ~NeutralLocaleTypeLib() {
        if (!made_) return;
        RegDeleteKeyW(HKEY_CLASSES_ROOT,
                      (std::wstring(kTypeLibVersion) + L"\\0\\" + kPlatform).c_str());
        RegDeleteKeyW(HKEY_CLASSES_ROOT, (std::wstring(kTypeLibVersion) + L"\\0").c_str());
    }
    NeutralLocaleTypeLib(const NeutralLocaleTypeLib&) = delete;
    NeutralLocaleTypeLib& operator=(const NeutralLocaleTypeLib&) = delete;

  private:
    bool made_ = false;
};

// The standard marshaller (the type library's proxy, through the Interface
// keys) carries a call from another apartment.
void fromAnotherApartment() {
    const NeutralLocaleTypeLib neutral;
    Ptr<_wncPCInfo> info;
    create(CLSID_wncPCInfo, IID__wncPCInfo, info);
    if (!info.p) return check(false, "wncPCInfo created");
    BSTR here = nullptr;
    info->get_ComputerName(&here);
    IStream* stream = nullptr;
    const HRESULT marshalled =
        CoMarshalInterThreadInterfaceInStream(IID__wncPCInfo, info.p, &stream);
    HRESULT unmarshalled = E_FAIL, called = E_FAIL;
    std::wstring there;
    bool proxied = false;
    std::atomic<bool> done{false};
    std::thread other([&] {
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        {
            Ptr<_wncPCInfo> remote;
            unmarshalled = CoGetInterfaceAndReleaseStream(stream, IID__wncPCInfo, remote.putVoid());
            if (remote.p) {
                proxied = static_cast<void*>(remote.p) != static_cast<void*>(info.p);
                BSTR name = nullptr;
                called = remote->get_ComputerName(&name);
                there = name ? name : L"";
                SysFreeString(name);
            }
        }
        CoUninitialize();
        done = true;
    });
    // The object's apartment serves the call while the other thread waits.
    while (!done) {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
        Sleep(5);
    }
    other.join();
    check(SUCCEEDED(marshalled) && SUCCEEDED(unmarshalled) && proxied && called == S_OK &&
              there == (here ? here : L""),
          "a call from another apartment through the proxy answers the same");
    SysFreeString(here);
}

}  // namespace

int main() {
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    putsAndByReference();
    namedOmittedAndBadArguments();
    vtableEdges();
    fromAnotherApartment();
    CoUninitialize();
    return host::finish();
}
