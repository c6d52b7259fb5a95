// install-dir: the family's installation folder, as the registry holds it.
#include <iostream>

#include "catalogue/toolbar.h"
#include "commands.h"
#include "output.h"
#include "registry_source.h"

namespace ostrel::cli {

namespace {

int run() {
    announceRegistrySource();
    const std::string folder = gfstrGetInstallDir();
    const Record record{{"InstallDir", folder.empty() ? Record(nullptr) : Record(folder)}};
    return emit(record, folder, folder.empty() ? kExitNotObtained : kExitOk);
}

[[maybe_unused]] const bool registered = registerCommand({
    "install-dir",
    "Print the family's installation folder (empty line and exit 3 if none)",
    {},
    run,
});

}  // namespace

}  // namespace ostrel::cli
