#include <windows.h>

#include "platform/adapters.h"

namespace ostrel::platform {

namespace {

class Win32Clock final : public ClockPort {
  public:
    DateTimeParts now() override {
        SYSTEMTIME local{};
        GetLocalTime(&local);
        return DateTimeParts{local.wYear, local.wMonth,  local.wDay,
                             local.wHour, local.wMinute, local.wSecond};
    }
};

}  // namespace

ClockPort& systemClock() {
    static Win32Clock clock;
    return clock;
}

}  // namespace ostrel::platform
