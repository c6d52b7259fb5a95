// The About window as a host sees it: wncServices.ShowAbout over a window of
// the host's, read back through the window API while it is modal (place and
// size, styles, owner, controls with their texts, tab order, default button,
// pictures), then closed by Enter, by Escape, and after the System Info
// button put up its message. Every wait has a time-out: a window that doesn't
// appear fails the test, never hangs it. The DLL must be registered.
//
//   about_host VERSION_LABEL [READY_FILE GO_FILE]
// With the two files the host writes READY_FILE once the window is up and
// waits (at most 30 s) for GO_FILE, so that a screenshot can be taken.
//   about_host --escape CAPTION
// Waits for another program's dialog of that caption, not in the task bar,
// presses Escape in it and waits for it to go.
// Exit code: number of failed checks.
#include <windows.h>

#include <atomic>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include <initguid.h>

#include "com/ostrel_h.h"
#include "host_support.h"

using host::check;
using host::Ptr;

namespace {

constexpr DWORD kAppearMs = 15000;
constexpr wchar_t kUnavailable[] = L"System Information Is Unavailable At This Time";

int dpi = 96;
int px(int twips) {
    return MulDiv(twips, dpi, 1440);
}

std::wstring textOf(HWND window) {
    wchar_t buffer[512] = {};
    GetWindowTextW(window, buffer, 512);
    return buffer;
}

std::wstring classOf(HWND window) {
    wchar_t buffer[64] = {};
    GetClassNameW(window, buffer, 64);
    return buffer;
}

// Polls until found() gives a window, or the time is up (null).
template <class Find>
HWND waitFor(Find&& found, DWORD timeoutMs = kAppearMs) {
    const DWORD start = GetTickCount();
    for (;;) {
        if (HWND window = found()) return window;
        if (GetTickCount() - start > timeoutMs) return nullptr;
        Sleep(50);
    }
}

bool waitGone(HWND window, DWORD timeoutMs = kAppearMs) {
    const DWORD start = GetTickCount();
    while (IsWindow(window)) {
        if (GetTickCount() - start > timeoutMs) return false;
        Sleep(50);
    }
    return true;
}

struct OwnedSearch {
    HWND owner;
    HWND found;
};

// A callback of the system's calling convention, as the 32-bit build needs.
BOOL CALLBACK findOwned(HWND window, LPARAM data) {
    auto* search = reinterpret_cast<OwnedSearch*>(data);
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    if (process == GetCurrentProcessId() && IsWindowVisible(window) &&
        GetWindow(window, GW_OWNER) == search->owner && classOf(window) == L"#32770") {
        search->found = window;
        return FALSE;
    }
    return TRUE;
}

// The visible dialog (class #32770) of this process owned by `owner`.
HWND ownedDialog(HWND owner) {
    OwnedSearch search{owner, nullptr};
    EnumWindows(findOwned, reinterpret_cast<LPARAM>(&search));
    return search.found;
}

std::vector<HWND> children(HWND parent) {
    std::vector<HWND> list;
    for (HWND child = GetWindow(parent, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
        list.push_back(child);
    }
    return list;
}

RECT clientRectOf(HWND child) {
    RECT rect{};
    GetWindowRect(child, &rect);
    MapWindowPoints(HWND_DESKTOP, GetParent(child), reinterpret_cast<POINT*>(&rect), 2);
    return rect;
}

bool at(HWND child, int left, int top, int width, int height) {
    const RECT r = clientRectOf(child);
    const bool same =
        r.left == left && r.top == top && r.right - r.left == width && r.bottom - r.top == height;
    if (!same) {
        std::printf("      %ls at %ld,%ld size %ldx%ld, wanted %d,%d size %dx%d\n",
                    textOf(child).c_str(), r.left, r.top, r.right - r.left, r.bottom - r.top, left,
                    top, width, height);
    }
    return same;
}

HWND focusOf(HWND window) {
    GUITHREADINFO info{};
    info.cbSize = sizeof info;
    GetGUIThreadInfo(GetWindowThreadProcessId(window, nullptr), &info);
    return info.hwndFocus;
}

void pressKey(HWND dialog, WPARAM key) {
    HWND target = focusOf(dialog);
    PostMessageW(target ? target : dialog, WM_KEYDOWN, key, 1);
    PostMessageW(target ? target : dialog, WM_KEYUP, key, static_cast<LPARAM>(0xC0000001u));
}

// The window as the load built it: place, styles, controls, tab order.
void checkWindow(HWND dialog, HWND owner, const std::wstring& versionLabel) {
    check(textOf(dialog) == L"About Ostrel", "caption: text 312 then text 108");
    POINT origin{0, 0};
    ClientToScreen(dialog, &origin);
    RECT client{};
    GetClientRect(dialog, &client);
    check(origin.x == px(2340) && origin.y == px(1935),
          "client area's origin at 2340, 1935 twips on the screen (not centred)");
    check(client.right == px(5625) && client.bottom == px(1635), "client area 5625 x 1635 twips");
    const LONG_PTR style = GetWindowLongPtrW(dialog, GWL_STYLE);
    const LONG_PTR exStyle = GetWindowLongPtrW(dialog, GWL_EXSTYLE);
    check((style & (WS_MINIMIZEBOX | WS_MAXIMIZEBOX | WS_THICKFRAME)) == 0 &&
              (style & WS_CAPTION) == WS_CAPTION && (exStyle & WS_EX_DLGMODALFRAME),
          "fixed dialog border, no minimise or maximise box");
    check((exStyle & WS_EX_APPWINDOW) == 0 && GetWindow(dialog, GW_OWNER) == owner,
          "owned by the host's window, so not in the task bar");
    check(!IsWindowEnabled(owner), "modal: the owner is disabled while it shows");
    check(SendMessageW(dialog, WM_GETICON, ICON_BIG, 0) != 0 &&
              SendMessageW(dialog, WM_GETICON, ICON_SMALL, 0) != 0,
          "the form's icon is set (picture 286)");

    const std::vector<HWND> list = children(dialog);
    check(list.size() == 5, "five controls");
    if (list.size() != 5) return;
    // Children in tab order: cmdOK, picIcon, cmdSysInfo, lblTitle, lblVersion.
    HWND cmdOK = list[0], picIcon = list[1], cmdSysInfo = list[2], lblTitle = list[3],
         lblVersion = list[4];
    check(classOf(cmdOK) == L"Button" && textOf(cmdOK) == L"OK" &&
              at(cmdOK, px(1507), px(1170), px(1260), px(345)),
          "cmdOK: text 131, 1507/1170, 1260 x 345");
    check(classOf(picIcon) == L"Static" && at(picIcon, px(3240), px(120), 150, 56) &&
              SendMessageW(picIcon, STM_GETIMAGE, IMAGE_BITMAP, 0) != 0,
          "picIcon: the logo (picture 314), sized to its 150 x 56 pixels, at 3240/120");
    check(classOf(cmdSysInfo) == L"Button" && textOf(cmdSysInfo) == L"&System Info..." &&
              at(cmdSysInfo, px(2872), px(1170), px(1245), px(345)),
          "cmdSysInfo: text 313, 2872/1170, 1245 x 345");
    check(classOf(lblTitle) == L"Static" && textOf(lblTitle) == L"Ostrel" &&
              at(lblTitle, px(270), px(195), px(2745), px(225)),
          "lblTitle: text 108, 270/195, 2745 x 225");
    check(textOf(lblVersion) == versionLabel && at(lblVersion, px(270), px(435), px(2745), px(225)),
          "lblVersion: V major.minor.revision, 270/435, 2745 x 225");
    check(SendMessageW(lblTitle, WM_GETFONT, 0, 0) != 0,
          "the language font is set on the controls");

    const LRESULT defId = SendMessageW(dialog, DM_GETDEFID, 0, 0);
    check(HIWORD(defId) == DC_HASDEFID && LOWORD(defId) == GetDlgCtrlID(cmdOK),
          "cmdOK is the default button");
    check(focusOf(dialog) == cmdOK, "cmdOK (tab index 0) has the focus");
    check(GetNextDlgTabItem(dialog, cmdOK, FALSE) == cmdSysInfo &&
              GetNextDlgTabItem(dialog, cmdSysInfo, FALSE) == cmdOK,
          "Tab goes from cmdOK to cmdSysInfo and back");
}

// The message box of StartSysInfo, over the About window; closes it and
// checks that the About window stays.
void checkUnavailable(HWND dialog, const char* how) {
    HWND box = waitFor([&] { return ownedDialog(dialog); });
    check(box != nullptr, (std::string(how) + ": a message box over the About window").c_str());
    if (!box) return;
    bool text = false;
    int buttons = 0, icons = 0;
    std::wstring button;
    for (HWND child : children(box)) {
        if (!IsWindowVisible(child)) continue;
        const std::wstring cls = classOf(child);
        if (cls == L"Button") {
            ++buttons;
            button = textOf(child);
        } else if (cls == L"Static") {
            if (textOf(child) == kUnavailable) text = true;
            // An icon control that holds no icon shows none.
            if ((GetWindowLongPtrW(child, GWL_STYLE) & SS_TYPEMASK) == SS_ICON &&
                SendMessageW(child, STM_GETICON, 0, 0) != 0) {
                ++icons;
            }
        }
    }
    check(text, "the message reads \"System Information Is Unavailable At This Time\"");
    if (!(buttons == 1 && button == L"OK" && icons == 0)) {
        std::printf("      %d button(s), the last \"%ls\", %d icon(s)\n", buttons, button.c_str(),
                    icons);
    }
    check(buttons == 1 && button == L"OK" && icons == 0, "only an OK button, no icon");
    PostMessageW(box, WM_COMMAND, IDOK, 0);
    check(waitGone(box), "the message box closes with OK");
    Sleep(200);
    check(IsWindow(dialog) && IsWindowVisible(dialog) && IsWindowEnabled(dialog),
          "the About window stays open and usable");
}

struct Round {
    const char* name;
    void (*act)(HWND dialog);
};

void enterOnOk(HWND dialog) {
    pressKey(dialog, VK_RETURN);
}
void escape(HWND dialog) {
    pressKey(dialog, VK_ESCAPE);
}
void clickSysInfo(HWND dialog) {
    std::vector<HWND> list = children(dialog);
    if (list.size() < 3) return;
    PostMessageW(list[2], BM_CLICK, 0, 0);
    checkUnavailable(dialog, "click on cmdSysInfo");
    pressKey(dialog, VK_ESCAPE);
}
void enterOnSysInfo(HWND dialog) {
    std::vector<HWND> list = children(dialog);
    if (list.size() < 3) return;
    PostMessageW(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(list[2]), TRUE);
    waitFor([&] { return focusOf(dialog) == list[2] ? list[2] : nullptr; }, 5000);
    check(focusOf(dialog) == list[2], "the focus moves to cmdSysInfo");
    pressKey(dialog, VK_RETURN);
    checkUnavailable(dialog, "Enter on cmdSysInfo");
    pressKey(dialog, VK_ESCAPE);
}

// Another program's About window, closed by Escape.
int escapeFrom(const char* caption) {
    const std::string text = caption;
    const std::wstring wanted(text.begin(), text.end());
    HWND dialog = waitFor([&] { return FindWindowW(L"#32770", wanted.c_str()); });
    check(dialog != nullptr, "the program shows its About window");
    if (!dialog) return host::failures;
    check((GetWindowLongPtrW(dialog, GWL_EXSTYLE) & WS_EX_APPWINDOW) == 0 &&
              GetWindow(dialog, GW_OWNER) != nullptr &&
              !IsWindowVisible(GetWindow(dialog, GW_OWNER)),
          "without a host window it is owned by a hidden one, so not in the task bar");
    waitFor([&] { return focusOf(dialog); }, 5000);
    pressKey(dialog, VK_ESCAPE);
    check(waitGone(dialog), "Escape closes it");
    return host::failures;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 3 && std::string(argv[1]) == "--escape") return escapeFrom(argv[2]);
    if (argc < 2) {
        std::fprintf(stderr, "usage: about_host VERSION_LABEL [READY_FILE GO_FILE]\n");
        return 2;
    }
    const std::string label = argv[1];
    const std::wstring versionLabel(label.begin(), label.end());
    const char* readyFile = argc >= 4 ? argv[2] : nullptr;
    const char* goFile = argc >= 4 ? argv[3] : nullptr;

    HDC screen = GetDC(nullptr);
    dpi = GetDeviceCaps(screen, LOGPIXELSX);
    ReleaseDC(nullptr, screen);

    CoInitialize(nullptr);
    Ptr<IDispatch> services;
    CLSID clsid{};
    CLSIDFromProgID(L"Ostrel.wncServices", &clsid);
    check(SUCCEEDED(host::create(clsid, IID_IDispatch, services)), "Ostrel.wncServices is created");
    if (!services.p) return host::failures;
    const DISPID id = host::idOf(services.p, L"ShowAbout");
    check(id == 40, "ShowAbout has the dispatch id 40");

    HWND owner = CreateWindowExW(0, L"STATIC", L"about host", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0,
                                 0, 200, 100, nullptr, nullptr, nullptr, nullptr);

    const Round rounds[] = {{"Enter", enterOnOk},
                            {"Escape", escape},
                            {"System Info clicked, then Escape", clickSysInfo},
                            {"Enter on System Info, then Escape", enterOnSysInfo}};
    bool first = true;
    for (const Round& round : rounds) {
        std::atomic<bool> closed{false};
        std::thread watcher([&] {
            HWND dialog = waitFor([&] { return ownedDialog(owner); });
            if (!dialog) {
                check(false, "the About window appears");
                std::fflush(stdout);
                ExitProcess(static_cast<UINT>(host::failures));
            }
            if (first) {
                checkWindow(dialog, owner, versionLabel);
                if (readyFile) {
                    if (FILE* f = std::fopen(readyFile, "w")) std::fclose(f);
                    waitFor(
                        [&]() -> HWND {
                            return GetFileAttributesA(goFile) != INVALID_FILE_ATTRIBUTES ? owner
                                                                                         : nullptr;
                        },
                        30000);
                }
            }
            round.act(dialog);
            closed = waitGone(dialog);
            check(closed, (std::string(round.name) + " closes the About window").c_str());
            if (!closed) {
                std::fflush(stdout);
                ExitProcess(static_cast<UINT>(host::failures));
            }
        });
        host::Var ownerArg(static_cast<LONG>(reinterpret_cast<INT_PTR>(owner)));
        DISPPARAMS params{&ownerArg.v, nullptr, 1, 0};
        const HRESULT hr = host::invoke(services.p, id, DISPATCH_METHOD, params, nullptr);
        watcher.join();
        check(
            hr == S_OK && IsWindowEnabled(owner),
            (std::string(round.name) + ": ShowAbout returns, the owner is enabled again").c_str());
        first = false;
    }
    DestroyWindow(owner);
    services.reset();
    CoUninitialize();
    std::printf("about_host: %d failure(s)\n", host::failures);
    return host::failures;
}
