// Costs of Ostrel.dll as a host pays them: creating and releasing each
// class, and reading a property late-bound by name (GetIDsOfNames and
// Invoke, as a script host does), late-bound with a known dispatch id, and
// through the vtable. Loads the Ostrel.dll beside it directly, so no
// registration is needed. Prints the median of the runs, per call.
// Usage: ostrel_com_bench [runs]

#include <windows.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include <initguid.h>

#include "com/ostrel_h.h"

namespace {

using GetClassObject = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);

IClassFactory* factoryOf(GetClassObject get, REFCLSID clsid) {
    IClassFactory* factory = nullptr;
    get(clsid, IID_IClassFactory, reinterpret_cast<void**>(&factory));
    return factory;
}

// Median nanoseconds per call over `runs` runs of `calls` calls each.
double medianNanos(int runs, int calls, const std::function<void()>& body) {
    std::vector<double> perCall;
    for (int run = 0; run < runs; ++run) {
        const auto start = std::chrono::steady_clock::now();
        for (int i = 0; i < calls; ++i) body();
        const std::chrono::duration<double, std::nano> spent =
            std::chrono::steady_clock::now() - start;
        perCall.push_back(spent.count() / calls);
    }
    std::sort(perCall.begin(), perCall.end());
    return perCall[perCall.size() / 2];
}

void report(const char* what, double nanos) {
    std::printf("%-52s %10.0f ns\n", what, nanos);
}

}  // namespace

int main(int argc, char** argv) {
    const int runs = argc > 1 ? std::max(1, std::atoi(argv[1])) : 15;
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);

    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    std::wstring dll(path);
    dll = dll.substr(0, dll.find_last_of(L"\\/") + 1) + L"Ostrel.dll";
    HMODULE module = LoadLibraryW(dll.c_str());
    auto get = module ? reinterpret_cast<GetClassObject>(
                            reinterpret_cast<void*>(GetProcAddress(module, "DllGetClassObject")))
                      : nullptr;
    if (!get) {
        std::fprintf(stderr, "Ostrel.dll not found beside the benchmark\n");
        return 1;
    }
    IClassFactory* products = factoryOf(get, CLSID_wncSoftwareProducts);
    IClassFactory* product = factoryOf(get, CLSID_wncSoftwareProduct);
    IClassFactory* pcInfo = factoryOf(get, CLSID_wncPCInfo);

    auto createRelease = [](IClassFactory* factory) {
        return [factory] {
            IUnknown* object = nullptr;
            factory->CreateInstance(nullptr, IID_IUnknown, reinterpret_cast<void**>(&object));
            if (object) object->Release();
        };
    };
    // The first creation starts the apartment; it isn't what is measured.
    createRelease(products)();

    std::printf("median of %d runs, per call\n", runs);
    report("create+release wncSoftwareProducts", medianNanos(runs, 2000, createRelease(products)));
    report("create+release wncSoftwareProduct", medianNanos(runs, 2000, createRelease(product)));
    report("create+release wncPCInfo", medianNanos(runs, 200, createRelease(pcInfo)));

    _wncPCInfo* info = nullptr;
    pcInfo->CreateInstance(nullptr, IID__wncPCInfo, reinterpret_cast<void**>(&info));
    LPOLESTR name = const_cast<LPOLESTR>(L"ComputerName");
    DISPID id = DISPID_UNKNOWN;
    info->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &id);
    DISPPARAMS none = {nullptr, nullptr, 0, 0};

    report("ComputerName: GetIDsOfNames + Invoke", medianNanos(runs, 20000, [&] {
               DISPID each = DISPID_UNKNOWN;
               info->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &each);
               VARIANT result;
               VariantInit(&result);
               info->Invoke(each, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &none,
                            &result, nullptr, nullptr);
               VariantClear(&result);
           }));
    report("ComputerName: Invoke with a known dispatch id", medianNanos(runs, 20000, [&] {
               VARIANT result;
               VariantInit(&result);
               info->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &none, &result,
                            nullptr, nullptr);
               VariantClear(&result);
           }));
    report("ComputerName: vtable", medianNanos(runs, 20000, [&] {
               BSTR value = nullptr;
               info->get_ComputerName(&value);
               SysFreeString(value);
           }));
    info->Release();

    products->Release();
    product->Release();
    pcInfo->Release();
    CoUninitialize();
    return 0;
}
