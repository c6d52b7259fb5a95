// toolbar-key: the Toolbar sub-key of a part number, found by walking the key.
#include <iostream>
#include <string>

#include "catalogue/toolbar.h"
#include "commands.h"
#include "output.h"
#include "registry_source.h"

namespace ostrel::cli {

namespace {

std::string partNumber;

int run() {
    announceRegistrySource();
    const std::string key = ToolbarKey(partNumber);
    const Record record{{"PartNumber", partNumber},
                        {"ToolbarKey", key.empty() ? Record(nullptr) : Record(key)}};
    return emit(record, key, key.empty() ? kExitNotObtained : kExitOk);
}

[[maybe_unused]] const bool registered = registerCommand({
    "toolbar-key",
    "Print the name of the Toolbar sub-key that carries this part number (empty line and exit 3 if "
    "none)",
    [](CLI::App& app) {
        app.add_option("PARTNUMBER", partNumber, "The part number, in any case")->required();
    },
    run,
});

}  // namespace

}  // namespace ostrel::cli
