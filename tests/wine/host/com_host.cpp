// A small host of Ostrel.dll, as an application built against the type
// library would be: it binds through the vtable, checks identity across the
// older interface identifiers, the errors a failing call leaves, the
// enumerator, the start-up of each apartment, and when the DLL may unload.
// Usage: com_host <path of ot.log>. Exit code: number of failed checks.

#include <windows.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <thread>

// The identifiers are defined here, from the generated header.
#include <initguid.h>

#include "com/ostrel_h.h"
#include "host_support.h"

using host::check;
using host::controlError;
using host::create;
using host::Ptr;
using host::Var;

namespace {

const IID kOlderProductIids[] = {
    {0x20CFA9FE, 0x4058, 0x4CD2, {0x8D, 0xB5, 0xB7, 0xDD, 0xA5, 0xA7, 0xD3, 0x90}},
    {0xC4753E71, 0x68D2, 0x48D0, {0x83, 0xB9, 0x30, 0x9F, 0x72, 0xC1, 0x6B, 0x80}},
    {0x7D7F0E86, 0xA961, 0x4295, {0x95, 0x86, 0xF0, 0x14, 0xAB, 0x18, 0x72, 0x5F}},
    {0xADD4F1AA, 0x38B7, 0x424F, {0xAD, 0x04, 0x4B, 0xE8, 0xAD, 0x87, 0x16, 0x01}},
    {0x77D4A628, 0x7265, 0x410B, {0x9E, 0x09, 0xEC, 0x47, 0x9A, 0xAC, 0x46, 0x2B}},
    {0x72002B29, 0xEC56, 0x11D6, {0x86, 0x0A, 0x00, 0x50, 0x8B, 0x62, 0x79, 0x27}},
    {0x1C53F141, 0x137B, 0x4BF3, {0xA4, 0x41, 0xFA, 0xDA, 0x90, 0x11, 0xE2, 0xB0}},
    {0x432279C8, 0xF5DC, 0x4905, {0xB4, 0x5D, 0xAE, 0xF9, 0xF6, 0x35, 0x51, 0x8D}},
    {0xF06D94C2, 0xD8E6, 0x4F9B, {0x92, 0x90, 0x60, 0x8F, 0xCE, 0x04, 0xD3, 0xB2}},
};
const IID kOlderPCInfoIid = {
    0xAFBB1CFD, 0x5CFA, 0x46EE, {0xA3, 0x9F, 0x09, 0xFF, 0x2B, 0xCF, 0x52, 0xCC}};

int countBanners(const char* logPath) {
    std::ifstream log(logPath);
    int banners = 0;
    for (std::string line; std::getline(log, line);) {
        if (line.find("*** START version: ") != std::string::npos) ++banners;
    }
    return banners;
}

// Creates a collection on a thread of its own apartment.
void createInApartment(bool* created) {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    {
        Ptr<_wncSoftwareProducts> products;
        *created = SUCCEEDED(create(CLSID_wncSoftwareProducts, IID__wncSoftwareProducts, products));
    }
    CoUninitialize();
}

// Each apartment starts once: A, then B, then A again gives two banners.
void apartmentsStartOnce(const char* logPath) {
    const int before = countBanners(logPath);
    bool firstA = false, firstB = false, againA = false;
    std::thread a([&] {
        createInApartment(&firstA);
        std::thread b([&] { createInApartment(&firstB); });
        b.join();
        createInApartment(&againA);
    });
    a.join();
    check(firstA && firstB && againA, "collections created in two apartments");
    check(countBanners(logPath) - before == 2, "one start-up banner per apartment, not per object");
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
    check(SUCCEEDED(create(CLSID_wncSoftwareProduct, IID__wncSoftwareProduct, product)),
          "wncSoftwareProduct created");
    bool same = product.p != nullptr;
    for (const IID& older : kOlderProductIids) {
        Ptr<IUnknown> viaOlder;
        same = same && SUCCEEDED(product->QueryInterface(older, viaOlder.putVoid())) &&
               static_cast<void*>(viaOlder.p) == static_cast<void*>(product.p);
    }
    check(same, "every older _wncSoftwareProduct identifier gives the same pointer");

    Ptr<_wncPCInfo> pcInfo;
    Ptr<IUnknown> viaOlder;
    check(SUCCEEDED(create(CLSID_wncPCInfo, IID__wncPCInfo, pcInfo)) &&
              SUCCEEDED(pcInfo->QueryInterface(kOlderPCInfoIid, viaOlder.putVoid())) &&
              static_cast<void*>(viaOlder.p) == static_cast<void*>(pcInfo.p),
          "the older _wncPCInfo identifier gives the same pointer");

    check(className(product.p) == L"wncSoftwareProduct" && className(pcInfo.p) == L"wncPCInfo",
          "IProvideClassInfo names the class");

    VARIANT_BOOL member = VARIANT_TRUE, network = VARIANT_TRUE;
    BSTR group = SysAllocString(L"Administrators");
    check(pcInfo->IsMemberOfGroup(&group, &member) == S_OK && member == VARIANT_FALSE &&
              pcInfo->GetNetworkInfo(&network) == S_OK && network == VARIANT_FALSE,
          "IsMemberOfGroup and GetNetworkInfo answer False through the vtable");
    SysFreeString(group);
    check(pcInfo->get_ComputerName(nullptr) == E_POINTER, "a null out-pointer answers E_POINTER");
}

void errorsThroughTheVtable() {
    Ptr<_wncSoftwareProducts> products;
    create(CLSID_wncSoftwareProducts, IID__wncSoftwareProducts, products);
    if (!products.p) return check(false, "wncSoftwareProducts created");

    Ptr<ISupportErrorInfo> support;
    check(SUCCEEDED(products->QueryInterface(IID_ISupportErrorInfo, support.putVoid())) &&
              support->InterfaceSupportsErrorInfo(IID__wncSoftwareProducts) == S_OK &&
              support->InterfaceSupportsErrorInfo(IID_IPersist) == S_FALSE,
          "ISupportErrorInfo answers for the class's own interface only");

    Var position(1);
    Ptr<_wncSoftwareProduct> item;
    const HRESULT hr = products->get_Item(&position.v, item.put());
    Ptr<IErrorInfo> info;
    BSTR description = nullptr;
    const bool described = GetErrorInfo(0, info.put()) == S_OK &&
                           SUCCEEDED(info->GetDescription(&description)) && description &&
                           std::wstring(description) == L"Subscript out of range";
    SysFreeString(description);
    check(hr == controlError(9) && described && item.p == nullptr,
          "Item(1) on an empty collection: 0x800A0009 with its IErrorInfo");

    BSTR name = SysAllocString(L"x");
    BSTR key = SysAllocString(L"k");
    BSTR keyUpper = SysAllocString(L"K");
    Ptr<_wncSoftwareProduct> added, again, byKey;
    check(products->Add(&name, &key, added.put()) == S_OK, "Add(\"x\", \"k\")");
    check(products->Add(&name, &keyUpper, again.put()) == controlError(457) && !again.p,
          "Add with a key differing only in case: 0x800A01C9");
    check(products->Add(&name, nullptr, again.put()) == S_OK, "Add without a key");

    Var byKeyArg(L"K");
    check(products->get_Item(&byKeyArg.v, byKey.put()) == S_OK && byKey.p == added.p,
          "the record handed out twice is one object");

    VARIANT wrongType;
    VariantInit(&wrongType);
    V_VT(&wrongType) = VT_UNKNOWN;
    V_UNKNOWN(&wrongType) = products.p;
    Ptr<_wncSoftwareProduct> none;
    check(products->get_Item(&wrongType, none.put()) == controlError(13),
          "an index of the wrong type: 0x800A000D, no crash");
    check(products->get_Item(nullptr, none.put()) == E_POINTER &&
              products->get_Count(nullptr) == E_POINTER,
          "null pointers answer E_POINTER");

    // The enumerator: Next with a short fetch, Skip, Reset, Clone.
    Ptr<IUnknown> unknown;
    Ptr<IEnumVARIANT> walk, copy;
    check(products->get_NewEnum(unknown.put()) == S_OK &&
              SUCCEEDED(unknown->QueryInterface(IID_IEnumVARIANT, walk.putVoid())),
          "NewEnum gives an IEnumVARIANT");
    if (walk.p) {
        VARIANT items[3];
        for (VARIANT& v : items) VariantInit(&v);
        ULONG fetched = 0;
        const HRESULT first = walk->Next(3, items, &fetched);
        Ptr<IUnknown> firstUnknown;
        const bool firstIsAdded = fetched >= 1 && V_VT(&items[0]) == VT_DISPATCH &&
                                  SUCCEEDED(V_DISPATCH(&items[0])->QueryInterface(
                                      IID__wncSoftwareProduct, firstUnknown.putVoid())) &&
                                  static_cast<void*>(firstUnknown.p) == static_cast<void*>(added.p);
        for (VARIANT& v : items) VariantClear(&v);
        check(first == S_FALSE && fetched == 2 && firstIsAdded,
              "Next(3) of two records: S_FALSE, two fetched, the same objects");
        check(walk->Reset() == S_OK && walk->Skip(1) == S_OK && walk->Clone(copy.put()) == S_OK,
              "Reset, Skip and Clone");
        fetched = 0;
        check(copy.p && copy->Next(1, items, &fetched) == S_OK && fetched == 1 &&
                  copy->Next(1, items + 1, &fetched) == S_FALSE && fetched == 0,
              "a clone goes on from the position it was cloned at");
        VariantClear(&items[0]);
        check(walk->Skip(5) == S_FALSE, "Skip past the end: S_FALSE");
    }
    SysFreeString(name);
    SysFreeString(key);
    SysFreeString(keyUpper);
}

// Late binding by name, and an error through Invoke.
void errorsThroughInvoke() {
    Ptr<IDispatch> products;
    create(CLSID_wncSoftwareProducts, IID_IDispatch, products);
    if (!products.p) return check(false, "wncSoftwareProducts created for IDispatch");
    check(host::idOf(products.p, L"item") == DISPID_VALUE,
          "GetIDsOfNames ignores case; Item is the default member");

    Var key(L"missing"), byRef, result;
    byRef.refTo(key.v);
    DISPPARAMS params = {&byRef.v, nullptr, 1, 0};
    EXCEPINFO excep = {};
    const HRESULT hr =
        host::invoke(products.p, DISPID_VALUE, DISPATCH_METHOD | DISPATCH_PROPERTYGET, params,
                     &result.v, nullptr, &excep);
    check(hr == DISP_E_EXCEPTION && excep.scode == controlError(5) && excep.bstrDescription &&
              std::wstring(excep.bstrDescription) == L"Invalid procedure call or argument",
          "Item(\"missing\") through Invoke: DISP_E_EXCEPTION with scode 0x800A0005");
    host::clear(excep);
}

void unloadOnlyWhenUnused() {
    using CanUnload = HRESULT(STDAPICALLTYPE*)();
    Ptr<_wncPCInfo> pcInfo;
    create(CLSID_wncPCInfo, IID__wncPCInfo, pcInfo);
    HMODULE module = GetModuleHandleW(L"Ostrel.dll");
    auto canUnload = module ? reinterpret_cast<CanUnload>(reinterpret_cast<void*>(
                                  GetProcAddress(module, "DllCanUnloadNow")))
                            : nullptr;
    if (!canUnload || !pcInfo.p) return check(false, "DllCanUnloadNow found");

    Ptr<_wncSoftwareProducts> products;
    create(CLSID_wncSoftwareProducts, IID__wncSoftwareProducts, products);
    BSTR name = SysAllocString(L"x");
    Ptr<_wncSoftwareProduct> record;
    products->Add(&name, nullptr, record.put());
    SysFreeString(name);
    Ptr<IUnknown> enumerator;
    products->get_NewEnum(enumerator.put());
    check(canUnload() == S_FALSE, "S_FALSE while objects live");
    pcInfo.reset();
    products.reset();
    check(canUnload() == S_FALSE, "S_FALSE while a record handed out lives");
    record.reset();
    check(canUnload() == S_FALSE, "S_FALSE while an enumerator lives");
    enumerator.reset();
    check(canUnload() == S_OK, "S_OK after the last release");

    Ptr<IClassFactory> factory;
    CoGetClassObject(CLSID_wncPCInfo, CLSCTX_INPROC_SERVER, nullptr, IID_IClassFactory,
                     factory.putVoid());
    if (!factory.p) return check(false, "class factory");
    factory->LockServer(TRUE);
    factory.reset();
    check(canUnload() == S_FALSE, "S_FALSE while the server is locked");
    CoGetClassObject(CLSID_wncPCInfo, CLSCTX_INPROC_SERVER, nullptr, IID_IClassFactory,
                     factory.putVoid());
    factory->LockServer(FALSE);
    factory.reset();
    check(canUnload() == S_OK, "S_OK after the lock is released");
}

}  // namespace

int main(int argc, char** argv) {
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    if (argc < 2) {
        std::fprintf(stderr, "usage: com_host <ot.log>\n");
        return 2;
    }
    apartmentsStartOnce(argv[1]);

    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    identityAcrossIdentifiers();
    errorsThroughTheVtable();
    errorsThroughInvoke();
    unloadOnlyWhenUnused();
    CoUninitialize();
    return host::finish();
}
