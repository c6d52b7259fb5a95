#include "foundation/named_mutex.h"

#include "foundation/debug_log.h"
#include "foundation/globals.h"
#include "runtime/automation_error.h"

namespace ostrel {

namespace {

constexpr int32_t kTraceLevel = 1000;
constexpr int32_t kLastError = -1;

platform::NamedMutexPort& mutexPort() {
    return requirePort(apartment().ports.namedMutex);
}

// "Released mutex handle(h) = error<TAB>text", for a refused release and,
// in the same words, for a refused close.
void logRefused(int32_t handle) {
    const int32_t error = mutexPort().lastError();
    gsubDebugPrint("Released mutex handle(" + std::to_string(handle) +
                   ") = " + std::to_string(error) + "\t" + gfstrGetSystemErrorText(error));
}

}  // namespace

int32_t GetMutex(std::string_view vstrName, int32_t vlngTimeoutMs) {
    const std::string name(vstrName);
    try {
        if (name.empty()) return 0;
        platform::NamedMutexPort& port = mutexPort();
        const int32_t handle = port.create(name);
        if (handle == 0) {
            gsubDebugPrint("Failed creating mutex(" + name + ")");
            return 0;
        }
        switch (port.wait(handle, vlngTimeoutMs)) {
            case platform::NamedMutexPort::kWaitObtained:
                if (glngDebugLevel() > kTraceLevel) {
                    gsubDebugPrint("Obtained mutex(" + name + "," + std::to_string(handle) + ")");
                }
                return handle;
            case platform::NamedMutexPort::kWaitAbandoned:
                // A full success: what the mutex guards is not cleaned up.
                gsubDebugPrint("Obtained abandoned mutex(" + name + "," + std::to_string(handle) +
                               ")");
                return handle;
            default:
                // kept: the handle stays open until the process ends; the
                // caller gets 0 and has nothing to close.
                gsubDebugPrint("Failed getting mutex(" + name + ")");
                return 0;
        }
    } catch (...) {
        const AutomationError error = currentError();
        gsubDebugPrint("[GetMutex] Name: " + name + " ERROR: " + std::to_string(error.number) +
                       " - " + error.description);
        return 0;
    }
}

bool ReleaseMutexHandle(int32_t& rlngHandle) {
    if (rlngHandle == 0) return true;
    bool released = false;
    resumeNext([&] {
        if (mutexPort().release(rlngHandle)) {
            released = true;
            if (glngDebugLevel() > kTraceLevel) {
                gsubDebugPrint("Released mutex handle(" + std::to_string(rlngHandle) + ")");
            }
        } else {
            logRefused(rlngHandle);
        }
    });
    resumeNext([&] {
        if (mutexPort().close(rlngHandle)) {
            if (glngDebugLevel() > kTraceLevel) {
                gsubDebugPrint("Closed mutex handle(" + std::to_string(rlngHandle) + ")");
            }
        } else {
            logRefused(rlngHandle);  // kept: the release's words, although the close failed
        }
    });
    rlngHandle = 0;
    return released;
}

std::string gfstrGetSystemErrorText(int32_t vlngError) {
    platform::NamedMutexPort& port = mutexPort();
    return port.errorText(vlngError == kLastError ? port.lastError() : vlngError);
}

}  // namespace ostrel
