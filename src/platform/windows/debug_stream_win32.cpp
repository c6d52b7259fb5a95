// The debugger stream: OutputDebugStringA with the text in the ANSI code page.
#include <windows.h>

#include <atomic>
#include <cstdio>
#include <string>

#include "platform/adapters.h"
#include "platform/windows/ansi_win32.h"
#include "runtime/text.h"

namespace ostrel::platform {

namespace {

std::atomic<bool> echoToStderr{false};

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

// The debugger keeps every text either way; the tool's --trace adds stderr.
void setTraceToStderr(bool on) {
    echoToStderr.store(on, std::memory_order_relaxed);
}

DebugStreamPort& systemDebugStream() {
    static Win32DebugStream stream;
    return stream;
}

}  // namespace ostrel::platform
