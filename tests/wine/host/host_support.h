// What the hosts of Ostrel.dll under test share: a check that counts
// failures, an owning interface pointer, and the HRESULT of a run-time error.
#pragma once

#include <windows.h>

#include <cstdio>

namespace host {

inline int failures = 0;

inline void check(bool ok, const char* what) {
    std::printf("%s: %s\n", ok ? "ok  " : "FAIL", what);
    if (!ok) ++failures;
}

constexpr HRESULT controlError(int number) {
    return static_cast<HRESULT>(0x800A0000u | static_cast<unsigned>(number));
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
    Var(const Var&) = delete;
    Var& operator=(const Var&) = delete;
    ~Var() { VariantClear(&v); }
};

}  // namespace host
