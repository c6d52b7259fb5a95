// catalogue: a new collection, ReadAll, and the records in the collection's order.
#include <algorithm>
#include <array>
#include <iostream>
#include <string>
#include <vector>

#include "catalogue/software_product.h"
#include "catalogue/software_products.h"
#include "commands.h"
#include "foundation/object_factory.h"
#include "product_record.h"
#include "registry_source.h"

namespace ostrel::cli {

namespace {

bool json = false;

void printTable(const std::vector<Ref<wncSoftwareProduct>>& products) {
    using Row = std::array<std::string, 5>;
    std::vector<Row> rows{{"PartNumber", "ProductName", "Version", "BuildID", "ApplicationPath"}};
    for (const auto& product : products) {
        rows.push_back({product->PartNumber(), product->ProductName(), product->VersionString(),
                        product->BuildID(), product->ApplicationPath()});
    }
    std::array<size_t, 5> widths{};
    for (const Row& row : rows) {
        for (size_t column = 0; column < row.size(); ++column) {
            widths[column] = std::max(widths[column], row[column].size());
        }
    }
    for (const Row& row : rows) {
        std::string line;
        for (size_t column = 0; column < row.size(); ++column) {
            line += row[column];
            if (column + 1 < row.size())
                line += std::string(widths[column] - row[column].size() + 2, ' ');
        }
        std::cout << line << '\n';
    }
}

int run() {
    const OwnedProducts catalogue(newSoftwareProducts());
    catalogue->ReadAll();
    const std::vector<Ref<wncSoftwareProduct>> products = catalogue->items();
    if (json) {
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
    std::cout << "Registry: " << registrySource() << "\n\n";
    printTable(products);
    std::cout << '\n'
              << products.size() << (products.size() == 1 ? " product" : " products") << '\n';
    return kExitOk;
}

[[maybe_unused]] const bool registered = registerCommand({
    "catalogue",
    "List the installed products of the family, in the order of their part numbers",
    [](CLI::App& app) { app.add_flag("--json", json, "Print a JSON array of the records"); },
    run,
});

}  // namespace

}  // namespace ostrel::cli
