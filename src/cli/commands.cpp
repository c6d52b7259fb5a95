// The list the commands register themselves in.
#include "commands.h"

#include <utility>

namespace ostrel::cli {

namespace {
// Function-local, so it exists before the first file-scope registration runs.
std::vector<Command>& registry() {
    static std::vector<Command> list;
    return list;
}
}  // namespace

bool registerCommand(Command command) {
    registry().push_back(std::move(command));
    return true;
}

const std::vector<Command>& commands() {
    return registry();
}

}  // namespace ostrel::cli
