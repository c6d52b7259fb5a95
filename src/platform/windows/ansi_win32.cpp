#include "platform/windows/ansi_win32.h"

#include <windows.h>

#include "runtime/text.h"

namespace ostrel::platform {

std::string toAnsi(std::string_view utf8) {
    const std::u16string wide = toUtf16(utf8);
    const auto* source = reinterpret_cast<const wchar_t*>(wide.data());
    const int length = static_cast<int>(wide.size());
    const int size = WideCharToMultiByte(CP_ACP, 0, source, length, nullptr, 0, nullptr, nullptr);
    if (size <= 0) return std::string();
    std::string ansi(static_cast<size_t>(size), '\0');
    WideCharToMultiByte(CP_ACP, 0, source, length, ansi.data(), size, nullptr, nullptr);
    return ansi;
}

std::string fromAnsi(std::string_view ansi) {
    const int length = static_cast<int>(ansi.size());
    const int size = MultiByteToWideChar(CP_ACP, 0, ansi.data(), length, nullptr, 0);
    if (size <= 0) return std::string();
    std::u16string wide(static_cast<size_t>(size), u'\0');
    MultiByteToWideChar(CP_ACP, 0, ansi.data(), length, reinterpret_cast<wchar_t*>(wide.data()),
                        size);
    return fromUtf16(wide);
}

}  // namespace ostrel::platform
