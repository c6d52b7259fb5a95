// A started apartment on a .reg registry, with a table of known part numbers
// of the test's own, and the log lines written since.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "catalogue/catalogue_factory.h"
#include "catalogue/software_product.h"
#include "component/startup.h"
#include "fakes/test_apartment.h"
#include "foundation/globals.h"

namespace ostrel::testing {

// A sub-key of the Toolbar key with its value lines, and such lines.
inline std::string toolbarKey(std::string_view name, std::string_view values = {}) {
    return "[HKEY_LOCAL_MACHINE\\SOFTWARE\\QUORL\\Toolbar\\" + std::string(name) + "]\n" +
           std::string(values) + "\n";
}
inline std::string value(std::string_view name, std::string_view text) {
    return "\"" + std::string(name) + "\"=\"" + std::string(text) + "\"\n";
}
inline std::string partNumber(std::string_view text) {
    return value("PartNumber", text);
}
inline std::string dword(std::string_view name, uint32_t number) {
    char hex[9];
    std::snprintf(hex, sizeof hex, "%08x", number);
    return "\"" + std::string(name) + "\"=dword:" + hex + "\n";
}

class CatalogueTest : public ::testing::Test {
  protected:
    CatalogueTest() {
        const auto table = apartment_.programData / "part-numbers.txt";
        fakes::writeBytes(table, "a-1\nb-2\nb-10\np-1\nABC\npn-1\npn-2\n");
        apartment_.environment.variables["OSTREL_PART_NUMBERS"] = fakes::utf8Of(table);
        ensureStarted();
        apartment_.debugStream.texts.clear();
    }
    void loadRegistry(const std::string& keys) {
        apartment_.loadRegistry("Windows Registry Editor Version 5.00\n\n" + keys);
    }
    // A new record loaded from the Toolbar sub-key of that name.
    static Ref<wncSoftwareProduct> named(std::string_view name) {
        Ref<wncSoftwareProduct> product = newSoftwareProduct();
        product->ProductName(name);
        return product;
    }
    // Without their line ends.
    std::vector<std::string> logLines() const {
        std::vector<std::string> lines;
        for (const std::string& text : apartment_.debugStream.texts) {
            lines.push_back(text.substr(0, text.find_last_not_of("\r\n") + 1));
        }
        return lines;
    }

    fakes::TestApartment apartment_;
};

}  // namespace ostrel::testing
