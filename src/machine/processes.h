// The process helpers: whether a program runs (and its process id), and the
// start of a program with a wait until a readiness test says it is up.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "runtime/variant.h"

namespace ostrel {

// What a started program publishes: empty until it is ready.
using ReadinessTest = std::function<std::string()>;

// True when a process of that file name runs (folders and case don't
// count); rvntProcessId is the integer 0 at first, then the process's id.
bool mblnIsProcessRunning(std::string_view vstrName, Variant& rvntProcessId);

// Starts the command line hidden and waits for the readiness test, as long
// as the setting ProgramReadyTimeout (default 500 ms) says. vlngUnused is
// never read. startedId, when given, receives the id of a started program.
bool mfblnRunProgram(std::string_view vstrCommandLine, int32_t vlngUnused,
                     const ReadinessTest& ready, int32_t* startedId = nullptr);

// True when the readiness test answered within the time-out.
bool mfblnWaitForReady(int32_t vlngTimeoutMs, const ReadinessTest& ready);

// A readiness test that answers the content of a file ("" while it is
// missing or empty); no file name gives a test that never answers.
ReadinessTest readinessFromFile(std::string path);

}  // namespace ostrel
