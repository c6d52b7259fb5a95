#include "platform/windows/com_call_win32.h"

#include <oleauto.h>
#include <wrl/client.h>

#include <array>

#include "runtime/automation_error.h"
#include "runtime/text.h"

namespace ostrel::platform {

namespace {

// The error a member raised, as a late-bound host sees it.
[[noreturn]] void raiseException(EXCEPINFO& exception) {
    if (exception.pfnDeferredFillIn) exception.pfnDeferredFillIn(&exception);
    std::string description;
    if (exception.bstrDescription) {
        description = fromUtf16(
            std::u16string_view(reinterpret_cast<const char16_t*>(exception.bstrDescription),
                                SysStringLen(exception.bstrDescription)));
    }
    SysFreeString(exception.bstrDescription);
    SysFreeString(exception.bstrSource);
    SysFreeString(exception.bstrHelpFile);
    const HRESULT code =
        exception.scode != 0 ? exception.scode : MAKE_HRESULT(1, FACILITY_CONTROL, exception.wCode);
    if (description.empty()) checkHresult(code);
    throw AutomationError(HRESULT_FACILITY(code) == FACILITY_CONTROL
                              ? static_cast<int32_t>(HRESULT_CODE(code))
                              : static_cast<int32_t>(code),
                          description);
}

}  // namespace

void checkHresult(HRESULT hr) {
    if (SUCCEEDED(hr)) return;
    const auto code = static_cast<uint32_t>(hr);
    const int32_t number = HRESULT_FACILITY(hr) == FACILITY_CONTROL
                               ? static_cast<int32_t>(HRESULT_CODE(hr))
                               : static_cast<int32_t>(code);
    std::string description;
    Microsoft::WRL::ComPtr<IErrorInfo> info;
    if (GetErrorInfo(0, info.GetAddressOf()) == S_OK && info) {
        Bstr text;
        if (SUCCEEDED(info->GetDescription(text.put()))) description = text.utf8();
    }
    if (description.empty()) {
        wchar_t* buffer = nullptr;
        const DWORD length =
            FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM |
                               FORMAT_MESSAGE_IGNORE_INSERTS,
                           nullptr, code, 0, reinterpret_cast<wchar_t*>(&buffer), 0, nullptr);
        if (length > 0 && buffer) {
            std::u16string text(buffer, buffer + length);
            while (!text.empty() && (text.back() == u'\n' || text.back() == u'\r')) text.pop_back();
            description = fromUtf16(text);
        }
        LocalFree(buffer);
    }
    if (description.empty()) description = standardDescription(440);  // "Automation error"
    throw AutomationError(number, description);
}

HRESULT createInstance(REFCLSID clsid, REFIID iid, void** object) {
    HRESULT hr = CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, iid, object);
    if (hr == CO_E_NOTINITIALIZED) {
        // Left entered: the thread keeps its apartment until it ends.
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        hr = CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, iid, object);
    }
    return hr;
}

Bstr::Bstr(std::string_view utf8) {
    const std::u16string text = toUtf16(utf8);
    value_ = SysAllocStringLen(reinterpret_cast<const OLECHAR*>(text.data()),
                               static_cast<UINT>(text.size()));
    if (!value_) raise(kErrOutOfMemory);
}

std::string Bstr::utf8() const {
    if (!value_) return std::string();
    return fromUtf16(
        std::u16string_view(reinterpret_cast<const char16_t*>(value_), SysStringLen(value_)));
}

void callByName(IDispatch* object, const wchar_t* name, WORD flags, std::span<VARIANT> arguments,
                VARIANT& result) {
    DISPID member = 0;
    auto* names = const_cast<LPOLESTR>(name);
    const HRESULT found = object->GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &member);
    if (found == DISP_E_UNKNOWNNAME || found == DISP_E_MEMBERNOTFOUND) raise(kErrNoMember);
    checkHresult(found);
    std::array<VARIANT, 4> reversed{};  // Invoke takes them last first
    for (size_t i = 0; i < arguments.size(); ++i) reversed[arguments.size() - 1 - i] = arguments[i];
    DISPPARAMS params{reversed.data(), nullptr, static_cast<UINT>(arguments.size()), 0};
    EXCEPINFO exception{};
    const HRESULT hr = object->Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, flags, &params,
                                      &result, &exception, nullptr);
    if (hr == DISP_E_EXCEPTION) raiseException(exception);
    if (hr == DISP_E_MEMBERNOTFOUND) raise(kErrNoMember);
    checkHresult(hr);
}

// The IDispatch a VT_DISPATCH result holds; null for Nothing.
Microsoft::WRL::ComPtr<IDispatch> objectOf(const VARIANT& value) {
    Microsoft::WRL::ComPtr<IDispatch> object;
    if (V_VT(&value) == VT_DISPATCH) {
        object = V_DISPATCH(&value);
    } else if (V_VT(&value) != VT_EMPTY && V_VT(&value) != VT_NULL) {
        raise(kErrTypeMismatch);
    }
    return object;
}

}  // namespace ostrel::platform
