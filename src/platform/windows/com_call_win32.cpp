#include "platform/windows/com_call_win32.h"

#include <oleauto.h>
#include <wrl/client.h>

#include "runtime/automation_error.h"
#include "runtime/text.h"

namespace ostrel::platform {

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

}  // namespace ostrel::platform
