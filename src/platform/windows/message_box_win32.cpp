#include <windows.h>

#include "platform/adapters.h"
#include "runtime/text.h"

namespace ostrel::platform {

namespace {

class Win32MessageBox final : public MessageBoxPort {
  public:
    void show(std::string_view text, int32_t style, std::string_view title) override {
        const std::u16string wideText = toUtf16(text);
        const std::u16string wideTitle = toUtf16(title);
        // Owned by the thread's active window, as the run time's boxes are,
        // so that a box from a dialog is modal to it. No title of its own:
        // the system's default caption.
        MessageBoxW(GetActiveWindow(), reinterpret_cast<const wchar_t*>(wideText.c_str()),
                    title.empty() ? nullptr : reinterpret_cast<const wchar_t*>(wideTitle.c_str()),
                    static_cast<UINT>(style));
    }
};

}  // namespace

MessageBoxPort& systemMessageBox() {
    static Win32MessageBox box;
    return box;
}

}  // namespace ostrel::platform
