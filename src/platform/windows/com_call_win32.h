// COM calls of the Windows adapters: a failing HRESULT becomes the run-time
// error a late-bound host would see, and a thread that has not entered COM
// is entered into a single-threaded apartment on first use.
#pragma once

#include <windows.h>

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
