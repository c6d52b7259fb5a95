// install-dir: the family's installation folder, as the registry holds it.
#include <iostream>

#include "catalogue/toolbar.h"
#include "commands.h"

namespace ostrel::cli {

namespace {

int run() {
    std::cout << gfstrGetInstallDir() << '\n';
    return kExitOk;
}

[[maybe_unused]] const bool registered = registerCommand({
    "install-dir",
    "Print the family's installation folder (empty line if none)",
    {},
    run,
});

}  // namespace

}  // namespace ostrel::cli
