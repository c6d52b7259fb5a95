// Other processes of the machine: the system's process snapshot, the start
// of a program by command line, and the tick counter with a sleep for a
// polling wait.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace ostrel::platform {

// One entry of a process snapshot (PROCESSENTRY32: th32ProcessID, szExeFile).
struct ProcessEntry {
    uint32_t processId = 0;
    std::string exeFile;  // the program's file name, maybe with a folder
};

class ProcessPort {
  public:
    static constexpr int64_t kInvalidSnapshot = -1;

    virtual ~ProcessPort() = default;
    // CreateToolhelp32Snapshot: kInvalidSnapshot on failure (lastError says why).
    virtual int64_t createSnapshot(uint32_t flags, uint32_t processId) = 0;
    // Process32First and Process32Next: false past the last entry.
    virtual bool firstProcess(int64_t snapshot, ProcessEntry& entry) = 0;
    virtual bool nextProcess(int64_t snapshot, ProcessEntry& entry) = 0;
    virtual bool closeSnapshot(int64_t snapshot) = 0;
    virtual int32_t lastError() = 0;
    // The run time's start of a program by command line with a window style:
    // the new process's id. Raises (53) when the program can't be started.
    virtual uint32_t start(std::string_view commandLine, int32_t windowStyle) = 0;
    // The same start of exactly the program file a path names, the command
    // line being that path as it stands (unquoted: a path with blanks must not
    // be read as a shorter program and its arguments).
    virtual uint32_t startProgram(std::string_view path, int32_t windowStyle) {
        return start(path, windowStyle);
    }
    // GetTickCount and Sleep.
    virtual uint32_t tickCount() = 0;
    virtual void sleep(uint32_t milliseconds) = 0;
};

}  // namespace ostrel::platform
