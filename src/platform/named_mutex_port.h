// A named lock that spans processes, as the kernel's named mutex offers it:
// create or open by name, wait with a time-out, release, close. Handles are
// positive 32-bit numbers; 0 is no handle.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace ostrel::platform {

class NamedMutexPort {
  public:
    // What a wait answers, with the kernel's numbers.
    enum WaitResult : uint32_t {
        kWaitObtained = 0,
        kWaitAbandoned = 0x80,  // owned; the last owner ended without releasing it
        kWaitTimeout = 0x102,
        kWaitFailed = 0xFFFFFFFF,
    };

    virtual ~NamedMutexPort() = default;
    // CreateMutexA(no security, not owned, name): a new or the existing lock
    // of that name. 0 when it can't be created or opened (lastError says why).
    virtual int32_t create(std::string_view name) = 0;
    // WaitForSingleObject: a negative time-out waits for ever. A thread that
    // owns the lock already gets it again at once.
    virtual uint32_t wait(int32_t handle, int32_t timeoutMs) = 0;
    // ReleaseMutex and CloseHandle; false when refused (lastError says why).
    virtual bool release(int32_t handle) = 0;
    virtual bool close(int32_t handle) = 0;
    // The calling thread's last system error.
    virtual int32_t lastError() = 0;
    // The system's own text for an error code (FormatMessageA from the
    // system's table into 256 characters); "" for a code it doesn't know.
    virtual std::string errorText(int32_t code) = 0;
};

}  // namespace ostrel::platform
