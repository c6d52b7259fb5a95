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
    // False for a command about the tool itself (help, completion): it runs
    // without the component, so no registry file can stop it.
    bool startsComponent = true;
};

// For a file-scope initialiser: [[maybe_unused]] const bool registered = registerCommand({...});
bool registerCommand(Command command);
const std::vector<Command>& commands();

// The options every command takes, before or after its name.
struct GlobalOptions {
    std::vector<std::string> registryFiles;
    std::string wmiFile;
    bool trace = false;
    bool json = false;
};
GlobalOptions& globalOptions();

// The parsed command model (the app with every command on it), for the
// commands that describe the tool: help, completion, the manual page.
const CLI::App& commandModel();
void setCommandModel(const CLI::App& app);

// "ostrel: unknown command 'catalog' (did you mean 'catalogue'?)" on stderr,
// naming the closest command of `parent`; answers kExitUsage.
int unknownCommand(const CLI::App& parent, const std::string& word);

// Exit codes of the tool; kExitCodesText is how --help and the manual list them.
inline constexpr int kExitOk = 0;
inline constexpr int kExitFailure = 1;  // a file could not be read or parsed
inline constexpr int kExitUsage = 2;
inline constexpr int kExitNotObtained = 3;  // not found, not obtained, not ready
inline constexpr int kExitNotDone = 4;      // not stored, not started, not deleted
inline constexpr const char* kExitCodes[][2] = {
    {"0", "done"},
    {"1", "a file can't be read (a --registry or --wmi file; the message names file and line)"},
    {"2", "a usage error: unknown command or option, a missing or malformed argument"},
    {"3",
     "not found, not obtained or not ready: no such product, part number, interface, "
     "process, localised file or help file; a lock not obtained; WMI not reached; a "
     "started program not ready in time"},
    {"4",
     "not done: a setting not stored (settings set), a program not started (process "
     "run), a file still there (path delete); the reason is on stderr"},
};

// The environment the tool and the component read, as --help and the manual list it.
inline constexpr const char* kEnvironment[][2] = {
    {"OSTREL_REGISTRY",
     "the .reg files to read when no --registry is given, a list separated "
     "like PATH (':' on Linux, ';' on Windows)"},
    {"OSTREL_WMI", "the saved inventory to replay when no --wmi is given"},
    {"OSTREL_LANGUAGE", "the language of the texts (de, de-AT), before the user's"},
    {"OSTREL_PART_NUMBERS", "the part-number table to use instead of part-numbers.txt"},
    {"ProgramData",
     "the folder whose QUORL folder is the data folder (unset: QUORL relative "
     "to the current folder)"},
    {"XDG_CONFIG_HOME", "Linux: the folder of the older settings store (default ~/.config)"},
    {"LC_ALL, LC_MESSAGES, LANG", "Linux: the user's language, when OSTREL_LANGUAGE is unset"},
    {"USERNAME", "Linux: the user name shown, before the login name"},
    {"TZ", "Linux: the time zone of the time conversions"},
};

// The files the tool and the component read and write.
inline constexpr const char* kFiles[][2] = {
    {"$ProgramData/QUORL/ot_settings.xml", "the settings of all users"},
    {"$ProgramData/QUORL/debug_ot", "when present, diagnostics go to ot.log beside it"},
    {"$ProgramData/QUORL/ot.log", "the diagnostic log"},
    {"$XDG_CONFIG_HOME/QUORL/program-settings.ini", "Linux: the older per-user settings store"},
    {"Ostrel.en.txt, Ostrel.de.txt", "beside the tool: the language texts"},
    {"part-numbers.txt", "beside the tool: the family's known part numbers"},
};

}  // namespace ostrel::cli
