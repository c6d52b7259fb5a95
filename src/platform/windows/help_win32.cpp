#include <windows.h>

#include <string>

#include "platform/adapters.h"
#include "platform/windows/ansi_win32.h"
#include "runtime/automation_error.h"

namespace ostrel::platform {

namespace {

using HtmlHelpAFunction = HWND(WINAPI*)(HWND, LPCSTR, UINT, DWORD_PTR);

// hhctrl.ocx is loaded at the first use and stays, as the viewer's windows
// outlive the call. Only from the system folder: the host's own folder, first
// in the usual search order, may hold a planted copy.
HtmlHelpAFunction htmlHelpA() {
    static const HtmlHelpAFunction function = []() -> HtmlHelpAFunction {
        HMODULE library = LoadLibraryExA("hhctrl.ocx", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
        if (!library) return nullptr;
        return reinterpret_cast<HtmlHelpAFunction>(
            reinterpret_cast<void*>(GetProcAddress(library, "HtmlHelpA")));
    }();
    return function;
}

class Win32Help final : public HelpPort {
  public:
    void htmlHelp(std::string_view file, int32_t command, int32_t data) override {
        const HtmlHelpAFunction function = htmlHelpA();
        if (!function) raise(kErrFileNotFound, "File not found: hhctrl.ocx");
        const std::string ansi = toAnsi(file);
        function(nullptr, ansi.c_str(), static_cast<UINT>(command), static_cast<DWORD_PTR>(data));
    }

    void winHelp(std::string_view file, int32_t command) override {
        const std::string ansi = toAnsi(file);
        if (!WinHelpA(nullptr, ansi.c_str(), static_cast<UINT>(command), 0)) {
            raise(kErrInvalidCall, "The help viewer could not open " + std::string(file));
        }
    }
};

}  // namespace

HelpPort& systemHelp() {
    static Win32Help help;
    return help;
}

}  // namespace ostrel::platform
