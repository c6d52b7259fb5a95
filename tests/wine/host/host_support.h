// What the hosts of Ostrel.dll under test share: a check that counts
// failures, an owning interface pointer, a VARIANT that clears itself, and
// the calls every host makes.
#pragma once

#include <windows.h>

#include <cstdio>

namespace host {

inline int failures = 0;

inline void check(bool ok, const char* what) {
    std::printf("%s: %s\n", ok ? "ok  " : "FAIL", what);
    if (!ok) ++failures;
}

template <class T>
struct Ptr {
    T* p = nullptr;
    Ptr() = default;
    Ptr(const Ptr&) = delete;
    Ptr& operator=(const Ptr&) = delete;
    ~Ptr() { reset(); }
    void reset() {
        if (p) p->Release();
        p = nullptr;
    }
    T** put() {
        reset();
        return &p;
    }
    void** putVoid() { return reinterpret_cast<void**>(put()); }
    T* operator->() const { return p; }
};

// A VARIANT that clears itself.
struct Var {
    VARIANT v;
    Var() { VariantInit(&v); }
    explicit Var(LONG number) : Var() {
        V_VT(&v) = VT_I4;
        V_I4(&v) = number;
    }
    explicit Var(const wchar_t* text) : Var() {
        V_VT(&v) = VT_BSTR;
        V_BSTR(&v) = SysAllocString(text);
    }
    Var(const Var&) = delete;
    Var& operator=(const Var&) = delete;
    ~Var() { VariantClear(&v); }
};

// A new object of the class in this apartment, through `iid` (null on failure).
template <class T>
HRESULT create(REFCLSID clsid, REFIID iid, Ptr<T>& object) {
    return CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, iid, object.putVoid());
}

inline DISPID idOf(IDispatch* object, const wchar_t* name) {
    LPOLESTR names[] = {const_cast<LPOLESTR>(name)};
    DISPID id = DISPID_UNKNOWN;
    object->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id);
    return id;
}

inline void clear(EXCEPINFO& excep) {
    SysFreeString(excep.bstrSource);
    SysFreeString(excep.bstrDescription);
    SysFreeString(excep.bstrHelpFile);
    excep = {};
}

// IDispatch::Invoke; the exception's texts are freed.
inline HRESULT invoke(IDispatch* object, DISPID id, WORD flags, DISPPARAMS& params, VARIANT* result,
                      UINT* argErr = nullptr) {
    EXCEPINFO excep = {};
    const HRESULT hr =
        object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, flags, &params, result, &excep, argErr);
    clear(excep);
    return hr;
}

// The last line of a host; its exit code.
inline int finish() {
    std::printf("%d failed\n", failures);
    return failures;
}

}  // namespace host
