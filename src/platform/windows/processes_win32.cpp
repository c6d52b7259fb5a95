// Processes on Windows: the Toolhelp snapshot in its ANSI form, a program
// started as the run time's Shell starts one (CreateProcess with the window
// style; 53 when it can't be started), GetTickCount and Sleep.
#include <windows.h>

#include <tlhelp32.h>

#include <string>

#include "platform/adapters.h"
#include "platform/windows/ansi_win32.h"
#include "runtime/automation_error.h"

namespace ostrel::platform {

namespace {

HANDLE handleOf(int64_t snapshot) {
    return reinterpret_cast<HANDLE>(static_cast<intptr_t>(snapshot));
}

bool answer(BOOL found, const PROCESSENTRY32& record, ProcessEntry& entry) {
    if (!found) return false;
    entry.processId = record.th32ProcessID;
    entry.exeFile = fromAnsi(std::string(record.szExeFile));
    return true;
}

class Win32Processes final : public ProcessPort {
  public:
    int64_t createSnapshot(uint32_t flags, uint32_t processId) override {
        const HANDLE snapshot = CreateToolhelp32Snapshot(flags, processId);
        if (snapshot == INVALID_HANDLE_VALUE) return kInvalidSnapshot;
        return static_cast<int64_t>(reinterpret_cast<intptr_t>(snapshot));
    }

    bool firstProcess(int64_t snapshot, ProcessEntry& entry) override {
        PROCESSENTRY32 record{};
        record.dwSize = sizeof record;  // 296, the ANSI form
        return answer(Process32First(handleOf(snapshot), &record), record, entry);
    }

    bool nextProcess(int64_t snapshot, ProcessEntry& entry) override {
        PROCESSENTRY32 record{};
        record.dwSize = sizeof record;
        return answer(Process32Next(handleOf(snapshot), &record), record, entry);
    }

    bool closeSnapshot(int64_t snapshot) override { return CloseHandle(handleOf(snapshot)) != 0; }
    int32_t lastError() override { return static_cast<int32_t>(GetLastError()); }

    uint32_t start(std::string_view commandLine, int32_t windowStyle) override {
        return create(nullptr, commandLine, windowStyle);
    }

    uint32_t startProgram(std::string_view path, int32_t windowStyle) override {
        const std::string program = toAnsi(path);
        return create(program.c_str(), path, windowStyle);
    }

    uint32_t tickCount() override { return GetTickCount(); }
    void sleep(uint32_t milliseconds) override { Sleep(milliseconds); }

  private:
    // CreateProcessA; with a program, the command line no longer chooses it.
    static uint32_t create(const char* program, std::string_view commandLine, int32_t windowStyle) {
        std::string line = toAnsi(commandLine);
        STARTUPINFOA startup{};
        startup.cb = sizeof startup;
        startup.dwFlags = STARTF_USESHOWWINDOW;
        startup.wShowWindow = static_cast<WORD>(windowStyle);
        PROCESS_INFORMATION started{};
        if (!CreateProcessA(program, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                            &startup, &started)) {
            raise(kErrFileNotFound);
        }
        CloseHandle(started.hThread);
        CloseHandle(started.hProcess);
        return started.dwProcessId;
    }
};

}  // namespace

ProcessPort& systemProcesses() {
    static Win32Processes processes;
    return processes;
}

}  // namespace ostrel::platform
