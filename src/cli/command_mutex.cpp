// mutex: takes a named lock, prints the handle (0: not obtained), holds it
// for a while and releases it. How an administrator sees who holds the
// settings lock, and how a test makes a second process wait or find an
// abandoned lock.
#include <chrono>
#include <iostream>
#include <string>
#include <thread>

#include "commands.h"
#include "foundation/named_mutex.h"
#include "output.h"

namespace ostrel::cli {

namespace {

std::string name;
int32_t timeoutMs = kSettingsMutexTimeoutMs;
int32_t holdMs = 0;

int run() {
    int32_t handle = GetMutex(name, timeoutMs);
    const Record record{{"Name", name}, {"Handle", handle}, {"Obtained", handle > 0}};
    emit(record, std::to_string(handle), kExitOk);
    std::cout.flush();  // a watcher knows the lock is held
    if (handle > 0 && holdMs > 0) std::this_thread::sleep_for(std::chrono::milliseconds(holdMs));
    const bool obtained = handle > 0;
    ReleaseMutexHandle(handle);
    return obtained ? kExitOk : kExitNotObtained;
}

[[maybe_unused]] const bool registered = registerCommand({
    "mutex",
    "Take a named lock, print its handle (0: not obtained), hold it, release it; exit 3 when "
    "not obtained",
    [](CLI::App& app) {
        app.add_option("--timeout", timeoutMs, "How long to wait for the lock (default 3000)")
            ->type_name("MS");
        app.add_option("--hold", holdMs, "How long to hold it once obtained (default 0)")
            ->type_name("MS")
            ->check(CLI::NonNegativeNumber);
        app.add_option("NAME", name, "The lock's name, for example QUORL_OSTREL_SETTINGS")
            ->required();
    },
    run,
});

}  // namespace

}  // namespace ostrel::cli
