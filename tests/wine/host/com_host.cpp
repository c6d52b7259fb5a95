// A small host of Ostrel.dll, as an application built against the type
// library would be: it binds through the vtable, checks identity across the
// older interface identifiers (their values: com_server.sh, in the
// registry), the error object a failing call leaves, the enumerator, the
// start-up of each apartment, and when the DLL may unload.
// Usage: com_host <path of ot.log>. Exit code: number of failed checks.

#include <windows.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <thread>

// The identifiers are defined here, from the generated header.
#include <initguid.h>

#include "com/interface_ids.h"
#include "com/ostrel_h.h"
#include "host_support.h"

using host::check;
using host::controlError;
using host::create;
using host::Ptr;
using host::Var;

namespace {

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
    for (const IID& older : ostrel::com::kOlderSoftwareProductIids) {
        Ptr<IUnknown> viaOlder;
        same = same && SUCCEEDED(product->QueryInterface(older, viaOlder.putVoid())) &&
               static_cast<void*>(viaOlder.p) == static_cast<void*>(product.p);
    }
    check(same, "every older _wncSoftwareProduct identifier gives the same pointer");

    Ptr<_wncPCInfo> pcInfo;
    Ptr<IUnknown> viaOlder;
    check(SUCCEEDED(create(CLSID_wncPCInfo, IID__wncPCInfo, pcInfo)) &&
              SUCCEEDED(
                  pcInfo->QueryInterface(ostrel::com::kOlderPCInfoIids[0], viaOlder.putVoid())) &&
              static_cast<void*>(viaOlder.p) == static_cast<void*>(pcInfo.p),
          "the older _wncPCInfo identifier gives the same pointer");

    check(className(product.p) == L"wncSoftwareProduct" && className(pcInfo.p) == L"wncPCInfo",
          "IProvideClassInfo names the class");
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
    Ptr<_wncSoftwareProduct> added, again, byKey;
    check(products->Add(&name, &key, added.put()) == S_OK &&
              products->Add(&name, nullptr, again.put()) == S_OK,
          "Add(\"x\", \"k\") and Add(\"x\")");
    Var byKeyArg(L"K");
    check(products->get_Item(&byKeyArg.v, byKey.put()) == S_OK && byKey.p == added.p,
          "the record handed out twice is one object");

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
    unloadOnlyWhenUnused();
    CoUninitialize();
    return host::finish();
}
