// "Shell.Application", late bound: made by its ProgID for each use, and
// every member found by name and called through IDispatch, so that the
// shell's own type information is never needed.
#include <windows.h>

#include <oleauto.h>
#include <wrl/client.h>

#include <array>
#include <span>
#include <string>

#include "platform/adapters.h"
#include "platform/windows/com_call_win32.h"
#include "runtime/automation_error.h"
#include "runtime/text.h"

namespace ostrel::platform {

namespace {

using Microsoft::WRL::ComPtr;

struct ScopedVariant {
    VARIANT value;
    ScopedVariant() { VariantInit(&value); }
    ScopedVariant(const ScopedVariant&) = delete;
    ScopedVariant& operator=(const ScopedVariant&) = delete;
    ~ScopedVariant() { VariantClear(&value); }
};

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

// object.name(arguments...) by name; arguments in the caller's order.
void callByName(IDispatch* object, const wchar_t* name, WORD flags, std::span<VARIANT> arguments,
                VARIANT& result) {
    DISPID member = 0;
    auto* names = const_cast<LPOLESTR>(name);
    checkHresult(object->GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &member));
    std::array<VARIANT, 4> reversed{};  // Invoke takes them last first
    for (size_t i = 0; i < arguments.size(); ++i) reversed[arguments.size() - 1 - i] = arguments[i];
    DISPPARAMS params{reversed.data(), nullptr, static_cast<UINT>(arguments.size()), 0};
    EXCEPINFO exception{};
    const HRESULT hr = object->Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, flags, &params,
                                      &result, &exception, nullptr);
    if (hr == DISP_E_EXCEPTION) raiseException(exception);
    checkHresult(hr);
}

// The IDispatch a VT_DISPATCH result holds; null for Nothing.
ComPtr<IDispatch> objectOf(const VARIANT& value) {
    ComPtr<IDispatch> object;
    if (V_VT(&value) == VT_DISPATCH) {
        object = V_DISPATCH(&value);
    } else if (V_VT(&value) != VT_EMPTY && V_VT(&value) != VT_NULL) {
        raise(kErrTypeMismatch);
    }
    return object;
}

class LateBoundItem final : public ShellFolderItem {
  public:
    explicit LateBoundItem(ComPtr<IDispatch> item) : item_(std::move(item)) {}
    std::string path() override {
        ScopedVariant result;
        callByName(item_.Get(), L"Path", DISPATCH_PROPERTYGET, {}, result.value);
        ScopedVariant text;
        checkHresult(VariantChangeType(&text.value, &result.value, 0, VT_BSTR));
        return fromUtf16(std::u16string_view(reinterpret_cast<const char16_t*>(V_BSTR(&text.value)),
                                             SysStringLen(V_BSTR(&text.value))));
    }

  private:
    ComPtr<IDispatch> item_;
};

class LateBoundFolder final : public ShellFolder {
  public:
    explicit LateBoundFolder(ComPtr<IDispatch> folder) : folder_(std::move(folder)) {}
    std::unique_ptr<ShellFolderItem> self() override {
        ScopedVariant result;
        callByName(folder_.Get(), L"Self", DISPATCH_PROPERTYGET, {}, result.value);
        ComPtr<IDispatch> item = objectOf(result.value);
        if (!item) return nullptr;
        return std::make_unique<LateBoundItem>(std::move(item));
    }

  private:
    ComPtr<IDispatch> folder_;
};

class LateBoundShell final : public ShellApplication {
  public:
    explicit LateBoundShell(ComPtr<IDispatch> shell) : shell_(std::move(shell)) {}
    std::unique_ptr<ShellFolder> browseForFolder(int32_t ownerHwnd, std::string_view title,
                                                 int32_t options,
                                                 std::string_view rootFolder) override {
        const Bstr titleText(title);
        const Bstr rootText(rootFolder);
        std::array<VARIANT, 4> arguments{};
        for (VARIANT& argument : arguments) VariantInit(&argument);
        V_VT(&arguments[0]) = VT_I4;
        V_I4(&arguments[0]) = ownerHwnd;
        V_VT(&arguments[1]) = VT_BSTR;
        V_BSTR(&arguments[1]) = titleText.get();
        V_VT(&arguments[2]) = VT_I4;
        V_I4(&arguments[2]) = options;
        V_VT(&arguments[3]) = VT_BSTR;
        V_BSTR(&arguments[3]) = rootText.get();
        ScopedVariant result;
        callByName(shell_.Get(), L"BrowseForFolder", DISPATCH_METHOD, arguments, result.value);
        ComPtr<IDispatch> folder = objectOf(result.value);
        if (!folder) return nullptr;
        return std::make_unique<LateBoundFolder>(std::move(folder));
    }

  private:
    ComPtr<IDispatch> shell_;
};

class Win32Shell final : public ShellPort {
  public:
    std::unique_ptr<ShellApplication> createApplication() override {
        CLSID clsid{};
        if (FAILED(CLSIDFromProgID(L"Shell.Application", &clsid))) raise(kErrCantCreate);
        ComPtr<IDispatch> shell;
        if (FAILED(createInstance(clsid, IID_IDispatch,
                                  reinterpret_cast<void**>(shell.GetAddressOf())))) {
            raise(kErrCantCreate);
        }
        return std::make_unique<LateBoundShell>(std::move(shell));
    }
};

}  // namespace

ShellPort& systemShell() {
    static Win32Shell shell;
    return shell;
}

}  // namespace ostrel::platform
