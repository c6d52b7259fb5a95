// process find|run: whether a program runs, and the start of one with a wait
// for its readiness, as the component does both. run watches the start
// through the process port, so that it can say what the component's one
// answer doesn't: not started (and why), started but not ready, or started
// with an id the component can't hold.
#include <iostream>
#include <optional>
#include <string>

#include "commands.h"
#include "foundation/globals.h"
#include "machine/processes.h"
#include "output.h"
#include "runtime/automation_error.h"
#include "runtime/convert.h"

namespace ostrel::cli {

namespace {

std::string name;
std::string commandLine;
std::string readyFile;
CLI::App* findCommand = nullptr;

// The process port, passed through, with what its start gave.
class WatchedStart final : public platform::ProcessPort {
  public:
    explicit WatchedStart(platform::ProcessPort& next) : next_(next) {}
    int64_t createSnapshot(uint32_t flags, uint32_t processId) override {
        return next_.createSnapshot(flags, processId);
    }
    bool firstProcess(int64_t snapshot, platform::ProcessEntry& entry) override {
        return next_.firstProcess(snapshot, entry);
    }
    bool nextProcess(int64_t snapshot, platform::ProcessEntry& entry) override {
        return next_.nextProcess(snapshot, entry);
    }
    bool closeSnapshot(int64_t snapshot) override { return next_.closeSnapshot(snapshot); }
    int32_t lastError() override { return next_.lastError(); }
    uint32_t start(std::string_view line, int32_t windowStyle) override {
        try {
            startedId = next_.start(line, windowStyle);
            return *startedId;
        } catch (const AutomationError& error) {
            startError = std::to_string(error.number) + ", " + error.description;
            throw;
        }
    }
    uint32_t tickCount() override { return next_.tickCount(); }
    void sleep(uint32_t milliseconds) override { next_.sleep(milliseconds); }

    std::optional<uint32_t> startedId;
    std::string startError;

  private:
    platform::ProcessPort& next_;
};

int find() {
    Variant processId;
    const bool running = mblnIsProcessRunning(name, processId);
    const Record record{{"Name", name}, {"Running", running}, {"ProcessId", toLong(processId)}};
    return emit(record, toText(processId), running ? kExitOk : kExitNotObtained);
}

int start() {
    platform::ProcessPort*& port = apartment().ports.processes;
    WatchedStart watched(requirePort(port));
    platform::ProcessPort* const previous = std::exchange(port, &watched);
    const bool ready = mfblnRunProgram(commandLine, 0, readinessFromFile(readyFile));
    port = previous;

    Record record{{"CommandLine", commandLine},
                  {"Started", watched.startedId.value_or(0) != 0},
                  {"ProcessId", nullptr},
                  {"Ready", ready},
                  {"Error", nullptr}};
    if (!watched.startedId || *watched.startedId == 0) {
        const std::string error =
            watched.startError.empty() ? "the system gave no process id" : watched.startError;
        record["Error"] = error;
        return emit(record, "could not start: " + error, kExitNotDone);
    }
    const uint32_t id = *watched.startedId;
    record["ProcessId"] = id;
    if (ready) return emit(record, "ready " + std::to_string(id), kExitOk);
    if (id > 32767) {
        // kept by the component: it holds the id in 16 bits, and one that
        // overflows takes its failure path, though the program runs
        record["Error"] = "an id above 32767 is reported as a failure by the component";
        return emit(record,
                    "started as " + std::to_string(id) +
                        "; an id above 32767 is reported as a failure by the component",
                    kExitNotObtained);
    }
    return emit(record, "started as " + std::to_string(id) + ", not ready", kExitNotObtained);
}

int run() {
    return findCommand && findCommand->parsed() ? find() : start();
}

[[maybe_unused]] const bool registered = registerCommand({
    "process",
    "Find a running program, or start one and wait until it is ready; exit 3 when not found or "
    "not ready, 4 when it could not be started",
    [](CLI::App& app) {
        app.require_subcommand(1, 1);
        findCommand = app.add_subcommand(
            "find", "Print the id of the first process of that file name (0: none)");
        findCommand->add_option("NAME", name, "The program's file name; folders don't count")
            ->required();
        CLI::App* start = app.add_subcommand(
            "run",
            "Start a command hidden and wait (setting ProgramReadyTimeout, default 500 ms) "
            "until it is ready; prints 'ready ID', 'started as ID, not ready' or "
            "'could not start: ERROR'");
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
