// Translation between the core's types and the automation types at the edge:
// UTF-8 strings and BSTRs, core Variants and VARIANTs, and a small owning
// pointer for interfaces.
#pragma once

#include "com/ostrel_h.h"

#include <string>
#include <string_view>
#include <utility>

#include "runtime/variant.h"

namespace ostrel::com {

// A new BSTR holding the text; raises 7 when it can't be allocated.
BSTR toBstr(std::string_view utf8);
// A null BSTR is the empty string, as the run time treats it.
std::string fromBstr(const BSTR text);

// Item's and Remove's index: a host variable passed by reference is followed
// to its value; numbers keep their kind so that the list rounds them itself.
// Kinds the core has no use for (objects, arrays, missing) become Empty,
// which the list answers with a type mismatch.
Variant fromVariant(const VARIANT& value);

// A core Variant into a VARIANT the caller owns (cleared first). Objects
// have no use here yet and raise 13.
void toVariant(const Variant& value, VARIANT& out);

inline VARIANT_BOOL toVariantBool(bool value) {
    return value ? VARIANT_TRUE : VARIANT_FALSE;
}

// Owns one counted reference to an interface.
template <class Interface>
class ComPtr {
  public:
    ComPtr() noexcept = default;
    ComPtr(const ComPtr& other) noexcept : p_(other.p_) {
        if (p_) p_->AddRef();
    }
    ComPtr(ComPtr&& other) noexcept : p_(std::exchange(other.p_, nullptr)) {}
    ~ComPtr() { reset(); }
    ComPtr& operator=(ComPtr other) noexcept {
        std::swap(p_, other.p_);
        return *this;
    }

    void reset() noexcept {
        if (Interface* old = std::exchange(p_, nullptr)) old->Release();
    }
    // For an out-parameter: the previous reference is dropped first.
    Interface** put() noexcept {
        reset();
        return &p_;
    }
    // Hands a new reference to the caller.
    Interface* copy() const noexcept {
        if (p_) p_->AddRef();
        return p_;
    }
    Interface* get() const noexcept { return p_; }
    Interface* operator->() const noexcept { return p_; }
    explicit operator bool() const noexcept { return p_ != nullptr; }

  private:
    Interface* p_ = nullptr;
};

// Clears the VARIANT it holds when it goes.
class ScopedVariant {
  public:
    ScopedVariant() noexcept { VariantInit(&value_); }
    ScopedVariant(const ScopedVariant&) = delete;
    ScopedVariant& operator=(const ScopedVariant&) = delete;
    ~ScopedVariant() { VariantClear(&value_); }
    VARIANT* get() noexcept { return &value_; }
    const VARIANT& operator*() const noexcept { return value_; }

  private:
    VARIANT value_;
};

}  // namespace ostrel::com
