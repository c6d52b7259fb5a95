#include <ctime>

#include "platform/adapters.h"

namespace ostrel::platform {

namespace {

class PosixClock final : public ClockPort {
  public:
    DateTimeParts now() override {
        const std::time_t seconds = std::time(nullptr);
        std::tm local{};
        if (!localtime_r(&seconds, &local)) return DateTimeParts{};
        return DateTimeParts{local.tm_year + 1900, local.tm_mon + 1, local.tm_mday,
                             local.tm_hour,        local.tm_min,     local.tm_sec};
    }
};

}  // namespace

ClockPort& systemClock() {
    static PosixClock clock;
    return clock;
}

}  // namespace ostrel::platform
