// product: one record, loaded by naming it, as a host would make it.
#include <iostream>
#include <string>

#include "catalogue/catalogue_factory.h"
#include "catalogue/software_product.h"
#include "commands.h"
#include "foundation/file_system_object.h"
#include "foundation/wnc_registry.h"
#include "product_record.h"
#include "registry_source.h"
#include "runtime/automation_error.h"

namespace ostrel::cli {

namespace {

std::string name;

// Whether the Toolbar key has a sub-key of that name: without one the record
// reads all empty, which is no product.
bool productKeyExists() {
    try {
        WNCRegistry registry;
        return registry.TryOpenKey(platform::kHiveLocalMachine, buildKeyPath(kToolbarKeyPath, name),
                                   kKeyRead, 0);
    } catch (const AutomationError&) {
        return false;
    }
}

int run() {
    announceRegistrySource();
    const Ref<wncSoftwareProduct> product = newSoftwareProduct();
    product->ProductName(name);
    printRecord(std::cout, productRecord(*product), globalOptions().json);
    if (productKeyExists()) return kExitOk;
    std::cerr << "ostrel: no product '" << name << "' under SOFTWARE\\QUORL\\Toolbar\n";
    return kExitNotObtained;
}

[[maybe_unused]] const bool registered = registerCommand({
    "product",
    "Show one product record, read from the Toolbar sub-key of that name; exit 3 when there is "
    "none",
    [](CLI::App& app) {
        app.add_option("NAME", name, "The product's sub-key under SOFTWARE\\QUORL\\Toolbar")
            ->required();
    },
    run,
});

}  // namespace

}  // namespace ostrel::cli
