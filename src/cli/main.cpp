// ostrel: the component's core driven from the command line.
//
//   ostrel [--registry FILE]... [--wmi FILE] [--trace] [--json] COMMAND [options]
//
// --registry layers .reg files (in the Windows export format) into the
// registry the core reads, later files winning; it replaces the system's
// registry for the run. Without it the files named by the environment
// variable OSTREL_REGISTRY are used, a list separated like PATH (':' on Linux,
// ';' on Windows); with neither, Linux reads a built-in sample registry and
// the network keys made from the live system.
// --wmi replays an inventory saved by "inventory --json" in place of the
// system's WMI (default: the file named by OSTREL_WMI).
// Global options go before or after the command's name; the exit codes are
// kExitCodes (commands.h).
#include <algorithm>
#include <exception>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#ifdef _WIN32
#include <windows.h>
// windows.h first
#include <shellapi.h>
#endif

#include <CLI/CLI.hpp>

#include "commands.h"
#include "component/startup.h"
#include "debug_watch.h"
#include "foundation/globals.h"
#include "ostrel_version.h"
#include "platform/common/registry_regfile.h"
#include "platform/common/wmi_json.h"
#include "platform/ports.h"
#include "registry_source.h"
#include "version_line.h"

namespace ostrel::cli {

namespace {

#ifdef _WIN32
std::vector<std::string> utf8Arguments() {
    std::vector<std::string> arguments;
    int count = 0;
    wchar_t** const wide = CommandLineToArgvW(GetCommandLineW(), &count);
    if (!wide) return arguments;
    for (int i = 0; i < count; ++i) {
        const int size = WideCharToMultiByte(CP_UTF8, 0, wide[i], -1, nullptr, 0, nullptr, nullptr);
        std::string text(static_cast<size_t>(size > 0 ? size : 1), '\0');
        WideCharToMultiByte(CP_UTF8, 0, wide[i], -1, text.data(), size, nullptr, nullptr);
        text.resize(text.size() - 1);  // the terminating null
        arguments.push_back(std::move(text));
    }
    LocalFree(wide);
    return arguments;
}
#endif

#ifdef _WIN32
constexpr char kListSeparator = ';';
#else
constexpr char kListSeparator = ':';
#endif

std::optional<std::string> environmentVariable(const char* name) {
    return apartment().ports.environment ? apartment().ports.environment->variable(name)
                                         : std::nullopt;
}

std::vector<std::string> registryFilesFromEnvironment() {
    std::vector<std::string> files;
    const auto value = environmentVariable("OSTREL_REGISTRY");
    if (!value) return files;
    std::string_view rest = *value;
    while (!rest.empty()) {
        const auto end = std::min(rest.find(kListSeparator), rest.size());
        if (end > 0) files.emplace_back(rest.substr(0, end));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return files;
}

// False, with the message on stderr, when a file is bad.
bool loadRegistry(platform::RegFileRegistry& registry, const std::vector<std::string>& files) {
    for (const std::string& file : files) {
        try {
            registry.loadFile(file);
        } catch (const platform::RegFileError& error) {
            std::cerr << "ostrel: " << error.what() << '\n';  // names the file and the line
            return false;
        }
    }
    return true;
}

// The exit codes and the environment, below the commands in --help.
std::string helpFooter() {
    std::string text = "Exit codes:\n";
    for (const auto& [code, meaning] : kExitCodes)
        text += "  " + std::string(code) + "  " + meaning + "\n";
    text += "\nEnvironment:\n";
    for (const auto& [name, meaning] : kEnvironment)
        text += "  " + std::string(name) + ": " + meaning + "\n";
    return text;
}

// The global options, with the app's fall-through taking them after the
// command's name too.
void addGlobalOptions(CLI::App& app, GlobalOptions& options) {
    app.fallthrough();  // inherited by every command added after this
    app.add_option(
           "--registry", options.registryFiles,
           "A .reg file to read the registry from; may be repeated, later files win "
           "(default: the list in OSTREL_REGISTRY, else the system's registry; Linux, having "
           "none, shows a built-in sample)")
        ->type_name("FILE");
    app.add_option("--wmi", options.wmiFile,
                   "A saved inventory (inventory --json) to answer WMI's queries from "
                   "(default: the file in OSTREL_WMI, else the system's WMI)")
        ->type_name("FILE");
    app.add_flag("--trace", options.trace, "Show the component's diagnostic output on stderr");
    app.add_flag("--json", options.json,
                 "Print the result as JSON (the shapes are in the README and the manual)");
}

// Start-up: the ports, the registry and WMI the options name, then Main.
// False, with the message on stderr, when a file can't be read.
bool startComponent(GlobalOptions& options) {
    apartment().ports = platform::defaultPorts();
    if (options.trace) platform::setTraceToStderr(true);
    watchDebugStream();
    std::vector<std::string>& registryFiles = options.registryFiles;
    if (registryFiles.empty()) registryFiles = registryFilesFromEnvironment();
    // Static: it must outlive this thread's globals, which point at it.
    static platform::RegFileRegistry fileRegistry;
    if (!registryFiles.empty()) {
        if (!loadRegistry(fileRegistry, registryFiles)) return false;
        apartment().ports.registry = &fileRegistry;
        std::string files;
        for (const std::string& file : registryFiles) files += (files.empty() ? "" : ", ") + file;
        setRegistrySource("the registry file(s) " + files);
    } else {
        // Linux has no registry of its own: the built-in sample family, beside
        // the network keys of the live system.
        loadSampleRegistry();
    }
    std::string& wmiFile = options.wmiFile;
    if (wmiFile.empty()) wmiFile = environmentVariable("OSTREL_WMI").value_or("");
    static platform::WmiJsonProvider savedWmi;  // outlives the globals, like the registry
    if (!wmiFile.empty()) {
        try {
            savedWmi.loadFile(wmiFile);
        } catch (const platform::WmiJsonError& error) {
            std::cerr << "ostrel: " << error.what() << '\n';  // names the file and the line
            return false;
        }
        apartment().ports.wmi = &savedWmi;
    }
    ensureStarted();
    return true;
}

int run(int argc, char** argv) {
    CLI::App app{"Ostrel: the machine facts and the product catalogue of this PC.", "ostrel"};
    app.set_version_flag("--version", versionLine(), "Print the version and exit");
    GlobalOptions& options = globalOptions();
    addGlobalOptions(app, options);
    app.require_subcommand(0, 1);
    app.footer(helpFooter());

    std::vector<const Command*> sorted;
    for (const Command& command : commands()) sorted.push_back(&command);
    std::sort(sorted.begin(), sorted.end(),
              [](const Command* a, const Command* b) { return a->name < b->name; });
    std::vector<std::pair<CLI::App*, const Command*>> subcommands;
    for (const Command* command : sorted) {
        CLI::App* sub = app.add_subcommand(command->name, command->help);
        if (command->setup) command->setup(*sub);
        sub->footer(
            "Global options, before or after the command: --registry FILE, --wmi FILE, "
            "--trace, --json (ostrel --help)");
        subcommands.emplace_back(sub, command);
    }
    setCommandModel(app);

    try {
        app.parse(argc, argv);
    } catch (const CLI::ExtrasError& error) {
        // A word where a command belongs: no command of that name.
        if (app.get_subcommands().empty()) {
            for (const std::string& word : app.remaining()) {
                if (!word.starts_with('-')) return unknownCommand(app, word);
            }
        }
        app.exit(error);
        return kExitUsage;
    } catch (const CLI::ParseError& error) {
        // Help and version are "errors" that exit 0; everything else is usage.
        return app.exit(error) == 0 ? kExitOk : kExitUsage;
    }

    for (const auto& [sub, command] : subcommands) {
        if (!sub->parsed()) continue;
        if (command->startsComponent && !startComponent(options)) return kExitFailure;
        return command->run();
    }
    std::cerr << "ostrel: a command is required (ostrel help lists them)\n";
    return kExitUsage;
}

}  // namespace

}  // namespace ostrel::cli

int main(int argc, char** argv) {
#ifdef _WIN32
    // UTF-8 both ways, whatever the code pages: the arguments from the wide
    // command line, the output for a console set to UTF-8.
    SetConsoleOutputCP(CP_UTF8);
    std::vector<std::string> arguments = ostrel::cli::utf8Arguments();
    std::vector<char*> pointers;
    for (std::string& argument : arguments) pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    if (!arguments.empty()) {
        argc = static_cast<int>(arguments.size());
        argv = pointers.data();
    }
#endif
    try {
        return ostrel::cli::run(argc, argv);
    } catch (const std::exception& error) {
        std::cerr << "ostrel: " << error.what() << '\n';
        return ostrel::cli::kExitFailure;
    }
}
