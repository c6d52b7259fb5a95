// "Shell.Application", late bound: made by its ProgID for each use, and
// every member found by name and called through IDispatch, so that the
// shell's own type information is never needed.
#include <windows.h>

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
