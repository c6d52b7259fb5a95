// settings get|set: the application settings, as the component reads and
// stores them. Both exit 0 whatever happened inside: the routines report
// nothing to their caller, and what went wrong is in the log.
#include <iostream>
#include <string>

#include "commands.h"
#include "foundation/settings.h"

namespace ostrel::cli {

namespace {

std::string application = "Ostrel";
std::string section;
std::string key;
std::string defaultValue;
std::string value;
CLI::App* getCommand = nullptr;

int run() {
    if (getCommand && getCommand->parsed()) {
        std::cout << gfstrGetApplicationSetting(application, section, key, defaultValue) << '\n';
    } else {
        gsubSaveApplicationSetting(application, section, key, value);
    }
    return kExitOk;
}

void addAddress(CLI::App& app) {
    app.add_option("--app", application, "The application (default: Ostrel)")->type_name("APP");
    app.add_option("SECTION", section, "The section (the file's document element)")->required();
    app.add_option("KEY", key, "The key (an element below the section)")->required();
}

[[maybe_unused]] const bool registered = registerCommand({
    "settings",
    "Read or store an application setting (ot_settings.xml, then the older per-user store)",
    [](CLI::App& app) {
        app.require_subcommand(1, 1);
        getCommand = app.add_subcommand("get", "Print the value of a setting");
        addAddress(*getCommand);
        getCommand->add_option("--default", defaultValue, "What a missing setting gives")
            ->type_name("TEXT");
        CLI::App* set = app.add_subcommand("set", "Store the value of a setting");
        addAddress(*set);
        set->add_option("VALUE", value, "The value to store")->required();
    },
    run,
});

}  // namespace

}  // namespace ostrel::cli
