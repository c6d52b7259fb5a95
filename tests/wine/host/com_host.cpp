// A host of Ostrel.dll as an application would be, through the vtable and
// through IDispatch::Invoke, for what a script host (tests/wine/vbs) can't
// send or see: the older interface identifiers (their values: com_server.sh,
// in the registry), the error object of a failing call, the enumerator's
// positions, when the DLL may unload, named, omitted and bad arguments, an
// object as an index. The DLL must be registered. Exit code: number of
// failed checks.
#include <windows.h>

#include <initializer_list>
#include <iterator>
#include <string>
#include <vector>

// The identifiers are defined here, from the generated header.
#include <initguid.h>

#include "com/interface_ids.h"
#include "com/ostrel_h.h"
#include "host_support.h"

using namespace host;

namespace {

template <class T>
bool sameObject(IUnknown* object, REFIID iid, T* expected) {
    Ptr<IUnknown> other;
    return SUCCEEDED(object->QueryInterface(iid, other.putVoid())) &&
           static_cast<void*>(other.p) == static_cast<void*>(expected);
}

std::wstring className(IUnknown* object) {
    Ptr<IProvideClassInfo> provider;
    Ptr<ITypeInfo> info;
    BSTR name = nullptr;
    if (FAILED(object->QueryInterface(IID_IProvideClassInfo, provider.putVoid())) ||
        FAILED(provider->GetClassInfo(info.put())) ||
        FAILED(info->GetDocumentation(MEMBERID_NIL, &name, nullptr, nullptr, nullptr))) {
        return L"";
    }
    std::wstring text(name);
    SysFreeString(name);
    return text;
}

void identityAcrossIdentifiers() {
    Ptr<_wncSoftwareProduct> product;
    Ptr<_wncPCInfo> pcInfo;
    create(CLSID_wncSoftwareProduct, IID__wncSoftwareProduct, product);
    create(CLSID_wncPCInfo, IID__wncPCInfo, pcInfo);
    if (!product.p || !pcInfo.p) return check(false, "wncSoftwareProduct and wncPCInfo created");
    bool same = sameObject(pcInfo.p, ostrel::com::kOlderPCInfoIids[0], pcInfo.p);
    for (const IID& older : ostrel::com::kOlderSoftwareProductIids) {
        same = same && sameObject(product.p, older, product.p);
    }
    check(same, "every older identifier gives the same pointer");
    check(className(product.p) == L"wncSoftwareProduct" && className(pcInfo.p) == L"wncPCInfo",
          "IProvideClassInfo names the class");
}

_wncSoftwareProduct* add(_wncSoftwareProducts* products, Ptr<_wncSoftwareProduct>& record) {
    BSTR name = SysAllocString(L"x");
    products->Add(&name, nullptr, record.put());
    SysFreeString(name);
    return record.p;
}

// An object that counts how often its default member is asked for.
class Counting final : public IDispatch {
  public:
    int invoked = 0;
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** out) override {
        const bool mine = IsEqualIID(riid, IID_IUnknown) || IsEqualIID(riid, IID_IDispatch);
        *out = mine ? this : nullptr;
        return mine ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                     UINT*) override {
        ++invoked;
        return E_FAIL;
    }
    virtual ~Counting() = default;
};

void errorsAndTheEnumerator() {
    Ptr<_wncSoftwareProducts> products;
    create(CLSID_wncSoftwareProducts, IID__wncSoftwareProducts, products);
    if (!products.p) return check(false, "wncSoftwareProducts created");

    Ptr<ISupportErrorInfo> support;
    Var position(1);
    Ptr<_wncSoftwareProduct> item;
    const HRESULT hr = products->get_Item(&position.v, item.put());
    Ptr<IErrorInfo> info;
    BSTR description = nullptr;
    const bool described = GetErrorInfo(0, info.put()) == S_OK &&
                           SUCCEEDED(info->GetDescription(&description)) && description &&
                           std::wstring(description) == L"Subscript out of range";
    SysFreeString(description);
    check(SUCCEEDED(products->QueryInterface(IID_ISupportErrorInfo, support.putVoid())) &&
              support->InterfaceSupportsErrorInfo(IID__wncSoftwareProducts) == S_OK &&
              support->InterfaceSupportsErrorInfo(IID_IPersist) == S_FALSE,
          "ISupportErrorInfo answers for the class's own interface only");
    check(hr == static_cast<HRESULT>(0x800A0009) && described && item.p == nullptr,
          "Item(1) on an empty collection: 0x800A0009 with its IErrorInfo");
    // An object as an index, then E_POINTER, which leaves no earlier error behind.
    Counting counting;
    Var index;
    V_VT(&index.v) = VT_DISPATCH;
    V_DISPATCH(&index.v) = &counting;
    check(products->get_Item(&index.v, item.put()) == static_cast<HRESULT>(0x800A000D) &&
              counting.invoked == 0,
          "an object as an index: 13, its default member never asked");
    check(products->get_Count(nullptr) == E_POINTER && GetErrorInfo(0, info.put()) == S_FALSE,
          "E_POINTER after a failure: no stale error object");

    Ptr<_wncSoftwareProduct> first, second;
    add(products.p, first);
    add(products.p, second);
    Ptr<IUnknown> unknown;
    Ptr<IEnumVARIANT> walk, copy;
    products->get_NewEnum(unknown.put());
    if (!unknown.p || FAILED(unknown->QueryInterface(IID_IEnumVARIANT, walk.putVoid()))) {
        return check(false, "NewEnum gives an IEnumVARIANT");
    }
    VARIANT items[3];
    for (VARIANT& v : items) VariantInit(&v);
    ULONG fetched = 0;
    const HRESULT three = walk->Next(3, items, &fetched);
    const bool firstIsAdded = V_VT(&items[0]) == VT_DISPATCH &&
                              sameObject(V_DISPATCH(&items[0]), IID__wncSoftwareProduct, first.p);
    for (VARIANT& v : items) VariantClear(&v);
    check(three == S_FALSE && fetched == 2 && firstIsAdded,
          "Next(3) of two records: S_FALSE, two fetched, the same objects");
    check(walk->Reset() == S_OK && walk->Skip(1) == S_OK && walk->Clone(copy.put()) == S_OK &&
              copy->Next(1, items, nullptr) == S_OK && V_VT(&items[0]) == VT_DISPATCH &&
              copy->Next(1, items + 1, &fetched) == S_FALSE && fetched == 0,
          "Reset, Skip, Clone: a clone goes on from there; a null count is allowed");
    VariantClear(&items[0]);
    check(walk->Skip(5) == S_FALSE, "Skip past the end: S_FALSE");
}

void unloadOnlyWhenUnused() {
    using CanUnload = HRESULT(STDAPICALLTYPE*)();
    Ptr<_wncSoftwareProducts> products;
    create(CLSID_wncSoftwareProducts, IID__wncSoftwareProducts, products);
    auto canUnload = reinterpret_cast<CanUnload>(reinterpret_cast<void*>(
        GetProcAddress(GetModuleHandleW(L"Ostrel.dll"), "DllCanUnloadNow")));
    if (!canUnload || !products.p) return check(false, "DllCanUnloadNow found");
    Ptr<_wncSoftwareProduct> record;
    add(products.p, record);
    Ptr<IUnknown> enumerator;
    products->get_NewEnum(enumerator.put());
    products.reset();
    check(canUnload() == S_FALSE, "S_FALSE while a record handed out lives");
    record.reset();
    check(canUnload() == S_FALSE, "S_FALSE while an enumerator lives");
    enumerator.reset();
    check(canUnload() == S_OK, "S_OK after the last release");

    // Locked and unlocked through a class factory that is released at once.
    const auto lockServer = [](BOOL lock) {
        Ptr<IClassFactory> factory;
        CoGetClassObject(CLSID_wncPCInfo, CLSCTX_INPROC_SERVER, nullptr, IID_IClassFactory,
                         factory.putVoid());
        return factory.p && SUCCEEDED(factory->LockServer(lock));
    };
    check(lockServer(TRUE) && canUnload() == S_FALSE, "S_FALSE while the server is locked");
    check(lockServer(FALSE) && canUnload() == S_OK, "S_OK after the lock is released");
}

// Invoke with the arguments in the host's order (rgvarg holds them last
// first); the named ones, when given, go with `names`.
HRESULT call(IDispatch* object, DISPID id, WORD flags, std::initializer_list<VARIANT> args,
             std::vector<DISPID> names = {}, UINT* argErr = nullptr) {
    std::vector<VARIANT> rgvarg(std::rbegin(args), std::rend(args));
    std::vector<DISPID> rgnamed(names.rbegin(), names.rend());
    DISPPARAMS params = {rgvarg.data(), rgnamed.empty() ? nullptr : rgnamed.data(),
                         static_cast<UINT>(rgvarg.size()), static_cast<UINT>(rgnamed.size())};
    Var result;
    return host::invoke(object, id, flags, params, &result.v, argErr);
}

void argumentsThroughInvoke() {
    Ptr<IDispatch> products, product;
    create(CLSID_wncSoftwareProducts, IID_IDispatch, products);
    create(CLSID_wncSoftwareProduct, IID_IDispatch, product);
    if (!products.p || !product.p) return check(false, "created for IDispatch");
    LPOLESTR names[] = {const_cast<LPOLESTR>(L"Add"), const_cast<LPOLESTR>(L"sKey"),
                        const_cast<LPOLESTR>(L"ProductName")};
    DISPID ids[3] = {};
    products->GetIDsOfNames(IID_NULL, names, 3, LOCALE_USER_DEFAULT, ids);
    const DISPID add = ids[0], sKey = ids[1], productName = ids[2];

    UINT count = 9;
    Ptr<ITypeInfo> info, none;
    check(product->GetTypeInfoCount(&count) == S_OK && count == 1 &&
              product->GetTypeInfo(0, LOCALE_USER_DEFAULT, info.put()) == S_OK &&
              product->GetTypeInfo(1, LOCALE_USER_DEFAULT, none.put()) == DISP_E_BADINDEX,
          "GetTypeInfo: one, and DISP_E_BADINDEX past it");
    check(call(product.p, host::idOf(product.p, L"Label"), DISPATCH_PROPERTYPUT, {}) ==
              DISP_E_PARAMNOTFOUND,
          "a put without its value: not found");

    Var name(L"x"), key(L"k"), ref, omitted, bad;
    V_VT(&ref.v) = VT_BYREF | VT_VARIANT;  // a host variable
    V_VARIANTREF(&ref.v) = &name.v;
    V_VT(&omitted.v) = VT_ERROR;
    V_ERROR(&omitted.v) = DISP_E_PARAMNOTFOUND;
    V_VT(&bad.v) = VT_ARRAY | VT_I4;
    V_ARRAY(&bad.v) = SafeArrayCreateVector(VT_I4, 0, 1);
    check(call(products.p, add, DISPATCH_METHOD, {ref.v, key.v}, {productName, sKey}) == S_OK,
          "Add(sKey:=\"k\", ProductName:=variable) by name, in the other order");
    check(call(products.p, add, DISPATCH_METHOD, {name.v, omitted.v}) == S_OK,
          "an optional argument passed as omitted");
    check(call(products.p, add, DISPATCH_METHOD, {}) == DISP_E_BADPARAMCOUNT,
          "a required argument left out: wrong number of arguments");
    check(call(products.p, add, DISPATCH_METHOD, {omitted.v}) == DISP_E_PARAMNOTFOUND,
          "a required argument passed as omitted: not found");
    // The index of a bad argument is the host's own.
    UINT positional = 99, named = 99;
    check(call(products.p, add, DISPATCH_METHOD, {name.v, bad.v}, {}, &positional) ==
                  DISP_E_TYPEMISMATCH &&
              positional == 0,
          "a mismatch in the second positional argument: puArgErr 0");
    check(call(products.p, add, DISPATCH_METHOD, {bad.v, name.v}, {sKey, productName}, &named) ==
                  DISP_E_TYPEMISMATCH &&
              named == 1,
          "a mismatch in a named argument: puArgErr is its place");
}

}  // namespace

int main() {
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    identityAcrossIdentifiers();
    errorsAndTheEnumerator();
    argumentsThroughInvoke();
    unloadOnlyWhenUnused();
    CoUninitialize();
    return host::finish();
}
