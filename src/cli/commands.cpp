// The list the commands register themselves in, and what all of them share.
#include "commands.h"

#include <utility>

namespace ostrel::cli {

namespace {
// Function-local, so it exists before the first file-scope registration runs.
std::vector<Command>& registry() {
    static std::vector<Command> list;
    return list;
}
const CLI::App* model = nullptr;
}  // namespace

bool registerCommand(Command command) {
    registry().push_back(std::move(command));
    return true;
}

const std::vector<Command>& commands() {
    return registry();
}

GlobalOptions& globalOptions() {
    static GlobalOptions options;
    return options;
}

const CLI::App& commandModel() {
    return *model;
}

void setCommandModel(const CLI::App& app) {
    model = &app;
}

}  // namespace ostrel::cli
