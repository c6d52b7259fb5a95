// product: one record, loaded by naming it, as a host would make it.
#include <iostream>
#include <string>

#include "catalogue/software_product.h"
#include "commands.h"
#include "foundation/object_factory.h"
#include "product_record.h"
#include "registry_source.h"

namespace ostrel::cli {

namespace {

bool json = false;
std::string name;

int run() {
    const Ref<wncSoftwareProduct> product = newSoftwareProduct();
    product->ProductName(name);
    if (!json) std::cout << "Registry: " << registrySource() << "\n\n";
    printRecord(std::cout, productRecord(*product), json);
    return kExitOk;
}

[[maybe_unused]] const bool registered = registerCommand({
    "product",
    "Show one product record, read from the Toolbar sub-key of that name",
    [](CLI::App& app) {
        app.add_option("NAME", name, "The product's sub-key under SOFTWARE\\QUORL\\Toolbar")
            ->required();
        app.add_flag("--json", json, "Print one JSON object");
    },
    run,
});

}  // namespace

}  // namespace ostrel::cli
