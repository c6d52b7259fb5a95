// WMI through its scripting interface, late bound as a script reaches it: the
// moniker is resolved at run time, and every member, the properties of the
// result objects among them, is found by name through IDispatch, so that a
// property the system's class lacks fails when it is read.
#include <windows.h>

#include <objbase.h>
#include <oleauto.h>
#include <wrl/client.h>

#include <array>
#include <string>

#include "platform/adapters.h"
#include "platform/windows/com_call_win32.h"
#include "runtime/automation_error.h"
#include "runtime/text.h"

namespace ostrel::platform {

namespace {

using Microsoft::WRL::ComPtr;

// A property read, as late binding asks for it: get or call, whichever the member is.
constexpr WORD kReadProperty = DISPATCH_PROPERTYGET | DISPATCH_METHOD;

std::u16string wide(std::string_view text) {
    return toUtf16(text);
}
const wchar_t* wideName(const std::u16string& text) {
    return reinterpret_cast<const wchar_t*>(text.c_str());
}

// A property's value as the run time holds it. An array, which the inventory
// never reads as one, becomes an object: the converters give it no text.
Variant valueOf(const VARIANT& value) {
    switch (V_VT(&value)) {
        case VT_EMPTY:
            return Variant();
        case VT_NULL:
            return Variant(NullValue{});
        case VT_BSTR:
            return Variant(fromUtf16(std::u16string_view(
                reinterpret_cast<const char16_t*>(V_BSTR(&value)), SysStringLen(V_BSTR(&value)))));
        case VT_BOOL:
            return Variant(V_BOOL(&value) != VARIANT_FALSE);
        case VT_I2:
            return Variant(static_cast<int16_t>(V_I2(&value)));
        case VT_UI1:
            return Variant(static_cast<int16_t>(V_UI1(&value)));
        case VT_I4:
            return Variant(static_cast<int32_t>(V_I4(&value)));
        case VT_R8:
            return Variant(V_R8(&value));
        case VT_DATE:
            return Variant(DateValue{V_DATE(&value)});
        default:
            break;
    }
    if ((V_VT(&value) & VT_ARRAY) == 0 && V_VT(&value) != VT_DISPATCH &&
        V_VT(&value) != VT_UNKNOWN) {
        ScopedVariant number;  // the other numbers, by their double
        if (SUCCEEDED(VariantChangeType(&number.value, const_cast<VARIANT*>(&value), 0, VT_R8))) {
            return Variant(V_R8(&number.value));
        }
    }
    return Variant(makeRef<Object>());
}

class LateBoundObject final : public WmiObject {
  public:
    explicit LateBoundObject(ComPtr<IDispatch> object) : object_(std::move(object)) {}
    Variant property(std::string_view name) override {
        const std::u16string member = wide(name);
        ScopedVariant result;
        callByName(object_.Get(), wideName(member), kReadProperty, {}, result.value);
        return valueOf(result.value);
    }

  private:
    ComPtr<IDispatch> object_;
};

class LateBoundSet final : public WmiResultSet {
  public:
    explicit LateBoundSet(ComPtr<IDispatch> set) : set_(std::move(set)) {}
    int32_t count() override {
        ScopedVariant result;
        callByName(set_.Get(), L"Count", kReadProperty, {}, result.value);
        checkHresult(VariantChangeType(&result.value, &result.value, 0, VT_I4));
        return V_I4(&result.value);
    }
    std::unique_ptr<WmiObject> next() override {
        if (!items_) {
            // For Each: the set's enumerator, by its fixed member id.
            ScopedVariant result;
            DISPPARAMS none{nullptr, nullptr, 0, 0};
            EXCEPINFO exception{};
            checkHresult(set_->Invoke(DISPID_NEWENUM, IID_NULL, LOCALE_USER_DEFAULT, kReadProperty,
                                      &none, &result.value, &exception, nullptr));
            if (V_VT(&result.value) != VT_UNKNOWN && V_VT(&result.value) != VT_DISPATCH) {
                raise(kErrNoMember);
            }
            IUnknown* unknown = V_UNKNOWN(&result.value);
            if (!unknown) raise(kErrObjectNotSet);
            checkHresult(unknown->QueryInterface(IID_IEnumVARIANT,
                                                 reinterpret_cast<void**>(items_.GetAddressOf())));
        }
        ScopedVariant item;
        ULONG fetched = 0;
        const HRESULT hr = items_->Next(1, &item.value, &fetched);
        checkHresult(hr);
        if (hr == S_FALSE || fetched == 0) return nullptr;
        ComPtr<IDispatch> object = objectOf(item.value);
        if (!object) raise(kErrObjectNotSet);
        return std::make_unique<LateBoundObject>(std::move(object));
    }

  private:
    ComPtr<IDispatch> set_;
    ComPtr<IEnumVARIANT> items_;
};

class LateBoundServices final : public WmiServices {
  public:
    explicit LateBoundServices(ComPtr<IDispatch> services) : services_(std::move(services)) {}
    std::unique_ptr<WmiResultSet> execQuery(std::string_view query) override {
        const Bstr text(query);
        std::array<VARIANT, 1> arguments{};
        VariantInit(&arguments[0]);
        V_VT(&arguments[0]) = VT_BSTR;
        V_BSTR(&arguments[0]) = text.get();
        ScopedVariant result;
        callByName(services_.Get(), L"ExecQuery", DISPATCH_METHOD, arguments, result.value);
        ComPtr<IDispatch> set = objectOf(result.value);
        if (!set) return nullptr;
        return std::make_unique<LateBoundSet>(std::move(set));
    }

  private:
    ComPtr<IDispatch> services_;
};

class Win32Wmi final : public WmiPort {
  public:
    std::unique_ptr<WmiServices> connect(std::string_view moniker) override {
        const std::u16string name = wide(moniker);
        ComPtr<IDispatch> services;
        HRESULT hr = CoGetObject(wideName(name), nullptr, IID_IDispatch,
                                 reinterpret_cast<void**>(services.GetAddressOf()));
        if (hr == CO_E_NOTINITIALIZED) {
            // Left entered: the thread keeps its apartment until it ends.
            CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
            hr = CoGetObject(wideName(name), nullptr, IID_IDispatch,
                             reinterpret_cast<void**>(services.GetAddressOf()));
        }
        checkHresult(hr);
        if (!services) return nullptr;
        return std::make_unique<LateBoundServices>(std::move(services));
    }
};

}  // namespace

WmiPort& systemWmi() {
    static Win32Wmi wmi;
    return wmi;
}

}  // namespace ostrel::platform
