// A hostile host: IDispatch::Invoke called 10,000 times on each public class
// with random dispatch ids, flags, argument counts and well-formed
// arguments of every kind (by value and by reference, arrays, objects,
// Nothing, empty strings, a string of a million characters); then random
// walks of IEnumVARIANT and calls of IProvideClassInfo. Every call must
// answer an HRESULT: a crash or a hang ends the process (the caller runs it
// under a time limit), and the private memory may not keep growing with the
// count. Usage: hostile_host [seed]. Exit code: number of failed checks.
//
// Members left out on purpose: ReleaseMutexHandle closes whatever handle
// it is given, so random numbers would close the host's own handles, which
// no component can guard against; BrowseForFolder and ShowAbout wait for a
// user who is not there; DeleteFile deletes whatever file it is named; WmiInfo
// takes no argument to vary and costs seconds of the system's WMI per call
// (its own tests call it).
#include <windows.h>

#include <psapi.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <initguid.h>

#include "com/ostrel_h.h"
#include "host_support.h"

using host::check;
using host::create;
using host::Ptr;

namespace {

constexpr int kCalls = 10000;
std::mt19937 random;

int below(int n) {
    return std::uniform_int_distribution<int>(0, n - 1)(random);
}

// The resident memory of the process: under Wine the Linux process's own
// figure, which the system's counters don't follow; else the working set.
double residentMb() {
    if (FILE* status = std::fopen("Z:\\proc\\self\\status", "r")) {
        char line[256];
        double kb = -1;
        while (std::fgets(line, sizeof line, status)) {
            if (std::strncmp(line, "VmRSS:", 6) == 0) kb = std::strtod(line + 6, nullptr);
        }
        std::fclose(status);
        if (kb >= 0) return kb / 1024.0;
    }
    PROCESS_MEMORY_COUNTERS counters = {};
    counters.cb = sizeof counters;
    GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
    return static_cast<double>(counters.WorkingSetSize) / 1048576.0;
}

// Storage for what a by-reference argument points at; lives for one call.
struct Storage {
    VARIANT variants[8];
    LONG longs[8] = {};
    SHORT shorts[8] = {};
    double doubles[8] = {};
    BSTR texts[8] = {};
    VARIANT_BOOL bools[8] = {};
    Storage() {
        for (VARIANT& v : variants) VariantInit(&v);
    }
    ~Storage() {
        for (VARIANT& v : variants) VariantClear(&v);
        for (BSTR& text : texts) SysFreeString(text);
    }
    Storage(const Storage&) = delete;
    Storage& operator=(const Storage&) = delete;
};

const std::wstring& millionCharacters() {
    static const std::wstring text(1000000, L'x');
    return text;
}

BSTR randomText() {
    switch (below(6)) {
        case 0:
            return SysAllocString(L"");
        case 1:
            return SysAllocStringLen(millionCharacters().data(),
                                     static_cast<UINT>(millionCharacters().size()));
        case 2:
            return SysAllocString(L"QRL-2040");
        case 3:
            return SysAllocString(L"Settings");
        case 4:
            return SysAllocString(L"a b/\\[]*");
        default:
            return SysAllocString(L"12");
    }
}

SAFEARRAY* randomArray(VARTYPE& kind) {
    const VARTYPE kinds[] = {VT_I4, VT_BSTR, VT_VARIANT};
    kind = kinds[below(3)];
    SAFEARRAY* array = SafeArrayCreateVector(kind, 0, static_cast<ULONG>(below(4)));
    if (array && kind == VT_BSTR && array->rgsabound[0].cElements > 0) {
        LONG at = 0;
        BSTR text = SysAllocString(L"item");
        SafeArrayPutElement(array, &at, text);
        SysFreeString(text);
    }
    return array;
}

// One well-formed argument of a random kind, by value or by reference.
void randomArgument(VARIANT& out, Storage& storage, int slot, IDispatch* object) {
    VariantInit(&out);
    VARIANT& value = storage.variants[slot];
    VariantClear(&value);
    switch (below(18)) {
        case 0:
            break;  // Empty
        case 1:
            V_VT(&value) = VT_NULL;
            break;
        case 2:
            V_VT(&value) = VT_I2;
            V_I2(&value) = static_cast<SHORT>(below(65536) - 32768);
            break;
        case 3:
            V_VT(&value) = VT_I4;
            V_I4(&value) = static_cast<LONG>(random());
            break;
        case 4:
            V_VT(&value) = VT_R8;
            V_R8(&value) = (below(2) ? 1e300 : -2.5) * below(100);
            break;
        case 5:
            V_VT(&value) = VT_BSTR;
            V_BSTR(&value) = randomText();
            break;
        case 6:
            V_VT(&value) = VT_BOOL;
            V_BOOL(&value) = below(2) ? VARIANT_TRUE : VARIANT_FALSE;
            break;
        case 7:
            V_VT(&value) = VT_DATE;
            V_DATE(&value) = below(2) ? 45000.5 : -700000.0;
            break;
        case 8:
            V_VT(&value) = VT_DISPATCH;  // Nothing
            V_DISPATCH(&value) = nullptr;
            break;
        case 9:
            V_VT(&value) = VT_DISPATCH;
            V_DISPATCH(&value) = object;
            object->AddRef();
            break;
        case 10:
            V_VT(&value) = VT_ERROR;
            V_ERROR(&value) = below(2) ? DISP_E_PARAMNOTFOUND : E_FAIL;
            break;
        case 11: {
            VARTYPE kind = VT_I4;
            V_ARRAY(&value) = randomArray(kind);
            if (V_ARRAY(&value)) V_VT(&value) = static_cast<VARTYPE>(VT_ARRAY | kind);
            break;
        }
        case 12:
            V_VT(&value) = VT_CY;
            V_CY(&value).int64 = static_cast<LONGLONG>(random()) * 10000;
            break;
        case 13:
            V_VT(&value) = VT_UI4;
            V_UI4(&value) = static_cast<ULONG>(random());
            break;
        case 14:
            V_VT(&value) = VT_I8;
            V_I8(&value) = static_cast<LONGLONG>(random()) << 20;
            break;
        case 15:
            V_VT(&value) = VT_DECIMAL;
            V_DECIMAL(&value).Lo64 = static_cast<ULONGLONG>(random());
            V_DECIMAL(&value).scale = static_cast<BYTE>(below(5));
            break;
        case 16:
            V_VT(&value) = VT_UNKNOWN;
            V_UNKNOWN(&value) = object;
            object->AddRef();
            break;
        default:
            V_VT(&value) = VT_UI1;
            V_UI1(&value) = static_cast<BYTE>(below(256));
            break;
    }
    switch (below(6)) {
        case 0:  // a host variable: a reference to a Variant
            V_VT(&out) = VT_BYREF | VT_VARIANT;
            V_VARIANTREF(&out) = &value;
            return;
        case 1:  // a typed variable by reference
            switch (below(5)) {
                case 0:
                    V_VT(&out) = VT_BYREF | VT_I4;
                    V_I4REF(&out) = &storage.longs[slot];
                    break;
                case 1:
                    V_VT(&out) = VT_BYREF | VT_I2;
                    V_I2REF(&out) = &storage.shorts[slot];
                    break;
                case 2:
                    V_VT(&out) = VT_BYREF | VT_R8;
                    V_R8REF(&out) = &storage.doubles[slot];
                    break;
                case 3:
                    SysFreeString(storage.texts[slot]);
                    storage.texts[slot] = randomText();
                    V_VT(&out) = VT_BYREF | VT_BSTR;
                    V_BSTRREF(&out) = &storage.texts[slot];
                    break;
                default:
                    V_VT(&out) = VT_BYREF | VT_BOOL;
                    V_BOOLREF(&out) = &storage.bools[slot];
                    break;
            }
            return;
        default:  // by value: the storage keeps ownership
            out = value;
            return;
    }
}

struct Member {
    DISPID id;
    WORD flags;   // what the member is, as Invoke's flags
    UINT params;  // how many it takes
};

// The class's members from its type information, and ids it doesn't have.
std::vector<Member> members(IDispatch* object) {
    std::vector<Member> ids = {{DISPID_VALUE, DISPATCH_METHOD, 1},
                               {DISPID_NEWENUM, 2, 0},
                               {DISPID_UNKNOWN, 1, 0},
                               {0, 1, 0},
                               {99, 1, 2},
                               {12345, 2, 0},
                               {-7, 4, 1}};
    Ptr<ITypeInfo> info;
    TYPEATTR* attr = nullptr;
    if (FAILED(object->GetTypeInfo(0, LOCALE_USER_DEFAULT, info.put())) ||
        FAILED(info->GetTypeAttr(&attr))) {
        return ids;
    }
    for (UINT i = 0; i < attr->cFuncs; ++i) {
        FUNCDESC* func = nullptr;
        if (SUCCEEDED(info->GetFuncDesc(i, &func))) {
            BSTR name = nullptr;
            info->GetDocumentation(func->memid, &name, nullptr, nullptr, nullptr);
            const bool excluded =
                name &&
                (std::wstring(name) == L"ReleaseMutexHandle" ||
                 std::wstring(name) == L"BrowseForFolder" || std::wstring(name) == L"ShowAbout" ||
                 std::wstring(name) == L"DeleteFile" || std::wstring(name) == L"WmiInfo");
            SysFreeString(name);
            if (!excluded) {
                ids.push_back({func->memid, static_cast<WORD>(func->invkind),
                               static_cast<UINT>(func->cParams)});
            }
            info->ReleaseFuncDesc(func);
        }
    }
    info->ReleaseTypeAttr(attr);
    return ids;
}

// A collection keeps its records, and they it: the owner breaks the loop.
void emptyCollection(IDispatch* object) {
    Ptr<_wncSoftwareProducts> products;
    if (FAILED(object->QueryInterface(IID__wncSoftwareProducts, products.putVoid()))) return;
    LONG count = 0;
    while (SUCCEEDED(products->get_Count(&count)) && count > 0) {
        host::Var last(count);
        if (FAILED(products->Remove(&last.v))) break;
    }
}

void invokeRandomly(REFCLSID clsid, const char* name) {
    Ptr<IDispatch> object;
    if (FAILED(create(clsid, IID_IDispatch, object))) return check(false, name);
    const std::vector<Member> ids = members(object.p);
    const WORD kFlags[] = {DISPATCH_METHOD,
                           DISPATCH_PROPERTYGET,
                           DISPATCH_METHOD | DISPATCH_PROPERTYGET,
                           DISPATCH_PROPERTYPUT,
                           DISPATCH_PROPERTYPUTREF,
                           0,
                           0x1F};
    double atHalf = 0;
    int unexpected = 0, succeeded = 0;
    for (int call = 1; call <= kCalls; ++call) {
        if (call % 100 == 0) {  // a fresh object now and then, as a host has
            emptyCollection(object.p);
            object.reset();
            create(clsid, IID_IDispatch, object);
            if (!object.p) return check(false, name);
        }
        if (call == kCalls / 2) atHalf = residentMb();
        // Half the calls are shaped like the member (its kind, its count of
        // arguments, one fewer or more), the rest anything at all.
        const Member& member = ids[static_cast<size_t>(below(static_cast<int>(ids.size())))];
        const bool shaped = below(2) == 0;
        const WORD flags = shaped ? member.flags : kFlags[below(7)];
        const UINT count =
            shaped ? static_cast<UINT>(std::max(0, static_cast<int>(member.params) + below(3) - 1))
                   : static_cast<UINT>(below(6));
        Storage storage;
        VARIANT args[8];
        for (UINT i = 0; i < count && i < 8; ++i) {
            randomArgument(args[i], storage, static_cast<int>(i), object.p);
        }
        DISPID named[2] = {DISPID_PROPERTYPUT, below(4) - 1};
        UINT namedCount = 0;
        if (count > 0 && (flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF))) namedCount = 1;
        if (!shaped && count > 1 && below(4) == 0) namedCount = 2;
        DISPPARAMS params = {count ? args : nullptr, namedCount ? named : nullptr,
                             std::min(count, 8u), namedCount};
        host::Var result;
        EXCEPINFO excep = {};
        UINT argErr = 0;
        const HRESULT hr =
            object->Invoke(member.id, IID_NULL, LOCALE_USER_DEFAULT, flags, &params,
                           below(4) ? &result.v : nullptr, below(4) ? &excep : nullptr,
                           below(2) ? &argErr : nullptr);
        if (hr == E_UNEXPECTED || hr == E_OUTOFMEMORY) ++unexpected;
        if (hr == S_OK) ++succeeded;
        host::clear(excep);
    }
    emptyCollection(object.p);
    const double atEnd = residentMb();
    const double growthMb = atEnd - atHalf;
    std::printf(
        "      %s: %d calls, %d answered S_OK; resident %.1f MB, %+.2f MB over the "
        "second half\n",
        name, kCalls, succeeded, atEnd, growthMb);
    check(unexpected == 0,
          (std::string(name) + ": every call answered an HRESULT of its own").c_str());
    check(growthMb < 16.0, (std::string(name) + ": no growth with the count").c_str());
}

void walkRandomly() {
    Ptr<_wncSoftwareProducts> products;
    create(CLSID_wncSoftwareProducts, IID__wncSoftwareProducts, products);
    if (!products.p) return check(false, "wncSoftwareProducts for the enumerator");
    for (int i = 0; i < 3; ++i) {
        BSTR name = SysAllocString(L"x");
        Ptr<_wncSoftwareProduct> record;
        products->Add(&name, nullptr, record.put());
        SysFreeString(name);
    }
    Ptr<IUnknown> unknown;
    Ptr<IEnumVARIANT> walk;
    products->get_NewEnum(unknown.put());
    if (!unknown.p || FAILED(unknown->QueryInterface(IID_IEnumVARIANT, walk.putVoid()))) {
        return check(false, "an enumerator");
    }
    bool wellFormed = true;
    for (int call = 0; call < kCalls; ++call) {
        switch (below(4)) {
            case 0: {
                VARIANT items[5];
                for (VARIANT& v : items) VariantInit(&v);
                ULONG fetched = 99;
                const ULONG wanted = static_cast<ULONG>(below(6));
                const HRESULT hr = walk->Next(wanted, items, below(2) ? &fetched : nullptr);
                for (ULONG i = 0; i < wanted && i < 5; ++i) {
                    const VARTYPE kind = V_VT(&items[i]);
                    wellFormed = wellFormed && (kind == VT_EMPTY ||
                                                (kind == VT_DISPATCH && V_DISPATCH(&items[i])));
                    VariantClear(&items[i]);
                }
                wellFormed = wellFormed && (hr == S_OK || hr == S_FALSE || hr == E_INVALIDARG);
                break;
            }
            case 1:
                walk->Skip(static_cast<ULONG>(below(6)));
                break;
            case 2:
                walk->Reset();
                break;
            default: {
                Ptr<IEnumVARIANT> copy;
                wellFormed = wellFormed && walk->Clone(copy.put()) == S_OK && copy.p;
                break;
            }
        }
    }
    check(wellFormed, "10,000 random enumerator calls: only whole records or Empty");
    emptyCollection(products.p);

    const CLSID* classes[] = {&CLSID_wncSoftwareProducts, &CLSID_wncSoftwareProduct,
                              &CLSID_wncPCInfo, &CLSID_wncServices};
    bool named = true;
    for (int call = 0; call < kCalls; ++call) {
        Ptr<IProvideClassInfo> provider;
        Ptr<ITypeInfo> info;
        create(*classes[below(4)], IID_IProvideClassInfo, provider);
        named = named && provider.p && provider->GetClassInfo(info.put()) == S_OK && info.p &&
                provider->GetClassInfo(nullptr) == E_POINTER;
    }
    check(named, "10,000 IProvideClassInfo calls: the class, or E_POINTER for no pointer");
}

}  // namespace

int main(int argc, char** argv) {
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    const unsigned seed = argc > 1 ? static_cast<unsigned>(std::strtoul(argv[1], nullptr, 10))
                                   : static_cast<unsigned>(GetTickCount());
    std::printf("      seed %u\n", seed);
    random.seed(seed);
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    invokeRandomly(CLSID_wncSoftwareProducts, "wncSoftwareProducts");
    invokeRandomly(CLSID_wncSoftwareProduct, "wncSoftwareProduct");
    invokeRandomly(CLSID_wncPCInfo, "wncPCInfo");
    invokeRandomly(CLSID_wncServices, "wncServices");
    walkRandomly();
    CoUninitialize();
    return host::finish();
}
