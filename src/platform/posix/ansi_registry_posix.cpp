// Linux has no system registry to open by the A-form calls: every key is
// missing, as on a machine without it.
#include "platform/adapters.h"

namespace ostrel::platform {

namespace {

constexpr int32_t kErrorFileNotFound = 2;
constexpr int32_t kErrorInvalidHandle = 6;

class NoAnsiRegistry final : public AnsiRegistryPort {
  public:
    int32_t openKeyEx(int32_t, std::string_view, uint32_t, int64_t&) override {
        return kErrorFileNotFound;
    }
    int32_t queryValueEx(int64_t, std::string_view, uint32_t&, std::string&, uint32_t&) override {
        return kErrorInvalidHandle;
    }
    int32_t closeKey(int64_t) override { return kErrorInvalidHandle; }
    // Text is UTF-8 here.
    std::string fromAnsi(std::string_view bytes) override { return std::string(bytes); }
};

}  // namespace

AnsiRegistryPort& systemAnsiRegistry() {
    static NoAnsiRegistry registry;
    return registry;
}

}  // namespace ostrel::platform
