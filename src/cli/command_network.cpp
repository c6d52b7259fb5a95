// network cards|adapters|interface NAME: the network adapter inventory, as
// the component reads it from the registry.
#include <iostream>
#include <string>

#include "commands.h"
#include "machine/network.h"
#include "output.h"

namespace ostrel::cli {

namespace {

std::string interfaceName;
CLI::App* cardsCommand = nullptr;
CLI::App* adaptersCommand = nullptr;

void printNames(const NameList& names) {
    if (globalOptions().json) {
        Record list = Record::array();
        for (const auto& entry : names) list.push_back(entry.item);
        std::cout << list.dump(2) << '\n';
        return;
    }
    for (const auto& entry : names) std::cout << entry.item << '\n';
}

int run() {
    if (cardsCommand->parsed()) {
        printNames(gfcolGetNetworkCards());
    } else if (adaptersCommand->parsed()) {
        printNames(gfcolGetAdapters());
    } else {
        const Ref<Dictionary> data = gfdicGetInterfaceData(interfaceName);
        if (!data) {
            std::cerr << "ostrel: the values of interface '" << interfaceName
                      << "' could not be read\n";
            return emit(nullptr, "Nothing", kExitNotObtained);
        }
        Record record = Record::object();
        for (const auto& [key, item] : *data) {
            if (const auto* number = item.getIf<int32_t>()) {
                record[key] = *number;
            } else {
                record[key] = *item.getIf<std::string>();
            }
        }
        printRecord(std::cout, record, globalOptions().json);
        if (record.empty()) {
            std::cerr << "ostrel: no interface '" << interfaceName << "'\n";
            return kExitNotObtained;
        }
    }
    return kExitOk;
}

[[maybe_unused]] const bool registered = registerCommand({
    "network",
    "The network adapter inventory: card service names, adapter names, one interface's TCP/IP "
    "values",
    [](CLI::App& app) {
        app.require_subcommand(1, 1);
        cardsCommand = app.add_subcommand("cards", "The service names of the network cards");
        adaptersCommand = app.add_subcommand("adapters", "The names of the TCP/IP adapters");
        CLI::App* one = app.add_subcommand(
            "interface",
            "The TCP/IP values of one interface (Nothing after a failure); exit 3 for none");
        one->add_option("NAME", interfaceName, "The interface's key name")->required();
    },
    run,
});

}  // namespace

}  // namespace ostrel::cli
