// The component's windows as real Win32 dialogs, made in memory from the
// form: an empty dialog template for the modal loop and the keyboard, the
// controls created in tab order at their pixel places, the pictures made
// from the language store's bytes.
#include <windows.h>

#include <algorithm>
#include <cstring>
#include <exception>
#include <map>
#include <tuple>
#include <vector>

#include "platform/adapters.h"
#include "runtime/automation_error.h"
#include "runtime/text.h"

namespace ostrel::platform {

namespace {

constexpr int kFirstControlId = 100;
constexpr DWORD kDialogStyle = WS_POPUP | WS_CAPTION | WS_SYSMENU | DS_MODALFRAME;
constexpr DWORD kDialogExStyle = WS_EX_DLGMODALFRAME;

std::u16string wide(std::string_view utf8) {
    return toUtf16(utf8);
}
const wchar_t* wptr(const std::u16string& text) {
    return reinterpret_cast<const wchar_t*>(text.c_str());
}

template <class T>
bool readAt(const std::vector<uint8_t>& bytes, size_t offset, T& out) {
    if (offset > bytes.size() || bytes.size() - offset < sizeof(T)) return false;
    std::memcpy(&out, bytes.data() + offset, sizeof(T));
    return true;
}

// The image of an .ico file nearest the wanted size (the first at least as
// large, else the largest); null when the file isn't a well-formed icon.
HICON iconFromFile(const std::vector<uint8_t>& bytes, int wanted) {
    WORD reserved = 0, type = 0, count = 0;
    if (!readAt(bytes, 0, reserved) || !readAt(bytes, 2, type) || !readAt(bytes, 4, count) ||
        reserved != 0 || type != 1 || count == 0) {
        return nullptr;
    }
    int bestSide = -1;
    DWORD bestSize = 0, bestOffset = 0;
    for (WORD i = 0; i < count; ++i) {
        const size_t entry = 6 + size_t{16} * i;
        BYTE width = 0;
        DWORD size = 0, offset = 0;
        if (!readAt(bytes, entry, width) || !readAt(bytes, entry + 8, size) ||
            !readAt(bytes, entry + 12, offset)) {
            return nullptr;
        }
        if (offset > bytes.size() || bytes.size() - offset < size || size == 0) continue;
        const int side = width == 0 ? 256 : width;
        const bool better = bestSide < 0 ||
                            (side >= wanted && (bestSide < wanted || side < bestSide)) ||
                            (bestSide < wanted && side > bestSide);
        if (better) std::tie(bestSide, bestSize, bestOffset) = std::tuple(side, size, offset);
    }
    if (bestSide < 0) return nullptr;
    auto* image = const_cast<BYTE*>(bytes.data() + bestOffset);
    return CreateIconFromResourceEx(image, bestSize, TRUE, 0x00030000, wanted, wanted,
                                    LR_DEFAULTCOLOR);
}

// A DIB section holding a .bmp file's pixels; null when the file isn't a
// well-formed uncompressed bitmap.
HBITMAP bitmapFromFile(const std::vector<uint8_t>& bytes) {
    constexpr size_t kFileHeader = 14;
    WORD magic = 0;
    DWORD bitsOffset = 0;
    BITMAPINFOHEADER header{};
    if (!readAt(bytes, 0, magic) || magic != 0x4D42 || !readAt(bytes, 10, bitsOffset) ||
        !readAt(bytes, kFileHeader, header) || header.biSize < sizeof header ||
        header.biWidth <= 0 || header.biHeight == 0 || header.biWidth > 0x8000 ||
        std::abs(header.biHeight) > 0x8000 ||
        (header.biCompression != BI_RGB && header.biCompression != BI_BITFIELDS)) {
        return nullptr;
    }
    const size_t stride = ((size_t(header.biWidth) * header.biBitCount + 31) / 32) * 4;
    const size_t imageSize = stride * size_t(std::abs(header.biHeight));
    if (imageSize == 0 || bitsOffset > bytes.size() || bytes.size() - bitsOffset < imageSize ||
        bitsOffset < kFileHeader + header.biSize) {
        return nullptr;
    }
    // The header, its colour masks and palette stand between it and the bits.
    std::vector<uint8_t> info(bytes.data() + kFileHeader, bytes.data() + bitsOffset);
    info.resize(std::max(info.size(), sizeof(BITMAPINFOHEADER) + 256 * sizeof(RGBQUAD)));
    void* bits = nullptr;
    HBITMAP bitmap = CreateDIBSection(nullptr, reinterpret_cast<BITMAPINFO*>(info.data()),
                                      DIB_RGB_COLORS, &bits, nullptr, 0);
    if (bitmap && bits) std::memcpy(bits, bytes.data() + bitsOffset, imageSize);
    return bitmap;
}

HFONT createFont(const Font& font, int dotsPerInch) {
    const std::u16string face = wide(font.name);
    const int height = -static_cast<int>(font.size * dotsPerInch / 72.0 + 0.5);
    return CreateFontW(height, 0, 0, 0, font.bold ? FW_BOLD : FW_NORMAL, font.italic,
                       font.underline, font.strikethrough, static_cast<DWORD>(font.charset),
                       OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS, DEFAULT_QUALITY,
                       DEFAULT_PITCH | FF_DONTCARE, wptr(face));
}

// What one showing of a form holds while it is on the screen.
struct Showing {
    const Form* form = nullptr;
    const WindowPort::ClickHandler* onClick = nullptr;
    int dotsPerInch = 96;
    std::vector<const Control*> byId;  // control id - kFirstControlId
    std::vector<HFONT> fonts;
    std::vector<HICON> icons;
    HBITMAP logo = nullptr;
    std::exception_ptr error;

    ~Showing() {
        for (HFONT font : fonts) DeleteObject(font);
        for (HICON icon : icons) DestroyIcon(icon);
        if (logo) DeleteObject(logo);
    }

    int idOf(const Control& control) const {
        const auto at = std::find(byId.begin(), byId.end(), &control);
        return kFirstControlId + static_cast<int>(at - byId.begin());
    }
    const Control* controlOf(int id) const {
        const int index = id - kFirstControlId;
        if (index < 0 || index >= static_cast<int>(byId.size())) return nullptr;
        return byId[static_cast<size_t>(index)];
    }
    const Control* find(bool Control::*role) const {
        for (const Control& control : form->controls) {
            if (control.*role) return &control;
        }
        return nullptr;
    }
    int px(int32_t twips) const { return twipsToPixels(twips, dotsPerInch); }
};

void place(HWND dialog, const Showing& showing) {
    const Form& form = *showing.form;
    // The client area's origin goes where the form says; the frame around it.
    RECT frame{showing.px(form.left), showing.px(form.top),
               showing.px(form.left) + showing.px(form.clientWidth),
               showing.px(form.top) + showing.px(form.clientHeight)};
    AdjustWindowRectEx(&frame, kDialogStyle, FALSE, kDialogExStyle);
    SetWindowPos(dialog, nullptr, frame.left, frame.top, frame.right - frame.left,
                 frame.bottom - frame.top, SWP_NOZORDER | SWP_NOACTIVATE);
}

void createControls(HWND dialog, Showing& showing) {
    const Form& form = *showing.form;
    // Created in tab order, which is the order the dialog tabs through.
    for (const Control& control : form.controls) showing.byId.push_back(&control);
    std::stable_sort(showing.byId.begin(), showing.byId.end(),
                     [](const Control* a, const Control* b) { return a->tabIndex < b->tabIndex; });
    std::map<std::tuple<std::string, double, bool, bool, bool, bool, int32_t>, HFONT> fontCache;
    const auto instance = reinterpret_cast<HINSTANCE>(GetWindowLongPtrW(dialog, GWLP_HINSTANCE));

    for (const Control* control : showing.byId) {
        const wchar_t* windowClass = L"STATIC";
        DWORD style = WS_CHILD | WS_VISIBLE;
        switch (control->kind) {
            case ControlKind::CommandButton:
                windowClass = L"BUTTON";
                style |= WS_TABSTOP | (control->isDefault ? BS_DEFPUSHBUTTON : BS_PUSHBUTTON);
                break;
            case ControlKind::PictureBox:
                style |= SS_BITMAP;
                break;
            case ControlKind::Label:
                style |= SS_LEFT;
                break;
        }
        const std::u16string text = wide(control->text);
        HWND child =
            CreateWindowExW(0, windowClass, wptr(text), style, showing.px(control->left),
                            showing.px(control->top), widthInPixels(*control, showing.dotsPerInch),
                            heightInPixels(*control, showing.dotsPerInch), dialog,
                            reinterpret_cast<HMENU>(static_cast<INT_PTR>(showing.idOf(*control))),
                            instance, nullptr);
        if (!child) continue;
        if (control->kind == ControlKind::PictureBox && control->picture &&
            control->picture->kind == Picture::Kind::Bitmap && !showing.logo) {
            showing.logo = bitmapFromFile(control->picture->bytes);
            if (showing.logo) {
                SendMessageW(child, STM_SETIMAGE, IMAGE_BITMAP,
                             reinterpret_cast<LPARAM>(showing.logo));
            }
        }
        if (control->font) {
            const Font& f = *control->font;
            auto key = std::tuple(f.name, f.size, f.bold, f.italic, f.underline, f.strikethrough,
                                  f.charset);
            HFONT& font = fontCache[key];
            if (!font) {
                font = createFont(f, showing.dotsPerInch);
                showing.fonts.push_back(font);
            }
            SendMessageW(child, WM_SETFONT, reinterpret_cast<WPARAM>(font), FALSE);
        }
    }
    if (const Control* defaultButton = showing.find(&Control::isDefault)) {
        SendMessageW(dialog, DM_SETDEFID, static_cast<WPARAM>(showing.idOf(*defaultButton)), 0);
    }
}

void setIcon(HWND dialog, Showing& showing) {
    const Form& form = *showing.form;
    if (!form.icon || form.icon->kind != Picture::Kind::Icon) return;
    const std::pair<WPARAM, int> sizes[] = {{ICON_BIG, GetSystemMetrics(SM_CXICON)},
                                            {ICON_SMALL, GetSystemMetrics(SM_CXSMICON)}};
    for (const auto& [which, side] : sizes) {
        if (HICON icon = iconFromFile(form.icon->bytes, side)) {
            showing.icons.push_back(icon);
            SendMessageW(dialog, WM_SETICON, which, reinterpret_cast<LPARAM>(icon));
        }
    }
}

// A press of a control: the handler says whether the window unloads; an
// error it raises unloads the window and is raised again to the caller.
void press(HWND dialog, Showing& showing, const Control* control) {
    if (!control) return;
    bool unload = false;
    try {
        unload = (*showing.onClick)(control->name);
    } catch (...) {
        showing.error = std::current_exception();
        unload = true;
    }
    if (unload) EndDialog(dialog, 0);
}

INT_PTR CALLBACK dialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    auto* showing = reinterpret_cast<Showing*>(GetWindowLongPtrW(dialog, DWLP_USER));
    switch (message) {
        case WM_INITDIALOG: {
            showing = reinterpret_cast<Showing*>(lParam);
            SetWindowLongPtrW(dialog, DWLP_USER, lParam);
            const std::u16string caption = wide(showing->form->caption);
            SetWindowTextW(dialog, wptr(caption));
            setIcon(dialog, *showing);
            createControls(dialog, *showing);
            place(dialog, *showing);
            // The first control in tab order takes the focus.
            return TRUE;
        }
        case WM_COMMAND: {
            if (!showing) return FALSE;
            const int id = LOWORD(wParam);
            if (id == IDCANCEL) {
                press(dialog, *showing, showing->find(&Control::isCancel));
            } else if (id == IDOK) {
                press(dialog, *showing, showing->find(&Control::isDefault));
            } else if (HIWORD(wParam) == BN_CLICKED) {
                press(dialog, *showing, showing->controlOf(id));
            }
            return TRUE;
        }
        case WM_CTLCOLORSTATIC: {
            if (!showing) return FALSE;
            const Control* control =
                showing->controlOf(GetDlgCtrlID(reinterpret_cast<HWND>(lParam)));
            if (!control || !control->foreColor) return FALSE;
            auto* dc = reinterpret_cast<HDC>(wParam);
            SetTextColor(dc, *control->foreColor);
            SetBkMode(dc, TRANSPARENT);
            return reinterpret_cast<INT_PTR>(GetSysColorBrush(COLOR_BTNFACE));
        }
        case WM_CLOSE:
            // The close box unloads the window whatever its buttons do.
            EndDialog(dialog, 0);
            return TRUE;
        default:
            return FALSE;
    }
}

HINSTANCE thisModule() {
    HMODULE module = nullptr;
    GetModuleHandleExW(
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
        reinterpret_cast<LPCWSTR>(&dialogProc), &module);
    return module;
}

class Win32Windowing final : public WindowPort {
  public:
    int32_t dotsPerInch() override {
        HDC screen = GetDC(nullptr);
        const int dpi = screen ? GetDeviceCaps(screen, LOGPIXELSX) : 0;
        if (screen) ReleaseDC(nullptr, screen);
        return dpi > 0 ? dpi : 96;
    }

    void showModal(const Form& form, int64_t ownerWindow, const ClickHandler& onClick) override {
        Showing showing;
        showing.form = &form;
        showing.onClick = &onClick;
        showing.dotsPerInch = dotsPerInch();

        // An empty template: the controls are made at WM_INITDIALOG in pixels.
        alignas(DWORD) WORD dialogTemplate[sizeof(DLGTEMPLATE) / sizeof(WORD) + 3] = {};
        auto* header = reinterpret_cast<DLGTEMPLATE*>(dialogTemplate);
        header->style = kDialogStyle;
        header->dwExtendedStyle = kDialogExStyle;

        const HINSTANCE instance = thisModule();
        HWND owner = reinterpret_cast<HWND>(static_cast<intptr_t>(ownerWindow));
        // An owned window stays out of the task bar: without an owner of the
        // host's, a hidden one of our own.
        HWND hiddenOwner = nullptr;
        if (!owner) {
            hiddenOwner = CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 0, 0, nullptr, nullptr,
                                          instance, nullptr);
            owner = hiddenOwner;
        }
        const INT_PTR result = DialogBoxIndirectParamW(instance, header, owner, dialogProc,
                                                       reinterpret_cast<LPARAM>(&showing));
        if (hiddenOwner) DestroyWindow(hiddenOwner);
        if (showing.error) std::rethrow_exception(showing.error);
        if (result == -1) raise(kErrCantCreate);
    }
};

}  // namespace

WindowPort& systemWindowing() {
    static Win32Windowing windowing;
    return windowing;
}

}  // namespace ostrel::platform
