// The debugger stream: OutputDebugStringA with the text in the ANSI code page.
#include <windows.h>

#include <atomic>
#include <cstdio>
#include <string>

#include "platform/adapters.h"
#include "platform/windows/debug_stream_win32.h"
#include "runtime/text.h"

namespace ostrel::platform {

namespace {

std::atomic<bool> echoToStderr{false};

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

class Win32DebugStream final : public DebugStreamPort {
  public:
    void write(std::string_view text) override {
        const std::string ansi = toAnsi(text);
        OutputDebugStringA(ansi.c_str());
        if (echoToStderr.load(std::memory_order_relaxed)) {
            std::fwrite(ansi.data(), 1, ansi.size(), stderr);
            std::fflush(stderr);
        }
    }
};

}  // namespace

void setDebugStreamEcho(bool on) {
    echoToStderr.store(on, std::memory_order_relaxed);
}

DebugStreamPort& systemDebugStream() {
    static Win32DebugStream stream;
    return stream;
}

}  // namespace ostrel::platform
