#include "debug_watch.h"

#include <string_view>

#include "foundation/globals.h"
#include "platform/debug_stream_port.h"

namespace ostrel::cli {

namespace {

class WatchedStream final : public platform::DebugStreamPort {
  public:
    void write(std::string_view text) override {
        if (next) next->write(text);
        if (!watching) return;
        while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.remove_suffix(1);
        lines.emplace_back(text);
    }

    platform::DebugStreamPort* next = nullptr;
    bool watching = false;
    std::vector<std::string> lines;
};

WatchedStream& watched() {
    static WatchedStream stream;  // outlives the globals, which point at it
    return stream;
}

}  // namespace

void watchDebugStream() {
    platform::DebugStreamPort*& port = apartment().ports.debugStream;
    if (port == &watched()) return;
    watched().next = port;
    port = &watched();
}

DebugWatch::DebugWatch() {
    watched().lines.clear();
    watched().watching = true;
}

DebugWatch::~DebugWatch() {
    watched().watching = false;
}

const std::vector<std::string>& DebugWatch::lines() const {
    return watched().lines;
}

}  // namespace ostrel::cli
