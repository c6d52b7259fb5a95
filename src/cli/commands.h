// The tool's commands. Each lives in a command_*.cpp of its own and registers
// itself there, so adding one touches no other file.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace ostrel::cli {

struct Command {
    std::string name;
    std::string help;
    // Adds the command's own options to its sub-command.
    std::function<void(CLI::App&)> setup;
    // Runs after start-up; the result is the exit code.
    std::function<int()> run;
};

// For a file-scope initialiser: [[maybe_unused]] const bool registered = registerCommand({...});
bool registerCommand(Command command);
const std::vector<Command>& commands();

// Exit codes of the tool.
inline constexpr int kExitOk = 0;
inline constexpr int kExitFailure = 1;  // a registry file could not be read or parsed
inline constexpr int kExitUsage = 2;
inline constexpr int kExitNotObtained = 3;  // no lock (mutex), no such process, not ready

}  // namespace ostrel::cli
