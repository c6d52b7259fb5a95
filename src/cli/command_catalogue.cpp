// catalogue: a new collection, ReadAll, and the records in the collection's order.
#include <iostream>
#include <string>
#include <vector>

#include "catalogue/catalogue_factory.h"
#include "catalogue/software_product.h"
#include "catalogue/software_products.h"
#include "commands.h"
#include "product_record.h"
#include "registry_source.h"

namespace ostrel::cli {

namespace {

int run() {
    announceRegistrySource();
    const OwnedProducts catalogue(newSoftwareProducts());
    catalogue->ReadAll();
    const std::vector<Ref<wncSoftwareProduct>> products = catalogue->items();
    if (globalOptions().json) {
        // Written record by record: a large catalogue is never held twice.
        JsonArrayWriter out(std::cout);
        for (const auto& product : products) {
            out.beginObject();
            forEachProductField(*product,
                                [&](const char* key, const auto& value) { out.field(key, value); });
            out.endObject();
        }
        out.finish();
        return kExitOk;
    }
    std::vector<std::vector<std::string>> rows{
        {"PartNumber", "ProductName", "Version", "BuildID", "ApplicationPath"}};
    for (const auto& product : products) {
        rows.push_back({product->PartNumber(), product->ProductName(), product->VersionString(),
                        product->BuildID(), product->ApplicationPath()});
    }
    printTable(std::cout, rows);
    std::cout << '\n'
              << products.size() << (products.size() == 1 ? " product" : " products") << '\n';
    return kExitOk;
}

[[maybe_unused]] const bool registered = registerCommand({
    "catalogue",
    "List the installed products of the family, in the order of their part numbers",
    {},
    run,
});

}  // namespace

}  // namespace ostrel::cli
