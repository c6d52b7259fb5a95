
#include <atomic>
#include <cstdio>

#include "platform/adapters.h"

namespace ostrel::platform {

namespace {

std::atomic<bool> echoToStderr{false};

class PosixDebugStream final : public DebugStreamPort {
  public:
    void write(std::string_view text) override {
        if (!echoToStderr.load(std::memory_order_relaxed)) return;
        std::fwrite(text.data(), 1, text.size(), stderr);
        std::fflush(stderr);
    }
};

}  // namespace

// Off: the stream is silent, as there is no debugger to listen on Linux.
void setTraceToStderr(bool on) {
    echoToStderr.store(on, std::memory_order_relaxed);
}

DebugStreamPort& systemDebugStream() {
    static PosixDebugStream stream;
    return stream;
}

}  // namespace ostrel::platform
