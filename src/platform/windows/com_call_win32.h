// COM calls of the Windows adapters: a failing HRESULT becomes the run-time
// error a late-bound host would see, and a thread that has not entered COM
// is entered into a single-threaded apartment on first use.
#pragma once

#include <windows.h>

#include <wrl/client.h>

#include <span>
#include <string>
#include <string_view>

namespace ostrel::platform {

// Raises the error of a failed HRESULT: FACILITY_CONTROL errors by their
// run-time number, others by the HRESULT itself; the description from the
// thread's error object, else the system's text for the code.
void checkHresult(HRESULT hr);

// CoCreateInstance for an in-process class, entering COM first when this
// thread has not (the tool and the test programs; a host has done it).
HRESULT createInstance(REFCLSID clsid, REFIID iid, void** object);

// A VARIANT that clears itself.
struct ScopedVariant {
    VARIANT value;
    ScopedVariant() { VariantInit(&value); }
    ScopedVariant(const ScopedVariant&) = delete;
    ScopedVariant& operator=(const ScopedVariant&) = delete;
    ~ScopedVariant() { VariantClear(&value); }
};

// object.name(arguments...) by name, as a late-bound host calls it (at most
// four arguments, in the caller's order). A member the object doesn't have
// raises 438, one that fails raises its error.
void callByName(IDispatch* object, const wchar_t* name, WORD flags, std::span<VARIANT> arguments,
                VARIANT& result);

// The IDispatch a VT_DISPATCH result holds; null for Nothing (and Empty or Null).
Microsoft::WRL::ComPtr<IDispatch> objectOf(const VARIANT& value);

// A BSTR that frees itself.
class Bstr {
  public:
    explicit Bstr(std::string_view utf8);
    Bstr() = default;
    Bstr(const Bstr&) = delete;
    Bstr& operator=(const Bstr&) = delete;
    ~Bstr() { SysFreeString(value_); }
    BSTR get() const { return value_; }
    BSTR* put() {
        SysFreeString(value_);
        value_ = nullptr;
        return &value_;
    }
    std::string utf8() const;

  private:
    BSTR value_ = nullptr;
};

}  // namespace ostrel::platform
