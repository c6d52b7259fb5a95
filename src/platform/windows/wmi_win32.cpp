#include "platform/adapters.h"
namespace ostrel::platform {
namespace {
class Win32Wmi final : public WmiPort {
  public:
    std::unique_ptr<WmiServices> connect(std::string_view) override { return nullptr; }
};
}  // namespace
WmiPort& systemWmi() {
    static Win32Wmi wmi;
    return wmi;
}
}  // namespace ostrel::platform
