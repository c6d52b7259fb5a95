// process find|run: whether a program runs, and the start of one with a wait
// for its readiness, as the component does both.
#include <iostream>
#include <string>

#include "commands.h"
#include "machine/processes.h"
#include "runtime/convert.h"

namespace ostrel::cli {

namespace {

std::string name;
std::string commandLine;
std::string readyFile;
CLI::App* findCommand = nullptr;

int run() {
    if (findCommand && findCommand->parsed()) {
        Variant processId;
        const bool running = mblnIsProcessRunning(name, processId);
        std::cout << toText(processId) << '\n';
        return running ? kExitOk : kExitNotObtained;
    }
    int32_t started = 0;
    if (mfblnRunProgram(commandLine, 0, readinessFromFile(readyFile), &started)) {
        std::cout << "ready " << started << '\n';
        return kExitOk;
    }
    std::cout << "not ready\n";
    return kExitNotObtained;
}

[[maybe_unused]] const bool registered = registerCommand({
    "process",
    "Find a running program, or start one and wait until it is ready; exit 3 when not found or "
    "not ready",
    [](CLI::App& app) {
        app.require_subcommand(1, 1);
        findCommand = app.add_subcommand(
            "find", "Print the id of the first process of that file name (0: none)");
        findCommand->add_option("NAME", name, "The program's file name; folders don't count")
            ->required();
        CLI::App* start = app.add_subcommand(
            "run",
            "Start a command hidden and wait (setting ProgramReadyTimeout, default 500 ms) "
            "until it is ready; prints 'ready ID' or 'not ready'");
        start
            ->add_option("--ready-file", readyFile,
                         "The program is ready once this file is there and not empty "
                         "(without it, it never is)")
            ->type_name("FILE");
        start->add_option("COMMAND", commandLine, "The command line")->required();
    },
    run,
});

}  // namespace

}  // namespace ostrel::cli
