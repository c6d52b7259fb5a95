#include "machine/processes.h"

#include <algorithm>

#include "foundation/debug_log.h"
#include "foundation/file_system_object.h"
#include "foundation/globals.h"
#include "foundation/settings.h"
#include "runtime/automation_error.h"
#include "runtime/convert.h"
#include "runtime/text.h"

namespace ostrel {

namespace {

constexpr uint32_t kSnapshotAll = 15;  // kept: every kind, although only processes are read
constexpr int32_t kHidden = 0;
// ProgramReadyTimeout above a minute waits a minute: a shared settings file
// can't make a host wait for weeks.
constexpr int32_t kMaxReadyTimeoutMs = 60000;

platform::ProcessPort& processes() {
    return requirePort(apartment().ports.processes);
}

std::string failureText() {
    const AutomationError error = currentError();
    return std::to_string(error.number) + ", " + error.description;
}

}  // namespace

bool mblnIsProcessRunning(std::string_view vstrName, Variant& rvntProcessId) {
    const std::string name(vstrName);
    bool blnResult = false;
    rvntProcessId = Variant(int16_t{0});
    try {
        const std::string strFile = fileSystem().GetFileName(name);
        platform::ProcessPort& port = processes();
        const int64_t snapshot = port.createSnapshot(kSnapshotAll, 0);
        if (snapshot == platform::ProcessPort::kInvalidSnapshot) {
            const int32_t code = port.lastError();
            if (gblnDebug()) {
                gsubDebugPrint("[mblnIsProcessRunning :" + name +
                               "] Unable to create process table snapshot. ErrorCode: " +
                               std::to_string(code));
            }
        } else {
            platform::ProcessEntry entry;
            for (bool more = port.firstProcess(snapshot, entry); more;
                 more = port.nextProcess(snapshot, entry)) {
                if (!equalsText(fileSystem().GetFileName(entry.exeFile), strFile)) continue;
                rvntProcessId = Variant(static_cast<int32_t>(entry.processId));
                blnResult = true;
                if (gblnDebug())
                    gsubDebugPrint("[mblnIsProcessRunning :" + name + "] Process is running.");
                break;  // the first in the system's list wins
            }
            port.closeSnapshot(snapshot);
        }
        if (!blnResult && gblnDebug()) {
            gsubDebugPrint("[mblnIsProcessRunning :" + name + "] Process is not running.");
        }
        return blnResult;
    } catch (...) {
        // kept: the same words wherever the failure lay; an open snapshot stays open
        gsubDebugPrint("[mblnIsProcessRunning :" + name +
                       "] Unable to create process table snapshot. Error: " + failureText());
        return false;
    }
}

bool mfblnRunProgram(std::string_view vstrCommandLine, int32_t /*vlngUnused*/,
                     const ReadinessTest& ready, int32_t* startedId) {
    const std::string commandLine(vstrCommandLine);
    try {
        const int32_t lngTimeout = std::min(
            toLong(gfstrGetApplicationSetting("Ostrel", "Settings", "ProgramReadyTimeout", "500")),
            kMaxReadyTimeoutMs);
        // kept: the id goes into 16 bits, so one above 32767 overflows into
        // the failure path although the program was started
        const int16_t intProcessId =
            narrowToInteger(static_cast<int32_t>(processes().start(commandLine, kHidden)));
        if (intProcessId == 0) {
            if (gblnDebug())
                gsubDebugPrint("[mfblnRunProgram] Program failed to run.  prog: " + commandLine);
            return false;
        }
        if (startedId) *startedId = intProcessId;
        if (!mfblnWaitForReady(lngTimeout, ready)) return false;  // it keeps running
        if (gblnDebug()) {
            gsubDebugPrint("[mfblnRunProgram] Program started.  procID: " +
                           std::to_string(intProcessId) + " prog: " + commandLine);
        }
        return true;
    } catch (...) {
        gsubDebugPrint("[mfblnRunProgram] Program failed to run.  prog: " + commandLine +
                       " Error: " + failureText());
        return false;
    }
}

bool mfblnWaitForReady(int32_t vlngTimeoutMs, const ReadinessTest& ready) {
    platform::ProcessPort& port = processes();
    // The counter is read as the run time reads it: a signed 32-bit number.
    int32_t lngStart = static_cast<int32_t>(port.tickCount());
    int64_t lngElapsed = 0;
    while (lngElapsed < vlngTimeoutMs) {
        if (ready && !ready().empty()) return true;
        port.sleep(1);
        const auto lngNow = static_cast<int32_t>(port.tickCount());
        // A wrapped counter starts the wait afresh: it may last one time-out longer.
        if (lngNow < lngStart) lngStart = lngNow;
        lngElapsed = static_cast<int64_t>(lngNow) - lngStart;
    }
    return false;
}

ReadinessTest readinessFromFile(std::string path) {
    if (path.empty()) return ReadinessTest();
    return [path = std::move(path)]() -> std::string {
        // A file still held by its writer is not ready yet, no failure.
        try {
            FileSystemObject& fso = fileSystem();
            return fso.FileExists(path) ? fso.ReadAll(path) : std::string();
        } catch (...) {
            return std::string();
        }
    };
}

}  // namespace ostrel
